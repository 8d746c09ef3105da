#include "host/graph/primitives.h"

#include <algorithm>
#include <array>
#include <map>

namespace host::graph {

namespace {

/// Accumulates points, polygons and one UV set.
class Builder {
public:
    uint32_t point(double x, double y, double z) {
        points_.push_back({static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)});
        return static_cast<uint32_t>(points_.size() - 1);
    }
    int32_t uv(double u, double v) {
        uvs_.u.push_back(static_cast<float>(u));
        uvs_.v.push_back(static_cast<float>(v));
        return static_cast<int32_t>(uvs_.u.size() - 1);
    }
    void corner(uint32_t vertex, int32_t uv) {
        vertices_.push_back(vertex);
        uvs_.corner_uvs.push_back(uv);
        open_ += 1;
    }
    void close() {
        counts_.push_back(open_);
        open_ = 0;
    }
    Mesh finish() {
        Mesh mesh;
        Mesh::make(std::move(points_), std::move(counts_), std::move(vertices_), mesh);
        const uint32_t set = mesh.add_uv_set("map1");
        uvs_.name = mesh.uv_set(set).name;
        mesh.edit_uv_set(set) = std::move(uvs_);
        return mesh;
    }

private:
    std::vector<Float3> points_;
    std::vector<uint32_t> counts_, vertices_;
    UvSet uvs_;
    uint32_t open_ = 0;
};

/// Cosine and sine of an angle in radians of at most an eighth of a turn.
TurnPart small_angle(double x) {
    const double x2 = x * x;
    double cosine = 1.0;
    double sine = 1.0;
    for (int i = 18; i >= 2; i -= 2) {
        cosine = 1.0 - cosine * x2 / (double(i) * double(i - 1));
        sine = 1.0 - sine * x2 / (double(i) * double(i + 1));
    }
    return {cosine, sine * x};
}

/// A grid of quads between rows of points. In a direction with as many points as quads it wraps
/// around.
struct Grid {
    int columns;
    int rows;
};

void add_quads(Builder& builder, const Grid& grid, uint32_t first_point, int point_columns,
               int point_rows, int32_t first_uv) {
    for (int row = 0; row < grid.rows; ++row) {
        for (int column = 0; column < grid.columns; ++column) {
            const int next_row = (row + 1) % point_rows;
            const int next_column = (column + 1) % point_columns;
            const auto point = [&](int r, int c) {
                return first_point + static_cast<uint32_t>(r * point_columns + c);
            };
            const auto uv = [&](int r, int c) { return first_uv + r * (grid.columns + 1) + c; };
            builder.corner(point(row, column), uv(row, column));
            builder.corner(point(row, next_column), uv(row, column + 1));
            builder.corner(point(next_row, next_column), uv(row + 1, column + 1));
            builder.corner(point(next_row, column), uv(row + 1, column));
            builder.close();
        }
    }
}

/// The six sides of a box on integer coordinates. Vertices at the same position on the box, and UVs
/// at the same position on the unfolded cross, are shared.
class BoxBuilder {
public:
    BoxBuilder(const double size[3], const int parts[3]) {
        std::copy(size, size + 3, size_);
        std::copy(parts, parts + 3, parts_);
    }

    Mesh build() {
        const int w = parts_[0], h = parts_[1], d = parts_[2];
        // Side by side in the unfolded cross of UVs: front, top, back, bottom, right, left.
        side(w, h, w + d, 0, [=](int i, int j) { return Cell{i, j, d}; });
        side(w, d, w + d, h, [=](int i, int j) { return Cell{i, h, d - j}; });
        side(w, h, w + d, h + d, [=](int i, int j) { return Cell{i, h - j, 0}; });
        side(w, d, w + d, 2 * h + d, [=](int i, int j) { return Cell{i, 0, j}; });
        side(d, h, 2 * w + d, 0, [=](int i, int j) { return Cell{w, j, d - i}; });
        side(d, h, w, 0, [=](int i, int j) { return Cell{0, j, i}; });
        return builder_.finish();
    }

private:
    using Cell = std::array<int, 3>;

    template <class Place>
    void side(int columns, int rows, int u0, int v0, const Place& place) {
        for (int j = 0; j < rows; ++j) {
            for (int i = 0; i < columns; ++i) {
                const int steps[4][2] = {{0, 0}, {1, 0}, {1, 1}, {0, 1}};
                for (const auto& step : steps)
                    builder_.corner(point(place(i + step[0], j + step[1])),
                                    uv(u0 + i + step[0], v0 + j + step[1]));
                builder_.close();
            }
        }
    }

