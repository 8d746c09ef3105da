#include "atlas/pack/layout.h"

#include "atlas/parallel.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Cosine and sine of i * 11.25 degrees.
constexpr Turn k_fine_turns[MaskSet::k_fine] = {{1, 0},
                                                {0.98078528040323044913, 0.19509032201612826785},
                                                {0.92387953251128675613, 0.38268343236508977173},
                                                {0.83146961230254523708, 0.55557023301960222474},
                                                {0.70710678118654752440, 0.70710678118654752440},
                                                {0.55557023301960222474, 0.83146961230254523708},
                                                {0.38268343236508977173, 0.92387953251128675613},
                                                {0.19509032201612826785, 0.98078528040323044913}};

/// The grid may grow to this many times the page before a layout gives up.
constexpr double k_overflow = 1.5;

constexpr double k_infinite = std::numeric_limits<double>::infinity();

/// Masks that are drawn together on the executor.
constexpr size_t k_at_once = 32;

Turn quarter_turns(Turn t, uint32_t quarters) {
    for (uint32_t i = 0; i < quarters % 4; ++i)
        t = {-t.sine, t.cosine};
    return t;
}

/// Draws the kept charts into the page's tiles.
void draw_kept(const ChartChains& chains, Page& page) {
    // The inverse of what write_placements() does.
    const Turn turn = page.turned ? Turn{0, -1} : Turn{1, 0};
    const double half = page.gutter / 2 * page.density;
    const Vec2 shift{half, half + (page.turned ? page.span * page.density : 0)};
    MaskWork work;
    for (const ChartShape& shape : chains.shapes) {
        if (!shape.kept || shape.chain_begin == shape.chain_end)
            continue;
        size_t i = 0;
        while (i < page.taken_tile.size() && page.taken_tile[i] != shape.tile)
            ++i;
        if (i == page.taken_tile.size()) {
            Mask empty;
            empty.width = page.width;
            empty.height = page.tile_height;
            empty.words = (empty.width + 63) / 64;
            empty.bits.assign(size_t(empty.words) * empty.height, 0);
            page.taken_tile.push_back(shape.tile);
            page.taken.push_back(std::move(empty));
        }
        draw_in_place(chains, shape, turn, page.density, shift, half, page.taken[i], work);
    }
}

} // namespace

Page make_page(const PackRoom& room, const ChartChains& chains, uint32_t tiles, double cells,
               bool turned) {
    Page page;
    page.gutter = room.gutter;
    page.turned = turned;
    page.span = room.width;
    double width = room.width + room.gutter, height = room.height + room.gutter;
    if (turned)
        std::swap(width, height);
    // Many tiles share the cells of four.
    page.density = cells / std::sqrt(width * height * std::max(1.0, tiles / 4.0));
    page.width = uint32_t(width * page.density * (1 - 1e-12));
    page.tile_height = uint32_t(height * page.density * (1 - 1e-12));
    page.height = tiles * (page.tile_height + 1) - 1;
    if (tiles > 1) {
        page.fence.width = page.width;
        page.fence.height = 1;
        page.fence.words = (page.width + 63) / 64;
        page.fence.bits.assign(page.fence.words, ~uint64_t(0));
        page.fence.bits.back() >>= page.fence.words * 64 - page.width;
    }
    draw_kept(chains, page);
    return page;
}

void MaskSet::reset(const Page& page, double scale) {
    texel_scale_ = scale;
    scale_ = scale * page.density;
    radius_ = page.gutter / 2 * page.density + chains_.tolerance * scale_;
    for (const std::unique_ptr<Quarters>& slot : masks_)
        if (slot != nullptr)
            for (Mask& mask : *slot)
                mask.width = 0;
    drawn_ = false;
}

