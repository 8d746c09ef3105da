/// The scene: its nodes, their names, hierarchy and connections.
///
/// There is one scene at a time. Undoable changes go through edits (edits.h) and `Scene::perform`;
/// the functions here implement those edits and record nothing themselves. The script language and
/// the file readers use this header, edits.h, selection.h, undo.h, commands.h and plugins.h.
#pragma once

#include "host/graph/dag.h"
#include "host/graph/evaluate.h"
#include "host/graph/selection.h"

#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

namespace host::graph {

class Edit;

/// A connection removed together with a node, and the value that the destination had by itself
/// (Links::own_value).
struct BrokenConnection {
    Ref<Node> source_node, destination_node;
    Slot* source;
    Slot* destination;
    PlugValue own_value;
};

/// Everything needed to restore a removed node.
struct Removal {
    struct Place {
        Ref<DagNode> parent; ///< NULL: top level
        Ref<DagNode> child;
        size_t index; ///< position among the parent's children
        size_t rank;  ///< position of the parent among the child's parents
    };
    std::vector<Ref<Node>> nodes; ///< the node and its descendants, parents first
    std::vector<Place> places;
    std::vector<BrokenConnection> connections;
    Selection selection; ///< the selection before the removal
    bool selection_changed = false;
};

class MHOST_EXPORT Scene {
public:
    static Scene& current();

    // === Types ===============================================================================
    /// Errors: kInvalidParameter if the name or a non-zero id is taken.
    MStatus add_type(const NodeTypeRef& type);
    /// Removes a type. Existing nodes of it become unknown nodes, which keep names, values and
    /// connections but compute nothing.
    MStatus remove_type(const std::string& name);
    NodeTypeRef find_type(const std::string& name) const;
    NodeTypeRef find_type(unsigned int id) const;

    // === Nodes ===============================================================================
    /// Creates a node outside the scene under a name that is free now; if `name` is empty, under a
    /// name derived from its type. Returns NULL if the type is unknown or its creator fails.
    Ref<Node> make_node(const NodeTypeRef& type, const std::string& name = "");
    /// Adds a node to the scene; a DAG node below `parent`, or at the top level if NULL.
    MStatus add(Node& node, DagNode* parent);
    enum class RemovalCause { deletion, undo_of_creation };
    /// Removes a node and everything below it; calls the pre-removal callbacks first, except for
    /// the undo of a creation in a strict host.
    Removal remove(Node& node, RemovalCause cause = RemovalCause::deletion);
    void restore(const Removal& removal);

    /// All nodes in the order in which they entered the scene.
    const std::vector<Ref<Node>>& nodes() const;
    const std::vector<DagNode*>& top_level() const { return top_level_; }
    /// Empties the scene, the selection and the undo queue and creates the default nodes again.
    void clear();

    // === Names ===============================================================================
    /// Returns `wanted` if it is free for the node `of` below `parent`, else a name with the
    /// trailing number counted up. Names of DAG nodes need to be unique among siblings only.
    std::string free_name(const std::string& wanted, const Node* of, const DagNode* parent) const;
    /// Returns a name that no node of the scene has.
    std::string unused_name(const std::string& wanted) const {
        return free_name(wanted, nullptr, nullptr);
    }
    /// Replaces characters that are not allowed in names by underscores; empty becomes "node".
    static std::string legal_name(const std::string& wanted);
    /// Renames a node and returns the name actually given.
    std::string rename(Node& node, const std::string& wanted);
    /// All nodes with a name, in the order in which they received it.
    const std::vector<Node*>& named(const std::string& name) const;
    /// Finds a node by name or path ("a", "|a|b", "b|c"); NULL if there is no match or more than
    /// one.
    Node* find(std::string_view name_or_path) const;
    /// All DAG paths and nodes that match a name or path.
    std::vector<SelectionItem> find_all(std::string_view name_or_path) const;
    /// The shortest path that identifies the node uniquely: "shape" or "group|shape".
    std::string partial_name(const DagPath& path) const;
    /// The same for the path through the node's first parents. Cost: constant if no other node has
    /// the node's name and the scene has no instances.
    std::string partial_name(const DagNode& node) const;
    /// The same for the path of an item that is_dag().
    std::string partial_name(const SelectionItem& item) const;

