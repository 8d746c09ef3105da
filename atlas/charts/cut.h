/// Cutting for the texture: cuts charts in two where that lets all charts grow.
///
/// One chart that is long, or bent around much empty space, limits the scale of the whole atlas.
/// Half of a legal chart needs no solving: it keeps its coordinates.
#pragma once

#include "atlas/charts/cut_lines.h"
#include "atlas/charts/smooth.h"

#include <algorithm>
#include <functional>

namespace tessora::atlas {

/// Cuts charts in two and can undo its cuts in reverse order.
class ChartCutter {
public:
    /// `planes` are made of whole atoms; see find_planes.
    ChartCutter(Flattener& flattener, const Atoms& atoms, const Components& planes,
                BorderSmoother& smoother);
    /// Where a cut may run.
    enum class Between { planes, polygons };
    /// Cuts a chart along a line and smooths the cut. The second half becomes the last chart of the
    /// set. False, with nothing changed, if the halves are not two legal charts.
    bool cut(uint32_t chart, const CutLine& line, Between parts);
    /// The same, between planes if that makes two legal charts.
    bool cut(uint32_t chart, const CutLine& line) {
        return cut(chart, line, Between::planes) ||
               (has_planes() && cut(chart, line, Between::polygons));
    }
    /// The same across the chart's principal axis, through the middle of its area.
    bool cut(uint32_t chart) { return cut(chart, middle_line(chart)); }
    /// Whether any plane is more than a polygon.
    bool has_planes() const { return planes_.count < atoms_.count; }
    /// The length of the latest cut in space, with what runs through planes counted `worth` times.
    double cut_length(double worth) const;
    /// The line through the chart's centroid, across its principal axis or the given one.
    CutLine middle_line(uint32_t chart) const;
    CutLine middle_line(uint32_t chart, Vec2 axis) const;
    /// Rejoins the two halves of the latest cut that was neither undone nor accepted.
    void undo();
    /// Makes all cuts so far permanent.
    void accept() { cuts_.clear(); }
    const ChartSet& set() const { return set_; }

private:
    /// A chart as it was before its cut.
    struct Cut {
        uint32_t chart;
        Chart before;
        std::vector<uint32_t> node; ///< of its triangles' corners, three each
        std::vector<uint8_t> glued; ///< the same
        std::vector<Vec2> uv;       ///< of the corners that nodes are named after, in order
    };
    /// Connected sets of triangles on one side of the cut.
    struct Pieces {
        std::vector<uint32_t> of_face; ///< per triangle, for the chart being cut
        std::vector<double> area;
        std::vector<uint8_t> side;
    };
    Vec2 centroid(uint32_t t) const;
    void choose_sides(const Chart& chart, const CutLine& line, const Components& parts);
    bool connect_sides(const Chart& chart);
    void find_pieces(const Chart& chart);
    void remember(uint32_t chart);
    void split(const Cut& cut);

    Flattener& flattener_;
    ChartSet& set_;
    const Atoms& atoms_;
    const Components& planes_;
    BorderSmoother& smoother_;
    std::vector<double> part_along_; ///< workspace of choose_sides; 0 between calls
    std::vector<uint8_t> side_;      ///< per triangle: half of the chart being cut, 0 or 1
    Pieces pieces_;
    std::vector<Cut> cuts_; ///< cuts that undo() can take back, oldest first
};

struct CutOptions {
    uint32_t max_charts = 0;     ///< limits the number of charts; 0: no limit
    bool always = false;         ///< also where the charts fill the texture well as they are
    int effort = k_usual_effort; ///< as in Options; the more, the less a cut must be worth
    double reluctance = 0;       ///< 0..1; the more, the more a cut must be worth
};

/// How many times its usual worth another chart must have.
inline double worth_of_charts(double reluctance) {
    constexpr double k_most = 5;
    return 1 + reluctance * (k_most - 1);
}

/// The coverage of the texture that `more` charts beside `charts` must gain: so much for twice as
/// many, and of that their share. Whatever trades charts for room asks this: cuts along lines,
/// halves, and the choice between two layouts.
inline double price_of_charts(double charts, double more, int effort, double reluctance) {
    constexpr double k_usual = 0.04, k_most_effort = 0.02;
    const double beyond = double(std::max(0, effort - k_usual_effort));
    const double of_doubling =
        k_usual + beyond / (k_max_effort - k_usual_effort) * (k_most_effort - k_usual);
    return of_doubling * worth_of_charts(reluctance) * more / charts;
}

/// Cuts charts for as long as that lets all charts grow by enough. `pack` lays out the current
/// charts and returns the share of the texture that they cover, or 0 if they do not fit or the
/// caller wants to stop; it is first called with the charts as they are, and not at all if no cut
/// can be worth it. Returns which call of `pack`, counted from 0, was for the charts that are left;
/// k_none if there was none.
uint32_t cut_for_packing(ChartCutter& cutter, const CutOptions& options,
                         const std::function<double()>& pack);

} // namespace tessora::atlas
