#include "polygon/triangulation.h"

#include "polygon/outline.h"
#include "polygon/pair_set.h"
#include "polygon/twins.h"

#include <algorithm>
#include <array>

namespace tessora::polygon {

namespace {

/// Outlines up to this size are ear-clipped directly: setting up a sweep is slower.
constexpr uint32_t k_short_outline = 24;

/// A fan from the first corner, for polygons that cannot be projected.
void make_fan(Outline& outline) {
    outline.triangles.clear();
    for (uint32_t i = 2; i < outline.ids.size(); ++i)
        outline.emit(0, i - 1, i);
}

/// How good the triangulation of a quadrilateral along one of its two diagonals is.
struct DiagonalQuality {
    int flipped = 0; ///< clockwise triangles
    int flat = 0;    ///< triangles without area
    int joined = 0;  ///< 1: the diagonal joins vertices that are already joined
    double length = 0.0;
};

/// Evaluates the diagonal between corners `a` and `a` + 2, for `a` of 0 or 1.
DiagonalQuality judge(Outline& outline, const PairSet& taken, uint32_t a) {
    const uint32_t c = a + 2;
    DiagonalQuality quality;
    for (const int turn : {outline.turn(a, a + 1, c), outline.turn(a, c, (a + 3) % 4)}) {
        quality.flipped += turn < 0 ? 1 : 0;
        quality.flat += turn == 0 ? 1 : 0;
    }
    const uint32_t from = outline.ids[a];
    const uint32_t to = outline.ids[c];
    quality.joined = from == to || taken.contains(from, to) ? 1 : 0;
    quality.length = (outline.space[a] - outline.space[c]).length();
    return quality;
}

/// Criteria in order: no flipped triangle, no triangle without area, diagonal not taken, shorter
/// diagonal.
bool cut_quadrilateral(Outline& outline, const PairSet& taken) {
    const DiagonalQuality even = judge(outline, taken, 0);
    const DiagonalQuality odd = judge(outline, taken, 1);
    bool take_odd = odd.length < even.length * (1.0 - 1e-5);
    if (odd.flipped != even.flipped)
        take_odd = odd.flipped < even.flipped;
    else if (odd.flat != even.flat)
        take_odd = odd.flat < even.flat;
    else if (odd.joined != even.joined)
        take_odd = odd.joined < even.joined;
    outline.triangles.clear();
    if (take_odd) {
        outline.emit(0, 1, 3);
        outline.emit(1, 2, 3);
    } else {
        outline.emit(0, 1, 2);
        outline.emit(0, 2, 3);
    }
    const DiagonalQuality& quality = take_odd ? odd : even;
    return quality.flipped == 0 && quality.flat < 2;
}

/// Rotates each triangle to start at its smallest corner and sorts the triangles.
void bring_in_order(std::vector<uint32_t>& triangles) {
    std::vector<std::array<uint32_t, 3>> sorted(triangles.size() / 3);
    for (size_t t = 0; t < sorted.size(); ++t) {
        const auto first = triangles.begin() + static_cast<std::ptrdiff_t>(3 * t);
        std::rotate(first, std::min_element(first, first + 3), first + 3);
        sorted[t] = {first[0], first[1], first[2]};
    }
    std::sort(sorted.begin(), sorted.end());
    for (size_t t = 0; t < sorted.size(); ++t)
        std::copy(sorted[t].begin(), sorted[t].end(),
                  triangles.begin() + static_cast<std::ptrdiff_t>(3 * t));
}

/// Whether any triangle has a non-zero area.
bool has_area(Outline& outline) {
    for (size_t t = 0; t < outline.triangles.size(); t += 3)
        if (outline.turn(outline.triangles[t], outline.triangles[t + 1],
                         outline.triangles[t + 2]) != 0)
            return true;
    return false;
}

/// Sets `outline.triangles`. Returns false if the triangles overlap or are degenerate.
bool triangulate_outline(Outline& outline, const PairSet& taken) {
    if (!project(outline)) {
        make_fan(outline);
        return false;
    }
    if (outline.ids.size() == 3) {
        make_fan(outline);
        return outline.turn(0, 1, 2) > 0;
    }
    if (outline.ids.size() == 4)
        return cut_quadrilateral(outline, taken);
    const bool is_long = outline.size() > k_short_outline;
    bool is_sound = is_long && (sweep_triangulate(outline) || sweep_touching(outline)) &&
                    improve_diagonals(outline, taken);
    if (!is_sound)
        is_sound = clip_ears(outline) && improve_diagonals(outline, taken);
    bring_in_order(outline.triangles);
    return is_sound && has_area(outline);
}

/// Cuts off the corners that bound no area wherever they lie: the later of two neighbours in one
/// place, and the tip of a spike. The rest of the outline, `left`, is then divided as if they were
/// not there, so that it keeps its edges. False when there are none.
bool cut_null_corners(Outline& outline, std::vector<uint32_t>& left) {
    const auto same_place = [&](uint32_t a, uint32_t b) {
        return outline.space[a] == outline.space[b];
    };
    left.clear();
    outline.triangles.clear();
    const auto n = static_cast<uint32_t>(outline.ids.size());
    std::vector<uint32_t> before(n), after(n), todo;
    for (uint32_t i = 0; i < n; ++i) {
        before[i] = i == 0 ? n - 1 : i - 1;
        after[i] = i + 1 == n ? 0 : i + 1;
        if (same_place(i, after[i]) || same_place(before[i], after[i]))
            todo.push_back(i);
    }
    if (todo.empty())
        return false;
    uint32_t count = n;
    while (!todo.empty() && count > 3) {
        uint32_t corner = todo.back();
        todo.pop_back();
        if (after[corner] == corner) // cut off already
            continue;
        if (same_place(corner, after[corner]))
            corner = std::max(corner, after[corner]);
        else if (!same_place(before[corner], after[corner]))
            continue;
        const uint32_t a = before[corner], c = after[corner];
        outline.emit(a, corner, c);
        after[a] = c;
        before[c] = a;
        after[corner] = corner;
        --count;
        for (const uint32_t near : {before[a], a, c})
            todo.push_back(near);
    }
    for (uint32_t i = 0; i < n; ++i)
        if (after[i] != i)
            left.push_back(i);
    return true;
}

/// Divides what is left once null corners are cut off; otherwise like triangulate_outline.
bool triangulate_polygon(Outline& outline, const PairSet& taken) {
    std::vector<uint32_t> left;
    if (outline.ids.size() == 3 || !cut_null_corners(outline, left))
        return triangulate_outline(outline, taken);
    Outline rest;
    for (const uint32_t corner : left) {
        rest.ids.push_back(outline.ids[corner]);
        rest.space.push_back(outline.space[corner]);
    }
    const bool is_valid = triangulate_outline(rest, taken);
    for (const uint32_t corner : rest.triangles)
        outline.triangles.push_back(left[corner]);
    outline.steps += rest.steps;
    bring_in_order(outline.triangles);
    return is_valid;
}

/// Divides a polygon as its twin is: corners with the same vertices.
void divide_like_twin(const IndexSpan& vertices, const IndexSpan& twin,
                      const uint32_t* twin_triangles, Outline& outline) {
    const uint32_t n = vertices.size();
    const auto start = static_cast<uint32_t>(std::find(vertices.begin(), vertices.end(), twin[0]) -
                                             vertices.begin());
    const bool is_reversed = vertices[(start + 1) % n] != twin[1];
    outline.triangles.clear();
    for (uint32_t i = 0; i < 3 * (n - 2); i += 3) {
        uint32_t corners[3];
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t corner = twin_triangles[i + k];
            corners[k] = (is_reversed ? start + n - corner : start + corner) % n;
        }
        if (is_reversed)
            std::swap(corners[1], corners[2]);
        outline.emit(corners[0], corners[1], corners[2]);
    }
    bring_in_order(outline.triangles);
}

/// Adds the polygon's diagonals to the set of joined vertex pairs.
void take_diagonals(const Outline& outline, PairSet& taken) {
    const uint32_t n = static_cast<uint32_t>(outline.ids.size());
    for (size_t i = 0; i < outline.triangles.size(); ++i) {
        const uint32_t a = outline.triangles[i];
        const uint32_t b = outline.triangles[i % 3 == 2 ? i - 2 : i + 1];
        if (b != (a + 1) % n && a != (b + 1) % n)
            taken.insert(outline.ids[a], outline.ids[b]);
    }
}

void set_corners(const IndexSpan& vertices, const float* points, Outline& outline) {
    outline.ids.assign(vertices.begin(), vertices.end());
    outline.space.clear();
    for (const uint32_t vertex : vertices) {
        const float* const p = points + 3 * size_t{vertex};
        outline.space.emplace_back(double{p[0]}, double{p[1]}, double{p[2]});
    }
}

/// Whether a polygon is a triangle that clearly has an area, so that it is valid without being
/// projected. False proves nothing.
bool is_clear_triangle(const IndexSpan& vertices, const float* points) {
    if (vertices.size() != 3)
        return false;
    const float* const a = points + 3 * size_t{vertices[0]};
    double u[3], v[3];
    for (int i = 0; i < 3; ++i) {
        u[i] = double{points[3 * size_t{vertices[1]} + i]} - double{a[i]};
        v[i] = double{points[3 * size_t{vertices[2]} + i]} - double{a[i]};
    }
    double squares = 0, size = 0;
    for (int i = 0; i < 3; ++i) {
        const int next = (i + 1) % 3, last = (i + 2) % 3;
        const double part = u[next] * v[last] - u[last] * v[next];
        squares += part * part;
        size += u[i] * u[i] + v[i] * v[i];
    }
    return squares > 1e-20 * size * size; // false for NaN, too
}

} // namespace

