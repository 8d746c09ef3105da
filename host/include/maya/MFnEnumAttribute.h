/// Function set for attributes whose value is one of several named integers.
#pragma once

#include <maya/MFnAttribute.h>

class MHOST_EXPORT MFnEnumAttribute : public MFnAttribute {
public:
    MFnEnumAttribute();
    MFnEnumAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnEnumAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnEnumAttribute() override;

    MFn::Type type() const override;

    MObject create(const MString& fullName, const MString& briefName, short defaultValue = 0,
                   MStatus* ReturnStatus = NULL);
    MStatus addField(const MString& fieldString, short index);
    short fieldIndex(const MString& field, MStatus* ReturnStatus = NULL) const;
    MString fieldName(short index, MStatus* ReturnStatus = NULL) const;
    MStatus setDefault(short value);
};
