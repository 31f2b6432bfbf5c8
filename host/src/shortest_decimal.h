// The shortest decimal number that reads back as a double.
#ifndef QZHOST_SRC_SHORTEST_DECIMAL_H
#define QZHOST_SRC_SHORTEST_DECIMAL_H

#include <cstdint>

namespace qzhost {

struct ShortestDecimal {
    uint64_t digits;  // below 10^17
    int exponent;     // power of ten of the last digit
};

// mantissa and exponent are the fields of a finite double that is not zero. The digits may end in zeros.
ShortestDecimal shortest_decimal(uint64_t mantissa, int exponent);

}  // namespace qzhost

#endif
