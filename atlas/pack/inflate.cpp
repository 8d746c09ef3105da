#include "atlas/pack/inflate.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// Tolerance of simplified borders, in texels.
constexpr double k_simplify_texels = 0.04;

/// Smaller gutters leave charts no room to move safely. Texels.
constexpr double k_least_gutter = 0.5;

/// Charts keep this much more than their distance, in texels, because the conditions are
/// linearised, and a condition counts as met if a quarter of it is missing.
constexpr double k_surplus = 0.02, k_missing = k_surplus / 4;

/// A condition that is broken is corrected by this much more than needed, which spreads faster
/// through rows of charts.
constexpr double k_relaxation = 1.3;

/// Conditions with a smaller gap, in texels, may soon be broken.
constexpr double k_tight = 0.2;

/// A growth is given up if so many sweeps over the conditions do not meet them.
constexpr int k_sweeps = 300;

/// The first growth that is tried, and the least.
constexpr double k_first_growth = 1e-3, k_least_growth = 1e-4;

/// Rounds without growth after which all charts are jammed.
constexpr int k_jammed = 2;

/// Attempts to move charts apart after the last round, each with this part of the effort.
constexpr int k_repairs = 4;

/// Effort of finding the contacts, per point.
constexpr uint64_t k_finding_effort = 16;

/// Smallest cells of the grid that finds neighbours, in texels.
constexpr double k_cell = 8;

/// A chart on the page. Its points lie at `at` + scale * turned(point - centre).
struct Body {
    uint32_t begin = 0, end = 0; ///< points
    uint32_t tile = 0;
    Vec2 centre; ///< in chart coordinates
    Turn turn;
    Vec2 at;                ///< of the centre, texels
    double radius = 0;      ///< of the farthest point, chart units
    double mean_square = 0; ///< squared distance of the points, chart units
    bool turns = false;
    double inverse_inertia = 0; ///< 1 / squared texels; 0 if it does not turn
};

/// How a body moves in a round.
struct Motion {
    Vec2 move;
    double angle = 0; ///< radians
};

/// A condition on two bodies, or on one and a wall (j none): with d the growth of all charts,
/// gap + growth * d + dot(n, move_i - move_j) + a * angle_i - b * angle_j >= 0.
/// Single precision: thousands of charts have more conditions than caches hold, and what comes of
/// them is measured anyway.
struct Contact {
    uint32_t i, j;
    float nx, ny; ///< from j to i, unit length
    float a, b;
    float gap, growth;
    float inverse; ///< 1 / the squared length of its gradient

    Vec2 n() const { return {nx, ny}; }
};

class Inflater {
public:
    Inflater(const ChartChains& chains, const PackRoom& room, double max_scale, Packing& packing)
        : chains_(chains), room_(room), max_scale_(max_scale), packing_(packing),
          scale_(packing.scale), bodies_(chains.shapes.size()), points_(chains.points.size()),
          body_of_(chains.points.size()), next_(chains.points.size()) {
        for (uint32_t k = 0; k < bodies_.size(); ++k)
            enter(k);
    }

    void run(uint64_t effort, const std::function<bool()>& goes_on) {
        if (effort < k_finding_effort * points_.size())
            return;
        limit_ = effort;
        measure();
        for (int failures = 0; failures < k_jammed && can_go_on() && effort_ <= limit_;) {
            if (!goes_on())
                return;
            failures = grow() ? 0 : failures + 1;
            measure();
        }
        repair();
    }

private:
    bool can_go_on() const { return nearest_ >= needed_ / 2 && scale_ < max_scale_; }

    /// Finds the contacts at the present places, and takes the places over if they are valid.
    void measure() {
        place_points();
        find_contacts();
        valid_ = nearest_ >= needed_ && nearest_wall_ >= 0;
        if (valid_)
            keep();
    }

    /// What is not linear may have left charts of the last round too close. Moves them apart, and
    /// gives back more and more of the growth where that does not help.
    void repair() {
        const uint64_t more = limit_ / k_repairs;
        double growth = 0;
        for (int tries = 0; tries < k_repairs && !valid_ && can_go_on(); ++tries) {
            limit_ = effort_ + more;
            motions_.assign(bodies_.size(), {});
            if (solve(growth) && is_safe(growth)) {
                apply(motions_, growth);
                measure();
            }
            growth = -0.5 * (1 - packing_.scale / scale_);
        }
    }

