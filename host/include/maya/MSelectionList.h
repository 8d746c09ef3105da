/// A list of nodes, DAG paths with optional components, and plugs, in order of addition.
#pragma once

#include <maya/MDagPath.h>
#include <maya/MObject.h>
#include <maya/MPlug.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

#include <memory>

class MStringArray;

namespace host {
namespace graph {
struct SelectionItems;
}
} // namespace host

class MHOST_EXPORT MSelectionList {
public:
    MSelectionList();
    MSelectionList(const MSelectionList& other);
    MSelectionList& operator=(const MSelectionList& other);
    virtual ~MSelectionList();

    /// Adds items by name, as written in scripts; wildcards may add several. Fails, without effect,
    /// if nothing matches.
    MStatus add(const MString& matchString, bool searchChildNamespaces = false);
    MStatus add(const MObject& object, bool mergeWithExisting = false);
    MStatus add(const MDagPath& object, const MObject& component = MObject::kNullObj,
                bool mergeWithExisting = false);
    MStatus add(const MPlug& plug, bool mergeWithExisting = false);
    MStatus remove(unsigned int index);
    MStatus clear();

    unsigned int length(MStatus* ReturnStatus = NULL) const;
    bool isEmpty(MStatus* ReturnStatus = NULL) const;

    /// On failure the output arguments are unchanged.
    MStatus getDagPath(unsigned int index, MDagPath& dagPath) const;
    MStatus getDagPath(unsigned int index, MDagPath& dagPath, MObject& component) const;
    MStatus getDependNode(unsigned int index, MObject& depNode) const;
    MStatus getPlug(unsigned int index, MPlug& plug) const;
    MStatus getSelectionStrings(MStringArray& array) const;
    MStatus getSelectionStrings(unsigned int index, MStringArray& array) const;
    bool hasItem(const MObject& object, MStatus* ReturnStatus = NULL) const;

    /// Internal.
    host::graph::SelectionItems& host_items();
    const host::graph::SelectionItems& host_items() const;

private:
    std::unique_ptr<host::graph::SelectionItems> items_;
};
