/// A mesh's triangles in space and in the texture, their charts and stretch, with point picking:
/// the data behind the UV panel.
///
/// Charts are what commands on UVs move as one: a cut divides them before its sides are apart.
/// Immutable after construction. Triangles without UVs belong to no chart, and drawing and picking
/// in the texture skip them.
#pragma once

#include "host/mesh/mesh.h"
#include "measure/charts.h"
#include "measure/stretch.h"

#include <cstdint>
#include <vector>

namespace window {

inline constexpr uint32_t k_none = measure::k_none;

/// An axis-aligned box in UV space.
struct UvBox {
    double low[2] = {0.0, 0.0};
    double high[2] = {1.0, 1.0};
};

/// The measures' view of a mesh; corners without UVs if `set` is -1.
measure::Layout layout_of(const host::Mesh& mesh, int set);

struct UvChart {
    uint32_t triangles = 0;
    double stretch = 0.0; ///< fraction of the sampling rate lost, 1 - 1/L2, 0..1
    double area = 0.0;    ///< fraction of the unit square
    UvBox box;
};

class UvMap {
public:
    UvMap() = default;
    /// `set`: index of the UV set, -1 if the mesh has none (there are then no charts).
    /// Cost: near-linear in triangles.
    UvMap(const host::Mesh& mesh, int set, const measure::Texture& texture);

    uint32_t triangle_count() const { return static_cast<uint32_t>(triangle_chart_.size()); }
    /// Shape: one per triangle; the chart is k_none without UVs.
    const std::vector<uint32_t>& triangle_chart() const { return triangle_chart_; }
    const std::vector<uint32_t>& triangle_polygon() const { return triangle_polygon_; }
    /// All triangles, chart by chart, those without UVs last; and where each chart begins in the
    /// list, charts + 1 entries.
    const std::vector<uint32_t>& triangles_by_chart() const { return by_chart_; }
    const std::vector<uint32_t>& chart_begin() const { return chart_begin_; }
    /// Shape: 9 floats per triangle, object space; 6 floats per triangle, 0 without UVs.
    const std::vector<float>& points() const { return points_; }
    const std::vector<float>& uvs() const { return uvs_; }
    /// L2 stretch per triangle relative to the layout's mean density, 1 = even, 0 if collapsed.
    const std::vector<float>& triangle_stretch() const { return triangle_stretch_; }
    /// Texels per unit of length per triangle, relative to the layout's mean; 0 if collapsed.
    const std::vector<float>& triangle_density() const { return triangle_density_; }
    /// Chart outlines, chart by chart. Shape: u0 v0 u1 v1 per edge; charts + 1 entries, the first
    /// edge of each chart.
    const std::vector<float>& outline() const { return outline_; }
    const std::vector<uint32_t>& outline_begin() const { return outline_begin_; }
    /// Edges between two polygons along which the UVs are cut. Shape: 6 floats per edge, object
    /// space.
    const std::vector<float>& seams() const { return seams_; }
    const std::vector<UvChart>& charts() const { return charts_; }

    double coverage() const { return coverage_; }           ///< of the unit square, 0..1
    double worst_stretch() const { return worst_stretch_; } ///< maximum over charts, 0..1
    double l2_stretch() const { return l2_stretch_; }       ///< of the whole layout, >= 1
    double density() const { return density_; }             ///< mean, texels per unit of length
    uint32_t unmapped() const { return unmapped_; }         ///< triangles without UVs

    /// The first triangle that contains a point of the texture, and its chart; k_none if none.
    uint32_t triangle_at(double u, double v) const;
    uint32_t chart_at(double u, double v) const;
    /// The polygons of a chart, ascending.
    std::vector<uint32_t> polygons_of(uint32_t chart) const;
    /// One polygon of every chart of a list, ascending.
    std::vector<uint32_t> one_polygon_each(const std::vector<uint32_t>& charts) const;
    /// The chart with the most stretch; k_none if there are no charts.
    uint32_t worst_chart() const;
    /// Bounds of all charts; the unit square if there are none.
    const UvBox& box() const { return box_; }

private:
    void fill_triangles(const measure::Layout& layout);
    void fill_charts(const measure::Layout& layout, const measure::Texture& texture);
    void fill_stretch(const std::vector<measure::TriangleMap>& maps,
                      const measure::StretchSum& whole);
    void fill_order();
    void fill_outline(const measure::ChartTable& table);
    void fill_seams(const measure::Layout& layout, const measure::ChartTable& table);
    void fill_box();
    void fill_grid();
    template <class Put>
    void visit_cells(Put put) const;
    bool contains(uint32_t triangle, double u, double v) const;
    int cell(double value, int axis) const;

    std::vector<uint32_t> triangle_chart_, triangle_polygon_;
    std::vector<float> points_, uvs_, triangle_stretch_, triangle_density_, outline_, seams_;
    std::vector<uint32_t> by_chart_, chart_begin_, outline_begin_;
    std::vector<UvChart> charts_;
    double coverage_ = 0.0, worst_stretch_ = 0.0, l2_stretch_ = 1.0, density_ = 0.0;
    uint32_t unmapped_ = 0;
    UvBox box_;
    /// Uniform grid over box() for picking; triangles grouped by cell.
    int grid_side_ = 0;
    std::vector<uint32_t> cell_start_, cell_triangles_;
};

} // namespace window
