/// An array of single precision numbers, such as the u or v values of a UV set. The common
/// behaviour of arrays stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<float>;

class MHOST_EXPORT MFloatArray : public host::Array<float> {
public:
    MFloatArray();
    MFloatArray(const MFloatArray& other);
    /// `initialSize` elements of one value.
    MFloatArray(unsigned int initialSize, float initialValue = 0.0f);
    ~MFloatArray();
    MFloatArray& operator=(const MFloatArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MFloatArray& source);
};
