#include "atlas/charts/cut.h"

#include "atlas/geometry/box.h"

#include <algorithm>

namespace tessora::atlas {

ChartCutter::ChartCutter(Flattener& flattener, const Atoms& atoms, const Components& planes,
                         BorderSmoother& smoother)
    : flattener_(flattener), set_(flattener.set), atoms_(atoms), planes_(planes),
      smoother_(smoother) {
    part_along_.assign(atoms.count, 0.0);
    side_.assign(set_.surface.face_count, 0);
    pieces_.of_face.assign(set_.surface.face_count, k_none);
}

Vec2 ChartCutter::centroid(uint32_t t) const {
    const Vec2 sum =
        set_.uv[set_.node[3 * t]] + set_.uv[set_.node[3 * t + 1]] + set_.uv[set_.node[3 * t + 2]];
    return sum * (1.0 / 3);
}

CutLine ChartCutter::middle_line(uint32_t c) const {
    const Chart& chart = set_.charts[c];
    double total = 0, xx = 0, xy = 0, yy = 0;
    Vec2 mean;
    for (uint32_t t : chart.faces) {
        const double area = set_.surface.frame[t].area();
        mean = mean + centroid(t) * area;
        total += area;
    }
    mean = mean * (1 / total);
    for (uint32_t t : chart.faces) {
        const Vec2 d = centroid(t) - mean;
        const double area = set_.surface.frame[t].area();
        xx += area * d.x * d.x;
        xy += area * d.x * d.y;
        yy += area * d.y * d.y;
    }
    const double half = 0.5 * (xx - yy), radius = std::sqrt(half * half + xy * xy);
    const Vec2 axis = !(radius > 0) ? Vec2{1, 0} // a square, say
                      : half >= 0   ? Vec2{half + radius, xy}
                                    : Vec2{xy, radius - half};
    return {axis, dot(axis, mean)};
}

CutLine ChartCutter::middle_line(uint32_t c, Vec2 axis) const {
    double total = 0, along = 0;
    for (uint32_t t : set_.charts[c].faces) {
        const double area = set_.surface.frame[t].area();
        along += area * dot(axis, centroid(t));
        total += area;
    }
    return {axis, along / total};
}

/// Assigns each part of the chart to a side: by whether its centroid lies beyond the line.
void ChartCutter::choose_sides(const Chart& chart, const CutLine& line, const Components& parts) {
    for (uint32_t t : chart.faces) {
        const double area = set_.surface.frame[t].area();
        part_along_[parts.of_face[t]] += area * (dot(centroid(t), line.axis) - line.offset);
    }
    for (uint32_t t : chart.faces)
        side_[t] = part_along_[parts.of_face[t]] > 0;
    for (uint32_t t : chart.faces)
        part_along_[parts.of_face[t]] = 0;
}

/// Finds the connected pieces of the two sides.
void ChartCutter::find_pieces(const Chart& chart) {
    pieces_.area.clear();
    pieces_.side.clear();
    for (uint32_t t : chart.faces)
        pieces_.of_face[t] = k_none;
    std::vector<uint32_t> stack;
    for (uint32_t seed : chart.faces) {
        if (pieces_.of_face[seed] != k_none)
            continue;
        const uint32_t piece = uint32_t(pieces_.area.size());
        pieces_.area.push_back(0);
        pieces_.side.push_back(side_[seed]);
        pieces_.of_face[seed] = piece;
        stack.push_back(seed);
        while (!stack.empty()) {
            const uint32_t t = stack.back();
            stack.pop_back();
            pieces_.area[piece] += set_.surface.frame[t].area();
            for (uint32_t h = 3 * t; h < 3 * t + 3; ++h) {
                const uint32_t other = set_.glued[h] ? set_.surface.mate[h] / 3 : t;
                if (pieces_.of_face[other] == k_none && side_[other] == side_[t]) {
                    pieces_.of_face[other] = piece;
                    stack.push_back(other);
                }
            }
        }
    }
}

/// Moves all but the largest piece of each side to the other side until both sides are connected.
/// False if a few rounds do not achieve that.
bool ChartCutter::connect_sides(const Chart& chart) {
    constexpr int k_rounds = 4;
    for (int round = 0; round < k_rounds; ++round) {
        find_pieces(chart);
        if (pieces_.area.size() == 2)
            return pieces_.side[0] != pieces_.side[1];
        uint32_t largest[2] = {k_none, k_none};
        for (uint32_t p = 0; p < pieces_.area.size(); ++p) {
            uint32_t& best = largest[pieces_.side[p]];
            if (best == k_none || pieces_.area[p] > pieces_.area[best])
                best = p;
        }
        for (uint32_t t : chart.faces)
            if (pieces_.of_face[t] != largest[side_[t]])
                side_[t] = !side_[t];
    }
    return false;
}

void ChartCutter::remember(uint32_t chart) {
    cuts_.push_back({chart, set_.charts[chart], {}, {}, {}});
    Cut& cut = cuts_.back();
    cut.node.reserve(3 * cut.before.faces.size());
    cut.glued.reserve(3 * cut.before.faces.size());
    for (uint32_t t : cut.before.faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
            cut.node.push_back(set_.node[c]);
            cut.glued.push_back(set_.glued[c]);
            if (set_.node[c] == c)
                cut.uv.push_back(set_.uv[c]);
        }
}

void ChartCutter::split(const Cut& cut) {
    Chart halves[2];
    for (uint32_t t : cut.before.faces)
        halves[side_[t]].faces.push_back(t);
    for (uint32_t t : halves[1].faces)
        for (uint32_t h = 3 * t; h < 3 * t + 3; ++h)
            if (set_.glued[h] && side_[set_.surface.mate[h] / 3] == 0)
                set_.set_glued(h, false);
    set_.rebuild_nodes(cut.before.faces);
    // A new node is part of an old one. If it has the number of an old one, then of that.
    size_t i = 0;
    for (uint32_t t : cut.before.faces)
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c, ++i)
            set_.uv[set_.node[c]] = set_.uv[cut.node[i]];
    set_.charts[cut.chart] = std::move(halves[0]);
    set_.add_chart(std::move(halves[1]));
}

