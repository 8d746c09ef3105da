/// A type of node: its attributes, which of them affect which, and how nodes of it behave.
///
/// The host's own types and those of plug-ins are alike from here on. A node keeps its type alive.
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

    /// Fails when the long or short name of the attribute or of a child is taken.
    MStatus add(const Ref<Attribute>& attribute);
    /// Declares that a change of one attribute makes the other one's value stale. Both must have
    /// been added.
    MStatus affects(const Attribute& when_changes, Attribute& is_affected);
    /// Takes over everything another type declares.
    MStatus inherit(const NodeType& other);

    /// By long or short name, children included; null when unknown.
    Attribute* find(std::string_view name) const;
    /// An attribute of this type, or a child of one.
    bool owns(const Attribute& attribute) const;
    const std::vector<Ref<Attribute>>& attributes() const { return attributes_; }
    const std::vector<Attribute*>& affected_by(const Attribute& attribute) const;
    /// Something affects it: its value is computed.
    bool is_output(const Attribute& attribute) const;
    const std::vector<Attribute*>& outputs() const { return outputs_; }

    std::string name;
    unsigned int id;
    MFn::Type function_set;
    std::string plugin;    ///< who registered it; empty for the host's own
    std::string base_name; ///< new nodes are called so, with a number; empty: as the type
    std::string classification;
    bool dag = false;
    bool shape = false;
    bool is_unknown = false; ///< the plug-in that gave it life is gone

    /// Makes the bare node; null: a plain dependency, DAG or mesh node as the flags say.
    Ref<Node> (*make)(const NodeTypeRef& type) = nullptr;
    /// Computes an output of one of the host's own nodes; cleans it when it could.
    MStatus (*compute)(Node& node, Slot& output) = nullptr;
    /// Where a value goes that somebody writes to an output; null: the output's own slot holds it.
    Slot& (*write_target)(Node& node, Slot& output) = nullptr;
    /// Makes a plug-in's instance.
    void* (*creator)() = nullptr;

    /// All nodes of the type that are in memory, deleted ones that wait for undo included.
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

/// A type with the base attributes and nothing else.
MHOST_EXPORT NodeTypeRef make_node_type(const std::string& name, unsigned int id,
                                        MFn::Type function_set);

} // namespace host::graph
