#include "atlas/geometry/predicates.h"

namespace tessora::atlas {
namespace {

/// a*b = high + low exactly.
void two_product(double a, double b, double& high, double& low) {
    constexpr double k_splitter = 134217729.0; // 2^27 + 1
    high = a * b;
    const double ca = k_splitter * a, cb = k_splitter * b;
    const double a_high = ca - (ca - a), a_low = a - a_high;
    const double b_high = cb - (cb - b), b_low = b - b_high;
    low = ((a_high * b_high - high) + a_high * b_low + a_low * b_high) + a_low * b_low;
}

/// a+b = high + low exactly.
void two_sum(double a, double b, double& high, double& low) {
    high = a + b;
    const double b_part = high - a;
    low = (a - (high - b_part)) + (b - b_part);
}

/// An exact sum, stored as non-overlapping parts of increasing magnitude.
struct Expansion {
    double part[16];
    int count = 0;

    void add(double value) {
        int kept = 0;
        for (int i = 0; i < count; ++i) {
            double low;
            two_sum(value, part[i], value, low);
            if (low != 0)
                part[kept++] = low;
        }
        if (value != 0)
            part[kept++] = value;
        count = kept;
    }
    void add_product(double a, double b, double sign) {
        double high, low;
        two_product(a, b, high, low);
        add(sign * low);
        add(sign * high);
    }
    int sign() const {
        if (count == 0)
            return 0;
        return part[count - 1] > 0 ? 1 : -1;
    }
};

} // namespace

int side_of_line(Vec2 a, Vec2 b, Vec2 c) {
    const double left = (a.x - c.x) * (b.y - c.y);
    const double right = (a.y - c.y) * (b.x - c.x);
    const double determinant = left - right;
    const double bound = 3.3306690738754716e-16 * (std::fabs(left) + std::fabs(right));
    if (determinant > bound)
        return 1;
    if (-determinant > bound)
        return -1;
    // ax*by - ax*cy - cx*by - ay*bx + ay*cx + cy*bx, each product exact.
    Expansion sum;
    sum.add_product(a.x, b.y, 1);
    sum.add_product(a.x, c.y, -1);
    sum.add_product(c.x, b.y, -1);
    sum.add_product(a.y, b.x, -1);
    sum.add_product(a.y, c.x, 1);
    sum.add_product(c.y, b.x, 1);
    return sum.sign();
}

} // namespace tessora::atlas
