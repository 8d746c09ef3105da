/// The result of one collection, as standard vectors.
#pragma once

#include "plugin/mesh_collector.h"
#include "plugin/unwrapper.h"
#include "tests/plugin/host_mesh.h"

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

/// Settings that cut no edge, with the default texture size.
inline UnwrapSettings plain_settings() {
    UnwrapSettings settings;
    settings.uv_set = "map1";
    settings.stretch = 0.15;
    settings.padding = 2;
    settings.tex_width = settings.tex_height = 512;
    return settings;
}

struct Collected {
    MStatus status;
    MeshData data;
    MIntArray seam_pairs;

    std::vector<uint32_t> indices() const { return values(data.indices); }
    std::vector<uint32_t> cut_edges() const { return values(data.cut_edges); }
    std::vector<uint32_t> real_edges() const { return values(data.real_edges); }
    std::vector<uint32_t> corners(uint32_t polygon) const {
        return values(*data.face_corners.get(polygon));
    }
    /// The edges marked in a per-edge list, as vertex pairs, each once.
    std::vector<std::pair<int, int>> marked(const array<uint32_t>& list) const {
        std::vector<std::pair<int, int>> edges;
        for (uint32_t i = 0; i < list.count(); ++i)
            if (list.get(i) != 0) {
                const int a = static_cast<int>(data.indices.get(i));
                const int b = static_cast<int>(data.indices.get(i % 3 == 2 ? i - 2 : i + 1));
                edges.emplace_back(std::min(a, b), std::max(a, b));
            }
        std::sort(edges.begin(), edges.end());
        edges.erase(std::unique(edges.begin(), edges.end()), edges.end());
        return edges;
    }
    std::vector<std::pair<int, int>> cuts() const { return marked(data.cut_edges); }
    std::vector<std::pair<int, int>> reals() const { return marked(data.real_edges); }

    static std::vector<uint32_t> values(const array<uint32_t>& list) {
        return {list.data(), list.data() + list.count()};
    }
};

inline void collect(UnwrapSettings settings, MObject mesh, Collected& result) {
    const Unwrapper unwrapper(&settings);
    result.status = collect_mesh_data(unwrapper, mesh, result.data, &result.seam_pairs);
}
