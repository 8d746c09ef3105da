/// Triangulation by ear clipping: a corner is cut off if the triangle with its two neighbours
/// contains no other part of the outline. Only reflex corners can lie in it; a grid finds those
/// near the triangle.
/// Source: M. Held, "FIST: Fast Industrial-Strength Triangulation of Polygons" (2001), for the
///         tests on outlines that touch themselves.
#include "polygon/outline.h"

#include <algorithm>
#include <cmath>

namespace tessora::polygon {

namespace {

/// Grid of reflex corners over the outline's bounding box.
class CornerGrid {
public:
    CornerGrid(const std::vector<Point2>& points, const std::vector<uint32_t>& members) {
        low_ = high_ = points[0];
        for (const Point2& p : points) {
            low_ = Point2{std::min(low_.x, p.x), std::min(low_.y, p.y)};
            high_ = Point2{std::max(high_.x, p.x), std::max(high_.y, p.y)};
        }
        side_ = static_cast<uint32_t>(std::sqrt(static_cast<double>(members.size()))) + 1;
        start_.assign(size_t{side_} * side_ + 1, 0);
        for (const uint32_t member : members)
            start_[cell(points[member]) + 1] += 1;
        for (size_t i = 1; i < start_.size(); ++i)
            start_[i] += start_[i - 1];
        items_.resize(members.size());
        std::vector<uint32_t> fill(start_.begin(), start_.end() - 1);
        for (const uint32_t member : members)
            items_[fill[cell(points[member])]++] = member;
    }

    /// Calls `visit(corner)` for the corners in the cells around a box until a call returns true.
    template <class Visit>
    bool any_in(const Point2& low, const Point2& high, uint64_t& steps, Visit visit) const {
        const uint32_t last_column = column(high.x);
        const uint32_t last_row = row(high.y);
        for (uint32_t r = row(low.y); r <= last_row; ++r)
            for (uint32_t c = column(low.x); c <= last_column; ++c) {
                const size_t cell = size_t{r} * side_ + c;
                steps += 1;
                for (uint32_t i = start_[cell]; i < start_[cell + 1]; ++i)
                    if (visit(items_[i]))
                        return true;
            }
        return false;
    }

private:
    uint32_t place(double value, double low, double high) const {
        const double share = high > low ? (value - low) / (high - low) : 0.0;
        return std::min(side_ - 1, static_cast<uint32_t>(share * side_));
    }
    uint32_t column(double x) const { return place(x, low_.x, high_.x); }
    uint32_t row(double y) const { return place(y, low_.y, high_.y); }
    size_t cell(const Point2& p) const { return size_t{row(p.y)} * side_ + column(p.x); }

    Point2 low_;
    Point2 high_;
    uint32_t side_ = 1;
    std::vector<uint32_t> start_;
    std::vector<uint32_t> items_;
};

class EarClipper {
public:
    explicit EarClipper(Outline& outline)
        : outline_(outline), before_(outline.size()), after_(outline.size()),
          reflex_(reflex_corners()), grid_(outline.flat, reflex_), left_(outline.size()),
          step_limit_(outline.steps + 500 * uint64_t{outline.size()} + 20000) {}

    bool run();

private:
    /// Which corners may be cut off: proper ears; those without area; any convex corner; any
    /// corner.
    enum Level { k_ear, k_flat, k_convex, k_any };

    std::vector<uint32_t> reflex_corners();
    bool can_cut(uint32_t corner, Level level);
    bool is_blocked(uint32_t a, uint32_t b, uint32_t c);
    bool blocks(uint32_t p, uint32_t a, uint32_t b, uint32_t c);
    bool points_inside(uint32_t p, uint32_t a, uint32_t b, uint32_t c);
    void cut(uint32_t corner);
    bool cut_one(Level level);

