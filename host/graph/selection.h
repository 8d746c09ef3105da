/// Selectable items: nodes, DAG nodes by path, plugs, components of shapes.
#pragma once

#include "host/graph/dag.h"

#include <vector>

namespace host::graph {

enum class ComponentKind { vertex, edge, face, uv };

/// Vertices, edges, faces or UVs of a mesh, by ascending id.
class MHOST_EXPORT Component : public Object {
public:
    Component(ComponentKind kind, std::vector<int> ids);
    ComponentKind kind() const { return kind_; }
    const std::vector<int>& ids() const { return ids_; }

private:
    ~Component() override;
    ComponentKind kind_;
    std::vector<int> ids_;
};

/// A selected thing. A DAG node that has one path is stored without it, so that items of deeply
/// nested nodes cost no more than others.
struct MHOST_EXPORT SelectionItem {
    Ref<Node> node;
    Slot* plug = nullptr;     ///< of `node`, if the item is a plug
    Ref<Component> component; ///< of the shape `node`

    SelectionItem() = default;
    /// The node, through its first parents if it has several paths.
    explicit SelectionItem(Node& node);
    /// The node at the end of a path that is not empty.
    explicit SelectionItem(const DagPath& path);

    bool is_dag() const { return node && node->as_dag_node() != nullptr; }
    /// Empty unless the node is a DAG node.
    DagPath path() const;
    /// Replaces the node, a DAG node, by one of its children.
    void descend(DagNode& child);
    bool same_thing(const SelectionItem& other) const;

private:
    DagPath path_; ///< empty if the node is no DAG node, or had one path when it was stored
};

using Selection = std::vector<SelectionItem>;

/// Implementation of MSelectionList, which the public header only declares.
struct SelectionItems {
    Selection list;
};

/// Resolves a name as written in scripts: node, path ("|a|b", "a|b"), plug ("a.tx"), components
/// ("a.vtx[0:3]", "a.f[*]"), with the wildcards * and ?. Empty if nothing matches. Matches of
/// wildcards are in order of node creation.
MHOST_EXPORT Selection resolve(const std::string& pattern);
/// The names of an item as listed by `ls -sl`: shortest unique name, with plug or components
/// appended.
MHOST_EXPORT std::vector<std::string> names_of(const SelectionItem& item, bool full = false);

} // namespace host::graph
