// Duplicates nodes, and finds the construction history of a shape.
#include "host/graph/mesh_node.h"
#include "host/graph/scene.h"

#include <algorithm>
#include <unordered_map>

namespace host::graph {

namespace {

/// Copies all values that the original stores or received through connections. Computed outputs are
/// not copied; message attributes hold no value.
MStatus copy_slots(Node& from, Node& to, bool with_tweaks) {
    for (const Ref<Attribute>& attribute : from.dynamic_attributes()) {
        const MStatus status = to.add_attribute(attribute);
        if (!status)
            return status;
    }
    const Attribute* tweaks = mesh_attributes().tweaks.get();
    for (Slot* slot : std::vector<Slot*>(from.slots())) {
        const Attribute& attribute = slot->attribute();
        if (attribute.kind() == AttributeKind::message || from.node_type().is_output(attribute))
            continue;
        if (&attribute == tweaks && !with_tweaks)
            continue;
        const MStatus status = evaluate(*slot);
        if (!status)
            return status;
        Slot* copy = to.slot(attribute);
        if (copy == nullptr)
            continue;
        // Elements must exist before they can be assigned.
        const SlotState state = save_state(*slot);
        make_elements(*copy, state);
        restore_state(*copy, state);
    }
    return MS::kSuccess;
}

} // namespace

Ref<Node> Scene::copy_node(Node& original, bool with_tweaks, bool new_name) {
    if (original.node_type().is_unknown)
        return {};
    Ref<Node> copy = make_node(original.type_, original.name_);
    if (!copy || !copy_slots(original, *copy, with_tweaks))
        return {};
    copy->name_ = new_name ? unused_name(original.name_) : original.name_;
    return copy;
}

MStatus Scene::copy_children(DagNode& from, DagNode& to, bool with_tweaks,
                             std::vector<Copy>& copies) {
    struct Pending {
        DagNode *original, *parent;
    };
    std::vector<Pending> pending; // the next one last
    const auto add_children = [&](DagNode& original, DagNode& copy) {
        for (auto child = original.children_.rbegin(); child != original.children_.rend(); ++child)
            pending.push_back({*child, &copy});
    };
    add_children(from, to);
    while (!pending.empty()) {
        const auto [original, parent] = pending.back();
        pending.pop_back();
        if (original->is_intermediate())
            continue; // an intermediate object feeds history that the copy does not have
        // The shapes of the copied transform itself get names of their own.
        const bool new_name = parent == &to && original->is_shape();
        const Ref<Node> copy = copy_node(*original, with_tweaks, new_name);
        if (!copy)
            return MS::kFailure;
        copies.push_back({copy, parent});
        add_children(*original, *copy->as_dag_node());
    }
    return MS::kSuccess;
}

MStatus Scene::duplicate(Node& node, bool with_tweaks, std::vector<Copy>& copies) {
    if (!node.in_scene_)
        return MS::kFailure;
    DagNode* dag = node.as_dag_node();
    DagNode* root = dag;
    // A shape is duplicated together with its transform; the new transform is a sibling of the
    // original's.
    if (dag != nullptr && dag->is_shape() && !dag->parents_.empty())
        root = dag->parents_.front();
    const Ref<Node> top = copy_node(root == nullptr ? node : *root, with_tweaks, true);
    if (!top)
        return MS::kFailure;
    const bool is_nested = root != nullptr && !root->parents_.empty();
    copies.push_back({top, is_nested ? root->parents_.front() : nullptr});
    if (dag == nullptr)
        return MS::kSuccess;
    if (!dag->is_shape())
        return copy_children(*root, *top->as_dag_node(), with_tweaks, copies);
    const Ref<Node> shape = copy_node(*dag, with_tweaks, true);
    if (!shape)
        return MS::kFailure;
    copies.push_back({shape, top->as_dag_node()});
    // Even if the original is an intermediate object, the copy is visible.
    reset_state(*shape->slot(*dag_attributes().intermediate));
    return MS::kSuccess;
}

namespace {

/// Calls `each` for every existing slot of a node.
void for_each_slot(Node& node, const std::function<void(Slot&)>& each) {
    const std::function<void(Slot&)> visit = [&](Slot& slot) {
        each(slot);
        for (const auto& below : slot.below())
            visit(*below);
    };
    for (Slot* slot : node.slots())
        visit(*slot);
}

/// Whether the node feeds any node for which `is_known` is false.
bool feeds_others(Node& node, const std::function<bool(const Node*)>& is_known) {
    bool leads_out = false;
    for_each_slot(node, [&](Slot& slot) {
        for (const Slot* destination : slot.destinations())
            leads_out = leads_out || !is_known(&destination->node());
    });
    return leads_out;
}

} // namespace

std::vector<Node*> Scene::history_of(Node& shape, bool exclusive_only) const {
    std::vector<Node*> found;
    const auto known = [&](const Node* node) {
        return node == &shape || std::find(found.begin(), found.end(), node) != found.end();
    };
    std::vector<Node*> pending = {&shape};
    while (!pending.empty()) {
        Node* node = pending.back();
        pending.pop_back();
        for_each_slot(*node, [&](Slot& slot) {
            Node* source = slot.source() == nullptr ? nullptr : &slot.source()->node();
            if (source == nullptr || known(source))
                return;
            found.push_back(source);
            pending.push_back(source);
        });
    }
    // A node stays if it feeds anything outside the set, or a node that stays.
    const auto stays = [&](Node* node) {
        DagNode* dag = node->as_dag_node();
        return node->is_default || (dag != nullptr && !dag->is_intermediate()) ||
               feeds_others(*node, known);
    };
    while (exclusive_only) {
        const auto at = std::find_if(found.begin(), found.end(), stays);
        if (at == found.end())
            break;
        found.erase(at);
    }
    return found;
}

} // namespace host::graph
