// An environment of the reference host for one test, with its memory object, its error stack and what surrounds a call.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "qzhost/control.h"

namespace support {

struct StackEntry {
    int32_t code = 0;
    std::string name;

    bool operator==(const StackEntry&) const = default;
};

// "-6102 babs_a_process_int, -6102 babs_a_math_int", or "empty"
std::string print(const std::vector<StackEntry>& stack);

// "EC_DATA_OVERFLOW (-6102)"
std::string print_code(int32_t code);

class Host {
  public:
    Host();
    ~Host();
    Host(const Host&) = delete;
    Host& operator=(const Host&) = delete;

    qz_env* env() const { return env_; }
    rt_memobj* mem() const { return mem_; }
    qz_session* open_session();

    std::vector<StackEntry> errors() const;  // oldest first
    void clear_errors();
    size_t outstanding() const { return host_memobj_outstanding(mem_); }

  private:
    qz_env* env_;
    rt_memobj* mem_;
};

// Numbered parameters for the length of a scope; the defaults come back at its end.
class Parameters {
  public:
    Parameters() = default;
    Parameters(uint32_t number, uint32_t value) { set(number, value); }
    ~Parameters();
    Parameters(const Parameters&) = delete;
    Parameters& operator=(const Parameters&) = delete;

    void set(uint32_t number, uint32_t value);
};

// Runs a call with the first allocation failing, then with the second, and so on until it succeeds, then once more without
// limit. The call answers a code; whatever it keeps it gives back itself, so that memory is balanced after each run.
//
// Answers what was wrong, "" when nothing was: a code that is neither 0 nor `code`, memory not given back, no end in sight, a
// run without limit that fails. `runs` receives the count of runs that failed.
std::string check_allocation_failures(Host& host, const std::function<int32_t()>& call, int32_t code, int* runs = nullptr);

}  // namespace support
