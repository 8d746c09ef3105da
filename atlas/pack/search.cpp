#include "atlas/pack/search.h"

#include "atlas/pack/inflate.h"
#include "atlas/pack/nest.h"
#include "atlas/pack/random.h"
#include "atlas/parallel.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <deque>
#include <numeric>

namespace tessora::atlas {
namespace {

/// Share of the page that charts and gutters fill at the scale of the first try.
constexpr double k_first_fill = 0.85;

/// The local search rearranges at most this many of the largest charts.
constexpr size_t k_max_arranged = 60;

/// With more charts than this there is no local search.
constexpr size_t k_max_searched = 1000;

/// Up to this many charts are nested. More are small against the page, and greedy layouts of them
/// are as good.
constexpr size_t k_max_nested = 40;

/// Cells of the grid on which nesting looks for an arrangement, and of the first one on which it
/// keeps the gutter, as square roots.
constexpr double k_rough_cells = 128, k_first_exact_cells = 256;

/// The rough grid would cost too much room if it kept the gutter. Its gutter, in cells, and the
/// share of the page that may be covered twice on it.
constexpr double k_rough_gutter = 0.05, k_rough_overlap = 0.001;

/// Rounds of moves without gain before charts that overlap are given up: on the rough grid, and on
/// those that keep the gutter.
constexpr int k_rough_patience = 8, k_exact_patience = 5;

/// Failures in a row after which nesting tries a smaller scale; between them two charts are
/// swapped.
constexpr int k_swaps = 3;

/// An arrangement is dropped if it fits at less than this share of the best scale: finer grids gain
/// about as much.
constexpr double k_worth_settling = 0.985;

/// With more charts than this, rows that were full for one chart are skipped for similar ones. Up
/// to the second number they are not in the last layouts of quality mode.
constexpr size_t k_max_thorough = 150, k_max_thorough_end = 1000;

/// Fast mode searches on coarser grids up to this number of charts; more are too small for them.
constexpr size_t k_max_coarse = 100;

/// Tolerance of simplified borders, in cells: small against the half cell that the grid costs.
constexpr double k_simplify_cells = 0.1;

/// Factor from a scale that fits to the next one that is tried.
constexpr double k_growth = 1.004;

/// The first such factor in nesting, which is halved by failures, and the least on exact grids.
constexpr double k_first_growth = 1.01, k_least_growth = 1.0015;

/// All that comes after the first layouts, and after the first search, makes charts larger by less
/// than this factor.
constexpr double k_search_growth = 1.25, k_late_growth = 1.12;

/// The first layouts of fewer charts foretell too little: two bars may lie across each other there
/// and side by side in the end.
constexpr size_t k_least_foreseen = 4;

/// The latter in quick layouts, whose first search is shorter.
constexpr double k_quick_growth = 1.08;

/// The local search restarts after this fraction of its effort, 1/k_starts, brought no gain.
constexpr uint64_t k_starts = 6;

/// Scales tried on the draft grid.
constexpr int k_draft_tries = 4;

/// Maximum number of scales tried on a grid until a layout fits.
constexpr int k_max_tries = 40;

/// The area that all charts and their gutters need, as a polynomial in the scale.
struct Demand {
    double square = 0, linear = 0, constant = 0;

    /// The scale at which the charts need the area `room`; 0 if there is none.
    double scale_for(double room) const {
        const double left = room - constant;
        if (left <= 0 || !(square > 0))
            return 0;
        return (std::sqrt(linear * linear + 4 * square * left) - linear) / (2 * square);
    }
};

Demand demand_of(const ChartChains& chains, double gutter) {
    Demand demand;
    for (const ChartShape& shape : chains.shapes) {
        if (shape.kept || shape.chain_begin == shape.chain_end)
            continue;
        demand.square += shape.area;
        demand.linear += shape.hull_perimeter * gutter / 2;
        demand.constant += 0.785 * gutter * gutter; // a disk of half the gutter
    }
    return demand;
}

std::vector<uint32_t> order_by_size(const ChartChains& chains) {
    std::vector<uint32_t> order;
    for (uint32_t i = 0; i < chains.shapes.size(); ++i)
        if (!chains.shapes[i].kept && chains.shapes[i].chain_begin != chains.shapes[i].chain_end)
            order.push_back(i);
    const auto diagonal = [&](uint32_t i) {
        const ChartShape& shape = chains.shapes[i];
        return shape.length * shape.length + shape.width * shape.width;
    };
    std::stable_sort(order.begin(), order.end(),
                     [&](uint32_t a, uint32_t b) { return diagonal(a) > diagonal(b); });
    return order;
}

/// Search effort per mode; efforts count words of bitmaps read, about 5 ns each.
struct Tuning {
    // Grids are given as the square root of their number of cells.
    double draft_cells = 256;  ///< first local search
    double middle_cells = 512; ///< second local search
    double final_cells = 768;  ///< final layout
    uint64_t draft_effort = 0, middle_effort = 0, nest_effort = 0, inflate_effort = 0;
    int tries = 4;             ///< number of scales on the final grid
    bool thorough_end = false; ///< skip no rows on the final grid

