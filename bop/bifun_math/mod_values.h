// mod over arrays: n values from n pairs, out apart from them. x where y is 0; of bigints, 0 where y is -1.
//
// Exact: every value is that of fmod, or of the processor's division, bit by bit. On a machine with AVX2 and FMA pairs whose
// quotient a double holds go without either.
#pragma once

#include <cstdint>

namespace bifun {

void mod_values(double* out, uint32_t n, const double* x, const double* y);
void mod_values(int64_t* out, uint32_t n, const int64_t* x, const int64_t* y);

}  // namespace bifun
