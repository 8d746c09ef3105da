/// An array of points. See HostArray.h for members common to all arrays.
#pragma once

#include <maya/HostArray.h>
#include <maya/MPoint.h>

extern template class MHOST_EXPORT host::Array<MPoint>;

class MHOST_EXPORT MPointArray : public host::Array<MPoint> {
public:
    MPointArray();
    MPointArray(const MPointArray& other);
    /// `initialSize` copies of one value.
    MPointArray(unsigned int initialSize, const MPoint& initialValue = MPoint());
    ~MPointArray();
    MPointArray& operator=(const MPointArray& other);

    using host::Array<MPoint>::append;
    MStatus append(double x, double y, double z = 0.0, double w = 1.0);

    /// Replaces the contents by those of `source`.
    MStatus copy(const MPointArray& source);
};
