/// An array of integers, such as vertex, edge, face or UV ids. See HostArray.h for members common
/// to all arrays.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<int>;

class MHOST_EXPORT MIntArray : public host::Array<int> {
public:
    MIntArray();
    MIntArray(const MIntArray& other);
    /// `initialSize` copies of one value.
    MIntArray(unsigned int initialSize, int initialValue = 0);
    ~MIntArray();
    MIntArray& operator=(const MIntArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MIntArray& source);
};
