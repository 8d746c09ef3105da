/// An array of strings.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>
#include <maya/MString.h>

extern template class MHOST_EXPORT host::Array<MString>;

class MHOST_EXPORT MStringArray : public host::Array<MString> {
public:
    MStringArray();
    MStringArray(const MStringArray& other);
    /// `initialSize` elements of one value.
    MStringArray(unsigned int initialSize, const MString& initialValue = MString());
    ~MStringArray();
    MStringArray& operator=(const MStringArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MStringArray& source);
};
