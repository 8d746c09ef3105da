/// An array of double precision numbers.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<double>;

class MHOST_EXPORT MDoubleArray : public host::Array<double> {
public:
    MDoubleArray();
    MDoubleArray(const MDoubleArray& other);
    /// `initialSize` elements of one value.
    MDoubleArray(unsigned int initialSize, double initialValue = 0.0);
    ~MDoubleArray();
    MDoubleArray& operator=(const MDoubleArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MDoubleArray& source);
};
