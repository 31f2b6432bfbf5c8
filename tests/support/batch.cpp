#include "tests/support/batch.h"

#include <algorithm>
#include <map>
#include <numeric>
#include <optional>
#include <set>
#include <stdexcept>

#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "tests/support/vector.h"

namespace support {
namespace {

constexpr size_t kMessages = 6;

// ---- What is expected of each row -------------------------------------------------------------------------------------------

// The valid bytes that a row may have.
struct ByteSet {
    std::array<uint8_t, kMaxArguments + 1> bytes{};
    size_t count = 0;

    ByteSet() = default;
    explicit ByteSet(uint8_t byte) { add(byte); }
    void add(uint8_t byte) { bytes[count++] = byte; }
    bool has(uint8_t byte) const { return std::find(bytes.begin(), bytes.begin() + count, byte) != bytes.begin() + count; }
};

struct Expected {
    enum class Element : uint8_t { untouched, unchecked, value };

    Element element = Element::untouched;
    const Cell* value = nullptr;
    const Tolerance* tolerance = nullptr;
    ByteSet valid;
    bool valid_untouched = false;
};

class Expectation {
  public:
    explicit Expectation(const Batch& batch) : batch_(batch), rows_(batch.rows.size()) {
        for (size_t j = 0; j < batch.form.size(); ++j) {
            if (batch.form[j] == 'a') {
                flags_.push_back(!batch.flags_low && all_present(j));
            } else {
                flags_.push_back(batch.constants[j].present());
            }
        }
        start_flag_ = start_flag();
        flag_ = {start_flag_};
        if (batch.whole != nullptr) {
            expect_whole();
        } else if (!batch.no_rows) {
            expect_rows();
        }
        if (batch.no_rows && batch.whole == nullptr) {
            for (Expected& row : rows_) row.valid_untouched = true;
        }
    }

    uint32_t argument_flag(size_t j) const { return flags_[j]; }
    const Expected& row(size_t i) const { return rows_[i]; }
    const std::vector<uint32_t>& flag() const { return flag_; }
    int32_t code() const { return code_; }
    const std::vector<StackEntry>* stack() const { return stack_; }
    std::optional<size_t> failed() const { return failed_; }

  private:
    bool all_present(size_t j) const {
        return std::all_of(batch_.rows.begin(), batch_.rows.end(), [j](const BatchRow& row) { return row.bytes[j] != 0; });
    }

    uint32_t start_flag() const {
        const Rules& rules = batch_.rules;
        switch (rules.flag) {
            case Rules::Flag::one:
                return 1;
            case Rules::Flag::kept:
                return Vector::kFlagPattern;
            case Rules::Flag::copy:
                return flags_[rules.copied_argument - 1];
            case Rules::Flag::any:
                return *std::max_element(flags_.begin(), flags_.end());
            case Rules::Flag::combine:
                break;
        }
        uint32_t flag = 1;
        for (size_t j = 0; j < flags_.size(); ++j) {
            if (batch_.form[j] == 'a' || rules.flag_reads_constants) flag &= flags_[j];
        }
        return flag;
    }

    void expect_whole() {
        const Outcome& whole = *batch_.whole;
        const bool error = whole.kind == Outcome::Kind::setup_error;
        for (Expected& row : rows_) {
            row.valid_untouched = error || batch_.no_rows;
            row.valid = ByteSet(0);
        }
        code_ = error ? whole.code : 0;
        stack_ = &whole.stack;
        flag_ = error ? std::vector<uint32_t>{start_flag_, Vector::kFlagPattern, 0} : std::vector<uint32_t>{0};
    }

    uint8_t combined(const BatchRow& row, bool either) const {
        uint8_t byte = either ? 0 : 0xFF;
        for (size_t j = 0; j < batch_.form.size(); ++j) {
            const bool vector = batch_.form[j] == 'a';
            if (batch_.form[j] == 'i') continue;
            if (!vector && !either && batch_.rules.constants != Rules::Constants::rows) continue;
            const auto mine = vector ? row.bytes[j] : static_cast<uint8_t>(batch_.constants[j].has);
            byte = static_cast<uint8_t>(either ? byte | mine : byte & mine);
        }
        return byte;
    }

    // The valid bytes that a computed row may have.
    ByteSet computed_valid(const BatchRow& row) const {
        switch (batch_.rules.valid) {
            case Rules::Valid::set:
                return ByteSet(1);
            case Rules::Valid::kept:
                return ByteSet(combined(row, false));
            case Rules::Valid::any:
                return ByteSet(combined(row, true));
            case Rules::Valid::taken:
                break;
        }
        ByteSet bytes(1);
        for (size_t j = 0; j < batch_.form.size(); ++j) {
            if (batch_.form[j] == 'a' && row.bytes[j] != 0) bytes.add(row.bytes[j]);
        }
        return bytes;
    }

