#include "qzhost/column.h"

#include <dlfcn.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <numeric>
#include <random>
#include <string>
#include <vector>

#include "qzbifun/codes.h"
#include "qzhost/control.h"
#include "qzhost/lob.h"

namespace {

constexpr uint32_t kLongestOwnText = 4096;  // longer texts are blocks of the memory object

struct DestroyColumn {
    void operator()(bdta3_col* col) const { host_col_destroy(col); }
};
using Column = std::unique_ptr<bdta3_col, DestroyColumn>;

// Bytes in a block of exactly their size, so that a read beyond them is seen.
std::unique_ptr<char[]> exactly(const std::string& text) {
    auto bytes = std::make_unique<char[]>(text.size());
    std::copy(text.begin(), text.end(), bytes.get());
    return bytes;
}

bdta3_colstr* slots(bdta3_col* col) { return static_cast<bdta3_colstr*>(col->data->values); }
std::string text(const Column& col, uint32_t row) { return {slots(col.get())[row].bytes, slots(col.get())[row].len}; }
uint32_t blank(const Column& col, uint32_t row) { return slots(col.get())[row].blank; }
bool is_local(const Column& col, uint32_t row) { return bdta3_str_is_in_local(col->data, slots(col.get())[row].bytes) != 0; }

bdta3_colstr slot_of(std::string& text, uint32_t blank = 0) {
    return {static_cast<uint32_t>(text.size()), blank, text.empty() ? nullptr : text.data()};
}

class ColumnTest : public testing::Test {
  protected:
    void SetUp() override {
        env = host_env_create();
        rt_mem = host_memobj_create(env);
        ASSERT_NE(rt_mem, nullptr);
    }
    void TearDown() override {
        host_memory_fail_after(-1);
        host_memobj_destroy(rt_mem);
        host_env_destroy(env);
    }

    Column column(int32_t type, uint32_t rows) { return Column(host_col_create(env, rt_mem, type, rows)); }
    int32_t store(const Column& col, uint32_t row, const std::string& bytes, uint32_t blanks = 0) {
        const auto copy = exactly(bytes);
        return bdta3_col_assign_str(env, rt_mem, col.get(), row, copy.get(), static_cast<uint32_t>(bytes.size()), blanks);
    }