    uint32_t point(const Cell& cell) {
        const auto [at, is_new] = points_.try_emplace(cell, 0u);
        if (is_new) {
            double p[3];
            for (size_t k = 0; k < 3; ++k)
                p[k] = size_[k] * (double(cell[k]) / double(parts_[k]) - 0.5);
            at->second = builder_.point(p[0], p[1], p[2]);
        }
        return at->second;
    }

    int32_t uv(int u, int v) {
        const auto [at, is_new] = uvs_.try_emplace(std::make_pair(u, v), 0);
        if (is_new) {
            // The cross is as high as the girth of the box; it is centred in the unit square.
            const double around = 2.0 * (parts_[1] + parts_[2]);
            const double middle = parts_[0] * 1.5 + parts_[2];
            at->second = builder_.uv(0.5 + (u - middle) / around, v / around);
        }
        return at->second;
    }

    double size_[3];
    int parts_[3];
    Builder builder_;
    std::map<Cell, uint32_t> points_;
    std::map<std::pair<int, int>, int32_t> uvs_;
};

} // namespace

TurnPart turn_part(int k, int n) {
    // Reduction to eighths of a turn keeps the argument of the series small.
    const int64_t eighths = int64_t(k % n + (k < 0 ? n : 0)) * 8;
    const int octant = static_cast<int>(eighths / n) % 8;
    const int64_t rest = eighths % n;
    constexpr double k_eighth = 0.78539816339744830962;
    const bool odd = octant % 2 == 1;
    const double part = double(odd ? n - rest : rest) / double(n);
    TurnPart t = small_angle(part * k_eighth);
    if (odd)
        std::swap(t.cosine, t.sine); // mirrored about the diagonal
    switch (octant / 2) {
    case 0:
        return t;
    case 1:
        return {-t.sine, t.cosine};
    case 2:
        return {-t.cosine, -t.sine};
    default:
        return {t.sine, -t.cosine};
    }
}

Mesh make_cube(double width, double height, double depth, int w, int h, int d) {
    const double size[3] = {width, height, depth};
    const int parts[3] = {std::max(w, 1), std::max(h, 1), std::max(d, 1)};
    return BoxBuilder(size, parts).build();
}

Mesh make_plane(double width, double height, int w, int h) {
    w = std::max(w, 1);
    h = std::max(h, 1);
    Builder builder;
    for (int row = 0; row <= h; ++row) {
        for (int column = 0; column <= w; ++column) {
            const double u = double(column) / double(w);
            const double v = double(row) / double(h);
            builder.point(width * (u - 0.5), 0.0, height * (0.5 - v));
            builder.uv(u, v);
        }
    }
    add_quads(builder, {w, h}, 0, w + 1, h + 1, 0);
    return builder.finish();
}

Mesh make_sphere(double radius, int around, int along) {
    around = std::max(around, 3);
    along = std::max(along, 3);
    Builder builder;
    for (int row = 1; row < along; ++row) {
        const TurnPart up = turn_part(row, 2 * along);
        for (int column = 0; column < around; ++column) {
            const TurnPart turn = turn_part(column, around);
            builder.point(radius * up.sine * turn.cosine, -radius * up.cosine,
                          -radius * up.sine * turn.sine);
        }
        for (int column = 0; column <= around; ++column)
            builder.uv(double(column) / double(around), double(row) / double(along));
    }
    const uint32_t bottom = builder.point(0.0, -radius, 0.0);
    const uint32_t top = builder.point(0.0, radius, 0.0);
    add_quads(builder, {around, along - 2}, 0, around, along - 1, 0);
    const int last = along - 2;
    for (int column = 0; column < around; ++column) {
        const auto next = static_cast<uint32_t>((column + 1) % around);
        const double u = (double(column) + 0.5) / double(around);
        builder.corner(next, column + 1);
        builder.corner(static_cast<uint32_t>(column), column);
        builder.corner(bottom, builder.uv(u, 0.0));
        builder.close();
        const uint32_t row = static_cast<uint32_t>(last * around);
        const int32_t uv_row = last * (around + 1);
        builder.corner(row + static_cast<uint32_t>(column), uv_row + column);
        builder.corner(row + next, uv_row + column + 1);
        builder.corner(top, builder.uv(u, 1.0));
        builder.close();
    }
    return builder.finish();
}

