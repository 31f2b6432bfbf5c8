// The frame under artificial workers, against a plain statement of its rules: every form of two arguments, every way a family
// may treat NULLs, flags, stores and failures, with and without selections, around every block boundary.
#include "bop/frame/run.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <numeric>
#include <ostream>
#include <random>
#include <string>
#include <vector>

#include "qzhost/control.h"

namespace bifun {
namespace {

constexpr double kPoison = 1e9;      // as first argument makes a worker fail
constexpr double kHeld = -77.25;     // what the result's elements hold before the call
constexpr uint8_t kHeldByte = 0xA5;  // what its valid bytes hold
constexpr uint32_t kHeldFlag = 0x5EED;
constexpr uint32_t kGuard = 16;  // elements behind every result that nobody may touch
constexpr const char* kWorkerName = "subject_process";
constexpr const char* kBatchName = "subject";

double formula(double x, double y) { return 2 * x - y; }

// ---- Artificial workers, one for each protocol -----------------------------------------------------------------------------

template <Rules kRules>
struct ByRow {
    static constexpr Rules rules = kRules;
    static double row(double x, double y) { return formula(x, y); }
};

template <Rules kRules>
struct Total : ByRow<kRules> {
    static constexpr bool total = true;
};

template <Rules kRules>
struct MayFail {
    static constexpr Rules rules = kRules;
    static Code row(Row out, double x, double y) {
        if (x == kPoison) return out.fail(EC_INVALID_ARGUMENT, kWorkerName);
        if (kRules.store == Store::kSet) return out.put(formula(x, y));
        out.slot<double>() = formula(x, y);
        return kOk;
    }
};

template <Rules kRules>
struct Guarded {
    static constexpr Rules rules = kRules;
    static bool refuses(double x, double) { return x == kPoison; }
    static double value(double x, double y) { return formula(x, y); }
    static Code refuse(Row out, double, double) { return out.fail(EC_INVALID_ARGUMENT, kWorkerName); }
};

template <Rules kRules>
struct Kernel {
    static constexpr Rules rules = kRules;
    static void block(double* out, uint32_t n, const double* x, const double* y) {
        if (n > frame::kBlockRows) std::abort();
        for (uint32_t i = 0; i < n; ++i) out[i] = formula(x[i], y[i]);
    }
};

template <Rules kRules>
struct KernelThatRefuses : Kernel<kRules> {
    static bool refuses(double computed, double x, double y) { return x == kPoison && computed == formula(x, y); }
    static Code refuse(Row out, double x, double) { return x == kPoison ? out.fail(EC_INVALID_ARGUMENT, kWorkerName) : kOk; }
};

// ---- Arguments -------------------------------------------------------------------------------------------------------------

enum class Selection { kNone, kPermuting, kRepeating };
enum class Nulls { kNone, kFew, kSome, kAll, kOddBytes };

bdta3_scalar* scalar_of(bdta3_double& record) { return reinterpret_cast<bdta3_scalar*>(&record); }

struct Argument {
    bool vector;
    std::vector<double> values;
    std::vector<uint8_t> valid;
    std::vector<uint16_t> sel;
    bdta3_coldata data{};
    bdta3_col col{};
    bdta3_double constant{};

    // Rows of small whole numbers; a NULL row holds poison, which shows when it is computed with.
    Argument(bool is_vector, Selection selection, Nulls nulls, uint32_t rows, std::mt19937& random) : vector(is_vector) {
        static constexpr uint8_t kOddBytes[] = {0, 1, 2, 3, 128, 255};
        const uint32_t physical_rows = rows + 7;
        for (uint32_t i = 0; i < physical_rows; ++i) {
            uint8_t byte = 1;
            if (nulls == Nulls::kAll || (nulls == Nulls::kSome && random() % 3 == 0)) byte = 0;
            if (nulls == Nulls::kFew && random() % 20 == 0) byte = 0;
            if (nulls == Nulls::kOddBytes) byte = kOddBytes[random() % std::size(kOddBytes)];
            valid.push_back(byte);
            values.push_back(byte == 0 ? kPoison : static_cast<double>(random() % 1000));
        }
        data = {valid.data(), values.data(), nullptr};
        col = {nulls == Nulls::kNone ? 1u : 0u, nullptr, &data};
        if (selection == Selection::kNone) return;
        sel.resize(physical_rows);
        std::iota(sel.begin(), sel.end(), uint16_t{0});
        std::shuffle(sel.begin(), sel.end(), random);
        if (selection == Selection::kRepeating) {
            for (uint16_t& row : sel) row = static_cast<uint16_t>(row % (physical_rows / 3 + 1));
        }
        col.sel = sel.data();
    }
    Argument(const Argument&) = delete;

