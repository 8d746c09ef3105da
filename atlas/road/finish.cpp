#include "atlas/road/finish.h"

#include "atlas/parallel.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

template <class T>
Span<T> span(const std::vector<T>& v) {
    return {v.data(), v.size()};
}

/// Takes the charts of what was laid out over to the rest of the mesh.
class Follower {
public:
    Follower(const Mesh& mesh, const Surface& surface, const Sheets& sheets, const Options& options,
             const FinishedCharts& kept)
        : mesh_(mesh), surface_(surface), sheets_(sheets), options_(options), kept_(kept),
          faces_(uint32_t(mesh.indices.size / 3)) {}

    /// Gives the copies that are not served; then `out` is not touched.
    std::vector<uint32_t> run(FinishedCharts& out) {
        take_kept();
        const std::vector<uint32_t> unserved = take_copies();
        if (unserved.empty()) {
            hang_loose();
            number_charts();
            out = std::move(all_);
        }
        return unserved;
    }

private:
    uint32_t kept_number(uint32_t t) const { return sheets_.number[t]; }

    void take_kept() {
        all_ = kept_;
        all_.corner_class.assign(3 * size_t(faces_), k_none);
        all_.chart.assign(faces_, k_none);
        for (uint32_t t = 0; t < faces_; ++t) {
            const uint32_t n = kept_number(t);
            if (n == k_none)
                continue;
            all_.chart[t] = kept_.chart[n];
            for (uint32_t k = 0; k < 3; ++k)
                all_.corner_class[3 * t + k] = kept_.corner_class[3 * n + k];
        }
        has_area_.assign(kept_.chart_count(), 0);
        for (uint32_t n = 0; n < surface_.face_count; ++n)
            if (!surface_.degenerate[n])
                has_area_[kept_.chart[n]] = 1;
    }

    std::vector<uint32_t> take_copies() {
        std::vector<std::vector<uint32_t>> faces(sheets_.mirrored.size());
        for (uint32_t t = 0; t < faces_ && !faces.empty(); ++t)
            if (sheets_.copy[t] != k_none)
                faces[sheets_.copy[t]].push_back(t);
        copied_chart_.assign(kept_.chart_count(), k_none);
        copied_class_.assign(kept_.class_uv.size() / 2, k_none);
        std::vector<uint32_t> unserved;
        for (uint32_t copy = 0; copy < faces.size(); ++copy)
            if (!take_copy(faces[copy], copy))
                unserved.push_back(copy);
        return unserved;
    }

    /// The charts of a copy's sheet, with the numbers of their copies in copied_chart_.
    std::vector<uint32_t> begin_copy(const std::vector<uint32_t>& faces) {
        std::vector<uint32_t> charts;
        for (uint32_t t : faces)
            charts.push_back(kept_.chart[kept_number(sheets_.source_corner[3 * t] / 3)]);
        std::sort(charts.begin(), charts.end());
        charts.erase(std::unique(charts.begin(), charts.end()), charts.end());
        for (uint32_t chart : charts) {
            copied_chart_[chart] = uint32_t(has_area_.size());
            has_area_.push_back(has_area_[chart]);
        }
        return charts;
    }

    /// One sheet. Its classes appear in the order of its triangles.
    bool take_copy(const std::vector<uint32_t>& faces, uint32_t copy) {
        const bool mirrored = sheets_.mirrored[copy] != 0;
        const bool stacked = options_.stack && !sheets_.elsewhere[copy];
        const bool turned = mirrored && !stacked;
        const std::vector<uint32_t> charts = begin_copy(faces);
        std::vector<uint32_t> classes;
        bool whole = true; // no polygon of the sheet fell apart
        for (uint32_t t : faces) {
            const uint32_t source = 3 * kept_number(sheets_.source_corner[3 * t] / 3);
            const uint32_t chart = kept_.chart[source / 3];
            all_.chart[t] = copied_chart_[chart];
            for (uint32_t c = 3 * t; c < 3 * t + 3; ++c) {
                const uint32_t from = sheets_.source_corner[c];
                const uint32_t n = kept_number(from / 3);
                const uint32_t id = kept_.corner_class[3 * n + from % 3];
                whole = whole && kept_.chart[n] == chart;
                if (copied_class_[id] == k_none) {
                    const double u = kept_.class_uv[2 * id], v = kept_.class_uv[2 * id + 1];
                    copied_class_[id] = add_class({turned ? -u : u, v});
                    classes.push_back(id);
                }
                all_.corner_class[c] = copied_class_[id];
            }
        }
        for (uint32_t chart : charts)
            add_chart(chart, turned, stacked);
        const bool served = whole && leaves_room(charts, sheets_.difference[copy]) &&
                            serves(faces, charts, mirrored && stacked);
        for (uint32_t chart : charts)
            copied_chart_[chart] = k_none;
        for (uint32_t id : classes)
            copied_class_[id] = k_none;
        return served;
    }

