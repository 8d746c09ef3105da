#include "host/api/mesh_cursor.h"

#include <maya/MItMeshVertex.h>

#include <algorithm>
#include <vector>

using host::Connectivity;
using host::IndexSpan;
using host::Mesh;
using host::report;
using host::UvSet;

namespace {

constexpr host::Count k_count = &host::Connectivity::vertex_count;

const Mesh* begin(const char* point, const MObject& object, int index, MStatus& status) {
    return host::begin_at<k_count>(point, object, index, status);
}

/// The corners at a vertex in a UV set, and how many of them are mapped.
struct Corners {
    const Mesh* mesh = nullptr;
    const UvSet* set = nullptr;
    IndexSpan all = IndexSpan(nullptr, nullptr);
    std::size_t mapped = 0;

    std::int32_t uv(std::uint32_t corner) const { return set->corner_uvs[corner]; }
};

/// Errors: kFailure if no corner is mapped.
Corners begin_corners(const char* point, const MObject& object, int index, const MString* name,
                      MStatus& status) {
    Corners corners;
    std::uint32_t set = 0;
    corners.mesh = begin(point, object, index, status);
    if (status)
        status = host::find_set(*corners.mesh, name, set);
    if (status.error())
        return corners;
    corners.set = &corners.mesh->uv_set(set);
    corners.all = corners.mesh->connectivity().vertex_corners(static_cast<std::uint32_t>(index));
    for (const std::uint32_t corner : corners.all)
        corners.mapped += corners.uv(corner) >= 0 ? 1 : 0;
    if (corners.mapped == 0)
        status = MS::kFailure;
    return corners;
}

} // namespace

MItMeshVertex::MItMeshVertex(MObject& polyObject, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshVertex::MItMeshVertex", polyObject, MObject(), object_));
}

MItMeshVertex::MItMeshVertex(MObject& polyObject, MObject& component, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshVertex::MItMeshVertex", polyObject, component, object_));
}

MItMeshVertex::MItMeshVertex(const MDagPath& polyObject, MObject& component,
                             MStatus* ReturnStatus) {
    report(ReturnStatus, host::attach_mesh("MItMeshVertex::MItMeshVertex", polyObject, component,
                                           object_, path_));
}

MItMeshVertex::~MItMeshVertex() = default;

bool MItMeshVertex::isDone(MStatus* ReturnStatus) const {
    return index_ >= host::count_all<k_count>("MItMeshVertex::isDone", object_, ReturnStatus);
}

MStatus MItMeshVertex::next() {
    return host::move_to_next<k_count>("MItMeshVertex::next", object_, index_);
}

MStatus MItMeshVertex::reset() {
    return host::move_to_first("MItMeshVertex::reset", object_, index_);
}

MStatus MItMeshVertex::reset(MObject& polyObject) {
    return host::move_to_mesh("MItMeshVertex::reset", polyObject, object_, path_, index_);
}

int MItMeshVertex::count(MStatus* ReturnStatus) const {
    return host::count_all<k_count>("MItMeshVertex::count", object_, ReturnStatus);
}

int MItMeshVertex::index(MStatus* ReturnStatus) const {
    return host::current_index<k_count>("MItMeshVertex::index", object_, index_, ReturnStatus);
}

MStatus MItMeshVertex::setIndex(int index, int& prevIndex) {
    return host::move_to_index<k_count>("MItMeshVertex::setIndex", object_, index, prevIndex,
                                        index_);
}

MPoint MItMeshVertex::position(MSpace::Space space, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::position", object_, index_, status);
    MPoint point;
    if (status) {
        const host::SpaceMap map(space, path_, status);
        point = map.point(mesh->points()[static_cast<std::uint32_t>(index_)]);
    }
    report(ReturnStatus, status);
    return point;
}

// === Adjacency ===================================================================================

MStatus MItMeshVertex::getConnectedEdges(MIntArray& edgeList) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::getConnectedEdges", object_, index_, status);
    return status ? host::copy_ids(
                        mesh->connectivity().vertex_edges(static_cast<std::uint32_t>(index_)),
                        edgeList)
                  : status;
}

MStatus MItMeshVertex::numConnectedEdges(int& count) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::numConnectedEdges", object_, index_, status);
    if (status)
        count = static_cast<int>(
            mesh->connectivity().vertex_edges(static_cast<std::uint32_t>(index_)).size());
    return status;
}

MStatus MItMeshVertex::getConnectedFaces(MIntArray& faceList) const {
    MStatus status;
    int count = 0;
    const Mesh* const mesh = begin("MItMeshVertex::getConnectedFaces", object_, index_, status);
    if (status)
        status = numConnectedFaces(count);
    if (status)
        status = host::resize(faceList, static_cast<std::size_t>(count));
    if (status.error())
        return status;
    const Connectivity& connectivity = mesh->connectivity();
    unsigned int filled = 0;
    for (const std::uint32_t corner :
         connectivity.vertex_corners(static_cast<std::uint32_t>(index_))) {
        const int face = static_cast<int>(connectivity.corner_polygon(corner));
        if (filled == 0 || faceList[filled - 1] != face)
            faceList[filled++] = face;
    }
    return status;
}

MStatus MItMeshVertex::numConnectedFaces(int& count) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::numConnectedFaces", object_, index_, status);
    if (status.error())
        return status;
    // Corners are in ascending order, so those of one polygon are adjacent.
    const Connectivity& connectivity = mesh->connectivity();
    std::uint32_t last = 0xFFFFFFFFu;
    count = 0;
    for (const std::uint32_t corner :
         connectivity.vertex_corners(static_cast<std::uint32_t>(index_))) {
        count += connectivity.corner_polygon(corner) != last ? 1 : 0;
        last = connectivity.corner_polygon(corner);
    }
    return status;
}

