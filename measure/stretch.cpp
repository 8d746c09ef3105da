#include "measure/stretch.h"

#include "measure/shape.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace measure {
namespace {

constexpr double k_min_area_share = 1e-9; // of the mean triangle area
constexpr double k_min_height = 2.0;      // spacings of single-precision UVs
constexpr double k_degrees = 57.29577951308232;

TriangleMap map_triangle(const Triangle3& space, const Triangle2& texels) {
    TriangleMap map;
    map.area = space.area;
    const Point2 a = texels.p[1] - texels.p[0], b = texels.p[2] - texels.p[0];
    const double turn = cross(a, b);
    map.texel_area = 0.5 * turn;
    const double longest = std::max({length(a), length(b), length(b - a)});
    map.texel_height = longest > 0.0 ? std::abs(turn) / longest : 0.0;
    if (space.area <= 0.0)
        return map;
    const double area2 = 2.0 * space.area;
    const double det = std::abs(turn) / area2;
    const double squares =
        (dot(a, a) * space.bb - 2.0 * dot(a, b) * space.ab + dot(b, b) * space.aa) /
        (area2 * area2);
    const double sum = std::sqrt(std::max(0.0, squares + 2.0 * det));
    const double difference = std::sqrt(std::max(0.0, squares - 2.0 * det));
    map.larger = 0.5 * (sum + difference);
    // From the determinant, because a difference of square roots would cancel.
    map.smaller = map.larger > 0.0 ? det / map.larger : 0.0;
    return map;
}

struct Running {
    double area = 0.0, texel_area = 0.0, weight = 0.0, squares = 0.0, floor_squares = 0.0;
    double excess = 0.0, floor_excess = 0.0; // of the worse diagonals of quads
    double steepest = 0.0;

    void add(const TriangleMap& map, double spacing) {
        area += map.area;
        texel_area += std::abs(map.texel_area);
        if (map.is_unresolved || map.smaller <= 0.0)
            return;
        const double term =
            0.5 * (1.0 / (map.smaller * map.smaller) + 1.0 / (map.larger * map.larger));
        const double slack = 1.0 + spacing / map.texel_height;
        weight += map.area;
        squares += map.area * term;
        floor_squares += map.area * term / (slack * slack);
        steepest = std::max(steepest, 1.0 / map.smaller);
    }

    /// Adds what the other diagonal of a quad, with the area of its own, stretches more.
    void add_excess(const TriangleMap* own, const TriangleMap* other, double spacing) {
        Running a, b;
        for (int half = 0; half < 2; ++half) {
            a.add(own[half], spacing);
            b.add(other[half], spacing);
        }
        if (a.weight < a.area || b.weight < b.area || a.area <= 0.0 || b.area <= 0.0)
            return; // a triangle that says nothing
        const double share = a.area / b.area;
        excess += std::max(0.0, b.squares * share - a.squares);
        floor_excess += std::max(0.0, b.floor_squares * share - a.floor_squares);
    }

    StretchSum result() const {
        StretchSum sum;
        sum.area = area;
        sum.texel_area = texel_area;
        if (weight <= 0.0)
            return sum;
        const double scale = texel_area / area;
        sum.l2 = std::sqrt(squares / weight * scale);
        sum.l2_floor = std::sqrt(floor_squares / weight * scale);
        sum.worst_l2 = std::sqrt((squares + excess) / weight * scale);
        sum.worst_l2_floor = std::sqrt((floor_squares + floor_excess) / weight * scale);
        sum.linf = steepest * std::sqrt(scale);
        return sum;
    }
};

/// The difference of two angles in degrees, each given by its sine and cosine times any positive
/// factor; sines are not negative.
double angle_change(double sine_a, double cosine_a, double sine_b, double cosine_b) {
    return k_degrees *
           std::atan2(sine_a * cosine_b - cosine_a * sine_b, cosine_a * cosine_b + sine_a * sine_b);
}

/// The changes of a triangle's three angles from space to texels. The angles add up to half a turn
/// in both, so the changes add up to 0.
std::array<double, 3> angle_changes(const Triangle3& space, const Triangle2& texels) {
    const Point2 a = texels.p[1] - texels.p[0], b = texels.p[2] - texels.p[0];
    const double area2 = 2.0 * space.area, turn = std::abs(cross(a, b));
    const double first = angle_change(area2, space.ab, turn, dot(a, b));
    const double second = angle_change(area2, space.aa - space.ab, turn, dot(a, a) - dot(a, b));
    return {std::abs(first), std::abs(second), std::abs(first + second)};
}

} // namespace

