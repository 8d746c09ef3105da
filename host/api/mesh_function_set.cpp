/// MFnMesh: attaching, creating and reading geometry. mesh_uvs.cpp has its UV methods.
#include "host/api/mesh_access.h"
#include "host/mesh/mesh_object.h"

#include <maya/MFnMesh.h>

#include <utility>

using host::current_mesh;
using host::Mesh;
using host::pass_fault;
using host::report;

namespace {

/// Passes a fault point and returns the mesh; on failure NULL and a failing status.
const Mesh* begin(const char* point, const MObject& object, MStatus& status) {
    status = pass_fault(point);
    const Mesh* const mesh = status ? current_mesh(object) : nullptr;
    if (status && mesh == nullptr)
        status = MS::kFailure;
    return mesh;
}

bool is_polygon(const Mesh& mesh, int polygon) {
    return polygon >= 0 && polygon < static_cast<int>(mesh.connectivity().polygon_count());
}

/// Builds the mesh described by the arguments of `create`, with the UV set that every new mesh has.
MStatus build(int vertex_count, int polygon_count, const MPointArray& points,
              const MIntArray& counts, const MIntArray& connects, Mesh& mesh) {
    if (vertex_count < 0 || polygon_count < 0 ||
        points.length() < static_cast<unsigned int>(vertex_count) ||
        counts.length() < static_cast<unsigned int>(polygon_count))
        return MS::kInvalidParameter;
    std::vector<host::Float3> coordinates(static_cast<std::size_t>(vertex_count));
    for (unsigned int i = 0; i < coordinates.size(); ++i)
        coordinates[i] =
            host::Float3{static_cast<float>(points[i].x), static_cast<float>(points[i].y),
                         static_cast<float>(points[i].z)};
    // Negative ids become huge unsigned values, which `Mesh::make` rejects.
    std::vector<std::uint32_t> sizes(static_cast<std::size_t>(polygon_count));
    for (unsigned int i = 0; i < sizes.size(); ++i)
        sizes[i] = static_cast<std::uint32_t>(counts[i]);
    std::vector<std::uint32_t> vertices(connects.length());
    for (unsigned int i = 0; i < connects.length(); ++i)
        vertices[i] = static_cast<std::uint32_t>(connects[i]);
    const MStatus status =
        Mesh::make(std::move(coordinates), std::move(sizes), std::move(vertices), mesh);
    if (status)
        mesh.add_uv_set("map1");
    return status;
}

} // namespace

MFnMesh::MFnMesh() = default;

MFnMesh::MFnMesh(const MDagPath& path, MStatus* ReturnStatus) {
    MDagPath to_shape = path;
    if (to_shape.hasFn(MFn::kTransform))
        to_shape.extendToShape();
    const MStatus status = attach(to_shape.node(), "MFnMesh::setObject");
    if (report(ReturnStatus, status))
        path_ = to_shape;
}

MFnMesh::MFnMesh(MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnMesh::setObject"));
}

MFnMesh::MFnMesh(const MObject& object, MStatus* ReturnStatus) {
    report(ReturnStatus, attach(object, "MFnMesh::setObject"));
}

MFnMesh::~MFnMesh() = default;

MFn::Type MFnMesh::type() const { return MFn::kMesh; }

MStatus MFnMesh::accepts(const MObject& object) const {
    host::MeshFace* const face = host::mesh_face(object);
    if (face == nullptr)
        return MS::kInvalidParameter;
    const MStatus status = face->refresh();
    if (status.error())
        return status;
    return face->mesh() == nullptr ? MS::kFailure : MS::kSuccess;
}