    uint32_t physical(uint32_t i) const { return sel.empty() ? i : sel[i]; }
    double value(uint32_t i) const { return vector ? values[physical(i)] : constant.value; }
};

struct Result {
    std::vector<double> values;
    std::vector<uint8_t> valid;
    bdta3_coldata data{};
    bdta3_col col{};
    uint16_t sel_marker = 0;

    explicit Result(uint32_t rows) : values(rows + kGuard, kHeld), valid(rows + kGuard, kHeldByte) {
        data = {valid.data(), values.data(), nullptr};
        col = {kHeldFlag, &sel_marker, &data};  // a result's selection is neither read nor written
    }
    Result(const Result&) = delete;
};

// ---- The rules, stated plainly ---------------------------------------------------------------------------------------------

struct Outcome {
    int32_t code = 0;
    uint32_t all_valid = kHeldFlag;
    std::vector<double> values;
    std::vector<uint8_t> valid;
    std::vector<std::string> stack;
};

uint32_t expected_flag(const Rules& rules, const Argument& x, const Argument& y) {
    if (rules.row_null == RowNull::kNever) return 1;
    uint32_t both = 1;
    uint32_t either = 0;
    for (const Argument* argument : {&x, &y}) {
        const uint32_t own = argument->vector ? argument->col.all_valid : argument->constant.has_value != 0;
        either |= own;
        if (argument->vector || rules.constants == ConstantNull::kFlag) both &= own;
    }
    return rules.row_null == RowNull::kAll ? either : both;
}

uint8_t expected_byte(const Rules& rules, const Argument& x, const Argument& y, uint32_t i) {
    if (rules.row_null == RowNull::kNever) return 1;
    uint8_t both = 0xFF;
    uint8_t either = 0;
    for (const Argument* argument : {&x, &y}) {
        const uint8_t own = argument->vector ? argument->valid[argument->physical(i)]
                                             : static_cast<uint8_t>(argument->constant.has_value & 0xFF);
        either |= own;
        if (argument->vector || rules.constants == ConstantNull::kRows) both &= own;
    }
    return rules.row_null == RowNull::kAll ? either : both;
}

Outcome expect(const Rules& rules, bool may_fail, const Argument& x, const Argument& y, uint32_t nrows) {
    Outcome out;
    out.values.assign(nrows + kGuard, kHeld);
    out.valid.assign(nrows + kGuard, kHeldByte);
    for (const Argument* argument : {&x, &y}) {
        if (rules.constants != ConstantNull::kBatch || argument->vector || argument->constant.has_value != 0) continue;
        out.all_valid = 0;
        std::fill_n(out.valid.begin(), nrows, uint8_t{0});
        return out;
    }
    const bool has_constant = !x.vector || !y.vector;
    const bool before =
        rules.flag == FlagStore::kBeforeRows || (rules.flag == FlagStore::kBeforeRowsIfConstant && has_constant);
    if (before) out.all_valid = expected_flag(rules, x, y);
    for (uint32_t i = 0; i < nrows; ++i) {
        out.valid[i] = expected_byte(rules, x, y, i);
        if (out.valid[i] == 0) continue;
        if (may_fail && x.value(i) == kPoison) {
            out.code = EC_INVALID_ARGUMENT;
            out.stack.push_back(kWorkerName);
            if (rules.on_failure == OnFailure::kPush) out.stack.push_back(kBatchName);
            if (rules.on_failure == OnFailure::kClear) out.valid[i] = 0;
            if (rules.on_failure == OnFailure::kClearFirst) out.valid[0] = 0;
            return out;
        }
        out.values[i] = formula(x.value(i), y.value(i));
        if (rules.store == Store::kSet) out.valid[i] = 1;
    }
    out.all_valid = expected_flag(rules, x, y);
    return out;
}

// ---- Subjects --------------------------------------------------------------------------------------------------------------

struct Subject {
    std::string name;
    Rules rules;
    bool may_fail;
    std::function<int32_t(const Call&, bdta3_col*, uint32_t, Argument&, Argument&)> run;

