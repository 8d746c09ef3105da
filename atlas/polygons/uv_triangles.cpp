#include "atlas/polygons/uv_triangles.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>
#include <utility>

namespace tessora::atlas {
namespace {

/// In the caller's unit.
float area_of(const std::vector<float>& positions, double unit, const uint32_t* corners) {
    double u[3], v[3];
    for (size_t k = 0; k < 3; ++k) {
        const double origin = double{positions[3 * size_t{corners[0]} + k]};
        u[k] = double{positions[3 * size_t{corners[1]} + k]} - origin;
        v[k] = double{positions[3 * size_t{corners[2]} + k]} - origin;
    }
    double squares = 0;
    for (size_t k = 0; k < 3; ++k) {
        const size_t next = (k + 1) % 3, last = (k + 2) % 3;
        const double part = u[next] * v[last] - u[last] * v[next];
        squares += part * part;
    }
    return static_cast<float>(0.5 * std::sqrt(squares) * unit * unit);
}

/// Per corner the first corner at the same vertex with the same coordinates.
std::vector<uint32_t> connect_corners(const std::vector<uint32_t>& vertices,
                                      const std::vector<float>& uvs) {
    const auto key = [&](uint32_t c) {
        return std::make_tuple(vertices[c], uvs[2 * size_t{c}], uvs[2 * size_t{c} + 1]);
    };
    std::vector<uint32_t> order(vertices.size());
    std::iota(order.begin(), order.end(), 0u);
    std::sort(order.begin(), order.end(),
              [&](uint32_t a, uint32_t b) { return key(a) != key(b) ? key(a) < key(b) : a < b; });
    std::vector<uint32_t> first(order.size());
    for (size_t i = 0; i < order.size(); ++i)
        first[order[i]] =
            i > 0 && key(order[i]) == key(order[i - 1]) ? first[order[i - 1]] : order[i];
    return first;
}

template <class Value>
Span<Value> span_of(const std::vector<Value>& values) {
    return {values.data(), values.size()};
}

} // namespace

UvMesh UvTriangles::view() const {
    return {span_of(uvs), span_of(indices), span_of(chart), span_of(keep), span_of(area)};
}

UvTriangles make_uv_triangles(const MeshArrays& mesh, const UvArrays& uvs, bool weld,
                              const Triangles& triangles) {
    std::vector<uint32_t> vertices = mesh.corners;
    if (weld)
        weld_vertices(mesh.positions, vertices);
    const std::vector<uint32_t> first = connect_corners(vertices, uvs.uvs);
    UvTriangles made;
    made.uvs = uvs.uvs;
    for (const uint32_t corner : triangles.corner)
        made.indices.push_back(first[corner]);
    uint32_t polygon = 0;
    for (size_t t = 0; t < triangles.corner.size() / 3; ++t) {
        while (triangles.corner[3 * t] >= mesh.offsets[polygon + 1])
            ++polygon;
        if (!uvs.charts.empty())
            made.chart.push_back(uvs.charts[polygon]);
        if (!uvs.keep.empty())
            made.keep.push_back(uvs.keep[polygon]);
        made.area.push_back(area_of(triangles.positions, mesh.unit, &triangles.indices[3 * t]));
    }
    return made;
}

void take_packed(const UvTriangles& input, PackResult packed, PolygonAtlas& atlas) {
    Result& result = atlas.triangles;
    result.indices.resize(input.indices.size());
    std::vector<uint32_t> order(input.indices.size());
    std::iota(order.begin(), order.end(), 0u);
    const auto key = [&](uint32_t e) { return std::pair(input.indices[e], packed.chart[e / 3]); };
    std::sort(order.begin(), order.end(),
              [&](uint32_t a, uint32_t b) { return key(a) != key(b) ? key(a) < key(b) : a < b; });
    for (size_t i = 0; i < order.size(); ++i) {
        const size_t e = order[i];
        if (i == 0 || key(order[i]) != key(order[i - 1]))
            result.uvs.insert(result.uvs.end(), {packed.uvs[2 * e], packed.uvs[2 * e + 1]});
        result.indices[e] = static_cast<uint32_t>(result.uvs.size() / 2 - 1);
    }
    result.source_vertex.resize(result.uvs.size() / 2);
    result.chart_count = static_cast<uint32_t>(packed.charts.size());
    result.chart = std::move(packed.chart);
    result.lost = std::move(packed.lost);
    atlas.packed = std::move(packed.charts);
    atlas.coverage = std::move(packed.coverage);
    atlas.texels_per_unit = packed.texels_per_unit;
}

} // namespace tessora::atlas
