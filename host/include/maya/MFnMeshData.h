/// Function set for mesh data: a mesh that lives in a data block or travels along a connection.
/// What is inside is worked on with MFnMesh and the mesh iterators.
#pragma once

#include <maya/MFnData.h>

class MHOST_EXPORT MFnMeshData : public MFnData {
public:
    MFnMeshData();
    MFnMeshData(MObject& object, MStatus* ReturnStatus = NULL);
    MFnMeshData(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnMeshData() override;

    MFn::Type type() const override;

    /// Makes mesh data that holds no geometry yet and attaches to it.
    MObject create(MStatus* ReturnStatus = NULL);
};