Triangulation triangulate(const Polygons& polygons, const float* points) {
    Triangulation result;
    result.corners.reserve(3 * size_t{polygons.triangle_count()});
    result.is_valid.resize(polygons.count, 0);
    PairSet taken(0);
    std::vector<uint32_t> twins;
    if (polygons.diagonal_count() != 0) {
        taken = edge_pairs(polygons);
        twins = first_twins(polygons);
    }
    Outline outline;
    for (uint32_t polygon = 0; polygon < polygons.count; ++polygon) {
        const IndexSpan vertices = polygons.vertices(polygon);
        if (!twins.empty() && twins[polygon] != polygon) {
            const uint32_t twin = twins[polygon];
            divide_like_twin(vertices, polygons.vertices(twin),
                             &result.corners[Triangulation::first_corner(polygons, twin)], outline);
            result.is_valid[polygon] = result.is_valid[twin];
            result.corners.insert(result.corners.end(), outline.triangles.begin(),
                                  outline.triangles.end());
            continue;
        }
        if (is_clear_triangle(vertices, points)) {
            result.corners.insert(result.corners.end(), {0, 1, 2});
            result.is_valid[polygon] = 1;
            continue;
        }
        set_corners(vertices, points, outline);
        result.is_valid[polygon] = triangulate_polygon(outline, taken) ? 1 : 0;
        result.corners.insert(result.corners.end(), outline.triangles.begin(),
                              outline.triangles.end());
        take_diagonals(outline, taken);
    }
    result.steps = outline.steps;
    return result;
}

} // namespace tessora::polygon
