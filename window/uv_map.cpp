#include "window/uv_map.h"

#include "measure/charts.h"
#include "measure/shape.h"
#include "measure/stretch.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace window {
namespace {

constexpr int k_max_cells = 512; // per side of the picking grid

} // namespace

measure::Layout layout_of(const host::Mesh& mesh, int set) {
    const host::Connectivity& polygons = mesh.connectivity();
    measure::Layout layout;
    layout.polygon_count = polygons.polygon_count();
    layout.positions.reserve(3 * mesh.points().size());
    for (const host::Float3& point : mesh.points())
        layout.positions.insert(layout.positions.end(), {point.x, point.y, point.z});
    layout.corner_vertex.reserve(polygons.corner_count());
    for (uint32_t corner = 0; corner < polygons.corner_count(); ++corner)
        layout.corner_vertex.push_back(polygons.corner_vertex(corner));
    layout.corner_uv.assign(polygons.corner_count(), k_none);
    if (set >= 0) {
        const host::UvSet& uvs = mesh.uv_set(static_cast<uint32_t>(set));
        for (size_t i = 0; i < uvs.u.size(); ++i)
            layout.uvs.insert(layout.uvs.end(), {uvs.u[i], uvs.v[i]});
        for (size_t corner = 0; corner < uvs.corner_uvs.size(); ++corner)
            if (uvs.corner_uvs[corner] >= 0)
                layout.corner_uv[corner] = static_cast<uint32_t>(uvs.corner_uvs[corner]);
    }
    for (uint32_t p = 0; p < layout.polygon_count; ++p) {
        const host::IndexSpan corners = mesh.triangles(p);
        for (const uint32_t corner : corners)
            layout.triangle_corners.push_back(polygons.first_corner(p) + corner);
        layout.triangle_polygon.insert(layout.triangle_polygon.end(), corners.size() / 3, p);
    }
    return layout;
}

UvMap::UvMap(const host::Mesh& mesh, int set, const measure::Texture& texture) {
    const measure::Layout layout = layout_of(mesh, set);
    fill_triangles(layout);
    fill_charts(layout, texture);

    fill_box();
    fill_grid();
}

void UvMap::fill_triangles(const measure::Layout& layout) {
    triangle_polygon_ = layout.triangle_polygon;
    points_.reserve(3 * layout.triangle_corners.size());
    uvs_.reserve(2 * layout.triangle_corners.size());
    for (const uint32_t corner : layout.triangle_corners) {
        const float* point = layout.positions.data() + 3 * layout.corner_vertex[corner];
        points_.insert(points_.end(), point, point + 3);
        const uint32_t uv = layout.corner_uv[corner];
        for (int axis = 0; axis < 2; ++axis)
            uvs_.push_back(uv == k_none ? 0.0f : layout.uvs[2 * uv + axis]);
    }
}

void UvMap::fill_charts(const measure::Layout& layout, const measure::Texture& texture) {
    const measure::ChartTable table = measure::find_charts(layout, measure::SameUv::entry);
    triangle_chart_ = table.triangle_chart;
    charts_.resize(table.chart_count);
    const auto maps = measure::map_triangles(layout, texture, table);
    const auto sums = measure::sum_stretch(maps, {}, table, measure::uv_spacing(layout, texture));
    const double texels = texture.width * texture.height;
    l2_stretch_ = sums.back().l2;
    coverage_ = sums.back().texel_area / texels;
    for (size_t c = 0; c < charts_.size(); ++c) {
        charts_[c].stretch = 1.0 - 1.0 / std::max(1.0, sums[c].l2);
        charts_[c].area = sums[c].texel_area / texels;
        worst_stretch_ = std::max(worst_stretch_, charts_[c].stretch);
    }
    fill_stretch(maps, sums.back());
    fill_order();
    fill_outline(table);
    fill_seams(layout, table);
}

