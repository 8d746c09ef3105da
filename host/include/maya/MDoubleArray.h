/// An array of double precision numbers. See HostArray.h for members common to all arrays.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<double>;

class MHOST_EXPORT MDoubleArray : public host::Array<double> {
public:
    MDoubleArray();
    MDoubleArray(const MDoubleArray& other);
    /// `initialSize` copies of one value.
    MDoubleArray(unsigned int initialSize, double initialValue = 0.0);
    ~MDoubleArray();
    MDoubleArray& operator=(const MDoubleArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MDoubleArray& source);
};
