// Arithmetic over records. Of any bytes: harmless. In canonical form: the results are canonical, and the laws that hold exactly
// hold.
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "fuzz/require.h"
#include "qzhost/decimal.h"

namespace {

bool same(const xdec& x, const xdec& y) { return std::memcmp(&x, &y, sizeof x) == 0; }

void require_result(int32_t code, const xdec& value, bool canonical) {
    require(code == 0 || code == EC_DATA_OVERFLOW || code == EC_INVALID_ARGUMENT);
    require(!canonical || xdec_is_canonical(&value) != 0);
}

void check_arithmetic(const xdec& x, const xdec& y, int8_t places, bool canonical) {
    xdec one_way;
    xdec other_way;
    require_result(xdec_add(&x, &y, &one_way), one_way, canonical);
    require_result(xdec_add(&y, &x, &other_way), other_way, canonical);
    require(!canonical || same(one_way, other_way));
    require_result(xdec_mul(&x, &y, &one_way), one_way, canonical);
    require_result(xdec_mul(&y, &x, &other_way), other_way, canonical);
    require(!canonical || same(one_way, other_way));
    require_result(xdec_sub(&x, &y, &one_way), one_way, canonical);
    require_result(xdec_sub(&y, &x, &other_way), other_way, canonical);
    xdec_neg(&other_way, &other_way);
    require(!canonical || same(one_way, other_way));
    require_result(xdec_div(&x, &y, &one_way), one_way, canonical);
    require_result(xdec_round(&x, 0, places, &one_way), one_way, canonical);
    xdec_trunc_scale_with_pos(&x, places, &one_way);
    require_result(0, one_way, canonical);

    const int32_t order = xdec_cmp(&x, &y);
    const int32_t reverse = xdec_cmp(&y, &x);
    require(!canonical || ((order < 0) == (reverse > 0) && (order == 0) == (reverse == 0)));
}

void check_conversions(const xdec& x, bool canonical) {
    int64_t integer = 0;
    if (xdec_get_int64(&x, &integer) == 0 && canonical) {
        xdec truncated = x;
        xdec_trunc_scale(&truncated);
        xdec back;
        require(xdec_from_int64(&back, integer, XDEC_SCALE_NONE) == 0);
        require(xdec_cmp(&truncated, &back) == 0);
    }
    uint64_t magnitude = 0;
    require((xdec_get_ulint64(&x, &magnitude) == 0) == (xdec_in_ulint64(&x) != 0));
    xdec_get_double(&x, nullptr, 1);
    uint32_t words[XDEC_BINARY_WORDS];
    xdec_get_binary(&x, words);
    uint32_t remainder = 0;
    xdec quotient;
    xdec_div_get_quotient_int_by_16(&x, &quotient, &remainder);
    require(remainder < 16);
    require_result(0, quotient, canonical);
}

// The number that a record of any bytes is read as, in canonical form.
xdec canonical_of(const xdec& x) {
    char text[XDEC_TEXT_SIZE];
    uint32_t length = 0;
    xdec_to_char2(&x, text, sizeof text, &length);
    require(length < sizeof text);
    xdec read;
    xdec_from_char(&read, text, length);
    require(xdec_is_canonical(&read) != 0);
    return read;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size);

// The input is two records and a count of places.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    xdec x;
    xdec y;
    int8_t places = 0;
    if (size < sizeof x + sizeof y + sizeof places) return 0;
    std::memcpy(&x, data, sizeof x);
    std::memcpy(&y, data + sizeof x, sizeof y);
    std::memcpy(&places, data + sizeof x + sizeof y, sizeof places);

    check_arithmetic(x, y, places, false);
    check_conversions(x, false);
    x = canonical_of(x);
    y = canonical_of(y);
    check_arithmetic(x, y, places, true);
    check_conversions(x, true);
    return 0;
}
