/// Function set for attributes that hold data: strings, meshes, matrices.
#pragma once

#include <maya/MFnAttribute.h>
#include <maya/MFnData.h>
#include <maya/MTypeId.h>

class MHOST_EXPORT MFnTypedAttribute : public MFnAttribute {
public:
    MFnTypedAttribute();
    MFnTypedAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnTypedAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnTypedAttribute() override;

    MFn::Type type() const override;

    /// Creates an attribute and attaches to it.
    /// Errors: kNotImplemented for data types that this host does not support.
    MObject create(const MString& fullName, const MString& briefName, MFnData::Type type,
                   MObject defaultData = MObject::kNullObj, MStatus* ReturnStatus = NULL);
    MFnData::Type attrType(MStatus* ReturnStatus = NULL) const;
};
