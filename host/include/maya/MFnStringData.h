/// Function set for strings as data.
#pragma once

#include <maya/MFnData.h>
#include <maya/MString.h>

class MHOST_EXPORT MFnStringData : public MFnData {
public:
    MFnStringData();
    MFnStringData(MObject& object, MStatus* ReturnStatus = NULL);
    MFnStringData(const MObject& object, MStatus* ReturnStatus = NULL);
    ~MFnStringData() override;

    MFn::Type type() const override;

    MObject create(MStatus* ReturnStatus = NULL);
    MObject create(const MString& str, MStatus* ReturnStatus = NULL);
    MString string(MStatus* ReturnStatus = NULL) const;
    MStatus set(const MString& str);
};
