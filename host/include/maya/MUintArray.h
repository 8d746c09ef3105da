/// An array of unsigned integers.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<unsigned int>;

class MHOST_EXPORT MUintArray : public host::Array<unsigned int> {
public:
    MUintArray();
    MUintArray(const MUintArray& other);
    /// `initialSize` elements of one value.
    MUintArray(unsigned int initialSize, unsigned int initialValue = 0);
    ~MUintArray();
    MUintArray& operator=(const MUintArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MUintArray& source);
};
