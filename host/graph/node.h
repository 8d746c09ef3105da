/// A node of the dependency graph: its name, its slots, the instance that a plug-in gave it.
///
/// A node is created outside the scene and enters it by `Scene::add`. One that was deleted may be
/// kept by the undo queue: alive, but not valid. Nodes of types whose plug-in went keep their
/// attributes and values under the type "unknown".
#pragma once

#include "host/graph/node_type.h"
#include "host/graph/slot.h"

#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

namespace host::graph {

class DagNode;
class Scene;

class MHOST_EXPORT Node : public Object, public NodeFace {
public:
    explicit Node(const NodeTypeRef& type);

    MString name() const override { return name_.c_str(); }
    MString type_name() const override { return type_->name.c_str(); }
    bool is_valid() const override { return in_scene_; }
    NodeFace* as_node() override { return this; }
    virtual DagNode* as_dag_node() { return nullptr; }

    const std::string& name_text() const { return name_; }
    const NodeType& node_type() const { return *type_; }
    const NodeTypeRef& type_ref() const { return type_; }
    MPxNode* user_node() const { return user_node_; }

    /// An attribute of the type or one that was added to this node, by long or short name.
    Attribute* find_attribute(std::string_view name) const;
    bool owns(const Attribute& attribute) const;
    /// Attributes that only this node has, in order of addition.
    const std::vector<Ref<Attribute>>& dynamic_attributes() const { return dynamic_; }
    /// Fails when the name is taken.
    MStatus add_attribute(const Ref<Attribute>& attribute);
    /// Only dynamic ones; their slot is put aside, so that plugs on it do no harm.
    MStatus remove_attribute(const Attribute& attribute);

    /// The slot of an attribute. Null when the attribute is not this node's, or lies below an array
    /// (which element is meant?).
    Slot* slot(const Attribute& attribute);
    /// The same if it exists already: a node makes slots on first use.
    Slot* existing_slot(const Attribute& attribute) const;
    Slot* slot(std::string_view attribute_name);
    /// A plug by its path as scripts write it: "translate", "tx", "pnts[3].pntx", "pt[3]". Elements
    /// are made when `make` says so. Null when there is no such plug.
    Slot* find_plug(std::string_view path, bool make = true);
    /// Roots of all slots made so far, in the order of making.
    const std::vector<Slot*>& slots() const { return order_; }

    /// The value of nodeState: 0 normal, 1 has no effect, 2 blocking.
    int state();

    bool is_default = false; ///< came with the scene and stays: the standard cameras
    bool locked = false;

protected:
    ~Node() override;

private:
    friend class Scene;
    friend class PluginNodes;
    std::string name_;
    NodeTypeRef type_;
    bool in_scene_ = false;
    uint64_t order_in_scene_ = 0;
    MPxNode* user_node_ = nullptr;
    std::vector<Ref<Attribute>> dynamic_;
    std::unordered_map<const Attribute*, std::unique_ptr<Slot>> slots_;
    std::vector<Slot*> order_;
    std::vector<std::unique_ptr<Slot>> put_aside_;
    std::vector<Ref<Attribute>> put_aside_attributes_;
};

/// The node, attribute or slot that an object handle refers to; null for other objects.
MHOST_EXPORT Node* node_of(const MObject& object);
MHOST_EXPORT Attribute* attribute_of(const MObject& object);

} // namespace host::graph
