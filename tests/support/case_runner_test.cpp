// The runner against functions that do one thing wrong each: what it does not see, no table of cases can hold.
#include "tests/support/case_runner.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <map>

#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "qzhost/error.h"
#include "qzhost/lob.h"

namespace support {
namespace {

// ---- quotient(bigint, bigint), right or with one fault ----------------------------------------------------------------------

enum class Fault {
    none,
    wrong_value,
    first_selection_ignored,
    second_selection_ignored,
    null_row_written,
    null_byte_one,
    bytes_as_booleans,
    valid_left,
    valid_kept,
    flag_one,
    flag_zero,
    flag_left,
    flag_without_constant,
    goes_on_after_failure,
    stores_failed_row,
    clears_failed_row,
    pushes_once,
    pushes_in_other_order,
    other_code,
    succeeds_always,
    writes_last_row_again,
    reads_null_constant,
    follows_result_selection,
    sets_result_selection,
    changes_argument,
    changes_valid_of_argument,
    changes_constant,
    keeps_memory,
    touches_row_of_no_rows,
    fails_without_rows,
};

template <Fault kFault>
int32_t quotient(qz_env* env, rt_memobj* mem, bdta3_col* x, bdta3_col* y, bdta3_scalar* constant, bdta3_col* result,
                 uint32_t nrows) {
    const auto* xs = static_cast<const int64_t*>(x->data->values);
    auto* out = static_cast<int64_t*>(result->data->values);
    uint8_t* valid = result->data->valid;
    const auto* record = reinterpret_cast<const bdta3_int64*>(constant);
    uint32_t flag = x->all_valid & (y != nullptr ? y->all_valid : static_cast<uint32_t>(constant->has_value != 0));
    if (kFault == Fault::flag_one) flag = 1;
    if (kFault == Fault::flag_zero) flag = 0;
    if (kFault == Fault::flag_without_constant && y == nullptr) flag = x->all_valid;
    if (kFault == Fault::changes_argument && nrows > 0) static_cast<int64_t*>(x->data->values)[0] ^= 1;
    if (kFault == Fault::changes_valid_of_argument && nrows > 0) x->data->valid[0] ^= 4;
    if (kFault == Fault::changes_constant && y == nullptr) constant->has_value ^= 2;
    if (kFault == Fault::keeps_memory) (void)mem->alloc(env, mem->pool, 24, __FILE__, __LINE__);
    if (kFault == Fault::touches_row_of_no_rows && nrows == 0) valid[0] = 0;
    if (kFault == Fault::fails_without_rows && nrows == 0) return EC_INVALID_ARGUMENT;

    int32_t answer = 0;
    for (uint32_t i = 0; i < nrows; ++i) {
        const bool x_dense = x->sel == nullptr || kFault == Fault::first_selection_ignored;
        const uint32_t p = x_dense ? i : x->sel[i];
        uint8_t byte = x->data->valid[p];
        int64_t divisor = record != nullptr ? record->value : 0;
        if (y != nullptr) {
            const bool y_dense = y->sel == nullptr || kFault == Fault::second_selection_ignored;
            const uint32_t q = y_dense ? i : y->sel[i];
            const uint8_t other = y->data->valid[q];
            byte = kFault == Fault::bytes_as_booleans ? byte != 0 && other != 0 : static_cast<uint8_t>(byte & other);
            divisor = static_cast<const int64_t*>(y->data->values)[q];
        } else if (kFault == Fault::reads_null_constant && constant->has_value == 0) {
            byte = 0;
        }
        const uint32_t row = kFault == Fault::follows_result_selection && i == 0 && result->sel[0] < nrows ? result->sel[0] : i;
        if (kFault != Fault::valid_left) valid[row] = byte;
        if (byte == 0) {
            if (kFault == Fault::null_row_written) out[row] = 0;
            if (kFault == Fault::null_byte_one) valid[row] = 1;
            continue;
        }
        if (divisor == 0 && kFault != Fault::succeeds_always) {
            if (answer != 0) continue;
            answer = kFault == Fault::other_code ? EC_DATA_OVERFLOW : EC_INVALID_ARGUMENT;
            if (kFault != Fault::pushes_once && kFault != Fault::pushes_in_other_order)
                qzerr_stk_push(env, answer, "quotient_process");
            qzerr_stk_push(env, answer, y != nullptr ? "quotient_aa" : "quotient_av");
            if (kFault == Fault::pushes_in_other_order) qzerr_stk_push(env, answer, "quotient_process");
            if (kFault == Fault::stores_failed_row) out[row] = 0;
            if (kFault == Fault::clears_failed_row) valid[row] = 0;
            if (kFault == Fault::goes_on_after_failure) continue;
            break;
        }
        int64_t value = divisor == 0 ? 0 : xs[p] / divisor;
        if (kFault == Fault::wrong_value && value == 3) value = 4;
        out[row] = value;
        if (kFault != Fault::valid_kept) valid[row] = 1;
        if (kFault == Fault::writes_last_row_again && i == 63) out[62] = value;
    }
    if (answer < 0) return answer;
    if (kFault != Fault::flag_left) result->all_valid = flag;
    static uint16_t elsewhere[1];
    if (kFault == Fault::sets_result_selection) result->sel = elsewhere;
    return answer;
}

template <Fault kFault>
int32_t quotient_aa(qz_env* env, rt_memobj* mem, bdta3_col* x, bdta3_col* y, bdta3_col* result, uint32_t nrows) {
    return quotient<kFault>(env, mem, x, y, nullptr, result, nrows);
}

template <Fault kFault>
int32_t quotient_av(qz_env* env, rt_memobj* mem, bdta3_col* x, bdta3_scalar* y, bdta3_col* result, uint32_t nrows) {
    return quotient<kFault>(env, mem, x, nullptr, y, result, nrows);
}

constexpr const char* kQuotient = R"(
function quotient(bigint, bigint)  aa=quotient_aa av=quotient_av
7    2     -> 3
-7   2     -> -3
8    2     -> 4
9    -3    -> -3
max  1     -> max
NULL 2     -> NULL
7    NULL  -> NULL
NULL NULL  -> NULL
7    0     -> error EC_INVALID_ARGUMENT  stack quotient_process, self  row kept
)";

using Functions = std::map<std::string, void*>;

// All failures of a file, one text.
std::string replay_all(const char* text, const Functions& functions) {
    const CaseFile file = parse_cases(text, "test");
    std::string failures;
    for (const CaseFile::Error& error : file.errors)
        failures += "line " + std::to_string(error.line) + ": " + error.text + "\n";
    const auto find = [&](const std::string& name) {
        const auto found = functions.find(name);
        return found == functions.end() ? nullptr : found->second;
    };
    for (const CaseFunction& function : file.functions) {
        for (const CaseFailure& failure : replay(function, find)) {
            failures += "line " + std::to_string(failure.line) + ": " + failure.text + "\n";
        }
    }
    return failures;
}

template <Fault kFault>
std::string replay_quotient() {
    return replay_all(kQuotient, {{"quotient_aa", reinterpret_cast<void*>(quotient_aa<kFault>)},
                                  {"quotient_av", reinterpret_cast<void*>(quotient_av<kFault>)}});
}

bool says(const std::string& text, const char* part) { return text.find(part) != std::string::npos; }

TEST(CaseRunner, PassesAFunctionThatIsRight) { EXPECT_EQ(replay_quotient<Fault::none>(), ""); }

#define EXPECT_SEEN(fault, message)                                          \
    do {                                                                     \
        const std::string failures = replay_quotient<Fault::fault>();        \
        EXPECT_TRUE(says(failures, message)) << #fault << ":\n" << failures; \
    } while (false)

TEST(CaseRunner, SeesWrongValuesAndRows) {
    EXPECT_SEEN(wrong_value, ": 4, expected 3");
    EXPECT_SEEN(first_selection_ignored, "expected");
    EXPECT_SEEN(second_selection_ignored, "expected");
    EXPECT_SEEN(writes_last_row_again, "expected");
    EXPECT_SEEN(null_row_written, "the element was written");
}

TEST(CaseRunner, SeesWrongValidBytesAndFlags) {
    EXPECT_SEEN(null_byte_one, "valid byte 1, expected 0");
    EXPECT_SEEN(bytes_as_booleans, "valid byte 1, expected 0");
    EXPECT_SEEN(valid_left, "valid byte 238, expected 0");
    EXPECT_SEEN(valid_kept, "valid byte 255, expected 1");
    EXPECT_SEEN(flag_one, "all_valid is 1, expected 0");
    EXPECT_SEEN(flag_zero, "all_valid is 0, expected 1");
    EXPECT_SEEN(flag_left, "all_valid is as it was before, expected 1");
    EXPECT_SEEN(flag_without_constant, "has_value of constant 2 is 0");
    EXPECT_SEEN(reads_null_constant, "has_value of constant 2 is 0");
}

TEST(CaseRunner, SeesWrongFailures) {
    EXPECT_SEEN(goes_on_after_failure, "valid byte was written");
    EXPECT_SEEN(stores_failed_row, "(fails): the element was written");
    EXPECT_SEEN(clears_failed_row, "(fails): valid byte 0");
    EXPECT_SEEN(pushes_once, "error stack: -6803 quotient_aa, expected: -6803 quotient_process, -6803 quotient_aa");
    EXPECT_SEEN(pushes_in_other_order, "error stack");
    EXPECT_SEEN(other_code, "returned EC_DATA_OVERFLOW (-6102), expected EC_INVALID_ARGUMENT (-6803)");
    EXPECT_SEEN(succeeds_always, "returned 0, expected EC_INVALID_ARGUMENT");
}

TEST(CaseRunner, SeesWhatIsTouchedBesideTheResult) {
    EXPECT_SEEN(sets_result_selection, "the result's descriptor was changed");
    EXPECT_SEEN(changes_argument, "argument 1: values were changed");
    EXPECT_SEEN(changes_valid_of_argument, "argument 1: valid bytes were changed");
    EXPECT_SEEN(changes_constant, "argument 2: the constant was changed");
    EXPECT_SEEN(keeps_memory, "memory is out of balance");
    EXPECT_SEEN(touches_row_of_no_rows, "no rows");
    EXPECT_SEEN(fails_without_rows, "no rows");
}

TEST(CaseRunner, MissesNoExport) {
    const std::string failures = replay_all(kQuotient, {{"quotient_aa", reinterpret_cast<void*>(quotient_aa<Fault::none>)}});
    EXPECT_TRUE(says(failures, "quotient_av is not exported")) << failures;
}

TEST(CaseRunner, SeesWrongExpectations) {
    const Functions functions = {{"quotient_aa", reinterpret_cast<void*>(quotient_aa<Fault::none>)},
                                 {"quotient_av", reinterpret_cast<void*>(quotient_av<Fault::none>)}};
    const auto fails = [&](const std::string& rest) {
        return !replay_all(("function quotient(bigint, bigint)  aa=quotient_aa av=quotient_av\n" + rest).c_str(), functions)
                    .empty();
    };
    EXPECT_FALSE(fails("7 2 -> 3"));
    EXPECT_TRUE(fails("7 2 -> 4"));
    EXPECT_TRUE(fails("7 2 -> NULL"));
    EXPECT_TRUE(fails("7 2 -> all NULL"));
    EXPECT_TRUE(fails("7 2 -> error EC_INVALID_ARGUMENT stack none"));
    EXPECT_TRUE(fails("7 0 -> 3"));
    EXPECT_TRUE(fails("7 0 -> error EC_INVALID_ARGUMENT stack none"));
    EXPECT_TRUE(fails("7 0 -> error EC_INVALID_ARGUMENT stack quotient_process, self row NULL"));
    EXPECT_TRUE(fails("7 0 -> error EC_INVALID_ARGUMENT stack quotient_process, self row 0"));
    EXPECT_TRUE(fails("7 0 -> setup error EC_INVALID_ARGUMENT stack quotient_process, self"));
    EXPECT_TRUE(fails("7 NULL -> NULL in av"));  // the rows do not look at the constant
    for (const char* rule :
         {"valid kept", "constants rows", "constants ignored", "constants once", "flag one", "flag kept", "flag any"}) {
        EXPECT_TRUE(fails("rules " + std::string(rule) + "\n7 2 -> 3\nNULL 2 -> NULL")) << rule;
    }
    EXPECT_TRUE(fails("rules failure string\n7 2 -> 3\n7 0 -> error EC_INVALID_ARGUMENT stack quotient_process, self"));
    EXPECT_TRUE(fails("rules failure first\n8 0 -> error EC_INVALID_ARGUMENT stack quotient_process, self\n7 0 -> 3"));
}

// ---- echo(str): texts -------------------------------------------------------------------------------------------------------

enum class TextFault {
    none,
    blank_dropped,
    cut,
    keeps_memory,
    writes_argument,
    forgets_exhaustion,
    other_code,
    leaks_scratch,
    pushes_other,
    pushes_twice,
};

template <TextFault kFault>
int32_t echo(qz_env* env, rt_memobj* mem, bdta3_col* x, bdta3_col* result, uint32_t nrows) {
    result->all_valid = x->all_valid;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr ? x->sel[i] : i;
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] == 0) continue;
        const bdta3_colstr text = static_cast<const bdta3_colstr*>(x->data->values)[p];
        const uint32_t blank = kFault == TextFault::blank_dropped ? 0 : text.blank;
        const uint32_t len = kFault == TextFault::cut && text.len > 0 ? text.len - 1 : text.len;
        if (kFault == TextFault::writes_argument && text.len > 0) text.bytes[0] = '?';
        void* scratch = mem->alloc(env, mem->pool, 10, __FILE__, __LINE__);
        if (scratch == nullptr && kFault != TextFault::forgets_exhaustion) {
            result->data->valid[i] = 0;
            qzerr_stk_push(env, EC_OUT_OF_MEMORY, kFault == TextFault::pushes_other ? "echo" : "echo_process");
            if (kFault == TextFault::pushes_twice) qzerr_stk_push(env, EC_OUT_OF_MEMORY, "echo");
            return kFault == TextFault::other_code ? EC_DATA_OVERFLOW : EC_OUT_OF_MEMORY;
        }
        const int32_t code = bdta3_col_assign_str(env, mem, result, i, text.bytes, len, blank);
        if (code < 0 && kFault == TextFault::other_code) return EC_DATA_OVERFLOW;
        if (code < 0 && kFault != TextFault::forgets_exhaustion) {
            if (kFault != TextFault::leaks_scratch) mem->free(env, mem->pool, scratch);
            result->data->valid[i] = 0;
            return code;
        }
        mem->free(env, mem->pool, scratch);
        if (kFault == TextFault::keeps_memory) (void)mem->alloc(env, mem->pool, 1, __FILE__, __LINE__);
    }
    return 0;
}