    qz_env* env = nullptr;
    rt_memobj* rt_mem = nullptr;
};

// ---- Fixed widths ----------------------------------------------------------------------------------------------------------

constexpr uint32_t kFlags[] = {0, 1, 2, 0x100, 0xFFFFFFFF};  // any of them but 0 is a value

template <class Record, class Setter>
void check_setter(qz_env* env, rt_memobj* rt_mem, int32_t type, Setter setter, const Record& value) {
    const Column col(host_col_create(env, rt_mem, type, 3));
    constexpr size_t width = sizeof value.value;
    ASSERT_EQ(host_type_width(type), width);
    for (const uint32_t flag : kFlags) {
        Record record = value;
        record.has_value = flag;
        setter(env, rt_mem, col.get(), 1, &record);
        EXPECT_EQ(col->data->valid[1], flag != 0);
        EXPECT_EQ(std::memcmp(static_cast<char*>(col->data->values) + width, &record.value, width), 0);
        col->data->valid[1] = 7;
    }
    const std::string zeros(width, '\0');
    EXPECT_EQ(std::memcmp(col->data->values, zeros.data(), width), 0);
    EXPECT_EQ(std::memcmp(static_cast<char*>(col->data->values) + 2 * width, zeros.data(), width), 0);
    EXPECT_EQ(col->data->valid[0] + col->data->valid[2], 0);
    EXPECT_EQ(col->all_valid, 0u);
}

template <class Function>
Function* symbol(const char* name) {
    return reinterpret_cast<Function*>(dlsym(RTLD_DEFAULT, name));
}

TEST_F(ColumnTest, SettersStoreValueAndFlag) {
    const xdec number{XDEC_SIGN_NEGATIVE, 4, 2, 0, 0, 3, 193, {13, 35}};
    const qztime time{-44, 3, 15, 12, 30, 59, 999999999, -90};
    check_setter(env, rt_mem, HOST_INT, bdta3_set_int, bdta3_int{1, std::numeric_limits<int32_t>::min()});
    check_setter(env, rt_mem, HOST_INT64, bdta3_set_int64, bdta3_int64{1, std::numeric_limits<int64_t>::min()});
    check_setter(env, rt_mem, HOST_DOUBLE, bdta3_set_double, bdta3_double{1, -0.0});
    check_setter(env, rt_mem, HOST_DEC, bdta3_set_dec, bdta3_dec{1, number});
    check_setter(env, rt_mem, HOST_DATETIME, bdta3_set_datetime, bdta3_datetime{1, time});
}

TEST_F(ColumnTest, SettersExistAsSymbols) {
    const auto set_int = symbol<decltype(bdta3_set_int)>("bdta3_set_int");
    const auto set_int64 = symbol<decltype(bdta3_set_int64)>("bdta3_set_int64");
    const auto set_double = symbol<decltype(bdta3_set_double)>("bdta3_set_double");
    const auto set_dec = symbol<decltype(bdta3_set_dec)>("bdta3_set_dec");
    const auto set_datetime = symbol<decltype(bdta3_set_datetime)>("bdta3_set_datetime");
    ASSERT_TRUE(set_int && set_int64 && set_double && set_dec && set_datetime);
    check_setter(env, rt_mem, HOST_INT, set_int, bdta3_int{1, 5});
    check_setter(env, rt_mem, HOST_INT64, set_int64, bdta3_int64{1, 5});
    check_setter(env, rt_mem, HOST_DOUBLE, set_double, bdta3_double{1, 5});
    check_setter(env, rt_mem, HOST_DEC, set_dec, bdta3_dec{1, {XDEC_SIGN_ZERO, 1, 0, 0, 0, 1, 128, {}}});
    check_setter(env, rt_mem, HOST_DATETIME, set_datetime, bdta3_datetime{1, {2000, 1, 1, 0, 0, 0, 0, TZ_NONE}});
}

template <class Record>
void check_set_value(qz_env* env, rt_memobj* rt_mem, int32_t type, const Record& value) {
    const auto setter = [](qz_env* e, rt_memobj* m, bdta3_col* col, uint32_t row, const Record* record) {
        EXPECT_EQ(col->data->set_value(e, m, col, row, reinterpret_cast<const bdta3_scalar*>(record)), 0);
    };
    check_setter(env, rt_mem, type, setter, value);
}

TEST_F(ColumnTest, SetValueStoresAConstantOfEachFixedType) {
    check_set_value(env, rt_mem, HOST_INT, bdta3_int{1, -7});
    check_set_value(env, rt_mem, HOST_INT64, bdta3_int64{1, std::numeric_limits<int64_t>::max()});
    check_set_value(env, rt_mem, HOST_DOUBLE, bdta3_double{1, 0.1});
    check_set_value(env, rt_mem, HOST_FLOAT, bdta3_float{1, 0.1F});
    check_set_value(env, rt_mem, HOST_DEC, bdta3_dec{1, {XDEC_SIGN_POSITIVE, 1, 0, 0, 0, 2, 193, {6}}});
    check_set_value(env, rt_mem, HOST_DATETIME, bdta3_datetime{1, {1999, 12, 31, 23, 59, 59, 1, 480}});
    check_set_value(env, rt_mem, HOST_INTERVAL_YM, bdta3_interval_ym{1, {-1, -11, 3}});
    check_set_value(env, rt_mem, HOST_INTERVAL_DT, bdta3_interval_dt{1, {1, 2, 3, 4, 5, 6}});
}

// ---- Text constants --------------------------------------------------------------------------------------------------------

// A string constant whose unused half leads nowhere.
nstr text_constant(std::string& text, uint32_t blanks) {
    nstr value{};
    value.has_value = 1;
    value.len = static_cast<uint32_t>(text.size());
    value.blank = blanks;
    std::memset(value.nstr_inline, '?', sizeof value.nstr_inline);
    value.nstr_ext = text.data();
    if (text.size() <= NSTR_INLINE_BYTES) {
        std::copy(text.begin(), text.end(), value.nstr_inline);
        value.nstr_ext = nullptr;
    }
    return value;
}

TEST_F(ColumnTest, SetValueStoresTextConstants) {
    for (const int32_t type : {HOST_STR, HOST_BIN, HOST_CLOB, HOST_BLOB}) {
        const Column col = column(type, 2);
        for (const uint32_t len : {0u, 1u, 47u, 48u, 49u, 5000u}) {
            std::string bytes(len, 'v');
            const nstr value = text_constant(bytes, 3);
            ASSERT_EQ(col->data->set_value(env, rt_mem, col.get(), 1, reinterpret_cast<const bdta3_scalar*>(&value)), 0);
            EXPECT_EQ(text(col, 1), bytes);
            EXPECT_EQ(blank(col, 1), type == HOST_STR ? 3u : 0u);
            EXPECT_EQ(col->data->valid[1], 1);
            col->data->valid[1] = 0;
        }
        nstr null{};
        null.len = 1000;
        col->data->valid[1] = 1;
        ASSERT_EQ(col->data->set_value(env, rt_mem, col.get(), 1, reinterpret_cast<const bdta3_scalar*>(&null)), 0);
        EXPECT_EQ(col->data->valid[1], 0);
        EXPECT_EQ(slots(col.get())[1].len, 5000u);
    }
}

TEST_F(ColumnTest, SetValueReportsExhaustion) {
    const Column col = column(HOST_STR, 1);
    std::string bytes = "text";
    const nstr value = text_constant(bytes, 0);
    host_memory_fail_after(0);
    EXPECT_EQ(col->data->set_value(env, rt_mem, col.get(), 0, reinterpret_cast<const bdta3_scalar*>(&value)), EC_OUT_OF_MEMORY);
    EXPECT_EQ(col->data->valid[0], 0);
}

// ---- Storing texts ---------------------------------------------------------------------------------------------------------

TEST_F(ColumnTest, TextsOfEachShortLengthAreCopiedWhole) {
    const Column col = column(HOST_STR, 130);
    std::vector<std::string> texts;
    for (uint32_t len = 0; len < 130; ++len) {
        std::string bytes(len, '\0');
        for (uint32_t i = 0; i < len; ++i) bytes[i] = static_cast<char>(1 + (i * 31 + len) % 255);
        ASSERT_EQ(store(col, len, bytes, len + 1), 0);
        texts.push_back(bytes);
    }
    for (uint32_t len = 0; len < 130; ++len) {
        EXPECT_EQ(text(col, len), texts[len]);
        EXPECT_EQ(blank(col, len), len + 1);
        EXPECT_EQ(col->data->valid[len], 1);
        EXPECT_TRUE(is_local(col, len));
        EXPECT_NE(slots(col.get())[len].bytes, nullptr);
    }
    EXPECT_EQ(host_memobj_outstanding(rt_mem), 0u);
}

TEST_F(ColumnTest, AbsentTextOfNoBytesIsAValue) {
    const Column col = column(HOST_STR, 1);
    ASSERT_EQ(bdta3_col_assign_str(env, rt_mem, col.get(), 0, nullptr, 0, 5), 0);
    EXPECT_EQ(slots(col.get())[0].len, 0u);
    EXPECT_EQ(blank(col, 0), 5u);
    EXPECT_EQ(col->data->valid[0], 1);
    EXPECT_TRUE(is_local(col, 0));
}

TEST_F(ColumnTest, LongTextsAreBlocksOfTheMemoryObject) {
    const Column col = column(HOST_STR, 3);
    const std::string longest(kLongestOwnText, 'a'), longer(kLongestOwnText + 1, 'b'), huge(1 << 20, 'c');
    ASSERT_EQ(store(col, 0, longest), 0);
    EXPECT_TRUE(is_local(col, 0));
    EXPECT_EQ(host_memobj_outstanding(rt_mem), 0u);
    ASSERT_EQ(store(col, 1, longer), 0);
    ASSERT_EQ(store(col, 2, huge), 0);
    EXPECT_FALSE(is_local(col, 1));
    EXPECT_FALSE(is_local(col, 2));
    EXPECT_EQ(host_memobj_outstanding(rt_mem), longer.size() + huge.size());
    rt_mem->free(env, rt_mem->pool, slots(col.get())[1].bytes);
    EXPECT_EQ(host_memobj_outstanding(rt_mem), huge.size());
    EXPECT_EQ(text(col, 0), longest);
    EXPECT_EQ(text(col, 2), huge);
}

TEST_F(ColumnTest, WithoutAMemoryObjectLongTextsAreOwnToo) {
    const Column col(host_col_create(env, nullptr, HOST_STR, 2));
    const std::string longer(100000, 'b');
    ASSERT_EQ(host_col_set_text(col.get(), 0, longer.data(), 100000, 0), 0);
    ASSERT_EQ(host_col_set_text(col.get(), 1, "x", 1, 0), 0);
    EXPECT_EQ(text(col, 0), longer);
    EXPECT_TRUE(is_local(col, 0));
    EXPECT_TRUE(is_local(col, 1));
}

TEST_F(ColumnTest, ManyTextsStayWhereTheyAre) {
    const uint32_t seed = 20240229;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr uint32_t kRows = 5000;
    const Column col = column(HOST_STR, kRows);
    for (int batch = 0; batch < 3; ++batch) {
        std::vector<std::string> texts(kRows);
        for (uint32_t row = 0; row < kRows; ++row) {
            texts[row].assign(random() % (row % 50 == 0 ? 6000 : 60), static_cast<char>('a' + row % 26));
            ASSERT_EQ(store(col, row, texts[row], row), 0);
        }
        for (uint32_t row = 0; row < kRows; ++row) {
            ASSERT_EQ(text(col, row), texts[row]) << row;
            ASSERT_EQ(is_local(col, row), texts[row].size() <= kLongestOwnText) << row;
        }
        host_col_reset(col.get());
        host_memobj_reset(rt_mem);
    }
}

TEST_F(ColumnTest, OwnSpaceEndsWhereItEnds) {
    const Column col = column(HOST_STR, 1);
    const Column other = column(HOST_STR, 1);
    ASSERT_EQ(store(col, 0, "abc"), 0);
    ASSERT_EQ(store(other, 0, "abc"), 0);
    char elsewhere = 'x';
    EXPECT_EQ(bdta3_str_is_in_local(col->data, &elsewhere), 0);
    EXPECT_EQ(bdta3_str_is_in_local(col->data, nullptr), 0);
    EXPECT_EQ(bdta3_str_is_in_local(col->data, slots(other.get())[0].bytes), 0);
    ASSERT_EQ(store(other, 0, ""), 0);
    EXPECT_EQ(bdta3_str_is_in_local(col->data, slots(other.get())[0].bytes), 0);
}

TEST_F(ColumnTest, ATextMayComeFromTheVectorItself) {
    const Column col = column(HOST_STR, 2);
    ASSERT_EQ(store(col, 0, "  padded text of more than thirty-two bytes"), 0);
    for (int i = 0; i < 1000; ++i) {
        const bdta3_colstr old = slots(col.get())[0];
        ASSERT_EQ(bdta3_col_assign_str(env, rt_mem, col.get(), 0, old.bytes, old.len, old.blank), 0);
    }
    EXPECT_EQ(text(col, 0), "  padded text of more than thirty-two bytes");
}

TEST_F(ColumnTest, RelativesOfAssignStr) {
    const Column col = column(HOST_STR, 4);
    EXPECT_EQ(bdta3_col_assign_bin(env, rt_mem, col.get(), 0, "a\0b", 3), 0);
    EXPECT_EQ(bdta3_col_assign_text(env, rt_mem, col.get(), 1, "clob", 4), 0);
    EXPECT_EQ(bdta3_set_str_from_str(env, rt_mem, col.get(), 2, "terminated"), 0);
    EXPECT_EQ(bdta3_set_str_from_str_with_len(env, rt_mem, col.get(), 3, "counted", 5), 0);
    EXPECT_EQ(text(col, 0), std::string("a\0b", 3));
    EXPECT_EQ(text(col, 1), "clob");
    EXPECT_EQ(text(col, 2), "terminated");
    EXPECT_EQ(text(col, 3), "count");
    for (uint32_t row = 0; row < 4; ++row) {
        EXPECT_EQ(blank(col, row), 0u);
        EXPECT_EQ(col->data->valid[row], 1);
    }
}

TEST_F(ColumnTest, ATextInALobVectorIsAnInRowValue) {
    for (const int32_t type : {HOST_CLOB, HOST_BLOB}) {
        const Column col = column(type, 1);
        for (const uint32_t len : {0u, 1u, 300u, 70000u}) {
            const std::string bytes(len, 'L');
            ASSERT_EQ(bdta3_col_assign_text(env, rt_mem, col.get(), 0, bytes.data(), len), 0);
            const std::string locator = text(col, 0);
            ASSERT_EQ(locator.size(), 47 + len);
            EXPECT_EQ(locator[0], 1);
            uint32_t stored_len = 0;
            std::memcpy(&stored_len, &locator[9], 4);
            EXPECT_EQ(stored_len, len);
            EXPECT_EQ(locator.substr(47), bytes);
            const bdta3_colstr& slot = slots(col.get())[0];
            EXPECT_NE(nblob_is_in_row_for_colstr_fast(&slot), 0);
            EXPECT_EQ(nblob_get_len_for_colstr_fast(&slot), len);
            EXPECT_EQ(col->data->valid[0], 1);
        }
        EXPECT_EQ(bdta3_col_assign_text(env, rt_mem, col.get(), 0, "x", UINT32_MAX), EC_OUT_OF_MEMORY);
    }
}

TEST_F(ColumnTest, SpaceIsForTheCallerToFill) {
    const Column col = column(HOST_STR, 2);
    char* bytes = bdta3_colstr_assign_without_value(env, rt_mem, col->data, 1, 3, 4);
    ASSERT_NE(bytes, nullptr);
    std::memcpy(bytes, "xyz", 3);
    EXPECT_EQ(text(col, 1), "xyz");
    EXPECT_EQ(blank(col, 1), 4u);
    EXPECT_EQ(col->data->valid[1], 0);
    bdta3_colstr_assign_without_value(env, rt_mem, col->data, 1, 0, 9);
    EXPECT_EQ(slots(col.get())[1].len, 0u);
    EXPECT_EQ(blank(col, 1), 9u);

    for (const uint32_t size : {0u, 1u, 100u, kLongestOwnText, kLongestOwnText + 1, 1000000u}) {
        char* space = bdta3_col_space_alloc(env, rt_mem, col->data, size);
        ASSERT_NE(space, nullptr) << size;
        std::memset(space, 'z', size);
        EXPECT_EQ(bdta3_str_is_in_local(col->data, space) != 0, size <= kLongestOwnText) << size;
    }
    EXPECT_EQ(slots(col.get())[1].len, 0u);
}

TEST_F(ColumnTest, ExhaustionLeavesTheRowAlone) {
    for (const uint32_t len : {10u, kLongestOwnText + 1}) {
        const Column col = column(HOST_STR, 1);
        const std::string bytes(len, 'q');
        bdta3_colstr kept{3, 2, const_cast<char*>("old")};
        slots(col.get())[0] = kept;
        host_memory_fail_after(0);
        EXPECT_EQ(bdta3_col_assign_str(env, rt_mem, col.get(), 0, bytes.data(), len, 0), EC_OUT_OF_MEMORY);
        EXPECT_EQ(bdta3_col_assign_bin(env, rt_mem, col.get(), 0, bytes.data(), len), EC_OUT_OF_MEMORY);
        EXPECT_EQ(bdta3_col_assign_text(env, rt_mem, col.get(), 0, bytes.data(), len), EC_OUT_OF_MEMORY);
        EXPECT_EQ(bdta3_set_str_from_str(env, rt_mem, col.get(), 0, bytes.c_str()), EC_OUT_OF_MEMORY);
        EXPECT_EQ(bdta3_set_str_from_str_with_len(env, rt_mem, col.get(), 0, bytes.c_str(), len), EC_OUT_OF_MEMORY);
        EXPECT_EQ(bdta3_colstr_assign_without_value(env, rt_mem, col->data, 0, len, 0), nullptr);
        EXPECT_EQ(bdta3_col_space_alloc(env, rt_mem, col->data, len), nullptr);
        const bdta3_colstr source{len, 0, const_cast<char*>(bytes.data())};
        EXPECT_EQ(bdta3_colstr_copy(env, rt_mem, col->data, &slots(col.get())[0], &source), EC_OUT_OF_MEMORY);
        // No memory is asked for where there are no bytes.
        EXPECT_NE(bdta3_col_space_alloc(env, rt_mem, col->data, 0), nullptr);
        host_memory_fail_after(-1);
        EXPECT_EQ(text(col, 0), "old");
        EXPECT_EQ(blank(col, 0), 2u);
        EXPECT_EQ(col->data->valid[0], 0);
    }
}

TEST_F(ColumnTest, ColstrCopyCopiesTheText) {
    const Column col = column(HOST_STR, 2);
    for (const uint32_t len : {0u, 5u, 40u, 5000u}) {
        std::string bytes(len, 'c');
        const bdta3_colstr source = slot_of(bytes, 6);
        ASSERT_EQ(bdta3_colstr_copy(env, rt_mem, col->data, &slots(col.get())[1], &source), 0);
        EXPECT_EQ(text(col, 1), bytes);
        EXPECT_EQ(blank(col, 1), 6u);
        EXPECT_EQ(col->data->valid[1], 0);
        if (len != 0) {
            EXPECT_NE(slots(col.get())[1].bytes, source.bytes);
        }
    }
}

// ---- Copies of whole vectors -----------------------------------------------------------------------------------------------

constexpr int32_t kFixedTypes[] = {HOST_INT, HOST_INT64,    HOST_DOUBLE,      HOST_FLOAT,
                                   HOST_DEC, HOST_DATETIME, HOST_INTERVAL_YM, HOST_INTERVAL_DT};
constexpr int32_t kTextTypes[] = {HOST_STR, HOST_BIN, HOST_CLOB, HOST_BLOB};

std::vector<uint16_t> selection(const char* kind, uint32_t rows, std::mt19937& random) {
    std::vector<uint16_t> sel(rows);
    std::iota(sel.begin(), sel.end(), uint16_t{0});
    if (std::strcmp(kind, "reversing") == 0) std::reverse(sel.begin(), sel.end());
    if (std::strcmp(kind, "permuting") == 0) std::shuffle(sel.begin(), sel.end(), random);
    if (std::strcmp(kind, "repeating") == 0)
        std::generate(sel.begin(), sel.end(), [&] { return static_cast<uint16_t>(random() % rows); });
    return sel;
}

constexpr const char* kSelections[] = {"none", "reversing", "permuting", "repeating"};

TEST_F(ColumnTest, CopyOfFixedWidths) {
    const uint32_t seed = 1582;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const int32_t type : kFixedTypes) {
        for (const uint32_t rows : {1u, 3u, 64u, 131u}) {
            for (const char* kind : kSelections) {
                SCOPED_TRACE(testing::Message() << "type " << type << " rows " << rows << " selection " << kind);
                const uint32_t width = host_type_width(type);
                const Column from = column(type, rows), to = column(type, rows + 1);
                std::string values(rows * width, '\0');
                for (char& byte : values) byte = static_cast<char>(random());
                std::memcpy(from->data->values, values.data(), values.size());
                for (uint32_t row = 0; row < rows; ++row) from->data->valid[row] = static_cast<uint8_t>(random() % 4);
                const std::vector<uint16_t> sel = selection(kind, rows, random);
                if (std::strcmp(kind, "none") != 0) {
                    ASSERT_EQ(host_col_set_selection(from.get(), sel.data(), rows), 0);
                }
                from->all_valid = rows % 2;
                to->all_valid = 9;
                to->data->valid[rows] = 0xA5;
                std::memset(static_cast<char*>(to->data->values) + rows * width, 0xA5, width);

                ASSERT_EQ(bdta3_col_copy(env, rt_mem, to.get(), from.get(), rows), 0);

                for (uint32_t row = 0; row < rows; ++row) {
                    ASSERT_EQ(to->data->valid[row], from->data->valid[sel[row]]);
                    const std::string element(static_cast<char*>(to->data->values) + row * width, width);
                    ASSERT_EQ(element, values.substr(sel[row] * width, width));
                }
                EXPECT_EQ(to->all_valid, rows % 2);
                EXPECT_EQ(to->data->valid[rows], 0xA5);
                EXPECT_EQ(std::string(static_cast<char*>(to->data->values) + rows * width, width), std::string(width, '\xA5'));
                EXPECT_EQ(to->sel, nullptr);
            }
        }
    }
}

