#include "atlas/pack/search.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Share of the page that a first guess fills with charts and their gutters.
constexpr double k_first_fill = 0.85;

/// Charts that are moved about, at most, and the number from which none are.
constexpr size_t k_most_arranged = 60, k_most_drafted = 1000;

/// Up to so many charts every place is looked at for each of them.
constexpr size_t k_unhurried = 150;

/// Cells by which outlines may be simplified: a tenth of what the grid itself costs.
constexpr double k_blur = 0.1;

/// Step to the next scale after one that fits.
constexpr double k_growth = 1.004;

/// Fresh starts of the local search at most: one follows when a share of the effort bore nothing.
constexpr uint64_t k_starts = 6;

/// Scales tried on the draft grid.
constexpr int k_draft_tries = 4;

/// Scales tried before a grid is given up.
constexpr int k_most_tries = 40;

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

/// Reproducible numbers (Marsaglia, "Xorshift RNGs", 2003).
class Random {
public:
    uint32_t below(uint32_t n) {
        state_ ^= state_ << 13;
        state_ ^= state_ >> 7;
        state_ ^= state_ << 17;
        return uint32_t((state_ >> 32) * n >> 32);
    }

private:
    uint64_t state_ = 0x9E3779B97F4A7C15ull;
};

/// How much to try; efforts are in words looked at, about 5 ns each.
struct Tuning {
    double draft_cells = 256; ///< square roots of the numbers of cells: where plans are compared,
    double middle_cells = 0;  ///< compared again (0: not),
    double final_cells = 768; ///< and carried out
    uint64_t draft_effort = 0, middle_effort = 0;
    int tries = 4; ///< scales, on the final grid

    static Tuning of(Quality quality, size_t charts, uint64_t triangles) {
        Tuning tuning;
        const bool fast = quality == Quality::fast;
        tuning.tries = fast ? 4 : 7;
        tuning.final_cells = fast ? 768 : 1024;
        if (charts > 300)
            tuning.final_cells *= 2;
        if (charts <= k_most_drafted) {
            tuning.draft_effort = fast ? 1000000 + 30 * triangles : 10000000 + 100 * triangles;
            tuning.middle_effort = fast ? 0 : tuning.draft_effort;
            tuning.middle_cells = fast ? 0 : 512;
        }
        return tuning;
    }
};

class Search {
public:
    Search(const Outlines& outlines, const InnerRectangle& inner, double gutter,
           double largest_scale, double least_scale, const PackOptions& options, Packing& packing)
        : outlines_(outlines), inner_(inner), gutter_(gutter), largest_(largest_scale),
          least_(least_scale), options_(options), packing_(packing) {}

    SearchResult run() {
        const Demand demand = demand_of(outlines_, gutter_);
        scale_ =
            demand.scale_for(k_first_fill * (inner_.width + gutter_) * (inner_.height + gutter_));
        scale_ = std::min(largest_, std::max(scale_, least_));
        plan_.order = order_by_size(outlines_);
        plan_.fine.assign(outlines_.shapes.size(), 0);
        const Tuning tuning = Tuning::of(options_.quality, plan_.order.size(), options_.triangles);
        plan_.hurry = plan_.order.size() > k_unhurried;
        if (tuning.draft_effort > 0) {
            choose_rows(tuning.draft_cells);
            improve(tuning.draft_cells, tuning.draft_effort, 0.2);
        }
        if (tuning.middle_effort > 0)
            improve(tuning.middle_cells, tuning.middle_effort, 0.5);
        settle(tuning.final_cells, tuning.tries, 0.8);
        if (aborted_)
            return SearchResult::aborted;
        return found_ ? SearchResult::found : SearchResult::not_found;
    }

private:
    /// Charts worth moving about: the others fill what these leave.
    size_t count_weighty() const {
        double area = 0, sum = 0;
        size_t count = 0;
        const auto box = [&](uint32_t i) {
            return outlines_.shapes[i].length * outlines_.shapes[i].width;
        };
        for (uint32_t chart : plan_.order)
            area += box(chart);
        for (uint32_t chart : plan_.order) {
            if (count >= k_most_arranged || (count >= 8 && sum > 0.95 * area))
                break;
            ++count;
            sum += box(chart);
        }
        return count;
    }

    /// Reports progress; true when the search is to stop.
    bool stopped(double done) {
        aborted_ = aborted_ || (options_.proceed && !options_.proceed(std::min(1.0, done)));
        return aborted_;
    }

    static double cost(const Layout& layout) { return layout.height + layout.burden; }

    /// One random change among the first `n` charts of the order.
    Plan varied(uint32_t n) {
        Plan next = plan_;
        const uint32_t i = random_.below(n), j = random_.below(n);
        switch (random_.below(3)) {
        case 0:
            std::swap(next.order[i], next.order[j]);
            break;
        case 1: {
            const auto from = next.order.begin() + i, to = next.order.begin() + j;
            if (from < to)
                std::rotate(from, from + 1, to + 1);
            else
                std::rotate(to, from, from + 1);
            break;
        }
        default:
            next.fine[next.order[i]] = uint8_t(random_.below(MaskSet::k_fine));
        }
        return next;
    }