void UvMap::fill_stretch(const std::vector<measure::TriangleMap>& maps,
                         const measure::StretchSum& whole) {
    const double density2 = whole.area > 0.0 ? whole.texel_area / whole.area : 0;
    density_ = std::sqrt(density2);
    triangle_stretch_.assign(triangle_count(), 0.0f);
    triangle_density_.assign(triangle_count(), 0.0f);
    for (uint32_t t = 0; t < triangle_count(); ++t) {
        const uint32_t c = triangle_chart_[t];
        if (c == k_none) {
            ++unmapped_;
            continue;
        }
        const measure::TriangleMap& map = maps[t];
        if (map.smaller > 0.0 && density_ > 0.0)
            triangle_density_[t] =
                static_cast<float>(std::sqrt(map.smaller * map.larger) / density_);
        if (map.smaller > 0.0)
            triangle_stretch_[t] = static_cast<float>(
                std::sqrt(0.5 * density2 *
                          (1.0 / (map.smaller * map.smaller) + 1.0 / (map.larger * map.larger))));
        UvBox& box = charts_[c].box;
        for (int i = 0; i < 6; ++i) {
            const double value = static_cast<double>(uvs_[6 * t + i]);
            const bool is_first = charts_[c].triangles == 0 && i < 2;
            box.low[i % 2] = is_first ? value : std::min(box.low[i % 2], value);
            box.high[i % 2] = is_first ? value : std::max(box.high[i % 2], value);
        }
        ++charts_[c].triangles;
    }
}

void UvMap::fill_order() {
    chart_begin_.assign(charts_.size() + 1, 0);
    for (size_t c = 0; c < charts_.size(); ++c)
        chart_begin_[c + 1] = chart_begin_[c] + charts_[c].triangles;
    by_chart_.resize(triangle_count());
    std::vector<uint32_t> next = chart_begin_; // the last is for triangles without UVs
    for (uint32_t t = 0; t < triangle_count(); ++t)
        by_chart_[next[std::min<size_t>(triangle_chart_[t], charts_.size())]++] = t;
}

void UvMap::fill_outline(const measure::ChartTable& table) {
    std::vector<uint32_t> half_edges = table.outline;
    std::stable_sort(half_edges.begin(), half_edges.end(), [&](uint32_t a, uint32_t b) {
        return triangle_chart_[a / 3] < triangle_chart_[b / 3];
    });
    outline_begin_.assign(charts_.size() + 1, 0);
    for (const uint32_t half_edge : half_edges) {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        for (const uint32_t end : {k, (k + 1) % 3})
            outline_.insert(outline_.end(), {uvs_[6 * t + 2 * end], uvs_[6 * t + 2 * end + 1]});
        ++outline_begin_[triangle_chart_[t] + 1];
    }
    for (size_t c = 0; c < charts_.size(); ++c)
        outline_begin_[c + 1] += outline_begin_[c];
}

/// An outline edge is a seam if another triangle has the edge too; otherwise it is a border of the
/// mesh.
void UvMap::fill_seams(const measure::Layout& layout, const measure::ChartTable& table) {
    std::vector<std::array<uint32_t, 3>> edges; // lower vertex, higher vertex, half-edge
    edges.reserve(table.outline.size());
    for (const uint32_t half_edge : table.outline) {
        const uint32_t t = half_edge / 3, k = half_edge % 3;
        const uint32_t a = layout.corner_vertex[layout.triangle_corners[3 * t + k]];
        const uint32_t b = layout.corner_vertex[layout.triangle_corners[3 * t + (k + 1) % 3]];
        edges.push_back({std::min(a, b), std::max(a, b), half_edge});
    }
    std::sort(edges.begin(), edges.end());
    for (size_t i = 0; i + 1 < edges.size(); ++i) {
        const bool is_pair = edges[i][0] == edges[i + 1][0] && edges[i][1] == edges[i + 1][1];
        const bool is_first =
            i == 0 || edges[i][0] != edges[i - 1][0] || edges[i][1] != edges[i - 1][1];
        if (!is_pair || !is_first)
            continue;
        const uint32_t t = edges[i][2] / 3, k = edges[i][2] % 3;
        for (const uint32_t end : {k, (k + 1) % 3})
            seams_.insert(seams_.end(), points_.begin() + 9 * t + 3 * end,
                          points_.begin() + 9 * t + 3 * end + 3);
    }
}

void UvMap::fill_box() {
    if (!charts_.empty())
        box_ = charts_[0].box;
    for (const UvChart& chart : charts_)
        for (int axis = 0; axis < 2; ++axis) {
            box_.low[axis] = std::min(box_.low[axis], chart.box.low[axis]);
            box_.high[axis] = std::max(box_.high[axis], chart.box.high[axis]);
        }
}

int UvMap::cell(double value, int axis) const {
    const double size = box_.high[axis] - box_.low[axis];
    const double place = size > 0.0 ? (value - box_.low[axis]) / size * grid_side_ : 0.0;
    return static_cast<int>(std::clamp(place, 0.0, grid_side_ - 1.0));
}

