// locate against a plain search that writes both values out, with all starts, on texts and on CLOBs of every storage; what it
// takes, reports and gives back when memory or a LOB fails.
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzbifun/qzbifun.h"
#include "qzhost/lob.h"
#include "tests/bop/bifun_str/plain_text.h"
#include "tests/support/differential.h"
#include "tests/support/log_lines.h"
#include "tests/support/vector.h"

namespace {

using plain::Characters;
using plain::Charset;
using plain::InCharset;
using support::Cell;
using support::Constant;
using support::Differential;
using support::Host;
using support::LogLines;
using support::Random;
using support::Rules;
using support::Text;
using support::Vector;

int32_t plain_locate(const Text& pattern, const Text& text, int32_t start, Charset charset) {
    const Characters in = plain::characters_of(text, charset);
    const Characters wanted = plain::characters_of(pattern, charset);
    if (start <= 0) return 0;
    for (size_t i = static_cast<size_t>(start) - 1; i <= in.size(); ++i) {
        if (plain::stands_at(in, i, wanted)) return static_cast<int32_t>(i) + 1;
    }
    return 0;
}

Rules rules() {
    Rules rules;
    rules.flag_reads_constants = false;
    rules.failure = Rules::Failure::string;
    return rules;
}

int32_t random_start(Random& random) {
    static constexpr int32_t kFar[] = {INT32_MIN, -1, 100, INT32_MAX};
    return random.chance(90) ? static_cast<int32_t>(random.below(14)) : kFar[random.below(4)];
}

class LocateDifferential : public ::testing::TestWithParam<Charset> {};

TEST_P(LocateDifferential, FromAStartIsThePlainSearch) {
    const Charset charset = GetParam();
    size_t found = 0;
    for (const bool case_sensitive : {true, false}) {
        const InCharset settings(charset, case_sensitive);
        Differential<int32_t, Text, Text, int32_t> locate;
        locate.rules = rules();
        locate.add("aav", "blocate_aav_str", blocate_aav_str);
        locate.add("avv", "blocate_avv_str", blocate_avv_str);
        locate.add("vav", "blocate_vav_str", blocate_vav_str);
        locate.draw<0>([&](Random& random) { return plain::random_text(random, charset, 3); });
        locate.draw<1>([&](Random& random) { return plain::random_text(random, charset, random.chance(90) ? 10 : 60); });
        locate.draw<2>(random_start);
        EXPECT_EQ(locate.run([&](const Text& pattern, const Text& text, int32_t start) {
            const int32_t value = plain_locate(pattern, text, start, charset);
            found += value > 1;
            return value;
        }),
                  "");
    }
    EXPECT_GT(found, 100u);
}

TEST_P(LocateDifferential, WithoutAStartIsThePlainSearchFromOne) {
    const Charset charset = GetParam();
    size_t found = 0;
    for (const bool case_sensitive : {true, false}) {
        const InCharset settings(charset, case_sensitive);
        Differential<int32_t, Text, Text> locate;
        locate.rules = rules();
        locate.add("aa", "blocate_def_aa_str", blocate_def_aa_str);
        locate.add("av", "blocate_def_av_str", blocate_def_av_str);
        locate.add("va", "blocate_def_va_str", blocate_def_va_str);
        locate.draw<0>([&](Random& random) { return plain::random_text(random, charset, 3); });
        locate.draw<1>([&](Random& random) { return plain::random_text(random, charset, random.chance(90) ? 10 : 60); });
        EXPECT_EQ(locate.run([&](const Text& pattern, const Text& text) {
            const int32_t value = plain_locate(pattern, text, 1, charset);
            found += value > 1;
            return value;
        }),
                  "");
    }
    EXPECT_GT(found, 100u);
}

constexpr uint8_t kStorages[] = {LOB_KIND_IN_ROW, LOB_KIND_SHORT, LOB_KIND_LONG};

Cell clob_cell(const std::string& data, uint8_t storage) {
    Cell cell;
    cell.bytes = data;
    cell.lob = storage;
    return cell;
}

// A vector of CLOBs, of every storage.
Vector clobs(Host& host, const std::vector<std::string>& texts) {
    Vector vector(host, *support::find_value_type("clob"), static_cast<uint32_t>(texts.size()));
    for (uint32_t i = 0; i < texts.size(); ++i) {
        vector.set(i, clob_cell(texts[i], kStorages[i % std::size(kStorages)]), 1);
    }
    vector.col()->all_valid = 1;
    return vector;
}

TEST_P(LocateDifferential, OfClobsIsThePlainSearch) {
    const Charset charset = GetParam();
    const InCharset settings(charset, true);
    Random random(support::test_seed());
    size_t found = 0;
    for (int round = 0; round < 40; ++round) {
        constexpr uint32_t kRows = 24;
        Host host;
        std::vector<std::string> texts;
        std::vector<Text> patterns;
        Vector pattern(host, support::type_of<Text>(), kRows);
        for (uint32_t i = 0; i < kRows; ++i) {
            texts.push_back(plain::random_text(random, charset, random.chance(90) ? 10 : 200).bytes);
            patterns.push_back(plain::random_text(random, charset, 3));
            pattern.set(i, support::to_cell(patterns[i]), 1);
        }
        pattern.col()->all_valid = 1;
        const Vector text = clobs(host, texts);
        Constant start = Constant::of(random_start(random));
        const int32_t from = reinterpret_cast<const bdta3_int*>(start.scalar())->value;
        Constant one_text(*support::find_value_type("clob"), clob_cell(texts[0], kStorages[round % 3]), &host);
        Constant one_pattern = Constant::of(patterns[0]);

        const auto check = [&](const char* name, const std::function<int32_t(bdta3_col*)>& call,
                               const std::function<int32_t(uint32_t)>& expected) {
            const Vector result = Vector::result<int32_t>(host, kRows);
            ASSERT_EQ(call(result.col()), 0) << name;
            EXPECT_EQ(result.col()->all_valid, 1u) << name;
            for (uint32_t i = 0; i < kRows; ++i) {
                EXPECT_EQ(result.get<int32_t>(i), expected(i)) << name << ", row " << i << ", start " << from;
                EXPECT_EQ(result.valid(i), 1) << name;
                found += result.get<int32_t>(i) > 1;
            }
            EXPECT_EQ(host.outstanding(), 0u) << name;
        };
        const auto locate = [&](const Text& p, const std::string& t, int32_t s) {
            return plain_locate(p, Text{t, 0}, s, charset);
        };
        const auto col = [](const Vector& vector) { return vector.col(); };
        qz_env* const env = host.env();
        rt_memobj* const mem = host.mem();
        check(
            "aav",
            [&](bdta3_col* r) { return blocate_aav_str_clob(env, mem, col(pattern), col(text), start.scalar(), r, kRows); },
            [&](uint32_t i) { return locate(patterns[i], texts[i], from); });
        check(
            "avv",
            [&](bdta3_col* r) {
                return blocate_avv_str_clob(env, mem, col(pattern), one_text.scalar(), start.scalar(), r, kRows);
            },
            [&](uint32_t i) { return locate(patterns[i], texts[0], from); });
        check(
            "vav",
            [&](bdta3_col* r) {
                return blocate_vav_str_clob(env, mem, one_pattern.scalar(), col(text), start.scalar(), r, kRows);
            },
            [&](uint32_t i) { return locate(patterns[0], texts[i], from); });
        check(
            "aa", [&](bdta3_col* r) { return blocate_def_aa_str_clob(env, mem, col(pattern), col(text), r, kRows); },
            [&](uint32_t i) { return locate(patterns[i], texts[i], 1); });
        check(
            "av", [&](bdta3_col* r) { return blocate_def_av_str_clob(env, mem, col(pattern), one_text.scalar(), r, kRows); },
            [&](uint32_t i) { return locate(patterns[i], texts[0], 1); });
        check(
            "va", [&](bdta3_col* r) { return blocate_def_va_str_clob(env, mem, one_pattern.scalar(), col(text), r, kRows); },
            [&](uint32_t i) { return locate(patterns[0], texts[i], 1); });
    }
    EXPECT_GT(found, 100u);
}

INSTANTIATE_TEST_SUITE_P(Charsets, LocateDifferential, ::testing::ValuesIn(plain::kCharsets));

// ---- Failures ---------------------------------------------------------------------------------------------------------------

using ErrorCodes = std::vector<int32_t>;

class LocateFails : public ::testing::Test {
  protected:
    ~LocateFails() override {
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        host_lob_fail(HOST_LOB_READ, 0);
        host_lob_limit_read(UINT64_MAX);
    }

