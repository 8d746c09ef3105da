#include "host/api/mesh_cursor.h"

#include <maya/MItMeshEdge.h>

using host::Mesh;
using host::report;

namespace {

constexpr host::Count k_count = &host::Connectivity::edge_count;

const Mesh* begin(const char* point, const MObject& object, int index, MStatus& status) {
    return host::begin_at<k_count>(point, object, index, status);
}

std::uint32_t end_vertex(const Mesh& mesh, int edge, int end) {
    const auto& ends = mesh.connectivity().edge(static_cast<std::uint32_t>(edge));
    return end == 0 ? ends.first : ends.second;
}

} // namespace

MItMeshEdge::MItMeshEdge(MObject& polyObject, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshEdge::MItMeshEdge", polyObject, MObject(), object_));
}

MItMeshEdge::MItMeshEdge(MObject& polyObject, MObject& component, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshEdge::MItMeshEdge", polyObject, component, object_));
}

MItMeshEdge::MItMeshEdge(const MDagPath& polyObject, MObject& component, MStatus* ReturnStatus) {
    report(ReturnStatus,
           host::attach_mesh("MItMeshEdge::MItMeshEdge", polyObject, component, object_, path_));
}

MItMeshEdge::~MItMeshEdge() = default;

bool MItMeshEdge::isDone(MStatus* ReturnStatus) const {
    return index_ >= host::count_all<k_count>("MItMeshEdge::isDone", object_, ReturnStatus);
}

MStatus MItMeshEdge::next() {
    return host::move_to_next<k_count>("MItMeshEdge::next", object_, index_);
}

MStatus MItMeshEdge::reset() { return host::move_to_first("MItMeshEdge::reset", object_, index_); }

MStatus MItMeshEdge::reset(MObject& polyObject) {
    return host::move_to_mesh("MItMeshEdge::reset", polyObject, object_, path_, index_);
}

int MItMeshEdge::count(MStatus* ReturnStatus) const {
    return host::count_all<k_count>("MItMeshEdge::count", object_, ReturnStatus);
}

int MItMeshEdge::index(MStatus* ReturnStatus) const {
    return host::current_index<k_count>("MItMeshEdge::index", object_, index_, ReturnStatus);
}

int MItMeshEdge::index(int endPoint, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::index", object_, index_, status);
    if (status && endPoint != 0 && endPoint != 1)
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status)
               ? host::pass_wrong_number("MItMeshEdge::index, -1",
                                         static_cast<int>(end_vertex(*mesh, index_, endPoint)))
               : -1;
}

MStatus MItMeshEdge::setIndex(int index, int& prevIndex) {
    return host::move_to_index<k_count>("MItMeshEdge::setIndex", object_, index, prevIndex, index_);
}

MPoint MItMeshEdge::point(int endPoint, MSpace::Space space, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::point", object_, index_, status);
    if (status && endPoint != 0 && endPoint != 1)
        status = MS::kInvalidParameter;
    MPoint point;
    if (status) {
        const host::SpaceMap map(space, path_, status);
        point = map.point(mesh->points()[end_vertex(*mesh, index_, endPoint)]);
    }
    report(ReturnStatus, status);
    return point;
}

MStatus MItMeshEdge::getLength(double& length, MSpace::Space space) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::getLength", object_, index_, status);
    if (status.error())
        return status;
    const host::SpaceMap map(space, path_, status);
    if (status)
        length = map.point(mesh->points()[end_vertex(*mesh, index_, 0)])
                     .distanceTo(map.point(mesh->points()[end_vertex(*mesh, index_, 1)]));
    return status;
}

int MItMeshEdge::getConnectedFaces(MIntArray& faceList, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::getConnectedFaces", object_, index_, status);
    if (status)
        status = host::copy_ids(
            mesh->connectivity().edge_polygons(static_cast<std::uint32_t>(index_)), faceList);
    if (!report(ReturnStatus, status))
        return 0;
    const int count = static_cast<int>(faceList.length());
    host::pass_short_array("MItMeshEdge::getConnectedFaces, short", faceList);
    return count;
}

bool MItMeshEdge::onBoundary(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::onBoundary", object_, index_, status);
    return report(ReturnStatus, status) &&
           mesh->connectivity().edge_polygons(static_cast<std::uint32_t>(index_)).size() < 2;
}
