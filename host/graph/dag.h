/// Nodes of the scene's hierarchy: transforms, and the shapes below them.
#pragma once

#include "host/graph/node.h"

#include <maya/MDagPath.h>
#include <maya/MMatrix.h>

#include <functional>

namespace host::graph {

class DagNode;

/// The nodes from a top-level node down to some node. Empty means invalid.
using DagPath = std::vector<Ref<DagNode>>;

class MHOST_EXPORT DagNode : public Node, public DagFace {
public:
    explicit DagNode(const NodeTypeRef& type);

    DagFace* as_dag() override { return this; }
    DagNode* as_dag_node() override { return this; }
    unsigned int parent_count() const override;
    MObject parent(unsigned int index) const override;
    unsigned int child_count() const override;
    MObject child(unsigned int index) const override;
    /// Scales, then rotates (in the node's rotate order), then translates, about the pivots.
    MMatrix local_matrix() const override;

    bool is_shape() const { return node_type().shape; }
    const std::vector<DagNode*>& parents() const { return parents_; }
    const std::vector<DagNode*>& children() const { return children_; }
    bool is_ancestor_of(const DagNode& other) const;
    bool is_intermediate();

    /// The path through the first parent at every level, and the paths through all parents.
    DagPath path() const;
    std::vector<DagPath> all_paths() const;
    /// The number of paths to the node, 1 unless it or a node above it is instanced.
    size_t path_count() const;

protected:
    ~DagNode() override;

private:
    friend class Scene;
    std::vector<DagNode*> parents_; ///< empty for top-level nodes and for nodes outside the scene
    std::vector<DagNode*> children_;
};

/// The full path as text: "|group|shape".
MHOST_EXPORT std::string full_name(const DagPath& path);
/// Calls `visit` for a node and all below it, parents before their children and siblings in order;
/// what is below a node is left out if `visit` returns false for it. Hierarchies of any depth take
/// the same stack.
MHOST_EXPORT void walk_down(DagNode& top, const std::function<bool(DagNode&)>& visit);

/// From the object space of `node` to world space, through the first parent at every level; the
/// identity for null.
MHOST_EXPORT MMatrix world_matrix(const DagNode* node);

/// Conversion of DAG paths between the public interface and the graph.
MHOST_EXPORT MDagPath to_interface(const DagPath& path);
/// Returns an empty path if `path` is invalid or holds nodes that do not belong to the scene.
MHOST_EXPORT DagPath to_graph(const MDagPath& path);

/// Attributes that transforms, shapes and cameras share or that the host itself reads.
struct DagAttributes {
    Ref<Attribute> visibility;
    Ref<Attribute> intermediate;
    Ref<Attribute> translate;
    Ref<Attribute> rotate;
    Ref<Attribute> rotate_order;
    Ref<Attribute> scale;
    Ref<Attribute> shear;
    Ref<Attribute> rotate_pivot;
    Ref<Attribute> scale_pivot;
    Ref<Attribute> rotate_pivot_translate;
    Ref<Attribute> scale_pivot_translate;
};
MHOST_EXPORT const DagAttributes& dag_attributes();

} // namespace host::graph