    friend void PrintTo(const Subject& subject, std::ostream* out) { *out << subject.name; }
};

template <class W>
Subject subject(std::string name, bool may_fail = false) {
    const auto run = [](const Call& call, bdta3_col* result, uint32_t nrows, Argument& x, Argument& y) {
        if (!x.vector) return bifun::run<W>(call, result, nrows, scalar_of(x.constant), &y.col);
        if (!y.vector) return bifun::run<W>(call, result, nrows, &x.col, scalar_of(y.constant));
        return bifun::run<W>(call, result, nrows, &x.col, &y.col);
    };
    return {std::move(name), W::rules, may_fail, run};
}

constexpr Rules kBefore{.flag = FlagStore::kBeforeRows};
constexpr Rules kBeforeIfConstant{.flag = FlagStore::kBeforeRowsIfConstant};
constexpr Rules kKeep{.store = Store::kKeep};
constexpr Rules kRowsRead{.constants = ConstantNull::kRows, .store = Store::kKeep};
constexpr Rules kIgnored{.constants = ConstantNull::kIgnored};
constexpr Rules kBatch{.constants = ConstantNull::kBatch, .flag = FlagStore::kBeforeRows};
constexpr Rules kAll{.row_null = RowNull::kAll, .store = Store::kKeep};
constexpr Rules kNever{.row_null = RowNull::kNever};
constexpr Rules kClear{.flag = FlagStore::kBeforeRows, .store = Store::kKeep, .on_failure = OnFailure::kClear};
constexpr Rules kKernelRowsRead{.constants = ConstantNull::kRows};
constexpr Rules kKernelClear{.flag = FlagStore::kBeforeRows, .on_failure = OnFailure::kClear};
constexpr Rules kClearFirst{.store = Store::kKeep, .on_failure = OnFailure::kClearFirst};
constexpr Rules kNothing{.store = Store::kKeep, .on_failure = OnFailure::kNothing};

std::vector<Subject> subjects() {
    return {
        subject<ByRow<Rules{}>>("ByRowPlain"),
        subject<ByRow<kKeep>>("ByRowKeep"),
        subject<ByRow<kRowsRead>>("ByRowRowsRead"),
        subject<ByRow<kAll>>("ByRowAll"),
        subject<ByRow<kNever>>("ByRowNever"),
        subject<Total<Rules{}>>("TotalPlain"),
        subject<Total<kBefore>>("TotalBefore"),
        subject<Total<kBeforeIfConstant>>("TotalBeforeIfConstant"),
        subject<Total<kKeep>>("TotalKeep"),
        subject<Total<kRowsRead>>("TotalRowsRead"),
        subject<Total<kIgnored>>("TotalIgnored"),
        subject<Total<kBatch>>("TotalBatch"),
        subject<Total<kAll>>("TotalAll"),
        subject<Total<kNever>>("TotalNever"),
        subject<MayFail<Rules{}>>("MayFailPlain", true),
        subject<MayFail<kBefore>>("MayFailBefore", true),
        subject<MayFail<kBeforeIfConstant>>("MayFailBeforeIfConstant", true),
        subject<MayFail<kClear>>("MayFailClear", true),
        subject<MayFail<kClearFirst>>("MayFailClearFirst", true),
        subject<MayFail<kNothing>>("MayFailNothing", true),
        subject<Guarded<Rules{}>>("GuardedPlain", true),
        subject<Guarded<kBeforeIfConstant>>("GuardedBeforeIfConstant", true),
        subject<Guarded<kRowsRead>>("GuardedRowsRead", true),
        subject<Kernel<Rules{}>>("KernelPlain"),
        subject<Kernel<kBeforeIfConstant>>("KernelBeforeIfConstant"),
        subject<Kernel<kKernelRowsRead>>("KernelRowsRead"),
        subject<Kernel<kNever>>("KernelNever"),
        subject<KernelThatRefuses<Rules{}>>("KernelThatRefusesPlain", true),
        subject<KernelThatRefuses<kBeforeIfConstant>>("KernelThatRefusesBeforeIfConstant", true),
        subject<KernelThatRefuses<kKernelClear>>("KernelThatRefusesClear", true),
    };
}

class FrameTest : public testing::TestWithParam<Subject> {
  protected:
    void SetUp() override { env_ = host_env_create(); }
    void TearDown() override { host_env_destroy(env_); }