    void expect_rows() {
        bool lowered = false;
        for (size_t i = 0; i < rows_.size(); ++i) {
            Expected& expected = rows_[i];
            const BatchRow& row = batch_.rows[i];
            if (failed_.has_value()) {
                expected.valid_untouched = true;
                continue;
            }
            if (!batch_.rules.null_evaluated && combined(row, false) == 0) {
                expected.valid = ByteSet(0);
                continue;
            }
            const Outcome& outcome = *row.outcome;
            if (outcome.kind == Outcome::Kind::value) {
                expected.valid = computed_valid(row);
                expect_value(expected, outcome.value, outcome.tolerance);
            } else if (outcome.kind == Outcome::Kind::null) {
                expected.valid = ByteSet(0);
                lowered = true;
                expected.element = Expected::Element::unchecked;
                if (outcome.null_row == Outcome::Row::kept) expected.element = Expected::Element::untouched;
                if (outcome.null_row == Outcome::Row::value) expect_value(expected, outcome.value, outcome.tolerance);
            } else {
                failed_ = i;
                expect_failure(expected, row, outcome);
            }
        }
        if (failed_.has_value()) {
            flag_ = {start_flag_, Vector::kFlagPattern, 0};
        } else if (batch_.rules.flag_lowered && lowered) {
            flag_ = {0};
        }
    }

    static void expect_value(Expected& expected, const Cell& value, const Tolerance& tolerance) {
        expected.element = Expected::Element::value;
        expected.value = &value;
        expected.tolerance = &tolerance;
    }

    void expect_failure(Expected& expected, const BatchRow& row, const Outcome& outcome) {
        code_ = outcome.code;
        stack_ = &outcome.stack;
        Outcome::Row shape = outcome.failed_row;
        const bool clears = batch_.rules.failure == Rules::Failure::string;
        if (shape == Outcome::Row::by_rule) shape = clears ? Outcome::Row::null : Outcome::Row::kept;
        switch (shape) {
            case Outcome::Row::value:
                expected.valid = computed_valid(row);
                expect_value(expected, outcome.failed_value, outcome.tolerance);
                break;
            case Outcome::Row::null:
                expected.valid = ByteSet(0);
                expected.element = Expected::Element::unchecked;
                break;
            default:
                // Where rows with NULLs are computed too, there is nothing to combine: the byte is stored ahead of the value.
                expected.valid = batch_.rules.null_evaluated && batch_.rules.valid == Rules::Valid::set
                                     ? computed_valid(row)
                                     : ByteSet(combined(row, batch_.rules.valid == Rules::Valid::any));
                break;
        }
        if (batch_.rules.failure == Rules::Failure::first) rows_[0].valid = ByteSet(0);
    }

