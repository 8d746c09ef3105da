#include "tests/atlas/check_result.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

namespace atlas_test {
namespace {

using tessora::atlas::k_none;
using tessora::atlas::Options;
using tessora::atlas::Result;

struct P2 {
    double x, y;
};
struct P3 {
    double x, y, z;
};

double cross(P2 a, P2 b, P2 c) { return (b.x - a.x) * (c.y - a.y) - (b.y - a.y) * (c.x - a.x); }

P3 minus(P3 a, P3 b) { return {a.x - b.x, a.y - b.y, a.z - b.z}; }
double dot(P3 a, P3 b) { return a.x * b.x + a.y * b.y + a.z * b.z; }
P3 cross(P3 a, P3 b) {
    return {a.y * b.z - a.z * b.y, a.z * b.x - a.x * b.z, a.x * b.y - a.y * b.x};
}

struct Sums {
    double area = 0, inverse = 0, flat = 0;
    double l2() const { return std::sqrt(inverse * flat) / area; }
};

class Judge {
public:
    Judge(const TestMesh& m, const Options& o, const Result& r, bool packed)
        : mesh(m), options(o), result(r), packed_(packed) {}
    Judgement run(bool overlaps) {
        if (!shape_is_right())
            return out;
        measure_triangles();
        check_gluing();
        check_charts();
        check_polygons();
        if (packed_)
            check_range();
        if (overlaps)
            check_overlaps();
        return out;
    }

private:
    void fault(const std::string& text) {
        if (out.faults.size() < 20)
            out.faults.push_back(text);
    }
    P3 position(uint32_t v) const {
        return {mesh.positions[3 * v], mesh.positions[3 * v + 1], mesh.positions[3 * v + 2]};
    }
    P2 uv(uint32_t corner) const {
        const uint32_t v = result.indices[corner];
        return {result.uvs[2 * v], result.uvs[2 * v + 1]};
    }
    bool shape_is_right();
    bool repeats_a_vertex(uint32_t t) const;
    bool hangs_loose(uint32_t t) const { return repeats_a_vertex(t) || area_[t] <= least_area_; }
    void measure_triangles();
    void check_gluing();
    void check_charts();
    void check_range();
    void check_polygons();
    void check_polygon(const std::vector<uint32_t>& loop, std::vector<double>& worse);
    Sums sums_of(uint32_t a, uint32_t b, uint32_t c) const;
    void check_overlaps();
    bool triangles_overlap(uint32_t a, uint32_t b, double tolerance) const;

