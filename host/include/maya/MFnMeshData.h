/// Function set for mesh data: a mesh in a data block or on a connection. Use MFnMesh and the mesh
/// iterators for its contents.
#pragma once

#include <maya/MFnData.h>

class MHOST_EXPORT MFnMeshData : public MFnData {
public:
    MFnMeshData();
    MFnMeshData(MObject& object, MStatus* ReturnStatus = NULL);
    MFnMeshData(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnMeshData() override;

    MFn::Type type() const override;

    /// Creates mesh data without geometry and attaches to it.
    MObject create(MStatus* ReturnStatus = NULL);
};
