/// Functions shared by the iterators over vertices, edges and polygons. `count` is the member of
/// Connectivity that returns the number of elements to iterate over: a template argument, so that
/// it is inlined into functions that a plug-in calls for every element.
#pragma once

#include "host/api/mesh_access.h"

namespace host {

using Count = std::uint32_t (Connectivity::*)() const;

/// Passes a fault point and returns the mesh if `index` is a valid element, else NULL.
template <Count count>
const Mesh* begin_at(const char* point, const MObject& object, int index, MStatus& status) {
    status = pass_fault(point);
    const Mesh* const mesh = status ? current_mesh(object) : nullptr;
    if (status && (mesh == nullptr || index < 0 ||
                   index >= static_cast<int>((mesh->connectivity().*count)())))
        status = MS::kFailure;
    return mesh;
}

/// Number of elements; 0 without a mesh.
template <Count count>
int count_all(const char* point, const MObject& object, MStatus* result) {
    const MStatus fault = pass_fault(point);
    const Mesh* const mesh = fault ? current_mesh(object) : nullptr;
    report(result, fault && mesh == nullptr ? MStatus(MS::kFailure) : fault);
    return mesh == nullptr ? 0 : static_cast<int>((mesh->connectivity().*count)());
}

template <Count count>
MStatus move_to_next(const char* point, const MObject& object, int& index) {
    MStatus status;
    begin_at<count>(point, object, index, status);
    index += status ? 1 : 0;
    return status;
}

inline MStatus move_to_first(const char* point, const MObject& object, int& index) {
    MStatus status = pass_fault(point);
    if (status && current_mesh(object) == nullptr)
        status = MS::kFailure;
    if (status)
        index = 0;
    return status;
}

/// Restarts the iteration at the first element of another mesh.
inline MStatus move_to_mesh(const char* point, const MObject& wanted, MObject& object,
                            MDagPath& path, int& index) {
    const MObject kept = wanted; // a copy: `wanted` may alias `object`, which is overwritten
    path = MDagPath();
    index = 0;
    return attach_mesh(point, kept, MObject(), object);
}

template <Count count>
int current_index(const char* point, const MObject& object, int index, MStatus* result) {
    MStatus status;
    begin_at<count>(point, object, index, status);
    return report(result, status) ? index : -1;
}

template <Count count>
MStatus move_to_index(const char* point, const MObject& object, int wanted, int& previous,
                      int& index) {
    MStatus status;
    begin_at<count>(point, object, wanted, status);
    if (status.error())
        return status;
    previous = index;
    index = wanted;
    return status;
}

} // namespace host