    uint32_t add_class(Vec2 p) {
        all_.class_uv.push_back(p.x);
        all_.class_uv.push_back(p.y);
        return uint32_t(all_.class_uv.size() / 2 - 1);
    }

    void add_chart(uint32_t source, bool turned, bool stacked) {
        for (uint32_t e = kept_.edge_begin[source]; e < kept_.edge_begin[source + 1]; ++e) {
            const uint32_t a = copied_class_[kept_.edges[2 * e]];
            const uint32_t b = copied_class_[kept_.edges[2 * e + 1]];
            all_.edges.push_back(turned ? b : a);
            all_.edges.push_back(turned ? a : b);
        }
        all_.edge_begin.push_back(uint32_t(all_.edges.size() / 2));
        all_.chart_stretch.push_back(kept_.chart_stretch[source]);
        all_.over_limit.push_back(kept_.over_limit[source]);
        all_.place.push_back(stacked ? source : uint32_t(all_.place.size()));
    }

    /// Whether lengths that differ as little as the copy's keep its charts within the limit,
    /// whichever diagonals its quads are divided along.
    bool leaves_room(const std::vector<uint32_t>& charts, double difference) const {
        constexpr double k_margin = 4; // L2 grows at most about twice as fast as lengths differ
        const double most = stretch_limit(options_.max_stretch) * (1 - k_margin * difference);
        return difference == 0 || std::all_of(charts.begin(), charts.end(), [&](uint32_t c) {
                   return kept_.over_limit[c] || kept_.worst_l2[c] <= most;
               });
    }

    /// Whether the copy's own triangles, where they divide its quads otherwise, lie well.
    bool serves(const std::vector<uint32_t>& faces, const std::vector<uint32_t>& charts,
                bool mirrored) {
        std::vector<StretchSums> sums(charts.size());
        const uint32_t first = all_.chart_count() - uint32_t(charts.size());
        for (uint32_t t : faces) {
            Vec2 p[3];
            Vec3 at[3];
            for (uint32_t k = 0; k < 3; ++k) {
                const uint32_t id = all_.corner_class[3 * t + k];
                p[k] = {mirrored ? -all_.class_uv[2 * id] : all_.class_uv[2 * id],
                        all_.class_uv[2 * id + 1]};
                at[k] = position(mesh_.indices[3 * t + k]) * (1 / surface_.unit);
            }
            const Vec3 e = at[1] - at[0], f = at[2] - at[0];
            const double x1 = length(e), area = length(cross(e, f));
            if (area <= 2e-9)
                continue;
            sums[all_.chart[t] - first].add(
                triangle_stretch({x1, dot(e, f) / x1, area / x1}, p[0], p[1], p[2]));
        }
        const double limit = stretch_limit(options_.max_stretch);
        for (uint32_t c = 0; c < charts.size(); ++c) {
            if (sums[c].area <= 0)
                continue;
            if (sums[c].flipped != 0)
                return false;
            const double l2 = sums[c].l2();
            if (l2 > limit * (1 + 1e-6) && !all_.over_limit[first + c])
                return false;
            constexpr double k_rounding = 1e-6;
            double& reported = all_.chart_stretch[first + c];
            if (1 - 1 / l2 > reported + k_rounding)
                reported = 1 - 1 / l2;
        }
        return true;
    }

    Vec3 position(uint32_t v) const {
        const float* p = mesh_.positions.data + 3 * size_t(v);
        return {p[0], p[1], p[2]};
    }

    bool is_loose(uint32_t t) const { return all_.chart[t] == k_none || !has_area_[all_.chart[t]]; }

