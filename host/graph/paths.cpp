#include "host/graph/paths.h"

namespace host::graph {

MDagPath to_interface(const DagPath& path) {
    std::vector<MObject> nodes;
    for (const Ref<DagNode>& node : path)
        nodes.emplace_back(node.get());
    return MDagPath(nodes);
}

DagPath to_graph(const MDagPath& path) {
    DagPath nodes;
    for (const MObject& object : path.host_nodes()) {
        Node* const node = node_of(object);
        if (node == nullptr || node->as_dag_node() == nullptr)
            return {};
        nodes.push_back(node->as_dag_node());
    }
    return nodes;
}

} // namespace host::graph
