/// An array of unsigned integers. See HostArray.h for members common to all arrays.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<unsigned int>;

class MHOST_EXPORT MUintArray : public host::Array<unsigned int> {
public:
    MUintArray();
    MUintArray(const MUintArray& other);
    /// `initialSize` copies of one value.
    MUintArray(unsigned int initialSize, unsigned int initialValue = 0);
    ~MUintArray();
    MUintArray& operator=(const MUintArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MUintArray& source);
};