    static Tuning of(const PackOptions& options, size_t charts, bool nests) {
        Tuning tuning;
        const bool fast = options.quick || options.quality == Quality::fast;
        const uint64_t triangles = options.triangles;
        tuning.tries = fast ? 4 : 7;
        tuning.thorough_end = !fast && charts <= k_max_thorough_end;
        if (tuning.thorough_end && charts > k_max_thorough)
            tuning.tries = 3; // each takes several times as long
        tuning.final_cells = options.quick || nests ? 512 : 768;
        if (charts > 300)
            tuning.final_cells = fast ? 1536 : 2048;
        const auto effort = [&](uint64_t base, uint64_t per_triangle) {
            return uint64_t(double(base + per_triangle * triangles) * options.effort);
        };
        tuning.inflate_effort =
            fast ? effort(1000000, 20) : std::max(effort(3000000, 60), effort(1000 * charts, 0));
        if (nests) {
            tuning.draft_effort = options.quick ? effort(500000, 15) : effort(1000000, 10);
            tuning.nest_effort = options.quick ? effort(1200000, 0) : effort(10000000, 0);
        } else if (charts <= k_max_searched) {
            tuning.draft_effort = fast ? effort(1000000, 30) : effort(10000000, 100);
            tuning.middle_effort = fast ? 0 : tuning.draft_effort;
        }
        if (fast && charts <= k_max_coarse) {
            // Inflating makes up for coarse grids, so that time is better spent on more layouts.
            tuning.draft_cells = 192;
            tuning.final_cells = 384;
            tuning.tries = 2;
            if (!options.quick)
                tuning.draft_effort = effort(2000000, 60);
        }
        if (options.quick) {
            tuning.tries = 2;
            tuning.inflate_effort = effort(500000, 5);
            if (!nests && charts <= k_max_searched)
                tuning.draft_effort = effort(1000000, 10);
        }
        return tuning;
    }
};

class Search {
public:
    Search(const ChartChains& chains, const PackRoom& room, double max_scale, double min_scale,
           const PackOptions& options, Packing& packing)
        : chains_(chains), room_(room), max_scale_(max_scale), min_scale_(min_scale),
          options_(options), packing_(packing) {}

    SearchResult run() {
        const Demand demand = demand_of(chains_, room_.gutter);
        scale_ = demand.scale_for(room_area());
        scale_ = std::min(max_scale_, std::max(scale_, min_scale_));
        plan_.order = order_by_size(chains_);
        plan_.fine_turn.assign(chains_.shapes.size(), 0);
        plan_.quarters = options_.turns == Turns::none ? 1 : 4;
        const Tuning tuning = Tuning::of(options_, plan_.order.size(), may_nest());
        plan_.skip_full_rows = plan_.order.size() > k_max_thorough;
        if (tuning.draft_effort > 0) {
            choose_row_direction(tuning.draft_cells);
            if (!options_.quick && plan_.order.size() >= k_least_foreseen &&
                is_hopeless(demand, k_search_growth))
                return SearchResult::found;
            improve(tuning.draft_cells, tuning.draft_effort, 0.2);
            if (is_hopeless(demand, options_.quick ? k_quick_growth : k_late_growth))
                return SearchResult::found;
        }
        if (tuning.middle_effort > 0)
            improve(tuning.middle_cells, tuning.middle_effort, 0.5);
        if (tuning.nest_effort > 0 && found_)
            nest(tuning);
        else
            finish_greedily(tuning);
        if (found_ && !has_kept())
            inflate(
                chains_, room_, max_scale_, tuning.inflate_effort,
                [this] { return !stopped(0.98); }, packing_);
        if (aborted_)
            return SearchResult::aborted;
        return found_ ? SearchResult::found : SearchResult::not_found;
    }

private:
    /// Whether the wanted coverage is out of reach if charts become larger by `growth` at most.
    bool is_hopeless(const Demand& demand, double growth) {
        if (!found_ || aborted_)
            return false;
        const double texture = double(options_.width) * double(options_.height) * options_.tiles;
        const double scale = packing_.scale * growth;
        packing_.attainable =
            std::min(packing_.attainable, demand.square * scale * scale / texture);
        return packing_.attainable < options_.wanted;
    }

