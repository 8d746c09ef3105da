#include "host/base/object.h"

namespace host {

namespace {

struct TypeRow {
    MFn::Type type;
    const char* text;
    MFn::Type above;
};

#define ROW(TYPE, ABOVE)                                                                           \
    { MFn::TYPE, #TYPE, MFn::ABOVE }

/// Type hierarchy: a function set for the type in the second column also accepts the first.
constexpr TypeRow k_types[] = {
    ROW(kInvalid, kInvalid),
    ROW(kBase, kInvalid),
    ROW(kNamedObject, kBase),
    ROW(kDependencyNode, kNamedObject),
    ROW(kDagNode, kDependencyNode),
    ROW(kTransform, kDagNode),
    ROW(kShape, kDagNode),
    ROW(kMesh, kShape),
    ROW(kCamera, kShape),
    ROW(kWorld, kDagNode),
    ROW(kPolyTweak, kDependencyNode),
    ROW(kPolyCreator, kDependencyNode),
    ROW(kPolyPrimitive, kPolyCreator),
    ROW(kPluginDependNode, kDependencyNode),
    ROW(kUnknown, kDependencyNode),
    ROW(kAttribute, kBase),
    ROW(kNumericAttribute, kAttribute),
    ROW(kTypedAttribute, kAttribute),
    ROW(kEnumAttribute, kAttribute),
    ROW(kMessageAttribute, kAttribute),
    ROW(kCompoundAttribute, kAttribute),
    ROW(kMatrixAttribute, kAttribute),
    ROW(kData, kBase),
    ROW(kMeshData, kData),
    ROW(kMeshGeom, kBase),
    ROW(kNumericData, kData),
    ROW(kStringData, kData),
    ROW(kMatrixData, kData),
    ROW(kPlugin, kBase),
    ROW(kSelectionList, kBase),
    ROW(kComponent, kBase),
};

#undef ROW

const TypeRow& row_of(MFn::Type type) {
    for (const TypeRow& row : k_types)
        if (row.type == type)
            return row;
    return k_types[0];
}

} // namespace

const char* type_text(MFn::Type type) { return row_of(type).text; }
MFn::Type type_above(MFn::Type type) { return row_of(type).above; }

} // namespace host
