#include "host/graph/edits.h"

#include <algorithm>

namespace host::graph {

Edit::~Edit() = default;

namespace {

Scene& scene() { return Scene::current(); }

class AddNode : public Edit {
public:
    AddNode(Node& node, DagNode* parent) : node_(&node), parent_(parent) {}

    MStatus redo() override {
        if (was_gone_) {
            was_gone_ = false;
            return MS::kSuccess;
        }
        if (removal_.nodes.empty())
            return scene().add(*node_, parent_.get());
        scene().restore(removal_);
        return MS::kSuccess;
    }
    MStatus undo() override {
        // A command may remove the node in its own undo; its redo then restores it.
        was_gone_ = !node_->is_valid();
        if (was_gone_)
            return MS::kSuccess;
        removal_ = scene().remove(*node_, Scene::RemovalCause::undo_of_creation);
        return removal_.nodes.empty() ? MS::kFailure : MS::kSuccess;
    }

private:
    Ref<Node> node_;
    Ref<DagNode> parent_;
    Removal removal_;
    bool was_gone_ = false;
};

class RemoveNode : public Edit {
public:
    explicit RemoveNode(Node& node) : node_(&node) {}

    MStatus redo() override {
        if (node_->locked || node_->is_default)
            return MS::kFailure;
        removal_ = scene().remove(*node_);
        return removal_.nodes.empty() ? MS::kFailure : MS::kSuccess;
    }
    MStatus undo() override {
        scene().restore(removal_);
        return MS::kSuccess;
    }

private:
    Ref<Node> node_;
    Removal removal_;
};

class Connect : public Edit {
public:
    Connect(Slot& source, Slot& destination, bool retain)
        : source_node_(&source.node()), destination_node_(&destination.node()), source_(source),
          destination_(destination), retain_(retain) {}

    MStatus redo() override {
        if (!source_node_->is_valid() || !destination_node_->is_valid())
            return MS::kFailure;
        if (!retain_)
            before_ = save_state(destination_);
        return scene().connect(source_, destination_);
    }
    MStatus undo() override {
        const MStatus status = scene().disconnect(source_, destination_);
        if (status && !retain_) {
            restore_state(destination_, before_);
            announce_change(destination_);
        }
        return status;
    }

private:
    Ref<Node> source_node_, destination_node_;
    Slot& source_;
    Slot& destination_;
    bool retain_;
    SlotState before_;
};

class Disconnect : public Edit {
public:
    Disconnect(Slot& source, Slot& destination)
        : source_node_(&source.node()), destination_node_(&destination.node()), source_(source),
          destination_(destination) {}

    MStatus redo() override {
        own_value_ =
            destination_.source() == nullptr ? PlugValue() : destination_.links().own_value;
        return scene().disconnect(source_, destination_);
    }
    MStatus undo() override {
        const MStatus status = scene().connect(source_, destination_);
        if (status)
            destination_.links().own_value = own_value_;
        return status;
    }

private:
    Ref<Node> source_node_, destination_node_;
    Slot& source_;
    Slot& destination_;
    PlugValue own_value_;
};

class ChangeSlot : public Edit {
public:
    ChangeSlot(Slot& slot, std::function<MStatus(Slot&)> change)
        : node_(&slot.node()), slot_(slot), change_(std::move(change)) {}

    MStatus redo() override {
        if (done_) {
            restore_state(slot_, after_);
            announce_change(slot_);
            return MS::kSuccess;
        }
        before_ = save_state(slot_);
        const MStatus status = change_(slot_);
        if (status)
            done_ = true;
        return status;
    }
    MStatus undo() override {
        after_ = save_state(slot_);
        restore_state(slot_, before_);
        announce_change(slot_);
        return MS::kSuccess;
    }

private:
    Ref<Node> node_;
    Slot& slot_;
    std::function<MStatus(Slot&)> change_;
    bool done_ = false;
    SlotState before_;
    SlotState after_; ///< saved by undo
};

class Rename : public Edit {
public:
    Rename(Node& node, const std::string& name)
        : node_(&node), old_(node.name_text()), new_(name) {}

    MStatus redo() override {
        if (node_->locked || node_->is_default)
            return MS::kFailure;
        old_ = node_->name_text();
        new_ = scene().rename(*node_, new_);
        return MS::kSuccess;
    }
    MStatus undo() override {
        scene().rename(*node_, old_);
        return MS::kSuccess;
    }

private:
    Ref<Node> node_;
    std::string old_, new_;
};

class Reparent : public Edit {
public:
    Reparent(DagNode& node, DagNode* parent) : node_(&node), parent_(parent) {}