    void enter(uint32_t k) {
        const ChartShape& shape = chains_.shapes[k];
        const Placement& placement = packing_.placements[k];
        Body& body = bodies_[k];
        if (shape.chain_begin == shape.chain_end)
            return;
        body.begin = chains_.chain_begin[shape.chain_begin];
        body.end = chains_.chain_begin[shape.chain_end];
        body.tile = placement.tile;
        body.turns = shape.turns_finely;
        body.turn = {placement.cosine, placement.sine};
        Vec2 low = chains_.points[body.begin], high = low;
        for (uint32_t p = body.begin; p < body.end; ++p) {
            const Vec2 q = chains_.points[p];
            low = {std::min(low.x, q.x), std::min(low.y, q.y)};
            high = {std::max(high.x, q.x), std::max(high.y, q.y)};
            body_of_[p] = k;
        }
        body.centre = (low + high) * 0.5;
        body.at = turned(body.centre, body.turn) * scale_ + Vec2{placement.x, placement.y};
        for (uint32_t p = body.begin; p < body.end; ++p) {
            const double squared =
                dot(chains_.points[p] - body.centre, chains_.points[p] - body.centre);
            body.radius = std::max(body.radius, std::sqrt(squared));
            body.mean_square += squared / (body.end - body.begin);
        }
        for (uint32_t chain = shape.chain_begin; chain < shape.chain_end; ++chain)
            for (uint32_t p = chains_.chain_begin[chain]; p < chains_.chain_begin[chain + 1]; ++p)
                next_[p] = std::min(p + 1, chains_.chain_begin[chain + 1] - 1);
    }

    void place_points() {
        for (Body& body : bodies_) {
            for (uint32_t p = body.begin; p < body.end; ++p)
                points_[p] = body.at + turned(chains_.points[p] - body.centre, body.turn) * scale_;
            const double inertia = body.mean_square * scale_ * scale_;
            body.inverse_inertia = body.turns && inertia > 0 ? 1 / inertia : 0;
        }
        effort_ += points_.size() * k_finding_effort;
    }

    int row_of(double y) const { return std::min(rows_ - 1, std::max(0, int(y / cell_))); }
    int column_of(double x) const { return std::min(columns_ - 1, std::max(0, int(x / cell_))); }

    /// Sorts the segments of all chains, named by their first points, into the cells that they come
    /// within reach of; those of a chart stay together.
    void fill_cells(double reach) {
        cell_ = std::max(k_cell, 2 * reach);
        columns_ = int(room_.width / cell_) + 1;
        rows_ = int(room_.height / cell_) + 1;
        entries_.clear();
        cell_begin_.assign(size_t(columns_) * size_t(rows_) + 1, 0);
        for (const Body& body : bodies_)
            for (uint32_t p = body.begin; p < body.end; ++p)
                list_cells(p, reach);
        for (size_t c = 1; c < cell_begin_.size(); ++c)
            cell_begin_[c] += cell_begin_[c - 1];
        segments_.resize(entries_.size());
        for (size_t e = entries_.size(); e-- > 0;)
            segments_[--cell_begin_[entries_[e].cell]] = entries_[e].segment;
    }

    void list_cells(uint32_t p, double reach) {
        Vec2 a = points_[p], b = points_[next_[p]];
        if (a.y > b.y)
            std::swap(a, b);
        const double slope = b.y > a.y ? (b.x - a.x) / (b.y - a.y) : 0;
        const int last = row_of(b.y + reach);
        for (int y = row_of(a.y - reach); y <= last; ++y) {
            // The part of the segment that is near this row.
            double u = a.x, v = b.x;
            if (b.y > a.y && y > 0 && y + 1 < rows_) {
                u = a.x + (std::min(b.y, std::max(a.y, y * cell_ - reach)) - a.y) * slope;
                v = a.x + (std::min(b.y, std::max(a.y, (y + 1) * cell_ + reach)) - a.y) * slope;
            }
            const int end = column_of(std::max(u, v) + reach);
            for (int x = column_of(std::min(u, v) - reach); x <= end; ++x) {
                const uint32_t cell = uint32_t(y * columns_ + x);
                entries_.push_back({cell, p});
                ++cell_begin_[cell];
            }
        }
    }

    /// Lists the conditions that can matter in this round, and measures the least distances.
    void find_contacts() {
        // Borders lie within the tolerance of their chains, which grows with the charts.
        const double slack = chains_.tolerance * scale_ * 1.01;
        needed_ = room_.gutter + 2 * slack;
        wall_ = slack;
        const double reach = 2 * needed_;
        fill_cells(reach);
        contacts_.clear();
        nearest_ = nearest_wall_ = reach;
        for (uint32_t k = 0; k < bodies_.size(); ++k)
            for (uint32_t p = bodies_[k].begin; p < bodies_[k].end; ++p) {
                find_walls(k, points_[p]);
                find_neighbours(k, points_[p], reach);
            }
    }