    /// Charts without area give way to the edges that their triangles can hang on.
    void hang_loose() {
        std::vector<uint32_t> loose;
        std::vector<uint8_t> placed(faces_);
        for (uint32_t t = 0; t < faces_; ++t) {
            placed[t] = !is_loose(t);
            if (!placed[t])
                loose.push_back(t);
        }
        if (loose.empty())
            return;
        std::stable_partition(loose.begin(), loose.end(),
                              [&](uint32_t t) { return all_.chart[t] != k_none; });
        std::vector<std::vector<uint32_t>> members(all_.chart_count());
        for (uint32_t t : loose)
            if (all_.chart[t] != k_none)
                members[all_.chart[t]].push_back(t);
        const auto attachments =
            attach_loose(mesh_.indices, sheets_.hints, loose, placed, [&](uint32_t t) {
                has_area_[all_.chart[t]] = 1; // nothing near has any: it stays a chart
                return members[all_.chart[t]];
            });
        for (const Attachment& a : attachments)
            hang(a.own, a.host);
    }

    Vec2 uv(uint32_t corner) const {
        const uint32_t id = all_.corner_class[corner];
        return {all_.class_uv[2 * id], all_.class_uv[2 * id + 1]};
    }

    /// Hangs a triangle that is a point, by its corner `own`, on the corner `host`.
    void hang_point(uint32_t own, uint32_t host) {
        const auto vertex = [&](uint32_t c) { return mesh_.indices[c]; };
        const uint32_t b = next_corner(own), c = previous_corner(own);
        all_.corner_class[own] = all_.corner_class[host];
        for (uint32_t other : {b, c})
            all_.corner_class[other] =
                vertex(other) == vertex(own) ? all_.corner_class[own] : add_class(uv(own));
        if (vertex(b) == vertex(c))
            all_.corner_class[c] = all_.corner_class[b];
    }

    /// What the corner's polygon has there already, in the same chart; else k_none.
    uint32_t class_in_polygon(uint32_t corner) const {
        for (uint32_t h : {previous_corner(corner), corner}) {
            const uint32_t mate = sheets_.hints.inner_mate[h];
            if (mate == k_none || all_.chart[mate / 3] != all_.chart[corner / 3])
                continue;
            const bool starts = mesh_.indices[mate] == mesh_.indices[corner];
            const uint32_t there = starts ? mate : next_corner(mate);
            if (all_.corner_class[there] != k_none)
                return all_.corner_class[there];
        }
        return k_none;
    }

    /// Lays the triangle of `own` on the edge of another. Both half-edges run between the same two
    /// vertices, or start at the same one.
    void hang(uint32_t own, uint32_t host) {
        const auto vertex = [&](uint32_t c) { return mesh_.indices[c]; };
        const uint32_t t = own / 3, a = own, b = next_corner(own), c = previous_corner(own);
        all_.chart[t] = all_.chart[host / 3];
        const bool on_edge = vertex(a) != vertex(b) &&
                             (vertex(a) == vertex(host) ? vertex(b) == vertex(next_corner(host))
                                                        : vertex(a) == vertex(next_corner(host)));
        if (!on_edge) {
            hang_point(own, host);
            return;
        }
        const auto class_at = [&](uint32_t v) { // of the host's edge
            return all_.corner_class[vertex(host) == v ? host : next_corner(host)];
        };
        all_.corner_class[a] = class_at(vertex(a));
        all_.corner_class[b] = class_at(vertex(b));
        if (vertex(c) == vertex(a) || vertex(c) == vertex(b)) {
            all_.corner_class[c] = class_at(vertex(c));
            return;
        }
        all_.corner_class[c] = class_in_polygon(c);
        if (all_.corner_class[c] != k_none)
            return;
        const Vec3 p = position(vertex(a)), along = position(vertex(b)) - p;
        const double size = dot(along, along);
        const double share = size > 0 ? dot(position(vertex(c)) - p, along) / size : 0;
        const double part = std::min(1.0, std::max(0.0, share));
        all_.corner_class[c] = add_class(uv(a) * (1 - part) + uv(b) * part);
    }

    /// By first triangle; charts that nothing is left in go.
    void number_charts() {
        std::vector<uint32_t> number(all_.chart_count(), k_none), order;
        for (uint32_t& chart : all_.chart) {
            if (number[chart] == k_none) {
                number[chart] = uint32_t(order.size());
                order.push_back(chart);
            }
            chart = number[chart];
        }
        FinishedCharts sorted;
        for (uint32_t chart : order) {
            sorted.edges.insert(sorted.edges.end(),
                                all_.edges.begin() + 2 * long(all_.edge_begin[chart]),
                                all_.edges.begin() + 2 * long(all_.edge_begin[chart + 1]));
            sorted.edge_begin.push_back(uint32_t(sorted.edges.size() / 2));
            sorted.chart_stretch.push_back(all_.chart_stretch[chart]);
            sorted.over_limit.push_back(all_.over_limit[chart]);
            sorted.place.push_back(number[all_.place[chart]]);
        }
        for (uint32_t n : number)
            if (n != k_none)
                all_.by_shape.push_back(n);
        all_.edges = std::move(sorted.edges);
        all_.edge_begin = std::move(sorted.edge_begin);
        all_.chart_stretch = std::move(sorted.chart_stretch);
        all_.over_limit = std::move(sorted.over_limit);
        all_.place = std::move(sorted.place);
    }