    const TestMesh& mesh;
    const Options& options;
    const Result& result;
    const bool packed_;
    Judgement out;
    std::vector<double> area_;
    std::vector<uint32_t> inner_mate_; ///< per half-edge: across a false edge
    std::vector<Sums> chart_sums_;
    double least_area_ = 0;
};

bool Judge::shape_is_right() {
    const size_t vertices = result.source_vertex.size();
    if (result.indices.size() != mesh.indices.size() || result.uvs.size() != 2 * vertices ||
        result.chart.size() != mesh.faces()) {
        fault("array sizes");
        return false;
    }
    for (size_t c = 0; c < mesh.indices.size(); ++c)
        if (result.indices[c] >= vertices ||
            result.source_vertex[result.indices[c]] != mesh.indices[c]) {
            fault("corner " + std::to_string(c) + " names a wrong vertex");
            return false;
        }
    if (!std::is_sorted(result.source_vertex.begin(), result.source_vertex.end()))
        fault("vertices are not in the order of their sources");
    for (float x : result.uvs)
        if (!std::isfinite(x)) {
            fault("coordinate is not finite");
            return false;
        }
    return true;
}

void Judge::measure_triangles() {
    double total = 0, texture = 0;
    area_.resize(mesh.faces());
    std::vector<Sums> sums(result.chart_count);
    Sums all;
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        const P3 a = position(mesh.indices[3 * t]), b = position(mesh.indices[3 * t + 1]);
        const P3 e = minus(b, a), f = minus(position(mesh.indices[3 * t + 2]), a);
        const P3 n = cross(e, f);
        area_[t] = 0.5 * std::sqrt(dot(n, n));
        total += area_[t];
    }
    const double mean = total / std::max(1u, mesh.faces());
    least_area_ = 1e-9 * mean;
    std::vector<uint8_t> over(mesh.faces(), 0);
    for (uint32_t t : result.over_limit)
        over[t] = 1;
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        const double flat = 0.5 * cross(uv(3 * t), uv(3 * t + 1), uv(3 * t + 2));
        texture += flat;
        if (result.chart[t] >= result.chart_count) {
            fault("chart number out of range");
            return;
        }
        if (area_[t] <= 1e-7 * mean)
            continue;
        if (!(flat > 0)) {
            fault("triangle " + std::to_string(t) + " is flipped, area " + std::to_string(flat) +
                  " of " + std::to_string(area_[t] / mean));
            continue;
        }
        const P3 a = position(mesh.indices[3 * t]), b = position(mesh.indices[3 * t + 1]);
        const P3 e = minus(b, a), f = minus(position(mesh.indices[3 * t + 2]), a);
        const P2 p = uv(3 * t), q = uv(3 * t + 1), r = uv(3 * t + 2);
        // J = [q-p, r-p] * inverse of the 3D edges in their own plane
        const double x1 = std::sqrt(dot(e, e)), x2 = dot(e, f) / x1, y2 = 2 * area_[t] / x1;
        const P2 s{(q.x - p.x) / x1, (q.y - p.y) / x1};
        const P2 u{((r.x - p.x) - s.x * x2) / y2, ((r.y - p.y) - s.y * x2) / y2};
        const double det = flat / area_[t];
        const double norm = s.x * s.x + s.y * s.y + u.x * u.x + u.y * u.y;
        for (Sums* sum : {&all, &sums[result.chart[t]]}) {
            sum->area += area_[t];
            sum->inverse += area_[t] * 0.5 * norm / (det * det);
            sum->flat += flat;
        }
    }
    out.l2 = all.area > 0 ? all.l2() : 1;
    const double w = options.width, h = options.height, longer = std::max(w, h);
    out.coverage = packed_ ? texture / (w / longer * (h / longer)) : 0;
    std::vector<uint8_t> chart_over(result.chart_count, 0);
    for (uint32_t t : result.over_limit)
        chart_over[result.chart[t]] = 1;
    chart_sums_ = sums;
    double reported = 0;
    for (uint32_t c = 0; c < result.chart_count; ++c) {
        if (!(sums[c].area > 0))
            continue;
        reported = std::max(reported, 1 - 1 / sums[c].l2());
        if (chart_over[c])
            continue;
        out.worst_chart = std::max(out.worst_chart, sums[c].l2());
        if (options.max_stretch < 1 && sums[c].l2() > 1 / (1 - options.max_stretch) + 2e-4)
            fault("chart " + std::to_string(c) + " has L2 " + std::to_string(sums[c].l2()));
    }
    // Rounding makes the measured stretch of tiny triangles meaningless.
    const bool tiny =
        std::any_of(area_.begin(), area_.end(), [&](double a) { return a > 0 && a < 1e-5 * mean; });
    // So does squeezing a triangle to a fiftieth, which only a limit of nearly 1 allows.
    const bool squeezed = std::min(reported, double(result.stretch)) > 0.98;
    if (!tiny && !squeezed && std::fabs(reported - result.stretch) > 1e-3 + 1e-2 * reported)
        fault("reported stretch " + std::to_string(result.stretch) + ", measured " +
              std::to_string(reported));
}

bool Judge::repeats_a_vertex(uint32_t t) const {
    const uint32_t* v = &mesh.indices[3 * size_t(t)];
    return v[0] == v[1] || v[1] == v[2] || v[2] == v[0];
}

