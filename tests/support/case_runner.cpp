#include "tests/support/case_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <filesystem>
#include <memory>
#include <optional>
#include <set>

#include "qzbifun/qzbifun.h"

namespace support {
namespace {

constexpr size_t kReported = 3;  // replays of one line that are reported

// ---- Settings ---------------------------------------------------------------------------------------------------------------

class InSettings {
  public:
    InSettings(const Settings& settings, Host& host) {
        bifun_dll_var_init(settings.compat_mode, settings.charset, settings.case_sensitive);
        for (const auto& [number, value] : settings.parameters) parameters_.set(number, value);
        host_set_oracle_date_format(settings.oracle_date_format);
        if (!settings.session) return;
        qz_session* session = host.open_session();
        host_session_set_time_zone(session, settings.time_zone);
        host_session_set_language(session, settings.language, settings.date_language);
    }
    ~InSettings() {
        bifun_dll_var_init(0, 0, 0);
        host_set_oracle_date_format(0);
    }
    InSettings(const InSettings&) = delete;
    InSettings& operator=(const InSettings&) = delete;

  private:
    Parameters parameters_;
};

// ---- One form of one line ---------------------------------------------------------------------------------------------------

// Where the line's row stands in a batch.
struct Place {
    uint32_t rows;
    uint32_t position;
};
constexpr size_t kMostTextBytes = size_t{2} << 20;  // of one batch: long texts are replayed in small batches only
constexpr Place kPlaces[] = {{1, 0}, {2, 0}, {2, 1}, {63, 31}, {64, 0}, {64, 63}, {65, 64}, {131, 130}, {1025, 512}};

enum class Neighbours : uint8_t { others, nulls, mixed, same };
enum class Bytes : uint8_t { one, all_bits, other_bit, mixed };

// The stacks of the forms' rules that an exhausted call has left.
using SeenStacks = std::set<const std::vector<StackEntry>*>;

class FormReplay {
  public:
    FormReplay(const CaseFunction& function, const CaseForm& form, const CaseLine& line, void* address, SeenStacks& seen)
        : form_(form), line_(line), seen_(seen), random_(static_cast<uint64_t>(line.line)) {
        batch_.form = form.form;
        batch_.extra = form.extra;
        batch_.arguments = function.arguments;
        batch_.result = function.result;
        batch_.rules = form.rules;
        for (std::vector<StackEntry>& stack : batch_.rules.pushes) resolve(stack);
        batch_.function = address;
        batch_.constants = line.arguments;
        batch_.selections.assign(form.form.size(), Selection::none);
        own_ = line.outcome;
        resolve(own_.stack);
        for (size_t j = 0; j < form.form.size(); ++j) {
            if (form.form[j] == 'a') vectors_.push_back(j);
        }
        for (const CaseLine& other : function.lines) {
            if (!shares_batch(other)) continue;
            for (const Cell& cell : other.arguments) longest_ = std::max(longest_, cell.bytes.size());
            longest_ = std::max(longest_, other.outcome.value.bytes.size());
            const bool row = other.outcome.kind == Outcome::Kind::value || other.outcome.kind == Outcome::Kind::null;
            if (row) successes_.push_back(&other);
            if (other.outcome.kind == Outcome::Kind::error) failing_ = &other;
        }
    }

    // False when the line tells nothing of this form.
    bool applies() const {
        const auto& only = line_.only_forms;
        if (!only.empty()) return std::find(only.begin(), only.end(), form_.form) != only.end();
        // A NULL constant that the rows do not look at: replayed from the lines without NULL.
        return form_.rules.constants != Rules::Constants::ignored || !has_null_constant();
    }

    std::vector<std::string> run(size_t& replays) {
        host_.emplace();
        const InSettings settings(line_.settings, *host_);
        if (form_.rules.constants == Rules::Constants::once && has_null_constant()) {
            own_.kind = Outcome::Kind::all_null;
        }
        if (own_.kind == Outcome::Kind::all_null || own_.kind == Outcome::Kind::setup_error) batch_.whole = &own_;

        uint32_t variant = static_cast<uint32_t>(line_.line);
        for (const std::vector<Selection>& selections : layouts()) {
            batch_.selections = selections;
            for (const Place& place : kPlaces) {
                if (place.rows > 1 && place.rows * longest_ > kMostTextBytes) continue;
                replay(place, variant++, "");
            }
        }
        replay_no_rows();
        replay_null_constants();
        replay_exhaustion();
        replays += replays_;
        return std::move(failures_);
    }

