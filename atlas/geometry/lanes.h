/// Two double precision numbers that are computed with side by side, as most machines can at the
/// cost of one. Each lane gets the very bits that the same operation gives on a double.
#pragma once

#include <cmath>

namespace tessora::atlas {

#if defined(__GNUC__)
using Lanes = double __attribute__((vector_size(16)));
#else
struct Lanes {
    double lane[2];
    Lanes() : lane{0, 0} {}
    Lanes(double a, double b) : lane{a, b} {}
    Lanes(double both) : lane{both, both} {}
    double operator[](int i) const { return lane[i]; }
};
inline Lanes operator+(Lanes a, Lanes b) { return {a[0] + b[0], a[1] + b[1]}; }
inline Lanes operator-(Lanes a, Lanes b) { return {a[0] - b[0], a[1] - b[1]}; }
inline Lanes operator*(Lanes a, Lanes b) { return {a[0] * b[0], a[1] * b[1]}; }
inline Lanes operator/(Lanes a, Lanes b) { return {a[0] / b[0], a[1] / b[1]}; }
#endif

inline Lanes sqrt(Lanes a) { return Lanes{std::sqrt(a[0]), std::sqrt(a[1])}; }

/// Lane by lane: `yes` where x >= 0, else `no`.
inline Lanes where_not_negative(Lanes x, Lanes yes, Lanes no) {
#if defined(__GNUC__)
    return x >= 0 ? yes : no;
#else
    return {x[0] >= 0 ? yes[0] : no[0], x[1] >= 0 ? yes[1] : no[1]};
#endif
}

} // namespace tessora::atlas