std::vector<TriangleMap> map_triangles(const Layout& layout, const Texture& texture,
                                       const ChartTable& charts) {
    std::vector<TriangleMap> maps(layout.triangle_count());
    std::vector<double> heights(maps.size(), 0.0);
    double area = 0.0, texel_area = 0.0;
    size_t count = 0;
    for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
        if (charts.triangle_chart[t] == k_none)
            continue;
        const Triangle3 space = space_triangle(layout, t);
        maps[t] = map_triangle(space, texel_triangle(layout, texture, t));
        heights[t] = space.min_height();
        area += maps[t].area;
        texel_area += std::abs(maps[t].texel_area);
        ++count;
    }
    if (count == 0)
        return maps;
    const double min_area = k_min_area_share * area / static_cast<double>(count);
    const double scale = area > 0.0 ? std::sqrt(texel_area / area) : 0.0;
    const double min_height = k_min_height * uv_spacing(layout, texture);
    for (size_t t = 0; t < maps.size(); ++t)
        maps[t].is_unresolved =
            maps[t].area <= min_area || (texel_area > 0.0 && heights[t] * scale < min_height);
    return maps;
}

TriangleMap map_corners(const Layout& layout, const Texture& texture, const uint32_t* corners) {
    return map_triangle(space_triangle(layout, corners), texel_triangle(layout, texture, corners));
}

std::vector<StretchSum> sum_stretch(const std::vector<TriangleMap>& maps,
                                    const std::vector<Quad>& quads, const ChartTable& charts,
                                    double uv_spacing) {
    std::vector<Running> running(charts.chart_count + 1u);
    for (size_t t = 0; t < maps.size(); ++t)
        if (charts.triangle_chart[t] != k_none) {
            running[charts.triangle_chart[t]].add(maps[t], uv_spacing);
            running.back().add(maps[t], uv_spacing);
        }
    for (const Quad& quad : quads) {
        const TriangleMap own[2] = {maps[quad.own[0]], maps[quad.own[1]]};
        running[charts.triangle_chart[quad.own[0]]].add_excess(own, quad.other, uv_spacing);
        running.back().add_excess(own, quad.other, uv_spacing);
    }
    std::vector<StretchSum> sums;
    sums.reserve(running.size());
    for (const Running& one : running)
        sums.push_back(one.result());
    return sums;
}

Distortion distortion(const Layout& layout, const Texture& texture,
                      const std::vector<TriangleMap>& maps, const StretchSum& whole) {
    Distortion result;
    double weight = 0.0, angles = 0.0, ratios = 0.0, areas = 0.0;
    for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
        const TriangleMap& map = maps[t];
        if (map.is_unresolved || map.smaller <= 0.0)
            continue;
        for (const double change :
             angle_changes(space_triangle(layout, t), texel_triangle(layout, texture, t))) {
            angles += map.area * change / 3.0;
            result.angle_max = std::max(result.angle_max, change);
        }
        const double share = std::abs(map.texel_area) / map.area * whole.area / whole.texel_area;
        const double area_change = std::max(share, 1.0 / share);
        weight += map.area;
        ratios += map.area * map.larger / map.smaller;
        areas += map.area * area_change;
        result.area_max = std::max(result.area_max, area_change);
    }
    if (weight > 0.0) {
        result.angle_mean = angles / weight;
        result.conformal_mean = ratios / weight;
        result.area_mean = areas / weight;
    }
    return result;
}

} // namespace measure
