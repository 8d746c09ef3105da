#include "atlas/pack_search.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Share of the page that a first guess fills with charts and their gutters.
constexpr double k_first_fill = 0.85;

/// Room that all charts need, gutter included, as a polynomial in the scale.
struct Demand {
    double square = 0, linear = 0, constant = 0;

    double scale_for(double room) const {
        const double left = room - constant;
        if (left <= 0 || !(square > 0))
            return 0;
        return (std::sqrt(linear * linear + 4 * square * left) - linear) / (2 * square);
    }
};

Demand demand_of(const Outlines& outlines, double gutter) {
    Demand demand;
    for (const Shape& shape : outlines.shapes) {
        if (shape.chain_begin == shape.chain_end)
            continue;
        demand.square += shape.area;
        demand.linear += shape.hull_perimeter * gutter / 2;
        demand.constant += 0.785 * gutter * gutter;
    }
    return demand;
}

std::vector<uint32_t> order_by_size(const Outlines& outlines) {
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < outlines.shapes.size(); ++i)
        if (outlines.shapes[i].chain_begin != outlines.shapes[i].chain_end)
            order.push_back(i);
    const auto diagonal = [&](uint32_t i) {
        const Shape& shape = outlines.shapes[i];
        return shape.length * shape.length + shape.width * shape.width;
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t a, uint32_t b) { return diagonal(a) > diagonal(b); });
    return order;
}

class Search {
public:
    Search(const Outlines& outlines, const InnerRectangle& inner, double gutter,
           double largest_scale, double least_scale, const PackOptions& options, Packing& packing)
        : outlines_(outlines), inner_(inner), gutter_(gutter), largest_(largest_scale),
          least_(least_scale), options_(options), packing_(packing) {}

    SearchResult run() {
        const bool fast = options_.quality == Quality::fast;
        const Page page = make_page(inner_.width, inner_.height, gutter_, fast ? 768 : 1024, false);
        Plan plan;
        plan.order = order_by_size(outlines_);
        plan.turns = 4;
        // Half a cell of blur costs a thirtieth of what the grid itself costs.
        const Demand demand = demand_of(outlines_, gutter_);
        double scale =
            demand.scale_for(k_first_fill * (inner_.width + gutter_) * (inner_.height + gutter_));
        scale = std::min(largest_, scale > least_ ? scale : least_);
        const Outlines coarse = simplify(outlines_, 0.1 / (scale * page.density));
        MaskSet masks(coarse);
        Field field;
        const int tries = fast ? 6 : 10;
        double low = 0, high = largest_ * 1.0001;
        for (int i = 0; i < tries || (low == 0 && i < 40); ++i) {
            if (options_.proceed && !options_.proceed(std::min(1.0, double(i) / tries)))
                return SearchResult::aborted;
            const Layout layout = lay_out(masks, page, scale, plan, field);
            if (layout.complete) {
                low = scale;
                packing_.scale = scale;
                write_placements(layout, page, packing_.placements);
            } else {
                high = scale;
            }
            double next = scale * std::sqrt(page.height / layout.height);
            if (layout.complete)
                next = std::max(next, scale * 1.01);
            if (next >= high || next <= low)
                next = low > 0 ? (low + high) / 2 : high * 0.95;
            if (next > largest_ || next < least_ || (low > 0 && high < low * 1.002))
                break;
            scale = next;
        }
        return low > 0 ? SearchResult::found : SearchResult::not_found;
    }

private:
    const Outlines& outlines_;
    const InnerRectangle& inner_;
    double gutter_, largest_, least_;
    const PackOptions& options_;
    Packing& packing_;
};

} // namespace

SearchResult search_layout(const Outlines& outlines, const InnerRectangle& inner, double gutter,
                           double largest_scale, double least_scale, const PackOptions& options,
                           Packing& packing) {
    return Search(outlines, inner, gutter, largest_scale, least_scale, options, packing).run();
}

} // namespace tessora::atlas
