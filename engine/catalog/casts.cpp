#include "engine/catalog/casts.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <string_view>
#include <utility>

#include "engine/datetime_text.h"
#include "engine/host_objects.h"
#include "engine/interval_text.h"
#include "engine/lob_values.h"
#include "engine/text_buffer.h"
#include "engine/value_text.h"
#include "qzbifun/codes.h"
#include "qzhost/column.h"
#include "qzhost/decimal.h"

namespace qzengine {
namespace {

// ---- One value: 0, or the code of the failure. To a whole number rounds, halves away from zero. -----------------------------

template <class From, class To>
requires std::is_integral_v<From> && std::is_integral_v<To> int32_t convert(From value, To& to) {
    if (!std::in_range<To>(value)) return EC_DATA_OVERFLOW;
    to = static_cast<To>(value);
    return 0;
}

template <class From, class To>
requires std::is_integral_v<From> && std::is_floating_point_v<To> int32_t convert(From value, To& to) {
    to = static_cast<To>(value);
    return 0;
}

template <class From, class To>
requires std::is_floating_point_v<From> && std::is_integral_v<To> int32_t convert(From value, To& to) {
    // The limits as doubles: the lowest is exact, the one above the highest is a power of two.
    constexpr double kLowest = static_cast<double>(std::numeric_limits<To>::min());
    const double rounded = std::round(static_cast<double>(value));
    if (!(rounded >= kLowest && rounded < -kLowest)) return EC_DATA_OVERFLOW;  // NaN too
    to = static_cast<To>(rounded);
    return 0;
}

template <class From, class To>
requires std::is_floating_point_v<From> && std::is_floating_point_v<To> int32_t convert(From value, To& to) {
    to = static_cast<To>(value);
    return std::isinf(to) && !std::isinf(value) ? EC_DATA_OVERFLOW : 0;
}

template <class From>
requires std::is_integral_v<From> int32_t convert(From value, xdec& to) { return xdec_from_int64(&to, value, XDEC_SCALE_NONE); }

template <class From>
requires std::is_floating_point_v<From> int32_t convert(From value, xdec& to) {
    if constexpr (std::is_same_v<From, double>) return xdec_from_double(value, &to);
    // A float by its own shortest text: 0.1 is 0.1 and not the digits of the double nearest to it.
    TextBuffer text;
    append_text(text, value);
    return std::isfinite(value) ? parse_text(text.view(), to) : EC_DATA_OVERFLOW;
}

template <class To>
requires std::is_integral_v<To> int32_t convert(const xdec& value, To& to) {
    xdec rounded;
    int64_t whole = 0;
    if (const int32_t code = xdec_round(&value, 0, 0, &rounded); code < 0) return code;
    if (const int32_t code = xdec_get_int64(&rounded, &whole); code < 0) return code;
    return convert(whole, to);
}

template <class To>
requires std::is_floating_point_v<To> int32_t convert(const xdec& value, To& to) {
    int32_t code = 0;
    const double nearest = xdec_get_double(&value, &code, 1);
    return code < 0 ? code : convert(nearest, to);
}

// A text that is a number with blanks around it; a text of blanks alone is none.
template <class To>
int32_t convert(const bdta3_colstr& value, To& to) {
    const std::string_view text(value.bytes, value.len);
    const size_t first = text.find_first_not_of(' ');
    if (first == std::string_view::npos) return EC_NUMBER_TEXT_INVALID;
    return parse_text(text.substr(first, text.find_last_not_of(' ') - first + 1), to);
}

// ---- Vectors ---------------------------------------------------------------------------------------------------------------

template <class From, class To>
int32_t cast_values(qz_env*, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    const uint8_t* valid = from->data->valid;
    uint8_t* to_valid = to->data->valid;
    const From* values = values_of<From>(from);
    To* to_values = values_of<To>(to);
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(from, i);
        to_valid[i] = valid[p] != 0;
        if (valid[p] == 0) continue;
        if (const int32_t code = convert(values[p], to_values[i]); code < 0) {
            *failed = i;
            return code;
        }
    }
    to->all_valid = from->all_valid;
    return 0;
}

template <class From>
int32_t cast_to_text(qz_env*, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    const From* values = values_of<From>(from);
    TextBuffer text;
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(from, i);
        if (from->data->valid[p] == 0) {
            to->data->valid[i] = 0;
            continue;
        }
        text.clear();
        append_text(text, values[p]);
        const std::string_view bytes = text.view();
        if (const int32_t code = host_col_set_text(to, i, bytes.data(), static_cast<uint32_t>(bytes.size()), 0); code < 0) {
            *failed = i;
            return code;
        }
    }
    to->all_valid = from->all_valid;
    return 0;
}

