/// The scene: which nodes there are, how they are called, how they hang together.
///
/// There is one scene at a time. What changes it in a way that a user can take back goes through
/// edits (edits.h) and `Scene::perform`; the functions here are what edits are made of, and do not
/// record anything. The script language and the file readers are written against this header,
/// edits.h, selection.h, undo.h, commands.h and plugins.h.
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

/// A connection that went with a removed node, and what lay under it.
struct BrokenConnection {
    Ref<Node> source_node, destination_node;
    Slot* source;
    Slot* destination;
    Value under;
};

/// What leaving the scene took apart; restoring puts it together again.
struct Removal {
    struct Place {
        Ref<DagNode> parent; ///< null: top level
        Ref<DagNode> child;
        size_t index; ///< among the parent's children
        size_t rank;  ///< of the parent among the child's parents
    };
    std::vector<Ref<Node>> nodes; ///< the node and what went with it, top down
    std::vector<Place> places;
    std::vector<BrokenConnection> connections;
    Selection selection; ///< before the removal
    bool selection_changed = false;
};

class MHOST_EXPORT Scene {
public:
    static Scene& current();

    // === Types ===============================================================================
    /// Fails with kInvalidParameter when the name or a non-zero id is taken.
    MStatus add_type(const NodeTypeRef& type);
    /// Nodes of the type that exist become unknown ones: they keep names, values and connections
    /// and compute nothing. Success with live nodes.
    MStatus remove_type(const std::string& name);
    NodeTypeRef find_type(const std::string& name) const;
    NodeTypeRef find_type(unsigned int id) const;
    const std::vector<NodeTypeRef>& types() const { return types_; }

    // === Nodes ===============================================================================
    /// A node outside the scene with a name that is free now. Null when the type is unknown or its
    /// creator failed. An empty name gives the type's own.
    Ref<Node> make_node(const NodeTypeRef& type, const std::string& name = "");
    /// Enters the scene, DAG nodes below a parent or at the top level.
    MStatus add(Node& node, DagNode* parent);
    /// Leaves the scene, with everything below it; fires pre-removal callbacks first.
    Removal remove(Node& node);
    void restore(const Removal& removal);

    /// All nodes in the order in which they entered.
    const std::vector<Ref<Node>>& nodes() const;
    const std::vector<DagNode*>& top_level() const { return top_level_; }
    /// Empties the scene and makes the default nodes anew. Undo and selection are forgotten.
    void clear();

    // === Names ===============================================================================
    /// A name that nobody has: as wanted, or with the number at its end counted up. Names of DAG
    /// nodes need to be unique among their siblings only.
    std::string free_name(const std::string& wanted, const Node* of, const DagNode* parent) const;
    /// The same for a name that no node at all may have.
    std::string unused_name(const std::string& wanted) const {
        return free_name(wanted, nullptr, nullptr);
    }
    /// Characters that names cannot have become underscores; empty becomes "node".
    static std::string legal_name(const std::string& wanted);
    /// Gives the name the node got.
    std::string rename(Node& node, const std::string& wanted);
    /// Nodes that go by a name, in the order in which they got it.
    const std::vector<Node*>& named(const std::string& name) const;
    /// The one node that a name or path ("a", "|a|b", "b|c") means; null when none or several do.
    Node* find(std::string_view name_or_path) const;
    /// All DAG paths and nodes that a name or path means.
    std::vector<SelectionItem> find_all(std::string_view name_or_path) const;
    /// The shortest path that means only this one: "shape" or "group|shape".
    std::string partial_name(const DagPath& path) const;

    // === Connections and hierarchy ===========================================================
    /// kFailure when the destination is fed already, locked or not writable; kInvalidParameter when
    /// the types do not go together or one of the plugs cannot be connected.
    MStatus connect(Slot& source, Slot& destination);
    /// The destination keeps what it holds, or what was set while it was fed.
    MStatus disconnect(Slot& source, Slot& destination);
    /// `index`: place among the new siblings, at the end when too large.
    MStatus reparent(DagNode& node, DagNode* parent, size_t index);
    MStatus add_instance(DagNode& node, DagNode& parent);
    MStatus remove_instance(DagNode& node, DagNode& parent);
    /// Copies a node and what is below it, without connections. Shapes copy what they hold; the
    /// tweaks of meshes come along when `with_tweaks` says so
    /// (docs/decisions/duplicate-and-tweaks.md). Not in the scene yet: every node of the answer is
    /// to be added below its parent.
    struct Copy {
        Ref<Node> node;
        DagNode* parent; ///< an original's parent, or a copy
    };
    MStatus duplicate(Node& node, bool with_tweaks, std::vector<Copy>& copies);
    /// Nodes upstream of a node that nothing but the node's removal keeps from being useless:
    /// makers and modifiers of a mesh whose outputs lead nowhere else.
    std::vector<Node*> history_of(Node& shape, bool exclusive_only) const;

    // === Selection ===========================================================================
    const Selection& selection() const { return selection_; }
    void select(const Selection& selection) { selection_ = selection; }

    // === Doing things ========================================================================
    /// Applies an edit and hands it to the undo queue when somebody records.
    MStatus perform(std::unique_ptr<Edit> edit);
    bool records_history = true; ///< construction history, "constructionHistory -toggle"
    bool is_modified = false;

private:
    Scene();
    void make_default_nodes();
    void collect_subtree(Node& node, std::vector<Ref<Node>>& nodes) const;
    void enter(Node& node);
    void leave(Node& node);
    void attach(DagNode& node, DagNode* parent, size_t index, size_t rank = SIZE_MAX);
    void detach(DagNode& node, DagNode* parent);
    void unindex(Node& node);
    bool name_is_free(const std::string& name, const Node* of, const DagNode* parent) const;
    void take_place(DagNode& child, DagNode* parent, Removal& removal);
    void break_connections(Node& node, std::vector<BrokenConnection>& broken);
    void join(Slot& source, Slot& destination);
    void sever(Slot& source, Slot& destination);

    std::vector<NodeTypeRef> types_;
    std::unordered_map<std::string, NodeTypeRef> types_by_name_;
    std::unordered_map<unsigned int, NodeTypeRef> types_by_id_;
    std::map<uint64_t, Ref<Node>> entered_;
    uint64_t entered_count_ = 0;
    mutable std::vector<Ref<Node>> list_; ///< of what entered_ holds, made when somebody asks
    mutable bool list_is_stale_ = true;
    std::vector<DagNode*> top_level_;
    std::unordered_map<std::string, std::vector<Node*>> by_name_;
    /// Per stem: every number below this one is taken, so that counting up need not start over.
    mutable std::unordered_map<std::string, unsigned int> next_number_;
    Selection selection_;
};

} // namespace host::graph