    void find_walls(uint32_t k, Vec2 p) {
        add_wall(k, p, {1, 0}, p.x - wall_);
        add_wall(k, p, {0, 1}, p.y - wall_);
        add_wall(k, p, {-1, 0}, room_.width - wall_ - p.x);
        add_wall(k, p, {0, -1}, room_.height - wall_ - p.y);
    }

    void add_wall(uint32_t i, Vec2 p, Vec2 n, double distance) {
        nearest_wall_ = std::min(nearest_wall_, distance);
        if (distance >= needed_)
            return;
        const Vec2 r = p - bodies_[i].at;
        const double a = cross(r, n);
        contacts_.push_back({i, k_none, float(n.x), float(n.y), float(a), 0,
                             float(distance - k_surplus), float(dot(n, r)),
                             float(1 / (1 + a * a * bodies_[i].inverse_inertia))});
    }

    /// Adds the nearest point of every other chart within reach of a point of chart k.
    void find_neighbours(uint32_t k, Vec2 p, double reach) {
        const size_t cell = size_t(row_of(p.y)) * size_t(columns_) + size_t(column_of(p.x));
        const uint32_t end = cell_begin_[cell + 1];
        for (uint32_t e = cell_begin_[cell]; e < end;) {
            const uint32_t j = body_of_[segments_[e]];
            const bool counts = j != k && bodies_[j].tile == bodies_[k].tile;
            double least = reach * reach;
            Vec2 nearest;
            for (; e < end && body_of_[segments_[e]] == j; ++e) {
                if (!counts)
                    continue;
                const Vec2 a = points_[segments_[e]], d = points_[next_[segments_[e]]] - a;
                const double squared = dot(d, d);
                const double t =
                    squared > 0 ? std::min(1.0, std::max(0.0, dot(p - a, d) / squared)) : 0;
                const Vec2 q = a + d * t;
                if (dot(p - q, p - q) < least) {
                    least = dot(p - q, p - q);
                    nearest = q;
                }
            }
            if (least < reach * reach)
                add_contact(k, j, p, nearest);
        }
    }

    void add_contact(uint32_t i, uint32_t j, Vec2 p, Vec2 q) {
        const double distance = length(p - q);
        nearest_ = std::min(nearest_, distance);
        if (!(distance > 0))
            return;
        const Vec2 n = (p - q) * (1 / distance), r = p - bodies_[i].at, s = q - bodies_[j].at;
        const double a = cross(r, n), b = cross(s, n);
        const double inverse =
            1 / (2 + a * a * bodies_[i].inverse_inertia + b * b * bodies_[j].inverse_inertia);
        contacts_.push_back({i, j, float(n.x), float(n.y), float(a), float(b),
                             float(distance - needed_ - k_surplus), float(dot(n, r - s)),
                             float(inverse)});
    }

    /// The gap that a condition has with the present motions.
    double gap_of(const Contact& c, double growth) const {
        const Motion& mi = motions_[c.i];
        double gap = c.gap + c.growth * growth + dot(c.n(), mi.move) + c.a * mi.angle;
        if (c.j != k_none)
            gap -= dot(c.n(), motions_[c.j].move) + c.b * motions_[c.j].angle;
        return gap;
    }

    /// Meets a condition, if it is broken, by moving and turning its bodies.
    void correct(const Contact& c, double gap) {
        if (gap >= 0)
            return;
        const double by = -gap * c.inverse * k_relaxation;
        Motion& mi = motions_[c.i];
        mi.move = mi.move + c.n() * by;
        mi.angle += by * c.a * bodies_[c.i].inverse_inertia;
        if (c.j == k_none)
            return;
        Motion& mj = motions_[c.j];
        mj.move = mj.move - c.n() * by;
        mj.angle -= by * c.b * bodies_[c.j].inverse_inertia;
    }

