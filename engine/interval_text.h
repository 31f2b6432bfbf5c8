/*
 * Texts of intervals, both types.
 *
 * Written "1-2" for a year and two months, "3 04:05:06.789" for days and a time, with a minus in front where negative; the
 * fraction is as short as it can be. What the qualifier says of kind and precision does not show.
 */
#ifndef QZENGINE_INTERVAL_TEXT_H
#define QZENGINE_INTERVAL_TEXT_H

#include <cstdint>
#include <string_view>

#include "engine/text_buffer.h"
#include "qzbifun/records.h"
#include "qzhost/interval.h"

namespace qzengine {

// A whole text, with blanks around it or none, in the forms that qzhost/interval.h lists. 0, EC_INTERVAL_TEXT_INVALID, or
// EC_INTERVAL_OUT_OF_RANGE where the first field has more digits than the qualifier allows.
int32_t parse_interval(std::string_view text, qz_interval_ym& value, int32_t qualifier = HOST_IV_QUALIFIER_YM);
int32_t parse_interval(std::string_view text, qz_interval_dt& value, int32_t qualifier = HOST_IV_QUALIFIER_DT);

void append_interval(TextBuffer& out, const qz_interval_ym& value);
void append_interval(TextBuffer& out, const qz_interval_dt& value);

}  // namespace qzengine

#endif