    void check(Argument& x, Argument& y, uint32_t nrows, const std::string& what) {
        const Subject& subject = GetParam();
        SCOPED_TRACE(what + ", " + std::to_string(nrows) + " rows");
        const Outcome expected = expect(subject.rules, subject.may_fail, x, y, nrows);
        const std::vector<double> x_before = x.values;
        const std::vector<double> y_before = y.values;
        Result result(nrows);
        host_error_clear(env_);
        const int32_t code = subject.run(Call{env_, nullptr, kBatchName}, &result.col, nrows, x, y);
        EXPECT_EQ(code, expected.code);
        EXPECT_EQ(result.col.all_valid, expected.all_valid);
        EXPECT_EQ(result.col.sel, &result.sel_marker);
        EXPECT_EQ(result.valid, expected.valid);
        EXPECT_EQ(result.values, expected.values);
        EXPECT_EQ(x.values, x_before);
        EXPECT_EQ(y.values, y_before);
        ASSERT_EQ(host_error_count(env_), expected.stack.size());
        for (uint32_t i = 0; i < expected.stack.size(); ++i) {
            const char* name = nullptr;
            EXPECT_EQ(host_error_at(env_, i, &name), EC_INVALID_ARGUMENT);
            EXPECT_EQ(name, expected.stack[i]);
        }
    }

