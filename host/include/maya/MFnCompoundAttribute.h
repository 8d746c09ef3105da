/// Function set for attributes that have child attributes.
#pragma once

#include <maya/MFnAttribute.h>

class MHOST_EXPORT MFnCompoundAttribute : public MFnAttribute {
public:
    MFnCompoundAttribute();
    MFnCompoundAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnCompoundAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnCompoundAttribute() override;

    MFn::Type type() const override;

    MObject create(const MString& fullName, const MString& briefName, MStatus* ReturnStatus = NULL);
    MStatus addChild(const MObject& child);
    unsigned int numChildren(MStatus* ReturnStatus = NULL) const;
    MObject child(unsigned int index, MStatus* ReturnStatus = NULL) const;
};
