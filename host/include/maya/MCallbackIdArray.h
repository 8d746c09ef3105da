/// An array of callback ids.
/// What all arrays have in common stands in HostArray.h.
#pragma once

#include <maya/HostArray.h>
#include <maya/MMessage.h>

extern template class MHOST_EXPORT host::Array<MCallbackId>;

class MHOST_EXPORT MCallbackIdArray : public host::Array<MCallbackId> {
public:
    MCallbackIdArray();
    MCallbackIdArray(const MCallbackIdArray& other);
    MCallbackIdArray(unsigned int initialSize, MCallbackId initialValue = 0);
    ~MCallbackIdArray();
    MCallbackIdArray& operator=(const MCallbackIdArray& other);

    /// Makes this array equal to another.
    MStatus copy(const MCallbackIdArray& source);
};
