/// An array of integers: vertex, edge, face and UV ids among them.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<int>;

class MHOST_EXPORT MIntArray : public host::Array<int> {
public:
    MIntArray();
    MIntArray(const MIntArray& other);
    /// `initialSize` elements of one value.
    MIntArray(unsigned int initialSize, int initialValue = 0);
    ~MIntArray();
    MIntArray& operator=(const MIntArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MIntArray& source);
};
