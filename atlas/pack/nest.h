/// Nesting: lets charts overlap and moves them apart, one at a time, until nothing overlaps.
///
/// A greedy layout cannot take a place back. Here all charts stay on the page, those that overlap
/// others move to where they overlap least, and overlaps that persist weigh more and more.
/// Sources: J. Egeblad, B. Nielsen, A. Odgaard, "Fast neighborhood search for two- and
///          three-dimensional nesting problems", 2007: overlap as the cost, guided local search;
///          S. Umetani, S. Murakami, "Coordinate descent heuristics for the irregular strip packing
///          problem of rasterized shapes", 2022: charts as bitmaps.
#pragma once

#include "atlas/pack/layout.h"
#include "atlas/pack/random.h"

namespace tessora::atlas {

/// A chart on the page: how it is turned and the lower left cell of its mask.
struct Pose {
    uint32_t chart = 0;
    uint8_t fine_turn = 0; ///< multiples of 11.25 degrees
    uint8_t quarter = 0;   ///< quarter turns on top
    int32_t x = 0, y = 0;
};

/// Cells (x, y) .. (x, y + length - 1) of a shape.
struct ColumnRun {
    int32_t x = 0, y = 0, length = 0;
};

/// A mask as its columns' runs.
struct NestShape {
    int32_t width = 0, height = 0;
    std::vector<ColumnRun> runs; ///< empty: not drawn yet
};

/// The weights of what lies on a part of the page, summed up so that the weight under a shape costs
/// two reads per run.
class OverlapMap {
public:
    /// Clears the cells x .. x + width - 1, y .. y + height - 1 of the page.
    void open(int32_t x, int32_t y, int32_t width, int32_t height);
    /// Adds a weight for every cell of a shape that lies in the window.
    void add(const NestShape& shape, int32_t x, int32_t y, int32_t weight);
    /// To be called between the last add() and the first question.
    void close();
    bool holds(const NestShape& shape, int32_t x, int32_t y) const {
        return x >= x_ && y >= y_ && x + shape.width <= x_ + width_ &&
               y + shape.height <= y_ + height_;
    }
    /// The weight under a shape that lies in the window.
    int64_t under(const NestShape& shape, int32_t x, int32_t y) const;
    /// The position with the least weight under a shape, lowest first, then leftmost. Returns the
    /// weight, or the largest number if the shape is too large.
    int64_t find_least(const NestShape& shape, int32_t& x, int32_t& y);
    /// The map of this closed window with every `factor` x `factor` cells as one.
    void shrink(int32_t factor, OverlapMap& out) const;
    /// Reproducible measure of the work so far, in about the unit of Field::effort().
    uint64_t effort() const { return effort_; }

private:
    const int32_t* row(int32_t y) const { return &sums_[size_t(y) * size_t(width_)]; }
    int32_t* row(int32_t y) { return &sums_[size_t(y) * size_t(width_)]; }

    int32_t x_ = 0, y_ = 0, width_ = 0, height_ = 0;
    std::vector<int32_t> sums_; ///< height_ + 1 rows; per column the sum of all weights below
    std::vector<int32_t> weights_, under_; ///< workspaces of a row
    mutable uint64_t effort_ = 0;
};

/// Moves charts on a page at one scale. Its charts are those of `poses`.
class Nester {
public:
    /// `goes_on` is called often; if it returns false, the work stops.
    Nester(MaskSet& masks, const Page& page, size_t charts, std::function<bool()> goes_on);
    /// Takes the charts as drawn at the masks' present scale; each keeps its centre (in texels) as
    /// far as the page allows. False if a chart is larger than the page.
    bool start(const std::vector<Pose>& poses, const std::vector<Vec2>& centres);
    /// Moves charts until at most `tolerance` cells are covered twice, or until `patience` rounds
    /// in a row brought no gain, and returns whether that was reached; poses() are the best seen.
    /// `everywhere`: charts may move to any place, turned; otherwise only by a few cells.
    bool separate(int64_t tolerance, int patience, bool everywhere);
    /// Exchanges the places of two charts.
    void swap_two();
    const std::vector<Pose>& poses() const { return poses_; }
    std::vector<Vec2> centres();
    /// The present places as a layout; complete if nothing overlaps.
    Layout layout();
    uint64_t effort() const { return map_.effort() + coarse_.effort() + effort_; }

private:
    struct Found {
        uint32_t i, j;
        int64_t cells;
    };
    const Mask& mask(const Pose& pose);
    const NestShape& shape(const Pose& pose, bool coarse = false);
    void place_at(Pose& pose, Vec2 centre);
    int64_t shared_cells(const Pose& a, const Pose& b);
    int64_t find_overlaps();
    void raise_weights();
    void move(uint32_t i, bool everywhere);
    void open_map(uint32_t i, bool everywhere);
    int64_t descend(Pose& pose, int64_t cost, int32_t step);
    int64_t look_everywhere(Pose& pose, int64_t cost);

    MaskSet& masks_;
    const Page& page_;
    const std::function<bool()> goes_on_;
    Plan plan_; ///< tells masks_ the fine turns
    std::vector<Pose> poses_;
    /// Per chart and turn: its shape, and the same on a grid coarser by k_coarse.
    std::vector<NestShape> shapes_, coarse_shapes_;
    OverlapMap map_, coarse_;
    std::vector<Found> found_;
    std::vector<int32_t> weight_; ///< per pair of charts
    std::vector<uint32_t> moving_;
    Random random_;
    uint64_t effort_ = 0;
};

} // namespace tessora::atlas