  private:
    bool has_null_constant() const {
        for (size_t j = 0; j < form_.form.size(); ++j) {
            if (form_.form[j] != 'a' && !line_.arguments[j].present()) return true;
        }
        return false;
    }

    // Lines whose rows may stand in one batch: the same constants and the same settings.
    bool shares_batch(const CaseLine& other) const {
        const auto& only = other.only_forms;
        if (!only.empty() && std::find(only.begin(), only.end(), form_.form) == only.end()) return false;
        if (!(other.settings == line_.settings)) return false;
        for (size_t j = 0; j < form_.form.size(); ++j) {
            if (form_.form[j] != 'a' && !other.arguments[j].same(line_.arguments[j])) return false;
        }
        return true;
    }

    void resolve(std::vector<StackEntry>& stack) const {
        for (StackEntry& entry : stack) {
            if (entry.name == "self") entry.name = form_.exported;
        }
    }

    // ---- The ways in which the vectors lie behind their selections ----

    std::vector<std::vector<Selection>> layouts() const {
        const size_t n = form_.form.size();
        std::vector<std::vector<Selection>> layouts;
        for (const Selection each : {Selection::none, Selection::permuted, Selection::repeated}) layouts.emplace_back(n, each);
        if (vectors_.size() < 2) return layouts;
        std::vector<Selection> first(n, Selection::none);
        first[vectors_.front()] = Selection::permuted;
        std::vector<Selection> last(n, Selection::none);
        last[vectors_.back()] = Selection::repeated;
        layouts.push_back(std::move(first));
        layouts.push_back(std::move(last));
        return layouts;
    }

    // ---- Rows ----

    // A row with the line's arguments. common is a bit that all its valid bytes have.
    BatchRow row_of(const CaseLine& line, const Outcome& outcome, Bytes bytes, uint8_t common) {
        BatchRow row;
        row.outcome = &outcome;
        for (size_t j = 0; j < line.arguments.size(); ++j) {
            const Cell& cell = line.arguments[j];
            row.arguments[j] = &cell;
            uint8_t byte = 1;
            if (bytes == Bytes::all_bits) byte = 0xFF;
            if (bytes == Bytes::other_bit) byte = 2;
            if (bytes == Bytes::mixed) byte = static_cast<uint8_t>(common | random_.below(256));
            if (cell.has != 1) byte = static_cast<uint8_t>(cell.has);
            row.bytes[j] = byte;
        }
        return row;
    }

    // A row that is NULL because a vector's row is, over values that would be computed or even fail.
    BatchRow null_row(Bytes bytes, uint32_t i) {
        const CaseLine& over = failing_ != nullptr ? *failing_ : line_;
        BatchRow row = row_of(over, own_, bytes, 1);
        row.bytes[vectors_[i % vectors_.size()]] = 0;
        const bool disjoint = bytes != Bytes::one && vectors_.size() > 1 && i % 3 == 0;
        if (disjoint && over.arguments[vectors_[0]].has == 1 && over.arguments[vectors_[1]].has == 1) {
            row.bytes[vectors_[0]] = 0x55;  // no bit in common: a NULL as well
            row.bytes[vectors_[1]] = 0xAA;
        }
        return row;
    }

    std::optional<BatchRow> neighbour(Neighbours neighbours, Bytes bytes, uint32_t i) {
        const bool nulls = !form_.rules.null_evaluated;
        const auto common = static_cast<uint8_t>(1u << (i % 8));
        const bool wants_null = neighbours == Neighbours::nulls || (neighbours == Neighbours::mixed && i % 3 == 1);
        const bool own = own_.kind == Outcome::Kind::value || own_.kind == Outcome::Kind::null;
        if (nulls && (wants_null || successes_.empty())) return null_row(bytes, i);
        if (neighbours == Neighbours::same && own) return row_of(line_, own_, bytes, common);
        if (successes_.empty()) return std::nullopt;
        const CaseLine& other = *successes_[i % successes_.size()];
        return row_of(other, other.outcome, bytes, common);
    }

    void fill(Place place, Neighbours neighbours, Bytes bytes) {
        batch_.rows.clear();
        if (batch_.whole == nullptr && own_.kind == Outcome::Kind::error && !neighbour(neighbours, bytes, 0)) {
            place.position = 0;  // nothing can stand in front of the row that fails
        }
        for (uint32_t i = 0; i < place.rows; ++i) {
            if (i == place.position) {
                batch_.rows.push_back(row_of(line_, own_, bytes, 0x10));
                continue;
            }
            std::optional<BatchRow> row = neighbour(neighbours, bytes, i);
            batch_.rows.push_back(row.has_value() ? std::move(*row) : row_of(line_, own_, bytes, 1));
        }
    }

