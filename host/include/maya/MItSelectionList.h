/// Walks over a copy of a selection list, in its order. With a filter, an item of another type is
/// searched downwards: a transform gives its shapes of the type asked for, those of the groups
/// below it and intermediate ones included.
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
    /// Starts again, at the first match.
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