    // A call on all rows of the result, after so many allocations that succeed.
    int32_t call(const Vector& result, const std::function<int32_t()>& function, int64_t allocations = -1) {
        host_.clear_errors();
        const LogLines log;
        host_memory_fail_after(allocations);
        const int32_t code = function();
        host_memory_fail_after(-1);
        log_ = log.codes();
        stack_ = print(host_.errors());
        EXPECT_EQ(host_.outstanding(), 0u);
        EXPECT_EQ(result.overrun(), "");
        return code;
    }

    // Row 1 failed, of three.
    static void expect_second_failed(const Vector& result) {
        EXPECT_EQ(result.valid(0), 1);
        EXPECT_EQ(result.valid(1), 0);
        EXPECT_TRUE(result.value_untouched(1));
        EXPECT_TRUE(result.valid_untouched(2));
    }

    Vector result() { return Vector::result<int32_t>(host_, 3); }

    Host host_;
    ErrorCodes log_;
    std::string stack_;
    Constant one_ = Constant::of(int32_t{1});
};

TEST_F(LocateFails, WithoutImpliedBlanksNothingIsTaken) {
    const std::string longer(500, 'x');
    const Vector text = Vector::of<Text>(host_, {Text{longer + "b", 0}, Text{"b", 0}, Text{"", 0}});
    const Vector pattern = Vector::of<Text>(host_, {Text{"b", 0}, Text{longer, 0}, Text{"", 0}});
    Constant long_pattern = Constant::of(Text{longer, 0});
    const Vector out = result();
    EXPECT_EQ(
        call(
            out, [&] { return blocate_def_aa_str(host_.env(), host_.mem(), pattern.col(), text.col(), out.col(), 3); }, 0),
        0);
    EXPECT_EQ(out.get<int32_t>(0), 501);
    EXPECT_EQ(call(
                  out,
                  [&] {
                      return blocate_vav_str(host_.env(), host_.mem(), long_pattern.scalar(), text.col(), one_.scalar(),
                                             out.col(), 3);
                  },
                  0),
              0);
    EXPECT_EQ(out.get<int32_t>(0), 1);
}

TEST_F(LocateFails, ARowThatCannotBeWrittenOutIsLoggedAndCleared) {
    const Vector text = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 1}, Text{"b", 0}});
    const Vector pattern = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 0}, Text{"b", 0}});
    const Vector blank_pattern = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 1}, Text{"b", 0}});
    Constant short_constant = Constant::of(Text{"b", 1});
    qz_env* const env = host_.env();
    rt_memobj* const mem = host_.mem();
    const std::vector<std::function<int32_t(bdta3_col*)>> forms = {
        [&](bdta3_col* out) { return blocate_aav_str(env, mem, pattern.col(), text.col(), one_.scalar(), out, 3); },
        [&](bdta3_col* out) { return blocate_aav_str(env, mem, blank_pattern.col(), pattern.col(), one_.scalar(), out, 3); },
        [&](bdta3_col* out) {
            return blocate_avv_str(env, mem, blank_pattern.col(), short_constant.scalar(), one_.scalar(), out, 3);
        },
        [&](bdta3_col* out) { return blocate_vav_str(env, mem, short_constant.scalar(), text.col(), one_.scalar(), out, 3); },
        [&](bdta3_col* out) { return blocate_def_aa_str(env, mem, pattern.col(), text.col(), out, 3); },
        [&](bdta3_col* out) { return blocate_def_aa_str(env, mem, blank_pattern.col(), pattern.col(), out, 3); },
        [&](bdta3_col* out) { return blocate_def_av_str(env, mem, blank_pattern.col(), short_constant.scalar(), out, 3); },
        [&](bdta3_col* out) { return blocate_def_va_str(env, mem, short_constant.scalar(), text.col(), out, 3); },
    };
    for (size_t i = 0; i < forms.size(); ++i) {
        SCOPED_TRACE(i);
        const Vector out = result();
        EXPECT_EQ(call(
                      out, [&] { return forms[i](out.col()); }, 0),
                  EC_OUT_OF_MEMORY);
        EXPECT_EQ(stack_, "empty");
        EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
        expect_second_failed(out);
        EXPECT_EQ(call(out, [&] { return forms[i](out.col()); }), 0);
        EXPECT_EQ(out.valid(2), 1);
    }
}

