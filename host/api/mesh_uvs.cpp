/// MFnMesh: UV sets, UVs and their assignment to face corners.
#include "host/api/mesh_access.h"

#include <maya/MFnMesh.h>
#include <maya/MUintArray.h>

#include <algorithm>

using host::Mesh;
using host::pass_fault;
using host::report;
using host::UvSet;

namespace {

const Mesh* begin(const char* point, const MObject& object, MStatus& status) {
    status = pass_fault(point);
    const Mesh* const mesh = status ? host::current_mesh(object) : nullptr;
    if (status && mesh == nullptr)
        status = MS::kFailure;
    return mesh;
}

/// Finds a UV set for reading; on failure NULL and a failing status.
const UvSet* begin_read(const char* point, const MObject& object, const MString* name,
                        MStatus& status) {
    const Mesh* const mesh = begin(point, object, status);
    std::uint32_t set = 0;
    if (status)
        status = host::find_set(*mesh, name, set);
    return status ? &mesh->uv_set(set) : nullptr;
}

/// Access to a UV set for writing. Fault point and name are checked before the mesh is requested
/// for writing, so that a failure changes nothing.
struct SetToEdit {
    Mesh* mesh = nullptr;
    std::uint32_t set = 0;
};

SetToEdit begin_edit(const char* point, const MObject& object, const MString* name,
                     MStatus& status) {
    SetToEdit found;
    const Mesh* const mesh = begin(point, object, status);
    if (status)
        status = host::find_set(*mesh, name, found.set);
    if (status)
        found.mesh = host::mesh_face(object)->edit();
    if (status && found.mesh == nullptr)
        status = MS::kFailure;
    return found;
}

/// Runs a change of a UV set. Writing to a set shared with a copy allocates.
template <class Change>
MStatus change(const SetToEdit& target, Change apply) {
    return host::guard_memory([&] { apply(target.mesh->edit_uv_set(target.set)); });
}

bool has_uv(const UvSet& set, int uv) { return uv >= 0 && uv < static_cast<int>(set.u.size()); }

/// Index of a polygon's corner `number` in the mesh's corner list; false if either is out of range.
bool find_corner(const Mesh& mesh, int polygon, int number, std::size_t& corner) {
    const host::Connectivity& connectivity = mesh.connectivity();
    if (polygon < 0 || polygon >= static_cast<int>(connectivity.polygon_count()))
        return false;
    const auto p = static_cast<std::uint32_t>(polygon);
    if (number < 0 || number >= static_cast<int>(connectivity.corners_of(p)))
        return false;
    corner = connectivity.first_corner(p) + static_cast<std::uint32_t>(number);
    return true;
}

bool is_data(const MObject& object) {
    return object.apiType() == MFn::kMeshData || object.apiType() == MFn::kMeshGeom;
}

} // namespace

// === Sets ========================================================================================

int MFnMesh::numUVSets(MStatus* ReturnStatus) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::numUVSets", object_, status);
    return report(ReturnStatus, status) ? static_cast<int>(mesh->uv_set_count()) : 0;
}

MStatus MFnMesh::getUVSetNames(MStringArray& setNames) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::getUVSetNames", object_, status);
    if (status)
        status = host::resize(setNames, mesh->uv_set_count());
    for (std::uint32_t i = 0; status && i < mesh->uv_set_count(); ++i)
        setNames[i] = mesh->uv_set(i).name;
    return status;
}

MString MFnMesh::currentUVSetName(MStatus* ReturnStatus, int) const {
    MStatus status;
    const Mesh* const mesh = begin("MFnMesh::currentUVSetName", object_, status);
    if (report(ReturnStatus, status).error() || mesh->current_uv_set() < 0)
        return MString();
    return mesh->uv_set(static_cast<std::uint32_t>(mesh->current_uv_set())).name;
}

MStatus MFnMesh::setCurrentUVSetName(const MString& setName, MDGModifier* modifier,
                                     MSelectionList*) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::setCurrentUVSetName", object_, &setName, status);
    if (status && modifier != NULL)
        status = MS::kNotImplemented;
    if (status)
        target.mesh->set_current_uv_set(static_cast<int>(target.set));
    return status;
}

MStatus MFnMesh::createUVSetDataMesh(MString& uvSetName) {
    MStatus status;
    begin("MFnMesh::createUVSetDataMesh", object_, status);
    if (status && !is_data(object_))
        status = MS::kFailure;
    if (status.error())
        return status;
    Mesh* const mesh = host::mesh_face(object_)->edit();
    return host::guard_memory([&] { uvSetName = mesh->uv_set(mesh->add_uv_set(uvSetName)).name; });
}

