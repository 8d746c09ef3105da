/// Function set for message attributes: they have no value; a connection only relates two nodes.
#pragma once

#include <maya/MFnAttribute.h>

class MHOST_EXPORT MFnMessageAttribute : public MFnAttribute {
public:
    MFnMessageAttribute();
    MFnMessageAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnMessageAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnMessageAttribute() override;

    MFn::Type type() const override;

    MObject create(const MString& fullName, const MString& briefName, MStatus* ReturnStatus = NULL);
};