// The pattern fails behind the text, whose block is given back.
TEST_F(LocateFails, ATextIsGivenBackWhenItsPatternFails) {
    const Vector text = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 1}, Text{"b", 0}});
    const Vector pattern = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 1}, Text{"b", 0}});
    const Vector out = result();
    EXPECT_EQ(
        call(
            out, [&] { return blocate_def_aa_str(host_.env(), host_.mem(), pattern.col(), text.col(), out.col(), 3); }, 1),
        EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
    expect_second_failed(out);
}

TEST_F(LocateFails, AConstantIsWrittenOutByTheFirstRowThatNeedsItAndForAll) {
    Vector text = Vector::of<Text>(host_, {Text{"", 0}, Text{"b", 0}, Text{std::string("b") + std::string(48, ' '), 0}});
    Constant pattern = Constant::of(Text{"b", 48});
    const auto locate = [&](const Vector& out) {
        return blocate_def_va_str(host_.env(), host_.mem(), pattern.scalar(), text.col(), out.col(), 3);
    };
    const Vector failed = result();
    EXPECT_EQ(call(
                  failed, [&] { return locate(failed); }, 0),
              EC_OUT_OF_MEMORY);
    EXPECT_EQ(stack_, "empty");
    EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
    expect_second_failed(failed);
    const Vector out = result();
    EXPECT_EQ(call(
                  out, [&] { return locate(out); }, 1),
              0);
    EXPECT_EQ(out.get<int32_t>(1), 0);
    EXPECT_EQ(out.get<int32_t>(2), 1);
    // Rows of NULL need nothing, nor do starts below 1.
    for (uint32_t i = 0; i < 3; ++i) text.set(i, support::to_cell(std::optional<Text>()), 0);
    EXPECT_EQ(call(
                  out, [&] { return locate(out); }, 0),
              0);
    const Vector pattern_vector = Vector::of<Text>(host_, {Text{"b", 9}, Text{"b", 9}, Text{"b", 9}});
    Constant zero = Constant::of(int32_t{0});
    EXPECT_EQ(call(
                  out,
                  [&] {
                      return blocate_avv_str(host_.env(), host_.mem(), pattern_vector.col(), pattern.scalar(), zero.scalar(),
                                             out.col(), 3);
                  },
                  0),
              0);
}