template <class Put>
void UvMap::visit_cells(Put put) const {
    for (uint32_t t = 0; t < triangle_count(); ++t) {
        if (triangle_chart_[t] == k_none)
            continue;
        int low[2], high[2];
        for (int axis = 0; axis < 2; ++axis) {
            const auto [low_uv, high_uv] =
                std::minmax({uvs_[6 * t + axis], uvs_[6 * t + 2 + axis], uvs_[6 * t + 4 + axis]});
            low[axis] = cell(static_cast<double>(low_uv), axis);
            high[axis] = cell(static_cast<double>(high_uv), axis);
        }
        for (int y = low[1]; y <= high[1]; ++y)
            for (int x = low[0]; x <= high[0]; ++x)
                put(static_cast<size_t>(y) * static_cast<size_t>(grid_side_) +
                        static_cast<size_t>(x),
                    t);
    }
}

void UvMap::fill_grid() {
    grid_side_ = std::clamp(static_cast<int>(std::sqrt(triangle_count() / 2.0)), 1, k_max_cells);
    const size_t cells = static_cast<size_t>(grid_side_) * static_cast<size_t>(grid_side_);
    cell_start_.assign(cells + 1, 0);
    visit_cells([&](size_t at, uint32_t) { ++cell_start_[at + 1]; });
    for (size_t at = 0; at < cells; ++at)
        cell_start_[at + 1] += cell_start_[at];
    cell_triangles_.resize(cell_start_[cells]);
    std::vector<uint32_t> next(cell_start_.begin(), cell_start_.end() - 1);
    visit_cells([&](size_t at, uint32_t t) { cell_triangles_[next[at]++] = t; });
}

bool UvMap::contains(uint32_t triangle, double u, double v) const {
    const float* c = uvs_.data() + 6 * triangle;
    bool is_left = true, is_right = true;
    for (int k = 0; k < 3; ++k) {
        const int n = (k + 1) % 3;
        const double ax = static_cast<double>(c[2 * k]), ay = static_cast<double>(c[2 * k + 1]);
        const double bx = static_cast<double>(c[2 * n]), by = static_cast<double>(c[2 * n + 1]);
        const double side = (bx - ax) * (v - ay) - (by - ay) * (u - ax);
        is_left = is_left && side >= 0.0;
        is_right = is_right && side <= 0.0;
    }
    return is_left != is_right; // both are true only for a degenerate triangle
}

uint32_t UvMap::triangle_at(double u, double v) const {
    if (charts_.empty())
        return k_none;
    if (!(u >= box_.low[0] && u <= box_.high[0] && v >= box_.low[1] && v <= box_.high[1]))
        return k_none;
    const size_t at = static_cast<size_t>(cell(v, 1)) * static_cast<size_t>(grid_side_) +
                      static_cast<size_t>(cell(u, 0));
    for (uint32_t i = cell_start_[at]; i < cell_start_[at + 1]; ++i)
        if (contains(cell_triangles_[i], u, v))
            return cell_triangles_[i];
    return k_none;
}

uint32_t UvMap::chart_at(double u, double v) const {
    const uint32_t triangle = triangle_at(u, v);
    return triangle == k_none ? k_none : triangle_chart_[triangle];
}

std::vector<uint32_t> UvMap::polygons_of(uint32_t chart) const {
    std::vector<uint32_t> polygons;
    for (uint32_t i = chart_begin_[chart]; i < chart_begin_[chart + 1]; ++i)
        if (polygons.empty() || polygons.back() != triangle_polygon_[by_chart_[i]])
            polygons.push_back(triangle_polygon_[by_chart_[i]]);
    return polygons;
}

std::vector<uint32_t> UvMap::one_polygon_each(const std::vector<uint32_t>& charts) const {
    std::vector<uint32_t> polygons;
    for (const uint32_t chart : charts)
        polygons.push_back(triangle_polygon_[by_chart_[chart_begin_[chart]]]);
    std::sort(polygons.begin(), polygons.end());
    polygons.erase(std::unique(polygons.begin(), polygons.end()), polygons.end());
    return polygons;
}

uint32_t UvMap::worst_chart() const {
    const auto worst =
        std::max_element(charts_.begin(), charts_.end(),
                         [](const UvChart& a, const UvChart& b) { return a.stretch < b.stretch; });
    return worst == charts_.end() ? k_none : static_cast<uint32_t>(worst - charts_.begin());
}

} // namespace window
