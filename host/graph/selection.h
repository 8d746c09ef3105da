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

struct SelectionItem {
    Ref<Node> node;
    DagPath path;             ///< of DAG nodes only
    Slot* plug = nullptr;     ///< of `node`, if the item is a plug
    Ref<Component> component; ///< of the shape at the end of `path`

    bool same_thing(const SelectionItem& other) const;
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
MHOST_EXPORT SelectionItem item_of(Node& node);
/// The names of an item as listed by `ls -sl`: shortest unique name, with plug or components
/// appended.
MHOST_EXPORT std::vector<std::string> names_of(const SelectionItem& item, bool full = false);

} // namespace host::graph
