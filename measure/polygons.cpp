#include "measure/polygons.h"

#include "measure/shape.h"

#include <algorithm>
#include <cmath>

namespace measure {
namespace {

constexpr double k_min_height = 2.0;  // spacings of single-precision UVs
constexpr double k_least_turn = 1e-3; // of the squared length of the area vector

struct Point3 {
    double x = 0.0, y = 0.0, z = 0.0;
};

Point3 operator-(const Point3& a, const Point3& b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }

Point3 cross(const Point3& a, const Point3& b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

double dot(const Point3& a, const Point3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

class Finder {
public:
    Finder(const Layout& layout, const Texture& texture, const ChartTable& charts,
           const std::vector<TriangleMap>& maps)
        : layout_(layout), texture_(texture), charts_(charts), maps_(maps),
          signed_area_(charts.chart_count, 0.0) {
        double area = 0.0, texel_area = 0.0;
        for (size_t t = 0; t < maps.size(); ++t) {
            if (charts.triangle_chart[t] == k_none)
                continue;
            area += maps[t].area;
            texel_area += std::abs(maps[t].texel_area);
            signed_area_[charts.triangle_chart[t]] += maps[t].texel_area;
        }
        min_height_ = k_min_height * uv_spacing(layout, texture);
        scale_ = area > 0.0 ? std::sqrt(texel_area / area) : 0.0;
    }

    PolygonShapes find() {
        for (uint32_t first = 0, last = 0; first < layout_.triangle_count(); first = last) {
            while (last < layout_.triangle_count() &&
                   layout_.triangle_polygon[last] == layout_.triangle_polygon[first])
                ++last;
            if (last - first > 1)
                visit(first, last);
        }
        return std::move(shapes_);
    }

private:
    void visit(uint32_t first, uint32_t last) {
        const uint32_t chart = charts_.triangle_chart[first];
        for (uint32_t t = first; t < last; ++t) {
            if (charts_.triangle_chart[t] == k_none)
                return;
            if (charts_.triangle_chart[t] != chart) {
                ++shapes_.split;
                return;
            }
        }
        const double side = signed_area_[chart] < 0.0 ? -1.0 : 1.0;
        for (uint32_t t = first; t < last; ++t)
            if (!maps_[t].is_unresolved && !(side * maps_[t].texel_area > 0.0))
                return; // flipped or collapsed, which is worse
        const auto begin = layout_.triangle_corners.begin();
        corner_ = *std::min_element(begin + 3 * first, begin + 3 * last);
        count_ = last - first + 2;
        const Point3 axis = area_vector();
        const double least = k_least_turn * dot(axis, axis);
        bool is_convex = true, turns_right = false, is_straight = false;
        for (uint32_t i = 0; i < count_; ++i) {
            if (!(turn(i, axis) > least)) {
                is_convex = false;
                continue;
            }
            const double there = side * texel_turn(i);
            if (there > 0.0 || !is_resolved(i))
                continue;
            turns_right = turns_right || there < 0.0;
            is_straight = true;
        }
        const uint32_t polygon = layout_.triangle_polygon[first];
        if (is_convex && is_straight)
            shapes_.dented.push_back(polygon);
        else if (turns_right)
            shapes_.turned.push_back(polygon);
        if (is_convex && count_ == 4)
            add_quad(first);
    }

    uint32_t corner(uint32_t i) const { return corner_ + i % count_; }

    Point3 place(uint32_t i) const {
        const float* p = &layout_.positions[3 * layout_.corner_vertex[corner(i)]];
        return {p[0], p[1], p[2]};
    }

    Point2 texel(uint32_t i) const {
        const float* uv = &layout_.uvs[2 * layout_.corner_uv[corner(i)]];
        return {uv[0] * texture_.width, uv[1] * texture_.height};
    }

    Point3 area_vector() const {
        Point3 sum;
        for (uint32_t i = 2; i < count_; ++i) {
            const Point3 c = cross(place(i - 1) - place(0), place(i) - place(0));
            sum = {sum.x + 0.5 * c.x, sum.y + 0.5 * c.y, sum.z + 0.5 * c.z};
        }
        return sum;
    }

    double turn(uint32_t i, const Point3& axis) const {
        return dot(cross(place(i) - place(i + count_ - 1), place(i + 1) - place(i)), axis);
    }

    double texel_turn(uint32_t i) const {
        return measure::cross(texel(i) - texel(i + count_ - 1), texel(i + 1) - texel(i));
    }

    /// Whether single-precision UVs can tell the corner from a straight one, going by its shape in
    /// space.
    bool is_resolved(uint32_t i) const {
        const Point3 a = place(i + count_ - 1), b = place(i), c = place(i + 1);
        const Point3 normal = cross(b - a, c - a);
        const double longest =
            std::sqrt(std::max({dot(b - a, b - a), dot(c - b, c - b), dot(a - c, a - c)}));
        const double height = longest > 0.0 ? std::sqrt(dot(normal, normal)) / longest : 0.0;
        return height * scale_ >= min_height_;
    }

    void add_quad(uint32_t first) {
        // The own diagonal ends at the two corners that both triangles have.
        const uint32_t* const a = &layout_.triangle_corners[3 * first];
        const auto in = [&](const uint32_t* triangle, uint32_t i) {
            return std::find(triangle, triangle + 3, corner(i)) != triangle + 3;
        };
        const uint32_t shared = in(a, 0) && in(a + 3, 0) ? 0 : 1;
        Quad quad{{first, first + 1}, {}};
        for (uint32_t half = 0; half < 2; ++half) {
            const uint32_t middle = shared + 2 * half;
            const uint32_t corners[3] = {corner(middle + 3), corner(middle), corner(middle + 1)};
            quad.other[half] = map_corners(layout_, texture_, corners);
        }
        shapes_.quads.push_back(quad);
    }

    const Layout& layout_;
    const Texture& texture_;
    const ChartTable& charts_;
    const std::vector<TriangleMap>& maps_;
    std::vector<double> signed_area_; // per chart, texels
    double scale_ = 0.0;              // texels per unit of length
    double min_height_ = 0.0;         // texels
    uint32_t corner_ = 0, count_ = 0; // of the polygon at hand
    PolygonShapes shapes_;
};

} // namespace

PolygonShapes find_polygon_shapes(const Layout& layout, const Texture& texture,
                                  const ChartTable& charts, const std::vector<TriangleMap>& maps) {
    return Finder(layout, texture, charts, maps).find();
}

} // namespace measure
