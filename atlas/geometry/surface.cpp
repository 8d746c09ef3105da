#include "atlas/geometry/surface.h"

#include "atlas/parallel.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

Failure check_arrays(const Mesh& mesh) {
    const size_t corners = mesh.indices.size;
    if (mesh.positions.size % 3 != 0 || corners % 3 != 0 || mesh.adjacency.size != corners ||
        (mesh.false_edges.size != 0 && mesh.false_edges.size != corners) || corners >= k_none ||
        mesh.positions.size / 3 >= k_none)
        return {Status::invalid_argument, k_none};
    const size_t vertices = mesh.positions.size / 3;
    for (size_t i = 0; i < corners; ++i)
        if (mesh.indices[i] >= vertices)
            return {Status::index_out_of_range, uint32_t(i)};
    for (size_t i = 0; i < corners; ++i)
        if (mesh.adjacency[i] != k_none && mesh.adjacency[i] >= corners / 3)
            return {Status::adjacency_out_of_range, uint32_t(i)};
    for (size_t i = 0; i < mesh.positions.size; ++i)
        if (!std::isfinite(mesh.positions[i]))
            return {Status::non_finite_position, uint32_t(i / 3)};
    return {};
}

void match_half_edges(const Mesh& mesh, Surface& s, ParallelFor executor) {
    s.mate.assign(size_t(s.face_count) * 3, k_none);
    const auto repeats = [&](uint32_t t) {
        const uint32_t* v = &s.vertex[3 * size_t(t)];
        return v[0] == v[1] || v[1] == v[2] || v[2] == v[0];
    };
    for_blocks(executor, s.mate.size(), [&](size_t begin, size_t end) {
        for (uint32_t h = uint32_t(begin); h < end; h++) {
            const uint32_t other = mesh.adjacency[h];
            if (other == k_none || other <= h / 3 || repeats(h / 3) || repeats(other))
                continue; // the lower triangle finds the pair
            for (uint32_t g = 3 * other; g < 3 * other + 3; g++)
                if (s.vertex[g] == s.vertex[next_corner(h)] &&
                    s.vertex[next_corner(g)] == s.vertex[h] && mesh.adjacency[g] == h / 3) {
                    s.mate[g] = h;
                    s.mate[h] = g;
                }
        }
    });
}