MObject MFnMesh::create(int numVertices, int numPolygons, const MPointArray& vertexArray,
                        const MIntArray& polygonCounts, const MIntArray& polygonConnects,
                        MObject parentOrOwner, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnMesh::create");
    Mesh mesh;
    MStatus built;
    if (status)
        status = host::guard_memory([&] {
            built =
                build(numVertices, numPolygons, vertexArray, polygonCounts, polygonConnects, mesh);
        });
    if (status)
        status = built;
    host::MeshFace* const owner = host::mesh_face(parentOrOwner);
    if (status && owner == nullptr && !parentOrOwner.isNull())
        status = MS::kInvalidParameter;
    MObject result = parentOrOwner;
    if (status && owner != nullptr) {
        status = owner->set_mesh(mesh);
        object_ = parentOrOwner;
        path_ = MDagPath();
    } else if (status) {
        path_ = host::make_mesh_node("polySurface", mesh);
        object_ = path_.node();
        result = path_.transform();
    }
    return report(ReturnStatus, status) ? result : MObject();
}

MObject MFnMesh::copy(const MObject& source, MObject parentOrOwner, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MFnMesh::copy");
    const Mesh* const mesh = host::mesh_of(source);
    host::MeshFace* const owner = host::mesh_face(parentOrOwner);
    if (status && (mesh == nullptr || (owner == nullptr && !parentOrOwner.isNull())))
        status = MS::kInvalidParameter;
    MObject result = parentOrOwner;
    if (status && owner != nullptr) {
        const Mesh kept = *mesh; // a copy, because the owner may be the source
        status = owner->set_mesh(kept);
        object_ = parentOrOwner;
        path_ = MDagPath();
    } else if (status) {
        path_ = host::make_mesh_node("polySurface", *mesh);
        object_ = path_.node();
        result = path_.transform();
    }
    return report(ReturnStatus, status) ? result : MObject();
}

MStatus MFnMesh::copyInPlace(const MObject& source) {
    const MStatus fault = pass_fault("MFnMesh::copyInPlace");
    if (fault.error())
        return fault;
    const Mesh* const mesh = host::mesh_of(source);
    host::MeshFace* const target = host::mesh_face(object_);
    if (target == nullptr)
        return MS::kFailure;
    if (mesh == nullptr)
        return MS::kInvalidParameter;
    const Mesh kept = *mesh;
    return target->set_mesh(kept);
}

MStatus MFnMesh::updateSurface() {
    const MStatus fault = pass_fault("MFnMesh::updateSurface");
    if (fault.error())
        return fault;
    host::MeshFace* const face = host::mesh_face(object_);
    return face != nullptr && face->edit() != nullptr ? MS::kSuccess : MS::kFailure;
}

int MFnMesh::numVertices(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::numVertices", object_, status);
    return report(ReturnStatus, status)
               ? host::pass_wrong_number("MFnMesh::numVertices, -1",
                                         static_cast<int>(mesh->connectivity().vertex_count()))
               : 0;
}

int MFnMesh::numEdges(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::numEdges", object_, status);
    return report(ReturnStatus, status)
               ? host::pass_wrong_number("MFnMesh::numEdges, -1",
                                         static_cast<int>(mesh->connectivity().edge_count()))
               : 0;
}

int MFnMesh::numPolygons(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::numPolygons", object_, status);
    return report(ReturnStatus, status)
               ? host::pass_wrong_number("MFnMesh::numPolygons, -1",
                                         static_cast<int>(mesh->connectivity().polygon_count()))
               : 0;
}

int MFnMesh::numFaceVertices(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::numFaceVertices", object_, status);
    return report(ReturnStatus, status) ? static_cast<int>(mesh->connectivity().corner_count()) : 0;
}

MStatus MFnMesh::getPoints(MPointArray& vertexArray, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getPoints", object_, status);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    if (status)
        status = host::resize(vertexArray, mesh->points().size());
    for (unsigned int i = 0; status && i < vertexArray.length(); ++i)
        vertexArray[i] = map.point(mesh->points()[i]);
    if (status)
        host::pass_short_array("MFnMesh::getPoints, short", vertexArray);
    return status;
}

