#include "atlas/pack/shelves.h"

#include <algorithm>
#include <numeric>

namespace tessora::atlas {
namespace {

/// Lower left corner of a chart's box, texels.
struct BoxCorner {
    double x = 0, y = 0;
    uint32_t tile = 0;
};

/// Next-fit: fills one shelf after another in the given order, with the boxes' shorter sides
/// upright. False if they do not fit.
bool fill_shelves(const ChartChains& chains, const std::vector<uint32_t>& order,
                  const PackRoom& room, uint32_t tiles, double scale,
                  std::vector<BoxCorner>& corners) {
    double shelf = 0, shelf_height = 0, x = 0;
    uint32_t tile = 0;
    for (uint32_t chart : order) {
        const ChartShape& shape = chains.shapes[chart];
        const double w = shape.length * scale, h = shape.width * scale;
        if (x > 0 && x + w > room.width) {
            shelf += shelf_height + room.gutter;
            shelf_height = x = 0;
        }
        if (shelf > 0 && shelf + h > room.height) {
            ++tile;
            shelf = shelf_height = x = 0;
        }
        if (x + w > room.width || shelf + h > room.height || tile == tiles)
            return false;
        corners[chart] = {x, shelf, tile};
        x += w + room.gutter;
        shelf_height = std::max(shelf_height, h);
    }
    return true;
}

void write(const ChartChains& chains, const std::vector<BoxCorner>& corners, Packing& packing) {
    packing.placements.assign(chains.shapes.size(), Placement());
    for (size_t i = 0; i < chains.shapes.size(); ++i) {
        const ChartShape& shape = chains.shapes[i];
        if (shape.chain_begin == shape.chain_end)
            continue;
        const Turn turn{shape.axis.x * packing.scale, -shape.axis.y * packing.scale};
        Vec2 low{};
        const uint32_t first = chains.chain_begin[shape.chain_begin];
        for (uint32_t p = first; p < chains.chain_begin[shape.chain_end]; ++p) {
            const Vec2 q = turned(chains.points[p], turn);
            low = p == first ? q : Vec2{std::min(low.x, q.x), std::min(low.y, q.y)};
        }
        packing.placements[i] = {shape.axis.x, -shape.axis.y, corners[i].x - low.x,
                                 corners[i].y - low.y, corners[i].tile};
    }
}

} // namespace

bool pack_boxes(const ChartChains& chains, PackRoom room, uint32_t tiles, double max_scale,
                double min_scale, Packing& packing) {
    // The slack keeps rounding errors of the boxes from costing gutter.
    const double slack = 1e-9 * std::max(room.width, room.height);
    room.width -= slack;
    room.height -= slack;
    room.gutter += slack;
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < chains.shapes.size(); ++i)
        if (chains.shapes[i].chain_begin != chains.shapes[i].chain_end)
            order.push_back(i);
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return chains.shapes[a].width > chains.shapes[b].width;
    });
    std::vector<BoxCorner> corners(chains.shapes.size()), best;
    const auto fits = [&](double scale) {
        if (!fill_shelves(chains, order, room, tiles, scale, corners))
            return false;
        best = corners;
        packing.scale = scale;
        return true;
    };
    if (!fits(min_scale))
        return false;
    double low = min_scale, high = max_scale;
    for (int i = 0; i < 40 && high > low * 1.001; ++i) {
        const double middle = std::sqrt(low) * std::sqrt(high);
        (fits(middle) ? low : high) = middle;
    }
    write(chains, best, packing);
    return true;
}

} // namespace tessora::atlas