    MStatus redo() override {
        old_parent_ = node_->parents().empty() ? nullptr : node_->parents().front();
        old_name_ = node_->name_text();
        const auto& siblings = old_parent_ ? old_parent_->children() : scene().top_level();
        index_ = static_cast<size_t>(std::find(siblings.begin(), siblings.end(), node_.get()) -
                                     siblings.begin());
        return scene().reparent(*node_, parent_.get(), SIZE_MAX);
    }
    MStatus undo() override {
        const MStatus status = scene().reparent(*node_, old_parent_.get(), index_);
        if (status)
            scene().rename(*node_, old_name_);
        return status;
    }

private:
    Ref<DagNode> node_, parent_, old_parent_;
    size_t index_ = 0;
    std::string old_name_;
};

class Instance : public Edit {
public:
    Instance(DagNode& node, DagNode& parent) : node_(&node), parent_(&parent) {}
    MStatus redo() override { return scene().add_instance(*node_, *parent_); }
    MStatus undo() override { return scene().remove_instance(*node_, *parent_); }

private:
    Ref<DagNode> node_, parent_;
};

class AddAttribute : public Edit {
public:
    AddAttribute(Node& node, const Ref<Attribute>& attribute, bool adds)
        : node_(&node), attribute_(attribute), adds_(adds) {}
    MStatus redo() override { return adds_ ? add() : drop(); }
    MStatus undo() override { return adds_ ? drop() : add(); }

private:
    MStatus add() {
        const MStatus status = node_->add_attribute(attribute_);
        if (status && state_)
            restore_state(*node_->slot(*attribute_), *state_);
        return status;
    }
    MStatus drop() {
        if (Slot* slot = node_->existing_slot(*attribute_)) {
            if (slot->is_connected() || slot->fed_below() > 0)
                return MS::kFailure;
            state_ = save_state(*slot);
        }
        return node_->remove_attribute(*attribute_);
    }
    Ref<Node> node_;
    Ref<Attribute> attribute_;
    bool adds_;
    std::optional<SlotState> state_;
};

class Mark : public Edit {
public:
    Mark(Slot& slot, PlugMark mark, bool on)
        : node_(&slot.node()), slot_(slot), mark_(mark), on_(on) {}
    MStatus redo() override {
        before_ = flag();
        flag() = on_;
        return MS::kSuccess;
    }
    MStatus undo() override {
        flag() = before_;
        return MS::kSuccess;
    }

private:
    bool& flag() {
        return mark_ == PlugMark::locked    ? slot_.locked
               : mark_ == PlugMark::keyable ? slot_.keyable
                                            : slot_.channel_box;
    }
    Ref<Node> node_;
    Slot& slot_;
    PlugMark mark_;
    bool on_;
    bool before_ = false;
};

/// The results of a node: an output, and numbers that affect nothing.
class Results {
public:
    explicit Results(Slot& output) : node_(&output.node()), slots_({&output}) {
        const NodeType& type = node_->node_type();
        for (const Ref<Attribute>& attribute : type.attributes())
            if (attribute->is_number() && !attribute->is_array() && !attribute->parent() &&
                !type.is_output(*attribute) && type.affected_by(*attribute).empty())
                slots_.push_back(node_->slot(*attribute));
        before_ = read();
    }
    void go_back() {
        after_ = read();
        write(before_);
    }
    void go_forward() {
        if (!after_.empty())
            write(after_);
    }

private:
    std::vector<PlugValue> read() const {
        std::vector<PlugValue> values;
        for (const Slot* slot : slots_)
            values.push_back(slot->value);
        return values;
    }
    void write(const std::vector<PlugValue>& values) {
        set_computed(*slots_[0], values[0]);
        for (size_t i = 1; i < slots_.size(); ++i)
            slots_[i]->value = values[i];
    }

    Ref<Node> node_;
    std::vector<Slot*> slots_;
    std::vector<PlugValue> before_, after_;
};

/// One half of keep_results_edits().
class KeepResults : public Edit {
public:
    KeepResults(std::shared_ptr<Results> results, bool is_first)
        : results_(std::move(results)), is_first_(is_first) {}
    MStatus redo() override {
        if (!is_first_)
            results_->go_forward();
        return MS::kSuccess;
    }
    MStatus undo() override {
        if (is_first_)
            results_->go_back();
        return MS::kSuccess;
    }

private:
    std::shared_ptr<Results> results_;
    bool is_first_;
};

class Select : public Edit {
public:
    explicit Select(const Selection& selection) : next_(selection) {}
    MStatus redo() override {
        before_ = scene().selection();
        scene().select(next_);
        return MS::kSuccess;
    }
    MStatus undo() override {
        scene().select(before_);
        return MS::kSuccess;
    }
    bool changes_scene() const override { return false; }

private:
    Selection next_, before_;
};

} // namespace

EditPtr add_node_edit(Node& node, DagNode* parent) {
    return std::make_unique<AddNode>(node, parent);
}
EditPtr remove_node_edit(Node& node) { return std::make_unique<RemoveNode>(node); }
EditPtr connect_edit(Slot& source, Slot& destination, bool retain) {
    return std::make_unique<Connect>(source, destination, retain);
}
EditPtr disconnect_edit(Slot& source, Slot& destination) {
    return std::make_unique<Disconnect>(source, destination);
}
EditPtr set_value_edit(Slot& slot, const PlugValue& value) {
    Slot& target = value_target(slot);
    return change_slot_edit(target, [value](Slot& one) { return set_value(one, value); });
}
EditPtr change_slot_edit(Slot& slot, std::function<MStatus(Slot&)> change) {
    return std::make_unique<ChangeSlot>(slot, std::move(change));
}
std::pair<EditPtr, EditPtr> keep_results_edits(Slot& output) {
    const auto results = std::make_shared<Results>(output);
    return {std::make_unique<KeepResults>(results, true),
            std::make_unique<KeepResults>(results, false)};
}
EditPtr rename_edit(Node& node, const std::string& name) {
    return std::make_unique<Rename>(node, name);
}
EditPtr reparent_edit(DagNode& node, DagNode* parent) {
    return std::make_unique<Reparent>(node, parent);
}
EditPtr instance_edit(DagNode& node, DagNode& parent) {
    return std::make_unique<Instance>(node, parent);
}
EditPtr add_attribute_edit(Node& node, const Ref<Attribute>& attribute) {
    return std::make_unique<AddAttribute>(node, attribute, true);
}
EditPtr remove_attribute_edit(Node& node, const Ref<Attribute>& attribute) {
    return std::make_unique<AddAttribute>(node, attribute, false);
}
EditPtr mark_edit(Slot& slot, PlugMark mark, bool on) {
    return std::make_unique<Mark>(slot, mark, on);
}
EditPtr select_edit(const Selection& selection) { return std::make_unique<Select>(selection); }

} // namespace host::graph
