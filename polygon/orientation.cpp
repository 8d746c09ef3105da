#include "polygon/orientation.h"

#include <cmath>

namespace tessora::polygon {

namespace {

/// A number as the exact sum of a rounded value and its rounding error.
struct Sum2 {
    double high;
    double low;
};

Sum2 exact_difference(double a, double b) {
    const double high = a - b;
    const double b_seen = a - high;
    const double a_seen = high + b_seen;
    return Sum2{high, (a - a_seen) + (b_seen - b)};
}

Sum2 exact_product(double a, double b) {
    constexpr double k_splitter = 134217729.0; // 2^27 + 1: splits into halves of 26 bits
    const double a_big = k_splitter * a;
    const double a_high = a_big - (a_big - a);
    const double a_low = a - a_high;
    const double b_big = k_splitter * b;
    const double b_high = b_big - (b_big - b);
    const double b_low = b - b_high;
    const double high = a * b;
    const double error = ((a_high * b_high - high) + a_high * b_low) + a_low * b_high;
    return Sum2{high, error + a_low * b_low};
}

/// An exact sum in progress: non-overlapping components of increasing magnitude.
struct Expansion {
    double parts[16];
    int count = 0;

    void add(double value) {
        double carry = value;
        for (int i = 0; i < count; ++i) {
            const double sum = carry + parts[i];
            const double part_seen = sum - carry;
            const double carry_seen = sum - part_seen;
            const double dropped = (carry - carry_seen) + (parts[i] - part_seen);
            parts[i] = dropped;
            carry = sum;
        }
        parts[count++] = carry;
    }

    void add_product(const Sum2& a, const Sum2& b, double sign) {
        const Sum2 products[4] = {exact_product(a.low, b.low), exact_product(a.low, b.high),
                                  exact_product(a.high, b.low), exact_product(a.high, b.high)};
        for (const Sum2& product : products) {
            add(sign * product.low);
            add(sign * product.high);
        }
    }

    int sign() const {
        for (int i = count - 1; i >= 0; --i)
            if (parts[i] != 0.0)
                return parts[i] > 0.0 ? 1 : -1;
        return 0;
    }
};

} // namespace

int orientation(const Point2& a, const Point2& b, const Point2& c) {
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double determinant = left - right;
    constexpr double k_bound = 3.3306690738754716e-16; // (3 + 16 u) u with u = 2^-53
    const double trusted = k_bound * (std::fabs(left) + std::fabs(right));
    if (determinant > trusted || -determinant > trusted)
        return determinant > 0.0 ? 1 : -1;
    Expansion exact;
    exact.add_product(exact_difference(a.x, c.x), exact_difference(b.y, c.y), 1.0);
    exact.add_product(exact_difference(a.y, c.y), exact_difference(b.x, c.x), -1.0);
    return exact.sign();
}

} // namespace tessora::polygon