TEST_F(LocateFails, AConstantLongerThanAnyStringFailsWithTheServicesCode) {
    const Vector text = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 0}, Text{"b", 0}});
    Constant pattern = Constant::of(Text{"b", UINT32_MAX});
    const Vector out = result();
    const auto locate = [&] {
        return blocate_def_va_str(host_.env(), host_.mem(), pattern.scalar(), text.col(), out.col(), 3);
    };
    EXPECT_EQ(call(out, locate), EC_STRING_TOO_LONG);
    EXPECT_EQ(stack_, "empty");
    EXPECT_EQ(log_, ErrorCodes{EC_STRING_TOO_LONG});
    EXPECT_EQ(out.valid(0), 0);
    // And a row, before any memory is asked for.
    const Vector long_text = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", UINT32_MAX}, Text{"b", 0}});
    Constant letter = Constant::of(Text{"b", 0});
    const Vector rows = result();
    EXPECT_EQ(
        call(rows,
             [&] { return blocate_def_va_str(host_.env(), host_.mem(), letter.scalar(), long_text.col(), rows.col(), 3); }),
        EC_OUT_OF_MEMORY);
    EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
    expect_second_failed(rows);
}

// The forms in which the text is a vector of CLOBs, its second row out of row, and those in which it is a constant.
class LocateInClobFails : public LocateFails {
  protected:
    using Form = std::function<int32_t(bdta3_col*)>;

    std::vector<Form> of_vectors() {
        return {[&](bdta3_col* out) {
                    return blocate_aav_str_clob(env(), mem(), pattern_.col(), text_.col(), one_.scalar(), out, 3);
                },
                [&](bdta3_col* out) {
                    return blocate_vav_str_clob(env(), mem(), letter_.scalar(), text_.col(), one_.scalar(), out, 3);
                },
                [&](bdta3_col* out) { return blocate_def_aa_str_clob(env(), mem(), pattern_.col(), text_.col(), out, 3); },
                [&](bdta3_col* out) { return blocate_def_va_str_clob(env(), mem(), letter_.scalar(), text_.col(), out, 3); }};
    }
    std::vector<Form> of_constants(Constant& text) {
        return {[&](bdta3_col* out) {
                    return blocate_avv_str_clob(env(), mem(), pattern_.col(), text.scalar(), one_.scalar(), out, 3);
                },
                [&](bdta3_col* out) { return blocate_def_av_str_clob(env(), mem(), pattern_.col(), text.scalar(), out, 3); }};
    }
    Constant constant(const std::string& data, uint8_t storage) {
        return Constant(*support::find_value_type("clob"), clob_cell(data, storage), &host_);
    }