bool ChartCutter::cut(uint32_t chart, const CutLine& line, Between parts) {
    choose_sides(set_.charts[chart], line, parts == Between::planes ? planes_ : atoms_);
    if (!connect_sides(set_.charts[chart]))
        return false;
    remember(chart);
    split(cuts_.back());
    const uint32_t second = uint32_t(set_.charts.size() - 1);
    if (!flattener_.judge_without_moving(set_.charts[chart]) ||
        !flattener_.judge_without_moving(set_.charts[second])) {
        undo();
        return false;
    }
    smoother_.smooth(chart, second);
    return true;
}

double ChartCutter::cut_length(double worth) const {
    const uint32_t first = cuts_.back().chart, second = uint32_t(set_.charts.size() - 1);
    double through_planes = 0;
    for (uint32_t h : set_.charts[second].border) {
        const uint32_t mate = set_.surface.mate[h];
        if (mate != k_none && set_.chart[mate / 3] == first &&
            planes_.of_face[h / 3] == planes_.of_face[mate / 3])
            through_planes += set_.surface.edge_length(h);
    }
    return 0.5 * (set_.charts[first].border_length + set_.charts[second].border_length -
                  cuts_.back().before.border_length) +
           (worth - 1) * through_planes;
}

void ChartCutter::undo() {
    Cut& cut = cuts_.back();
    set_.charts.pop_back();
    size_t i = 0, n = 0;
    for (uint32_t t : cut.before.faces) {
        set_.chart[t] = cut.chart;
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c, ++i) {
            set_.node[c] = cut.node[i];
            set_.glued[c] = cut.glued[i];
            if (cut.node[i] == c)
                set_.uv[c] = cut.uv[n++];
        }
    }
    set_.charts[cut.chart] = std::move(cut.before);
    cuts_.pop_back();
}