    /// The area that charts and their gutters fill at the first try, in texels squared.
    double room_area() const {
        double area = k_first_fill * (room_.width + room_.gutter) * (room_.height + room_.gutter) *
                      options_.tiles;
        for (const ChartShape& shape : chains_.shapes)
            if (shape.kept)
                area -= shape.area + shape.hull_perimeter * room_.gutter / 2;
        return area;
    }

    Page page(double cells) const {
        return make_page(room_, chains_, options_.tiles, cells, turned_);
    }

    /// How many charts the local search rearranges: the largest, up to 95 % of the area of all
    /// boxes. The others fill the gaps that these leave.
    size_t count_large() const {
        double area = 0, sum = 0;
        size_t count = 0;
        const auto box = [&](uint32_t i) {
            return chains_.shapes[i].length * chains_.shapes[i].width;
        };
        for (uint32_t chart : plan_.order)
            area += box(chart);
        for (uint32_t chart : plan_.order) {
            if (count >= k_max_arranged || (count >= 8 && sum > 0.95 * area))
                break;
            ++count;
            sum += box(chart);
        }
        return count;
    }

    /// Reports progress; true if the search should stop.
    bool stopped(double done) {
        done_ = done;
        return !proceeds();
    }
    /// The same with the fraction reported last, on any thread.
    bool proceeds() {
        if (!aborted_ && options_.proceed && !options_.proceed(std::min(1.0, done_)))
            aborted_ = true;
        return !aborted_;
    }

    static double cost(const Layout& layout) { return layout.height + layout.mean_top; }

    void turn(Plan& plan, uint32_t chart, uint32_t fine_turn) const {
        if (chains_.shapes[chart].turns_finely)
            plan.fine_turn[chart] = uint8_t(fine_turn);
    }

    /// One random change among the first `n` charts: two swapped, one moved to another place of the
    /// order, or one turned. False if it leaves the plan as it was.
    bool change(Plan& plan, uint32_t n) {
        const uint32_t i = random_.below(n), j = random_.below(n);
        const auto from = plan.order.begin() + i, to = plan.order.begin() + j;
        switch (random_.below(3)) {
        case 0:
            std::swap(*from, *to);
            return i != j;
        case 1:
            if (from < to)
                std::rotate(from, from + 1, to + 1);
            else
                std::rotate(to, from, from + 1);
            return i != j;
        default:
            const uint8_t before = plan.fine_turn[*from];
            turn(plan, *from, random_.below(MaskSet::k_fine));
            return plan.fine_turn[*from] != before;
        }
    }

    /// A copy of the plan with one change, unless the few that are tried are none: where charts
    /// stand straight, every third would be, and the same layout would be made again.
    Plan mutated(uint32_t n) {
        constexpr int k_tries = 8;
        Plan next = plan_;
        for (int tries = 0; tries < k_tries && !change(next, n); ++tries) {
        }
        return next;
    }

    /// A restart: the first `n` charts in a randomised order of size, half of them turned randomly.
    Plan restarted(uint32_t n) {
        Plan next = plan_;
        std::vector<std::pair<double, uint32_t>> keys;
        for (uint32_t i = 0; i < n; ++i) {
            const ChartShape& shape = chains_.shapes[next.order[i]];
            keys.push_back(
                {-(shape.length + shape.width) * (1024 + random_.below(512)), next.order[i]});
        }
        std::sort(keys.begin(), keys.end());
        for (uint32_t i = 0; i < n; ++i) {
            next.order[i] = keys[i].second;
            const uint32_t turn = random_.below(2 * MaskSet::k_fine);
            this->turn(next, keys[i].second, turn < MaskSet::k_fine ? turn : 0);
        }
        return next;
    }