// Fills rows by convert(env, from value, row of to), which answers a code.
template <class From, class Convert>
int32_t cast_rows(const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed, Convert convert) {
    const From* values = values_of<From>(from);
    for (uint32_t i = 0; i < nrows; ++i) {
        const uint32_t p = physical_row(from, i);
        to->data->valid[i] = from->data->valid[p] != 0;
        if (from->data->valid[p] == 0) continue;
        if (const int32_t code = convert(values[p], i); code < 0) {
            *failed = i;
            return code;
        }
    }
    to->all_valid = from->all_valid;
    return 0;
}

int16_t session_zone(const qz_env* env) { return env->session != nullptr ? env->session->session_tz : int16_t{0}; }

template <ValueType From, ValueType To>
int32_t cast_datetime(qz_env* env, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    return cast_rows<qztime>(from, to, nrows, failed, [&](const qztime& value, uint32_t row) {
        values_of<qztime>(to)[row] = datetime_as(From, value, To, session_zone(env));
        return 0;
    });
}

template <ValueType To>
int32_t cast_text_to_datetime(qz_env* env, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    return cast_rows<bdta3_colstr>(from, to, nrows, failed, [&](const bdta3_colstr& value, uint32_t row) {
        return parse_datetime({value.bytes, value.len}, To, session_zone(env), values_of<qztime>(to)[row]);
    });
}

template <ValueType From>
int32_t cast_datetime_to_text(qz_env*, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    TextBuffer text;
    return cast_rows<qztime>(from, to, nrows, failed, [&](const qztime& value, uint32_t row) {
        text.clear();
        append_datetime(text, From, value);
        return host_col_set_text(to, row, text.view().data(), static_cast<uint32_t>(text.view().size()), 0);
    });
}

template <class To>
int32_t cast_text_to_interval(qz_env*, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    return cast_rows<bdta3_colstr>(from, to, nrows, failed, [&](const bdta3_colstr& value, uint32_t row) {
        return parse_interval({value.bytes, value.len}, values_of<To>(to)[row]);
    });
}

template <class From>
int32_t cast_interval_to_text(qz_env*, rt_memobj*, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    TextBuffer text;
    return cast_rows<From>(from, to, nrows, failed, [&](const From& value, uint32_t row) {
        text.clear();
        append_interval(text, value);
        return host_col_set_text(to, row, text.view().data(), static_cast<uint32_t>(text.view().size()), 0);
    });
}

// The same bytes, with the blanks of a text written out.
int32_t cast_bytes(qz_env* env, rt_memobj* rt_mem, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    TextBuffer bytes;
    return cast_rows<bdta3_colstr>(from, to, nrows, failed, [&](const bdta3_colstr& value, uint32_t row) {
        bytes.clear();
        append_text(bytes, value);
        return bdta3_col_assign_str(env, rt_mem, to, row, bytes.view().data(), static_cast<uint32_t>(bytes.size()), 0);
    });
}