namespace {

// docs/atlas.md, "Cutting for the texture", explains these.

/// What a cut must be worth. Lengths and areas are in units in which the area of all charts is 1.
struct CutTerms {
    /// Charts that cover so much of the texture are not cut unasked; from the second on they are
    /// not cut through the middle, from the third on not halved.
    double well_filled = 0.8, fairly_filled = 0.78, poorly_filled = 0.76;
    /// A line must save so much void, so much per length, and so much for twice as many charts,
    /// of which one more is a share. Charts of less area are not cut.
    double least_saving = 0.004, least_rate = 0.04, saving_of_doubling = 0.09;
    double least_share = 0.03;
    /// How many times its length a cut through a plane counts.
    double plane_worth = 4;
    /// Factor by which each cut through the middle must raise coverage.
    double min_growth = 1.05;
    /// The coverage that halving a chart must gain: so much, or the price of a chart if that is
    /// more, and so much per length of the cut.
    double least_gain = 0.01, gain_per_length = 0.03;
    /// Only charts of this area are halved, and only so many of the largest are tried.
    double halved_share = 0.1;
    size_t most_halved = 2;
    /// With more charts none is halved: there, quick layouts differ by more than a half gains.
    uint32_t few_charts = 12;
    /// The search for cuts through the middle ends after so many failed groups in a row.
    uint32_t max_failures = 1;
    uint32_t max_cuts = 24;

    static CutTerms of(const CutOptions& options) {
        constexpr double k_least_filled = 0.7; // factor at full reluctance
        CutTerms terms = of_effort(options.effort);
        const double filled = 1 + options.reluctance * (k_least_filled - 1);
        const double worth = worth_of_charts(options.reluctance);
        for (double* term : {&terms.well_filled, &terms.fairly_filled, &terms.poorly_filled})
            *term *= filled;
        for (double* term : {&terms.least_rate, &terms.saving_of_doubling, &terms.least_gain,
                             &terms.gain_per_length})
            *term *= worth;
        terms.min_growth = 1 + worth * (terms.min_growth - 1);
        return terms;
    }

private:
    /// The more effort, the less a cut must be worth. `effort` as in Options.
    static CutTerms of_effort(int effort) {
        CutTerms terms;
        if (effort <= k_usual_effort) {
            terms.max_cuts = terms.max_cuts * uint32_t(effort) / k_usual_effort;
            return terms;
        }
        const double more = double(effort - k_usual_effort) / (k_max_effort - k_usual_effort);
        const auto towards = [&](double& term, double end) { term += more * (end - term); };
        towards(terms.well_filled, 0.9);
        towards(terms.fairly_filled, 0.86);
        towards(terms.poorly_filled, 0.84);
        towards(terms.least_saving, 0.003);
        towards(terms.least_rate, 0.03);
        towards(terms.saving_of_doubling, 0.05);
        towards(terms.least_share, 0.015);
        towards(terms.plane_worth, 1.5);
        towards(terms.min_growth, 1.02);
        towards(terms.least_gain, 0.004);
        towards(terms.gain_per_length, 0.008);
        towards(terms.halved_share, 0.04);
        terms.most_halved += size_t(more * 5);
        terms.few_charts += uint32_t(more * 200);
        terms.max_failures = 2;
        terms.max_cuts += uint32_t(more * 40);
        return terms;
    }
};

/// Cuts along lines are given up when so many more than those that paid, and as many again, do not.
constexpr uint32_t k_hopeless_cuts = 6;
/// Halving that gains so much more than it must is done without looking at other charts.
constexpr double k_plenty = 0.03;
/// Number of cuts through the middle that are tried together before they are undone.
constexpr uint32_t k_max_pending = 3;
/// Charts are cut through the middle if they waste at least this share of the whole area, which is
/// the most that a cut can gain.
constexpr double k_min_waste = 0.05;

/// The chart whose bounding square exceeds its own area the most: a long strip, or a shape bent
/// around empty space. k_none if every chart that is large enough was tried.
uint32_t most_wasteful(const ChartSet& set, const std::vector<uint8_t>& tried) {
    uint32_t best = k_none;
    double max_waste = k_min_waste * set.surface.total_area;
    Outline outline;
    for (uint32_t a = 0; a < set.charts.size(); ++a) {
        const Chart& chart = set.charts[a];
        if (!chart.alive || tried[a])
            continue;
        set.outline(chart, outline);
        const double side = min_area_box(outline.point).longer;
        const double waste = side * side - chart.stretch.area;
        if (waste > max_waste) {
            max_waste = waste;
            best = a;
        }
    }
    return best;
}

/// The charts that are worth halving, the largest first.
std::vector<uint32_t> largest_charts(const ChartSet& set, const CutTerms& terms) {
    std::vector<uint32_t> found;
    for (uint32_t a = 0; a < set.charts.size(); ++a)
        if (set.charts[a].alive &&
            set.charts[a].stretch.area >= terms.halved_share * set.surface.total_area)
            found.push_back(a);
    std::stable_sort(found.begin(), found.end(), [&](uint32_t a, uint32_t b) {
        return set.charts[a].stretch.area > set.charts[b].stretch.area;
    });
    found.resize(std::min(found.size(), terms.most_halved));
    return found;
}

/// Cuts charts along lines, those that save most void per length first.
class LineCutter {
public:
    LineCutter(ChartCutter& cutter, const CutTerms& terms)
        : cutter_(cutter), terms_(terms), set_(cutter.set()), area_(set_.surface.total_area),
          unit_(std::sqrt(area_)) {
        for (const Chart& chart : set_.charts)
            charts_ += chart.alive;
        for (uint32_t chart = 0; chart < set_.charts.size(); ++chart)
            list_lines(chart);
    }
    /// Whether there are lines that may be worth a cut.
    bool has_lines() const { return !lines_.empty(); }
    /// Makes up to `most` more cuts.
    void run(uint32_t most) {
        const size_t end = made() + most;
        while (!lines_.empty() && made() < end) {
            const auto best =
                std::max_element(lines_.begin(), lines_.end(), [](const Line& a, const Line& b) {
                    return a.candidate.saved * b.candidate.length <
                           b.candidate.saved * a.candidate.length;
                });
            const Line line = *best;
            lines_.erase(best);
            cut(line);
        }
    }
    /// Number of cuts that stand.
    uint32_t made() const { return made_; }
    /// Undoes the latest cuts, or makes undone ones again, until so many stand.
    void go_to(uint32_t cuts) {
        for (; made_ > cuts; --made_)
            cutter_.undo();
        for (; made_ < cuts; ++made_)
            cutter_.cut(cuts_[made_].chart, cuts_[made_].line, cuts_[made_].parts);
    }

private:
    struct Line {
        uint32_t chart;
        CutCandidate candidate;
    };
    struct Cut {
        uint32_t chart;
        CutLine line;
        ChartCutter::Between parts;
    };

