/// Charts to pack and an independent check of the layout: it applies the caller's aspect correction
/// and margin in single precision and measures distances between border segments directly.
#pragma once

#include "atlas/pack/pack.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <gtest/gtest.h>
#include <limits>
#include <random>
#include <vector>

namespace tessora::atlas::test {

struct Point {
    double x, y;
};

/// Owns the arrays of PackCharts.
struct PackInput {
    std::vector<double> points;
    std::vector<uint32_t> edges;
    std::vector<uint32_t> edge_begin{0};

    void loop(const std::vector<Point>& ring) {
        const uint32_t first = uint32_t(points.size() / 2), n = uint32_t(ring.size());
        for (uint32_t i = 0; i < n; ++i) {
            points.insert(points.end(), {ring[i].x, ring[i].y});
            edges.insert(edges.end(), {first + i, first + (i + 1) % n});
        }
    }
    void close() { edge_begin.push_back(uint32_t(edges.size() / 2)); }
    void chart(const std::vector<Point>& ring) {
        loop(ring);
        close();
    }
    void box(double w, double h) { chart({{0, 0}, {w, 0}, {w, h}, {0, h}}); }
    size_t count() const { return edge_begin.size() - 1; }
    PackCharts face() const {
        return {{points.data(), points.size()},
                {edges.data(), edges.size()},
                {edge_begin.data(), edge_begin.size()}};
    }
};

inline std::vector<Point> ring(double radius, uint32_t n, bool clockwise = false) {
    std::vector<Point> points;
    for (uint32_t i = 0; i < n; ++i) {
        const double a = 6.283185307179586 * (clockwise ? n - i : i) / n;
        points.push_back({radius * std::cos(a), radius * std::sin(a)});
    }
    return points;
}

/// A random star-shaped curve around the origin.
inline std::vector<Point> blob(std::mt19937& random, double radius, uint32_t n) {
    std::uniform_real_distribution<double> unit(0, 1);
    const double a2 = 0.35 * unit(random), a3 = 0.25 * unit(random), p2 = 6.28 * unit(random),
                 p3 = 6.28 * unit(random), squash = 0.25 + 0.75 * unit(random),
                 turn = 6.28 * unit(random);
    std::vector<Point> points;
    for (uint32_t i = 0; i < n; ++i) {
        const double t = 6.283185307179586 * i / n;
        const double r = radius * (1 + a2 * std::cos(2 * t + p2) + a3 * std::cos(3 * t + p3));
        const double x = r * std::cos(t), y = squash * r * std::sin(t);
        points.push_back(
            {x * std::cos(turn) - y * std::sin(turn), x * std::sin(turn) + y * std::cos(turn)});
    }
    return points;
}

/// Blobs, boxes, needles, rings, points and folded segments of widely spread sizes.
inline PackInput random_charts(std::mt19937& random, uint32_t count) {
    std::uniform_real_distribution<double> unit(0, 1);
    PackInput set;
    for (uint32_t i = 0; i < count; ++i) {
        const double size = 0.05 / (0.05 + unit(random));
        switch (random() % 12) {
        case 0:
            set.chart(ring(size, 40));
            break;
        case 1:
            set.loop(ring(size, 30));
            set.loop(ring(size * 0.8, 30, true));
            set.close();
            break;
        case 2:
            set.box(3 * size, 0.001 * size);
            break;
        case 3:
            set.box(size, size * (0.1 + unit(random)));
            break;
        case 4:
            set.chart({{unit(random), unit(random)}, {unit(random), unit(random)}});
            break;
        case 5:
            set.chart({{unit(random), unit(random)}});
            break;
        case 6:
            set.chart({{0, 0},
                       {size, 0},
                       {size, 0.2 * size},
                       {0.2 * size, 0.2 * size},
                       {0.2 * size, size},
                       {0, size}});
            break;
        default:
            set.chart(blob(random, size, 8 + random() % 60));
        }
    }
    return set;
}

/// Applies to returned coordinates what the caller does, in single precision: the fit into the unit
/// square, the aspect correction, the margin.
inline void adjust_like_the_caller(std::vector<float>& uv, uint32_t width, uint32_t height,
                                   float gutter) {
    const float w = float(width), h = float(height);
    bool outside = false;
    for (float f : uv)
        outside = outside || f > 1.0f;
    const float fit = outside ? (w > h ? h / w : w / h) : 1.0f;
    const float su = h / w < 1.0f ? 1.0f : h / w, sv = w / h < 1.0f ? 1.0f : w / h;
    const float g = gutter / float(std::max(width, height));
    const float r = w / h > h / w ? w / h : h / w;
    const float s = g * r, half = g / 2.0f;
    for (size_t i = 0; i < uv.size(); i += 2) {
        float u = uv[i], v = uv[i + 1];
        if (outside) {
            u *= fit;
            v *= fit;
        }
        u *= su;
        v *= sv;
        uv[i] = u * (1.0f - s) + half;
        uv[i + 1] = v * (1.0f - s) + half;
    }
}

struct Judgement {
    double gap =
        std::numeric_limits<double>::infinity(); ///< minimum distance of two charts, texels
    bool overlap = false;                        ///< some chart lies inside another
    double low = 1, high = 0;                    ///< range of the final coordinates
    bool distorted = false; ///< some edge does not have its chart length times the scale
};

namespace detail {

inline double squared_to_segment(Point p, Point a, Point b) {
    const double dx = b.x - a.x, dy = b.y - a.y, d2 = dx * dx + dy * dy;
    double t = d2 > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / d2 : 0;
    t = std::min(1.0, std::max(0.0, t));
    const double x = p.x - a.x - t * dx, y = p.y - a.y - t * dy;
    return x * x + y * y;
}

inline double side(Point a, Point b, Point c) {
    return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x);
}

inline double squared_distance(Point a, Point b, Point c, Point d) {
    if (side(a, b, c) * side(a, b, d) < 0 && side(c, d, a) * side(c, d, b) < 0)
        return 0;
    return std::min(std::min(squared_to_segment(a, c, d), squared_to_segment(b, c, d)),
                    std::min(squared_to_segment(c, a, b), squared_to_segment(d, a, b)));
}

} // namespace detail

