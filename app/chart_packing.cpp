#include "app/chart_packing.h"

#include "app/measure_layout.h"
#include "app/mesh_import.h"
#include "host/mesh/mesh.h"
#include "measure/measure.h"
#include "measure/shape.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>
#include <map>
#include <numeric>
#include <tuple>
#include <utility>

namespace app {
namespace {

namespace atlas = tessora::atlas;

constexpr uint32_t k_max_side = 8192;
constexpr double k_gap_tolerance = 0.01; ///< texels, as measure::verify() has it

bool append_mesh(ChartList& list, uint32_t mesh, measure::SameUv same, uint32_t& charts,
                 std::string& error) {
    const PackSource& source = list.sources[mesh];
    measure::Layout& layout = list.layouts[mesh];
    ImportedMesh imported;
    host::Mesh host_mesh;
    if (!import_mesh(*source.document, imported, host_mesh)) {
        const std::string& name = source.document->name; // meshes of a scene have none
        error = (name.empty() ? "" : name + ": ") + "not enough memory for the mesh";
        return false;
    }
    layout = make_layout(*source.document, host_mesh, source.uvs);
    const measure::ChartTable table = measure::find_charts(layout, same);
    const auto first = static_cast<uint32_t>(list.uvs.size() / 2);
    list.uvs.insert(list.uvs.end(), layout.uvs.begin(), layout.uvs.end());
    for (float& value : list.uvs)
        if (!std::isfinite(value)) // no corner uses it
            value = 0.0f;
    for (uint32_t t = 0; t < layout.triangle_count(); ++t) {
        if (table.triangle_chart[t] == measure::k_none)
            continue;
        list.origin.push_back({mesh, t});
        list.chart.push_back(charts + table.triangle_chart[t]);
        list.area.push_back(static_cast<float>(measure::space_triangle(layout, t).area *
                                               layout.unit * layout.unit));
        list.keep.push_back(source.keep.empty() ? 0 : source.keep[layout.triangle_polygon[t]]);
        for (uint32_t k = 0; k < 3; ++k)
            list.indices.push_back(first + layout.corner_uv[layout.triangle_corners[3 * t + k]]);
    }
    charts += table.chart_count;
    return true;
}

/// The corner of a mesh that corner k of a triangle of the list is.
uint32_t corner_of(const ChartList& list, uint32_t triangle, uint32_t k) {
    const ChartList::Origin& at = list.origin[triangle];
    return list.layouts[at.mesh].triangle_corners[3 * at.triangle + k];
}

/// Per vertex, the first vertex of the layout in the same place.
std::vector<uint32_t> first_in_place(const measure::Layout& layout) {
    std::vector<uint32_t> order(layout.vertex_count()), first(layout.vertex_count());
    std::iota(order.begin(), order.end(), 0u);
    const auto place = [&](uint32_t v) {
        const float* p = &layout.positions[3 * size_t(v)];
        return std::array<float, 3>{p[0], p[1], p[2]};
    };
    std::sort(order.begin(), order.end(), [&](uint32_t a, uint32_t b) {
        return std::make_pair(place(a), a) < std::make_pair(place(b), b);
    });
    for (size_t i = 0; i < order.size(); ++i)
        first[order[i]] =
            i > 0 && place(order[i]) == place(order[i - 1]) ? first[order[i - 1]] : order[i];
    return first;
}

/// Appends the places of a mesh's vertices, or else places that only tell which vertices are the
/// same: a hash, so that no three lie on a line by chance.
void append_places(const measure::Layout& layout, uint32_t mesh, bool true_places,
                   std::vector<float>& positions) {
    if (true_places) {
        for (const float p : layout.positions)
            positions.push_back(static_cast<float>(p * layout.unit));
        return;
    }
    for (const uint32_t v : first_in_place(layout)) {
        uint64_t hash = (uint64_t(mesh) << 32 | v) + 0x9E3779B97F4A7C15ull;
        for (int k = 0; k < 3; ++k) {
            hash = (hash ^ hash >> 30) * 0xBF58476D1CE4E5B9ull;
            hash = (hash ^ hash >> 27) * 0x94D049BB133111EBull;
            positions.push_back(static_cast<float>(hash >> 40) / 16777216.0f);
        }
    }
}

/// The two charts that are too close, in words.
std::string gap_text(const ChartList& list, const measure::Gap& gap,
                     const std::vector<uint32_t>& triangles, double gutter) {
    char text[80];
    std::snprintf(text, sizeof text, "two charts are %.4g texels apart, not %.4g: ", gap.texels,
                  gutter);
    return text + name_polygons(list, {triangles[gap.triangles[0]], triangles[gap.triangles[1]]});
}

/// The triangles of the list that tile_layout() takes, in its order.
std::vector<uint32_t> triangles_of_tile(const ChartList& list, const atlas::PackResult& result,
                                        uint32_t tile) {
    std::vector<uint32_t> triangles;
    for (uint32_t t = 0; t < list.chart.size(); ++t) {
        const atlas::PackedChart& chart = result.charts[result.chart[t]];
        if (chart.tile == tile && chart.stacked_on == atlas::k_none)
            triangles.push_back(t);
    }
    return triangles;
}

} // namespace

tessora::atlas::UvMesh ChartList::mesh() const {
    return {{uvs.data(), uvs.size()},
            {indices.data(), indices.size()},
            {chart.data(), chart.size()},
            {keep.data(), keep.size()},
            {area.data(), area.size()}};
}

bool list_charts(std::vector<PackSource> sources, ChartList& list, std::string& error,
                 measure::SameUv same, uint64_t max_corners) {
    list = {};
    list.sources = std::move(sources);
    list.layouts.resize(list.sources.size());
    uint32_t charts = 0;
    uint64_t corners = 0;
    for (const PackSource& source : list.sources)
        corners += source.document->corner_vertex.size();
    if (corners > max_corners) {
        error = "the meshes have too many polygons together";
        return false;
    }
    for (uint32_t mesh = 0; mesh < list.sources.size(); ++mesh)
        if (!append_mesh(list, mesh, same, charts, error))
            return false;
    return true;
}

void take_from_texture(double from_width, double from_height, const atlas::PackSettings& settings,
                       ChartList& list) {
    const double scale = std::min(settings.width / from_width, settings.height / from_height);
    const double u = from_width * scale / settings.width;
    const double v = from_height * scale / settings.height;
    std::vector<uint8_t> moves(list.uvs.size() / 2, 0);
    for (size_t i = 0; i < list.indices.size(); ++i)
        if (list.keep[i / 3] == 0)
            moves[list.indices[i]] = 1;
    for (size_t id = 0; id < moves.size(); ++id)
        if (moves[id]) {
            list.uvs[2 * id] = static_cast<float>(list.uvs[2 * id] * u);
            list.uvs[2 * id + 1] = static_cast<float>(list.uvs[2 * id + 1] * v);
        }
}

double least_side(const ChartList& list, const atlas::PackSettings& settings) {
    const double area = std::accumulate(list.area.begin(), list.area.end(), 0.0);
    const double longer = std::max(settings.width, settings.height);
    const double shorter = std::min(settings.width, settings.height);
    return settings.texels_per_unit * std::sqrt(area * longer / shorter);
}

atlas::Failure pack_to_density(const ChartList& list, bool texture_follows,
                               atlas::PackSettings& settings, atlas::PackResult& result) {
    const double area = std::accumulate(list.area.begin(), list.area.end(), 0.0) *
                        settings.texels_per_unit * settings.texels_per_unit;
    const atlas::UvMesh mesh = list.mesh();
    const uint32_t most_tiles = settings.tiles;
    // Stacked charts take less room than their area.
    const bool is_bound = settings.stack == atlas::Stack::none;
    settings.tiles = 1;
    for (;;) {
        const double room = double(settings.width) * settings.height * settings.tiles;
        if (!is_bound || area <= room) {
            const atlas::Failure failure = atlas::pack(mesh, settings, result);
            if (failure.status != atlas::Status::does_not_fit)
                return failure;
        }
        const bool may_grow = texture_follows
                                  ? 2 * std::max(settings.width, settings.height) <= k_max_side
                                  : settings.tiles < most_tiles;
        if (!may_grow)
            return {atlas::Status::does_not_fit, static_cast<uint32_t>(list.chart.size())};
        if (texture_follows) {
            settings.width *= 2;
            settings.height *= 2;
        } else {
            ++settings.tiles;
        }
    }
}

std::vector<host::ObjUvs> packed_uvs(const ChartList& list, const atlas::PackResult& result) {
    // A coordinate of the file that several charts use becomes several. The others keep their
    // order.
    struct Use {
        uint32_t uv, chart, triangle, k;
    };
    std::vector<Use> uses;
    for (uint32_t t = 0; t < list.chart.size(); ++t)
        for (uint32_t k = 0; k < 3; ++k)
            uses.push_back({list.indices[3 * t + k], result.chart[t], t, k});
    std::sort(uses.begin(), uses.end(), [](const Use& a, const Use& b) {
        return std::tie(a.uv, a.chart, a.triangle, a.k) < std::tie(b.uv, b.chart, b.triangle, b.k);
    });
    std::vector<host::ObjUvs> uvs(list.sources.size());
    for (size_t mesh = 0; mesh < uvs.size(); ++mesh)
        uvs[mesh].corner_uv.assign(list.layouts[mesh].corner_vertex.size(), -1);
    for (size_t i = 0; i < uses.size(); ++i) {
        const Use& use = uses[i];
        host::ObjUvs& out = uvs[list.origin[use.triangle].mesh];
        if (i == 0 || use.uv != uses[i - 1].uv || use.chart != uses[i - 1].chart) {
            const size_t corner = 3 * size_t(use.triangle) + use.k;
            out.u.push_back(result.uvs[2 * corner]);
            out.v.push_back(result.uvs[2 * corner + 1]);
        }
        out.corner_uv[corner_of(list, use.triangle, use.k)] =
            static_cast<int32_t>(out.u.size() - 1);
    }
    return uvs;
}

measure::Layout tile_layout(const ChartList& list, const atlas::PackResult& result, uint32_t tile,
                            bool true_places) {
    measure::Layout out;
    uint32_t mesh = measure::k_none, vertex_begin = 0;
    for (const uint32_t t : triangles_of_tile(list, result, tile)) {
        const ChartList::Origin& at = list.origin[t];
        const measure::Layout& layout = list.layouts[at.mesh];
        if (at.mesh != mesh) {
            mesh = at.mesh;
            vertex_begin = out.vertex_count();
            append_places(layout, mesh, true_places, out.positions);
        }
        // Polygons of this layout are triangles, so that each has its corners to itself.
        for (uint32_t k = 0; k < 3; ++k) {
            out.triangle_corners.push_back(static_cast<uint32_t>(out.corner_vertex.size()));
            out.corner_vertex.push_back(vertex_begin + layout.corner_vertex[corner_of(list, t, k)]);
            out.corner_uv.push_back(static_cast<uint32_t>(out.uvs.size() / 2));
            out.uvs.push_back(result.uvs[2 * (3 * size_t(t) + k)] - float(tile % 10));
            out.uvs.push_back(result.uvs[2 * (3 * size_t(t) + k) + 1] - float(tile / 10));
        }
        out.triangle_polygon.push_back(out.polygon_count++);
    }
    return out;
}

std::string name_polygons(const ChartList& list, const std::vector<uint32_t>& triangles) {
    constexpr size_t k_max_shown = 10;
    std::map<uint32_t, std::vector<uint32_t>> polygons;
    for (const uint32_t t : triangles)
        polygons[list.origin[t].mesh].push_back(list.polygon(t));
    std::string text;
    for (auto& [mesh, ids] : polygons) {
        std::sort(ids.begin(), ids.end());
        ids.erase(std::unique(ids.begin(), ids.end()), ids.end());
        text += (text.empty() ? "" : "; ") + list.sources[mesh].document->name +
                (ids.size() == 1 ? ": polygon " : ": polygons ");
        for (size_t i = 0; i < std::min(ids.size(), k_max_shown); ++i)
            text += (i == 0 ? "" : ", ") + std::to_string(ids[i]);
        if (ids.size() > k_max_shown)
            text += " and " + std::to_string(ids.size() - k_max_shown) + " more";
    }
    return text;
}

PackingCheck check_packing(const ChartList& list, const atlas::PackSettings& settings,
                           const atlas::PackResult& result) {
    PackingCheck check;
    for (uint32_t tile = 0; tile < settings.tiles; ++tile) {
        const std::vector<uint32_t> triangles = triangles_of_tile(list, result, tile);
        const measure::Measures m =
            measure::measure(tile_layout(list, result, tile, false),
                             {double(settings.width), double(settings.height)});
        const auto append = [&](const std::vector<uint32_t>& found, std::vector<uint32_t>& to) {
            for (const uint32_t t : found)
                to.push_back(triangles[t]);
        };
        const auto breach = [&](const char* what, const std::vector<uint32_t>& found) {
            std::vector<uint32_t> named;
            append(found, named);
            check.breaches.push_back(what + name_polygons(list, named));
        };
        if (m.gap)
            check.gap = check.gap < 0.0 ? m.gap->texels : std::min(check.gap, m.gap->texels);
        if (m.gap && m.gap->texels < double(settings.gutter) - k_gap_tolerance)
            check.breaches.push_back(gap_text(list, *m.gap, triangles, double(settings.gutter)));
        if (m.overlaps.pairs_between > 0)
            breach("charts overlap: ", m.overlaps.triangles);
        if (!m.outside.empty())
            breach("triangles leave the texture: ", m.outside);
        append(m.flipped, check.flipped);
        append(m.overlaps.triangles, check.overlapping);
        for (uint32_t t = 0; t < triangles.size(); ++t)
            if (std::binary_search(m.mirrored.begin(), m.mirrored.end(), m.triangle_chart[t]))
                check.mirrored.push_back(triangles[t]);
    }
    return check;
}

} // namespace app
