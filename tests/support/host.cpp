#include "tests/support/host.h"

#include <stdexcept>

#include "qzbifun/codes.h"

namespace support {

std::string print_code(int32_t code) {
    return code == 0 ? "0" : std::string(host_error_name(code)) + " (" + std::to_string(code) + ")";
}

std::string print(const std::vector<StackEntry>& stack) {
    if (stack.empty()) return "empty";
    std::string text;
    for (const StackEntry& entry : stack) {
        if (!text.empty()) text += ", ";
        text += std::to_string(entry.code) + " " + entry.name;
    }
    return text;
}

Host::Host() : env_(host_env_create()), mem_(env_ != nullptr ? host_memobj_create(env_) : nullptr) {
    if (mem_ == nullptr) throw std::runtime_error("the host has no memory for an environment");
}

Host::~Host() {
    host_memobj_destroy(mem_);
    host_env_destroy(env_);
}

qz_session* Host::open_session() { return env_->session != nullptr ? env_->session : host_env_open_session(env_); }

std::vector<StackEntry> Host::errors() const {
    std::vector<StackEntry> stack;
    for (uint32_t i = 0; i < host_error_count(env_); ++i) {
        const char* name = nullptr;
        const int32_t code = host_error_at(env_, i, &name);
        stack.push_back({code, name != nullptr ? name : ""});
    }
    return stack;
}

void Host::clear_errors() { host_error_clear(env_); }

Parameters::~Parameters() { host_parameters_reset(); }

void Parameters::set(uint32_t number, uint32_t value) { host_parameter_set(number, value); }

std::string check_allocation_failures(Host& host, const std::function<int32_t()>& call, int32_t code, int* runs) {
    constexpr int kLimit = 10000;
    const size_t before = host.outstanding();
    const auto balance = [&](const std::string& where) {
        return host.outstanding() == before ? std::string() : where + ": memory was not given back";
    };
    for (int n = 0; n < kLimit; ++n) {
        host.clear_errors();
        host_memory_fail_after(n);
        const int32_t answer = call();
        host_memory_fail_after(-1);
        const std::string where = "allocation " + std::to_string(n + 1) + " fails";
        if (const std::string wrong = balance(where); !wrong.empty()) return wrong;
        if (answer != 0 && answer != code) return where + ": " + print_code(answer) + " in place of " + print_code(code);
        if (answer != 0) continue;
        if (runs != nullptr) *runs = n;
        const int32_t last = call();
        if (last != 0) return "the call after the failures: " + print_code(last);
        return balance("the call after the failures");
    }
    return "still failing after " + std::to_string(kLimit) + " runs";
}

}  // namespace support