MStatus MItMeshVertex::getConnectedVertices(MIntArray& vertexList) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::getConnectedVertices", object_, index_, status);
    if (status.error())
        return status;
    const Connectivity& connectivity = mesh->connectivity();
    const auto vertex = static_cast<std::uint32_t>(index_);
    const IndexSpan edges = connectivity.vertex_edges(vertex);
    status = host::resize(vertexList, edges.size());
    for (std::uint32_t i = 0; status && i < edges.size(); ++i) {
        const auto& ends = connectivity.edge(edges[i]);
        vertexList[i] = static_cast<int>(ends.first == vertex ? ends.second : ends.first);
    }
    return status;
}

bool MItMeshVertex::onBoundary(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshVertex::onBoundary", object_, index_, status);
    if (report(ReturnStatus, status).error())
        return false;
    const Connectivity& connectivity = mesh->connectivity();
    for (const std::uint32_t edge : connectivity.vertex_edges(static_cast<std::uint32_t>(index_)))
        if (connectivity.edge_polygons(edge).size() < 2)
            return true;
    return false;
}

// === UVs =========================================================================================

MStatus MItMeshVertex::getUVs(MFloatArray& uArray, MFloatArray& vArray, MIntArray& faceIds,
                              const MString* uvSet) const {
    MStatus status;
    const Corners corners = begin_corners("MItMeshVertex::getUVs", object_, index_, uvSet, status);
    if (status)
        status = host::resize(uArray, corners.mapped);
    if (status)
        status = host::resize(vArray, corners.mapped);
    if (status)
        status = host::resize(faceIds, corners.mapped);
    if (status.error())
        return status;
    unsigned int filled = 0;
    for (const std::uint32_t corner : corners.all) {
        const std::int32_t uv = corners.uv(corner);
        if (uv < 0)
            continue;
        uArray[filled] = corners.set->u[static_cast<std::size_t>(uv)];
        vArray[filled] = corners.set->v[static_cast<std::size_t>(uv)];
        faceIds[filled] = static_cast<int>(corners.mesh->connectivity().corner_polygon(corner));
        filled += 1;
    }
    host::pass_short_array("MItMeshVertex::getUVs, short u", uArray);
    host::pass_short_array("MItMeshVertex::getUVs, short v", vArray);
    host::pass_short_array("MItMeshVertex::getUVs, short faces", faceIds);
    return status;
}

MStatus MItMeshVertex::getUVIndices(MIntArray& uvIndices, const MString* uvSet) const {
    MStatus status;
    const Corners corners =
        begin_corners("MItMeshVertex::getUVIndices", object_, index_, uvSet, status);
    if (status)
        status = host::resize(uvIndices, corners.mapped);
    if (status.error())
        return status;
    unsigned int filled = 0;
    for (const std::uint32_t corner : corners.all)
        if (corners.uv(corner) >= 0)
            uvIndices[filled++] = corners.uv(corner);
    host::pass_short_array("MItMeshVertex::getUVIndices, short", uvIndices);
    return status;
}

MStatus MItMeshVertex::numUVs(int& count, const MString* uvSet) const {
    MStatus status;
    const Corners corners = begin_corners("MItMeshVertex::numUVs", object_, index_, uvSet, status);
    if (corners.set != nullptr && corners.mapped == 0) {
        count = 0; // no mapped corner counts as 0, not as a failure
        return MS::kSuccess;
    }
    if (status.error())
        return status;
    static std::vector<std::int32_t> ids; // static, so that its memory is reused
    return host::guard_memory([&] {
        ids.clear();
        for (const std::uint32_t corner : corners.all)
            if (corners.uv(corner) >= 0)
                ids.push_back(corners.uv(corner));
        std::sort(ids.begin(), ids.end());
        count = static_cast<int>(std::unique(ids.begin(), ids.end()) - ids.begin());
    });
}

MStatus MItMeshVertex::getUV(float2& uvPoint, const MString* uvSet) const {
    MStatus status;
    const Corners corners = begin_corners("MItMeshVertex::getUV", object_, index_, uvSet, status);
    if (status.error())
        return status;
    std::int32_t shared = -1;
    for (const std::uint32_t corner : corners.all) {
        const std::int32_t uv = corners.uv(corner);
        if (uv >= 0 && shared >= 0 && uv != shared)
            return MS::kFailure;
        shared = uv >= 0 ? uv : shared;
    }
    uvPoint[0] = corners.set->u[static_cast<std::size_t>(shared)];
    uvPoint[1] = corners.set->v[static_cast<std::size_t>(shared)];
    return MS::kSuccess;
}

MStatus MItMeshVertex::getUV(int faceId, float2& uvPoint, const MString* uvSet) const {
    MStatus status;
    const Corners corners = begin_corners("MItMeshVertex::getUV", object_, index_, uvSet, status);
    if (status.error())
        return status;
    for (const std::uint32_t corner : corners.all) {
        const std::int32_t uv = corners.uv(corner);
        if (static_cast<int>(corners.mesh->connectivity().corner_polygon(corner)) != faceId ||
            uv < 0)
            continue;
        uvPoint[0] = corners.set->u[static_cast<std::size_t>(uv)];
        uvPoint[1] = corners.set->v[static_cast<std::size_t>(uv)];
        return MS::kSuccess;
    }
    return MS::kInvalidParameter;
}