    qz_env* env_ = nullptr;
};

constexpr Selection kSelections[] = {Selection::kNone, Selection::kPermuting, Selection::kRepeating};
constexpr Nulls kNulls[] = {Nulls::kNone, Nulls::kFew, Nulls::kSome, Nulls::kAll, Nulls::kOddBytes};
constexpr uint32_t kRowCounts[] = {0, 1, 63, 64, 65, 131, 511, 512, 513, 4096};
constexpr uint32_t kFlags[] = {0, 1, 2, 256, 0xFFFFFFFF};  // of constants: 256 has a low byte of 0

TEST_P(FrameTest, TwoVectors) {
    std::mt19937 random(1);
    for (const Selection first : kSelections)
        for (const Selection second : kSelections)
            for (const Nulls nulls : kNulls)
                for (const uint32_t nrows : kRowCounts) {
                    Argument x(true, first, nulls, nrows, random);
                    Argument y(true, second, nulls == Nulls::kAll ? Nulls::kSome : nulls, nrows, random);
                    check(x, y, nrows, "two vectors");
                }
}

TEST_P(FrameTest, VectorAndConstant) {
    std::mt19937 random(2);
    for (const bool constant_first : {false, true})
        for (const Selection selection : kSelections)
            for (const Nulls nulls : kNulls)
                for (const uint32_t flag : kFlags)
                    for (const uint32_t nrows : {0u, 1u, 65u, 513u}) {
                        Argument x(!constant_first, selection, nulls, nrows, random);
                        Argument y(constant_first, selection, nulls, nrows, random);
                        (constant_first ? x : y).constant = {flag, 12.5};
                        check(x, y, nrows, constant_first ? "constant, vector" : "vector, constant");
                    }
}

class FailingFrameTest : public FrameTest {};

// The rows below a failure stand, those above it are as they were, in whatever block it falls.
TEST_P(FailingFrameTest, FailureAtEachPlace) {
    std::mt19937 random(3);
    for (const Selection selection : {Selection::kNone, Selection::kPermuting})
        for (const uint32_t nrows : {1u, 65u, 513u, 1600u})
            for (const uint32_t place : {0u, nrows / 2, nrows - 1}) {
                Argument x(true, selection, Nulls::kSome, nrows, random);
                Argument y(true, selection, Nulls::kNone, nrows, random);
                Argument constant(false, selection, Nulls::kNone, nrows, random);
                constant.constant = {1, 3.0};
                x.values[x.physical(place)] = kPoison;
                x.valid[x.physical(place)] = 1;
                check(x, y, nrows, "failure in row " + std::to_string(place));
                check(x, constant, nrows, "failure beside a constant in row " + std::to_string(place));
            }
}

std::vector<Subject> failing_subjects() {
    std::vector<Subject> failing = subjects();
    std::erase_if(failing, [](const Subject& each) { return !each.may_fail; });
    return failing;
}

std::string name_of(const testing::TestParamInfo<Subject>& each) { return each.param.name; }

INSTANTIATE_TEST_SUITE_P(Protocols, FrameTest, testing::ValuesIn(subjects()), name_of);
INSTANTIATE_TEST_SUITE_P(Protocols, FailingFrameTest, testing::ValuesIn(failing_subjects()), name_of);

// ---- What two doubles do not tell ------------------------------------------------------------------------------------------

struct Triple {
    static constexpr Rules rules{};
    static double row(double x, double y, double z) { return x + 10 * y + 100 * z; }
};

struct TotalTriple : Triple {
    static constexpr bool total = true;
};

template <class W>
void run_three_vectors() {
    std::mt19937 random(4);
    const uint32_t nrows = 700;
    for (int mask = 0; mask < 8; ++mask) {
        const auto selection = [&](int bit) { return (mask >> bit & 1) != 0 ? Selection::kPermuting : Selection::kNone; };
        Argument x(true, selection(0), Nulls::kSome, nrows, random);
        Argument y(true, selection(1), Nulls::kSome, nrows, random);
        Argument z(true, selection(2), Nulls::kSome, nrows, random);
        Result result(nrows);
        ASSERT_EQ(run<W>(Call{nullptr, nullptr, "triple"}, &result.col, nrows, &x.col, &y.col, &z.col), 0);
        EXPECT_EQ(result.col.all_valid, 0u);
        for (uint32_t i = 0; i < nrows; ++i) {
            const bool valid = x.valid[x.physical(i)] != 0 && y.valid[y.physical(i)] != 0 && z.valid[z.physical(i)] != 0;
            ASSERT_EQ(result.valid[i], valid ? 1 : 0) << i;
            ASSERT_EQ(result.values[i], valid ? x.value(i) + 10 * y.value(i) + 100 * z.value(i) : kHeld) << i;
        }
    }
}

TEST(FrameForms, ThreeVectorsEachThroughItsOwnSelection) { run_three_vectors<Triple>(); }
TEST(FrameForms, ThreeVectorsOfATotalWorker) { run_three_vectors<TotalTriple>(); }

struct FirstPresent {
    static constexpr Rules rules{.row_null = RowNull::kAll, .flag = FlagStore::kBeforeRows};
    static double row(Nullable<double> x, Nullable<double> y) { return x.valid != 0 ? x.value : y.value; }
};

TEST(FrameForms, NullableParametersSeeWhichArgumentIsNull) {
    double x_values[] = {1, 2, 3, 4};
    uint8_t x_valid[] = {1, 0, 1, 0};
    bdta3_coldata x_data{x_valid, x_values, nullptr};
    bdta3_col x{0, nullptr, &x_data};
    bdta3_double y{1, 9};
    Result filled(4);
    ASSERT_EQ(run<FirstPresent>(Call{}, &filled.col, 4, &x, scalar_of(y)), 0);
    EXPECT_EQ(filled.col.all_valid, 1u);
    EXPECT_EQ((std::vector<double>(filled.values.begin(), filled.values.begin() + 4)), (std::vector<double>{1, 9, 3, 9}));

    y.has_value = 0;
    Result some_null(4);
    ASSERT_EQ(run<FirstPresent>(Call{}, &some_null.col, 4, &x, scalar_of(y)), 0);
    EXPECT_EQ(some_null.col.all_valid, 0u);
    EXPECT_EQ((std::vector<uint8_t>(some_null.valid.begin(), some_null.valid.begin() + 4)), (std::vector<uint8_t>{1, 0, 1, 0}));
}

struct NegativeIsNull {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows};
    static Code row(Row out, double x) { return x < 0 ? out.set_null() : out.put(x); }
};

TEST(FrameForms, RowsThatTurnNullLowerTheFlag) {
    double values[] = {1, -2, 3};
    uint8_t valid[] = {1, 1, 1};
    bdta3_coldata data{valid, values, nullptr};
    bdta3_col x{1, nullptr, &data};
    Result result(3);
    ASSERT_EQ(run<NegativeIsNull>(Call{}, &result.col, 3, &x), 0);
    EXPECT_EQ(result.col.all_valid, 0u);
    EXPECT_EQ(result.valid[0], 1);
    EXPECT_EQ(result.valid[1], 0);
    EXPECT_EQ(result.values[1], kHeld);
    EXPECT_EQ(result.valid[2], 1);
}

struct TotalNegativeIsNull {
    static constexpr Rules rules{.flag = FlagStore::kBeforeRows};
    static constexpr bool total = true;
    static bool makes_null(double x) { return x < 0; }
    static double row(double x) { return x; }
};

// Beside rows that were NULL before, whose values count for nothing, and around every block boundary.
TEST(FrameForms, RowsThatATotalWorkerTurnsNullLowerTheFlag) {
    for (const uint32_t nrows : {1u, 511u, 512u, 513u, 1600u}) {
        for (const uint32_t place : {0u, nrows / 2, nrows - 1, nrows}) {
            std::vector<double> values(nrows, 1.5);
            std::vector<uint8_t> valid(nrows, 2);
            if (place < nrows) values[place] = -2;
            if (nrows > 1) {
                const uint32_t null = place == 1 ? 0 : 1;
                valid[null] = 0;
                values[null] = -3;
            }
            bdta3_coldata data{valid.data(), values.data(), nullptr};
            bdta3_col x{1, nullptr, &data};
            Result result(nrows);
            ASSERT_EQ(run<TotalNegativeIsNull>(Call{}, &result.col, nrows, &x), 0);
            const bool made_null = place < nrows && valid[place] != 0;
            EXPECT_EQ(result.col.all_valid, made_null ? 0u : 1u) << nrows << ' ' << place;
            for (uint32_t i = 0; i < nrows; ++i) {
                const bool is_null = i == place || valid[i] == 0;
                ASSERT_EQ(result.valid[i], is_null ? 0 : 1) << i;
                ASSERT_EQ(result.values[i], is_null ? kHeld : 1.5) << i;
            }
            EXPECT_EQ(result.valid[nrows], kHeldByte);
        }
    }
}

int prepared = 0;
int torn_down = 0;

struct Scaled {
    static constexpr Rules rules{};
    double factor = 0;
    ~Scaled() { ++torn_down; }
    Start prepare(const Call& call, bdta3_col*, bdta3_scalar* scalar) {
        ++prepared;
        factor = reinterpret_cast<bdta3_double*>(scalar)->value;
        if (factor == 0) return Start::all_null();
        if (factor > 0) return Start::rows();
        qzerr_stk_push(call.env, EC_INVALID_ARGUMENT, call.name);
        return Start::stop(Code{EC_INVALID_ARGUMENT});
    }
    double row(double x, double) const { return x * factor; }
};

// Set-up runs once, before the number of rows is looked at, and is taken down on every path.
TEST(FrameForms, PreparationDecidesForTheBatch) {
    qz_env* const env = host_env_create();
    std::mt19937 random(5);
    for (const uint32_t nrows : {0u, 3u}) {
        for (const double factor : {2.0, 0.0, -1.0}) {
            SCOPED_TRACE(factor);
            Argument x(true, Selection::kNone, Nulls::kNone, nrows, random);
            prepared = torn_down = 0;
            host_error_clear(env);
            bdta3_double scalar{1, factor};
            Result result(nrows);
            const int32_t code = run<Scaled>(Call{env, nullptr, "scaled"}, &result.col, nrows, &x.col, scalar_of(scalar));
            EXPECT_EQ(prepared, 1);
            EXPECT_EQ(torn_down, 1);
            EXPECT_EQ(code, factor < 0 ? EC_INVALID_ARGUMENT : 0);
            EXPECT_EQ(host_error_count(env), factor < 0 ? 1u : 0u);
            EXPECT_EQ(result.col.all_valid, factor < 0 ? kHeldFlag : factor > 0 ? 1u : 0u);
            for (uint32_t i = 0; i < nrows; ++i) {
                EXPECT_EQ(result.valid[i], factor < 0 ? kHeldByte : factor > 0 ? 1 : 0);
                EXPECT_EQ(result.values[i], factor > 0 ? x.values[i] * factor : kHeld);
            }
            EXPECT_EQ(result.valid[nrows], kHeldByte);
        }
    }
    host_env_destroy(env);
}

struct SumOfBytes {
    static constexpr Rules rules{};
    static int32_t row(Text text) {
        int32_t sum = static_cast<int32_t>(1000 * text.blank);
        for (uint32_t i = 0; i < text.len; ++i) sum += text.bytes[i];
        return sum;
    }
};

struct SumOfSecond {
    static constexpr Rules rules{};
    static int32_t row(int32_t, Text text) { return SumOfBytes::row(text); }
};

TEST(FrameForms, TextConstantsStandInlineUpTo48Bytes) {
    int32_t numbers[] = {0};
    uint8_t valid[] = {1};
    bdta3_coldata data{valid, numbers, nullptr};
    bdta3_col x{1, nullptr, &data};
    for (const uint32_t len : {0u, 1u, 48u, 49u, 300u}) {
        std::vector<char> outside(301, 2);
        nstr text{};
        text.has_value = 1;
        text.len = len;
        text.blank = 3;
        std::memset(text.nstr_inline, 1, sizeof text.nstr_inline);
        text.nstr_ext = outside.data();
        int32_t out[] = {-1};
        uint8_t out_valid[] = {0};
        bdta3_coldata out_data{out_valid, out, nullptr};
        bdta3_col result{0, nullptr, &out_data};
        ASSERT_EQ(run<SumOfSecond>(Call{}, &result, 1, &x, reinterpret_cast<bdta3_scalar*>(&text)), 0);
        EXPECT_EQ(out[0], static_cast<int32_t>(3000 + (len <= 48 ? len : 2 * len)));
    }
}

TEST(FrameForms, TextsOfAVector) {
    char ab[] = {1, 2};
    bdta3_colstr slots[] = {{2, 1, ab}, {7, 7, nullptr}, {0, 5, nullptr}};
    uint8_t valid[] = {1, 0, 1};
    bdta3_coldata data{valid, slots, nullptr};
    bdta3_col x{0, nullptr, &data};
    int32_t out[] = {-1, -1, -1};
    uint8_t out_valid[] = {9, 9, 9};
    bdta3_coldata out_data{out_valid, out, nullptr};
    bdta3_col result{0, nullptr, &out_data};
    ASSERT_EQ(run<SumOfBytes>(Call{}, &result, 3, &x), 0);
    EXPECT_EQ(out[0], 1003);
    EXPECT_EQ(out[1], -1);
    EXPECT_EQ(out[2], 5000);
    EXPECT_EQ(out_valid[1], 0);
}

// A vector may be its own result: each row is read before it is written.
template <class W>
void run_in_place() {
    std::mt19937 random(6);
    const uint32_t nrows = 1300;
    Argument x(true, Selection::kNone, Nulls::kSome, nrows, random);
    Argument y(true, Selection::kNone, Nulls::kNone, nrows, random);
    const std::vector<double> before = x.values;
    ASSERT_EQ(run<W>(Call{}, &x.col, nrows, &x.col, &y.col), 0);
    for (uint32_t i = 0; i < nrows; ++i) {
        ASSERT_EQ(x.values[i], x.valid[i] != 0 ? formula(before[i], y.values[i]) : before[i]) << i;
    }
}

TEST(FrameForms, ResultInPlace) { run_in_place<Total<Rules{}>>(); }
TEST(FrameForms, ResultOfKernelInPlace) { run_in_place<Kernel<Rules{}>>(); }

// A kernel with set-up for the batch.
struct ScaledKernel {
    static constexpr Rules rules{};
    double factor = 0;
    Start prepare(const Call&, bdta3_col*, bdta3_scalar* scalar) {
        factor = reinterpret_cast<bdta3_double*>(scalar)->value;
        return Start::rows();
    }
    void block(double* out, uint32_t n, const double* x, const double* y) const {
        for (uint32_t i = 0; i < n; ++i) out[i] = x[i] * factor + y[i];
    }
};

TEST(FrameForms, KernelIsPreparedOnce) {
    std::mt19937 random(8);
    const uint32_t nrows = 1300;
    Argument x(true, Selection::kPermuting, Nulls::kSome, nrows, random);
    bdta3_double scalar{1, 3.0};
    Result result(nrows);
    ASSERT_EQ(run<ScaledKernel>(Call{}, &result.col, nrows, &x.col, scalar_of(scalar)), 0);
    for (uint32_t i = 0; i < nrows; ++i) {
        const bool valid = x.valid[x.physical(i)] != 0;
        ASSERT_EQ(result.valid[i], valid ? 1 : 0) << i;
        ASSERT_EQ(result.values[i], valid ? x.value(i) * 3.0 + 3.0 : kHeld) << i;
    }
}

// A worker that does many rows at once, but for blocks in which a valid value is below a bound.
struct ManyRows {
    static constexpr Rules rules{};
    static constexpr double kLeast = 5;

