/// From charts in the making to what packing and emission want: dense numbers, a common scale, and
/// the whole mesh, copies of sheets and loose triangles included.
#pragma once

#include "atlas/charts/chart_set.h"
#include "atlas/geometry/sheets.h"
#include "atlas/road/emit.h"

namespace tessora::atlas {

/// Shape: corner_class[3*nt], chart[nt], class_uv[2*classes], and per chart: its stretch, whether
/// it is over the limit, edges[2*edge_begin[c]..2*edge_begin[c+1]] as pairs of classes with the
/// inside on the left, and the chart whose place it shares (itself, unless stacked).
struct FinishedCharts {
    std::vector<uint32_t> corner_class, chart;
    std::vector<double> class_uv, chart_stretch;
    std::vector<double> worst_l2; ///< per chart that was laid out: L2 along the worse diagonals
    std::vector<uint8_t> over_limit;
    std::vector<uint32_t> edges, edge_begin = {0};
    std::vector<uint32_t> place;
    std::vector<uint32_t> by_shape; ///< set by follow_sheets: the charts in an order that does not
                                    ///< depend on how the mesh numbers its triangles

    uint32_t chart_count() const { return uint32_t(chart_stretch.size()); }
    EmitCharts to_emit(const Mesh& mesh) const;
};

/// Charts are numbered by their first triangle, classes by their first corner; every chart is
/// scaled so that its area is `unit` squared times that of its triangles in space.
FinishedCharts finish_charts(const ChartSet& set, double limit, double unit, ParallelFor executor);

/// Extends the charts of the triangles that were laid out to all of the mesh. `surface` is that of
/// the former. Gives, with `charts` as they were, the copies that their sheet's charts do not
/// serve: divided otherwise, a triangle would be flipped or a chart beyond the limit. Normally
/// none.
std::vector<uint32_t> follow_sheets(const Mesh& mesh, const Surface& surface, const Sheets& sheets,
                                    const Options& options, FinishedCharts& charts);

/// Packs every chart, in the order by shape, but those that share another's place, which get its
/// placement.
Packing pack_finished(const FinishedCharts& charts, const PackOptions& options);

/// Reports the stretch of the returned coordinates where rounding has changed it visibly: needles
/// that are squeezed to a few steps of single precision have another width afterwards.
void report_rounded_stretch(const Mesh& mesh, Result& result, ParallelFor executor = nullptr);

/// The caller's adjacency with every chart border opened.
std::vector<uint32_t> open_adjacency(const Mesh& mesh, const ChartSet& set, const Sheets& sheets,
                                     const FinishedCharts& charts);

} // namespace tessora::atlas
