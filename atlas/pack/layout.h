/// Greedy layouts: charts are placed one after another, each where its centre of mass lies lowest.
#pragma once

#include "atlas/pack/chains.h"
#include "atlas/pack/field.h"
#include "atlas/parallel.h"

#include <array>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace tessora::atlas {

/// The grid of cells that charts are placed on. It covers the inner rectangle widened by half the
/// gutter on every side, because masks are widened by half the gutter too.
///
/// Several tiles lie one above the other, with a row of taken cells between them.
struct Page {
    double gutter = 0;        ///< texels, from safe_gutter()
    double density = 1;       ///< cells per texel
    uint32_t width = 0;       ///< cells
    uint32_t height = 0;      ///< cells, of all tiles with the rows between them
    uint32_t tile_height = 0; ///< cells
    bool turned = false;      ///< grid rows run along the texture's y axis
    double span = 0;          ///< width of the room in texels
    Mask fence;               ///< a full row; empty with one tile
    std::vector<Mask> taken;  ///< per tile that has kept charts: their cells, of the tile's size
    std::vector<uint32_t> taken_tile;
};

/// Covers a room with about cells * cells cells whatever its proportions, so that long and square
/// textures cost the same; the kept ones of `chains` are drawn into it.
Page make_page(const PackRoom& room, const ChartChains& chains, uint32_t tiles, double cells,
               bool turned);

/// Where one chart was placed: cell = scale * density * turned point - origin + (x, y).
struct Slot {
    Turn turn;
    Vec2 origin;
    uint32_t x = 0;
    uint32_t y = 0;
    uint8_t fine_turn = 0; ///< what `turn` was made of: multiples of 11.25 degrees
    uint8_t quarter = 0;   ///< and quarter turns
    Vec2 centre;           ///< of the mask's box, in cells of the page
};

struct Layout {
    double scale = 0;      ///< texels per chart unit
    double height = 0;     ///< rows used; if charts were left over, an estimate of the rows needed
    double mean_top = 0;   ///< mean row of the charts' upper edges, weighted by their cells
    bool complete = false; ///< every chart lies within the page
    std::vector<Slot> slots; ///< per chart
};

/// The order and rotations of a layout.
struct Plan {
    std::vector<uint32_t> order;    ///< charts in the order of placing
    std::vector<uint8_t> fine_turn; ///< per chart: multiples of 11.25 degrees
    uint32_t quarters = 4;          ///< quarter turns that a layout tries on top
    bool skip_full_rows = false;    ///< skip rows where charts of about the same size did not fit
};

/// Masks of all charts at one scale, drawn on first use, or all at once. Those of many charts are
/// not kept: they are drawn block by block, just before they are placed.
class MaskSet {
public:
    /// A rotation of a chart is a fine turn followed by quarter turns.
    static constexpr uint32_t k_quarters = 4, k_fine = 8;
    using Quarters = std::array<Mask, k_quarters>;

    explicit MaskSet(const ChartChains& chains, ParallelFor executor = nullptr)
        : chains_(chains), executor_(executor) {}
    void reset(const Page& page, double scale);
    /// Draws the masks that a layout of many charts reads first, on the executor if there is one.
    void draw(const Plan& plan);
    /// Draws all masks of a plan. Layouts of such plans may be made at the same time.
    void draw_all(const Plan& plan);
    const Mask& mask(const Plan& plan, uint32_t chart, uint32_t quarter);
    /// The masks of a chart in all of the plan's quarter turns, which have been drawn.
    const Quarters& drawn(const Plan& plan, uint32_t chart) const {
        return *masks_[size_t(chart) * k_fine + plan.fine_turn[chart]];
    }
    /// Whether the masks of a plan come from next().
    static bool are_passing(const Plan& plan) { return plan.order.size() > k_most_kept; }
    /// The masks of chart `number` of the order in the plan's quarter turns; to be called for 0, 1,
    /// 2...
    const Quarters& next(const Plan& plan, size_t number);
    /// At least as large as the mask of a chart in any of the plan's quarter turns: the longer and
    /// the shorter side.
    std::pair<uint32_t, uint32_t> largest_size(const Plan& plan, uint32_t chart) const;
    Turn turn_of(const Plan& plan, uint32_t chart, uint32_t quarter) const;
    /// The slot of a chart whose mask's lower left cell is (x, y).
    Slot slot(const Plan& plan, uint32_t chart, uint32_t quarter, const Mask& mask, uint32_t x,
              uint32_t y) const;
    double scale() const { return texel_scale_; }
    const ChartChains& chains() const { return chains_; }

private:
    /// The local search, which needs masks again and again, has fewer charts.
    static constexpr size_t k_most_kept = 1000;

