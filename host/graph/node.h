/// A node of the dependency graph: its name, its slots and, for plug-in types, the plug-in's
/// instance.
///
/// A node is created outside the scene and enters it by `Scene::add`. A deleted node that the undo
/// queue still holds is alive but not valid. When a plug-in is unloaded, nodes of its types become
/// nodes of type "unknown"; they keep their attributes and values.
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
    MPxNode* user_node() const { return user_node_; }

    /// Finds an attribute of the node's type or a dynamic attribute by long or short name.
    Attribute* find_attribute(std::string_view name) const;
    bool owns(const Attribute& attribute) const;
    /// Attributes added to this node only, in order of addition.
    const std::vector<Ref<Attribute>>& dynamic_attributes() const { return dynamic_; }
    /// Fails if the name is taken.
    MStatus add_attribute(const Ref<Attribute>& attribute);
    /// Removes a dynamic attribute. Its slot is kept aside, so that plugs on it stay usable.
    MStatus remove_attribute(const Attribute& attribute);

    /// The slot of an attribute, created on first use. NULL if the node does not have the attribute
    /// or if it belongs to an array element (an index would be needed).
    Slot* slot(const Attribute& attribute);
    /// Like `slot`, but returns NULL instead of creating the slot.
    Slot* existing_slot(const Attribute& attribute) const;
    Slot* slot(std::string_view attribute_name);
    /// Finds a plug by its path: "translate", "tx", "pnts[3].pntx", "pt[3]". Missing array elements
    /// are created if `make` is true. Returns NULL if there is no such plug.
    Slot* find_plug(std::string_view path, bool make = true);
    /// Root slots in order of creation.
    const std::vector<Slot*>& slots() const { return order_; }

    /// The nodeState attribute: 0 normal, 1 has no effect, 2 blocking.
    int state();

    bool is_default = false; ///< created with the scene and not deletable: the standard cameras
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

/// The node, attribute or slot that a handle refers to; NULL if the handle refers to something
/// else.
MHOST_EXPORT Node* node_of(const MObject& object);
MHOST_EXPORT Attribute* attribute_of(const MObject& object);

} // namespace host::graph
