/// The arguments of a command as typed, flags included, one string each.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>

class MHOST_EXPORT MArgList {
public:
    enum { kInvalidArgIndex = 0xFFFFFFFFu };

    MArgList();
    MArgList(const MArgList& other);
    MArgList& operator=(const MArgList& other);
    ~MArgList();

    unsigned int length(MStatus* ReturnStatus = NULL) const;
    /// Fail if the index is out of range or the argument cannot be converted.
    bool asBool(unsigned int index, MStatus* ReturnStatus = NULL) const;
    int asInt(unsigned int index, MStatus* ReturnStatus = NULL) const;
    double asDouble(unsigned int index, MStatus* ReturnStatus = NULL) const;
    MString asString(unsigned int index, MStatus* ReturnStatus = NULL) const;

    MStatus addArg(const MString& arg);
    MStatus addArg(bool arg);
    MStatus addArg(int arg);
    MStatus addArg(double arg);
    /// Position of a flag, kInvalidArgIndex if it is absent. Flag names may omit the dash.
    unsigned int flagIndex(const char* flag, const char* flagLong = NULL) const;

private:
    MStringArray arguments_;
};
