#include "atlas/pack/shelves.h"

#include <algorithm>
#include <numeric>

namespace tessora::atlas {
namespace {

struct Corner {
    double x = 0, y = 0; ///< lower left corner of the chart's own box, texels
};

/// Next-fit on shelves; boxes in falling order of width (their short side stands upright).
bool fill_shelves(const Outlines& outlines, const std::vector<uint32_t>& order, double width,
                  double height, double gutter, double scale, std::vector<Corner>& corners) {
    double shelf = 0, shelf_height = 0, x = 0;
    for (uint32_t chart : order) {
        const Shape& shape = outlines.shapes[chart];
        const double w = shape.length * scale, h = shape.width * scale;
        if (x > 0 && x + w > width) {
            shelf += shelf_height + gutter;
            shelf_height = x = 0;
        }
        if (x + w > width || shelf + h > height)
            return false;
        corners[chart] = {x, shelf};
        x += w + gutter;
        shelf_height = std::max(shelf_height, h);
    }
    return true;
}

void write(const Outlines& outlines, const std::vector<Corner>& corners, Packing& packing) {
    packing.placements.assign(outlines.shapes.size(), Placement());
    for (size_t i = 0; i < outlines.shapes.size(); ++i) {
        const Shape& shape = outlines.shapes[i];
        if (shape.chain_begin == shape.chain_end)
            continue;
        const Turn turn{shape.axis.x * packing.scale, -shape.axis.y * packing.scale};
        Vec2 low{};
        const uint32_t first = outlines.chain_begin[shape.chain_begin];
        for (uint32_t p = first; p < outlines.chain_begin[shape.chain_end]; ++p) {
            const Vec2 q = turned(outlines.points[p], turn);
            low = p == first ? q : Vec2{std::min(low.x, q.x), std::min(low.y, q.y)};
        }
        packing.placements[i] = {shape.axis.x, -shape.axis.y, corners[i].x - low.x,
                                 corners[i].y - low.y};
    }
}

} // namespace

bool pack_boxes(const Outlines& outlines, double width, double height, double gutter,
                double largest_scale, double least_scale, Packing& packing) {
    // The boxes are as exact as double precision; keep clear of its last bits on all sides.
    const double slack = 1e-9 * std::max(width, height);
    width -= slack;
    height -= slack;
    gutter += slack;
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < outlines.shapes.size(); ++i)
        if (outlines.shapes[i].chain_begin != outlines.shapes[i].chain_end)
            order.push_back(i);
    std::stable_sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return outlines.shapes[a].width > outlines.shapes[b].width;
    });
    std::vector<Corner> corners(outlines.shapes.size()), best;
    const auto fits = [&](double scale) {
        if (!fill_shelves(outlines, order, width, height, gutter, scale, corners))
            return false;
        best = corners;
        packing.scale = scale;
        return true;
    };
    if (!fits(least_scale))
        return false;
    double low = least_scale, high = largest_scale;
    for (int i = 0; i < 40 && high > low * 1.001; ++i) {
        const double middle = std::sqrt(low) * std::sqrt(high);
        (fits(middle) ? low : high) = middle;
    }
    write(outlines, best, packing);
    return true;
}

} // namespace tessora::atlas