template <ValueType To>
int32_t cast_to_lob(qz_env* env, rt_memobj* rt_mem, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    TextBuffer bytes;
    return cast_rows<bdta3_colstr>(from, to, nrows, failed, [&](const bdta3_colstr& value, uint32_t row) {
        bytes.clear();
        append_text(bytes, value);
        return store_lob(env, rt_mem, To, bytes.view(), to, row);
    });
}

constexpr size_t kMostStringBytes = 32767;

int32_t cast_from_lob(qz_env* env, rt_memobj* rt_mem, const bdta3_col* from, bdta3_col* to, uint32_t nrows, uint32_t* failed) {
    std::string storage;
    return cast_rows<bdta3_colstr>(from, to, nrows, failed, [&](const bdta3_colstr& locator, uint32_t row) {
        std::string_view value;
        if (const int32_t code = read_lob(env, locator, storage, value); code < 0) return code;
        if (value.size() > kMostStringBytes) return int32_t{EC_STRING_TOO_LONG};
        return bdta3_col_assign_str(env, rt_mem, to, row, value.data(), static_cast<uint32_t>(value.size()), 0);
    });
}

// Costs: to a wider number is cheap, and the nearest wide type first. A bigint fits an int parameter if nothing else does,
// since columns of whole numbers are bigint; what is not text becomes text only as the last resort. A date or time is silently
// one that has more, not one that has less. A text becomes a CLOB where nothing else is wanted; a LOB may be too long for a
// string, and is never made one silently.
constexpr int kNarrowing = 20;
constexpr int kAsText = 50;
constexpr int kAsLob = 60;
constexpr int kExplicit = Cast::kExplicitOnly;

using enum ValueType;

