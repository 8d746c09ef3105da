#include "host/view/scene_shapes.h"

#include "host/graph/evaluate.h"
#include "host/graph/scene.h"
#include "host/mesh/mesh.h"

#include <algorithm>

namespace host {

using graph::DagNode;
using graph::DagPath;
using graph::SelectionItem;

namespace {

bool is_hidden(DagNode& node) {
    graph::Slot* const slot = node.slot(*graph::dag_attributes().visibility);
    if (node.is_intermediate())
        return true;
    if (slot == nullptr)
        return false;
    graph::evaluate(*slot);
    return slot->value.number() == 0.0;
}

bool is_at_or_below(const DagPath& path, const DagPath& above) {
    return above.size() <= path.size() && std::equal(above.begin(), above.end(), path.begin());
}

/// Depth-first walk of the DAG with the current path and world matrix.
class Walk {
public:
    explicit Walk(std::vector<VisibleShape>& found) : found_(found) {
        for (const SelectionItem& item : graph::Scene::current().selection())
            if (item.plug == nullptr && !item.component && item.is_dag())
                selected_.push_back(item.path());
    }

    void visit(DagNode& root) {
        std::vector<Step> pending = {{&root, 0, MMatrix()}}; // the next one last
        while (!pending.empty()) {
            const Step step = pending.back();
            pending.pop_back();
            if (is_hidden(*step.node))
                continue;
            path_.resize(step.depth);
            path_.push_back(Ref<DagNode>(step.node));
            const MMatrix matrix = step.node->local_matrix() * step.above;
            if (step.node->as_mesh() != nullptr)
                add(static_cast<graph::MeshNode&>(*step.node), matrix);
            const std::vector<DagNode*>& children = step.node->children();
            for (auto child = children.rbegin(); child != children.rend(); ++child)
                pending.push_back({*child, step.depth + 1, matrix});
        }
    }

private:
    struct Step {
        DagNode* node;
        size_t depth;
        MMatrix above;
    };

    void add(graph::MeshNode& node, const MMatrix& matrix) {
        const bool is_selected =
            std::any_of(selected_.begin(), selected_.end(),
                        [&](const DagPath& path) { return is_at_or_below(path_, path); });
        found_.push_back({path_, matrix, &node, is_selected});
    }

    std::vector<VisibleShape>& found_;
    std::vector<DagPath> selected_;
    DagPath path_;
};

MPoint to_world(const Float3& point, const MMatrix& matrix) {
    return MPoint(double(point.x), double(point.y), double(point.z)) * matrix;
}

/// Visits the vertices of a component; none for UVs.
void visit_component(const Mesh& mesh, const graph::Component& component, const MMatrix& matrix,
                     const PointSink& sink) {
    const Connectivity& faces = mesh.connectivity();
    const std::vector<Float3>& points = mesh.points();
    for (const int id : component.ids()) {
        const auto part = static_cast<uint32_t>(id);
        if (component.kind() == graph::ComponentKind::vertex && part < points.size())
            sink(to_world(points[part], matrix));
        if (component.kind() == graph::ComponentKind::edge && part < faces.edge_count()) {
            sink(to_world(points[faces.edge(part).first], matrix));
            sink(to_world(points[faces.edge(part).second], matrix));
        }
        if (component.kind() == graph::ComponentKind::face && part < faces.polygon_count())
            for (const uint32_t vertex : faces.polygon_vertices(part))
                sink(to_world(points[vertex], matrix));
    }
}

void visit_shape(const VisibleShape& shape, bool only_selected, const PointSink& sink) {
    shape.node->refresh();
    const Mesh* const mesh = shape.node->mesh();
    if (mesh == nullptr)
        return;
    if (!only_selected || shape.is_selected) {
        for (const Float3& point : mesh->points())
            sink(to_world(point, shape.to_world));
        return;
    }
    for (const SelectionItem& item : graph::Scene::current().selection())
        if (item.component && item.node.get() == shape.node && item.path() == shape.path)
            visit_component(*mesh, *item.component, shape.to_world, sink);
}

} // namespace

std::vector<VisibleShape> visible_shapes() {
    std::vector<VisibleShape> found;
    Walk walk(found);
    // Copied, because evaluating a plug may run scripts that change the scene.
    const std::vector<DagNode*> roots = graph::Scene::current().top_level();
    for (DagNode* const root : roots)
        walk.visit(*root);
    return found;
}

Bounds bounds_of(const Mesh& mesh) {
    Bounds bounds;
    const std::vector<Float3>& points = mesh.points();
    if (points.empty())
        return bounds;
    Float3 low = points[0], high = points[0];
    for (const Float3& p : points) {
        low = {std::min(low.x, p.x), std::min(low.y, p.y), std::min(low.z, p.z)};
        high = {std::max(high.x, p.x), std::max(high.y, p.y), std::max(high.z, p.z)};
    }
    bounds.add(MPoint(double(low.x), double(low.y), double(low.z)));
    bounds.add(MPoint(double(high.x), double(high.y), double(high.z)));
    return bounds;
}

void visit_scene_points(bool only_selected, const PointSink& sink) {
    bool is_nothing = true;
    const std::vector<VisibleShape> shapes = visible_shapes();
    for (const VisibleShape& shape : shapes)
        visit_shape(shape, only_selected, [&](const MPoint& point) {
            is_nothing = false;
            sink(point);
        });
    if (is_nothing && only_selected)
        visit_scene_points(false, sink);
}

PointSource scene_points(bool only_selected) {
    return [only_selected](const PointSink& sink) { visit_scene_points(only_selected, sink); };
}

} // namespace host
