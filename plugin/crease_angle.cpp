#include "plugin/crease_angle.h"

#include <cmath>

namespace {

constexpr double k_pi = 0x1.921fb54442d18p+1;
constexpr double k_pi_rest = 0x1.1a62633145c07p-53; ///< pi minus the double nearest to it
constexpr double k_half_pi = 0x1.921fb54442d18p+0;
constexpr double k_half_pi_rest = 0x1.1a62633145c07p-54;

/// Entry k is the arc tangent of k / 16.
constexpr double k_arc_tangents[17] = {
    0x0.0p+0,
    0x1.ff55bb72cfdeap-5,
    0x1.fd5ba9aac2f6ep-4,
    0x1.7b97b4bce5b02p-3,
    0x1.f5b75f92c80ddp-3,
    0x1.362773707ebccp-2,
    0x1.6f61941e4def1p-2,
    0x1.a64eec3cc23fdp-2,
    0x1.dac670561bb4fp-2,
    0x1.0657e94db30d0p-1,
    0x1.1e00babdefeb4p-1,
    0x1.345f01cce37bbp-1,
    0x1.4978fa3269ee1p-1,
    0x1.5d58987169b18p-1,
    0x1.700a7c5784634p-1,
    0x1.819d0b7158a4dp-1,
    0x1.921fb54442d18p-1,
};

/// Arc tangent of small / large, 0 <= small <= large, large > 0: the table value at the nearest
/// sixteenth plus the series of the remainder (at most 1/32).
double arc_tangent(double small, double large) {
    const int nearest = static_cast<int>(small / large * 16.0 + 0.5);
    const double k = nearest;
    const double t = (16.0 * small - k * large) / (16.0 * large + k * small);
    const double z = t * t;
    const double series =
        z *
        (-1.0 / 3 + z * (1.0 / 5 + z * (-1.0 / 7 + z * (1.0 / 9 + z * (-1.0 / 11 + z / 13.0)))));
    return k_arc_tangents[nearest] + (t + t * series);
}

} // namespace

double portable_atan2(double y, double x) {
    const double width = std::fabs(x);
    const double sum = y + width;
    if (!(sum <= 1.0e300)) // larger than any product of face normals, or NaN
        return std::nan("");
    const bool left = std::signbit(x);
    if (y > width) {
        const double rest = arc_tangent(width, y);
        return (left ? k_half_pi + rest : k_half_pi - rest) + k_half_pi_rest;
    }
    const double angle = width == 0.0 ? 0.0 : arc_tangent(y, width);
    return left ? (k_pi - angle) + k_pi_rest : angle;
}

float crease_degrees(const MVector& normal_a, const MVector& normal_b) {
    const MVector cross = normal_a ^ normal_b;
    const double theta = portable_atan2(std::sqrt(cross * cross), normal_a * normal_b);
    const float scaled = static_cast<float>(theta) * 180.0f;
    return static_cast<float>(static_cast<double>(scaled) * 0.3183098861837907);
}