    qz_env* env() const { return host_.env(); }
    rt_memobj* mem() const { return host_.mem(); }

    const std::string data_ = std::string(1000, 'a') + "b";
    const Vector text_ = clobs(host_, {"ab", data_, "ab"});
    const Vector pattern_ = Vector::of<Text>(host_, {Text{"b", 0}, Text{"b", 0}, Text{"b", 0}});
    Constant letter_ = Constant::of(Text{"b", 0});
};

constexpr int32_t kTold = -4711;

TEST_F(LocateInClobFails, AFailedLookUpIsLoggedByReaderAndRow) {
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        host_lob_fail(HOST_LOB_LOOKUP, kTold);
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), kTold);
        EXPECT_EQ(stack_, "empty");
        EXPECT_EQ(log_, (ErrorCodes{kTold, kTold}));
        expect_second_failed(out);
        host_lob_fail(HOST_LOB_LOOKUP, 0);
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), 0);
        EXPECT_EQ(out.get<int32_t>(1), 1001);
    }
}

TEST_F(LocateInClobFails, AFailedReadIsLogged) {
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        host_lob_fail(HOST_LOB_READ, kTold);
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), kTold);
        EXPECT_EQ(stack_, "empty");
        EXPECT_EQ(log_, ErrorCodes{kTold});
        expect_second_failed(out);
        host_lob_fail(HOST_LOB_READ, 0);
    }
}

TEST_F(LocateInClobFails, AConstantThatCannotBeReadFailsTheFirstRow) {
    for (const uint8_t storage : {uint8_t{LOB_KIND_SHORT}, uint8_t{LOB_KIND_LONG}}) {
        Constant text = constant(data_, storage);
        for (const Form& form : of_constants(text)) {
            for (const int32_t what : {HOST_LOB_LOOKUP, HOST_LOB_READ}) {
                const Vector out = result();
                host_lob_fail(what, kTold);
                EXPECT_EQ(call(out, [&] { return form(out.col()); }), kTold);
                EXPECT_EQ(stack_, "empty");
                EXPECT_EQ(log_, ErrorCodes{kTold});
                EXPECT_EQ(out.valid(0), 0);
                EXPECT_TRUE(out.valid_untouched(1));
                host_lob_fail(what, 0);
                EXPECT_EQ(call(out, [&] { return form(out.col()); }), 0);
                EXPECT_EQ(out.get<int32_t>(2), 1001);
            }
        }
    }
}

TEST_F(LocateInClobFails, ExhaustionIsReportedByTheReaderAndLogged) {
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        EXPECT_EQ(call(
                      out, [&] { return form(out.col()); }, 1),
                  EC_OUT_OF_MEMORY);
        EXPECT_EQ(stack_, "-503 bifun_lob_to_str");
        EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
        expect_second_failed(out);
    }
    Constant text = constant(data_, LOB_KIND_IN_ROW);
    for (const Form& form : of_constants(text)) {
        const Vector out = result();
        EXPECT_EQ(call(
                      out, [&] { return form(out.col()); }, 0),
                  EC_OUT_OF_MEMORY);
        EXPECT_EQ(stack_, "-503 ifun_lob_to_str_ex");
        EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
        EXPECT_EQ(out.valid(0), 0);
        // Read once for all rows.
        EXPECT_EQ(call(
                      out, [&] { return form(out.col()); }, 1),
                  0);
        EXPECT_EQ(out.get<int32_t>(2), 1001);
    }
}