    const Batch& batch_;
    std::vector<Expected> rows_;
    std::vector<uint32_t> flags_;  // all_valid of vectors, has_value of constants
    uint32_t start_flag_ = 0;
    std::vector<uint32_t> flag_;
    int32_t code_ = 0;
    const std::vector<StackEntry>* stack_ = nullptr;
    std::optional<size_t> failed_;
};

// ---- Laying vectors out -----------------------------------------------------------------------------------------------------

// Row numbers 0 to physical-1 in some order, of which the first n are taken.
std::vector<uint16_t> permutation(size_t n, size_t physical, uint64_t seed) {
    std::vector<uint16_t> order(physical);
    std::iota(order.begin(), order.end(), uint16_t{0});
    Random random(seed);
    for (size_t i = physical; i > 1; --i) std::swap(order[i - 1], order[random.below(static_cast<uint32_t>(i))]);
    order.resize(n);
    return order;
}

Vector lay_out(Host& host, const Batch& batch, size_t j) {
    const size_t n = batch.rows.size();
    const auto cell = [&](size_t i) { return batch.rows[i].arguments[j]; };
    const auto byte = [&](size_t i) { return batch.rows[i].bytes[j]; };
    std::vector<uint16_t> place(n);
    size_t physical = n;
    switch (batch.selections[j]) {
        case Selection::none:
            std::iota(place.begin(), place.end(), uint16_t{0});
            break;
        case Selection::permuted:
            physical = n + 3;
            place = permutation(n, physical, batch.seed * 31 + j);
            break;
        case Selection::repeated: {
            std::map<std::pair<const Cell*, uint8_t>, uint16_t> places;
            for (size_t i = 0; i < n; ++i) {
                const auto next = static_cast<uint16_t>(places.size());
                place[i] = places.try_emplace({cell(i), byte(i)}, next).first->second;
            }
            physical = places.size();
            break;
        }
    }
    Vector vector(host, *batch.arguments[j], static_cast<uint32_t>(physical));
    for (size_t i = 0; i < n; ++i) vector.set(place[i], *cell(i), byte(i));
    if (batch.selections[j] != Selection::none) vector.select(place);
    return vector;
}

// ---- The call ---------------------------------------------------------------------------------------------------------------

// Calls function with the argument types that its form tells.
template <class... Done>
int32_t invoke(const Batch& batch, qz_env* env, rt_memobj* mem, void* const* rest, bdta3_col* result, uint32_t nrows,
               Done... done) {
    const size_t next = sizeof...(Done);
    if (next == batch.form.size()) {
        using Function = int32_t(qz_env*, rt_memobj*, Done..., bdta3_col*, uint32_t);
        using WithExtra = int32_t(qz_env*, rt_memobj*, Done..., bdta3_col*, uint32_t, int32_t);
        if (batch.extra.has_value()) {
            return reinterpret_cast<WithExtra*>(batch.function)(env, mem, done..., result, nrows, *batch.extra);
        }
        return reinterpret_cast<Function*>(batch.function)(env, mem, done..., result, nrows);
    }
    if constexpr (sizeof...(Done) < kMaxArguments) {
        void* argument = rest[next];
        switch (batch.form[next]) {
            case 'a':
                return invoke(batch, env, mem, rest, result, nrows, done..., static_cast<bdta3_col*>(argument));
            case 'v':
                return invoke(batch, env, mem, rest, result, nrows, done..., static_cast<bdta3_scalar*>(argument));
            case 'i':
                return invoke(batch, env, mem, rest, result, nrows, done..., static_cast<bdta3_int*>(argument)->value);
            default:
                throw std::logic_error("no such form: " + batch.form);
        }
    }
    throw std::logic_error("a form of more than " + std::to_string(kMaxArguments) + " arguments");
}

class Differences {
  public:
    void add(const std::string& text) {
        if (messages_.size() < kMessages) messages_.push_back(text);
    }
    void add_if(const std::string& where, const std::string& text) {
        if (!text.empty()) add(where + text);
    }
    bool full() const { return messages_.size() >= kMessages; }
    std::vector<std::string> take() { return std::move(messages_); }

