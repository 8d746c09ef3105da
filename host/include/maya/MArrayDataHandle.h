/// A place in a node's data block that holds an array: a cursor over its elements.
#pragma once

#include <maya/MDataHandle.h>

class MHOST_EXPORT MArrayDataHandle {
public:
    MArrayDataHandle(const MDataHandle& handle, MStatus* ReturnStatus = NULL);
    MArrayDataHandle(const MArrayDataHandle& other);
    MArrayDataHandle& operator=(const MArrayDataHandle& other);
    ~MArrayDataHandle();

    /// The element at the cursor; inputValue brings it up to date first.
    MDataHandle inputValue(MStatus* ReturnStatus = NULL);
    MDataHandle outputValue(MStatus* ReturnStatus = NULL);

    /// Past the last element it fails with kFailure.
    MStatus next();
    unsigned int elementCount(MStatus* ReturnStatus = NULL);
    /// Logical index of the element at the cursor.
    unsigned int elementIndex(MStatus* ReturnStatus = NULL);
    /// By logical index; fails when there is no such element.
    MStatus jumpToElement(unsigned int index);
    /// By physical index.
    MStatus jumpToArrayElement(unsigned int position);
    MStatus setClean();
    MStatus setAllClean();

private:
    host::graph::Slot* slot_;
    unsigned int position_;
    friend class MDataBlock;
};
