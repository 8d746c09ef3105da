/// Greedy layouts: charts put down one after another, each where its upper edge ends lowest.
#pragma once

#include "atlas/pack_field.h"
#include "atlas/pack_outline.h"

#include <cstdint>
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
    uint32_t turn_index = 0;
};

struct Layout {
    double scale = 0;  ///< texels per chart unit
    double height = 0; ///< cells used or, when charts were left over, an estimate of the need
    bool complete = false;
    std::vector<Slot> slots; ///< per chart
};

/// Masks of all charts in several turns at one scale, drawn when first needed.
class MaskSet {
public:
    explicit MaskSet(const Outlines& outlines) : outlines_(outlines) {}
    void reset(const Page& page, double scale, uint32_t turns);
    const Mask& mask(uint32_t chart, uint32_t turn);
    Turn turn_of(uint32_t chart, uint32_t turn) const;
    uint32_t turns() const { return turns_; }
    const Outlines& outlines() const { return outlines_; }

private:
    const Outlines& outlines_;
    std::vector<Mask> masks_;
    double scale_ = 0, radius_ = 0;
    uint32_t turns_ = 0;
};

/// How a layout is to be made.
struct Plan {
    std::vector<uint32_t> order; ///< charts in the order of placing
    uint32_t turns = 4;          ///< turns tried per chart: own axis + i * 90 degrees, then finer
};

/// Puts all charts down at `scale`. The field may grow past the page's height, so that a layout
/// that does not fit tells by how much.
Layout lay_out(MaskSet& masks, const Page& page, double scale, const Plan& plan, Field& field);

/// The layout's placements in texels of the inner rectangle.
void write_placements(const Layout& layout, const Page& page, std::vector<Placement>& placements);

} // namespace tessora::atlas