  private:
    std::vector<std::string> messages_;
};

std::string print_byte_set(const ByteSet& set) {
    std::string text;
    for (size_t i = 0; i < set.count; ++i) text += (text.empty() ? "" : " or ") + std::to_string(set.bytes[i]);
    return text;
}

void check_row(const Batch& batch, const Expectation& expectation, const Vector& result, uint32_t i, Differences& differences) {
    const Expected& expected = expectation.row(i);
    const auto where = [&] { return "row " + std::to_string(i) + (expectation.failed() == i ? " (fails)" : "") + ": "; };
    const uint8_t valid = result.valid(i);
    if (expected.valid_untouched) {
        if (!result.valid_untouched(i)) differences.add(where() + "valid byte was written, " + std::to_string(valid));
    } else if (!expected.valid.has(valid)) {
        differences.add(where() + "valid byte " + std::to_string(valid) + ", expected " + print_byte_set(expected.valid));
        if (valid == Vector::kValidPattern || valid == 0) return;
    }
    switch (expected.element) {
        case Expected::Element::unchecked:
            return;
        case Expected::Element::untouched:
            if (!result.value_untouched(i)) differences.add(where() + "the element was written");
            return;
        case Expected::Element::value:
            break;
    }
    if (result.value_untouched(i)) {
        differences.add(where() + "the element was not written, expected " + batch.result->print(*expected.value));
        return;
    }
    const Cell actual = result.cell(i);
    if (!batch.result->same(*expected.value, actual, *expected.tolerance)) {
        differences.add(where() + batch.result->print(actual) + ", expected " + batch.result->print(*expected.value));
    }
}

void check_flag(const Expectation& expectation, uint32_t flag, Differences& differences) {
    const std::vector<uint32_t>& allowed = expectation.flag();
    if (std::find(allowed.begin(), allowed.end(), flag) != allowed.end()) return;
    const std::string was = flag == Vector::kFlagPattern ? "as it was before" : std::to_string(flag);
    const std::string kept = allowed[0] == Vector::kFlagPattern ? "as it was before" : std::to_string(allowed[0]);
    differences.add("all_valid is " + was + ", expected " + kept);
}

void check_stack(const Expectation& expectation, const Host& host, Differences& differences) {
    const std::vector<StackEntry> expected = expectation.stack() != nullptr ? *expectation.stack() : std::vector<StackEntry>();
    const std::vector<StackEntry> stack = host.errors();
    if (stack != expected) differences.add("error stack: " + print(stack) + ", expected: " + print(expected));
}

void check_exhausted_stack(const Rules& rules, const Host& host, Differences& differences) {
    const std::vector<StackEntry> stack = host.errors();
    if (rules.pushes.empty() ? stack.empty()
                             : std::find(rules.pushes.begin(), rules.pushes.end(), stack) != rules.pushes.end()) {
        return;
    }
    std::string expected = rules.pushes.empty() ? "empty" : "";
    for (const std::vector<StackEntry>& one : rules.pushes) expected += (expected.empty() ? "" : " or ") + print(one);
    differences.add("error stack of an exhausted call: " + print(stack) + ", expected: " + expected);
}

// True when the call failed for an allocation that was made to fail.
bool is_exhaustion(const Batch& batch, int32_t code, int32_t expected) {
    if (batch.fail_after < 0 || code == expected) return false;
    return batch.rules.exhaustion == Rules::Exhaustion::any ? code < 0 : code == EC_OUT_OF_MEMORY;
}

// Gives back the texts that the result's rows hold in blocks of their own.
void release_texts(Host& host, const Vector& result) {
    std::set<char*> blocks;
    for (uint32_t i = 0; i < result.rows(); ++i) {
        if (result.value_untouched(i)) continue;
        char* bytes = result.slot(i).bytes;
        if (bytes != nullptr && bdta3_str_is_in_local(result.col()->data, bytes) == 0) blocks.insert(bytes);
    }
    rt_memobj* mem = host.mem();
    for (char* block : blocks) mem->free(host.env(), mem->pool, block);
}

}  // namespace

std::vector<std::string> run(Host& host, const Batch& batch, int32_t* answered) {
    const Expectation expectation(batch);
    const auto n = static_cast<uint32_t>(batch.rows.size());
    const uint32_t nrows = batch.no_rows ? 0 : n;

    std::vector<std::optional<Vector>> vectors(batch.form.size());
    std::vector<std::optional<Constant>> constants(batch.form.size());
    std::array<void*, kMaxArguments> arguments{};
    for (size_t j = 0; j < batch.form.size(); ++j) {
        if (batch.form[j] == 'a') {
            vectors[j].emplace(lay_out(host, batch, j));
            vectors[j]->col()->all_valid = expectation.argument_flag(j);
            vectors[j]->remember();
            arguments[j] = vectors[j]->col();
        } else {
            constants[j].emplace(*batch.arguments[j], batch.constants[j], &host);
            arguments[j] = constants[j]->scalar();
        }
    }
    Vector result = Vector::result(host, *batch.result, n);
    result.select(std::vector<uint16_t>(n, UINT16_MAX));  // a result is dense: who follows this goes astray
    const bdta3_col result_before = *result.col();

    host.clear_errors();
    const size_t outstanding = host.outstanding();
    host_memory_fail_after(batch.fail_after);
    const int32_t code = invoke(batch, host.env(), host.mem(), arguments.data(), result.col(), nrows);
    host_memory_fail_after(-1);
    if (answered != nullptr) *answered = code;

    Differences differences;
    if (is_exhaustion(batch, code, expectation.code())) {
        check_exhausted_stack(batch.rules, host, differences);
    } else {
        if (code != expectation.code()) {
            differences.add("returned " + print_code(code) + ", expected " + print_code(expectation.code()));
        }
        check_stack(expectation, host, differences);
        check_flag(expectation, result.col()->all_valid, differences);
        for (uint32_t i = 0; i < n && !differences.full(); ++i) check_row(batch, expectation, result, i, differences);
    }

    if (result.col()->sel != result_before.sel || result.col()->data != result_before.data) {
        differences.add("the result's descriptor was changed");
    }
    differences.add_if("result: ", result.overrun());
    for (size_t j = 0; j < batch.form.size(); ++j) {
        const std::string where = "argument " + std::to_string(j + 1) + ": ";
        if (vectors[j].has_value()) {
            differences.add_if(where, vectors[j]->overrun());
            if (!batch.rules.inputs_changed) differences.add_if(where, vectors[j]->changed());
        } else if (!batch.rules.inputs_changed) {
            differences.add_if(where, constants[j]->changed());
        }
    }
    if (batch.result->is_text()) release_texts(host, result);
    if (const size_t now = host.outstanding(); now != outstanding) {
        differences.add("memory is out of balance: " + std::to_string(outstanding) + " bytes before, " + std::to_string(now) +
                        " behind, the result's texts not counted");
    }
    return differences.take();
}

}  // namespace support
