#include "measure/measure.h"

#include "measure/charts.h"
#include "measure/polygons.h"
#include "measure/shape.h"

#include <algorithm>
#include <cmath>

namespace measure {
namespace {

// Overlap tolerance in spacings of single-precision UVs: each corner may be off by half a spacing
// for each of the few times its UV is rounded before it is written.
constexpr double k_overlap_depth = 4.0;

class Measuring {
public:
    Measuring(const Layout& layout, const Texture& texture)
        : layout_(layout), texture_(texture), spacing_(uv_spacing(layout, texture)),
          charts_(find_charts(layout)) {}

    Measures run() {
        result_.polygons = layout_.polygon_count;
        result_.unit = layout_.unit;
        result_.triangles = layout_.triangle_count();
        result_.vertices = layout_.vertex_count();
        find_unmapped();
        measure_stretch();
        measure_charts();
        find_turned();
        find_range();
        measure_density();
        result_.overlaps = find_overlaps(layout_, texture_, charts_, k_overlap_depth * spacing_);
        result_.gap = smallest_gap(layout_, texture_, charts_);
        result_.border = border_distance(layout_, texture_, charts_);
        result_.outline = std::move(charts_.outline);
        result_.triangle_chart = std::move(charts_.triangle_chart);
        return std::move(result_);
    }

private:
    void find_unmapped() {
        for (uint32_t corner = 0; corner < layout_.corner_uv.size(); ++corner)
            result_.unmapped_corners += !is_finite_uv(layout_, corner);
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t)
            if (charts_.triangle_chart[t] == k_none)
                result_.unmapped_polygons.push_back(layout_.triangle_polygon[t]);
        auto& list = result_.unmapped_polygons;
        std::sort(list.begin(), list.end());
        list.erase(std::unique(list.begin(), list.end()), list.end());
    }

    void measure_stretch() {
        result_.maps = map_triangles(layout_, texture_, charts_);
        PolygonShapes shapes = find_polygon_shapes(layout_, texture_, charts_, result_.maps);
        std::vector<StretchSum> sums = sum_stretch(result_.maps, shapes.quads, charts_, spacing_);
        result_.dented = std::move(shapes.dented);
        result_.turned = std::move(shapes.turned);
        result_.split_polygons = shapes.split;
        result_.whole = sums.back();
        result_.charts.resize(charts_.chart_count);
        for (uint32_t c = 0; c < charts_.chart_count; ++c)
            result_.charts[c].stretch = sums[c];
        result_.distortion = distortion(layout_, texture_, result_.maps, result_.whole);
        result_.coverage = result_.whole.texel_area / (texture_.width * texture_.height);
        result_.seam_length = charts_.seam_length;
        result_.seam_edges = charts_.seam_edges;
        if (result_.whole.area > 0.0)
            result_.seam_relative = charts_.seam_length / std::sqrt(result_.whole.area);
    }

    void measure_charts() {
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (charts_.triangle_chart[t] == k_none)
                continue;
            ChartMeasure& chart = result_.charts[charts_.triangle_chart[t]];
            if (chart.triangles++ == 0)
                chart.first_triangle = t;
            chart.is_one_polygon &=
                layout_.triangle_polygon[t] == layout_.triangle_polygon[chart.first_triangle];
            if (!result_.maps[t].is_unresolved)
                chart.signed_area += result_.maps[t].texel_area;
        }
        for (uint32_t c = 0; c < charts_.chart_count; ++c)
            if (result_.charts[c].signed_area < 0.0)
                result_.mirrored.push_back(c);
    }

