/// An array of single precision numbers, such as the u or v values of a UV set. See HostArray.h for
/// members common to all arrays.
#pragma once

#include <maya/HostArray.h>

extern template class MHOST_EXPORT host::Array<float>;

class MHOST_EXPORT MFloatArray : public host::Array<float> {
public:
    MFloatArray();
    MFloatArray(const MFloatArray& other);
    /// `initialSize` copies of one value.
    MFloatArray(unsigned int initialSize, float initialValue = 0.0f);
    ~MFloatArray();
    MFloatArray& operator=(const MFloatArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MFloatArray& source);
};
