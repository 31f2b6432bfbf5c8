#include "tests/support/vector.h"

#include <gtest/gtest.h>

#include <cstring>

#include "qzbifun/codes.h"
#include "tests/support/batch.h"

namespace support {
namespace {

#if defined(__SANITIZE_ADDRESS__)
constexpr bool kPoisoned = true;
#else
constexpr bool kPoisoned = false;
#endif

TEST(GuardedMemory, SeesWritesBesideIt) {
    for (const size_t size : {0u, 1u, 7u, 8u, 13u, 64u}) {
        Guarded memory(size, 0x11);
        std::memset(memory.data(), 0x22, size);
        EXPECT_TRUE(memory.intact());
        volatile uint8_t* behind = memory.data() + size;
        volatile uint8_t* before = memory.data() - 1;
        if (kPoisoned) {
            EXPECT_DEATH(*behind = 0, "use-after-poison") << size;
            EXPECT_DEATH(*before = 0, "use-after-poison") << size;
            continue;
        }
        *behind = 0;
        EXPECT_FALSE(memory.intact());
        Guarded other(size, 0x11);
        before = other.data() - 1;
        *before = 0;
        EXPECT_FALSE(other.intact());
    }
}

TEST(Vectors, HoldWhatTheyAreGiven) {
    Host host;
    Vector numbers = Vector::of<double>(host, {1.0, std::nullopt, 3.0});
    EXPECT_EQ(numbers.rows(), 3u);
    EXPECT_EQ(numbers.col()->all_valid, 0u);
    EXPECT_EQ(numbers.valid(0), 1);
    EXPECT_EQ(numbers.valid(1), 0);
    EXPECT_EQ(numbers.get<double>(2), 3.0);
    EXPECT_EQ(Vector::of<int32_t>(host, {1, 2}).col()->all_valid, 1u);
    Vector texts = Vector::of<Text>(host, {Text{"ab", 2}, Text{"", 0}, std::nullopt});
    EXPECT_EQ(texts.get<Text>(0), (Text{"ab", 2}));
    EXPECT_EQ(texts.get<Text>(1), (Text{"", 0}));
}

TEST(Vectors, TellWhatWasChanged) {
    Host host;
    Vector vector = Vector::of<Text>(host, {Text{"ab", 0}, Text{"cd", 0}});
    vector.select({1, 0});
    vector.remember();
    EXPECT_EQ(vector.changed(), "");
    vector.slot(0).bytes[0] = 'x';
    EXPECT_NE(vector.changed(), "");
    vector.slot(0).bytes[0] = 'a';
    EXPECT_EQ(vector.changed(), "");
    vector.col()->sel[0] = 0;
    EXPECT_NE(vector.changed(), "");
    vector.col()->sel[0] = 1;
    vector.col()->data->valid[1] = 3;
    EXPECT_NE(vector.changed(), "");
}

TEST(Constants, HoldTextsInlineAndBehindThePointer) {
    Constant inline_text = Constant::of(Text{std::string(48, 'a'), 1});
    Constant long_text = Constant::of(Text{std::string(49, 'b'), 0});
    const auto* first = reinterpret_cast<const nstr*>(inline_text.scalar());
    const auto* second = reinterpret_cast<const nstr*>(long_text.scalar());
    EXPECT_EQ(first->len, 48u);
    EXPECT_EQ(first->blank, 1u);
    EXPECT_EQ(first->nstr_inline[47], 'a');
    EXPECT_EQ(first->nstr_ext, first->nstr_inline);
    EXPECT_EQ(second->nstr_ext[48], 'b');
    EXPECT_NE(second->nstr_inline[0], 'b');
    EXPECT_EQ(inline_text.changed(), "");
    inline_text.scalar()->has_value = 0;
    EXPECT_NE(inline_text.changed(), "");
}

TEST(Constants, FillTheValueFieldOfANull) {
    Cell cell = to_cell(int64_t{77});
    cell.has = 0;
    Constant constant(type_of<int64_t>(), cell);
    EXPECT_EQ(constant.scalar()->has_value, 0u);
    EXPECT_EQ(reinterpret_cast<const bdta3_int64*>(constant.scalar())->value, 77);
}

TEST(AllocationFailures, AreAllMetOneAfterTheOther) {
    Host host;
    rt_memobj* mem = host.mem();
    const auto take = [&](bool leak, int32_t code) {
        return [=, &host]() -> int32_t {
            void* first = mem->alloc(host.env(), mem->pool, 16, __FILE__, __LINE__);
            if (first == nullptr) return code;
            void* second = mem->alloc(host.env(), mem->pool, 16, __FILE__, __LINE__);
            if (second == nullptr && leak) return code;
            mem->free(host.env(), mem->pool, first);
            if (second == nullptr) return code;
            mem->free(host.env(), mem->pool, second);
            return 0;
        };
    };
    int runs = 0;
    EXPECT_EQ(check_allocation_failures(host, take(false, EC_OUT_OF_MEMORY), EC_OUT_OF_MEMORY, &runs), "");
    EXPECT_EQ(runs, 2);
    EXPECT_NE(check_allocation_failures(host, take(false, EC_DATA_OVERFLOW), EC_OUT_OF_MEMORY), "");
    EXPECT_NE(check_allocation_failures(host, take(true, EC_OUT_OF_MEMORY), EC_OUT_OF_MEMORY), "");
    EXPECT_NE(check_allocation_failures(
                  host, [] { return EC_OUT_OF_MEMORY; }, EC_OUT_OF_MEMORY),
              "");
}

}  // namespace
}  // namespace support
