/// Nodes that have a place in the scene's hierarchy: transforms, and shapes below them.
#pragma once

#include "host/graph/node.h"

#include <maya/MMatrix.h>

namespace host::graph {

class DagNode;

/// The way from a top-level node down to a node; never empty when valid.
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
    /// Scale, then rotation (in the node's rotate order), then translation, about the pivots.
    MMatrix local_matrix() const override;

    bool is_shape() const { return node_type().shape; }
    const std::vector<DagNode*>& parents() const { return parents_; }
    const std::vector<DagNode*>& children() const { return children_; }
    bool is_ancestor_of(const DagNode& other) const;
    bool is_intermediate();

    /// The path through the first parents, and all paths.
    DagPath path() const;
    std::vector<DagPath> all_paths() const;

protected:
    ~DagNode() override;

private:
    friend class Scene;
    std::vector<DagNode*> parents_; ///< none: top level, or not in the scene
    std::vector<DagNode*> children_;
};

/// "|group|shape".
MHOST_EXPORT std::string full_name(const DagPath& path);

/// Attributes that transforms, shapes, cameras share or that the host's own code reads.
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
