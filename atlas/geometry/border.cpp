#include "atlas/geometry/border.h"

#include "atlas/geometry/predicates.h"

#include <algorithm>
#include <numeric>

namespace tessora::atlas {
namespace {

/// The inside of an outline near one of its points: the directions counter-clockwise from `to`, the
/// next point, to `from`, the previous one.
struct Wedge {
    Vec2 apex, to, from;
};

bool same_direction(Vec2 apex, Vec2 a, Vec2 b) {
    return side_of_line(apex, a, b) == 0 && dot(a - apex, b - apex) > 0;
}

bool strictly_inside(const Wedge& w, Vec2 x) {
    const int turn = side_of_line(w.apex, w.to, w.from);
    if (turn > 0)
        return side_of_line(w.apex, w.to, x) > 0 && side_of_line(w.apex, x, w.from) > 0;
    if (turn < 0)
        return !(side_of_line(w.apex, w.from, x) >= 0 && side_of_line(w.apex, x, w.to) >= 0);
    if (dot(w.to - w.apex, w.from - w.apex) > 0) // a full turn
        return !same_direction(w.apex, w.to, x);
    return side_of_line(w.apex, w.to, x) > 0; // a half turn
}

bool wedges_overlap(const Wedge& a, const Wedge& b) {
    return same_direction(a.apex, a.to, b.to) || strictly_inside(a, b.to) ||
           strictly_inside(a, b.from) || strictly_inside(b, a.to) || strictly_inside(b, a.from);
}

bool within_box(Vec2 a, Vec2 b, Vec2 p) {
    return p.x >= std::min(a.x, b.x) && p.x <= std::max(a.x, b.x) && p.y >= std::min(a.y, b.y) &&
           p.y <= std::max(a.y, b.y);
}

} // namespace

void OutlineTester::link_neighbours(const Outline& outline) {
    const uint32_t count = uint32_t(outline.point.size());
    next_.resize(count);
    previous_.resize(count);
    uint32_t begin = 0;
    for (uint32_t end : outline.loop_end) {
        for (uint32_t i = begin; i < end; ++i) {
            next_[i] = i + 1 < end ? i + 1 : begin;
            previous_[next_[i]] = i;
        }
        begin = end;
    }
}

/// Twice the area inside a loop, negative if it is clockwise; 0 if it is close to none.
double OutlineTester::doubled_area_of_loop(const Outline& outline, uint32_t begin,
                                           uint32_t end) const {
    double doubled = 0, spread = 0;
    const Vec2 base = outline.point[begin];
    for (uint32_t i = begin; i < end; ++i) {
        const Vec2 a = outline.point[i] - base, b = outline.point[next_[i]] - base;
        doubled += cross(a, b);
        spread += dot(b - a, b - a);
    }
    return std::fabs(doubled) > 1e-12 * spread ? doubled : 0;
}

bool OutlineTester::one_positive_loop(const Outline& outline) const {
    uint32_t begin = 0, positive = 0;
    for (uint32_t end : outline.loop_end) {
        positive += doubled_area_of_loop(outline, begin, end) > 0;
        begin = end;
    }
    return positive == 1;
}

template <class Visit>
void OutlineTester::visit_cells(Vec2 a, Vec2 b, Visit visit) const {
    if (a.y > b.y)
        std::swap(a, b);
    const auto column = [this](double x) {
        return std::clamp(int((x - origin_.x) * inverse_size_), 0, columns_ - 1);
    };
    const int row0 = std::clamp(int((a.y - origin_.y) * inverse_size_), 0, rows_ - 1);
    const int row1 = std::clamp(int((b.y - origin_.y) * inverse_size_), 0, rows_ - 1);
    if (row0 == row1) {
        const int c0 = column(std::min(a.x, b.x)), c1 = column(std::max(a.x, b.x));
        for (int c = c0; c <= c1; ++c)
            visit(row0 * columns_ + c);
        return;
    }
    const double slope = (b.x - a.x) / (b.y - a.y), slack = 1e-6 / inverse_size_;
    for (int row = row0; row <= row1; ++row) {
        const double y0 = std::max(a.y, origin_.y + row / inverse_size_ - slack);
        const double y1 = std::min(b.y, origin_.y + (row + 1) / inverse_size_ + slack);
        const double x0 = a.x + (y0 - a.y) * slope, x1 = a.x + (y1 - a.y) * slope;
        const int c0 = column(std::min(x0, x1) - slack), c1 = column(std::max(x0, x1) + slack);
        for (int c = c0; c <= c1; ++c)
            visit(row * columns_ + c);
    }
}

void OutlineTester::choose_all() {
    chosen_.resize(next_.size());
    std::iota(chosen_.begin(), chosen_.end(), 0u);
}

/// Chooses the segments whose boxes meet that box.
void OutlineTester::choose_within(const Outline& outline, Vec2 low, Vec2 high) {
    chosen_.clear();
    for (uint32_t i = 0; i < next_.size(); ++i) {
        const Vec2 a = outline.point[i], b = outline.point[next_[i]];
        if (std::min(a.x, b.x) <= high.x && std::max(a.x, b.x) >= low.x &&
            std::min(a.y, b.y) <= high.y && std::max(a.y, b.y) >= low.y)
            chosen_.push_back(i);
    }
}

void OutlineTester::build_grid(const Outline& outline) {
    const uint32_t count = uint32_t(chosen_.size());
    Vec2 low = outline.point[chosen_[0]], high = low;
    double total = 0;
    for (uint32_t i : chosen_) {
        const Vec2 p = outline.point[i], q = outline.point[next_[i]];
        low = {std::min({low.x, p.x, q.x}), std::min({low.y, p.y, q.y})};
        high = {std::max({high.x, p.x, q.x}), std::max({high.y, p.y, q.y})};
        total += length(q - p);
    }
    const Vec2 extent = high - low;
    double size = std::max(total / count, 1e-300);
    size = std::max(size, std::sqrt(extent.x * extent.y / (4.0 * count + 16)));
    size = std::max(size, std::max(extent.x, extent.y) / (4.0 * count + 16));
    origin_ = low;
    inverse_size_ = 1 / size;
    columns_ = int(extent.x * inverse_size_) + 1;
    rows_ = int(extent.y * inverse_size_) + 1;
    cells_.assign(size_t(columns_) * rows_, Cell{});
    visits_.clear();
    for (uint32_t i : chosen_)
        visit_cells(outline.point[i], outline.point[next_[i]], [&](int c) {
            visits_.push_back({uint32_t(c), i});
            cells_[c].count++;
        });
    uint32_t total_entries = 0;
    for (Cell& cell : cells_) {
        cell.begin = total_entries;
        total_entries += cell.count;
        cell.count = 0;
    }
    entries_.resize(total_entries);
    for (const auto& [cell, segment] : visits_)
        entries_[cells_[cell].begin + cells_[cell].count++] = segment;
}

/// For a vertex exactly on a segment: whether it only touches it from outside.
bool OutlineTester::contact_is_legal(const Outline& o, uint32_t segment, uint32_t vertex) const {
    const Vec2 v = o.point[vertex];
    const Wedge own{v, o.point[next_[vertex]], o.point[previous_[vertex]]};
    for (uint32_t end : {segment, next_[segment]})
        if (o.point[end] == v) {
            if (end == vertex)
                return true;
            return !wedges_overlap(own, {v, o.point[next_[end]], o.point[previous_[end]]});
        }
    return !wedges_overlap(own, {v, o.point[next_[segment]], o.point[segment]});
}

bool OutlineTester::pair_is_legal(const Outline& o, uint32_t i, uint32_t j) const {
    const uint32_t i1 = next_[i], j1 = next_[j];
    if (i == j1 || j == i1)
        return true;
    const Vec2 a = o.point[i], b = o.point[i1], c = o.point[j], d = o.point[j1];
    if (std::max(a.x, b.x) < std::min(c.x, d.x) || std::max(c.x, d.x) < std::min(a.x, b.x) ||
        std::max(a.y, b.y) < std::min(c.y, d.y) || std::max(c.y, d.y) < std::min(a.y, b.y))
        return true;
    const int c_side = side_of_line(a, b, c), d_side = side_of_line(a, b, d);
    if (c_side * d_side > 0)
        return true;
    const int a_side = side_of_line(c, d, a), b_side = side_of_line(c, d, b);
    if (c_side * d_side < 0 && a_side * b_side < 0)
        return false;
    return (c_side != 0 || !within_box(a, b, c) || contact_is_legal(o, i, j)) &&
           (d_side != 0 || !within_box(a, b, d) || contact_is_legal(o, i, j1)) &&
           (a_side != 0 || !within_box(c, d, a) || contact_is_legal(o, j, i)) &&
           (b_side != 0 || !within_box(c, d, b) || contact_is_legal(o, j, i1));
}

template <class Visit>
void OutlineTester::visit_illegal_pairs(const Outline& outline, Visit visit) {
    build_grid(outline);
    for (const Cell& cell : cells_)
        for (uint32_t i = 0; i < cell.count; ++i)
            for (uint32_t j = 0; j < i; ++j) {
                const uint32_t a = entries_[cell.begin + j], b = entries_[cell.begin + i];
                if (!pair_is_legal(outline, a, b) && !visit(a, b))
                    return;
            }
}

bool OutlineTester::chosen_are_legal(const Outline& outline) {
    bool legal = true;
    visit_illegal_pairs(outline, [&](uint32_t, uint32_t) { return legal = false; });
    return legal;
}

bool OutlineTester::simple(const Outline& outline) {
    if (outline.point.empty())
        return false;
    link_neighbours(outline);
    if (!one_positive_loop(outline))
        return false;
    choose_all();
    return chosen_are_legal(outline);
}

bool OutlineTester::simple_within(const Outline& outline, Vec2 low, Vec2 high) {
    if (outline.point.empty())
        return false;
    link_neighbours(outline);
    if (!one_positive_loop(outline))
        return false;
    choose_within(outline, low, high);
    return chosen_.empty() || chosen_are_legal(outline);
}

void OutlineTester::find_faults(const Outline& outline, std::vector<uint32_t>& segments) {
    link_neighbours(outline);
    choose_all();
    // Of all loops only the largest may be counter-clockwise.
    std::vector<double> areas;
    uint32_t begin = 0;
    for (uint32_t end : outline.loop_end) {
        areas.push_back(doubled_area_of_loop(outline, begin, end));
        begin = end;
    }
    const size_t largest = size_t(std::max_element(areas.begin(), areas.end()) - areas.begin());
    for (size_t l = 0; l < areas.size(); ++l)
        if (l != largest ? areas[l] > 0 : !(areas[l] > 0))
            for (uint32_t i = l ? outline.loop_end[l - 1] : 0; i < outline.loop_end[l]; ++i)
                segments.push_back(i);
    visit_illegal_pairs(outline, [&](uint32_t a, uint32_t b) {
        segments.insert(segments.end(), {a, b});
        return true;
    });
}

} // namespace tessora::atlas