    /// First layouts; decides whether grid rows run along the texture's x or y axis.
    void choose_row_direction(double cells) {
        fit_scale(cells, k_draft_tries, 0.0);
        if (options_.width == options_.height)
            return;
        const double upright = found_ ? packing_.scale : 0;
        turned_ = true;
        fit_scale(cells, k_draft_tries, 0.1);
        turned_ = found_ && packing_.scale > upright;
    }

    /// A step of the local search.
    struct Trial {
        Plan plan;
        Random random; ///< as making the plan left it
        bool made = false;
        Layout layout = {};
        uint64_t effort = 0;
    };

    /// Local search on a grid of cells * cells: changes order and rotations of the large charts,
    /// keeps changes that do not raise the cost, and raises the scale whenever everything fits.
    void improve(double cells, uint64_t budget, double done) {
        const uint32_t n = uint32_t(count_large());
        if (n == 0 || stopped(done) || (found_ && packing_.scale >= max_scale_))
            return;
        const Page page = this->page(cells);
        const ChartChains coarse = simplify(chains_, k_simplify_cells / (scale_ * page.density));
        MaskSet masks(coarse);
        masks.reset(page, found_ ? std::min(max_scale_, packing_.scale * k_growth) : scale_);
        double current = cost(maker_.make(masks, page, plan_));
        Plan best = plan_;
        const uint64_t patience = budget / k_starts;
        uint64_t spent = 0, last_gain = 0;
        trials_.clear();
        while (spent < budget) {
            if (stopped(done + 0.3 * double(spent) / double(budget)))
                return;
            const uint64_t before = spent;
            const bool stuck = spent - last_gain > patience;
            if (stuck) {
                last_gain = spent;
                trials_.assign(1, Trial{restarted(n), random_});
            }
            const double max_cost = stuck ? std::numeric_limits<double>::infinity() : current;
            const uint64_t left = std::min(budget, last_gain + patience) - spent;
            Trial trial = next_trial(masks, page, n, max_cost, left);
            spent += trial.effort;
            if (cost(trial.layout) > max_cost)
                continue;
            plan_ = trial.plan;
            if (trial.layout.complete) {
                best = plan_;
                last_gain = before;
                if (!raise_scale(masks, page, trial, spent))
                    return;
            }
            current = cost(trial.layout);
            trials_.clear();
        }
        plan_ = best;
    }

    /// Keeps a complete layout and makes larger ones of the same plan until one does not fit. False
    /// if the largest scale is reached.
    bool raise_scale(MaskSet& masks, const Page& page, Trial& trial, uint64_t& spent) {
        while (trial.layout.complete) {
            keep(trial.layout, page);
            const double growth = std::sqrt(page.height / trial.layout.height);
            const double scale = masks.scale() * std::max(k_growth, growth);
            if (scale > max_scale_)
                return false;
            masks.reset(page, scale);
            make_layout(maker_, masks, page, trial);
            spent += trial.effort;
        }
        return true;
    }

    /// The next step of the local search, from trials_ if it is there already. Otherwise several
    /// are tried at once, as if all before the last were to be refused; `left`: the effort after
    /// which the search goes on elsewhere.
    Trial next_trial(MaskSet& masks, const Page& page, uint32_t n, double max_cost, uint64_t left) {
        constexpr uint64_t k_most_ahead = 16;
        if (trials_.empty()) {
            const uint64_t ahead = !k_has_threads || options_.executor == nullptr
                                       ? 1
                                       : std::min(k_most_ahead, left / (last_effort_ + 1) + 1);
            for (uint64_t i = 0; i < ahead; ++i)
                trials_.push_back(Trial{mutated(n), random_});
        }
        if (!trials_.front().made)
            make_layouts(masks, page, max_cost);
        Trial trial = std::move(trials_.front());
        trials_.pop_front();
        random_ = trial.random;
        last_effort_ = trial.effort;
        return trial;
    }