    void find_turned() {
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (charts_.triangle_chart[t] == k_none)
                continue;
            const TriangleMap& map = result_.maps[t];
            const bool is_mirrored = result_.charts[charts_.triangle_chart[t]].signed_area < 0.0;
            if (map.is_unresolved)
                ++result_.unresolved;
            else if (map.texel_area == 0.0)
                result_.collapsed.push_back(t);
            else if ((map.texel_area < 0.0) != is_mirrored)
                result_.flipped.push_back(t);
        }
    }

    void find_range() {
        bool is_first = true;
        for (uint32_t t = 0; t < layout_.triangle_count(); ++t) {
            if (charts_.triangle_chart[t] == k_none)
                continue;
            bool is_outside = false;
            for (int k = 0; k < 3; ++k) {
                const uint32_t uv = layout_.corner_uv[layout_.triangle_corners[3 * t + k]];
                for (int axis = 0; axis < 2; ++axis) {
                    const double value = layout_.uvs[2 * uv + axis];
                    is_outside |= value < 0.0 || value > 1.0;
                    double &low = result_.uv_low[axis], &high = result_.uv_high[axis];
                    low = is_first ? value : std::min(low, value);
                    high = is_first ? value : std::max(high, value);
                }
                is_first = false;
            }
            if (is_outside)
                result_.outside.push_back(t);
        }
    }

    void measure_density() {
        Density& density = result_.density;
        if (result_.whole.area <= 0.0)
            return;
        density.mean = std::sqrt(result_.whole.texel_area / result_.whole.area);
        bool is_first = true;
        for (const ChartMeasure& chart : result_.charts) {
            if (chart.stretch.area <= 0.0)
                continue;
            const double here = chart.density();
            density.min = is_first ? here : std::min(density.min, here);
            density.max = is_first ? here : std::max(density.max, here);
            is_first = false;
        }
        double sum = 0.0, squares = 0.0, weight = 0.0;
        for (const TriangleMap& map : result_.maps)
            if (!map.is_unresolved && map.area > 0.0) {
                const double here = std::sqrt(std::abs(map.texel_area) / map.area);
                weight += map.area;
                sum += map.area * here;
                squares += map.area * here * here;
            }
        if (sum > 0.0)
            density.variation = std::sqrt(std::max(0.0, squares * weight / (sum * sum) - 1.0));
    }

    const Layout& layout_;
    const Texture& texture_;
    double spacing_;
    ChartTable charts_;
    Measures result_;
};

} // namespace

Triangle2 texel_triangle(const Layout& layout, const Texture& texture, uint32_t triangle) {
    return texel_triangle(layout, texture, &layout.triangle_corners[3 * triangle]);
}

Triangle3 space_triangle(const Layout& layout, uint32_t triangle) {
    return space_triangle(layout, &layout.triangle_corners[3 * triangle]);
}

Triangle2 texel_triangle(const Layout& layout, const Texture& texture, const uint32_t* corners) {
    Triangle2 result;
    for (int k = 0; k < 3; ++k) {
        const uint32_t uv = layout.corner_uv[corners[k]];
        result.p[k] = {layout.uvs[2 * uv] * texture.width, layout.uvs[2 * uv + 1] * texture.height};
    }
    return result;
}

Triangle3 space_triangle(const Layout& layout, const uint32_t* corners) {
    double edge[2][3];
    const uint32_t origin = layout.corner_vertex[corners[0]];
    for (int k = 0; k < 2; ++k) {
        const uint32_t v = layout.corner_vertex[corners[k + 1]];
        for (int axis = 0; axis < 3; ++axis)
            edge[k][axis] = static_cast<double>(layout.positions[3 * v + axis]) -
                            layout.positions[3 * origin + axis];
    }
    const auto product = [](const double* a, const double* b) {
        return a[0] * b[0] + a[1] * b[1] + a[2] * b[2];
    };
    Triangle3 result;
    result.aa = product(edge[0], edge[0]);
    result.ab = product(edge[0], edge[1]);
    result.bb = product(edge[1], edge[1]);
    double squares = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const int next = (axis + 1) % 3, last = (axis + 2) % 3;
        const double part = edge[0][next] * edge[1][last] - edge[0][last] * edge[1][next];
        squares += part * part;
    }
    result.area = 0.5 * std::sqrt(squares);
    const double third = result.aa - 2.0 * result.ab + result.bb;
    result.longest_edge = std::sqrt(std::max({result.aa, result.bb, third}));
    return result;
}

double edge_length(const Layout& layout, uint32_t vertex_a, uint32_t vertex_b) {
    double squares = 0.0;
    for (int axis = 0; axis < 3; ++axis) {
        const double part = static_cast<double>(layout.positions[3 * vertex_a + axis]) -
                            layout.positions[3 * vertex_b + axis];
        squares += part * part;
    }
    return std::sqrt(squares);
}

double uv_spacing(const Layout& layout, const Texture& texture) {
    double largest = 1.0;
    for (uint32_t uv : layout.corner_uv)
        if (uv != k_none)
            for (int axis = 0; axis < 2; ++axis) {
                const double size = std::abs(static_cast<double>(layout.uvs[2 * uv + axis]));
                if (std::isfinite(size))
                    largest = std::max(largest, size);
            }
    return largest * std::max(texture.width, texture.height) / 8388608.0; // 2^23
}

double ChartMeasure::density() const {
    return stretch.area > 0.0 ? std::sqrt(stretch.texel_area / stretch.area) : 0.0;
}

double Measures::worst_chart_stretch() const {
    double worst = 1.0;
    for (const ChartMeasure& chart : charts)
        worst = std::max(worst, chart.stretch.l2);
    return 1.0 - 1.0 / worst;
}

Measures measure(const Layout& layout, const Texture& texture) {
    return Measuring(layout, texture).run();
}

} // namespace measure
