#include "atlas/polygon_mesh.h"

#include "atlas/polygons/uv_triangles.h"

#include <algorithm>
#include <new>
#include <stdexcept>
#include <utility>

namespace tessora::atlas {
namespace {

/// What went wrong in the engine.
Fault engine_fault(const Failure& failure) {
    switch (failure.status) {
    case Status::ok:
        return {};
    case Status::does_not_fit:
    case Status::chart_limit:
        return fault(failure.status, failure.element, "%s (%u charts)", describe(failure.status),
                     failure.element);
    default:
        return fault(failure.status, failure.element, "%s", describe(failure.status));
    }
}

/// A failure whose element is a triangle, with the caller's polygon instead.
Fault fault_of_polygon(const Failure& failure, const MeshArrays& arrays,
                       const std::vector<uint32_t>& triangle_corner) {
    const uint32_t corner = triangle_corner[3 * size_t{failure.element}];
    const auto next = std::upper_bound(arrays.offsets.begin(), arrays.offsets.end(), corner);
    const auto polygon = static_cast<uint32_t>(next - arrays.offsets.begin() - 1);
    return fault(failure.status, polygon, "polygon %u: %s", polygon, describe(failure.status));
}

/// Names the caller's vertices in `source_vertex`. A new vertex that several of the caller's share,
/// because they were welded, is divided among them: the first triangle's keeps its number.
void restore_vertices(const MeshArrays& arrays, PolygonAtlas& atlas) {
    Result& result = atlas.triangles;
    const size_t made = result.source_vertex.size();
    result.source_vertex.assign(made, k_none);
    std::vector<uint32_t> next(made, k_none); // the next part of the same new vertex
    for (size_t e = 0; e < result.indices.size(); ++e) {
        const uint32_t source = arrays.corners[atlas.triangle_corner[e]];
        uint32_t part = result.indices[e];
        if (result.source_vertex[part] == k_none)
            result.source_vertex[part] = source;
        while (result.source_vertex[part] != source) {
            if (next[part] == k_none) {
                next[part] = static_cast<uint32_t>(next.size());
                next.push_back(k_none);
                result.source_vertex.push_back(source);
                const float u = result.uvs[2 * size_t{part}], v = result.uvs[2 * size_t{part} + 1];
                result.uvs.insert(result.uvs.end(), {u, v});
            }
            part = next[part];
        }
        result.indices[e] = part;
    }
}

/// Fills the members of `atlas` that name the caller's vertices and corners.
void name_corners(const MeshArrays& arrays, std::vector<uint32_t> triangle_corner,
                  PolygonAtlas& atlas) {
    atlas.triangle_corner = std::move(triangle_corner);
    restore_vertices(arrays, atlas);
    // Of a corner's triangles the last one counts, as in the plug-in.
    atlas.corner_vertex.resize(arrays.corners.size());
    for (size_t e = 0; e < atlas.triangle_corner.size(); ++e)
        atlas.corner_vertex[atlas.triangle_corner[e]] = atlas.triangles.indices[e];
}

/// Prepares the mesh, lets `call` make its atlas, and fills the rest.
template <class Call>
Fault make_atlas(const PolygonMesh& mesh, PolygonAtlas& atlas, Call call) {
    MeshArrays arrays;
    Fault bad = read_mesh(mesh, arrays);
    if (bad.status != Status::ok)
        return bad;
    Triangles triangles = make_triangles(arrays, mesh.weld);
    connect(arrays, mesh.normals_per_corner, triangles);
    bad = engine_fault(call(triangles.view()));
    if (bad.status == Status::ok)
        name_corners(arrays, std::move(triangles.corner), atlas);
    return bad;
}

Fault pack_charts(const PolygonMesh& mesh, const PolygonUvs& uvs, const PackSettings& settings,
                  PolygonAtlas& atlas) {
    MeshArrays arrays;
    UvArrays uv_arrays;
    Fault bad = read_mesh(mesh, arrays);
    if (bad.status == Status::ok)
        bad = read_uvs(uvs, arrays, uv_arrays);
    if (bad.status != Status::ok)
        return bad;
    Triangles triangles = make_triangles(arrays, mesh.weld);
    const UvTriangles input = make_uv_triangles(arrays, uv_arrays, mesh.weld, triangles);
    PackResult packed;
    const Failure failure = pack(input.view(), settings, packed);
    if (failure.status == Status::kept_charts_collide ||
        failure.status == Status::kept_chart_outside)
        return fault_of_polygon(failure, arrays, triangles.corner);
    bad = engine_fault(failure);
    if (bad.status != Status::ok)
        return bad;
    take_packed(input, std::move(packed), atlas);
    name_corners(arrays, std::move(triangles.corner), atlas);
    return bad;
}

/// Runs a function; lets no exception escape and leaves no partial result behind.
template <class Output, class Run>
Fault guarded(Output& output, Run run) noexcept {
    Fault bad;
    try {
        output = Output();
        bad = run();
    } catch (const std::bad_alloc&) {
        bad = fault(Status::out_of_memory, k_none, "%s", describe(Status::out_of_memory));
    } catch (const std::length_error&) {
        bad = fault(Status::out_of_memory, k_none, "%s", describe(Status::out_of_memory));
    }
    if (bad.status != Status::ok)
        output = Output();
    return bad;
}

} // namespace

Fault create(const PolygonMesh& mesh, const Options& options, UvSpace space,
             PolygonAtlas& atlas) noexcept {
    return guarded(atlas, [&] {
        Fault bad = check_options(options, true);
        if (bad.status != Status::ok)
            return bad;
        bad = make_atlas(mesh, atlas, [&](const Mesh& triangles) {
            return create(triangles, options, atlas.triangles);
        });
        std::vector<float>& uvs = atlas.triangles.uvs;
        if (bad.status == Status::ok && space == UvSpace::texture)
            to_texture(uvs.data(), uvs.size() / 2, options.width, options.height, options.gutter);
        return bad;
    });
}

Fault partition(const PolygonMesh& mesh, const Options& options, PolygonAtlas& atlas) noexcept {
    return guarded(atlas, [&] {
        const Fault bad = check_options(options, false);
        if (bad.status != Status::ok)
            return bad;
        return make_atlas(mesh, atlas, [&](const Mesh& triangles) {
            return partition(triangles, options, atlas.triangles, atlas.neighbours);
        });
    });
}

Fault pack(const PolygonMesh& mesh, const PolygonUvs& uvs, const PackSettings& settings,
           PolygonAtlas& atlas) noexcept {
    return guarded(atlas, [&] {
        const Fault bad = check_options(settings);
        return bad.status == Status::ok ? pack_charts(mesh, uvs, settings, atlas) : bad;
    });
}

Fault triangulate(const PolygonMesh& mesh, std::vector<uint32_t>& triangle_corner) noexcept {
    return guarded(triangle_corner, [&] {
        MeshArrays arrays;
        const Fault bad = read_mesh(mesh, arrays);
        if (bad.status == Status::ok)
            triangle_corner = make_triangles(arrays, mesh.weld).corner;
        return bad;
    });
}

Fault find_neighbours(const PolygonMesh& mesh, std::vector<uint32_t>& neighbours) noexcept {
    return guarded(neighbours, [&] {
        MeshArrays arrays;
        const Fault bad = read_mesh(mesh, arrays);
        if (bad.status != Status::ok)
            return bad;
        Triangles triangles = make_triangles(arrays, mesh.weld);
        connect(arrays, mesh.normals_per_corner, triangles);
        neighbours = std::move(triangles.adjacency);
        return bad;
    });
}

} // namespace tessora::atlas
