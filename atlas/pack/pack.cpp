#include "atlas/pack/pack.h"

#include "atlas/pack/search.h"
#include "atlas/pack/shelves.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Layouts are given up if the largest chart would be shorter than this, in texels.
constexpr double k_min_extent = 1.0 / 16;

double covered(const ChartChains& chains, double scale, const PackOptions& options) {
    double area = 0;
    for (const ChartShape& shape : chains.shapes)
        area += shape.area;
    return area * scale * scale / (double(options.width) * double(options.height));
}

} // namespace

InnerRectangle inner_rectangle(uint32_t width, uint32_t height, float gutter) {
    const double w = width, h = height, left = 1 - double(gutter) / std::min(w, h);
    return {w * left, h * left, std::max(w, h) * left};
}

double safe_gutter(uint32_t width, uint32_t height, float gutter) {
    return double(gutter) + 1.0 / 1024 + 40.0 * std::max(width, height) / 16777216.0;
}

uint64_t gutter_capacity(uint32_t width, uint32_t height, float gutter) {
    const InnerRectangle inner = inner_rectangle(width, height, gutter);
    if (!(inner.width > 0) || !(inner.height > 0))
        return 0;
    if (!(gutter > 0))
        return ~uint64_t(0);
    const double columns = std::floor(inner.width / gutter) + 1;
    const double rows = std::floor(inner.height / gutter) + 1;
    const double product = columns * rows;
    return product < 9e18 ? uint64_t(product) : ~uint64_t(0);
}

Packing pack(const PackCharts& charts, const PackOptions& options) {
    Packing packing;
    const ChartChains chains = chain_borders(charts);
    const size_t count = chains.shapes.size();
    packing.placements.assign(count, Placement());
    const InnerRectangle inner = inner_rectangle(options.width, options.height, options.gutter);
    const double gutter = safe_gutter(options.width, options.height, options.gutter);
    uint64_t present = 0;
    double extent = 0;
    for (const ChartShape& shape : chains.shapes) {
        present += shape.chain_begin != shape.chain_end ? 1 : 0;
        extent = std::max(extent, shape.length);
    }
    if (present == 0)
        return packing;
    packing.status = Status::does_not_fit;
    if (std::min(inner.width, inner.height) < 1 ||
        present > gutter_capacity(options.width, options.height, options.gutter))
        return packing;
    // Points have no size to scale; any factor keeps them points.
    const double max_scale =
        extent > 0 ? std::sqrt(inner.width * inner.width + inner.height * inner.height) / extent
                   : 1;
    const double min_scale = extent > 0 ? k_min_extent / extent : 1;
    const SearchResult found =
        search_layout(chains, inner, gutter, max_scale, min_scale, options, packing);
    if (found == SearchResult::aborted)
        packing.status = Status::aborted;
    else if (found == SearchResult::found ||
             pack_boxes(chains, inner.width, inner.height, gutter, max_scale, min_scale, packing))
        packing.status = Status::ok;
    if (packing.status == Status::ok)
        packing.coverage = covered(chains, packing.scale, options);
    return packing;
}

} // namespace tessora::atlas
