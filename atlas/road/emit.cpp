#include "atlas/road/emit.h"

#include "atlas/geometry/predicates.h"
#include "atlas/geometry/vec.h"

#include <algorithm>
#include <cmath>

namespace tessora::atlas {
namespace {

/// The caller's aspect correction and margin, repeated operation by operation in single precision,
/// because triangles must survive this rounding too. docs/atlas-packing.md has the formulas.
struct CallerMap {
    float aspect_u = 1, aspect_v = 1, shrink = 1, half = 0;

    static CallerMap of(const PackOptions& options) {
        const float w = float(options.width), h = float(options.height);
        CallerMap map;
        map.aspect_u = h / w < 1.0f ? 1.0f : h / w;
        map.aspect_v = w / h < 1.0f ? 1.0f : w / h;
        const float g = options.gutter / std::max(w, h);
        map.shrink = 1.0f - g * (w / h > h / w ? w / h : h / w);
        map.half = g / 2.0f;
        return map;
    }
    float u(float x) const { return x * aspect_u * shrink + half; }
    float v(float y) const { return y * aspect_v * shrink + half; }
};

/// The grid of representable coordinates: multiples of a step that single precision holds exactly.
/// Only the choice of a lattice point rounds, never the arithmetic on it.
struct Lattice {
    double step = 1.0 / 16777216;
    double max_u = 16777216, max_v = 16777216; ///< largest lattice numbers
};

/// How far a vertex may be nudged in one pass, in lattice steps; grows over the passes.
constexpr int k_reach[] = {1, 2, 3, 6};
constexpr int k_nudge_passes = 24;
/// Triangle tests before nudging gives up, fixed and per triangle, so that hopeless meshes do not
/// take most of the time.
constexpr uint64_t k_nudge_tests = 500000, k_nudge_tests_per_face = 20;
constexpr double k_max_shift = 8; ///< lattice steps that all passes together may move a vertex;
                                  ///< safe_gutter() allows for it

class Emitter {
public:
    Emitter(const EmitCharts& charts, Result& result) : charts_(charts), result_(result) {
        number_vertices();
        result_.chart.assign(charts.chart.data, charts.chart.data + charts.chart.size);
        result_.chart_count = uint32_t(charts.chart_stretch.size);
        result_.stretch = 0;
        for (size_t i = 0; i < charts.chart_stretch.size; ++i)
            result_.stretch = std::max(result_.stretch, float(charts.chart_stretch[i]));
        if (result_.stretch < 1e-6f)
            result_.stretch = 0; // not more than the rounding errors of an isometry
        result_.over_limit.clear();
        for (uint32_t t = 0; t < charts.chart.size && charts.chart_over_limit.size > 0; ++t)
            if (charts.chart_over_limit[charts.chart[t]] != 0)
                result_.over_limit.push_back(t);
    }

    size_t vertices() const { return class_of_.size(); }
    size_t class_of(size_t vertex) const { return class_of_[vertex]; }
    /// Clockwise triangles are looked after, too.
    void keep_both_orientations() { keeps_both_ = true; }
    uint32_t chart_of(size_t vertex) const { return chart_of_vertex_[vertex]; }
    Vec2 position(size_t vertex) const {
        const size_t c = class_of_[vertex];
        return {charts_.class_uv[2 * c], charts_.class_uv[2 * c + 1]};
    }

    /// Rounds exact coordinates to the lattice and nudges vertices of triangles that this flipped.
    /// `caller` is null if the result is not to be mapped by the caller.
    void round(const std::vector<Vec2>& exact, const Lattice& lattice, const CallerMap* caller) {
        lattice_ = lattice;
        caller_ = caller;
        exact_ = &exact;
        at_.resize(vertices());
        for (size_t v = 0; v < vertices(); ++v)
            at_[v] = {nearest(exact[v].x, lattice.max_u), nearest(exact[v].y, lattice.max_v)};
        result_.lost = nudge_vertices();
        result_.uvs.resize(2 * vertices());
        for (size_t v = 0; v < vertices(); ++v) {
            result_.uvs[2 * v] = float(at_[v].x * lattice_.step);
            result_.uvs[2 * v + 1] = float(at_[v].y * lattice_.step);
        }
    }

private:
    /// Numbers the new vertices: by source vertex, then by the first corner of the class.
    void number_vertices() {
        const size_t classes = charts_.class_uv.size / 2, corners = charts_.indices.size;
        std::vector<uint32_t> first_corner, seen(classes, k_none);
        uint32_t sources = 0;
        for (uint32_t corner = 0; corner < corners; ++corner) {
            uint32_t& number = seen[charts_.corner_class[corner]];
            if (number == k_none) {
                number = uint32_t(first_corner.size());
                first_corner.push_back(corner);
            }
            sources = std::max(sources, charts_.indices[corner] + 1);
        }
        std::vector<uint32_t> begin(size_t(sources) + 1, 0);
        for (uint32_t corner : first_corner)
            ++begin[charts_.indices[corner] + 1];
        for (size_t s = 0; s < sources; ++s)
            begin[s + 1] += begin[s];
        class_of_.resize(first_corner.size());
        chart_of_vertex_.resize(first_corner.size());
        result_.source_vertex.resize(first_corner.size());
        for (uint32_t corner : first_corner) {
            const uint32_t source = charts_.indices[corner], vertex = begin[source]++;
            class_of_[vertex] = charts_.corner_class[corner];
            chart_of_vertex_[vertex] = charts_.chart[corner / 3];
            result_.source_vertex[vertex] = source;
            seen[class_of_[vertex]] = vertex;
        }
        result_.indices.resize(corners);
        for (size_t corner = 0; corner < corners; ++corner)
            result_.indices[corner] = seen[charts_.corner_class[corner]];
    }

