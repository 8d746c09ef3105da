/// MSelectionList and MItSelectionList.
#include "host/base/fault.h"
#include "host/graph/dag.h"
#include "host/graph/selection.h"

#include <maya/MItSelectionList.h>
#include <maya/MSelectionList.h>
#include <maya/MStringArray.h>

#include <algorithm>

using host::pass_fault;
using host::report;
using host::graph::Component;
using host::graph::DagNode;
using host::graph::Node;
using host::graph::SelectionItem;
using host::graph::SelectionItems;

MSelectionList::MSelectionList() : items_(new SelectionItems) {}
MSelectionList::MSelectionList(const MSelectionList& other)
    : items_(new SelectionItems(*other.items_)) {}
MSelectionList& MSelectionList::operator=(const MSelectionList& other) {
    *items_ = *other.items_;
    return *this;
}
MSelectionList::~MSelectionList() = default;

SelectionItems& MSelectionList::host_items() { return *items_; }
const SelectionItems& MSelectionList::host_items() const { return *items_; }

namespace {

void append(SelectionItems& items, const SelectionItem& item, bool merge) {
    if (merge)
        for (const SelectionItem& held : items.list)
            if (held.same_thing(item))
                return;
    items.list.push_back(item);
}

} // namespace

MStatus MSelectionList::add(const MString& matchString, bool) {
    const MStatus status = pass_fault("MSelectionList::add");
    if (!status)
        return status;
    const host::graph::Selection found = host::graph::resolve(matchString.asChar());
    if (found.empty())
        return MS::kInvalidParameter;
    for (const SelectionItem& item : found)
        append(*items_, item, false);
    return status;
}

MStatus MSelectionList::add(const MObject& object, bool mergeWithExisting) {
    const MStatus status = pass_fault("MSelectionList::add");
    if (!status)
        return status;
    Node* const node = host::graph::node_of(object);
    if (node == nullptr)
        return MS::kInvalidParameter;
    append(*items_, SelectionItem(*node), mergeWithExisting);
    return status;
}

MStatus MSelectionList::add(const MDagPath& object, const MObject& component,
                            bool mergeWithExisting) {
    const MStatus status = pass_fault("MSelectionList::add");
    if (!status)
        return status;
    const host::graph::DagPath path = host::graph::to_graph(object);
    if (path.empty())
        return MS::kInvalidParameter;
    SelectionItem item(path);
    if (!component.isNull()) {
        if (!component.hasFn(MFn::kComponent))
            return MS::kInvalidParameter;
        item.component = static_cast<Component*>(component.host_object());
    }
    append(*items_, item, mergeWithExisting);
    return status;
}

MStatus MSelectionList::add(const MPlug& plug, bool mergeWithExisting) {
    const MStatus status = pass_fault("MSelectionList::add");
    if (!status)
        return status;
    if (plug.host_slot() == NULL)
        return MS::kInvalidParameter;
    SelectionItem item(plug.host_slot()->node());
    item.plug = plug.host_slot();
    append(*items_, item, mergeWithExisting);
    return status;
}

MStatus MSelectionList::remove(unsigned int index) {
    if (index >= items_->list.size())
        return MS::kInvalidParameter;
    items_->list.erase(items_->list.begin() + index);
    return MS::kSuccess;
}

MStatus MSelectionList::clear() {
    items_->list.clear();
    return MS::kSuccess;
}

unsigned int MSelectionList::length(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return static_cast<unsigned int>(items_->list.size());
}

bool MSelectionList::isEmpty(MStatus* ReturnStatus) const { return length(ReturnStatus) == 0; }

MStatus MSelectionList::getDagPath(unsigned int index, MDagPath& dagPath) const {
    const MStatus status = pass_fault("MSelectionList::getDagPath");
    if (!status)
        return status;
    if (index >= items_->list.size() || !items_->list[index].is_dag())
        return MS::kInvalidParameter;
    dagPath = host::graph::to_interface(items_->list[index].path());
    return status;
}

MStatus MSelectionList::getDagPath(unsigned int index, MDagPath& dagPath,
                                   MObject& component) const {
    const MStatus status = getDagPath(index, dagPath);
    if (status)
        component = MObject(items_->list[index].component.get());
    return status;
}

MStatus MSelectionList::getDependNode(unsigned int index, MObject& depNode) const {
    const MStatus status = pass_fault("MSelectionList::getDependNode");
    if (!status)
        return status;
    if (index >= items_->list.size())
        return MS::kInvalidParameter;
    depNode = MObject(items_->list[index].node.get());
    return status;
}