/// Checks placements in the final texture. Distances above `reach` texels are not found.
inline Judgement judge(const PackInput& set, const Packing& packing, const PackOptions& options,
                       double reach) {
    const InnerRectangle inner = inner_rectangle(options.width, options.height, options.gutter);
    struct Piece {
        Point a, b;
        uint32_t chart;
    };
    std::vector<Piece> pieces;
    Judgement judgement;
    for (uint32_t c = 0; c < set.count(); ++c) {
        const Placement& at = packing.placements[c];
        std::vector<float> uv;
        for (uint32_t e = 2 * set.edge_begin[c]; e < 2 * set.edge_begin[c + 1]; ++e) {
            const double x = set.points[2 * set.edges[e]], y = set.points[2 * set.edges[e] + 1];
            uv.push_back(
                float((packing.scale * (at.cosine * x - at.sine * y) + at.x) / inner.unit));
            uv.push_back(
                float((packing.scale * (at.sine * x + at.cosine * y) + at.y) / inner.unit));
        }
        adjust_like_the_caller(uv, options.width, options.height, options.gutter);
        for (float f : uv) {
            judgement.low = std::min(judgement.low, double(f));
            judgement.high = std::max(judgement.high, double(f));
        }
        for (size_t i = 0; i < uv.size(); i += 4) {
            const Piece piece{
                {double(uv[i]) * options.width, double(uv[i + 1]) * options.height},
                {double(uv[i + 2]) * options.width, double(uv[i + 3]) * options.height},
                c};
            const uint32_t e = 2 * set.edge_begin[c] + uint32_t(i / 2);
            const double* p = &set.points[2 * set.edges[e]];
            const double* q = &set.points[2 * set.edges[e + 1]];
            const double want = packing.scale * std::hypot(q[0] - p[0], q[1] - p[1]);
            const double got = std::hypot(piece.b.x - piece.a.x, piece.b.y - piece.a.y);
            judgement.distorted = judgement.distorted || std::abs(want - got) > 0.02;
            pieces.push_back(piece);
        }
    }
    // A grid of buckets; every segment is entered in all buckets within its reach.
    const double size = std::max(4.0, reach);
    const int columns = int(options.width / size) + 2, rows = int(options.height / size) + 2;
    std::vector<std::vector<uint32_t>> buckets(size_t(columns) * rows);
    const auto clamp = [](double v, int n) { return std::min(n - 1, std::max(0, int(v))); };
    double min_squared = reach * reach;
    for (uint32_t i = 0; i < pieces.size(); ++i) {
        const Piece& p = pieces[i];
        const int x0 = clamp((std::min(p.a.x, p.b.x) - reach) / size, columns);
        const int x1 = clamp((std::max(p.a.x, p.b.x) + reach) / size, columns);
        const int y0 = clamp((std::min(p.a.y, p.b.y) - reach) / size, rows);
        const int y1 = clamp((std::max(p.a.y, p.b.y) + reach) / size, rows);
        for (int y = y0; y <= y1; ++y)
            for (int x = x0; x <= x1; ++x) {
                std::vector<uint32_t>& bucket = buckets[size_t(y) * columns + x];
                for (uint32_t j : bucket)
                    if (pieces[j].chart != p.chart)
                        min_squared =
                            std::min(min_squared,
                                     detail::squared_distance(p.a, p.b, pieces[j].a, pieces[j].b));
                bucket.push_back(i);
            }
    }
    if (min_squared < reach * reach)
        judgement.gap = std::sqrt(min_squared);
    // Charts whose borders are apart can only overlap if one contains the other.
    for (uint32_t c = 0; c < set.count(); ++c) {
        const auto own = std::find_if(pieces.begin(), pieces.end(),
                                      [&](const Piece& p) { return p.chart == c; });
        if (own == pieces.end())
            continue;
        std::vector<uint8_t> odd(set.count(), 0);
        for (const Piece& p : pieces)
            if ((p.a.y <= own->a.y) != (p.b.y <= own->a.y) &&
                p.a.x + (own->a.y - p.a.y) / (p.b.y - p.a.y) * (p.b.x - p.a.x) > own->a.x)
                odd[p.chart] ^= 1;
        for (uint32_t other = 0; other < set.count(); ++other)
            judgement.overlap = judgement.overlap || (other != c && odd[other] != 0);
    }
    return judgement;
}

/// Expects the gutter between all charts, no overlap, shapes as they were, and all inside the
/// texture.
inline void expect_good_layout(const PackInput& set, const Packing& packing,
                               const PackOptions& options) {
    const Judgement seen = judge(set, packing, options, options.gutter + 2);
    EXPECT_GE(seen.gap, options.gutter);
    EXPECT_FALSE(seen.overlap);
    EXPECT_FALSE(seen.distorted);
    EXPECT_GE(seen.low, 0);
    EXPECT_LE(seen.high, 1);
}

} // namespace tessora::atlas::test
