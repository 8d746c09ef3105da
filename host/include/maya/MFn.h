/// Type identifiers of host objects and function sets. Their numeric values differ between versions
/// of the application: never store them in a file.
#pragma once

#include <maya/MTypes.h>

class MHOST_EXPORT MFn {
public:
    enum Type {
        kInvalid = 0,
        kBase,
        kNamedObject,
        kDependencyNode,
        kDagNode,
        kTransform,
        kShape,
        kMesh,
        kCamera,
        kWorld,
        kPolyTweak,
        kPolyCreator,
        kPolyPrimitive,
        kPluginDependNode,
        kUnknown,
        kAttribute,
        kNumericAttribute,
        kTypedAttribute,
        kEnumAttribute,
        kMessageAttribute,
        kCompoundAttribute,
        kMatrixAttribute,
        kData,
        kMeshData,
        kMeshGeom,
        kNumericData,
        kStringData,
        kMatrixData,
        kPlugin,
        kSelectionList,
        kComponent,
        kLast
    };
};
