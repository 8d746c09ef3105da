#include "host/api/mesh_cursor.h"

#include <maya/MItMeshPolygon.h>

using host::copy_ids;
using host::IndexSpan;
using host::Mesh;
using host::report;

namespace {

constexpr host::Count k_count = &host::Connectivity::polygon_count;

const Mesh* begin(const char* point, const MObject& object, int index, MStatus& status) {
    return host::begin_at<k_count>(point, object, index, status);
}

IndexSpan vertices_of(const Mesh& mesh, int index) {
    return mesh.connectivity().polygon_vertices(static_cast<std::uint32_t>(index));
}

} // namespace

MItMeshPolygon::MItMeshPolygon(const MObject& polyObject, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshPolygon::MItMeshPolygon", polyObject, MObject(), object_));
}

MItMeshPolygon::MItMeshPolygon(const MDagPath& polyObject, MObject& component,
                               MStatus* ReturnStatus) {
    report(ReturnStatus, host::attach_mesh("MItMeshPolygon::MItMeshPolygon", polyObject, component,
                                           object_, path_));
}

MItMeshPolygon::~MItMeshPolygon() = default;

bool MItMeshPolygon::isDone(MStatus* ReturnStatus) const {
    return index_ >= host::count_all<k_count>("MItMeshPolygon::isDone", object_, ReturnStatus);
}

MStatus MItMeshPolygon::next() {
    return host::move_to_next<k_count>("MItMeshPolygon::next", object_, index_);
}

MStatus MItMeshPolygon::reset() {
    return host::move_to_first("MItMeshPolygon::reset", object_, index_);
}

MStatus MItMeshPolygon::reset(const MObject& polyObject) {
    return host::move_to_mesh("MItMeshPolygon::reset", polyObject, object_, path_, index_);
}

unsigned int MItMeshPolygon::count(MStatus* ReturnStatus) const {
    return static_cast<unsigned int>(
        host::count_all<k_count>("MItMeshPolygon::count", object_, ReturnStatus));
}

unsigned int MItMeshPolygon::index(MStatus* ReturnStatus) const {
    return static_cast<unsigned int>(
        host::current_index<k_count>("MItMeshPolygon::index", object_, index_, ReturnStatus));
}

MStatus MItMeshPolygon::setIndex(int index, int& prevIndex) {
    return host::move_to_index<k_count>("MItMeshPolygon::setIndex", object_, index, prevIndex,
                                        index_);
}

unsigned int MItMeshPolygon::polygonVertexCount(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::polygonVertexCount", object_, index_, status);
    return report(ReturnStatus, status) ? vertices_of(*mesh, index_).size() : 0;
}

MStatus MItMeshPolygon::getVertices(MIntArray& vertices) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getVertices", object_, index_, status);
    if (status)
        status = copy_ids(vertices_of(*mesh, index_), vertices);
    if (status) {
        host::pass_short_array("MItMeshPolygon::getVertices, short", vertices);
        host::pass_wrong_id("MItMeshPolygon::getVertices, wrong id", vertices);
    }
    return status;
}

int MItMeshPolygon::vertexIndex(int index, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::vertexIndex", object_, index_, status);
    if (status && (index < 0 || index >= static_cast<int>(vertices_of(*mesh, index_).size())))
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status)
               ? static_cast<int>(vertices_of(*mesh, index_)[static_cast<std::uint32_t>(index)])
               : -1;
}

MStatus MItMeshPolygon::getPoints(MPointArray& points, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getPoints", object_, index_, status);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    const IndexSpan vertices = vertices_of(*mesh, index_);
    if (status)
        status = host::resize(points, vertices.size());
    for (std::uint32_t i = 0; status && i < vertices.size(); ++i)
        points[i] = map.point(mesh->points()[vertices[i]]);
    return status;
}

MStatus MItMeshPolygon::getNormal(MVector& normal, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getNormal", object_, index_, status);
    if (status)
        status = host::ready_normals(*mesh);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    if (status)
        normal = map.normal(mesh->normal(static_cast<std::uint32_t>(index_)));
    return status;
}

// === Triangles ===================================================================================

bool MItMeshPolygon::hasValidTriangulation(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh =
        begin("MItMeshPolygon::hasValidTriangulation", object_, index_, status);
    if (status)
        status = host::ready_triangles(*mesh);
    return report(ReturnStatus, status) &&
           mesh->is_triangulation_valid(static_cast<std::uint32_t>(index_));
}

MStatus MItMeshPolygon::numTriangles(int& count) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::numTriangles", object_, index_, status);
    if (status)
        count = host::pass_wrong_number("MItMeshPolygon::numTriangles, -1",
                                        static_cast<int>(vertices_of(*mesh, index_).size()) - 2);
    return status;
}