/// Corners of a vertex may share a new vertex only by a chain of corners around the source vertex
/// over edges whose two sides name each other and run opposite ways; false edges are joined.
void Judge::check_gluing() {
    std::map<std::pair<uint32_t, uint32_t>, std::vector<uint32_t>> uses;
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        const uint32_t a = mesh.indices[h], b = mesh.indices[h % 3 == 2 ? h - 2 : h + 1];
        uses[{std::min(a, b), std::max(a, b)}].push_back(h);
    }
    inner_mate_.assign(mesh.indices.size(), k_none);
    std::vector<uint32_t> parent(mesh.indices.size());
    std::iota(parent.begin(), parent.end(), 0);
    const auto find = [&](uint32_t x) {
        while (parent[x] != x)
            x = parent[x] = parent[parent[x]];
        return x;
    };
    double total = std::accumulate(area_.begin(), area_.end(), 0.0);
    std::vector<uint32_t> face_parent(mesh.faces());
    std::iota(face_parent.begin(), face_parent.end(), 0);
    for (const auto& [ends, list] : uses) {
        for (size_t i = 0; i < list.size(); i++)
            for (size_t j = i + 1; j < list.size(); j++) {
                const uint32_t g = list[i], h = list[j];
                const uint32_t g1 = g % 3 == 2 ? g - 2 : g + 1, h1 = h % 3 == 2 ? h - 2 : h + 1;
                const bool joined = mesh.adjacency[g] == h / 3 && mesh.adjacency[h] == g / 3 &&
                                    g / 3 != h / 3 && mesh.indices[g] == mesh.indices[h1] &&
                                    !repeats_a_vertex(g / 3) && !repeats_a_vertex(h / 3);
                const bool same = result.indices[g] == result.indices[h1] &&
                                  result.indices[g1] == result.indices[h];
                const bool marked = !mesh.false_edges.empty() && (mesh.false_edges[g] != k_none ||
                                                                  mesh.false_edges[h] != k_none);
                if (joined && same) {
                    parent[find(g)] = find(h1);
                    parent[find(g1)] = find(h);
                }
                if (joined && marked) {
                    inner_mate_[g] = h;
                    inner_mate_[h] = g;
                }
                if (joined && marked && result.chart[g / 3] != result.chart[h / 3])
                    fault("false edge " + std::to_string(g) + " is a chart border");
                if (joined && marked && !same)
                    fault("false edge " + std::to_string(g) + " is opened");
            }
        double difference = 0;
        const P3 e = minus(position(ends.first), position(ends.second));
        for (size_t i = 1; i < list.size(); ++i)
            for (uint32_t v : {ends.first, ends.second}) {
                const auto at = [&](uint32_t h) {
                    return uv(mesh.indices[h] == v ? h : (h % 3 == 2 ? h - 2 : h + 1));
                };
                difference = std::max({difference, std::fabs(at(list[0]).x - at(list[i]).x),
                                       std::fabs(at(list[0]).y - at(list[i]).y)});
            }
        if (difference > 0)
            out.seam += std::sqrt(dot(e, e));
    }
    if (total > 0)
        out.seam /= std::sqrt(total);
    std::map<uint32_t, uint32_t> root_of;
    for (uint32_t c = 0; c < mesh.indices.size(); c++) {
        if (hangs_loose(c / 3)) // lies on an edge and needs no gluing there
            continue;
        const auto [it, fresh] = root_of.insert({result.indices[c], find(c)});
        if (!fresh && it->second != find(c))
            fault("corner " + std::to_string(c) + " is joined across an open edge");
    }
}

void Judge::check_charts() {
    std::map<uint32_t, uint32_t> chart_of_vertex;
    for (uint32_t c = 0; c < mesh.indices.size(); ++c) {
        const auto [it, fresh] = chart_of_vertex.insert({result.indices[c], result.chart[c / 3]});
        if (!fresh && it->second != result.chart[c / 3])
            fault("a new vertex is in two charts");
    }
    std::vector<uint32_t> parent(mesh.faces());
    std::iota(parent.begin(), parent.end(), 0);
    const auto find = [&](uint32_t x) {
        while (parent[x] != x)
            x = parent[x] = parent[parent[x]];
        return x;
    };
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        const uint32_t n = mesh.adjacency[h];
        if (n == k_none)
            continue;
        for (uint32_t k = 0; k < 3; ++k) {
            const uint32_t g = 3 * n + k, g1 = 3 * n + (k + 1) % 3, h1 = h % 3 == 2 ? h - 2 : h + 1;
            if (result.indices[g] == result.indices[h1] && result.indices[g1] == result.indices[h])
                parent[find(h / 3)] = find(n);
        }
    }
    std::map<uint32_t, uint32_t> user; // of a new vertex
    for (uint32_t c = 0; c < mesh.indices.size(); c++)
        if (!hangs_loose(c / 3))
            user.insert({result.indices[c], c / 3});
    for (int round = 0; round < 2; round++) // loose triangles hang on one another too
        for (uint32_t c = 0; c < mesh.indices.size(); c++)
            if (hangs_loose(c / 3)) {
                const auto [it, fresh] = user.insert({result.indices[c], c / 3});
                parent[find(c / 3)] = find(it->second);
            }
    std::map<uint32_t, uint32_t> root_of_chart;
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        const auto [it, fresh] = root_of_chart.insert({result.chart[t], find(t)});
        if (!fresh && it->second != find(t))
            fault("chart " + std::to_string(result.chart[t]) + " falls apart");
    }
    out.charts = uint32_t(root_of_chart.size());
    if (out.charts != result.chart_count)
        fault("chart count is wrong");
}

