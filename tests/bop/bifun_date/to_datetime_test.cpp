// ifun_convert_datetime, and all forms against a plain telling.
#include <gtest/gtest.h>

#include <cstdint>

#include "qzbifun/codes.h"
#include "qzbifun/date_composition.h"
#include "tests/bop/bifun_date/dates.h"
#include "tests/support/differential.h"
#include "tests/support/test_seed.h"

namespace {

using dates::date;
using dates::moment;
using support::Answer;
using support::Differential;

struct Composed {
    int32_t code;
    qztime value;
};

const qztime kUntouched = moment(-1, 77, 78, 79, 80, 81, 82, 83);

Composed composed(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute) {
    Composed result{0, kUntouched};
    result.code = ifun_convert_datetime(year, month, day, hour, minute, &result.value);
    return result;
}

// The composition walked minute by minute, day by day and month by month: for arguments near their ranges.
Composed walked(int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute) {
    while (month > 12) month -= 12, ++year;
    while (month < 1) month += 12, --year;
    while (minute > 59) minute -= 60, ++hour;
    while (minute < 0) minute += 60, --hour;
    while (hour > 23) hour -= 24, ++day;
    while (hour < 0) hour += 24, --day;
    const auto month_days = [](int32_t y, int32_t m) {
        const bool leap = y % 4 == 0 && (y <= 1582 || y % 100 != 0 || y % 400 == 0);
        return m == 2 ? 28 + leap : m == 4 || m == 6 || m == 9 || m == 11 ? 30 : 31;
    };
    while (day < 1) {
        if (--month < 1) month = 12, --year;
        day += month_days(year, month);
    }
    while (day > month_days(year, month)) {
        day -= month_days(year, month);
        if (++month > 12) month = 1, ++year;
    }
    if (year < -4712 || year > 9999) return {EC_DATE_OUT_OF_RANGE, kUntouched};
    if (year == 0) return {EC_YEAR_ZERO, kUntouched};
    if (year == 1582 && month == 10 && day > 4 && day < 15) day = 15;
    return {0, moment(year, month, day, hour, minute, 0)};
}

TEST(ConvertDatetime, CarriesAsAWalkDoes) {
    const uint32_t seed = support::test_seed();
    support::Random random(seed);
    const auto about = [&](uint32_t range) {
        return static_cast<int32_t>(random.below(2 * range)) - static_cast<int32_t>(range);
    };
#ifdef NDEBUG
    constexpr int kTries = 1000000;
#else
    constexpr int kTries = 100000;
#endif
    for (int i = 0; i < kTries; ++i) {
        const int32_t near_years[] = {1582, 0, 2000, 9999, -4712, about(12000)};
        const int32_t year = near_years[random.below(6)] + about(3), month = about(30), day = about(500), hour = about(100),
                      minute = about(5000);
        const Composed expected = walked(year, month, day, hour, minute);
        const Composed found = composed(year, month, day, hour, minute);
        ASSERT_EQ(found.code, expected.code)
            << year << " " << month << " " << day << " " << hour << " " << minute << ", " << seed;
        ASSERT_EQ(found.value, expected.value)
            << year << " " << month << " " << day << " " << hour << " " << minute << ", " << seed;
    }
}

TEST(ConvertDatetime, HoldsAtTheEndsOfItsArguments) {
    for (const int32_t year : {INT32_MIN, -1, 2024, INT32_MAX}) {
        for (const int32_t month : {INT32_MIN, 1, INT32_MAX}) {
            for (const int32_t day : {INT32_MIN, 1, INT32_MAX}) {
                for (const int32_t hour : {INT32_MIN, 0, INT32_MAX}) {
                    for (const int32_t minute : {INT32_MIN, 0, INT32_MAX}) {
                        const Composed found = composed(year, month, day, hour, minute);
                        EXPECT_EQ(found.code == 0, !(found.value == kUntouched));
                        EXPECT_TRUE(found.code == 0 || found.code == EC_DATE_OUT_OF_RANGE || found.code == EC_YEAR_ZERO);
                    }
                }
            }
        }
    }
    EXPECT_EQ(composed(2024, 1, 1, INT32_MAX, 0).code, EC_DATE_OUT_OF_RANGE);
}

TEST(ToDatetime, FormsAgreeWithTheWorker) {
    Differential<qztime, int32_t, int32_t, int32_t, int32_t, int32_t> forms;
    forms.rules.flag_reads_constants = false;
    forms.rules.valid = support::Rules::Valid::kept;
    forms.draw<0>([](support::Random& random) { return static_cast<int32_t>(random.below(11000)) - 500; });
    forms.draw<1>([](support::Random& random) { return static_cast<int32_t>(random.below(30)) - 8; });
    forms.draw<2>([](support::Random& random) { return static_cast<int32_t>(random.below(80)) - 20; });
    forms.add("aaaaa", "bto_datetime_aaaaa_date", bto_datetime_aaaaa_date);
    forms.add("aaaav", "bto_datetime_aaaav_li_date", bto_datetime_aaaav_li_date);
    forms.add("aaava", "bto_datetime_aaava_li_date", bto_datetime_aaava_li_date);
    forms.add("aaavv", "bto_datetime_aaavv_lili_date", bto_datetime_aaavv_lili_date);
    forms.add("aavaa", "bto_datetime_aavaa_li_date", bto_datetime_aavaa_li_date);
    forms.add("aavav", "bto_datetime_aavav_lili_date", bto_datetime_aavav_lili_date);
    forms.add("aavva", "bto_datetime_aavva_lili_date", bto_datetime_aavva_lili_date);
    forms.add("aavvv", "bto_datetime_aavvv_lilili_date", bto_datetime_aavvv_lilili_date);
    forms.add("avaaa", "bto_datetime_avaaa_li_date", bto_datetime_avaaa_li_date);
    forms.add("avaav", "bto_datetime_avaav_lili_date", bto_datetime_avaav_lili_date);
    forms.add("avava", "bto_datetime_avava_lili_date", bto_datetime_avava_lili_date);
    forms.add("avavv", "bto_datetime_avavv_lilili_date", bto_datetime_avavv_lilili_date);
    forms.add("avvaa", "bto_datetime_avvaa_lili_date", bto_datetime_avvaa_lili_date);
    forms.add("avvav", "bto_datetime_avvav_lilili_date", bto_datetime_avvav_lilili_date);
    forms.add("avvva", "bto_datetime_avvva_lilili_date", bto_datetime_avvva_lilili_date);
    forms.add("avvvv", "bto_datetime_avvvv_lililili_date", bto_datetime_avvvv_lililili_date);
    forms.add("vaaaa", "bto_datetime_vaaaa_li_date", bto_datetime_vaaaa_li_date);
    forms.add("vaaav", "bto_datetime_vaaav_lili_date", bto_datetime_vaaav_lili_date);
    forms.add("vaava", "bto_datetime_vaava_lili_date", bto_datetime_vaava_lili_date);
    forms.add("vaavv", "bto_datetime_vaavv_lilili_date", bto_datetime_vaavv_lilili_date);
    forms.add("vavaa", "bto_datetime_vavaa_lili_date", bto_datetime_vavaa_lili_date);
    forms.add("vavav", "bto_datetime_vavav_lilili_date", bto_datetime_vavav_lilili_date);
    forms.add("vavva", "bto_datetime_vavva_lilili_date", bto_datetime_vavva_lilili_date);
    forms.add("vavvv", "bto_datetime_vavvv_lililili_date", bto_datetime_vavvv_lililili_date);
    forms.add("vvaaa", "bto_datetime_vvaaa_lili_date", bto_datetime_vvaaa_lili_date);
    forms.add("vvaav", "bto_datetime_vvaav_lilili_date", bto_datetime_vvaav_lilili_date);
    forms.add("vvava", "bto_datetime_vvava_lilili_date", bto_datetime_vvava_lilili_date);
    forms.add("vvavv", "bto_datetime_vvavv_lililili_date", bto_datetime_vvavv_lililili_date);
    forms.add("vvvaa", "bto_datetime_vvvaa_lilili_date", bto_datetime_vvvaa_lilili_date);
    forms.add("vvvav", "bto_datetime_vvvav_lililili_date", bto_datetime_vvvav_lililili_date);
    forms.add("vvvva", "bto_datetime_vvvva_lililili_date", bto_datetime_vvvva_lililili_date);
    forms.draw<3>([](support::Random& random) { return static_cast<int32_t>(random.below(60)) - 20; });
    forms.draw<4>([](support::Random& random) { return static_cast<int32_t>(random.below(300)) - 100; });
    forms.batches /= 4;
    EXPECT_EQ(forms.run([](int32_t year, int32_t month, int32_t day, int32_t hour, int32_t minute) -> Answer<qztime> {
        const Composed told = walked(year, month, day, hour, minute);
        if (told.code < 0) return Answer<qztime>::error(told.code, {"self"});
        return told.value;
    }),
              "");
}

}  // namespace