MString MFnMesh::createUVSetWithName(const MString& uvSetName, MDGModifier* modifier,
                                     MStatus* ReturnStatus, const MUintArray* instances) {
    MStatus status;
    begin("MFnMesh::createUVSetWithName", object_, status);
    if (status && is_data(object_))
        status = MS::kFailure;
    if (status && (modifier != NULL || instances != NULL))
        status = MS::kNotImplemented;
    Mesh* const mesh = status ? host::mesh_face(object_)->edit() : nullptr;
    if (status && mesh == nullptr)
        status = MS::kFailure;
    MString name;
    if (status)
        status = host::guard_memory([&] { name = mesh->uv_set(mesh->add_uv_set(uvSetName)).name; });
    report(ReturnStatus, status);
    return name;
}

MStatus MFnMesh::deleteUVSet(const MString& setName, MDGModifier* modifier, MSelectionList*) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::deleteUVSet", object_, &setName, status);
    if (status && modifier != NULL)
        status = MS::kNotImplemented;
    if (status)
        target.mesh->remove_uv_set(target.set);
    return status;
}

MStatus MFnMesh::renameUVSet(const MString& origName, const MString& newName,
                             MDGModifier* modifier) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::renameUVSet", object_, &origName, status);
    if (status && modifier != NULL)
        status = MS::kNotImplemented;
    if (status && (newName.length() == 0 || target.mesh->find_uv_set(newName) >= 0))
        status = MS::kInvalidParameter;
    return status ? change(target, [&](UvSet& set) { set.name = newName; }) : status;
}

// === UVs =========================================================================================

int MFnMesh::numUVs(MStatus* ReturnStatus) const {
    MStatus status;
    const UvSet* const set = begin_read("MFnMesh::numUVs", object_, NULL, status);
    return report(ReturnStatus, status) ? static_cast<int>(set->u.size()) : 0;
}

int MFnMesh::numUVs(const MString& uvSet, MStatus* ReturnStatus) const {
    MStatus status;
    const UvSet* const set = begin_read("MFnMesh::numUVs", object_, &uvSet, status);
    return report(ReturnStatus, status) ? static_cast<int>(set->u.size()) : 0;
}

MStatus MFnMesh::getUVs(MFloatArray& uArray, MFloatArray& vArray, const MString* uvSet) const {
    MStatus status;
    const UvSet* const set = begin_read("MFnMesh::getUVs", object_, uvSet, status);
    if (status)
        status = host::resize(uArray, set->u.size());
    if (status)
        status = host::resize(vArray, set->v.size());
    for (unsigned int i = 0; status && i < uArray.length(); ++i) {
        uArray[i] = set->u[i];
        vArray[i] = set->v[i];
    }
    return status;
}

MStatus MFnMesh::setUVs(const MFloatArray& uArray, const MFloatArray& vArray,
                        const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::setUVs", object_, uvSet, status);
    if (status.error())
        return status;
    if (uArray.length() != vArray.length() ||
        uArray.length() < target.mesh->uv_set(target.set).u.size())
        return MS::kInvalidParameter;
    return change(target, [&](UvSet& set) {
        set.u.resize(uArray.length());
        set.v.resize(vArray.length());
        uArray.get(set.u.data());
        vArray.get(set.v.data());
    });
}

MStatus MFnMesh::setUV(int uvId, float u, float v, const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::setUV", object_, uvSet, status);
    if (status && uvId < 0)
        status = MS::kInvalidParameter;
    if (status.error())
        return status;
    return change(target, [&](UvSet& set) {
        const auto id = static_cast<std::size_t>(uvId);
        set.u.resize(std::max(set.u.size(), id + 1), 0.0f);
        set.v.resize(std::max(set.v.size(), id + 1), 0.0f);
        set.u[id] = u;
        set.v[id] = v;
    });
}

MStatus MFnMesh::setSomeUVs(const MIntArray& uvIds, const MFloatArray& uArray,
                            const MFloatArray& vArray, const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::setSomeUVs", object_, uvSet, status);
    if (status.error())
        return status;
    if (uArray.length() != uvIds.length() || vArray.length() != uvIds.length())
        return MS::kInvalidParameter;
    int largest = -1;
    for (unsigned int i = 0; i < uvIds.length(); ++i) {
        if (uvIds[i] < 0)
            return MS::kInvalidParameter;
        largest = std::max(largest, uvIds[i]);
    }
    return change(target, [&](UvSet& set) {
        const std::size_t size = std::max(set.u.size(), static_cast<std::size_t>(largest) + 1);
        set.u.resize(size, 0.0f);
        set.v.resize(size, 0.0f);
        for (unsigned int i = 0; i < uvIds.length(); ++i) {
            set.u[static_cast<std::size_t>(uvIds[i])] = uArray[i];
            set.v[static_cast<std::size_t>(uvIds[i])] = vArray[i];
        }
    });
}