    const Mesh& mesh_;
    const Surface& surface_;
    const Sheets& sheets_;
    const Options& options_;
    const FinishedCharts& kept_;
    const uint32_t faces_;
    FinishedCharts all_;
    std::vector<uint8_t> has_area_;                     ///< per chart
    std::vector<uint32_t> copied_chart_, copied_class_; ///< of the copy at hand; k_none at rest
};

/// Numbers the nodes and scales their coordinates; `scale` is per chart, as numbered in `out`.
void finish_nodes(const ChartSet& set, const std::vector<double>& scale, FinishedCharts& out) {
    std::vector<uint32_t> class_of_node(set.node.size(), k_none);
    out.corner_class.resize(set.node.size());
    for (uint32_t c = 0; c < set.node.size(); ++c) {
        uint32_t& id = class_of_node[set.node[c]];
        if (id == k_none) {
            id = uint32_t(out.class_uv.size() / 2);
            const Vec2 p = set.uv[set.node[c]] * scale[out.chart[c / 3]];
            out.class_uv.push_back(p.x);
            out.class_uv.push_back(p.y);
        }
        out.corner_class[c] = id;
    }
}

/// The triangles as they are, without the minimum height of a surface's frames; zero without area.
std::vector<Frame> exact_frames(const Mesh& mesh, ParallelFor executor) {
    std::vector<Frame> frames(mesh.indices.size / 3);
    const auto frame_of = [&](size_t t) -> Frame {
        Vec3 at[3];
        for (size_t k = 0; k < 3; ++k) {
            const float* p = mesh.positions.data + 3 * size_t(mesh.indices[3 * t + k]);
            at[k] = {p[0], p[1], p[2]};
        }
        const Vec3 e = at[1] - at[0], f = at[2] - at[0];
        const double x1 = length(e), doubled = length(cross(e, f));
        return doubled > 0 ? Frame{x1, dot(e, f) / x1, doubled / x1} : Frame{};
    };
    for_blocks(executor, frames.size(), [&](size_t begin, size_t end) {
        for (size_t t = begin; t < end; ++t)
            frames[t] = frame_of(t);
    });
    return frames;
}

} // namespace

EmitCharts FinishedCharts::to_emit(const Mesh& mesh) const {
    return {mesh.indices, span(corner_class),  span(class_uv),
            span(chart),  span(chart_stretch), span(over_limit)};
}

FinishedCharts finish_charts(const ChartSet& set, double limit, double unit, ParallelFor executor) {
    FinishedCharts out;
    const uint32_t faces = set.surface.face_count;
    std::vector<uint32_t> number(set.charts.size(), k_none), source;
    std::vector<double> scale;
    out.chart.resize(faces);
    for (uint32_t t = 0; t < faces; ++t) {
        const uint32_t c = set.chart[t];
        if (number[c] == k_none) {
            number[c] = uint32_t(source.size());
            source.push_back(c);
            const StretchSums& sums = set.charts[c].stretch;
            scale.push_back(unit * std::sqrt(sums.area / sums.flat_area));
            out.place.push_back(number[c]);
        }
        out.chart[t] = number[c];
    }
    std::vector<StretchSums> exact(source.size());
    parallel_for(executor, source.size(),
                 [&](size_t i) { exact[i] = set.true_stretch(set.charts[source[i]]); });
    for (const StretchSums& sums : exact) {
        const bool has_area = sums.area > 0;
        out.chart_stretch.push_back(has_area ? std::max(0.0, 1 - 1 / sums.l2()) : 0);
        out.worst_l2.push_back(has_area ? sums.worst_l2() : 1);
        out.over_limit.push_back(has_area && sums.worst_l2() > limit * (1 + 1e-6));
    }
    finish_nodes(set, scale, out);
    for (uint32_t c : source) {
        for (uint32_t h : set.charts[c].border) {
            out.edges.push_back(out.corner_class[h]);
            out.edges.push_back(out.corner_class[next_corner(h)]);
        }
        out.edge_begin.push_back(uint32_t(out.edges.size() / 2));
    }
    return out;
}