namespace {

/// One end of a cylinder: rings of faces from an existing rim of points inwards.
struct Cap {
    double radius, y;
    int around, rings;
    uint32_t rim; ///< first point of the rim
    bool faces_up;
    double v_middle; ///< v coordinate of the centre of the cap's UVs
};

/// Adds a ring of UVs around the centre of the cap; `part` is its radius relative to the rim's.
/// Returns the first UV.
int32_t add_disc(Builder& builder, const Cap& cap, double part) {
    constexpr double k_disc = 0.15625;
    const double up = cap.faces_up ? 1.0 : -1.0;
    const int32_t first = builder.uv(0.5 + k_disc * part, cap.v_middle);
    for (int i = 1; i < cap.around; ++i) {
        const TurnPart turn = turn_part(i, cap.around);
        builder.uv(0.5 + k_disc * part * turn.cosine,
                   cap.v_middle + up * k_disc * part * turn.sine);
    }
    return first;
}

/// Adds a ring of points and UVs. Returns the first of each.
std::pair<uint32_t, int32_t> add_ring(Builder& builder, const Cap& cap, double part) {
    const uint32_t first = builder.point(cap.radius * part, cap.y, 0.0);
    for (int i = 1; i < cap.around; ++i) {
        const TurnPart turn = turn_part(i, cap.around);
        builder.point(cap.radius * part * turn.cosine, cap.y, -cap.radius * part * turn.sine);
    }
    return {first, add_disc(builder, cap, part)};
}

void add_polygon(Builder& builder, const Cap& cap, int32_t first_uv) {
    for (int i = 0; i < cap.around; ++i) {
        const int at = cap.faces_up ? i : cap.around - 1 - i;
        builder.corner(cap.rim + static_cast<uint32_t>(at), first_uv + at);
    }
    builder.close();
}

void add_cap(Builder& builder, const Cap& cap) {
    uint32_t outer = cap.rim;
    int32_t outer_uv = add_disc(builder, cap, 1.0);
    if (cap.rings == 0)
        return add_polygon(builder, cap, outer_uv);
    for (int ring = 1; ring <= cap.rings; ++ring) {
        const bool is_middle = ring == cap.rings;
        const double part = double(cap.rings - ring) / double(cap.rings);
        const auto [inner, inner_uv] = is_middle ? std::make_pair(builder.point(0.0, cap.y, 0.0),
                                                                  builder.uv(0.5, cap.v_middle))
                                                 : add_ring(builder, cap, part);
        for (int i = 0; i < cap.around; ++i) {
            int a = i;
            int b = (i + 1) % cap.around;
            if (!cap.faces_up)
                std::swap(a, b);
            builder.corner(outer + static_cast<uint32_t>(a), outer_uv + a);
            builder.corner(outer + static_cast<uint32_t>(b), outer_uv + b);
            if (is_middle) {
                builder.corner(inner, inner_uv);
            } else {
                builder.corner(inner + static_cast<uint32_t>(b), inner_uv + b);
                builder.corner(inner + static_cast<uint32_t>(a), inner_uv + a);
            }
            builder.close();
        }
        outer = inner;
        outer_uv = inner_uv;
    }
}

} // namespace

Mesh make_cylinder(double radius, double height, int around, int along, int caps) {
    around = std::max(around, 3);
    along = std::max(along, 1);
    caps = std::max(caps, 0);
    Builder builder;
    for (int row = 0; row <= along; ++row) {
        const double part = double(row) / double(along);
        for (int column = 0; column < around; ++column) {
            const TurnPart turn = turn_part(column, around);
            builder.point(radius * turn.cosine, height * (part - 0.5), -radius * turn.sine);
        }
        for (int column = 0; column <= around; ++column)
            builder.uv(0.375 + 0.25 * double(column) / double(around), 0.3125 + 0.375 * part);
    }
    add_quads(builder, {around, along}, 0, around, along + 1, 0);
    const auto top_rim = static_cast<uint32_t>(along * around);
    add_cap(builder, {radius, -0.5 * height, around, caps, 0, false, 0.15625});
    add_cap(builder, {radius, 0.5 * height, around, caps, top_rim, true, 0.84375});
    return builder.finish();
}

Mesh make_torus(double radius, double section, int around, int along) {
    around = std::max(around, 3);
    along = std::max(along, 3);
    Builder builder;
    for (int row = 0; row < along; ++row) {
        const TurnPart tube = turn_part(row, along);
        for (int column = 0; column < around; ++column) {
            const TurnPart turn = turn_part(column, around);
            const double out = radius + section * tube.cosine;
            builder.point(out * turn.cosine, section * tube.sine, -out * turn.sine);
        }
    }
    for (int row = 0; row <= along; ++row)
        for (int column = 0; column <= around; ++column)
            builder.uv(double(column) / double(around), double(row) / double(along));
    add_quads(builder, {around, along}, 0, around, along, 0);
    return builder.finish();
}

} // namespace host::graph