/// The triangle of three corners, anywhere in the mesh.
Sums Judge::sums_of(uint32_t a, uint32_t b, uint32_t c) const {
    const P3 e = minus(position(mesh.indices[b]), position(mesh.indices[a]));
    const P3 f = minus(position(mesh.indices[c]), position(mesh.indices[a]));
    const P3 n = cross(e, f);
    const double doubled = std::sqrt(dot(n, n)), x1 = std::sqrt(dot(e, e));
    const double x2 = dot(e, f) / x1, y2 = doubled / x1;
    const P2 p = uv(a), q = uv(b), r = uv(c);
    const P2 s{(q.x - p.x) / x1, (q.y - p.y) / x1};
    const P2 u{((r.x - p.x) - s.x * x2) / y2, ((r.y - p.y) - s.y * x2) / y2};
    Sums sums;
    sums.area = 0.5 * doubled;
    sums.flat = 0.5 * cross(p, q, r);
    const double det = sums.flat / sums.area;
    sums.inverse = sums.area * 0.5 * (s.x * s.x + s.y * s.y + u.x * u.x + u.y * u.y) / (det * det);
    return sums;
}

/// Polygons that are convex in space, every corner's turn over a thousandth of the squared area,
/// turn left at every corner in the texture; corners of others that turn left do not turn right.
/// Charts keep the limit with every convex quad along its worse diagonal.
void Judge::check_polygons() {
    std::vector<uint8_t> seen(mesh.indices.size(), 0);
    std::vector<double> worse(result.chart_count, 0.0);
    for (uint32_t h = 0; h < mesh.indices.size(); ++h) {
        if (seen[h] || inner_mate_[h] != k_none || hangs_loose(h / 3))
            continue;
        std::vector<uint32_t> loop;
        std::map<uint32_t, int> faces;
        bool sound = true;
        uint32_t at = h;
        do {
            seen[at] = 1;
            loop.push_back(at);
            faces[at / 3]++;
            at = at % 3 == 2 ? at - 2 : at + 1;
            while (inner_mate_[at] != k_none) {
                at = inner_mate_[at];
                faces[at / 3]++;
                at = at % 3 == 2 ? at - 2 : at + 1;
            }
        } while (at != h);
        for (const auto& [t, count] : faces)
            sound = sound && !hangs_loose(t);
        if (sound && loop.size() > 3 && faces.size() + 2 == loop.size())
            check_polygon(loop, worse);
    }
    std::vector<uint8_t> over(result.chart_count, 0);
    for (uint32_t t : result.over_limit)
        over[result.chart[t]] = 1;
    for (uint32_t c = 0; c < result.chart_count; ++c) {
        Sums sums = chart_sums_[c];
        sums.inverse += worse[c];
        if (!over[c] && sums.area > 0 && options.max_stretch < 1 &&
            sums.l2() > 1 / (1 - options.max_stretch) + 5e-4)
            fault("chart " + std::to_string(c) + " has L2 " + std::to_string(sums.l2()) +
                  " along other diagonals");
    }
}

