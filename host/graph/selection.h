/// What can be selected: nodes, DAG nodes by path, plugs, components of shapes.
#pragma once

#include "host/graph/dag.h"

#include <vector>

namespace host::graph {

enum class ComponentKind { vertex, edge, face, uv };

/// Parts of a mesh by id, in rising order.
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
    DagPath path;             ///< of DAG nodes
    Slot* plug = nullptr;     ///< of node, when a plug is meant
    Ref<Component> component; ///< of the shape at the end of the path

    bool same_thing(const SelectionItem& other) const;
};

using Selection = std::vector<SelectionItem>;

/// Resolves a name as scripts write it: node, path ("|a|b", "a|b"), plug ("a.tx"), components
/// ("a.vtx[0:3]", "a.f[*]"), with * and ? as wild cards. Empty when nothing matches. Wild cards
/// give matches in the order in which the nodes were made.
MHOST_EXPORT Selection resolve(const std::string& pattern);
MHOST_EXPORT SelectionItem item_of(Node& node);
/// The name of an item as `ls -sl` shows it: shortest unique name, plug or component appended.
MHOST_EXPORT std::vector<std::string> names_of(const SelectionItem& item, bool full = false);

} // namespace host::graph