    double least_saving() const {
        return std::max(terms_.least_saving, terms_.saving_of_doubling / charts_) * area_;
    }
    bool pays(double saved, double length) const {
        return saved >= least_saving() && saved >= terms_.least_rate * length * unit_;
    }
    void list_lines(uint32_t chart) {
        if (!set_.charts[chart].alive ||
            set_.charts[chart].stretch.area < terms_.least_share * area_)
            return;
        set_.outline(set_.charts[chart], outline_);
        for (const CutCandidate& candidate : find_cut_lines(outline_, least_saving()))
            if (pays(candidate.saved, candidate.length))
                lines_.push_back({chart, candidate});
    }
    double room_of(uint32_t chart) {
        set_.outline(set_.charts[chart], outline_);
        return likely_room(outline_);
    }
    /// Cuts if the cut between planes, or else that between polygons, pays as the line does.
    void cut(const Line& line) {
        const double room = room_of(line.chart);
        const auto cut_pays = [&](ChartCutter::Between parts) {
            if (!cutter_.cut(line.chart, line.candidate.line, parts))
                return false;
            const uint32_t second = uint32_t(set_.charts.size() - 1);
            if (!pays(room - room_of(line.chart) - room_of(second),
                      cutter_.cut_length(terms_.plane_worth))) {
                cutter_.undo();
                return false;
            }
            cuts_.push_back({line.chart, line.candidate.line, parts});
            return true;
        };
        if (!cut_pays(ChartCutter::Between::planes) &&
            !(cutter_.has_planes() && cut_pays(ChartCutter::Between::polygons)))
            return;
        ++made_;
        ++charts_;
        lines_.erase(std::remove_if(lines_.begin(), lines_.end(),
                                    [&](const Line& other) { return other.chart == line.chart; }),
                     lines_.end());
        list_lines(line.chart);
        list_lines(uint32_t(set_.charts.size() - 1));
    }

