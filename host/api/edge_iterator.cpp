#include "host/api/mesh_access.h"

#include <maya/MItMeshEdge.h>

using host::current_mesh;
using host::Mesh;
using host::pass_fault;
using host::report;

namespace {

const Mesh* begin(const char* point, const MObject& object, int index, MStatus& status) {
    status = pass_fault(point);
    const Mesh* const mesh = status ? current_mesh(object) : nullptr;
    if (status && (mesh == nullptr || index < 0 ||
                   index >= static_cast<int>(mesh->connectivity().edge_count())))
        status = MS::kFailure;
    return mesh;
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
    const MStatus fault = pass_fault("MItMeshEdge::isDone");
    const Mesh* const mesh = fault ? current_mesh(object_) : nullptr;
    report(ReturnStatus, fault && mesh == nullptr ? MStatus(MS::kFailure) : fault);
    return mesh == nullptr || index_ >= static_cast<int>(mesh->connectivity().edge_count());
}

MStatus MItMeshEdge::next() {
    MStatus status;
    begin("MItMeshEdge::next", object_, index_, status);
    index_ += status ? 1 : 0;
    return status;
}

MStatus MItMeshEdge::reset() {
    MStatus status = pass_fault("MItMeshEdge::reset");
    if (status && current_mesh(object_) == nullptr)
        status = MS::kFailure;
    if (status)
        index_ = 0;
    return status;
}

MStatus MItMeshEdge::reset(MObject& polyObject) {
    const MObject wanted = polyObject;
    path_ = MDagPath();
    index_ = 0;
    return host::attach_mesh("MItMeshEdge::reset", wanted, MObject(), object_);
}

int MItMeshEdge::count(MStatus* ReturnStatus) const {
    const MStatus fault = pass_fault("MItMeshEdge::count");
    const Mesh* const mesh = fault ? current_mesh(object_) : nullptr;
    report(ReturnStatus, fault && mesh == nullptr ? MStatus(MS::kFailure) : fault);
    return mesh == nullptr ? 0 : static_cast<int>(mesh->connectivity().edge_count());
}

int MItMeshEdge::index(MStatus* ReturnStatus) const {
    MStatus status;
    begin("MItMeshEdge::index", object_, index_, status);
    report(ReturnStatus, status);
    return index_;
}

int MItMeshEdge::index(int endPoint, MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::index", object_, index_, status);
    if (status && endPoint != 0 && endPoint != 1)
        status = MS::kInvalidParameter;
    return report(ReturnStatus, status) ? static_cast<int>(end_vertex(*mesh, index_, endPoint))
                                        : -1;
}

MStatus MItMeshEdge::setIndex(int index, int& prevIndex) {
    MStatus status;
    begin("MItMeshEdge::setIndex", object_, index, status);
    if (status.error())
        return status;
    prevIndex = index_;
    index_ = index;
    return status;
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
    return report(ReturnStatus, status) ? static_cast<int>(faceList.length()) : 0;
}

bool MItMeshEdge::onBoundary(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MItMeshEdge::onBoundary", object_, index_, status);
    return report(ReturnStatus, status) &&
           mesh->connectivity().edge_polygons(static_cast<std::uint32_t>(index_)).size() < 2;
}