void Judge::check_polygon(const std::vector<uint32_t>& loop, std::vector<double>& worse) {
    const size_t n = loop.size();
    P3 axis{0, 0, 0};
    const auto at = [&](size_t i) { return position(mesh.indices[loop[i % n]]); };
    for (size_t i = 2; i < n; ++i) {
        const P3 c = cross(minus(at(i - 1), at(0)), minus(at(i), at(0)));
        axis = {axis.x + c.x / 2, axis.y + c.y / 2, axis.z + c.z / 2};
    }
    bool convex = true;
    for (size_t i = 0; i < n; ++i) {
        const double turn = dot(cross(minus(at(i), at(i + n - 1)), minus(at(i + 1), at(i))), axis);
        const double least = 1e-3 * dot(axis, axis);
        convex = convex && turn > least;
        const P2 a = uv(loop[(i + n - 1) % n]), b = uv(loop[i]), c = uv(loop[(i + 1) % n]);
        const double reach = std::fabs(c.x - b.x) + std::fabs(c.y - b.y) + std::fabs(b.x - a.x) +
                             std::fabs(b.y - a.y);
        double size = 1;
        for (const P2 p : {a, b, c})
            size = std::max({size, std::fabs(p.x), std::fabs(p.y)});
        if (turn > 1.001 * least && cross(a, b, c) < -4e-7 * size * reach)
            fault("corner " + std::to_string(loop[i]) + " of a polygon turns right");
    }
    if (!convex || n != 4)
        return;
    Sums own, other;
    const size_t first = loop[0] / 3 == loop[1] / 3 ? 0 : 1; // the tip of a triangle is next
    for (size_t i = 0; i < 4; i += 2) {
        const Sums a =
            sums_of(loop[(first + i) % 4], loop[(first + i + 1) % 4], loop[(first + i + 2) % 4]);
        const Sums b = sums_of(loop[(first + i + 1) % 4], loop[(first + i + 2) % 4],
                               loop[(first + i + 3) % 4]);
        own.area += a.area;
        own.inverse += a.inverse;
        other.area += b.area;
        other.inverse += b.inverse;
    }
    worse[result.chart[loop[0] / 3]] +=
        std::max(0.0, other.inverse / other.area * own.area - own.inverse);
}

void Judge::check_range() {
    const double longer = std::max(options.width, options.height);
    for (size_t i = 0; i < result.uvs.size(); ++i) {
        const double max = (i % 2 ? options.height : options.width) / longer;
        if (result.uvs[i] < 0 || result.uvs[i] > max)
            fault("coordinate " + std::to_string(result.uvs[i]) + " is outside");
    }
}

/// Separating axis test: true if the triangles overlap by more than `tolerance`.
bool Judge::triangles_overlap(uint32_t a, uint32_t b, double tolerance) const {
    const uint32_t both[2] = {a, b};
    for (uint32_t t : both)
        for (uint32_t k = 0; k < 3; ++k) {
            const P2 p = uv(3 * t + k), q = uv(3 * t + (k + 1) % 3);
            const double length = std::sqrt((q.x - p.x) * (q.x - p.x) + (q.y - p.y) * (q.y - p.y));
            if (!(length > 0))
                return false;
            const uint32_t other = t == a ? b : a;
            bool apart = true;
            for (uint32_t i = 0; i < 3; ++i)
                apart = apart && cross(p, q, uv(3 * other + i)) <= tolerance * length;
            if (apart)
                return false;
        }
    return true;
}

void Judge::check_overlaps() {
    double low[2] = {1e30, 1e30}, high[2] = {-1e30, -1e30};
    for (size_t i = 0; i < result.uvs.size(); ++i) {
        low[i % 2] = std::min(low[i % 2], double(result.uvs[i]));
        high[i % 2] = std::max(high[i % 2], double(result.uvs[i]));
    }
    const double extent = std::max({high[0] - low[0], high[1] - low[1], 1e-30});
    const int size = std::clamp(int(std::sqrt(double(mesh.faces()))), 1, 1000);
    const double cell = extent / size * 1.0001;
    std::vector<std::vector<uint32_t>> grid(size_t(size) * size);
    // Charts of partition() overlap each other; only triangles of one chart are compared then.
    for (uint32_t t = 0; t < mesh.faces(); ++t) {
        int range[4] = {size, -1, size, -1};
        for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
            const int x = int((uv(c).x - low[0]) / cell), y = int((uv(c).y - low[1]) / cell);
            range[0] = std::min(range[0], x);
            range[1] = std::max(range[1], x);
            range[2] = std::min(range[2], y);
            range[3] = std::max(range[3], y);
        }
        for (int y = range[2]; y <= range[3]; ++y)
            for (int x = range[0]; x <= range[1]; ++x)
                grid[size_t(y) * size + x].push_back(t);
    }
    for (const auto& list : grid)
        for (size_t i = 0; i < list.size(); ++i)
            for (size_t j = i + 1; j < list.size(); ++j) {
                const uint32_t a = list[i], b = list[j];
                if (!packed_ && result.chart[a] != result.chart[b])
                    continue;
                if (triangles_overlap(a, b, 1e-6 * extent))
                    fault(
                        "triangles " + std::to_string(a) + " and " + std::to_string(b) +
                        (result.chart[a] == result.chart[b] ? " of one chart" : " of two charts") +
                        " overlap");
            }
}

} // namespace