void MaskSet::draw(const Plan& plan) {
    constexpr size_t k_many = 256;
    if (drawn_ || executor_ == nullptr || plan.order.size() < k_many)
        return;
    drawn_ = true;
    masks_.resize(chains_.shapes.size() * k_fine);
    parallel_for(executor_, (plan.order.size() + k_at_once - 1) / k_at_once, [&](size_t block) {
        const auto work = works_.lease([] { return std::make_unique<MaskWork>(); });
        const size_t end = std::min(plan.order.size(), (block + 1) * k_at_once);
        for (size_t i = block * k_at_once; i < end; ++i)
            for (uint32_t quarter = 0; quarter < plan.quarters; ++quarter)
                mask(plan, plan.order[i], quarter, *work);
    });
}

void MaskSet::draw_all(const Plan& plan) {
    for (uint32_t chart : plan.order)
        for (uint32_t quarter = 0; quarter < plan.quarters; ++quarter)
            mask(plan, chart, quarter);
}

/// Draws the masks that next() serves from chart `begin` of the order on.
void MaskSet::draw_block(const Plan& plan, size_t begin) {
    // Few enough for the caches, and enough to keep several threads busy.
    const size_t size = k_has_threads && executor_ != nullptr ? 32 * k_at_once : k_at_once;
    const size_t end = std::min(plan.order.size(), begin + size);
    block_.resize(size);
    parallel_for(executor_, (end - begin + k_at_once - 1) / k_at_once, [&](size_t part) {
        const auto work = works_.lease([] { return std::make_unique<MaskWork>(); });
        const size_t first = begin + part * k_at_once, last = std::min(end, first + k_at_once);
        for (size_t i = first; i < last; ++i) {
            const uint32_t chart = plan.order[i];
            Quarters& turns = block_[i - begin];
            draw_mask(chains_, chains_.shapes[chart], turn_of(plan, chart, 0), scale_, radius_,
                      turns[0], *work);
            for (uint32_t quarter = 1; quarter < plan.quarters; ++quarter)
                turn_mask(turns[0], quarter, turns[quarter], *work);
        }
    });
}

const MaskSet::Quarters& MaskSet::next(const Plan& plan, size_t number) {
    if (number == 0)
        block_.clear(); // may be of another scale
    const size_t in_block = block_.empty() ? 0 : number % block_.size();
    if (in_block == 0)
        draw_block(plan, number);
    return block_[in_block];
}

std::pair<uint32_t, uint32_t> MaskSet::largest_size(const Plan& plan, uint32_t chart) const {
    const ChartShape& shape = chains_.shapes[chart];
    double length = shape.length, width = shape.width;
    if (plan.fine_turn[chart] != 0)
        length = width = std::hypot(length, width);
    const auto cells = [&](double side) { return uint32_t(side * scale_ + 2 * radius_) + 3; };
    return {cells(std::max(length, width)), cells(std::min(length, width))};
}

Turn MaskSet::turn_of(const Plan& plan, uint32_t chart, uint32_t quarter) const {
    const Vec2 axis = chains_.shapes[chart].axis;
    const Turn fine = k_fine_turns[plan.fine_turn[chart]];
    const Turn base{axis.x * fine.cosine + axis.y * fine.sine,
                    axis.x * fine.sine - axis.y * fine.cosine};
    return quarter_turns(base, quarter);
}

const Mask& MaskSet::mask(const Plan& plan, uint32_t chart, uint32_t quarter) {
    masks_.resize(chains_.shapes.size() * k_fine);
    return mask(plan, chart, quarter, work_);
}

/// May be called for several charts at the same time.
const Mask& MaskSet::mask(const Plan& plan, uint32_t chart, uint32_t quarter, MaskWork& work) {
    std::unique_ptr<Quarters>& slot = masks_[size_t(chart) * k_fine + plan.fine_turn[chart]];
    if (slot == nullptr)
        slot = std::make_unique<Quarters>();
    if ((*slot)[0].width == 0)
        draw_mask(chains_, chains_.shapes[chart], turn_of(plan, chart, 0), scale_, radius_,
                  (*slot)[0], work);
    Mask& mask = (*slot)[quarter];
    if (mask.width == 0)
        turn_mask((*slot)[0], quarter, mask, work);
    return mask;
}

