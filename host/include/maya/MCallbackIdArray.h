/// An array of callback ids. See HostArray.h for members common to all arrays.
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

    /// Replaces the contents by those of `source`.
    MStatus copy(const MCallbackIdArray& source);
};
