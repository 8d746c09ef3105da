/// An array of strings. See HostArray.h for members common to all arrays.
#pragma once

#include <maya/HostArray.h>
#include <maya/MString.h>

extern template class MHOST_EXPORT host::Array<MString>;

class MHOST_EXPORT MStringArray : public host::Array<MString> {
public:
    MStringArray();
    MStringArray(const MStringArray& other);
    /// `initialSize` copies of one value.
    MStringArray(unsigned int initialSize, const MString& initialValue = MString());
    ~MStringArray();
    MStringArray& operator=(const MStringArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MStringArray& source);
};