void TestMesh::polygon(const std::vector<uint32_t>& corners) {
    const size_t first = indices.size();
    false_edges.resize(first, k_none);
    for (size_t i = 1; i + 1 < corners.size(); ++i) {
        triangle(corners[0], corners[i], corners[i + 1]);
        false_edges.push_back(i > 1 ? 0u : k_none);
        false_edges.push_back(k_none);
        false_edges.push_back(i + 2 < corners.size() ? 0u : k_none);
    }
}

void TestMesh::connect() {
    const uint32_t count = uint32_t(indices.size());
    std::vector<std::pair<uint64_t, uint32_t>> edges(count);
    for (uint32_t h = 0; h < count; ++h) {
        const uint64_t a = indices[h], b = indices[h % 3 == 2 ? h - 2 : h + 1];
        edges[h] = {std::min(a, b) << 32 | std::max(a, b), h};
    }
    std::sort(edges.begin(), edges.end());
    adjacency.assign(count, k_none);
    if (!false_edges.empty())
        false_edges.resize(count, k_none);
    for (size_t i = 0, j; i < count; i = j) {
        for (j = i; j < count && edges[j].first == edges[i].first;)
            ++j;
        if (j - i == 2 && edges[i].second / 3 != edges[i + 1].second / 3) {
            adjacency[edges[i].second] = edges[i + 1].second / 3;
            adjacency[edges[i + 1].second] = edges[i].second / 3;
        }
    }
}

tessora::atlas::Mesh TestMesh::view() const {
    return {{positions.data(), positions.size()},
            {indices.data(), indices.size()},
            {adjacency.data(), adjacency.size()},
            {false_edges.data(), false_edges.size()}};
}

double smallest_gap(const TestMesh& mesh, const Options& options, const Result& result) {
    const float w = float(options.width), h = float(options.height);
    const float longer = std::max(w, h), shorter = std::min(w, h);
    const float margin = options.gutter / longer, s = margin * (longer / shorter);
    std::vector<P2> point(result.source_vertex.size()); // in texels
    for (size_t v = 0; v < point.size(); ++v) {
        const float u = result.uvs[2 * v] * std::max(1.0f, h / w) * (1 - s) + margin / 2;
        const float t = result.uvs[2 * v + 1] * std::max(1.0f, w / h) * (1 - s) + margin / 2;
        point[v] = {double(u) * double(w), double(t) * double(h)};
    }
    const auto to_segment = [](P2 p, P2 a, P2 b) {
        const double dx = b.x - a.x, dy = b.y - a.y, size = dx * dx + dy * dy;
        double t = size > 0 ? ((p.x - a.x) * dx + (p.y - a.y) * dy) / size : 0;
        t = std::clamp(t, 0.0, 1.0);
        const double ex = a.x + t * dx - p.x, ey = a.y + t * dy - p.y;
        return ex * ex + ey * ey;
    };
    double min_squared = 1e300;
    for (uint32_t g = 0; g < mesh.indices.size(); ++g)
        for (uint32_t c = 0; c < mesh.indices.size(); ++c) {
            if (result.chart[g / 3] == result.chart[c / 3])
                continue;
            const uint32_t g1 = g % 3 == 2 ? g - 2 : g + 1;
            min_squared =
                std::min(min_squared, to_segment(point[result.indices[c]], point[result.indices[g]],
                                                 point[result.indices[g1]]));
        }
    return std::sqrt(min_squared);
}

Judgement judge(const TestMesh& mesh, const Options& options, const Result& result, bool packed,
                bool overlaps) {
    return Judge(mesh, options, result, packed).run(overlaps);
}

} // namespace atlas_test
