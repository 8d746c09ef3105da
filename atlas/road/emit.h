/// Emission: converts placed charts to the arrays that the caller receives.
///
/// Triangles keep their order and corner order. A source vertex becomes one new vertex per
/// corner class (corners joined by glued edges inside one chart); new vertices are ordered
/// by source vertex, then by the first corner of the class. Source vertices that no triangle
/// uses are dropped.
#pragma once

#include "atlas/atlas.h"
#include "atlas/pack/pack.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// The flattened charts, as packing sees them too.
/// Shape: indices[3*nt], corner_class[3*nt], class_uv[2*classes] (x, y), chart[nt],
///        chart_stretch[charts], chart_over_limit[charts] or empty.
/// All corners of a class name the same source vertex and lie in the same chart; class numbers are
/// in 0..classes-1, in any order.
struct EmitCharts {
    Span<uint32_t> indices;
    Span<uint32_t> corner_class;
    Span<double> class_uv;
    Span<uint32_t> chart;
    Span<double> chart_stretch;     ///< 1 - 1/L2 per chart; below 1e-6 is reported as 0
    Span<uint8_t> chart_over_limit; ///< non-zero: the chart's triangles go to over_limit
};

/// Fills `result` with placed charts: isotropic coordinates in units of the longer texture side,
/// within [0, width/M] x [0, height/M] and never above 1.
/// Rounding: positively oriented triangles stay so in the returned coordinates and in the caller's
/// final ones if nudging their vertices can achieve it; otherwise they are listed in `result.lost`.
void emit(const EmitCharts& charts, const Packing& packing, const PackOptions& options,
          Result& result);

/// Fills `result` with every chart in its own coordinates, moved so that its lower left corner is
/// the origin; for a partition without packing. Fills `lost` as emit() does.
void emit_unpacked(const EmitCharts& charts, Result& result);

/// Fills `result` with coordinates that the caller has computed: `exact[2*classes]`, from 0 to
/// 2^24 * step, are rounded to multiples of `step`. Triangles of either orientation keep it if
/// nudging their vertices can achieve that; the others are listed in `lost`.
void emit_at(const EmitCharts& charts, const std::vector<double>& exact, double step,
             Result& result);

} // namespace tessora::atlas