    // ---- Calls ----

    void replay(const Place& place, uint32_t variant, const std::string& what) {
        const auto neighbours = static_cast<Neighbours>(variant % 4);
        auto bytes = static_cast<Bytes>((variant / 4 + variant) % 4);
        if (form_.rules.bytes_plain) bytes = Bytes::one;
        fill(place, neighbours, bytes);
        batch_.flags_low = variant % 5 == 4;
        batch_.seed = variant;
        call(what + std::to_string(place.rows) + " rows, the line's row " + std::to_string(place.position) + ", " +
             print_layout() + print(neighbours) + print(bytes) + (batch_.flags_low ? ", all_valid of the arguments 0" : ""));
    }

    int32_t call(const std::string& circumstances) {
        if (failures_.size() >= kReported) return 0;
        ++replays_;
        int32_t code = 0;
        std::string text;
        for (const std::string& difference : support::run(*host_, batch_, &code)) text += "\n    " + difference;
        if (!text.empty()) failures_.push_back(form_.form + " " + form_.exported + ": " + circumstances + text);
        return code;
    }

    void replay_no_rows() {
        batch_.no_rows = true;
        fill({1, 0}, Neighbours::same, Bytes::one);
        for (const Selection selection : {Selection::none, Selection::permuted}) {
            batch_.selections.assign(form_.form.size(), selection);
            call("no rows, " + print_layout());
        }
        batch_.no_rows = false;
    }

    // Each constant with other words in has_value over the same value field, where the rules tell what comes of that.
    void replay_null_constants() {
        const Rules::Constants mode = form_.rules.constants;
        if (mode == Rules::Constants::own || has_null_constant() || batch_.whole != nullptr) return;
        Outcome all_null;
        all_null.kind = Outcome::Kind::all_null;
        std::vector<uint32_t> words = {0, 2};
        if (mode == Rules::Constants::rows) words.push_back(256);  // not 0, but for its low byte
        for (size_t j = 0; j < form_.form.size(); ++j) {
            if (form_.form[j] != 'v' || line_.arguments[j].has != 1) continue;
            for (const uint32_t word : words) {
                batch_.constants[j].has = word;
                if (mode == Rules::Constants::once && word == 0) batch_.whole = &all_null;
                const std::string what =
                    "has_value of constant " + std::to_string(j + 1) + " is " + std::to_string(word) + ", ";
                batch_.selections.assign(form_.form.size(), Selection::none);
                replay({64, 31}, static_cast<uint32_t>(line_.line), what);
                batch_.selections.assign(form_.form.size(), Selection::permuted);
                replay({3, 2}, static_cast<uint32_t>(line_.line) + 1, what);
                batch_.constants[j].has = 1;
                batch_.whole = nullptr;
            }
        }
    }

    // With the first allocation of the call failing, then the second, and so on while that makes it fail.
    void replay_exhaustion() {
        constexpr int kMostAllocations = 2000;
        constexpr int kEnough = 3;  // a call may do without an allocation and miss a later one
        if (form_.rules.exhaustion == Rules::Exhaustion::unchecked) return;
        batch_.selections.assign(form_.form.size(), Selection::none);
        fill({4, 2}, Neighbours::others, Bytes::one);
        int succeeded = 0;
        int n = 0;
        for (; n < kMostAllocations && succeeded < kEnough && failures_.empty(); ++n) {
            batch_.fail_after = n;
            const int32_t code = call("4 rows, allocation " + std::to_string(n + 1) + " and all behind it fail");
            const bool as_told = code == 0 || (own_.kind != Outcome::Kind::value && code == own_.code);
            succeeded = as_told ? succeeded + 1 : 0;
            if (!as_told) see(host_->errors());
        }
        batch_.fail_after = -1;
        if (n == kMostAllocations) failures_.push_back(form_.form + " " + form_.exported + ": never done with its allocations");
        call("4 rows, after its allocations failed");
    }

    // Remembers that an exhausted call left this one of the stacks that the form's rules tell.
    void see(const std::vector<StackEntry>& stack) {
        for (size_t i = 0; i < batch_.rules.pushes.size(); ++i) {
            if (batch_.rules.pushes[i] == stack) seen_.insert(&form_.rules.pushes[i]);
        }
    }

    // ---- Messages ----

