/// Cuts charts in two where the texture becomes fuller by it.
///
/// One chart that is long, or bent around much empty space, sets the scale of the whole atlas. Half
/// of a legal chart needs no solving: it keeps its coordinates.
#pragma once

#include "atlas/charts/smooth.h"

#include <functional>

namespace tessora::atlas {

/// Takes charts apart, and puts them together again, last first.
class ChartCutter {
public:
    ChartCutter(Flattener& flattener, const Atoms& atoms, BorderSmoother& smoother);
    /// Cuts a chart across its long axis, between polygons, through the middle of its area, and
    /// straightens the cut. The second half becomes the last chart. False, with everything as it
    /// was, when the halves are not two legal charts.
    bool cut(uint32_t chart);
    /// Makes the two halves of the last cut that is left one chart again.
    void undo();
    /// Lets all cuts stay.
    void accept() { cuts_.clear(); }

private:
    struct Corner {
        uint32_t node;
        Vec2 uv;
        uint8_t glued;
    };
    /// A chart as it was before its cut.
    struct Cut {
        uint32_t chart;
        Chart before;
        std::vector<Corner> corners; ///< of its triangles, three each
    };
    void choose_sides(const Chart& chart);
    bool settle_sides(const Chart& chart);
    uint32_t mark_pieces(const Chart& chart);
    void remember(uint32_t chart);
    void split(const Cut& cut);

    Flattener& flattener_;
    ChartSet& set_;
    const Atoms& atoms_;
    BorderSmoother& smoother_;
    std::vector<double> atom_along_; ///< scratch of choose_sides; 0 at rest
    std::vector<uint8_t> side_;      ///< per triangle, of the chart at hand
    std::vector<uint32_t> piece_;    ///< per triangle: connected piece of its side
    std::vector<double> piece_area_;
    std::vector<uint8_t> piece_side_;
    std::vector<Cut> cuts_; ///< that undo() can take back
};

/// Cuts while a few more cuts let every chart grow by enough. `pack` lays the charts out as they
/// are and gives the scale they get, 0 when they do not fit or the caller wants to stop; `scale` is
/// that of the charts as they came. False when tries after the last layout that counts were taken
/// back, so that the charts have to be laid out once more.
bool cut_for_packing(Surface& surface, const Options& options, ChartSet& set, double scale,
                     const std::function<double()>& pack);

} // namespace tessora::atlas
