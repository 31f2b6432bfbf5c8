// to_datetime.
#include "qzbifun/date_composition.h"

#include "engine/catalog/families.h"
#include "qzbifun/codes.h"

namespace qzengine {

std::vector<Function> date_composition_functions() {
    using enum ValueType;
    return {
        {.name = "to_datetime",
         .parameters = {{"year", kInt}, {"month", kInt}, {"day", kInt}, {"hour", kInt}, {"minute", kInt}},
         .result = kDatetime,
         .help = "The datetime of these fields. What is out of its range carries into the larger ones; day 0 is the last of "
                 "the month before.",
         .errors = {EC_YEAR_ZERO, EC_DATE_OUT_OF_RANGE, EC_DATE_VALUE_INVALID},
         .forms = {{"aaaaa", "bto_datetime_aaaaa_date", &bto_datetime_aaaaa_date},
                   {"aaaav", "bto_datetime_aaaav_li_date", &bto_datetime_aaaav_li_date},
                   {"aaava", "bto_datetime_aaava_li_date", &bto_datetime_aaava_li_date},
                   {"aaavv", "bto_datetime_aaavv_lili_date", &bto_datetime_aaavv_lili_date},
                   {"aavaa", "bto_datetime_aavaa_li_date", &bto_datetime_aavaa_li_date},
                   {"aavav", "bto_datetime_aavav_lili_date", &bto_datetime_aavav_lili_date},
                   {"aavva", "bto_datetime_aavva_lili_date", &bto_datetime_aavva_lili_date},
                   {"aavvv", "bto_datetime_aavvv_lilili_date", &bto_datetime_aavvv_lilili_date},
                   {"avaaa", "bto_datetime_avaaa_li_date", &bto_datetime_avaaa_li_date},
                   {"avaav", "bto_datetime_avaav_lili_date", &bto_datetime_avaav_lili_date},
                   {"avava", "bto_datetime_avava_lili_date", &bto_datetime_avava_lili_date},
                   {"avavv", "bto_datetime_avavv_lilili_date", &bto_datetime_avavv_lilili_date},
                   {"avvaa", "bto_datetime_avvaa_lili_date", &bto_datetime_avvaa_lili_date},
                   {"avvav", "bto_datetime_avvav_lilili_date", &bto_datetime_avvav_lilili_date},
                   {"avvva", "bto_datetime_avvva_lilili_date", &bto_datetime_avvva_lilili_date},
                   {"avvvv", "bto_datetime_avvvv_lililili_date", &bto_datetime_avvvv_lililili_date},
                   {"vaaaa", "bto_datetime_vaaaa_li_date", &bto_datetime_vaaaa_li_date},
                   {"vaaav", "bto_datetime_vaaav_lili_date", &bto_datetime_vaaav_lili_date},
                   {"vaava", "bto_datetime_vaava_lili_date", &bto_datetime_vaava_lili_date},
                   {"vaavv", "bto_datetime_vaavv_lilili_date", &bto_datetime_vaavv_lilili_date},
                   {"vavaa", "bto_datetime_vavaa_lili_date", &bto_datetime_vavaa_lili_date},
                   {"vavav", "bto_datetime_vavav_lilili_date", &bto_datetime_vavav_lilili_date},
                   {"vavva", "bto_datetime_vavva_lilili_date", &bto_datetime_vavva_lilili_date},
                   {"vavvv", "bto_datetime_vavvv_lililili_date", &bto_datetime_vavvv_lililili_date},
                   {"vvaaa", "bto_datetime_vvaaa_lili_date", &bto_datetime_vvaaa_lili_date},
                   {"vvaav", "bto_datetime_vvaav_lilili_date", &bto_datetime_vvaav_lilili_date},
                   {"vvava", "bto_datetime_vvava_lilili_date", &bto_datetime_vvava_lilili_date},
                   {"vvavv", "bto_datetime_vvavv_lililili_date", &bto_datetime_vvavv_lililili_date},
                   {"vvvaa", "bto_datetime_vvvaa_lilili_date", &bto_datetime_vvvaa_lilili_date},
                   {"vvvav", "bto_datetime_vvvav_lililili_date", &bto_datetime_vvvav_lililili_date},
                   {"vvvva", "bto_datetime_vvvva_lililili_date", &bto_datetime_vvvva_lililili_date}},
         .examples = {{"to_datetime(2024, 14, 1, 0, 0)", "2025-02-01 00:00:00"},
                      {"to_datetime(2024, 3, 0, 0, -1)", "2024-02-28 23:59:00"}}},
    };
}

}  // namespace qzengine
