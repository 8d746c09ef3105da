/// An array of plugs. See HostArray.h for members common to all arrays.
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

    /// Replaces the contents by those of `source`.
    MStatus copy(const MPlugArray& source);
};