std::vector<uint32_t> follow_sheets(const Mesh& mesh, const Surface& surface, const Sheets& sheets,
                                    const Options& options, FinishedCharts& charts) {
    return Follower(mesh, surface, sheets, options, charts).run(charts);
}

Packing pack_finished(const FinishedCharts& charts, const PackOptions& options) {
    std::vector<uint32_t> edges, begin = {0}, packed(charts.chart_count(), k_none);
    for (uint32_t c : charts.by_shape) {
        if (charts.place[c] != c)
            continue;
        packed[c] = uint32_t(begin.size() - 1);
        edges.insert(edges.end(), charts.edges.begin() + 2 * long(charts.edge_begin[c]),
                     charts.edges.begin() + 2 * long(charts.edge_begin[c + 1]));
        begin.push_back(uint32_t(edges.size() / 2));
    }
    Packing packing = pack_charts({span(charts.class_uv), span(edges), span(begin)}, options);
    if (packing.status != Status::ok)
        return packing;
    std::vector<Placement> placements;
    for (uint32_t c = 0; c < charts.chart_count(); ++c)
        placements.push_back(packing.placements[packed[charts.place[c]]]);
    packing.placements = std::move(placements);
    return packing;
}

void report_rounded_stretch(const Mesh& mesh, Result& result, ParallelFor executor) {
    constexpr double k_least_area = 1e-7; // of the mean triangle: rounding leaves no shape to less
    constexpr double k_visible = 1e-3, k_visible_share = 1e-2;
    const std::vector<Frame> frames = exact_frames(mesh, executor);
    double total_area = 0;
    for (const Frame& frame : frames)
        total_area += frame.area();
    const double least = k_least_area * total_area / double(frames.size());
    const double unit = 1 / std::sqrt(total_area);
    std::vector<StretchSums> sums(result.chart_count);
    for (uint32_t t = 0; t < frames.size(); ++t) {
        const Frame& frame = frames[t];
        if (!(frame.area() > least))
            continue;
        Vec2 p[3];
        for (uint32_t k = 0; k < 3; ++k) {
            const size_t v = result.indices[3 * t + k];
            p[k] = {result.uvs[2 * v], result.uvs[2 * v + 1]};
        }
        if (doubled_area(p[0], p[1], p[2]) < 0) // in a mirrored copy
            p[0].x = -p[0].x, p[1].x = -p[1].x, p[2].x = -p[2].x;
        const StretchSums own =
            triangle_stretch({frame.x1 * unit, frame.x2 * unit, frame.y2 * unit}, p[0], p[1], p[2]);
        if (own.flipped == 0)
            sums[result.chart[t]].add(own);
    }
    double rounded = 0;
    for (const StretchSums& of_chart : sums)
        if (of_chart.area > 0)
            rounded = std::max(rounded, 1 - 1 / of_chart.l2());
    if (std::abs(rounded - double(result.stretch)) > k_visible + k_visible_share * rounded)
        result.stretch = float(rounded);
}

std::vector<uint32_t> open_adjacency(const Mesh& mesh, const ChartSet& set, const Sheets& sheets,
                                     const FinishedCharts& charts) {
    const auto kept_number = [&](uint32_t t) { return sheets.number[t]; };
    const auto hangs = [&](uint32_t t) { // on an edge of another triangle
        return kept_number(t) == k_none && sheets.copy[t] == k_none;
    };
    /// Joined in one chart with the same new vertices on both sides.
    const auto hangs_together = [&](uint32_t h) {
        const uint32_t other = mesh.adjacency[h];
        for (uint32_t g = 3 * other; g < 3 * other + 3; ++g)
            if (charts.corner_class[g] == charts.corner_class[next_corner(h)] &&
                charts.corner_class[next_corner(g)] == charts.corner_class[h])
                return true;
        return false;
    };
    std::vector<uint32_t> opened(mesh.adjacency.data, mesh.adjacency.data + mesh.adjacency.size);
    for (uint32_t h = 0; h < opened.size(); ++h) {
        if (opened[h] == k_none)
            continue;
        if (hangs(h / 3) || hangs(opened[h])) {
            if (!hangs_together(h))
                opened[h] = k_none;
            continue;
        }
        const bool copied = sheets.copy[h / 3] != k_none;
        const uint32_t source = copied ? sheets.source_edge[h] : h;
        if (source != k_none && !set.glued[3 * kept_number(source / 3) + source % 3])
            opened[h] = k_none;
    }
    return opened;
}

} // namespace tessora::atlas