    double nearest(double value, double max) const {
        return std::min(max, std::max(0.0, std::floor(value / lattice_.step + 0.5)));
    }

    /// 0 for a sound triangle; otherwise at least 1, growing with its negative area in lattice
    /// units. A triangle is sound if rounding has neither flipped nor collapsed it, in the returned
    /// and in the caller's final coordinates. One that was flipped or collapsed before rounding may
    /// stay so.
    double fault(uint32_t t) const {
        Vec2 p[3], q[3], f[3];
        for (int k = 0; k < 3; ++k) {
            const uint32_t v = result_.indices[3 * size_t(t) + k];
            p[k] = position(v);
            q[k] = at_[v] * lattice_.step;
            if (caller_ != nullptr)
                f[k] = {caller_->u(float(q[k].x)), caller_->v(float(q[k].y))};
        }
        int before = side_of_line(p[0], p[1], p[2]);
        if (before < 0 && !keeps_both_)
            return 0;
        if (before < 0) {
            before = 1;
            std::swap(q[1], q[2]);
            std::swap(f[1], f[2]);
        }
        const double returned = fault_of(q, before);
        return caller_ == nullptr ? returned : returned + fault_of(f, before);
    }

    double fault_of(const Vec2* p, int before) const {
        if (side_of_line(p[0], p[1], p[2]) >= before)
            return 0;
        const double square = lattice_.step * lattice_.step;
        return 1 + std::max(0.0, -doubled_area(p[0], p[1], p[2]) / square);
    }

    /// Nudges vertices of unsound triangles; returns the triangles that stay unsound, ascending.
    std::vector<uint32_t> nudge_vertices() {
        std::vector<uint32_t> bad, next;
        for (uint32_t t = 0; t < charts_.chart.size; ++t)
            if (fault(t) > 0)
                bad.push_back(t);
        if (bad.empty())
            return bad;
        link_triangles();
        const uint64_t budget = k_nudge_tests + k_nudge_tests_per_face * charts_.chart.size;
        for (int pass = 0; pass < k_nudge_passes && !bad.empty() && tests_ < budget; ++pass) {
            const int reach = k_reach[pass * 4 / k_nudge_passes];
            next.clear();
            for (uint32_t t : bad)
                for (int k = 0; k < 3 && tests_ < budget && fault(t) > 0; ++k)
                    move_vertex(result_.indices[3 * size_t(t) + k], reach, next);
            next.insert(next.end(), bad.begin(), bad.end());
            std::sort(next.begin(), next.end());
            next.erase(std::unique(next.begin(), next.end()), next.end());
            next.erase(std::remove_if(next.begin(), next.end(),
                                      [&](uint32_t t) { return !(fault(t) > 0); }),
                       next.end());
            bad.swap(next);
        }
        return bad;
    }

    /// Moves a vertex to the lattice point within `reach` that minimises the faults of its
    /// triangles, the nearest on a tie. Appends its triangles to `touched` if it moves.
    void move_vertex(uint32_t v, int reach, std::vector<uint32_t>& touched) {
        const Vec2 home = at_[v];
        Vec2 best = home;
        double min_fault = fault_around(v);
        // On a tie prefer moving: passing the fault on untangles rows of needles.
        int best_distance = reach * reach * 2 + 1;
        for (int dy = -reach; dy <= reach; ++dy)
            for (int dx = -reach; dx <= reach; ++dx) {
                at_[v] = home + Vec2{double(dx), double(dy)};
                if (at_[v].x < 0 || at_[v].y < 0 || at_[v].x > lattice_.max_u ||
                    at_[v].y > lattice_.max_v || moved_too_far(v))
                    continue;
                const double total = fault_around(v);
                const int distance = dx * dx + dy * dy;
                if (total < min_fault || (total == min_fault && distance < best_distance)) {
                    min_fault = total;
                    best = at_[v];
                    best_distance = distance;
                }
            }
        at_[v] = best;
        if (!(best == home))
            touched.insert(touched.end(), star_.begin() + star_begin_[v],
                           star_.begin() + star_begin_[v + 1]);
    }