    Code row(Row out, double x, double y) const { return out.put(x - y); }
    bool many(const frame::Output& out, uint32_t begin, uint32_t n, const frame::BlockView<double>& x,
              const Constant<double>& y) {
        sizes.push_back(n);
        for (uint32_t i = 0; i < n; ++i) {
            if (x.valid_at(i) != 0 && x.value_at(i) < kLeast) return false;
        }
        for (uint32_t i = 0; i < n; ++i) {
            out.valid[begin + i] = x.valid_at(i) != 0;
            if (x.valid_at(i) != 0) static_cast<double*>(out.values)[begin + i] = x.value_at(i) + y.value;
        }
        return true;
    }

    static inline std::vector<uint32_t> sizes;
};

TEST(FrameForms, BlocksThatAWorkerLeavesAloneGoRowByRow) {
    const uint32_t nrows = 2 * frame::kBlockRows + 3;
    for (const bool has_selection : {false, true}) {
        std::vector<double> values(nrows, 7.0);
        std::vector<uint8_t> valid(nrows, 9);
        std::vector<uint16_t> sel(nrows);
        for (uint32_t i = 0; i < nrows; ++i) sel[i] = static_cast<uint16_t>(nrows - 1 - i);
        // Logical rows: one below the bound in the second block, one that is NULL in each.
        const auto physical = [&](uint32_t i) { return has_selection ? sel[i] : i; };
        values[physical(frame::kBlockRows + 8)] = 1.0;
        for (const uint32_t i : {2u, frame::kBlockRows + 2, nrows - 1}) {
            valid[physical(i)] = 0;
            values[physical(i)] = 0.0;
        }
        bdta3_coldata data{valid.data(), values.data(), nullptr};
        bdta3_col x{0, has_selection ? sel.data() : nullptr, &data};
        bdta3_double y{1, 3.0};
        Result result(nrows);
        ManyRows::sizes.clear();
        ASSERT_EQ(run<ManyRows>(Call{}, &result.col, nrows, &x, scalar_of(y)), 0);
        EXPECT_EQ(ManyRows::sizes, (std::vector<uint32_t>{frame::kBlockRows, frame::kBlockRows, 3}));
        for (uint32_t i = 0; i < nrows; ++i) {
            const bool by_row = i / frame::kBlockRows == 1;
            const double value = values[physical(i)];
            ASSERT_EQ(result.valid[i], valid[physical(i)] == 0 ? 0 : 1) << i;
            ASSERT_EQ(result.values[i], valid[physical(i)] == 0 ? kHeld : by_row ? value - 3.0 : value + 3.0) << i;
        }
        EXPECT_EQ(result.values[nrows], kHeld);
    }
}

// A selection reaches all rows that a row number can name.
TEST(FrameForms, SelectionOfAllRowNumbers) {
    const uint32_t nrows = 65536;
    std::vector<double> values(nrows);
    std::iota(values.begin(), values.end(), 0.0);
    std::vector<uint8_t> valid(nrows, 1);
    std::vector<uint16_t> sel(nrows);
    for (uint32_t i = 0; i < nrows; ++i) sel[i] = static_cast<uint16_t>(nrows - 1 - i);
    bdta3_coldata data{valid.data(), values.data(), nullptr};
    bdta3_col x{1, sel.data(), &data};
    bdta3_double zero{1, 0};
    Result result(nrows);
    ASSERT_EQ(run<Total<Rules{}>>(Call{}, &result.col, nrows, &x, scalar_of(zero)), 0);
    EXPECT_EQ(result.values[0], 2.0 * 65535);
    EXPECT_EQ(result.values[65535], 0.0);
    EXPECT_EQ(result.values[65536], kHeld);
}

}  // namespace
}  // namespace bifun
