/// An array of single precision vectors.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>
#include <maya/MFloatVector.h>

extern template class MHOST_EXPORT host::Array<MFloatVector>;

class MHOST_EXPORT MFloatVectorArray : public host::Array<MFloatVector> {
public:
    MFloatVectorArray();
    MFloatVectorArray(const MFloatVectorArray& other);
    /// `initialSize` elements of one value.
    MFloatVectorArray(unsigned int initialSize, const MFloatVector& initialValue = MFloatVector());
    ~MFloatVectorArray();
    MFloatVectorArray& operator=(const MFloatVectorArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MFloatVectorArray& source);
};
