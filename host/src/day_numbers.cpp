// Day numbers of many dates, and back, eight in a register where the machine has AVX2.
//
// The arithmetic is that of the header, in 32 bits and without its tables: a month's days before it, and a day's month, come
// out of a multiplication. It gives the same for every bit pattern.

#include "qzhost/calendar.h"

namespace {

#if defined(__x86_64__)
#define QZHOST_WIDE [[gnu::target("avx2")]]
#define QZHOST_WIDE_INLINE [[gnu::target("avx2"), gnu::always_inline]] static inline

bool has_wide_loops() { return __builtin_cpu_supports("avx2") != 0; }

constexpr uint32_t kBlock = 256;

// Year, month and day: a record's first four bytes.
using DateWord = uint32_t;

QZHOST_WIDE_INLINE DateWord load_word(const qztime& date) {
    DateWord word;
    memcpy(&word, &date, sizeof word);
    return word;
}

// host_day_number_adjusted.
QZHOST_WIDE_INLINE int32_t number_of(DateWord date) {
    const auto year = static_cast<int32_t>(date << 16) >> 16;
    const uint32_t month = date >> 16 & 0xFF, month_of_table = month & 15;
    const uint32_t early = month < 3 ? 1 : 0;
    const uint32_t y = static_cast<uint32_t>(year + 32800) - early;
    const uint32_t from_march = month_of_table + (month_of_table < 3 ? 12 : 0);  // 3 to 15
    const uint32_t before = month_of_table - 1 < 12 ? (979 * from_march - 2919) >> 5 : 0;
    const auto julian = static_cast<int32_t>((1461 * y >> 2) + before + (date >> 24)) - 11980141;
    const uint32_t century = (y >> 2) * 5243 >> 17;  // y / 100: exact for y to 65567
    const auto dropped = static_cast<int32_t>(century - (century >> 2)) - 248;
    const int32_t most = julian < HOST_DAY_CUTOVER ? julian : HOST_DAY_CUTOVER;
    return julian >= HOST_DAY_CUTOVER + 10 ? julian - dropped : most;
}

// The date that host_set_day_number sets.
QZHOST_WIDE_INLINE DateWord word_of(int32_t number) {
    const auto gregorian = static_cast<uint32_t>(number) + 11980140 - 248;
    const uint32_t century = (4 * gregorian + 3) / 146097;
    const uint32_t julian = gregorian + (number >= HOST_DAY_CUTOVER ? century - (century >> 2) : 248);
    const uint32_t year = (4 * julian + 3) / 1461;
    const uint32_t day_of_year = julian - (1461 * year >> 2);  // from March
    const uint32_t month_and_rest = 2141 * day_of_year + 197913;
    const uint32_t next_year = day_of_year >= 306 ? 1 : 0;
    const uint32_t month = (month_and_rest >> 16) - (next_year != 0 ? 12 : 0);
    const uint32_t day = ((month_and_rest & 0xFFFF) * 31345 >> 26) + 1;  // by 2141: exact below 2^16
    return ((year + next_year - 32800) & 0xFFFF) | month << 16 | day << 24;
}

QZHOST_WIDE void numbers_of_block(int32_t* numbers, uint32_t n, const qztime* dates) {
    DateWord words[kBlock];
    for (uint32_t i = 0; i < n; ++i) words[i] = load_word(dates[i]);
    for (uint32_t i = 0; i < n; ++i) numbers[i] = number_of(words[i]);
}

QZHOST_WIDE void set_numbers_of_block(qztime* out, uint32_t n, const qztime* source, const int32_t* numbers) {
    DateWord words[kBlock];
    for (uint32_t i = 0; i < n; ++i) words[i] = word_of(numbers[i]);
    for (uint32_t i = 0; i < n; ++i) {
        // In registers: the hour, and the eight bytes behind it.
        constexpr uint32_t kBehindHour = 5;
        const uint8_t hour = source[i].hour;
        uint64_t behind;
        memcpy(&behind, reinterpret_cast<const char*>(source + i) + kBehindHour, sizeof behind);
        memcpy(out + i, &words[i], sizeof words[i]);
        out[i].hour = hour;
        memcpy(reinterpret_cast<char*>(out + i) + kBehindHour, &behind, sizeof behind);
    }
}

template <class F>
void for_blocks(uint32_t n, const F& f) {
    for (uint32_t begin = 0; begin < n; begin += kBlock) f(begin, n - begin < kBlock ? n - begin : kBlock);
}

#endif

}  // namespace

void host_day_numbers(int32_t* numbers, uint32_t n, const qztime* dates) {
#if defined(__x86_64__)
    if (has_wide_loops()) {
        for_blocks(n, [&](uint32_t i, uint32_t rows) { numbers_of_block(numbers + i, rows, dates + i); });
        return;
    }
#endif
    for (uint32_t i = 0; i < n; ++i) numbers[i] = host_day_number_adjusted(dates + i);
}

void host_set_day_numbers(qztime* out, uint32_t n, const qztime* source, const int32_t* numbers) {
#if defined(__x86_64__)
    if (has_wide_loops()) {
        for_blocks(n, [&](uint32_t i, uint32_t rows) { set_numbers_of_block(out + i, rows, source + i, numbers + i); });
        return;
    }
#endif
    for (uint32_t i = 0; i < n; ++i) {
        out[i] = source[i];
        if (numbers[i] >= HOST_DAY_MIN && numbers[i] <= HOST_DAY_MAX) host_set_day_number(out + i, numbers[i]);
    }
}