    // === Connections and hierarchy ===========================================================
    /// Errors: kFailure if the destination is already connected, locked or not writable;
    ///         kInvalidParameter if the types are incompatible or a plug is not connectable.
    MStatus connect(Slot& source, Slot& destination);
    /// The destination keeps its current value, or the value that was set while it was connected.
    MStatus disconnect(Slot& source, Slot& destination);
    /// `index`: position among the new siblings; clamped to the end.
    MStatus reparent(DagNode& node, DagNode* parent, size_t index);
    /// Cost: constant if the scene has no instances.
    bool has_one_path(const DagNode& node) const;
    MStatus add_instance(DagNode& node, DagNode& parent);
    MStatus remove_instance(DagNode& node, DagNode& parent);
    /// Copies a node and everything below it, without connections. Meshes are copied with their
    /// tweaks (pnts) if `with_tweaks` is true (docs/decisions/duplicate-and-tweaks.md). The copies
    /// are not in the scene yet: the caller adds each one below its `parent`.
    struct Copy {
        Ref<Node> node;
        DagNode* parent; ///< a node of the scene or another copy
    };
    MStatus duplicate(Node& node, bool with_tweaks, std::vector<Copy>& copies);
    /// Nodes that create and modify the mesh of `shape`. `exclusive_only`: without those that also
    /// feed nodes outside this history.
    std::vector<Node*> history_of(Node& shape, bool exclusive_only) const;

    // === Selection ===========================================================================
    const Selection& selection() const { return selection_; }
    void select(const Selection& selection) { selection_ = selection; }

    // === Edits ========================================================================
    /// Applies an edit and records it if the undo queue is recording.
    MStatus perform(std::unique_ptr<Edit> edit);
    /// Applies an edit for a call of the public interface outside a modifier. A strict host does
    /// not record it.
    MStatus perform_api_call(std::unique_ptr<Edit> edit);
    bool records_history = true; ///< keep construction history: "constructionHistory -toggle"
    bool is_modified = false;

private:
    Ref<Node> copy_node(Node& original, bool with_tweaks, bool new_name);
    MStatus copy_children(DagNode& from, DagNode& to, bool with_tweaks, std::vector<Copy>& copies);
    Scene();
    void make_default_nodes();
    void collect_subtree(Node& node, std::vector<Ref<Node>>& nodes) const;
    void enter(Node& node);
    void leave(Node& node);
    void attach(DagNode& node, DagNode* parent, size_t index, size_t rank = SIZE_MAX);
    void detach(DagNode& node, DagNode* parent);
    void unindex(Node& node);
    bool name_is_free(const std::string& name, const Node* of, const DagNode* parent) const;
    void detach_recorded(DagNode& child, DagNode* parent, Removal& removal);
    void break_connections(Node& node, std::vector<BrokenConnection>& broken);
    void join(Slot& source, Slot& destination);
    void sever(Slot& source, Slot& destination);

    std::vector<NodeTypeRef> types_;
    std::unordered_map<std::string, NodeTypeRef> types_by_name_;
    std::unordered_map<unsigned int, NodeTypeRef> types_by_id_;
    std::map<uint64_t, Ref<Node>> entered_;
    uint64_t entered_count_ = 0;
    mutable std::vector<Ref<Node>> list_; ///< cached contents of `entered_`
    mutable bool list_is_stale_ = true;
    std::vector<DagNode*> top_level_;
    /// Parents beyond the first, over all nodes; 0 if nothing is instanced.
    size_t extra_parents_ = 0;
    std::unordered_map<std::string, std::vector<Node*>> by_name_;
    /// Per stem: all numbers below this one are taken, so the search for a free number starts here.
    mutable std::unordered_map<std::string, unsigned int> next_number_;
    Selection selection_;
};

} // namespace host::graph