MStatus MSelectionList::getPlug(unsigned int index, MPlug& plug) const {
    const MStatus status = pass_fault("MSelectionList::getPlug");
    if (!status)
        return status;
    if (index >= items_->list.size() || items_->list[index].plug == nullptr)
        return MS::kInvalidParameter;
    plug = MPlug(items_->list[index].plug);
    return status;
}

MStatus MSelectionList::getSelectionStrings(MStringArray& array) const {
    array.clear();
    for (unsigned int i = 0; i < length(); ++i) {
        MStringArray names;
        getSelectionStrings(i, names);
        for (unsigned int k = 0; k < names.length(); ++k)
            array.append(names[k]);
    }
    return MS::kSuccess;
}

MStatus MSelectionList::getSelectionStrings(unsigned int index, MStringArray& array) const {
    if (index >= items_->list.size())
        return MS::kInvalidParameter;
    array.clear();
    for (const std::string& name : host::graph::names_of(items_->list[index]))
        array.append(name.c_str());
    return MS::kSuccess;
}

bool MSelectionList::hasItem(const MObject& object, MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return std::any_of(items_->list.begin(), items_->list.end(), [&](const SelectionItem& item) {
        return MObject(item.node.get()) == object;
    });
}

// === MItSelectionList ========================================================================

namespace {

/// Adds the item if it matches the filter, else all matching nodes below it.
void collect(const SelectionItem& item, MFn::Type filter, std::vector<SelectionItem>& found) {
    if (filter == MFn::kInvalid || item.node->has_fn(filter)) {
        found.push_back(item);
        return;
    }
    if (!item.is_dag())
        return;
    for (DagNode* child : item.node->as_dag_node()->children()) {
        SelectionItem below = item;
        below.plug = nullptr;
        below.component = nullptr;
        below.descend(*child);
        collect(below, filter, found);
    }
}

} // namespace

MItSelectionList::MItSelectionList(const MSelectionList& list, MFn::Type filter,
                                   MStatus* ReturnStatus)
    : list_(list), position_(0) {
    MStatus status = pass_fault("MItSelectionList::MItSelectionList");
    if (status)
        status = setFilter(filter);
    report(ReturnStatus, status);
}

MItSelectionList::~MItSelectionList() = default;

bool MItSelectionList::isDone(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return position_ >= matches_.length();
}

MStatus MItSelectionList::next() {
    position_ += 1;
    return MS::kSuccess;
}

MStatus MItSelectionList::reset() {
    position_ = 0;
    return MS::kSuccess;
}

MStatus MItSelectionList::setFilter(MFn::Type filter) {
    std::vector<SelectionItem> found;
    for (const SelectionItem& item : list_.host_items().list)
        collect(item, filter, found);
    matches_.host_items().list = std::move(found);
    return reset();
}

MItSelectionList::ItemType MItSelectionList::itemType(MStatus* ReturnStatus) const {
    report(ReturnStatus, isDone() ? MS::kFailure : MS::kSuccess);
    if (isDone())
        return kUnknownItem;
    const SelectionItem& item = matches_.host_items().list[position_];
    if (item.plug != nullptr)
        return kPlugSelectionItem;
    return item.is_dag() ? kDagSelectionItem : kDNselectionItem;
}

bool MItSelectionList::hasComponents(MStatus* ReturnStatus) const {
    report(ReturnStatus, isDone() ? MS::kFailure : MS::kSuccess);
    return !isDone() && static_cast<bool>(matches_.host_items().list[position_].component);
}

MStatus MItSelectionList::getDependNode(MObject& depNode) const {
    const MStatus status = pass_fault("MItSelectionList::getDependNode");
    return status ? matches_.getDependNode(position_, depNode) : status;
}

MStatus MItSelectionList::getDagPath(MDagPath& dagPath) const {
    const MStatus status = pass_fault("MItSelectionList::getDagPath");
    return status ? matches_.getDagPath(position_, dagPath) : status;
}

MStatus MItSelectionList::getDagPath(MDagPath& dagPath, MObject& component) const {
    const MStatus status = pass_fault("MItSelectionList::getDagPath");
    return status ? matches_.getDagPath(position_, dagPath, component) : status;
}

MStatus MItSelectionList::getPlug(MPlug& plug) const { return matches_.getPlug(position_, plug); }

MStatus MItSelectionList::getStrings(MStringArray& array) const {
    return matches_.getSelectionStrings(position_, array);
}