    /// Whether a vertex has moved further from its exact place than safe_gutter() allows for.
    bool moved_too_far(uint32_t v) const {
        const Vec2 off = at_[v] - (*exact_)[v] * (1 / lattice_.step);
        return std::abs(off.x) > k_max_shift || std::abs(off.y) > k_max_shift;
    }

    double fault_around(uint32_t v) {
        double sum = 0;
        tests_ += star_begin_[v + 1] - star_begin_[v];
        for (uint32_t i = star_begin_[v]; i < star_begin_[v + 1]; ++i)
            sum += fault(star_[i]);
        return sum;
    }

    void link_triangles() {
        star_begin_.assign(vertices() + 1, 0);
        for (uint32_t v : result_.indices)
            ++star_begin_[v + 1];
        for (size_t v = 0; v < vertices(); ++v)
            star_begin_[v + 1] += star_begin_[v];
        std::vector<uint32_t> fill(star_begin_.begin(), star_begin_.end() - 1);
        star_.resize(result_.indices.size());
        for (size_t corner = 0; corner < result_.indices.size(); ++corner)
            star_[fill[result_.indices[corner]]++] = uint32_t(corner / 3);
    }

    const EmitCharts& charts_;
    Result& result_;
    std::vector<uint32_t> class_of_, chart_of_vertex_; ///< per new vertex
    std::vector<Vec2> at_;                     ///< per new vertex: position in lattice steps
    std::vector<uint32_t> star_begin_, star_;  ///< per new vertex: its triangles
    const std::vector<Vec2>* exact_ = nullptr; ///< valid during round()
    uint64_t tests_ = 0;                       ///< triangle tests so far
    Lattice lattice_;
    const CallerMap* caller_ = nullptr;
    bool keeps_both_ = false;
};

/// The largest lattice number that the caller's map keeps inside the texture.
double max_inside(double share, float (CallerMap::*axis)(float) const, const CallerMap& caller,
                  double step) {
    double number = std::floor(share / step);
    while (number > 0 && (caller.*axis)(float(number * step)) > 1.0f)
        --number;
    return number;
}

} // namespace

void emit(const EmitCharts& charts, const Packing& packing, const PackOptions& options,
          Result& result) {
    Emitter emitter(charts, result);
    const InnerRectangle inner = inner_rectangle(options.width, options.height, options.gutter);
    const CallerMap caller = CallerMap::of(options);
    Lattice lattice;
    const double longer = std::max(options.width, options.height);
    lattice.max_u = max_inside(options.width / longer, &CallerMap::u, caller, lattice.step);
    lattice.max_v = max_inside(options.height / longer, &CallerMap::v, caller, lattice.step);
    std::vector<Vec2> exact(emitter.vertices());
    for (size_t v = 0; v < exact.size(); ++v) {
        const Placement& at = packing.placements[emitter.chart_of(v)];
        const Vec2 p = emitter.position(v) * packing.scale;
        exact[v] =
            Vec2{at.cosine * p.x - at.sine * p.y + at.x, at.sine * p.x + at.cosine * p.y + at.y} *
            (1 / inner.unit);
    }
    emitter.round(exact, lattice, &caller);
}

void emit_unpacked(const EmitCharts& charts, Result& result) {
    Emitter emitter(charts, result);
    std::vector<Vec2> corner(charts.chart_stretch.size, {HUGE_VAL, HUGE_VAL});
    std::vector<Vec2> exact(emitter.vertices());
    for (size_t v = 0; v < exact.size(); ++v) {
        Vec2& low = corner[emitter.chart_of(v)];
        exact[v] = emitter.position(v);
        low = {std::min(low.x, exact[v].x), std::min(low.y, exact[v].y)};
    }
    double extent = 0;
    for (size_t v = 0; v < exact.size(); ++v) {
        exact[v] = exact[v] - corner[emitter.chart_of(v)];
        extent = std::max(extent, std::max(exact[v].x, exact[v].y));
    }
    Lattice lattice;
    for (double reach = 1; reach < extent; reach *= 2)
        lattice.step *= 2;
    emitter.round(exact, lattice, nullptr);
}

void emit_at(const EmitCharts& charts, const std::vector<double>& exact, double step,
             Result& result) {
    Emitter emitter(charts, result);
    emitter.keep_both_orientations();
    std::vector<Vec2> at(emitter.vertices());
    for (size_t v = 0; v < at.size(); ++v)
        at[v] = {exact[2 * emitter.class_of(v)], exact[2 * emitter.class_of(v) + 1]};
    Lattice lattice;
    lattice.step = step;
    emitter.round(at, lattice, nullptr);
}

} // namespace tessora::atlas