// Where neither can be had, the text is what is told of.
TEST_F(LocateInClobFails, TheTextIsReadBeforeThePatternIsWrittenOut) {
    const Vector blank_pattern = Vector::of<Text>(host_, {Text{"b", 9}, Text{"b", 9}, Text{"b", 9}});
    Constant blank_constant = Constant::of(Text{"b", 99});
    Constant text = constant(data_, LOB_KIND_SHORT);
    const std::vector<Form> by_slot = {
        [&](bdta3_col* to) {
            return blocate_aav_str_clob(env(), mem(), blank_pattern.col(), text_.col(), one_.scalar(), to, 3);
        },
        [&](bdta3_col* to) {
            return blocate_vav_str_clob(env(), mem(), blank_constant.scalar(), text_.col(), one_.scalar(), to, 3);
        },
        [&](bdta3_col* to) { return blocate_def_aa_str_clob(env(), mem(), blank_pattern.col(), text_.col(), to, 3); },
        [&](bdta3_col* to) { return blocate_def_va_str_clob(env(), mem(), blank_constant.scalar(), text_.col(), to, 3); },
    };
    const std::vector<Form> by_value = {
        [&](bdta3_col* to) {
            return blocate_avv_str_clob(env(), mem(), blank_pattern.col(), text.scalar(), one_.scalar(), to, 3);
        },
        [&](bdta3_col* to) { return blocate_def_av_str_clob(env(), mem(), blank_pattern.col(), text.scalar(), to, 3); },
    };
    const auto expect = [&](const Form& form, const std::string& stack) {
        const Vector out = result();
        EXPECT_EQ(call(
                      out, [&] { return form(out.col()); }, 0),
                  EC_OUT_OF_MEMORY);
        EXPECT_EQ(stack_, stack);
        EXPECT_EQ(log_, ErrorCodes{EC_OUT_OF_MEMORY});
    };
    for (const Form& form : by_slot) expect(form, "-503 bifun_lob_to_str");
    for (const Form& form : by_value) expect(form, "-503 ifun_lob_to_str_ex");
}

// The locator of a value out of row is copied to be read: a second allocation, whose failure leaves the first to be given back.
TEST_F(LocateInClobFails, AnyAllocationMayFail) {
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        int failed = 0;
        const auto locate = [&] { return form(out.col()); };
        EXPECT_EQ(support::check_allocation_failures(host_, locate, EC_OUT_OF_MEMORY, &failed), "");
        EXPECT_GE(failed, 3);
    }
}

// Text that the store cuts short ends with a whole character; bytes would end with a part of one, which could be found.
TEST_F(LocateInClobFails, AClobIsReadAsText) {
    const support::Parameters utf8(SERVER_CHARSET, 1);
    host_lob_limit_read(2);
    const Vector text = clobs(host_, {"", "a\u00e9"});
    ASSERT_EQ(kStorages[1], LOB_KIND_SHORT);
    Constant constant_text = constant("a\u00e9", LOB_KIND_SHORT);
    const Vector pattern = Vector::of<Text>(host_, {Text{"a", 0}, Text{"\xC3", 0}});
    Constant lead = Constant::of(Text{"\xC3", 0});
    const Vector out = Vector::result<int32_t>(host_, 2);
    const std::vector<Form> forms = {
        [&](bdta3_col* to) { return blocate_aav_str_clob(env(), mem(), pattern.col(), text.col(), one_.scalar(), to, 2); },
        [&](bdta3_col* to) { return blocate_vav_str_clob(env(), mem(), lead.scalar(), text.col(), one_.scalar(), to, 2); },
        [&](bdta3_col* to) { return blocate_def_aa_str_clob(env(), mem(), pattern.col(), text.col(), to, 2); },
        [&](bdta3_col* to) { return blocate_def_va_str_clob(env(), mem(), lead.scalar(), text.col(), to, 2); },
        [&](bdta3_col* to) {
            return blocate_avv_str_clob(env(), mem(), pattern.col(), constant_text.scalar(), one_.scalar(), to, 2);
        },
        [&](bdta3_col* to) { return blocate_def_av_str_clob(env(), mem(), pattern.col(), constant_text.scalar(), to, 2); },
    };
    for (const Form& form : forms) {
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), 0);
        EXPECT_EQ(out.get<int32_t>(1), 0);
    }
}

TEST_F(LocateInClobFails, WhatTheStoreDeliversIsSearched) {
    host_lob_limit_read(1000);
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), 0);
        EXPECT_EQ(out.get<int32_t>(0), 2);  // in row
        EXPECT_EQ(out.get<int32_t>(1), 0);
    }
    host_lob_limit_read(1001);
    for (const Form& form : of_vectors()) {
        const Vector out = result();
        EXPECT_EQ(call(out, [&] { return form(out.col()); }), 0);
        EXPECT_EQ(out.get<int32_t>(1), 1001);
    }
}

}  // namespace
