/// Function set for attributes that are numbers or vectors of numbers.
#pragma once

#include <maya/MFnAttribute.h>
#include <maya/MFnNumericData.h>

class MHOST_EXPORT MFnNumericAttribute : public MFnAttribute {
public:
    MFnNumericAttribute();
    MFnNumericAttribute(MObject& object, MStatus* ReturnStatus = NULL);
    MFnNumericAttribute(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnNumericAttribute() override;

    MFn::Type type() const override;

    /// Creates an attribute and attaches to it. The components of a vector are named after it, with
    /// 0, 1, 2 appended.
    MObject create(const MString& fullName, const MString& briefName, MFnNumericData::Type unitType,
                   double defaultValue = 0.0, MStatus* ReturnStatus = NULL);
    /// Creates a vector from two or three existing component attributes.
    MObject create(const MString& fullName, const MString& briefName, const MObject& child1,
                   const MObject& child2, const MObject& child3 = MObject::kNullObj,
                   MStatus* ReturnStatus = NULL);
    MObject createColor(const MString& fullName, const MString& briefName,
                        MStatus* ReturnStatus = NULL);
    MObject createPoint(const MString& fullName, const MString& briefName,
                        MStatus* ReturnStatus = NULL);

    MFnNumericData::Type unitType(MStatus* ReturnStatus = NULL) const;
    MStatus setDefault(double value);
    MStatus getDefault(double& value) const;
    MStatus setMin(double value);
    MStatus setMax(double value);
    MStatus setSoftMin(double value);
    MStatus setSoftMax(double value);
    bool hasMin(MStatus* ReturnStatus = NULL) const;
    bool hasMax(MStatus* ReturnStatus = NULL) const;
    MStatus getMin(double& value) const;
    MStatus getMax(double& value) const;
};