/// Moves the centre of the bounding box of all used vertices to the origin and makes the mean
/// triangle area 1, or the diagonal of the box if the mesh has no area. Triangles without any area
/// do not count: a mesh with more of them is laid out alike, to the last bit.
void normalise_positions(const Mesh& mesh, Surface& s, ParallelFor executor) {
    s.position.assign(s.vertex_count, Vec3{});
    if (s.face_count == 0)
        return;
    const auto point = [&](uint32_t v) {
        return Vec3{mesh.positions[3 * size_t(v)], mesh.positions[3 * size_t(v) + 1],
                    mesh.positions[3 * size_t(v) + 2]};
    };
    Vec3 low = point(s.vertex[0]), high = low;
    for (uint32_t v : s.vertex) {
        const Vec3 p = point(v);
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    const Vec3 centre = (low + high) * 0.5;
    std::vector<double> areas(s.face_count);
    for_blocks(executor, s.face_count, [&](size_t begin, size_t end) {
        for (size_t t = begin; t < end; ++t) {
            const Vec3 a = point(s.vertex[3 * t]), b = point(s.vertex[3 * t + 1]);
            areas[t] = 0.5 * length(cross(b - a, point(s.vertex[3 * t + 2]) - a));
        }
    });
    double area = 0;
    uint32_t count = 0;
    for (const double own : areas) {
        area += own;
        count += own > 0;
    }
    double unit = std::sqrt(area / std::max(1u, count));
    if (!(unit > 0))
        unit = length(high - low);
    if (!(unit > 0))
        unit = 1;
    s.unit = unit;
    for_blocks(executor, s.vertex_count, [&](size_t begin, size_t end) {
        for (uint32_t v = uint32_t(begin); v < end; ++v)
            s.position[v] = (point(v) - centre) * (1 / unit);
    });
}

constexpr double k_min_area = 1e-9; // of the mean triangle

/// The frame of a triangle, with a minimum height so that all solves are regular. The longest edge
/// keeps its length. The height is at least a millionth of it; such fattening costs no stretch,
/// because L2 stretch only counts shrinking. What is too short for that is laid out as a point.
Frame sliver_frame(Vec3 a, Vec3 b, Vec3 c) {
    const double ab = length(b - a), bc = length(c - b), ca = length(a - c);
    const double base = std::max({ab, bc, ca});
    if (!(base > 2 * k_min_area)) { // the height would be longer than the mean edge
        const double side = std::sqrt(2 * k_min_area);
        return {side, 0, side};
    }
    const double doubled = length(cross(b - a, c - a));
    const double height = std::max({doubled / base, 1e-6 * base, 2 * k_min_area / base});
    // Lay the longest edge along x, then turn the result so that edge 0 lies along x.
    const auto foot = [base](double left, double right) {
        return std::min(base, std::max(0.0, 0.5 * (base + (left * left - right * right) / base)));
    };
    Vec2 p[3];
    if (base == ab)
        p[0] = {0, 0}, p[1] = {base, 0}, p[2] = {foot(ca, bc), height};
    else if (base == bc)
        p[1] = {0, 0}, p[2] = {base, 0}, p[0] = {foot(ab, ca), height};
    else
        p[2] = {0, 0}, p[0] = {base, 0}, p[1] = {foot(bc, ab), height};
    const Vec2 e = p[1] - p[0], f = p[2] - p[0];
    const double x1 = length(e);
    return {x1, dot(e, f) / x1, cross(e, f) / x1};
}

void build_frames(Surface& s, ParallelFor executor) {
    s.frame.resize(s.face_count);
    s.normal.resize(s.face_count);
    s.degenerate.assign(s.face_count, 0);
    for_blocks(executor, s.face_count, [&](size_t begin, size_t end) {
        for (uint32_t t = uint32_t(begin); t < end; ++t) {
            const uint32_t* v = &s.vertex[3 * size_t(t)];
            const Vec3 a = s.position[v[0]], b = s.position[v[1]], c = s.position[v[2]];
            const double doubled = length(cross(b - a, c - a));
            s.frame[t] = sliver_frame(a, b, c);
            if (doubled <= 2 * k_min_area || v[0] == v[1] || v[1] == v[2] || v[2] == v[0])
                s.degenerate[t] = 1;
            s.normal[t] = s.normal_of(t);
        }
    });
    s.total_area = 0;
    for (const Frame& frame : s.frame)
        s.total_area += frame.area();
}

} // namespace

Frame frame_of(Vec3 a, Vec3 b, Vec3 c) { return sliver_frame(a, b, c); }

Failure build_surface(const Mesh& mesh, Surface& s, ParallelFor executor) {
    const Failure failure = check_arrays(mesh);
    if (failure.status != Status::ok)
        return failure;
    s.face_count = uint32_t(mesh.indices.size / 3);
    s.vertex_count = uint32_t(mesh.positions.size / 3);
    s.vertex.assign(mesh.indices.data, mesh.indices.data + mesh.indices.size);
    match_half_edges(mesh, s, executor);
    s.false_edge.assign(mesh.indices.size, 0);
    if (mesh.false_edges.size != 0)
        for (uint32_t h = 0; h < 3 * s.face_count; ++h)
            if (s.mate[h] != k_none &&
                (mesh.false_edges[h] != k_none || mesh.false_edges[s.mate[h]] != k_none))
                s.false_edge[h] = 1;
    normalise_positions(mesh, s, executor);
    build_frames(s, executor);
    return {};
}

void restrict_surface(const Mesh& mesh, const std::vector<uint32_t>& kept,
                      const std::vector<uint32_t>& number, Surface& s, ParallelFor executor) {
    std::vector<uint32_t> vertex(3 * kept.size()), mate(3 * kept.size());
    std::vector<uint8_t> false_edge(3 * kept.size());
    for_blocks(executor, kept.size(), [&](size_t begin, size_t end) {
        for (size_t i = begin; i < end; ++i)
            for (size_t k = 0; k < 3; ++k) {
                const size_t h = 3 * size_t(kept[i]) + k;
                const uint32_t m = s.mate[h];
                vertex[3 * i + k] = s.vertex[h];
                mate[3 * i + k] = m == k_none ? k_none : 3 * number[m / 3] + m % 3;
                false_edge[3 * i + k] = s.false_edge[h];
            }
    });
    s.face_count = uint32_t(kept.size());
    s.vertex = std::move(vertex);
    s.mate = std::move(mate);
    s.false_edge = std::move(false_edge);
    normalise_positions(mesh, s, executor);
    build_frames(s, executor);
}

} // namespace tessora::atlas
