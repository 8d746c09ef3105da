/// Base of the function sets for data: values that travel along connections.
#pragma once

#include <maya/MFnBase.h>

class MHOST_EXPORT MFnData : public MFnBase {
public:
    enum Type {
        kInvalid = 0,
        kNumeric,
        kPlugin,
        kPluginGeometry,
        kString,
        kMatrix,
        kStringArray,
        kDoubleArray,
        kIntArray,
        kPointArray,
        kVectorArray,
        kComponentList,
        kMesh,
        kLattice,
        kNurbsCurve,
        kNurbsSurface,
        kSphere,
        kDynArrayAttrs,
        kDynSweptGeometry,
        kSubdSurface,
        kLast
    };

    MFnData();
    MFnData(MObject& object, MStatus* ReturnStatus = NULL);
    MFnData(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnData() override;

    MFn::Type type() const override;
};