template <TextFault kFault>
std::string replay_echo(const char* pushes = "none or echo_process") {
    return replay_all((std::string("function echo(str)  a=echo  pushes ") + pushes + R"(
'ab'             -> 'ab'
'ab'+3           -> 'ab'+3
''               -> ''
''+2             -> ''+2
'it''s # -> {'   -> 'it''s # -> {'
x'00FF'&'a'*300  -> x'00ff'&'a'*300
'x'*32767        -> 'x'*32767
NULL             -> NULL
)")
                          .c_str(),
                      {{"echo", reinterpret_cast<void*>(echo<kFault>)}});
}

TEST(CaseRunner, KnowsTexts) {
    EXPECT_EQ(replay_echo<TextFault::none>(), "");
    EXPECT_TRUE(says(replay_echo<TextFault::blank_dropped>(), "'ab', expected 'ab'+3"));
    EXPECT_TRUE(says(replay_echo<TextFault::cut>(), "'a', expected 'ab'"));
    EXPECT_TRUE(says(replay_echo<TextFault::keeps_memory>(), "memory is out of balance"));
    EXPECT_TRUE(says(replay_echo<TextFault::writes_argument>(), "argument 1: the text"));
}

TEST(CaseRunner, SeesHowAFunctionMeetsExhaustion) {
    EXPECT_TRUE(says(replay_echo<TextFault::forgets_exhaustion>(), "allocation"));
    EXPECT_TRUE(says(replay_echo<TextFault::other_code>(), "returned EC_DATA_OVERFLOW (-6102), expected 0"));
    EXPECT_TRUE(says(replay_echo<TextFault::leaks_scratch>(), "memory is out of balance"));
}