TEST_F(ColumnTest, CopyOfTexts) {
    const uint32_t seed = 1752;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const int32_t type : kTextTypes) {
        for (const uint32_t rows : {1u, 64u, 500u}) {
            for (const char* kind : kSelections) {
                SCOPED_TRACE(testing::Message() << "type " << type << " rows " << rows << " selection " << kind);
                const Column from = column(type, rows), to = column(type, rows);
                std::vector<std::string> texts(rows);
                for (uint32_t row = 0; row < rows; ++row) {
                    texts[row].assign(random() % 70, static_cast<char>(random()));
                    if (random() % 20 == 0) texts[row].assign(5000, 'L');
                    ASSERT_EQ(store(from, row, texts[row], row), 0);
                    from->data->valid[row] = static_cast<uint8_t>(random() % 3);
                    // Nothing of a NULL row is looked at.
                    if (from->data->valid[row] == 0) slots(from.get())[row] = {12345, 1, reinterpret_cast<char*>(8)};
                    slots(to.get())[row] = {77, 78, nullptr};
                }
                const std::vector<uint16_t> sel = selection(kind, rows, random);
                if (std::strcmp(kind, "none") != 0) {
                    ASSERT_EQ(host_col_set_selection(from.get(), sel.data(), rows), 0);
                }
                from->all_valid = 1;

                ASSERT_EQ(bdta3_col_copy(env, rt_mem, to.get(), from.get(), rows), 0);

                EXPECT_EQ(to->all_valid, 1u);
                std::vector<const char*> places;
                for (uint32_t row = 0; row < rows; ++row) {
                    ASSERT_EQ(to->data->valid[row], from->data->valid[sel[row]]);
                    if (to->data->valid[row] == 0) {
                        ASSERT_EQ(slots(to.get())[row].len, 77u);
                        continue;
                    }
                    ASSERT_EQ(text(to, row), texts[sel[row]]);
                    ASSERT_EQ(blank(to, row), sel[row]);
                    ASSERT_EQ(is_local(to, row), slots(to.get())[row].len <= kLongestOwnText);
                    if (slots(to.get())[row].len != 0) places.push_back(slots(to.get())[row].bytes);
                }
                // Each row has a text of its own, also where a selection repeats one.
                std::sort(places.begin(), places.end());
                EXPECT_EQ(std::adjacent_find(places.begin(), places.end()), places.end());
            }
        }
    }
}

