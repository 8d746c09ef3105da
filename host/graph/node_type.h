/// A node type: its attributes, which attributes affect which, and the behaviour of its nodes.
///
/// Built-in types and plug-in types are represented alike. A node keeps its type alive.
#pragma once

#include "host/graph/attribute.h"

#include <maya/MStatus.h>

#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class MPxNode;

namespace host::graph {

class Node;
class Slot;
class NodeType;
using NodeTypeRef = std::shared_ptr<NodeType>;

class MHOST_EXPORT NodeType {
public:
    NodeType(const std::string& name, unsigned int id, MFn::Type function_set)
        : name(name), id(id), function_set(function_set) {}

    /// Fails if the long or short name of the attribute or of one of its children is taken.
    MStatus add(const Ref<Attribute>& attribute);
    /// Declares that changing `when_changes` makes `is_affected` dirty. Both must have been added
    /// before.
    MStatus affects(const Attribute& when_changes, Attribute& is_affected);
    /// Adds all attributes and dependencies of another type.
    MStatus inherit(const NodeType& other);

    /// Finds an attribute or child attribute by long or short name; NULL if there is none.
    Attribute* find(std::string_view name) const;
    /// Whether the type has this attribute, at the top level or as a child.
    bool owns(const Attribute& attribute) const;
    const std::vector<Ref<Attribute>>& attributes() const { return attributes_; }
    const std::vector<Attribute*>& affected_by(const Attribute& attribute) const;
    /// Whether the attribute is computed, that is, affected by another one.
    bool is_output(const Attribute& attribute) const;
    const std::vector<Attribute*>& outputs() const { return outputs_; }

    std::string name;
    unsigned int id;
    MFn::Type function_set;
    std::string plugin; ///< name of the plug-in that registered the type; empty for built-in types
    std::string base_name; ///< stem of the names of new nodes; empty: the type's name
    std::string classification;
    bool dag = false;
    bool shape = false;
    bool is_unknown = false; ///< placeholder for a type whose plug-in was unloaded

    /// Creates the node object; NULL: a plain dependency node or DAG node, depending on `dag`.
    Ref<Node> (*make)(const NodeTypeRef& type) = nullptr;
    /// Computes an output of a built-in node and marks it clean on success.
    MStatus (*compute)(Node& node, Slot& output) = nullptr;
    /// Redirects values written to an output (see `value_target`); NULL: the output stores them
    /// itself.
    Slot& (*write_target)(Node& node, Slot& output) = nullptr;
    /// Creates the plug-in's instance for a node.
    void* (*creator)() = nullptr;

    /// All nodes of this type in memory, including deleted ones held by the undo queue.
    std::vector<Node*> instances;

private:
    MStatus add_names(Attribute& attribute);
    std::vector<Ref<Attribute>> attributes_;
    std::unordered_map<std::string, Attribute*> by_name_;
    std::unordered_map<const Attribute*, std::vector<Attribute*>> affects_;
    std::vector<Attribute*> outputs_;
};

/// Attributes that every dependency node has.
struct BaseAttributes {
    Ref<Attribute> message;
    Ref<Attribute> caching;
    Ref<Attribute> state;
    Ref<Attribute> is_historically_interesting;
};
MHOST_EXPORT const BaseAttributes& base_attributes();

/// Creates a type that has only the base attributes.
MHOST_EXPORT NodeTypeRef make_node_type(const std::string& name, unsigned int id,
                                        MFn::Type function_set);

} // namespace host::graph