Slot MaskSet::slot(const Plan& plan, uint32_t chart, uint32_t quarter, const Mask& mask, uint32_t x,
                   uint32_t y) const {
    const Vec2 centre{x + 0.5 * mask.width, y + 0.5 * mask.height};
    return {turn_of(plan, chart, quarter), mask.origin,      x,     y,
            plan.fine_turn[chart],         uint8_t(quarter), centre};
}

uint32_t& LayoutMaker::start_row(const Mask& mask) {
    const auto bucket = [](uint32_t size) {
        if (size < k_steps)
            return size;
        const uint32_t level = level_of(size);
        return std::min(k_buckets - 1,
                        k_steps * (level - 2) + ((size >> (level - 3)) & (k_steps - 1)));
    };
    return start_rows_[size_t(bucket(mask.width)) * k_buckets + bucket(mask.height)];
}

/// Fills remaining_; returns the number of cells of all masks, 0 if asked to stop.
double LayoutMaker::look_ahead(MaskSet& masks, const Plan& plan) {
    double cells = 0;
    masks.draw(plan);
    remaining_.assign(plan.order.size() + 1, {});
    for (size_t i = plan.order.size(); i-- > 0;) {
        if (is_stopped_at(i))
            return 0;
        remaining_[i] = remaining_[i + 1];
        uint32_t lowest_height = ~0u;
        for (uint32_t quarter = 0; quarter < plan.quarters; ++quarter) {
            const Mask& mask = masks.mask(plan, plan.order[i], quarter);
            remaining_[i].run_level = std::max(remaining_[i].run_level, mask.run_level);
            remaining_[i].square_level = std::max(remaining_[i].square_level, mask.square_level);
            lowest_height = std::min(lowest_height, mask.height);
        }
        const double own = masks.mask(plan, plan.order[i], 0).cells;
        remaining_[i].min_tops += own * lowest_height;
        cells += own;
    }
    return cells;
}

/// Fills remaining_, but for upper edges, by the charts' boxes, without drawing masks. Returns 1.
double LayoutMaker::bound_sizes(const MaskSet& masks, const Plan& plan) {
    remaining_.assign(plan.order.size() + 1, {});
    for (size_t i = plan.order.size(); i-- > 0;) {
        const auto [longer, shorter] = masks.largest_size(plan, plan.order[i]);
        remaining_[i].run_level = std::max(remaining_[i + 1].run_level, level_of(longer));
        remaining_[i].square_level = std::max(remaining_[i + 1].square_level, level_of(shorter));
    }
    return 1;
}

/// Places one chart in the quarter turn whose mean row comes to lie lowest. Null if it does not
/// fit.
const Mask* LayoutMaker::place(const MaskSet& masks, const MaskSet::Quarters& turns,
                               const Plan& plan, uint32_t chart, Slot& slot) {
    const Mask* chosen = nullptr;
    double lowest = 2.0 * field_.height();
    for (uint32_t quarter = 0; quarter < plan.quarters; ++quarter) {
        const Mask& mask = turns[quarter];
        if (mask.mean_row >= lowest)
            continue;
        const uint32_t top =
            std::min(field_.height(), uint32_t(lowest - mask.mean_row) + mask.height);
        uint32_t bottom = 0, &start = plan.skip_full_rows ? start_row(mask) : bottom;
        const Spot spot = field_.find(mask, start, top);
        start = spot.found ? spot.y : std::max(start, top + 1 - std::min(top + 1, mask.height));
        if (!spot.found || (chosen != nullptr && spot.y + mask.mean_row >= lowest))
            continue;
        chosen = &mask;
        slot = masks.slot(plan, chart, quarter, mask, spot.x, spot.y);
        lowest = spot.y + mask.mean_row;
    }
    if (chosen != nullptr)
        field_.place(*chosen, slot.x, slot.y);
    return chosen;
}