    ChartCutter& cutter_;
    const CutTerms& terms_;
    const ChartSet& set_;
    const double area_, unit_;
    double charts_ = 0; ///< number of those that are alive
    std::vector<Line> lines_;
    std::vector<Cut> cuts_; ///< all that were made, oldest first
    uint32_t made_ = 0;     ///< so many of them stand
    Outline outline_;
};

/// Implements cut_for_packing().
class CutSearch {
public:
    CutSearch(ChartCutter& cutter, const CutOptions& options, const std::function<double()>& pack)
        : cutter_(cutter), set_(cutter.set()), pack_(pack), options_(options),
          terms_(CutTerms::of(options)) {
        for (const Chart& chart : set_.charts)
            charts_before_ += chart.alive;
    }
    uint32_t run() {
        search();
        return kept_call_;
    }

private:
    void search() {
        LineCutter lines(cutter_, terms_);
        tried_.assign(set_.charts.size(), 0);
        if (!lines.has_lines() && most_wasteful(set_, tried_) == k_none &&
            largest_charts(set_, terms_).size() < 2)
            return; // one chart, nearly, and it fills a square

        keep(pack());
        if (!(coverage_ > 0) || (coverage_ >= terms_.well_filled && !options_.always))
            return;
        if (lines.has_lines() && options_.effort <= k_usual_effort)
            cut_along(lines);
        else if (lines.has_lines())
            cut_along_gradually(lines);
        if (coverage_ > 0 && (coverage_ < terms_.fairly_filled || options_.always))
            cut_middles();
        while (coverage_ > 0 && coverage_ < terms_.poorly_filled && room() > 0 &&
               charts_before_ + cuts_ <= terms_.few_charts)
            if (!halve_one())
                break;
    }

    double pack() {
        ++calls_;
        return pack_();
    }
    /// The charts stay as they are, and cover so much according to the latest layout.
    void keep(double coverage) {
        coverage_ = coverage;
        kept_call_ = calls_ - 1;
    }
    uint32_t room() const {
        const size_t charts = charts_before_ + cuts_ + pending_;
        const uint32_t left =
            terms_.max_cuts > cuts_ + pending_ ? terms_.max_cuts - cuts_ - pending_ : 0;
        if (options_.max_charts == 0)
            return left;
        return charts < options_.max_charts ? std::min(left, uint32_t(options_.max_charts - charts))
                                            : 0;
    }

    /// The coverage that more charts must gain, for the charts there are.
    double price(uint32_t more) const {
        return price_of_charts(double(charts_before_ + cuts_), more, options_.effort,
                               options_.reluctance);
    }

    /// All cuts along lines at once, or the first half of them if that is worth more, and so on.
    void cut_along(LineCutter& lines) {
        const double before = coverage_;
        uint32_t best = 0;
        double best_worth = 0;
        lines.run(room());
        for (uint32_t cuts = lines.made(); cuts > 0; cuts /= 2) {
            lines.go_to(cuts);
            const double now = pack();
            if (!(now > 0)) { // the caller stops
                coverage_ = 0;
                best = kept_call_ = 0; // the charts as they were at first
                break;
            }
            const double worth = now - before - price(cuts);
            if (worth > best_worth) {
                keep(now);
                best = cuts;
                best_worth = worth;
            } else if (best > 0) {
                break;
            }
        }
        lines.go_to(best);
        cutter_.accept();
        cuts_ = best;
    }

    /// Cuts along lines, a few at a time, for as long as they pay now and then; keeps the cuts up
    /// to the best layout.
    void cut_along_gradually(LineCutter& lines) {
        while (lines.made() <= 2 * cuts_ + k_hopeless_cuts) {
            const uint32_t before = lines.made();
            const uint32_t left = room() - std::min(room(), before - cuts_);
            lines.run(std::min(left, 1 + before / 4));
            if (lines.made() == before)
                break;
            const double now = pack();
            if (!(now > 0)) { // the caller stops
                coverage_ = 0;
                cuts_ = kept_call_ = 0; // the charts as they were at first
                break;
            }
            if (now - coverage_ > price(lines.made() - cuts_)) {
                keep(now);
                cuts_ = lines.made();
            }
        }
        lines.go_to(cuts_);
        cutter_.accept();
    }