// The scratch space fails under a name, the vector's store without one.
TEST(CaseRunner, SeesWhatAnExhaustedCallPushes) {
    const char* wrong = "error stack of an exhausted call: -503 echo, expected: empty or -503 echo_process";
    EXPECT_TRUE(says(replay_echo<TextFault::pushes_other>(), wrong));
    EXPECT_TRUE(says(replay_echo<TextFault::pushes_twice>(), "-503 echo_process, -503 echo, expected: "));
    EXPECT_EQ(replay_echo<TextFault::pushes_other>("none or self"), "");
    EXPECT_EQ(replay_echo<TextFault::pushes_twice>("none or echo_process, self"), "");
    EXPECT_TRUE(says(replay_echo<TextFault::none>("echo_process"), "exhausted call: empty, expected: -503 echo_process"));
    EXPECT_TRUE(says(replay_echo<TextFault::none>("none"), "exhausted call: -503 echo_process, expected: empty"));
    EXPECT_TRUE(says(replay_echo<TextFault::none>("none or echo_process or echo"),
                     "echo: no exhausted call pushes what the rules tell: -503 echo"));
}

// ---- LOBs, and arguments beside the frame -----------------------------------------------------------------------------------

// The length of a LOB, times an int by value, plus the argument behind nrows.
int32_t scaled_length(qz_env*, rt_memobj*, bdta3_col* x, int32_t factor, bdta3_col* result, uint32_t nrows, int32_t extra) {
    result->all_valid = x->all_valid;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr ? x->sel[i] : i;
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] == 0) continue;
        const bdta3_colstr* slot = static_cast<const bdta3_colstr*>(x->data->values) + p;
        const auto length = static_cast<int64_t>(nblob_get_len_for_colstr_fast(slot));
        const bdta3_int64 record = {1, length * factor + extra};
        bdta3_set_int64(nullptr, nullptr, result, i, &record);
    }
    return 0;
}

