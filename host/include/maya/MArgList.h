/// The arguments of a command as they were typed, flags included, one text each.
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
    /// Fail outside the list and when the text is not of the kind asked for.
    bool asBool(unsigned int index, MStatus* ReturnStatus = NULL) const;
    int asInt(unsigned int index, MStatus* ReturnStatus = NULL) const;
    double asDouble(unsigned int index, MStatus* ReturnStatus = NULL) const;
    MString asString(unsigned int index, MStatus* ReturnStatus = NULL) const;

    MStatus addArg(const MString& arg);
    MStatus addArg(bool arg);
    MStatus addArg(int arg);
    MStatus addArg(double arg);
    /// Where a flag stands; kInvalidArgIndex when it is not there. Names with or without the dash.
    unsigned int flagIndex(const char* flag, const char* flagLong = NULL) const;

private:
    MStringArray arguments_;
};