// Texts that stand one behind the other in one buffer, with gaps, empty texts, long texts and NULL rows between them.
TEST_F(ColumnTest, CopyOfAdjoiningTexts) {
    const uint32_t seed = 46;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    for (const uint32_t oddity : {1000000u, 100u, 7u, 2u}) {  // one row in so many is odd
        SCOPED_TRACE(oddity);
        constexpr uint32_t kRows = 3000;
        const Column from = column(HOST_STR, kRows), to = column(HOST_STR, kRows);
        std::vector<uint32_t> gaps(kRows);
        size_t size = 0;
        for (uint32_t row = 0; row < kRows; ++row) {
            uint32_t len = 1 + static_cast<uint32_t>(random() % 40);
            from->data->valid[row] = 1;
            if (random() % oddity == 0) {
                const uint32_t lengths[] = {0, kLongestOwnText, kLongestOwnText + 1};
                if (row % 4 == 0) from->data->valid[row] = 0;
                if (row % 4 == 1) gaps[row] = 3;
                if (row % 4 >= 2) len = lengths[random() % 3];
            }
            slots(from.get())[row] = {len, row, nullptr};
            size += len + gaps[row];
        }
        std::string bytes(size, '\0');
        for (char& byte : bytes) byte = static_cast<char>(random());
        const auto buffer = exactly(bytes);
        char* next = buffer.get();
        for (uint32_t row = 0; row < kRows; ++row) {
            next += gaps[row];
            slots(from.get())[row].bytes = next;
            next += slots(from.get())[row].len;
        }
        ASSERT_EQ(bdta3_col_copy(env, rt_mem, to.get(), from.get(), kRows), 0);
        for (uint32_t row = 0; row < kRows; ++row) {
            ASSERT_EQ(to->data->valid[row], from->data->valid[row]);
            if (to->data->valid[row] == 0) continue;
            ASSERT_EQ(text(to, row), text(from, row)) << row;
            ASSERT_EQ(blank(to, row), row);
            ASSERT_EQ(is_local(to, row), slots(to.get())[row].len <= kLongestOwnText);
            ASSERT_FALSE(bdta3_str_is_in_local(to->data, slots(from.get())[row].bytes));
        }
    }
}

