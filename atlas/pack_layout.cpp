#include "atlas/pack_layout.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Cosine and sine of i * 22.5 degrees, 0 <= i < 4.
constexpr Turn k_fine_turns[4] = {{1, 0},
                                  {0.92387953251128675613, 0.38268343236508977173},
                                  {0.70710678118654752440, 0.70710678118654752440},
                                  {0.38268343236508977173, 0.92387953251128675613}};

/// The grid may grow to this many times the page before a layout gives up.
constexpr double k_overflow = 1.5;

Turn quarter_turns(Turn t, uint32_t quarters) {
    for (uint32_t i = 0; i < quarters % 4; ++i)
        t = {-t.sine, t.cosine};
    return t;
}

} // namespace

Page make_page(double width, double height, double gutter, double cells, bool turned) {
    Page page;
    page.gutter = gutter;
    page.turned = turned;
    page.span = width;
    if (turned)
        std::swap(width, height);
    width += gutter;
    height += gutter;
    page.density = cells / std::sqrt(width * height);
    page.width = uint32_t(width * page.density * (1 - 1e-12));
    page.height = uint32_t(height * page.density * (1 - 1e-12));
    return page;
}

void MaskSet::reset(const Page& page, double scale, uint32_t turns) {
    scale_ = scale * page.density;
    radius_ = page.gutter / 2 * page.density + outlines_.tolerance * scale_;
    turns_ = turns;
    masks_.assign(outlines_.shapes.size() * turns, Mask());
}

Turn MaskSet::turn_of(uint32_t chart, uint32_t turn) const {
    const Vec2 axis = outlines_.shapes[chart].axis;
    const Turn fine = k_fine_turns[turn / 4];
    const Turn base{axis.x * fine.cosine + axis.y * fine.sine,
                    axis.x * fine.sine - axis.y * fine.cosine};
    return quarter_turns(base, turn % 4);
}

const Mask& MaskSet::mask(uint32_t chart, uint32_t turn) {
    Mask& mask = masks_[size_t(chart) * turns_ + turn];
    if (mask.width == 0)
        draw_mask(outlines_, outlines_.shapes[chart], turn_of(chart, turn), scale_, radius_, mask);
    return mask;
}

Layout lay_out(MaskSet& masks, const Page& page, double scale, const Plan& plan, Field& field) {
    Layout layout;
    layout.scale = scale;
    layout.slots.resize(masks.outlines().shapes.size());
    masks.reset(page, scale, plan.turns);
    uint32_t largest_square = 0;
    double needed = 0, placed = 0;
    for (uint32_t chart : plan.order) {
        const Mask& mask = masks.mask(chart, 0);
        needed += mask.cells;
        for (uint32_t turn = 0; turn < plan.turns; ++turn)
            largest_square = std::max(largest_square, masks.mask(chart, turn).square_level);
    }
    field.reset(page.width, uint32_t(page.height * k_overflow) + 1, page.width, largest_square);
    uint32_t used = 0;
    for (uint32_t chart : plan.order) {
        Slot& slot = layout.slots[chart];
        const Mask* chosen = nullptr;
        uint32_t top = field.height();
        for (uint32_t turn = 0; turn < plan.turns; ++turn) {
            const Mask& mask = masks.mask(chart, turn);
            const Spot spot = field.find(mask, 0, top);
            if (!spot.found)
                continue;
            const uint32_t edge = spot.y + mask.height;
            if (chosen != nullptr && edge >= top)
                continue;
            chosen = &mask;
            slot = {masks.turn_of(chart, turn), mask.origin, spot.x, spot.y, turn};
            top = edge;
        }
        if (chosen == nullptr) {
            layout.height = field.height() * std::max(1.0, needed / std::max(1.0, placed));
            return layout;
        }
        field.place(*chosen, slot.x, slot.y);
        placed += chosen->cells;
        used = std::max(used, top);
    }
    layout.height = used;
    layout.complete = used <= page.height;
    return layout;
}

void write_placements(const Layout& layout, const Page& page, std::vector<Placement>& placements) {
    placements.assign(layout.slots.size(), Placement());
    for (size_t i = 0; i < layout.slots.size(); ++i) {
        const Slot& slot = layout.slots[i];
        const Vec2 at = (Vec2{double(slot.x), double(slot.y)} - slot.origin) * (1 / page.density) -
                        Vec2{page.gutter / 2, page.gutter / 2};
        if (page.turned)
            placements[i] = {-slot.turn.sine, slot.turn.cosine, page.span - at.y, at.x};
        else
            placements[i] = {slot.turn.cosine, slot.turn.sine, at.x, at.y};
    }
}

} // namespace tessora::atlas