    void cut_middles() {
        wanted_ = coverage_;
        tried_.assign(set_.charts.size(), 0);
        while (failures_ < terms_.max_failures && cuts_ < terms_.max_cuts) {
            const uint32_t chart = room() > 0 ? most_wasteful(set_, tried_) : k_none;
            if (chart == k_none) {
                undo_pending();
                break;
            }
            tried_[chart] = 1;
            if (!cutter_.cut(chart))
                continue;
            const double length = cutter_.cut_length(1);
            const double worth = length > 0 ? cutter_.cut_length(terms_.plane_worth) / length : 1;
            lay_out(1 + worth * (terms_.min_growth - 1));
        }
    }
    /// Packs after a new cut, which must raise coverage by that factor. Cuts that do not pay yet
    /// stay pending: of two strips of equal length, say, both have to be cut before anything can
    /// grow.
    void lay_out(double growth) {
        ++pending_;
        tried_.resize(set_.charts.size(), 0);
        wanted_ *= growth;
        const double now = pack();
        if (now >= wanted_) {
            cutter_.accept();
            keep(now);
            wanted_ = now;
            cuts_ += pending_;
            pending_ = failures_ = 0;
            tried_.assign(set_.charts.size(), 0);
        } else if (pending_ == k_max_pending) {
            undo_pending();
        }
    }
    void undo_pending() {
        for (; pending_ > 0; --pending_)
            cutter_.undo();
        tried_.resize(set_.charts.size());
        ++failures_;
        wanted_ = coverage_;
    }

    /// A chart halved along a line, and the layout with these halves.
    struct Half {
        uint32_t chart = k_none;
        CutLine line = {};
        double coverage = 0;
        uint32_t call = k_none;
    };
    /// Halves the large chart whose halves pack best for the length of the cut; false if none gains
    /// enough. What keeps two discs from filling a square is not void within their own boxes, so
    /// only layouts can tell.
    bool halve_one() {
        Half best;
        double best_gain = 0;
        const double least_gain = std::max(terms_.least_gain, price(1));
        for (uint32_t chart : largest_charts(set_, terms_)) {
            const CutLine along = cutter_.middle_line(chart);
            for (const CutLine& line :
                 {along, cutter_.middle_line(chart, {-along.axis.y, along.axis.x})}) {
                if (!cutter_.cut(chart, line))
                    continue;
                const double length = cutter_.cut_length(terms_.plane_worth);
                const double now = pack();
                cutter_.undo();
                if (!(now > 0))
                    return false; // the caller stops
                const double gain =
                    now - coverage_ - least_gain -
                    terms_.gain_per_length * length / std::sqrt(set_.surface.total_area);
                if (gain <= best_gain)
                    continue;
                best_gain = gain;
                best = {chart, line, now, calls_ - 1};
                if (gain >= k_plenty)
                    return accept_half(best);
            }
        }
        return best.chart != k_none && accept_half(best);
    }
    bool accept_half(const Half& half) {
        if (!cutter_.cut(half.chart, half.line))
            return false;
        cutter_.accept();
        ++cuts_;
        coverage_ = half.coverage;
        kept_call_ = half.call;
        return true;
    }

    ChartCutter& cutter_;
    const ChartSet& set_;
    const std::function<double()>& pack_;
    const CutOptions options_;
    const CutTerms terms_;
    double coverage_ = 0, wanted_ = 0; ///< of the last accepted layout; what the pending cuts must
                                       ///< reach
    std::vector<uint8_t> tried_; ///< per chart: whether it was cut since the last accepted cut
    size_t charts_before_ = 0;
    uint32_t cuts_ = 0, pending_ = 0, failures_ = 0;
    uint32_t calls_ = 0, kept_call_ = k_none; ///< of pack_, and which was for the present charts
};

} // namespace

uint32_t cut_for_packing(ChartCutter& cutter, const CutOptions& options,
                         const std::function<double()>& pack) {
    return CutSearch(cutter, options, pack).run();
}

} // namespace tessora::atlas