TEST_F(ColumnTest, CopyOfNoRows) {
    for (const int32_t type : {HOST_INT, HOST_STR}) {
        const Column from = column(type, 1), to = column(type, 1);
        from->all_valid = 1;
        to->data->valid[0] = 5;
        EXPECT_EQ(bdta3_col_copy(env, rt_mem, to.get(), from.get(), 0), 0);
        EXPECT_EQ(to->all_valid, 1u);
        EXPECT_EQ(to->data->valid[0], 5);
        const uint16_t row = 0;
        ASSERT_EQ(host_col_set_selection(from.get(), &row, 1), 0);
        from->all_valid = 0;
        EXPECT_EQ(bdta3_col_copy(env, rt_mem, to.get(), from.get(), 0), 0);
        EXPECT_EQ(to->all_valid, 0u);
    }
}

TEST_F(ColumnTest, CopyOntoItself) {
    std::mt19937 random(4);
    constexpr uint32_t kRows = 100;
    for (const char* kind : kSelections) {
        SCOPED_TRACE(kind);
        const std::vector<uint16_t> sel = selection(kind, kRows, random);
        for (const int32_t type : kFixedTypes) {
            const Column col = column(type, kRows);
            const uint32_t width = host_type_width(type);
            char* values = static_cast<char*>(col->data->values);
            for (uint32_t i = 0; i < kRows * width; ++i) values[i] = static_cast<char>(random());
            for (uint32_t row = 0; row < kRows; ++row) col->data->valid[row] = static_cast<uint8_t>(row % 3);
            const std::string before(values, kRows * width);
            if (std::strcmp(kind, "none") != 0) {
                ASSERT_EQ(host_col_set_selection(col.get(), sel.data(), kRows), 0);
            }
            ASSERT_EQ(bdta3_col_copy(env, rt_mem, col.get(), col.get(), kRows), 0);
            for (uint32_t row = 0; row < kRows; ++row) {
                ASSERT_EQ(col->data->valid[row], sel[row] % 3);
                ASSERT_EQ(std::string(values + row * width, width), before.substr(sel[row] * width, width));
            }
        }
        const Column col = column(HOST_STR, kRows);
        for (uint32_t row = 0; row < kRows; ++row) ASSERT_EQ(store(col, row, std::to_string(row * 1000003), row), 0);
        if (std::strcmp(kind, "none") != 0) {
            ASSERT_EQ(host_col_set_selection(col.get(), sel.data(), kRows), 0);
        }
        ASSERT_EQ(bdta3_col_copy(env, rt_mem, col.get(), col.get(), kRows), 0);
        std::vector<const char*> places;
        for (uint32_t row = 0; row < kRows; ++row) {
            ASSERT_EQ(text(col, row), std::to_string(sel[row] * 1000003));
            ASSERT_EQ(blank(col, row), sel[row]);
            places.push_back(slots(col.get())[row].bytes);
        }
        std::sort(places.begin(), places.end());
        EXPECT_EQ(std::adjacent_find(places.begin(), places.end()), places.end());
    }
}