    const Mask& mask(const Plan& plan, uint32_t chart, uint32_t quarter, MaskWork& work);
    void draw_block(const Plan& plan, size_t begin);

    const ChartChains& chains_;
    const ParallelFor executor_;
    /// Per chart and fine turn; null before its first use. Masks of width 0 are not drawn yet at
    /// this scale, but have their memory from former ones.
    std::vector<std::unique_ptr<Quarters>> masks_;
    std::vector<Quarters> block_; ///< of the charts that next() serves
    MaskWork work_;
    WorkspacePool<MaskWork> works_{work_};
    double texel_scale_ = 0, scale_ = 0, radius_ = 0;
    bool drawn_ = false; ///< draw() was called at this scale
};

/// Makes layouts; keeps its memory between them.
class LayoutMaker {
public:
    /// `goes_on` is called often while charts are placed; if it returns false the layout is given
    /// up.
    explicit LayoutMaker(std::function<bool()> goes_on) : goes_on_(std::move(goes_on)) {}
    /// Places the plan's charts. The grid may grow beyond the page, so that a layout that does not
    /// fit says by how much. Gives up, returning an infinite height, as soon as height + mean_top
    /// is certain to exceed `max_cost`, or when asked to stop.
    Layout make(MaskSet& masks, const Page& page, const Plan& plan,
                double max_cost = std::numeric_limits<double>::infinity());
    /// Words of bitmaps read by all layouts so far: a reproducible measure of effort.
    uint64_t effort() const { return field_.effort(); }

private:
    /// Bounds that hold for all charts not yet placed.
    struct Remaining {
        uint32_t run_level = 0, square_level = 0; ///< maxima over the remaining masks
        double min_tops = 0; ///< lower bound of the sum of their upper edges, weighted by cells
    };
    /// Masks count as the same size if width and height agree within an eighth.
    static constexpr uint32_t k_steps = 8, k_buckets = 128;

    /// Asks at every 256th of the numbers 0, 1, 2...
    bool is_stopped_at(size_t number) const { return number % 256 == 0 && !goes_on_(); }
    double look_ahead(MaskSet& masks, const Plan& plan);
    double bound_sizes(const MaskSet& masks, const Plan& plan);
    double cells_from(MaskSet& masks, const Plan& plan, size_t number);
    void place_all(MaskSet& masks, const Plan& plan, double needed, double max_cost,
                   Layout& layout);
    void open(const Page& page);
    const Mask* place(const MaskSet& masks, const MaskSet::Quarters& turns, const Plan& plan,
                      uint32_t chart, Slot& slot);
    /// The first row worth searching for masks of about this size: rows where one of them did not
    /// fit are assumed to be full for all.
    uint32_t& start_row(const Mask& mask);

    std::function<bool()> goes_on_;
    Field field_;
    std::vector<Remaining> remaining_; ///< entry i: charts i and later in the order
    std::vector<uint32_t> start_rows_;
    bool passing_ = false; ///< MaskSet::are_passing()
};

/// Converts a layout to placements in texels of the inner rectangle.
void write_placements(const Layout& layout, const Page& page, std::vector<Placement>& placements);

} // namespace tessora::atlas