MStatus MFnMesh::getFaceNormals(MFloatVectorArray& normals, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getFaceNormals", object_, status);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    if (status)
        status = host::ready_normals(*mesh);
    if (status)
        status = host::resize(normals, mesh->connectivity().polygon_count());
    for (unsigned int i = 0; status && i < normals.length(); ++i)
        normals[i] = MFloatVector(map.normal(mesh->normal(i)));
    return status;
}

MStatus MFnMesh::getPolygonNormal(int polygonId, MVector& normal, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getPolygonNormal", object_, status);
    if (status.error())
        return status;
    if (!is_polygon(*mesh, polygonId))
        return MS::kInvalidParameter;
    const host::SpaceMap map(space, path_, status);
    if (status)
        status = host::ready_normals(*mesh);
    if (status)
        normal = map.normal(mesh->normal(static_cast<std::uint32_t>(polygonId)));
    return status;
}

int MFnMesh::polygonVertexCount(int polygonId, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::polygonVertexCount", object_, status);
    if (status && !is_polygon(*mesh, polygonId))
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? static_cast<int>(mesh->connectivity().corners_of(
                                              static_cast<std::uint32_t>(polygonId)))
                                        : 0;
}

MStatus MFnMesh::getPolygonVertices(int polygonId, MIntArray& vertexList) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getPolygonVertices", object_, status);
    if (status && !is_polygon(*mesh, polygonId))
        status = MS::kInvalidParameter;
    if (status)
        status = host::copy_ids(
            mesh->connectivity().polygon_vertices(static_cast<std::uint32_t>(polygonId)),
            vertexList);
    return status;
}

MStatus MFnMesh::getEdgeVertices(int edgeId, int2& vertexList) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getEdgeVertices", object_, status);
    if (status.error())
        return status;
    if (edgeId < 0 || edgeId >= static_cast<int>(mesh->connectivity().edge_count()))
        return MS::kInvalidParameter;
    const auto& ends = mesh->connectivity().edge(static_cast<std::uint32_t>(edgeId));
    vertexList[0] = static_cast<int>(ends.first);
    vertexList[1] = static_cast<int>(ends.second);
    return MS::kSuccess;
}

MStatus MFnMesh::getPolygonTriangleVertices(int polygonId, int triangleId,
                                            int vertexList[3]) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getPolygonTriangleVertices", object_, status);
    if (status.error())
        return status;
    if (!is_polygon(*mesh, polygonId))
        return MS::kInvalidParameter;
    const auto polygon = static_cast<std::uint32_t>(polygonId);
    const host::IndexSpan vertices = mesh->connectivity().polygon_vertices(polygon);
    if (triangleId < 0 || triangleId >= static_cast<int>(vertices.size()) - 2)
        return MS::kInvalidParameter;
    status = host::ready_triangles(*mesh);
    for (std::uint32_t k = 0; status && k < 3; ++k)
        vertexList[k] = static_cast<int>(
            vertices[mesh->triangles(polygon)[3 * static_cast<std::uint32_t>(triangleId) + k]]);
    return status;
}

MStatus MFnMesh::getTriangles(MIntArray& triangleCounts, MIntArray& triangleVertices) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getTriangles", object_, status);
    if (status)
        status = host::ready_triangles(*mesh);
    if (status.error())
        return status;
    const host::Connectivity& connectivity = mesh->connectivity();
    const std::uint32_t polygons = connectivity.polygon_count();
    status = host::resize(triangleCounts, polygons);
    if (status)
        status = host::resize(triangleVertices, 3 * (std::size_t{connectivity.corner_count()} -
                                                     2 * std::size_t{polygons}));
    unsigned int filled = 0;
    for (std::uint32_t p = 0; status && p < polygons; ++p) {
        const host::IndexSpan vertices = connectivity.polygon_vertices(p);
        triangleCounts[p] = static_cast<int>(vertices.size()) - 2;
        for (const std::uint32_t corner : mesh->triangles(p))
            triangleVertices[filled++] = static_cast<int>(vertices[corner]);
    }
    return status;
}
