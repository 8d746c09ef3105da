/// Iterates over a copy of a selection list, in list order. With a filter, items that do not match
/// are searched downwards: a transform yields all matching shapes below it, including intermediate
/// objects.
#pragma once

#include <maya/MFn.h>
#include <maya/MSelectionList.h>

#include <vector>

class MHOST_EXPORT MItSelectionList {
public:
    enum ItemType { kUnknownItem = -1, kDNselectionItem, kDagSelectionItem, kPlugSelectionItem };

    MItSelectionList(const MSelectionList& list, MFn::Type filter = MFn::kInvalid,
                     MStatus* ReturnStatus = NULL);
    virtual ~MItSelectionList();

    bool isDone(MStatus* ReturnStatus = NULL) const;
    MStatus next();
    MStatus reset();
    /// Sets the filter and restarts at the first match.
    MStatus setFilter(MFn::Type filter = MFn::kInvalid);
    ItemType itemType(MStatus* ReturnStatus = NULL) const;
    bool hasComponents(MStatus* ReturnStatus = NULL) const;

    MStatus getDependNode(MObject& depNode) const;
    MStatus getDagPath(MDagPath& dagPath) const;
    MStatus getDagPath(MDagPath& dagPath, MObject& component) const;
    MStatus getPlug(MPlug& plug) const;
    MStatus getStrings(MStringArray& array) const;

private:
    MItSelectionList(const MItSelectionList&);
    MItSelectionList& operator=(const MItSelectionList&);
    MSelectionList list_;
    MSelectionList matches_;
    unsigned int position_;
};
