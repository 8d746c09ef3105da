/// The data of one node during compute.
#pragma once

#include <maya/MArrayDataHandle.h>
#include <maya/MDGContext.h>
#include <maya/MDataHandle.h>
#include <maya/MPlug.h>

class MHOST_EXPORT MDataBlock {
public:
    MDataBlock(const MDataBlock& other);
    MDataBlock& operator=(const MDataBlock& other);
    ~MDataBlock();

    /// Handle for reading; evaluates the attribute if it is connected and dirty.
    MDataHandle inputValue(const MPlug& plug, MStatus* ReturnStatus = NULL);
    MDataHandle inputValue(const MObject& attribute, MStatus* ReturnStatus = NULL);
    /// Handle for writing; does not evaluate, and holds the previous value.
    MDataHandle outputValue(const MPlug& plug, MStatus* ReturnStatus = NULL);
    MDataHandle outputValue(const MObject& attribute, MStatus* ReturnStatus = NULL);
    MArrayDataHandle inputArrayValue(const MPlug& plug, MStatus* ReturnStatus = NULL);
    MArrayDataHandle inputArrayValue(const MObject& attribute, MStatus* ReturnStatus = NULL);
    MArrayDataHandle outputArrayValue(const MPlug& plug, MStatus* ReturnStatus = NULL);
    MArrayDataHandle outputArrayValue(const MObject& attribute, MStatus* ReturnStatus = NULL);

    MStatus setClean(const MPlug& plug);
    MStatus setClean(const MObject& attribute);
    bool isClean(const MPlug& plug, MStatus* ReturnStatus = NULL);
    bool isClean(const MObject& attribute, MStatus* ReturnStatus = NULL);
    MDGContext context(MStatus* ReturnStatus = NULL);

    /// Internal.
    explicit MDataBlock(const MObject& node);

private:
    host::graph::Slot* find(const MObject& attribute, const char* point, MStatus& status) const;
    host::graph::Slot* find(const MPlug& plug, const char* point, MStatus& status) const;
    MObject node_;
};
