/// An array of plugs.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>
#include <maya/MPlug.h>

extern template class MHOST_EXPORT host::Array<MPlug>;

class MHOST_EXPORT MPlugArray : public host::Array<MPlug> {
public:
    MPlugArray();
    MPlugArray(const MPlugArray& other);
    MPlugArray(unsigned int initialSize, const MPlug& initialValue = MPlug());
    ~MPlugArray();
    MPlugArray& operator=(const MPlugArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MPlugArray& source);
};
