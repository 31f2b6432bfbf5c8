// Infinities, told apart without std::isinf, which keeps a loop from being vectorised.
#pragma once

#include <cmath>
#include <limits>

namespace bifun {

// Not of a NaN.
inline bool is_infinite(double x) { return std::fabs(x) > std::numeric_limits<double>::max(); }

}  // namespace bifun
