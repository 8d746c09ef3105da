#include "polygon/outline.h"

#include <algorithm>
#include <cmath>

namespace tessora::polygon {

namespace {

/// Corners at the same position as another corner.
std::vector<uint32_t> coincident_corners(const std::vector<Point2>& flat) {
    std::vector<uint32_t> order(flat.size());
    for (uint32_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        if (flat[a].x != flat[b].x)
            return flat[a].x < flat[b].x;
        return flat[a].y != flat[b].y ? flat[a].y < flat[b].y : a < b;
    });
    std::vector<uint32_t> found;
    for (size_t i = 0; i < order.size(); ++i) {
        const bool like_last = i > 0 && flat[order[i]] == flat[order[i - 1]];
        const bool like_next = i + 1 < order.size() && flat[order[i]] == flat[order[i + 1]];
        if (like_last || like_next)
            found.push_back(order[i]);
    }
    return found;
}

Point2 unit(const Point2& from, const Point2& to) {
    const double x = to.x - from.x;
    const double y = to.y - from.y;
    const double length = std::sqrt(x * x + y * y);
    return length > 0.0 ? Point2{x / length, y / length} : Point2{0.0, 0.0};
}

/// A corner's position after moving both of its edges inwards by a distance; the tip of a spike is
/// not moved.
Point2 moved_in(const Outline& outline, uint32_t corner, double distance) {
    const Point2& here = outline.flat[corner];
    const Point2 in = unit(outline.flat[outline.previous(corner)], here);
    const Point2 out = unit(here, outline.flat[outline.next(corner)]);
    const double share = 1.0 + in.x * out.x + in.y * out.y;
    if (share < 1e-6)
        return here;
    return Point2{here.x - distance * (in.y + out.y) / share,
                  here.y + distance * (in.x + out.x) / share};
}

} // namespace

/// The distance is far below the spacing of single-precision points and far above the rounding
/// error of the projected coordinates, so corners that do not touch stay on the same sides of each
/// other.
bool sweep_touching(Outline& outline) {
    const std::vector<uint32_t> touching = coincident_corners(outline.flat);
    if (touching.empty())
        return false;
    double size = 0.0;
    for (const Point2& p : outline.flat)
        size = std::max(
            {size, std::fabs(p.x - outline.flat[0].x), std::fabs(p.y - outline.flat[0].y)});
    const std::vector<Point2> kept = outline.flat;
    std::vector<Point2> apart = outline.flat;
    for (const uint32_t corner : touching)
        apart[corner] = moved_in(outline, corner, 1e-10 * size);
    outline.flat = apart;
    bool is_sound = sweep_triangulate(outline);
    outline.flat = kept;
    for (size_t t = 0; is_sound && t < outline.triangles.size(); t += 3)
        is_sound = outline.turn(outline.triangles[t], outline.triangles[t + 1],
                                outline.triangles[t + 2]) >= 0;
    return is_sound;
}

} // namespace tessora::polygon