    Outline& outline_;
    std::vector<uint32_t> before_; ///< cyclic list of the remaining corners
    std::vector<uint32_t> after_;  ///< next remaining corner; the corner itself once it is cut off
    std::vector<uint32_t> reflex_;
    CornerGrid grid_;
    uint32_t left_;
    uint32_t here_ = 0;
    uint64_t step_limit_;
};

/// Initializes the cyclic list and returns the corners that do not turn left, spikes included.
std::vector<uint32_t> EarClipper::reflex_corners() {
    std::vector<uint32_t> reflex;
    for (uint32_t i = 0; i < outline_.size(); ++i) {
        before_[i] = outline_.previous(i);
        after_[i] = outline_.next(i);
        if (outline_.turn(before_[i], i, after_[i]) <= 0)
            reflex.push_back(i);
    }
    return reflex;
}

/// Whether the outline leaves p, which coincides with corner b of the turn a-b-c, into that turn's
/// interior, or runs along both of its arms.
bool EarClipper::points_inside(uint32_t p, uint32_t a, uint32_t b, uint32_t c) {
    bool is_on_first_arm = false;
    bool is_on_second_arm = false;
    for (const uint32_t q : {before_[p], after_[p]}) {
        const int ab = outline_.turn(a, b, q);
        const int bc = outline_.turn(b, c, q);
        if (ab > 0 && bc > 0)
            return true;
        is_on_first_arm = is_on_first_arm || (ab == 0 && bc > 0);
        is_on_second_arm = is_on_second_arm || (ab > 0 && bc == 0);
    }
    return is_on_first_arm && is_on_second_arm;
}

/// Whether p, another remaining corner, prevents cutting off the triangle a, b, c.
bool EarClipper::blocks(uint32_t p, uint32_t a, uint32_t b, uint32_t c) {
    const std::vector<Point2>& flat = outline_.flat;
    if (flat[p] == flat[a])
        return points_inside(p, c, a, b);
    if (flat[p] == flat[b])
        return points_inside(p, a, b, c);
    if (flat[p] == flat[c])
        return points_inside(p, b, c, a);
    const int ab = outline_.turn(a, b, p);
    const int bc = outline_.turn(b, c, p);
    const int ca = outline_.turn(c, a, p);
    if (ab < 0 || bc < 0 || ca < 0)
        return false;
    if (ab > 0 && bc > 0)
        return true; // inside the triangle or on its new side c-a
    // On one of the two existing sides: blocks only if the outline enters the triangle there.
    const uint32_t from = ab == 0 ? a : b;
    const uint32_t to = ab == 0 ? b : c;
    return outline_.turn(from, to, before_[p]) > 0 || outline_.turn(from, to, after_[p]) > 0;
}

bool EarClipper::is_blocked(uint32_t a, uint32_t b, uint32_t c) {
    const std::vector<Point2>& flat = outline_.flat;
    const auto x = std::minmax({flat[a].x, flat[b].x, flat[c].x});
    const auto y = std::minmax({flat[a].y, flat[b].y, flat[c].y});
    return grid_.any_in(Point2{x.first, y.first}, Point2{x.second, y.second}, outline_.steps,
                        [&](uint32_t p) {
                            if (p == a || p == b || p == c || after_[p] == p)
                                return false;
                            return blocks(p, a, b, c);
                        });
}

bool EarClipper::can_cut(uint32_t corner, Level level) {
    const uint32_t a = before_[corner];
    const uint32_t c = after_[corner];
    const int turn = outline_.turn(a, corner, c);
    switch (level) {
    case k_ear:
        return turn > 0 && !is_blocked(a, corner, c);
    case k_flat:
        return turn == 0;
    case k_convex:
        return turn > 0;
    default:
        return true;
    }
}

void EarClipper::cut(uint32_t corner) {
    const uint32_t a = before_[corner];
    const uint32_t c = after_[corner];
    outline_.emit(a, corner, c);
    after_[a] = c;
    before_[c] = a;
    after_[corner] = corner;
    left_ -= 1;
    here_ = after_[c]; // skipping one corner avoids fans of thin triangles
}

/// Goes around once and cuts off the first corner permitted by `level`.
bool EarClipper::cut_one(Level level) {
    for (uint32_t tries = 0; tries < left_; ++tries) {
        if (can_cut(here_, level)) {
            cut(here_);
            return true;
        }
        here_ = after_[here_];
    }
    return false;
}

bool EarClipper::run() {
    bool sound = true;
    while (left_ > 3) {
        // Past the step limit, corners are cut off without further tests.
        if (outline_.steps > step_limit_) {
            cut(here_);
            sound = false;
        } else if (!cut_one(k_ear) && !cut_one(k_flat)) {
            sound = false;
            if (!cut_one(k_convex))
                cut_one(k_any);
        }
    }
    const uint32_t a = before_[here_];
    const uint32_t c = after_[here_];
    outline_.emit(a, here_, c);
    return sound && outline_.turn(a, here_, c) >= 0;
}

} // namespace

bool clip_ears(Outline& outline) {
    outline.triangles.clear();
    return EarClipper(outline).run();
}

} // namespace tessora::polygon