/// Marks what is taken before the first chart.
void LayoutMaker::open(const Page& page) {
    if (page.fence.width > 0)
        for (uint32_t y = page.tile_height; y < page.height; y += page.tile_height + 1)
            field_.place(page.fence, 0, y);
    for (size_t i = 0; i < page.taken.size(); ++i)
        field_.place(page.taken[i], 0, page.taken_tile[i] * (page.tile_height + 1));
}

/// How many cells the masks of a chart of the order, which was not placed, and of all after it
/// have.
double LayoutMaker::cells_from(MaskSet& masks, const Plan& plan, size_t number) {
    double cells = 0;
    for (size_t i = number; i < plan.order.size() && !is_stopped_at(i); ++i)
        cells += masks.next(plan, i)[0].cells;
    return cells;
}

Layout LayoutMaker::make(MaskSet& masks, const Page& page, const Plan& plan, double max_cost) {
    Layout layout;
    layout.scale = masks.scale();
    layout.slots.resize(masks.chains().shapes.size());
    passing_ = MaskSet::are_passing(plan) && max_cost == k_infinite;
    const double needed = passing_ ? bound_sizes(masks, plan) : look_ahead(masks, plan);
    if (needed == 0) {
        layout.height = layout.mean_top = k_infinite;
        return layout;
    }
    field_.reset(page.width, uint32_t(page.height * k_overflow) + 1, remaining_[0].run_level,
                 remaining_[0].square_level);
    open(page);
    if (plan.skip_full_rows)
        start_rows_.assign(k_buckets * k_buckets, 0);
    place_all(masks, plan, needed, max_cost, layout);
    layout.complete = layout.height <= page.height;
    return layout;
}

/// Places the charts of a plan until one does not fit or the layout is given up.
void LayoutMaker::place_all(MaskSet& masks, const Plan& plan, double needed, double max_cost,
                            Layout& layout) {
    double placed = 0;
    uint32_t used = 0;
    for (size_t i = 0; i < plan.order.size(); ++i) {
        field_.narrow(remaining_[i].run_level, remaining_[i].square_level);
        const uint32_t chart = plan.order[i];
        Slot& slot = layout.slots[chart];
        const MaskSet::Quarters& turns = passing_ ? masks.next(plan, i) : masks.drawn(plan, chart);
        const Mask* mask = place(masks, turns, plan, chart, slot);
        if (mask == nullptr) {
            if (passing_)
                needed = placed + cells_from(masks, plan, i);
            layout.height = field_.height() * std::max(1.0, needed / std::max(1.0, placed));
            layout.mean_top = layout.height;
            return;
        }
        const uint32_t top = slot.y + mask->height;
        placed += mask->cells;
        layout.mean_top += double(mask->cells) * top;
        used = std::max(used, top);
        if (used + (layout.mean_top + remaining_[i + 1].min_tops) / needed > max_cost ||
            is_stopped_at(i)) {
            layout.height = layout.mean_top = k_infinite;
            return;
        }
    }
    layout.height = used;
    layout.mean_top /= std::max(1.0, placed);
}

void write_placements(const Layout& layout, const Page& page, std::vector<Placement>& placements) {
    placements.assign(layout.slots.size(), Placement());
    for (size_t i = 0; i < layout.slots.size(); ++i) {
        const Slot& slot = layout.slots[i];
        const uint32_t tile = slot.y / (page.tile_height + 1);
        const double row = slot.y - tile * (page.tile_height + 1);
        const Vec2 at = (Vec2{double(slot.x), row} - slot.origin) * (1 / page.density) -
                        Vec2{page.gutter / 2, page.gutter / 2};
        if (page.turned)
            placements[i] = {-slot.turn.sine, slot.turn.cosine, page.span - at.y, at.x, tile};
        else
            placements[i] = {slot.turn.cosine, slot.turn.sine, at.x, at.y, tile};
    }
}

} // namespace tessora::atlas