TEST(CaseRunner, KnowsLobsAndArgumentsBesideTheFrame) {
    const Functions functions = {{"scaled_length", reinterpret_cast<void*>(scaled_length)}};
    const std::string head = "function scaled_length(clob, int) -> bigint  ai:7=scaled_length\n";
    EXPECT_EQ(replay_all((head + "'abc' 2 -> 13\nin_row:'' 2 -> 7\nshort:'a'*1000 3 -> 3007\nlong:'a'*70000 1 -> 70007\n"
                                 "NULL 2 -> NULL\n")
                             .c_str(),
                         functions),
              "");
    EXPECT_NE(replay_all((head + "'abc' 2 -> 12\n").c_str(), functions), "");
    EXPECT_NE(replay_all((head + "short:'abcd' 2 -> 13\n").c_str(), functions), "");
    EXPECT_NE(replay_all("function scaled_length(clob, int) -> bigint  ai:8=scaled_length\n'abc' 2 -> 13\n", functions), "");
}

// ---- pick(int, bigint, bigint): a function with NULL rules of its own -------------------------------------------------------

// x where the condition's element is 1, y elsewhere; the condition's valid byte is not read, and the flag is only lowered.
int32_t pick_avv(qz_env*, rt_memobj*, bdta3_col* condition, bdta3_scalar* x, bdta3_scalar* y, bdta3_col* result,
                 uint32_t nrows) {
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = condition->sel != nullptr ? condition->sel[i] : i;
        const auto* taken =
            reinterpret_cast<const bdta3_int64*>(static_cast<const int32_t*>(condition->data->values)[p] == 1 ? x : y);
        static_cast<int64_t*>(result->data->values)[i] = taken->value;
        result->data->valid[i] = static_cast<uint8_t>(taken->has_value);
        if (result->data->valid[i] == 0) result->all_valid = 0;
    }
    return 0;
}

