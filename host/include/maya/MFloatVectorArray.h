/// An array of single precision vectors. See HostArray.h for members common to all arrays.
#pragma once

#include <maya/HostArray.h>
#include <maya/MFloatVector.h>

extern template class MHOST_EXPORT host::Array<MFloatVector>;

class MHOST_EXPORT MFloatVectorArray : public host::Array<MFloatVector> {
public:
    MFloatVectorArray();
    MFloatVectorArray(const MFloatVectorArray& other);
    /// `initialSize` copies of one value.
    MFloatVectorArray(unsigned int initialSize, const MFloatVector& initialValue = MFloatVector());
    ~MFloatVectorArray();
    MFloatVectorArray& operator=(const MFloatVectorArray& other);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MFloatVectorArray& source);
};
