/// What the UV panel draws and picks from: a mesh's triangles in space and in the texture, the
/// charts they form, and how much each is stretched.
///
/// Made once per mesh and UV set and then only read. Triangles without UVs belong to no chart and
/// are left out of everything that lies in the texture.
#pragma once

#include "host/mesh/mesh.h"
#include "measure/charts.h"
#include "measure/stretch.h"

#include <cstdint>
#include <vector>

namespace window {

inline constexpr uint32_t k_none = measure::k_none;

/// A box in the texture, in UVs.
struct UvBox {
    double low[2] = {0.0, 0.0};
    double high[2] = {1.0, 1.0};
};

struct UvChart {
    uint32_t triangles = 0;
    double stretch = 0.0; ///< share of sampling rate lost, 0..1
    double area = 0.0;    ///< share of the unit square
    UvBox box;
};

class UvMap {
public:
    UvMap() = default;
    /// `set`: position of the UV set, -1 for a mesh without any (then there is no chart).
    /// Cost: near-linear in triangles.
    UvMap(const host::Mesh& mesh, int set, const measure::Texture& texture);

    uint32_t triangle_count() const { return static_cast<uint32_t>(triangle_chart_.size()); }
    /// Per triangle: its chart or k_none; its polygon.
    const std::vector<uint32_t>& triangle_chart() const { return triangle_chart_; }
    const std::vector<uint32_t>& triangle_polygon() const { return triangle_polygon_; }
    /// 9 per triangle, object space; 6 per triangle, UVs (0 where there are none).
    const std::vector<float>& points() const { return points_; }
    const std::vector<float>& uvs() const { return uvs_; }
    /// L2 stretch of a triangle at the layout's mean density, 1 = even; 0 when it is collapsed.
    const std::vector<float>& triangle_stretch() const { return triangle_stretch_; }
    /// Chart outlines: u0 v0 u1 v1 per edge, and the chart of each.
    const std::vector<float>& outline() const { return outline_; }
    const std::vector<uint32_t>& outline_chart() const { return outline_chart_; }
    const std::vector<UvChart>& charts() const { return charts_; }

    double coverage() const { return coverage_; }           ///< of the unit square, 0..1
    double worst_stretch() const { return worst_stretch_; } ///< of a chart, share lost, 0..1
    double l2_stretch() const { return l2_stretch_; }       ///< of the whole layout, >= 1
    uint32_t unmapped() const { return unmapped_; }         ///< triangles without UVs

    /// The triangle at a place in the texture, k_none if there is none; of several the first.
    uint32_t triangle_at(double u, double v) const;
    /// Its chart, k_none if there is none.
    uint32_t chart_at(double u, double v) const;
    /// The box around all charts; the unit square when there are none.
    const UvBox& box() const { return box_; }

private:
    void fill_triangles(const measure::Layout& layout);
    void fill_charts(const measure::Layout& layout, const measure::Texture& texture);
    void fill_stretch(const std::vector<measure::TriangleMap>& maps,
                      const measure::StretchSum& whole);
    void fill_outline(const measure::ChartTable& table);
    void fill_box();
    void fill_grid();
    template <class Put>
    void visit_cells(Put put) const;
    bool holds(uint32_t triangle, double u, double v) const;
    int cell(double value, int axis) const;

    std::vector<uint32_t> triangle_chart_, triangle_polygon_;
    std::vector<float> points_, uvs_, triangle_stretch_, outline_;
    std::vector<uint32_t> outline_chart_;
    std::vector<UvChart> charts_;
    double coverage_ = 0.0, worst_stretch_ = 0.0, l2_stretch_ = 1.0;
    uint32_t unmapped_ = 0;
    UvBox box_;
    /// Triangles by the cells of a square grid over box(), for picking.
    int grid_side_ = 0;
    std::vector<uint32_t> cell_start_, cell_triangles_;
};

} // namespace window