TEST_F(ColumnTest, CopyThatRunsOutOfMemory) {
    constexpr uint32_t kRows = 40;
    const Column from = column(HOST_STR, kRows);
    for (uint32_t row = 0; row < kRows; ++row) ASSERT_EQ(store(from, row, std::string(row * 150, 'o')), 0);
    const size_t before = host_memobj_outstanding(rt_mem);
    int32_t code = EC_OUT_OF_MEMORY;
    for (int64_t allocations = 0; code != 0; ++allocations) {
        ASSERT_LT(allocations, 100);
        const Column to = column(HOST_STR, kRows);
        rt_memobj* own = host_memobj_create(env);
        from->all_valid = 1;
        host_memory_fail_after(allocations);
        code = bdta3_col_copy(env, own, to.get(), from.get(), kRows);
        host_memory_fail_after(-1);
        EXPECT_EQ(to->all_valid, code == 0);
        bool failed = false;
        for (uint32_t row = 0; row < kRows; ++row) {
            failed = failed || to->data->valid[row] == 0;
            EXPECT_EQ(to->data->valid[row], !failed);
            if (!failed) {
                EXPECT_EQ(text(to, row), text(from, row));
            }
        }
        EXPECT_EQ(failed, code != 0);
        host_memobj_destroy(own);
    }
    EXPECT_EQ(host_memobj_outstanding(rt_mem), before);

    const uint16_t reverse[] = {2, 1, 0};
    const Column itself = column(HOST_INT, 3);
    ASSERT_EQ(host_col_set_selection(itself.get(), reverse, 3), 0);
    static_cast<int32_t*>(itself->data->values)[2] = 22;
    host_memory_fail_after(0);
    EXPECT_EQ(bdta3_col_copy(env, rt_mem, itself.get(), itself.get(), 3), EC_OUT_OF_MEMORY);
    EXPECT_EQ(static_cast<int32_t*>(itself->data->values)[2], 22);
}