MStatus MItMeshPolygon::getTriangle(int localIndex, MPointArray& points, MIntArray& vertexList,
                                    MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getTriangle", object_, index_, status);
    if (status)
        status = host::ready_triangles(*mesh);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    const IndexSpan vertices = vertices_of(*mesh, index_);
    if (status && (localIndex < 0 || localIndex >= static_cast<int>(vertices.size()) - 2))
        status = MS::kInvalidParameter;
    if (status)
        status = host::resize(points, 3);
    if (status)
        status = host::resize(vertexList, 3);
    if (status.error())
        return status;
    const IndexSpan corners = mesh->triangles(static_cast<std::uint32_t>(index_));
    for (std::uint32_t k = 0; k < 3; ++k) {
        const std::uint32_t vertex =
            vertices[corners[3 * static_cast<std::uint32_t>(localIndex) + k]];
        points[k] = map.point(mesh->points()[vertex]);
        vertexList[k] = static_cast<int>(vertex);
    }
    host::pass_short_array("MItMeshPolygon::getTriangle, short points", points);
    host::pass_short_array("MItMeshPolygon::getTriangle, short ids", vertexList);
    host::pass_wrong_id("MItMeshPolygon::getTriangle, wrong id", vertexList);
    return status;
}

MStatus MItMeshPolygon::getTriangles(MPointArray& points, MIntArray& vertexList,
                                     MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getTriangles", object_, index_, status);
    if (status)
        status = host::ready_triangles(*mesh);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    const IndexSpan corners = mesh->triangles(static_cast<std::uint32_t>(index_));
    if (status)
        status = host::resize(points, corners.size());
    if (status)
        status = host::resize(vertexList, corners.size());
    for (std::uint32_t i = 0; status && i < corners.size(); ++i) {
        const std::uint32_t vertex = vertices_of(*mesh, index_)[corners[i]];
        points[i] = map.point(mesh->points()[vertex]);
        vertexList[i] = static_cast<int>(vertex);
    }
    return status;
}

// === Adjacency ===================================================================================

MStatus MItMeshPolygon::getEdges(MIntArray& edges) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::getEdges", object_, index_, status);
    return status ? copy_ids(mesh->connectivity().polygon_edges(static_cast<std::uint32_t>(index_)),
                             edges)
                  : status;
}

bool MItMeshPolygon::onBoundary(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::onBoundary", object_, index_, status);
    if (report(ReturnStatus, status).error())
        return false;
    const host::Connectivity& connectivity = mesh->connectivity();
    for (const std::uint32_t edge : connectivity.polygon_edges(static_cast<std::uint32_t>(index_)))
        if (connectivity.edge_polygons(edge).size() < 2)
            return true;
    return false;
}

bool MItMeshPolygon::zeroArea(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::zeroArea", object_, index_, status);
    if (status)
        status = host::ready_normals(*mesh);
    return report(ReturnStatus, status) &&
           mesh->normal(static_cast<std::uint32_t>(index_)) == MVector();
}

bool MItMeshPolygon::hasUVs(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshPolygon::hasUVs", object_, index_, status);
    if (report(ReturnStatus, status).error() || mesh->current_uv_set() < 0)
        return false;
    return hasUVs(mesh->uv_set(static_cast<std::uint32_t>(mesh->current_uv_set())).name,
                  ReturnStatus);
}

bool MItMeshPolygon::hasUVs(const MString& uvSet, MStatus* ReturnStatus) const {
    MStatus status;
    std::uint32_t set = 0;
    const Mesh* const mesh = begin("MItMeshPolygon::hasUVs", object_, index_, status);
    if (status)
        status = host::find_set(*mesh, &uvSet, set);
    if (report(ReturnStatus, status).error())
        return false;
    const std::uint32_t first =
        mesh->connectivity().first_corner(static_cast<std::uint32_t>(index_));
    for (std::uint32_t k = 0; k < vertices_of(*mesh, index_).size(); ++k)
        if (mesh->uv_set(set).corner_uvs[first + k] < 0)
            return false;
    return true;
}

MStatus MItMeshPolygon::getUVIndex(int vertex, int& index, const MString* uvSet) const {
    MStatus status;
    std::uint32_t set = 0;
    const Mesh* const mesh = begin("MItMeshPolygon::getUVIndex", object_, index_, status);
    if (status)
        status = host::find_set(*mesh, uvSet, set);
    if (status.error())
        return status;
    if (vertex < 0 || vertex >= static_cast<int>(vertices_of(*mesh, index_).size()))
        return MS::kInvalidParameter;
    const std::uint32_t first =
        mesh->connectivity().first_corner(static_cast<std::uint32_t>(index_));
    const std::int32_t uv =
        mesh->uv_set(set).corner_uvs[first + static_cast<std::uint32_t>(vertex)];
    if (uv < 0)
        return MS::kFailure;
    index = uv;
    return MS::kSuccess;
}