    std::string print_layout() const {
        static constexpr const char* kNames[] = {"none", "permuted", "repeated"};
        std::string text = "selection";
        for (size_t j = 0; j < form_.form.size(); ++j) {
            if (form_.form[j] == 'a') text += std::string(" ") + kNames[static_cast<size_t>(batch_.selections[j])];
        }
        return text;
    }

    static std::string print(Neighbours neighbours) {
        static constexpr const char* kNames[] = {"others", "NULLs", "others and NULLs", "the line itself"};
        return std::string(", neighbours ") + kNames[static_cast<size_t>(neighbours)];
    }

    static std::string print(Bytes bytes) {
        static constexpr const char* kNames[] = {"1", "255", "2", "mixed"};
        return std::string(", valid bytes ") + kNames[static_cast<size_t>(bytes)];
    }

    const CaseForm& form_;
    const CaseLine& line_;
    SeenStacks& seen_;
    Random random_;
    Outcome own_;
    std::vector<size_t> vectors_;  // numbers of the arguments that are vectors
    std::vector<const CaseLine*> successes_;
    const CaseLine* failing_ = nullptr;
    size_t longest_ = 0;  // bytes of a value
    std::optional<Host> host_;
    Batch batch_;
    size_t replays_ = 0;
    std::vector<std::string> failures_;
};

// ---- GoogleTest -------------------------------------------------------------------------------------------------------------

class CaseTest : public ::testing::Test {
  public:
    CaseTest(std::shared_ptr<const CaseFile> file, const CaseFunction& function, FindFunction find)
        : file_(std::move(file)), function_(function), find_(std::move(find)) {}

    void TestBody() override {
        size_t replays = 0;
        for (const CaseFailure& failure : replay(function_, find_, &replays)) {
            ADD_FAILURE_AT(file_->path.c_str(), failure.line) << failure.text;
        }
        RecordProperty("calls", static_cast<int>(replays));
    }

  private:
    std::shared_ptr<const CaseFile> file_;
    const CaseFunction& function_;
    FindFunction find_;
};

class MalformedFile : public ::testing::Test {
  public:
    explicit MalformedFile(std::shared_ptr<const CaseFile> file) : file_(std::move(file)) {}

    void TestBody() override {
        for (const CaseFile::Error& error : file_->errors) ADD_FAILURE_AT(file_->path.c_str(), error.line) << error.text;
    }

  private:
    std::shared_ptr<const CaseFile> file_;
};

}  // namespace

std::vector<CaseFailure> replay(const CaseFunction& function, const FindFunction& find, size_t* replays) {
    std::vector<CaseFailure> failures;
    const auto add = [&](int line, const std::string& text) { failures.push_back({line, text}); };
    SeenStacks seen;
    size_t calls = 0;
    for (const CaseLine& line : function.lines) {
        bool ran = false;
        for (const CaseForm& form : function.forms) {
            void* address = find(form.exported);
            if (address == nullptr) {
                add(line.line, form.exported + " is not exported");
                ran = true;
                continue;
            }
            FormReplay form_replay(function, form, line, address, seen);
            if (!form_replay.applies()) continue;
            ran = true;
            for (const std::string& failure : form_replay.run(calls)) add(line.line, line.text + "\n  " + failure);
        }
        if (!ran) add(line.line, line.text + "\n  no form can run the line");
    }
    for (const CaseForm& form : function.forms) {
        for (const std::vector<StackEntry>& stack : form.rules.pushes) {
            if (seen.count(&stack) != 0) continue;
            add(function.line, form.exported + ": no exhausted call pushes what the rules tell: " + print(stack));
        }
    }
    if (replays != nullptr) *replays += calls;
    return failures;
}

size_t register_case_tests(const std::string& directory, const FindFunction& find) {
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) {
        if (entry.path().extension() == ".case") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    for (const std::filesystem::path& path : paths) {
        const auto file = std::make_shared<const CaseFile>(read_cases(path.string()));
        const std::string suite = path.stem().string();
        const char* name = file->path.c_str();
        if (!file->errors.empty()) {
            ::testing::RegisterTest(suite.c_str(), "is_well_formed", nullptr, nullptr, name, file->errors[0].line,
                                    [file]() -> ::testing::Test* { return new MalformedFile(file); });
        }
        for (const CaseFunction& function : file->functions) {
            const std::string test = function.name + "_line_" + std::to_string(function.line);
            ::testing::RegisterTest(
                suite.c_str(), test.c_str(), nullptr, nullptr, name, function.line,
                [file, &function, find]() -> ::testing::Test* { return new CaseTest(file, function, find); });
        }
    }
    return paths.size();
}

}  // namespace support