// ---- Slots -----------------------------------------------------------------------------------------------------------------

int sign(int32_t order) { return (order > 0) - (order < 0); }

TEST_F(ColumnTest, ComparisonIsThatOfPaddedTexts) {
    const uint32_t seed = 7;
    SCOPED_TRACE(seed);
    std::mt19937 random(seed);
    constexpr char kAlphabet[] = {'\0', '\x1f', ' ', ' ', ' ', '!', 'a', '\xff'};
    const auto value = [&] {
        std::string bytes(random() % 6, '\0');
        for (char& byte : bytes) byte = kAlphabet[random() % sizeof kAlphabet];
        return bytes;
    };
    for (int i = 0; i < 20000; ++i) {
        std::string a = value(), b = value();
        const auto a_bytes = exactly(a), b_bytes = exactly(b);
        const bdta3_colstr left{static_cast<uint32_t>(a.size()), static_cast<uint32_t>(random() % 4), a_bytes.get()};
        const bdta3_colstr right{static_cast<uint32_t>(b.size()), static_cast<uint32_t>(random() % 4), b_bytes.get()};
        a.resize(10, ' ');
        b.resize(10, ' ');
        ASSERT_EQ(sign(bdta3_colstr_cmp_with_blank(&left, &right, 0)), sign(std::memcmp(a.data(), b.data(), 10)))
            << a << '|' << b;
    }
    // Long tails of blanks, with and without something behind them.
    for (uint32_t len = 0; len < 40; ++len) {
        std::string a = "ab", b = "ab" + std::string(len, ' ');
        for (const char* end : {"", "!", "\x1f"}) {
            std::string c = b + end;
            const auto a_bytes = exactly(a), c_bytes = exactly(c);
            const bdta3_colstr left{2, 0, a_bytes.get()}, right{static_cast<uint32_t>(c.size()), 0, c_bytes.get()};
            const int expected = *end == '\0' ? 0 : *end == '!' ? -1 : 1;
            EXPECT_EQ(sign(bdta3_colstr_cmp_with_blank(&left, &right, 0)), expected) << len;
            EXPECT_EQ(sign(bdta3_colstr_cmp_with_blank(&right, &left, 0)), -expected) << len;
        }
    }
    const bdta3_colstr none{0, 0, nullptr}, blanks{0, 4, nullptr};
    EXPECT_EQ(bdta3_colstr_cmp_with_blank(&none, &blanks, 0), 0);
}