    /// Changes the motions until all conditions are met for this growth; false if many sweeps over
    /// them, or as many as the effort allows, do not achieve that. Most sweeps visit only those
    /// that had little to spare when all were visited.
    bool solve(double growth) {
        for (int sweep = 1; sweep <= k_sweeps && effort_ <= limit_; ++sweep) {
            tight_.clear();
            double least = 0;
            for (const Contact& c : contacts_) {
                const double gap = gap_of(c, growth);
                if (gap < k_tight)
                    tight_.push_back(c);
                least = std::min(least, gap);
                correct(c, gap);
            }
            effort_ += contacts_.size();
            if (least >= -k_missing)
                return true;
            for (; least < -k_missing && sweep < k_sweeps && effort_ <= limit_; ++sweep) {
                least = 0;
                for (const Contact& c : tight_) {
                    const double gap = gap_of(c, growth);
                    least = std::min(least, gap);
                    correct(c, gap);
                }
                effort_ += tight_.size();
            }
        }
        return false;
    }

    /// Whether no point moves by half the least distance of two charts, so that none can meet.
    bool is_safe(double growth) const {
        const double most = 0.49 * std::min(nearest_, needed_);
        for (size_t k = 0; k < bodies_.size(); ++k)
            if (length(motions_[k].move) +
                    (std::abs(motions_[k].angle) + std::abs(growth)) * bodies_[k].radius * scale_ >
                most)
                return false;
        return true;
    }

    /// Moves the charts, larger by as much as the conditions allow. Starts without growth: what is
    /// not linear left some conditions broken. Returns whether charts grew.
    bool grow() {
        motions_.assign(bodies_.size(), {});
        std::vector<Motion> best;
        double grown = 0, growth = 0;
        const double most = max_scale_ / scale_ - 1;
        for (;;) {
            if (solve(growth) && is_safe(growth)) {
                best = motions_;
                grown = growth;
                if (growth >= most)
                    break;
            } else {
                if (best.empty())
                    break;
                step_ /= 2;
                motions_ = best;
            }
            if (step_ < k_least_growth)
                break;
            growth = std::min(grown + step_, most);
        }
        step_ = std::max(2 * step_, k_least_growth);
        if (best.empty() && !is_safe(0))
            return false;
        apply(best.empty() ? motions_ : best, grown);
        return grown >= k_least_growth;
    }

    void apply(const std::vector<Motion>& motions, double growth) {
        for (size_t k = 0; k < bodies_.size(); ++k) {
            Body& body = bodies_[k];
            body.at = body.at + motions[k].move;
            if (!body.turns)
                continue;
            const double half = motions[k].angle / 2, size = 1 + half * half;
            const Vec2 t = turned({body.turn.cosine, body.turn.sine},
                                  {(1 - half * half) / size, 2 * half / size});
            body.turn = {t.x / length(t), t.y / length(t)};
        }
        scale_ = std::min(max_scale_, scale_ * (1 + growth));
    }

    /// Takes the present places over as the result.
    void keep() {
        if (scale_ <= packing_.scale)
            return;
        packing_.scale = scale_;
        for (size_t k = 0; k < bodies_.size(); ++k) {
            const Body& body = bodies_[k];
            const Vec2 at = body.at - turned(body.centre, body.turn) * scale_;
            packing_.placements[k] = {body.turn.cosine, body.turn.sine, at.x, at.y, body.tile};
        }
    }

    const ChartChains& chains_;
    const PackRoom& room_;
    const double max_scale_;
    Packing& packing_;
    double scale_;
    double step_ = k_first_growth; ///< of the growth that is tried next
    std::vector<Body> bodies_;
    std::vector<Vec2> points_;             ///< texels
    std::vector<uint32_t> body_of_, next_; ///< per point; the last of a chain is its own next
    double needed_ = 0, wall_ = 0; ///< distances that chains must keep from each other and the edge
    double nearest_ = 0;           ///< the least distance of two charts that was found
    double nearest_wall_ = 0;      ///< what the nearest point has to spare at the edge
    // Segments by cell.
    struct Entry {
        uint32_t cell, segment;
    };
    double cell_ = 0;
    int columns_ = 0, rows_ = 0;
    std::vector<Entry> entries_;
    std::vector<uint32_t> cell_begin_, segments_;
    std::vector<Contact> contacts_;
    std::vector<Contact> tight_; ///< those with little to spare
    std::vector<Motion> motions_;
    uint64_t effort_ = 0, limit_ = 0;
    bool valid_ = false; ///< the present places
};

} // namespace

void inflate(const ChartChains& chains, const PackRoom& room, double max_scale, uint64_t effort,
             const std::function<bool()>& goes_on, Packing& packing) {
    if (room.gutter < k_least_gutter)
        return;
    const ChartChains simple = simplify(chains, k_simplify_texels / packing.scale);
    Inflater(simple, room, max_scale, packing).run(effort, goes_on);
}

} // namespace tessora::atlas
