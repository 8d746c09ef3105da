/// Greedy layouts: charts put down one after another, each where its middle lies lowest.
#pragma once

#include "atlas/pack/chains.h"
#include "atlas/pack/field.h"

#include <array>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

namespace tessora::atlas {

/// The grid that stands for the texture. The grid covers the inner rectangle widened by half the
/// gutter on every side, because masks are widened by half the gutter too.
struct Page {
    double gutter = 0;   ///< texels, the safe one
    double density = 1;  ///< cells per texel
    uint32_t width = 0;  ///< cells
    uint32_t height = 0; ///< cells
    bool turned = false; ///< rows run along the texture's y axis
    double span = 0;     ///< turned pages: texels from 0 to the texture's far side in x
};

/// Covers an inner rectangle of the given texels with about `cells` cells (the square root of their
/// number is given, so that long and square textures cost the same).
Page make_page(double width, double height, double gutter, double cells, bool turned);

/// One chart put down: cell = scale * density * turned point - origin + corner.
struct Slot {
    Turn turn;
    Vec2 origin;
    uint32_t x = 0;
    uint32_t y = 0;
};

struct Layout {
    double scale = 0;  ///< texels per chart unit
    double height = 0; ///< cells used or, when charts were left over, an estimate of the need
    double burden = 0; ///< mean upper edge of the charts, weighted by their cells, in cells
    bool complete = false;
    std::vector<Slot> slots; ///< per chart
};

/// How a layout is to be made.
struct Plan {
    std::vector<uint32_t> order; ///< charts in the order of placing
    std::vector<uint8_t> fine;   ///< per chart: its fine turn; all its quarter turns are tried
    bool hurry = false;          ///< do not look again where charts of about the same size failed
};

/// Masks of all charts at one scale, drawn when first needed.
class MaskSet {
public:
    /// Turns of a chart: fine ones times quarter turns.
    static constexpr uint32_t k_quarters = 4, k_fine = 8;

    explicit MaskSet(const Outlines& outlines) : outlines_(outlines) {}
    void reset(const Page& page, double scale);
    const Mask& mask(const Plan& plan, uint32_t chart, uint32_t quarter);
    Turn turn_of(const Plan& plan, uint32_t chart, uint32_t quarter) const;
    double scale() const { return texel_scale_; }
    const Outlines& outlines() const { return outlines_; }

private:
    using Quarters = std::array<Mask, k_quarters>;

    const Outlines& outlines_;
    std::vector<std::unique_ptr<Quarters>> masks_; ///< per chart and fine turn, once asked for
    double texel_scale_ = 0, scale_ = 0, radius_ = 0;
};

/// Makes layouts, one after another; keeps its memory between them.
class LayoutMaker {
public:
    /// Puts the plan's charts down. The field grows past the page's height if it must, so that a
    /// layout that does not fit tells by how much. Gives up, with an endless height, as soon as
    /// height and burden together are sure to exceed `most`.
    Layout make(MaskSet& masks, const Page& page, const Plan& plan,
                double most = std::numeric_limits<double>::infinity());
    /// Words looked at by all layouts so far: effort that no clock disturbs.
    uint64_t effort() const { return field_.effort(); }

private:
    struct Need {
        uint32_t run_level = 0, square_level = 0;
        double burden = 0; ///< what the rest adds to the sum of upper edges at least
    };
    /// Sizes count as the same within an eighth.
    static constexpr uint32_t k_steps = 8, k_buckets = 128;

    double look_ahead(MaskSet& masks, const Plan& plan);
    const Mask* place(MaskSet& masks, const Plan& plan, uint32_t chart, Slot& slot);
    /// Where to start looking for masks of about this size: what was full for one of them is taken
    /// to be full for all.
    uint32_t& start_row(const Mask& mask);

    Field field_;
    std::vector<Need> needs_; ///< per place in the order: the largest from there on
    std::vector<uint32_t> start_rows_;
};

/// The layout's placements in texels of the inner rectangle.
void write_placements(const Layout& layout, const Page& page, std::vector<Placement>& placements);

} // namespace tessora::atlas