constexpr Cast kCasts[] = {
    {kInt, kBigint, 1, &cast_values<int32_t, int64_t>},
    {kInt, kDecimal, 2, &cast_values<int32_t, xdec>},
    {kInt, kDouble, 3, &cast_values<int32_t, double>},
    {kInt, kFloat, 4, &cast_values<int32_t, float>},
    {kInt, kString, kAsText, &cast_to_text<int32_t>},

    {kBigint, kDecimal, 2, &cast_values<int64_t, xdec>},
    {kBigint, kDouble, 3, &cast_values<int64_t, double>},
    {kBigint, kFloat, 4, &cast_values<int64_t, float>},
    {kBigint, kInt, kNarrowing, &cast_values<int64_t, int32_t>},
    {kBigint, kString, kAsText, &cast_to_text<int64_t>},

    {kDecimal, kDouble, 3, &cast_values<xdec, double>},
    {kDecimal, kFloat, 4, &cast_values<xdec, float>},
    {kDecimal, kInt, kExplicit, &cast_values<xdec, int32_t>},
    {kDecimal, kBigint, kExplicit, &cast_values<xdec, int64_t>},
    {kDecimal, kString, kAsText, &cast_to_text<xdec>},

    {kDouble, kDecimal, kExplicit, &cast_values<double, xdec>},
    {kDouble, kFloat, kExplicit, &cast_values<double, float>},
    {kDouble, kInt, kExplicit, &cast_values<double, int32_t>},
    {kDouble, kBigint, kExplicit, &cast_values<double, int64_t>},
    {kDouble, kString, kAsText, &cast_to_text<double>},

    {kFloat, kDouble, 1, &cast_values<float, double>},
    {kFloat, kDecimal, kExplicit, &cast_values<float, xdec>},
    {kFloat, kInt, kExplicit, &cast_values<float, int32_t>},
    {kFloat, kBigint, kExplicit, &cast_values<float, int64_t>},
    {kFloat, kString, kAsText, &cast_to_text<float>},

    {kString, kInt, kExplicit, &cast_values<bdta3_colstr, int32_t>},
    {kString, kBigint, kExplicit, &cast_values<bdta3_colstr, int64_t>},
    {kString, kDecimal, kExplicit, &cast_values<bdta3_colstr, xdec>},
    {kString, kDouble, kExplicit, &cast_values<bdta3_colstr, double>},
    {kString, kFloat, kExplicit, &cast_values<bdta3_colstr, float>},

    {kString, kBinary, kExplicit, &cast_bytes},
    {kBinary, kString, kExplicit, &cast_bytes},

    {kString, kClob, kAsLob, &cast_to_lob<kClob>},
    {kClob, kString, kExplicit, &cast_from_lob},
    {kBinary, kBlob, kAsLob, &cast_to_lob<kBlob>},
    {kBlob, kBinary, kExplicit, &cast_from_lob},

    {kString, kDate, kExplicit, &cast_text_to_datetime<kDate>},
    {kString, kTime, kExplicit, &cast_text_to_datetime<kTime>},
    {kString, kDatetime, kExplicit, &cast_text_to_datetime<kDatetime>},
    {kString, kTimeTz, kExplicit, &cast_text_to_datetime<kTimeTz>},
    {kString, kDatetimeTz, kExplicit, &cast_text_to_datetime<kDatetimeTz>},

    {kString, kIntervalYm, kExplicit, &cast_text_to_interval<qz_interval_ym>},
    {kString, kIntervalDt, kExplicit, &cast_text_to_interval<qz_interval_dt>},
    {kIntervalYm, kString, kAsText, &cast_interval_to_text<qz_interval_ym>},
    {kIntervalDt, kString, kAsText, &cast_interval_to_text<qz_interval_dt>},

    {kDate, kDatetime, 1, &cast_datetime<kDate, kDatetime>},
    {kDate, kDatetimeTz, 2, &cast_datetime<kDate, kDatetimeTz>},
    {kDate, kString, kAsText, &cast_datetime_to_text<kDate>},

    {kTime, kTimeTz, 1, &cast_datetime<kTime, kTimeTz>},
    {kTime, kString, kAsText, &cast_datetime_to_text<kTime>},

    {kDatetime, kDatetimeTz, 1, &cast_datetime<kDatetime, kDatetimeTz>},
    {kDatetime, kDate, kExplicit, &cast_datetime<kDatetime, kDate>},
    {kDatetime, kTime, kExplicit, &cast_datetime<kDatetime, kTime>},
    {kDatetime, kString, kAsText, &cast_datetime_to_text<kDatetime>},

    {kTimeTz, kTime, kExplicit, &cast_datetime<kTimeTz, kTime>},
    {kTimeTz, kString, kAsText, &cast_datetime_to_text<kTimeTz>},

    {kDatetimeTz, kDatetime, kExplicit, &cast_datetime<kDatetimeTz, kDatetime>},
    {kDatetimeTz, kDate, kExplicit, &cast_datetime<kDatetimeTz, kDate>},
    {kDatetimeTz, kTime, kExplicit, &cast_datetime<kDatetimeTz, kTime>},
    {kDatetimeTz, kTimeTz, kExplicit, &cast_datetime<kDatetimeTz, kTimeTz>},
    {kDatetimeTz, kString, kAsText, &cast_datetime_to_text<kDatetimeTz>},
};

}  // namespace

std::string Cast::name() const { return "cast " + std::string(type_name(from)) + " to " + std::string(type_name(to)); }

std::span<const Cast> all_casts() { return kCasts; }

const Cast* find_cast(ValueType from, ValueType to) {
    const auto* found = std::find_if(std::begin(kCasts), std::end(kCasts),
                                     [&](const Cast& cast) { return cast.from == from && cast.to == to; });
    return found == std::end(kCasts) ? nullptr : found;
}

std::optional<int> implicit_cost(ValueType from, ValueType to) {
    if (from == to) return 0;
    const Cast* cast = find_cast(from, to);
    if (cast == nullptr || cast->cost == Cast::kExplicitOnly) return std::nullopt;
    return cast->cost;
}

}  // namespace qzengine