TEST_F(ColumnTest, TrimCountsTheBlanksAtTheEnd) {
    const struct {
        const char* stored;
        uint32_t len, blank, trimmed_len, trimmed_blank;
    } cases[] = {
        {"ab  ", 4, 0, 2, 2}, {"ab  ", 4, 3, 2, 5}, {"ab  ", 3, 0, 2, 1}, {"ab  ", 2, 0, 2, 0},   {"    ", 4, 1, 0, 5},
        {"", 0, 7, 0, 7},     {"a\t ", 3, 0, 2, 1}, {" a", 2, 0, 2, 0},   {"ab  cd", 4, 1, 2, 3},
    };
    for (const auto& c : cases) {
        std::string stored = c.stored;
        const auto bytes = exactly(stored);
        bdta3_colstr slot{static_cast<uint32_t>(stored.size()), c.blank, bytes.get()};
        bdta3_colstr_trim(&slot, c.len);
        EXPECT_EQ(slot.len, c.trimmed_len) << stored;
        EXPECT_EQ(slot.blank, c.trimmed_blank) << stored;
        EXPECT_EQ(slot.bytes, bytes.get());
    }
    for (uint32_t len = 0; len < 40; ++len) {
        const auto bytes = exactly("x" + std::string(len, ' '));
        bdta3_colstr slot{len + 1, 1, bytes.get()};
        bdta3_colstr_trim(&slot, len + 1);
        EXPECT_EQ(slot.len, 1u);
        EXPECT_EQ(slot.blank, len + 1);
    }
    std::string long_text(100000, ' ');
    long_text[17] = 'x';
    bdta3_colstr slot = slot_of(long_text);
    bdta3_colstr_trim(&slot, slot.len);
    EXPECT_EQ(slot.len, 18u);
    EXPECT_EQ(slot.blank, 99982u);
}

TEST_F(ColumnTest, AnNstrStandsForASlot) {
    for (const uint32_t len : {0u, 1u, 3u, 7u, 16u, 31u, 47u, 48u, 49u, 1000u}) {
        std::string bytes(len, 'n');
        const auto copy = exactly(bytes);
        const bdta3_colstr slot{len, 11, len == 0 ? nullptr : copy.get()};
        nstr value;
        std::memset(&value, 0x5A, sizeof value);
        bdta3_colstr_to_nstr_fast(&slot, &value);
        EXPECT_EQ(value.has_value, 1u);
        EXPECT_EQ(value.len, len);
        EXPECT_EQ(value.blank, 11u);
        EXPECT_EQ(value.nstr_cap, 0u);
        EXPECT_EQ(std::string(value.nstr_ext, len), bytes);
        EXPECT_EQ(value.nstr_ext == slot.bytes, len > 48);
        if (len <= 48) {
            EXPECT_EQ(std::string(value.nstr_inline, len), bytes);
        }
        if (len < 48) {
            EXPECT_EQ(value.nstr_inline[len], 0x5A);
        }
    }
}

// ---- Overflow --------------------------------------------------------------------------------------------------------------

TEST(OverflowTest, InfiniteDoublesOverflow) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(ntype_is_double_overflow(kInfinity), EC_DATA_OVERFLOW);
    EXPECT_EQ(ntype_is_double_overflow(-kInfinity), EC_DATA_OVERFLOW);
    for (const double value : {0.0, -0.0, 1e308, std::numeric_limits<double>::max(), std::numeric_limits<double>::lowest(),
                               std::numeric_limits<double>::denorm_min(), std::nan("")}) {
        EXPECT_EQ(ntype_is_double_overflow(value), 0) << value;
    }
}

TEST(OverflowTest, DoublesWhoseFloatIsInfiniteOverflowAFloat) {
    const double bound = std::ldexp(1.0, 128) - std::ldexp(1.0, 103);  // half way between the largest float and 2^128
    EXPECT_EQ(ntype_is_float_overflow(bound), EC_DATA_OVERFLOW);
    EXPECT_EQ(ntype_is_float_overflow(-bound), EC_DATA_OVERFLOW);
    EXPECT_EQ(ntype_is_float_overflow(std::nextafter(bound, 0.0)), 0);
    EXPECT_EQ(ntype_is_float_overflow(-std::nextafter(bound, 0.0)), 0);
    EXPECT_EQ(ntype_is_float_overflow(std::numeric_limits<float>::max()), 0);
    EXPECT_EQ(ntype_is_float_overflow(std::nan("")), 0);

    // The machine's own conversion is the oracle.
    const uint32_t seed = 99;
    SCOPED_TRACE(seed);
    std::mt19937_64 random(seed);
    for (int i = 0; i < 100000; ++i) {
        const int exponent = 120 + static_cast<int>(random() % 16);
        const double value = std::ldexp(1.0 + static_cast<double>(random() >> 11) * 0x1p-53, exponent);
        const volatile double seen = i % 2 == 0 ? value : -value;
        const bool infinite = std::isinf(static_cast<float>(seen));
        ASSERT_EQ(ntype_is_float_overflow(seen), infinite ? EC_DATA_OVERFLOW : 0) << value;
    }
}

}  // namespace