    /// Makes the layouts of trials_, in vain for those after one that is accepted, which are left
    /// out if that is known in time.
    void make_layouts(MaskSet& masks, const Page& page, double max_cost) {
        if (trials_.size() == 1)
            return make_layout(maker_, masks, page, trials_[0], max_cost);
        for (const Trial& trial : trials_)
            masks.draw_all(trial.plan);
        std::atomic<size_t> next{0}, accepted{trials_.size()};
        parallel_for(options_.executor, trials_.size(), [&](size_t) {
            const size_t i = next++; // in order, whatever the executor's
            if (i > accepted)
                return;
            const auto maker = makers_.lease(
                [this] { return std::make_unique<LayoutMaker>([this] { return proceeds(); }); });
            make_layout(*maker, masks, page, trials_[i], max_cost);
            if (cost(trials_[i].layout) <= max_cost)
                for (size_t first = accepted; i < first;)
                    if (accepted.compare_exchange_weak(first, i))
                        break;
        });
    }

    static void make_layout(LayoutMaker& maker, MaskSet& masks, const Page& page, Trial& trial,
                            double max_cost = std::numeric_limits<double>::infinity()) {
        const uint64_t before = maker.effort();
        trial.layout = maker.make(masks, page, trial.plan, max_cost);
        trial.effort = maker.effort() - before;
        trial.made = true;
    }

    /// Charts on the page, wherever grids of other densities place them.
    struct Arrangement {
        double scale = 0;
        std::vector<Pose> poses;
        std::vector<Vec2> centres; ///< in texels
    };

    /// Whether charts are nested: several, but not too many, that may turn on one page.
    bool may_nest() const {
        return options_.quality == Quality::quality && options_.tiles == 1 &&
               plan_.quarters == MaskSet::k_quarters && plan_.order.size() > 1 &&
               plan_.order.size() <= k_max_nested && !has_kept();
    }
    bool has_kept() const {
        return std::any_of(chains_.shapes.begin(), chains_.shapes.end(),
                           [](const ChartShape& shape) { return shape.kept; });
    }

    /// Improves the best layout by letting charts overlap and moving them apart: for another
    /// arrangement on a rough grid, then, ever finer, for the largest scale.
    void nest(const Tuning& tuning) {
        Arrangement now;
        now.scale = packing_.scale;
        for (uint32_t chart : plan_.order) {
            const Slot& slot = best_[chart];
            now.poses.push_back({chart, slot.fine_turn, slot.quarter, 0, 0});
            now.centres.push_back(slot.centre * (1 / best_density_));
        }
        const Arrangement start = now;
        rearrange(tuning.nest_effort * 6 / 10, now);
        double cells = k_first_exact_cells;
        if (now.scale <= start.scale || !settle(cells, tuning.nest_effort / 10, 0.8, now))
            now = start;
        while (cells < tuning.final_cells) {
            cells = std::min(2 * cells, tuning.final_cells);
            settle(cells, tuning.nest_effort * 15 / 100, 0.9, now);
        }
    }

    /// Looks for an arrangement of the charts at a larger scale on a grid too rough to keep the
    /// gutter.
    void rearrange(uint64_t budget, Arrangement& best) {
        Page page = this->page(k_rough_cells);
        page.gutter = k_rough_gutter / page.density;
        const ChartChains coarse = simplify(chains_, k_simplify_cells / (scale_ * page.density));
        MaskSet masks(coarse);
        Nester nester(masks, page, chains_.shapes.size(), [this] { return proceeds(); });
        const int64_t tolerance = int64_t(k_rough_overlap * page.width * page.height);
        double growth = k_first_growth;
        Arrangement now = best;
        int failures = 0;
        while (nester.effort() < budget) {
            const double scale = best.scale * growth;
            if (stopped(0.5 + 0.3 * double(nester.effort()) / double(budget)) || scale > max_scale_)
                return;
            masks.reset(page, scale);
            if (!nester.start(now.poses, now.centres))
                return;
            if (failures > 0)
                nester.swap_two();
            const bool fits = nester.separate(tolerance, k_rough_patience, true);
            now = {scale, nester.poses(), nester.centres()};
            failures = fits ? 0 : failures + 1;
            if (fits)
                best = now;
            if (failures == k_swaps) {
                growth = std::max(k_growth, 1 + (growth - 1) / 2);
                now = best;
                failures = 0;
            }
        }
    }