MStatus MFnMesh::clearUVs(const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::clearUVs", object_, uvSet, status);
    if (status.error())
        return status;
    return change(target, [&](UvSet& set) {
        set.u.clear();
        set.v.clear();
        std::fill(set.corner_uvs.begin(), set.corner_uvs.end(), -1);
    });
}

// === Assignments =================================================================================

MStatus MFnMesh::assignUV(int polygonId, int vertexIndex, int uvId, const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::assignUV", object_, uvSet, status);
    if (status.error())
        return status;
    std::size_t corner = 0;
    if (!find_corner(*target.mesh, polygonId, vertexIndex, corner) ||
        !has_uv(target.mesh->uv_set(target.set), uvId))
        return MS::kInvalidParameter;
    return change(target, [&](UvSet& set) { set.corner_uvs[corner] = uvId; });
}

MStatus MFnMesh::assignUVs(const MIntArray& uvCounts, const MIntArray& uvIds,
                           const MString* uvSet) {
    MStatus status;
    const SetToEdit target = begin_edit("MFnMesh::assignUVs", object_, uvSet, status);
    if (status.error())
        return status;
    const host::Connectivity& connectivity = target.mesh->connectivity();
    if (uvCounts.length() != connectivity.polygon_count())
        return MS::kInvalidParameter;
    std::uint64_t total = 0;
    for (std::uint32_t p = 0; p < uvCounts.length(); ++p) {
        if (uvCounts[p] != 0 && uvCounts[p] != static_cast<int>(connectivity.corners_of(p)))
            return MS::kInvalidParameter;
        total += static_cast<std::uint64_t>(uvCounts[p]);
    }
    bool is_known = total == uvIds.length();
    for (unsigned int i = 0; is_known && i < uvIds.length(); ++i)
        is_known = has_uv(target.mesh->uv_set(target.set), uvIds[i]);
    if (!is_known)
        return MS::kInvalidParameter;
    return change(target, [&](UvSet& set) {
        unsigned int taken = 0;
        std::size_t corner = 0;
        for (std::uint32_t p = 0; p < uvCounts.length(); ++p)
            for (std::uint32_t k = 0; k < connectivity.corners_of(p); ++k)
                set.corner_uvs[corner++] = uvCounts[p] == 0 ? -1 : uvIds[taken++];
    });
}

MStatus MFnMesh::getAssignedUVs(MIntArray& uvCounts, MIntArray& uvIds, const MString* uvSet) const {
    MStatus status;
    const UvSet* const set = begin_read("MFnMesh::getAssignedUVs", object_, uvSet, status);
    if (status.error())
        return status;
    const host::Connectivity& connectivity = host::current_mesh(object_)->connectivity();
    const auto is_mapped = [](std::int32_t uv) { return uv >= 0; };
    const auto mapped = std::count_if(set->corner_uvs.begin(), set->corner_uvs.end(), is_mapped);
    status = host::resize(uvCounts, connectivity.polygon_count());
    if (status)
        status = host::resize(uvIds, static_cast<std::size_t>(mapped));
    unsigned int filled = 0;
    for (std::uint32_t p = 0; status && p < uvCounts.length(); ++p) {
        const unsigned int before = filled;
        for (std::uint32_t k = 0; k < connectivity.corners_of(p); ++k) {
            const std::int32_t uv = set->corner_uvs[connectivity.first_corner(p) + k];
            if (is_mapped(uv))
                uvIds[filled++] = uv;
        }
        uvCounts[p] = static_cast<int>(filled - before);
    }
    return status;
}

MStatus MFnMesh::getPolygonUVid(int polygonId, int vertexIndex, int& uvId,
                                const MString* uvSet) const {
    MStatus status;
    const UvSet* const set = begin_read("MFnMesh::getPolygonUVid", object_, uvSet, status);
    if (status.error())
        return status;
    std::size_t corner = 0;
    if (!find_corner(*host::current_mesh(object_), polygonId, vertexIndex, corner))
        return MS::kInvalidParameter;
    if (set->corner_uvs[corner] < 0)
        return MS::kFailure;
    uvId = set->corner_uvs[corner];
    return MS::kSuccess;
}
