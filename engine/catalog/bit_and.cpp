// bitand of decimals.
#include "engine/catalog/families.h"
#include "qzbifun/codes.h"
#include "qzbifun/math.h"

namespace qzengine {

std::vector<Function> bit_and_functions() {
    using enum ValueType;
    return {
        {.name = "bitand",
         .parameters = {{"x", kDecimal}, {"y", kDecimal}},
         .result = kDecimal,
         .help =
             "The bits that x and y share, one of which is constant; fractions are cut off, and negative numbers are in two's "
             "complement of 160 bits. Up to 40 integer digits.",
         .errors = {EC_DATA_OVERFLOW},
         .forms = {{"av", "bbit_and_for_dec_av", &bbit_and_for_dec_av}, {"va", "bbit_and_for_dec_va", &bbit_and_for_dec_va}},
         .examples = {{"bitand(12, 10)", "8"}, {"bitand(-2, -3.5)", "-4"}}},
    };
}

}  // namespace qzengine
