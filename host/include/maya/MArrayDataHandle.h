/// A handle to an array attribute in a node's data block: a cursor over the array's elements.
#pragma once

#include <maya/MDataHandle.h>

class MHOST_EXPORT MArrayDataHandle {
public:
    MArrayDataHandle(const MDataHandle& handle, MStatus* ReturnStatus = NULL);
    MArrayDataHandle(const MArrayDataHandle& other);
    MArrayDataHandle& operator=(const MArrayDataHandle& other);
    ~MArrayDataHandle();

    /// The current element; inputValue evaluates it first.
    MDataHandle inputValue(MStatus* ReturnStatus = NULL);
    MDataHandle outputValue(MStatus* ReturnStatus = NULL);

    /// Errors: kFailure past the last element.
    MStatus next();
    unsigned int elementCount(MStatus* ReturnStatus = NULL);
    /// Logical index of the current element.
    unsigned int elementIndex(MStatus* ReturnStatus = NULL);
    /// Moves to an element by logical index; fails if it does not exist.
    MStatus jumpToElement(unsigned int index);
    /// Moves to an element by physical index.
    MStatus jumpToArrayElement(unsigned int position);
    MStatus setClean();
    MStatus setAllClean();

private:
    host::graph::Slot* slot_;
    unsigned int position_;
    friend class MDataBlock;
};