TEST(CaseRunner, KnowsNullRulesOfTheirOwn) {
    const Functions functions = {{"pick_avv", reinterpret_cast<void*>(pick_avv)}};
    const std::string head =
        "function pick(int, bigint, bigint) -> bigint  avv=pick_avv  null evaluated  constants own  flag kept lowered\n";
    EXPECT_EQ(replay_all((head + "1 10 20 -> 10\n2 10 20 -> 20\nNULL:1 10 20 -> 10\nNULL:0 10 20 -> 20\n"
                                 "1 NULL:5 20 -> NULL:5\n0 NULL:5 20 -> 20\n1 NULL 20 -> NULL\n")
                             .c_str(),
                         functions),
              "");
    EXPECT_NE(replay_all((head + "NULL:1 10 20 -> 20\n").c_str(), functions), "");
    EXPECT_NE(replay_all((head + "1 NULL:5 20 -> NULL:6\n").c_str(), functions), "");
    EXPECT_NE(replay_all((head + "1 NULL:5 20 -> NULL:kept\n").c_str(), functions), "");
    EXPECT_NE(replay_all((head + "1 NULL:5 20 -> 5\n").c_str(), functions), "");
}

// ---- A check before the rows ------------------------------------------------------------------------------------------------

// scale(bigint, bigint) by a constant: 0 fails at once, a NULL makes all rows NULL, otherwise the product.
int32_t scale_av(qz_env* env, rt_memobj*, bdta3_col* x, bdta3_scalar* y, bdta3_col* result, uint32_t nrows) {
    const auto* factor = reinterpret_cast<const bdta3_int64*>(y);
    result->all_valid = 0;
    if (factor->has_value == 0) {
        if (nrows != 0) std::memset(result->data->valid, 0, nrows);
        return 0;
    }
    if (factor->value == 0) {
        qzerr_stk_push(env, EC_INVALID_ARGUMENT, "scale_av");
        return EC_INVALID_ARGUMENT;
    }
    result->all_valid = x->all_valid;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = x->sel != nullptr ? x->sel[i] : i;
        result->data->valid[i] = x->data->valid[p];
        if (x->data->valid[p] == 0) continue;
        static_cast<int64_t*>(result->data->values)[i] = static_cast<const int64_t*>(x->data->values)[p] * factor->value;
    }
    return 0;
}

TEST(CaseRunner, KnowsWhatHappensBeforeTheRows) {
    const Functions functions = {{"scale_av", reinterpret_cast<void*>(scale_av)}};
    const std::string head = "function scale(bigint, bigint)  av=scale_av  constants once  valid kept\n";
    EXPECT_EQ(
        replay_all(
            (head + "3 4 -> 12\n-3 4 -> -12\n3 0 -> setup error EC_INVALID_ARGUMENT stack self\n3 NULL -> NULL\n").c_str(),
            functions),
        "");
    EXPECT_NE(replay_all((head + "3 0 -> error EC_INVALID_ARGUMENT stack self\n").c_str(), functions), "");
    EXPECT_NE(replay_all((head + "3 4 -> all NULL\n").c_str(), functions), "");
}

}  // namespace
}  // namespace support