    /// A new start: the first `n` charts about in the order of their size, turned by chance.
    Plan shaken(uint32_t n) {
        Plan next = plan_;
        std::vector<std::pair<double, uint32_t>> keys;
        for (uint32_t i = 0; i < n; ++i) {
            const Shape& shape = outlines_.shapes[next.order[i]];
            keys.push_back(
                {-(shape.length + shape.width) * (1024 + random_.below(512)), next.order[i]});
        }
        std::sort(keys.begin(), keys.end());
        for (uint32_t i = 0; i < n; ++i) {
            next.order[i] = keys[i].second;
            const uint32_t turn = random_.below(2 * MaskSet::k_fine);
            next.fine[keys[i].second] = uint8_t(turn < MaskSet::k_fine ? turn : 0);
        }
        return next;
    }

    /// First layouts; long textures are tried with rows along either side.
    void choose_rows(double cells) {
        settle(cells, k_draft_tries, 0.0);
        if (options_.width == options_.height)
            return;
        const double upright = found_ ? packing_.scale : 0;
        turned_ = true;
        settle(cells, k_draft_tries, 0.1);
        turned_ = found_ && packing_.scale > upright;
    }

    /// Changes order and turns of the weighty charts as long as that lets the scale grow.
    void improve(double cells, uint64_t budget, double done) {
        const uint32_t n = uint32_t(count_weighty());
        if (n == 0 || stopped(done))
            return;
        const Page page = make_page(inner_.width, inner_.height, gutter_, cells, turned_);
        const Outlines coarse = simplify(outlines_, k_blur / (scale_ * page.density));
        MaskSet masks(coarse);
        double scale = found_ ? std::min(largest_, packing_.scale * k_growth) : scale_;
        masks.reset(page, scale);
        double least = cost(maker_.make(masks, page, plan_));
        Plan best = plan_;
        const uint64_t start = maker_.effort(), patience = budget / k_starts;
        uint64_t grown = 0;
        for (uint64_t spent = 0; spent < budget; spent = maker_.effort() - start) {
            if (stopped(done + 0.3 * double(spent) / double(budget)))
                return;
            const bool stuck = spent - grown > patience;
            if (stuck)
                grown = spent;
            Plan next = stuck ? shaken(n) : varied(n);
            const double most = stuck ? std::numeric_limits<double>::infinity() : least;
            Layout layout = maker_.make(masks, page, next, most);
            if (cost(layout) > most)
                continue;
            least = cost(layout);
            plan_ = std::move(next);
            while (layout.complete) {
                keep(layout, page);
                best = plan_;
                grown = spent;
                scale *= std::max(k_growth, std::sqrt(page.height / layout.height));
                if (scale > largest_)
                    return;
                masks.reset(page, scale);
                layout = maker_.make(masks, page, plan_);
                least = cost(layout);
            }
        }
        plan_ = best;
    }

    /// Finds a large scale at which the plan fits on a grid of `cells`.
    void settle(double cells, int tries, double done) {
        const Page page = make_page(inner_.width, inner_.height, gutter_, cells, turned_);
        double scale = found_ ? std::min(largest_, packing_.scale * 1.02) : scale_;
        const Outlines fine = simplify(outlines_, k_blur / (scale * page.density));
        MaskSet masks(fine);
        double low = found_ ? packing_.scale : 0, high = largest_ * 1.0001;
        for (int i = 0; i < tries || (!found_ && i < k_most_tries); ++i) {
            if (stopped(done + 0.2 * i / tries))
                return;
            masks.reset(page, scale);
            const Layout layout = maker_.make(masks, page, plan_);
            if (layout.complete) {
                keep(layout, page);
                low = std::max(low, scale);
            } else {
                high = std::min(high, scale);
            }
            double next = scale * std::sqrt(page.height / layout.height);
            if (layout.complete)
                next = std::max(next, scale * k_growth);
            if (next >= high || next <= low)
                next = low > 0 ? (low + high) / 2 : high * 0.95;
            if (next > largest_ || next < least_ || (low > 0 && high < low * 1.002))
                return;
            scale = next;
        }
    }

    void keep(const Layout& layout, const Page& page) {
        if (found_ && layout.scale <= packing_.scale)
            return;
        found_ = true;
        packing_.scale = layout.scale;
        write_placements(layout, page, packing_.placements);
    }

    const Outlines& outlines_;
    const InnerRectangle& inner_;
    double gutter_, largest_, least_;
    const PackOptions& options_;
    Packing& packing_;
    Plan plan_;
    LayoutMaker maker_;
    Random random_;
    double scale_ = 0;
    bool turned_ = false;
    bool found_ = false, aborted_ = false;
};

} // namespace

SearchResult search_layout(const Outlines& outlines, const InnerRectangle& inner, double gutter,
                           double largest_scale, double least_scale, const PackOptions& options,
                           Packing& packing) {
    return Search(outlines, inner, gutter, largest_scale, least_scale, options, packing).run();
}

} // namespace tessora::atlas