    /// Moves charts by a few cells on a grid that keeps the gutter, at ever larger scales. If they
    /// do not fit, at smaller ones first; false if no scale near the best one will do.
    bool settle(double cells, uint64_t budget, double done, Arrangement& best) {
        const Page page = this->page(cells);
        const ChartChains coarse = simplify(chains_, k_simplify_cells / (scale_ * page.density));
        MaskSet masks(coarse);
        Nester nester(masks, page, chains_.shapes.size(), [this] { return proceeds(); });
        const double least = k_worth_settling * packing_.scale;
        double growth = k_first_growth, scale = best.scale;
        bool settled = false;
        while (nester.effort() < budget && growth > k_least_growth && scale >= least &&
               scale <= max_scale_ && !stopped(done)) {
            masks.reset(page, scale);
            const bool fits = nester.start(best.poses, best.centres) &&
                              nester.separate(0, k_exact_patience, false);
            if (fits) {
                best = {scale, nester.poses(), nester.centres()};
                settled = true;
                keep(nester.layout(), page);
            } else if (settled) {
                growth = 1 + (growth - 1) / 2;
            }
            scale = settled ? best.scale * growth : scale / k_first_growth;
        }
        return settled;
    }

    /// The last greedy layouts.
    void finish_greedily(const Tuning& tuning) {
        plan_.skip_full_rows = plan_.skip_full_rows && !tuning.thorough_end;
        fit_scale(tuning.final_cells, tuning.tries, 0.8);
    }

    /// Searches the largest scale at which the plan fits on a grid of cells * cells.
    void fit_scale(double cells, int tries, double done) {
        const Page page = this->page(cells);
        double scale = found_ ? std::min(max_scale_, packing_.scale * 1.02) : scale_;
        const double tolerance = k_simplify_cells / (scale * page.density);
        const bool passing = MaskSet::are_passing(plan_);
        const ChartChains fine = passing ? simplify(in_order(chains_, plan_.order), tolerance)
                                         : simplify(chains_, tolerance);
        Plan plan = plan_;
        if (passing)
            std::iota(plan.order.begin(), plan.order.end(), 0);
        MaskSet masks(fine, options_.executor);
        double low = found_ ? packing_.scale : 0, high = max_scale_ * 1.0001;
        for (int i = 0; i < tries || (!found_ && i < k_max_tries); ++i) {
            if (stopped(done + 0.2 * i / tries))
                return;
            masks.reset(page, scale);
            const Layout layout = maker_.make(masks, page, plan);
            if (layout.complete) {
                keep(layout, page, passing);
                low = std::max(low, scale);
            } else {
                high = std::min(high, scale);
            }
            double next = scale * std::sqrt(page.height / layout.height);
            if (layout.complete)
                next = std::max(next, scale * k_growth);
            if (next >= high || next <= low)
                next = low > 0 ? (low + high) / 2 : high * 0.95;
            if (next > max_scale_ || next < min_scale_ || (low > 0 && high < low * 1.002))
                return;
            scale = next;
        }
    }

    /// Takes a complete layout over as the result if its scale is the largest so far. `sorted`: its
    /// charts are numbered in the plan's order.
    void keep(const Layout& layout, const Page& page, bool sorted = false) {
        if (found_ && layout.scale <= packing_.scale)
            return;
        found_ = true;
        packing_.scale = layout.scale;
        best_density_ = page.density;
        if (!sorted) {
            write_placements(layout, page, packing_.placements);
            best_ = layout.slots;
            return;
        }
        std::vector<Placement> placements;
        write_placements(layout, page, placements);
        for (size_t i = 0; i < placements.size(); ++i)
            packing_.placements[plan_.order[i]] = placements[i];
    }

    const ChartChains& chains_;
    const PackRoom& room_;
    double max_scale_, min_scale_;
    const PackOptions& options_;
    Packing& packing_;
    std::vector<Slot> best_;  ///< of the best layout
    double best_density_ = 1; ///< cells per texel there
    Plan plan_;
    LayoutMaker maker_{[this] { return proceeds(); }};
    WorkspacePool<LayoutMaker> makers_{maker_}; ///< for layouts that are made at the same time
    std::deque<Trial> trials_;                  ///< to come, all made from plan_
    uint64_t last_effort_ = 0;                  ///< of the last trial
    double done_ = 0;                           ///< the fraction reported last
    Random random_;
    double scale_ = 0;
    bool turned_ = false;
    bool found_ = false;
    std::atomic<bool> aborted_{false};
};

} // namespace

SearchResult search_layout(const ChartChains& chains, const PackRoom& room, double max_scale,
                           double min_scale, const PackOptions& options, Packing& packing) {
    return Search(chains, room, max_scale, min_scale, options, packing).run();
}

} // namespace tessora::atlas
