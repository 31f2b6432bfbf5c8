// Rounding and truncating a double at a decimal place.
//
// The value is scaled by a power of ten, cut to its integer part, stepped away from zero where half or more was cut off, and
// scaled back. What the scaling does to the last bits is part of the result: round(2.675, 2) is what 2.675 * 100 says.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>

#include "bop/bifun_math/infinite.h"

namespace bifun {

// Places beyond this one leave a value as it is.
inline constexpr int32_t kMostPlaces = 40;

// The largest power of ten that a double holds.
inline constexpr int32_t kGreatestPower = 308;

// 10 to the power n, 0 to kGreatestPower, as the C library's pow has it. That is part of every result, and not always the
// nearest double.
double power_of_ten(int32_t n);

// What becomes of a value at a place.
enum class Way : uint8_t {
    kFraction,  // places behind the point: scale up
    kInteger,   // places in front of it: scale down
    kZero,      // no value reaches the place
    kKeep,
};

inline Way way_of(int32_t places) {
    if (places > kMostPlaces) return Way::kKeep;
    if (places > 0) return Way::kFraction;
    return places >= -kGreatestPower ? Way::kInteger : Way::kZero;
}

// Rounding at a place of one kind. Plain data, and a few operations without a branch.
template <Way kWay>
class PlaceRounding {
  public:
    PlaceRounding() = default;
    PlaceRounding(int32_t places, bool truncate) : step_from_(truncate ? std::numeric_limits<double>::infinity() : 0.5) {
        if constexpr (kWay == Way::kFraction) power_ = power_of_ten(places);
        if constexpr (kWay == Way::kInteger) power_ = power_of_ten(-places);
    }

    // Defined on every value. A scaling up that overflows leaves the value as it is.
    double apply(double x) const {
        if constexpr (kWay == Way::kFraction) {
            const double scaled = power_ * x;
            const double result = step(scaled) / power_;
            return x == 0.0 || is_infinite(scaled) ? x : result;
        } else if constexpr (kWay == Way::kInteger) {
            const double result = step(x / power_) * power_;
            return x == 0.0 ? x : result;
        } else if constexpr (kWay == Way::kZero) {
            return x == 0.0 ? x : 0.0;
        } else {
            return x;
        }
    }

    bool overflows(double x) const {
        if constexpr (kWay == Way::kInteger || kWay == Way::kKeep) return is_infinite(apply(x));
        return false;  // what was scaled up comes back, or is kept
    }

  private:
    // The integer part, one further from zero where the fraction reaches step_from_. Adding -0.0 changes no value: the integer
    // part of -0.3 is -0.0.
    double step(double scaled) const {
        const double whole = std::trunc(scaled);
        const double fraction = scaled - whole;  // exact
        return whole + (std::fabs(fraction) >= step_from_ ? std::copysign(1.0, scaled) : -0.0);
    }

    double power_ = 1;
    double step_from_ = 0.5;
};

// Calls use(rounding) with the rounding at a place.
template <class Use>
auto with_rounding(int32_t places, bool truncate, const Use& use) {
    switch (way_of(places)) {
        case Way::kFraction:
            return use(PlaceRounding<Way::kFraction>(places, truncate));
        case Way::kInteger:
            return use(PlaceRounding<Way::kInteger>(places, truncate));
        case Way::kZero:
            return use(PlaceRounding<Way::kZero>(places, truncate));
        case Way::kKeep:
            break;
    }
    return use(PlaceRounding<Way::kKeep>(places, truncate));
}

}  // namespace bifun
