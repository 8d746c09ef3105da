#include "host/graph/evaluate.h"

#include "host/base/strictness.h"
#include "host/graph/data.h"
#include "host/graph/plugin_nodes.h"

namespace host::graph {

namespace {

/// One dirty propagation. It does not stop at slots that are already dirty: a plug-in may have
/// marked an output clean while one of its inputs was dirty, and that output must be marked again.
class Propagation {
public:
    explicit Propagation(Slot& start) {
        static uint32_t walks = 0;
        walk_ = ++walks;
        push(start);
        while (!pending_.empty()) {
            Slot* slot = pending_.back();
            pending_.pop_back();
            visit(*slot);
        }
    }

private:
    void push(Slot& slot) {
        if (slot.visit == walk_)
            return;
        slot.visit = walk_;
        pending_.push_back(&slot);
    }

    void visit(Slot& slot) {
        Node& node = slot.node();
        affect(node, slot.attribute());
        for (Slot* above = slot.parent(); above != nullptr; above = above->parent()) {
            if (&above->attribute() != &slot.attribute())
                affect(node, above->attribute());
            follow(*above);
        }
        descend(node, slot);
        if (&slot.attribute() == base_attributes().state.get())
            for (Attribute* output : node.node_type().outputs())
                make_stale(node, *output);
        PluginNodes::report_dirty(slot, [&](Slot& more) {
            more.dirty = true;
            push(more);
        });
    }

    void descend(Node& node, Slot& slot) {
        follow(slot);
        for (const auto& below : slot.below()) {
            if (&below->attribute() != &slot.attribute())
                affect(node, below->attribute());
            descend(node, *below);
        }
    }

    void follow(Slot& slot) {
        for (Slot* destination : slot.destinations()) {
            destination->dirty = true;
            push(*destination);
        }
    }

    void affect(Node& node, const Attribute& attribute) {
        for (Attribute* affected : node.node_type().affected_by(attribute))
            make_stale(node, *affected);
    }

    void make_stale(Node& node, const Attribute& attribute) {
        // Output slots that do not exist yet are created dirty.
        if (Slot* output = node.existing_slot(attribute)) {
            mark(*output);
            push(*output);
        }
    }

    static void mark(Slot& slot) {
        slot.dirty = true;
        for (const auto& below : slot.below())
            mark(*below);
    }

    uint32_t walk_ = 0;
    std::vector<Slot*> pending_;
};

/// Whether computing a node sets this slot: it or a slot above it is an output.
bool is_output(const Slot& slot) {
    const NodeType& type = slot.node().node_type();
    for (const Slot* at = &slot; at != nullptr; at = at->parent())
        if (type.is_output(at->attribute()))
            return true;
    return false;
}

MStatus compute(Slot& slot) {
    Node& node = slot.node();
    constexpr int k_blocking = 2;
    if (node.state() == k_blocking)
        return MS::kSuccess;
    MStatus status = MS::kUnknownParameter;
    if (node.user_node() != nullptr)
        status = PluginNodes::compute(slot);
    else if (node.node_type().compute != nullptr)
        status = node.node_type().compute(node, slot);
    if (status == MS::kUnknownParameter) {
        // Not a computed plug: its stored value is valid.
        set_clean(slot);
        return MS::kSuccess;
    }
    return status;
}

/// Copies the value of the source connected to `slot`.
MStatus fetch(Slot& slot) {
    Slot& source = *slot.source();
    const MStatus status = evaluate(source);
    if (!status || slot.source() != &source)
        return status;
    copy_values(source, slot);
    slot.enter_block();
    if (is_clean(source))
        slot.dirty = false;
    return status;
}

} // namespace

void announce_change(Slot& slot) { Propagation walk(slot); }

void set_clean(Slot& slot) {
    slot.dirty = false;
    for (const auto& below : slot.below())
        set_clean(*below);
}

bool is_clean(const Slot& slot) {
    if (slot.dirty)
        return false;
    for (const Slot* above = slot.parent(); above != nullptr; above = above->parent())
        if (above->source() != nullptr && above->dirty)
            return false;
    if (slot.fed_below() > 0 || is_output(slot))
        for (const auto& below : slot.below())
            if (!is_clean(*below))
                return false;
    return true;
}

MStatus evaluate(Slot& slot) {
    if (slot.busy)
        return MS::kSuccess; // cycle: use the current value
    slot.busy = true;
    MStatus status;
    if (Slot* fed = slot.fed_ancestor()) {
        if (fed->dirty && (fed == &slot || !fed->busy)) {
            fed->busy = true;
            status = fetch(*fed);
            fed->busy = false;
        }
    } else if (is_output(slot)) {
        if (slot.dirty)
            status = compute(slot);
    } else if (slot.fed_below() > 0) {
        for (size_t i = 0; i < slot.below().size(); ++i) {
            Slot& below = *slot.below()[i];
            if (below.source() == nullptr && below.fed_below() == 0)
                continue;
            const MStatus part = evaluate(below);
            if (!part)
                status = part;
        }
    }
    slot.busy = false;
    return status;
}

void set_computed(Slot& output, const PlugValue& value) {
    output.value = value;
    announce_change(output);
    set_clean(output);
}

bool assign(Slot& slot, const PlugValue& value) {
    if (!slot.is_leaf())
        return false;
    const Attribute& attribute = slot.attribute();
    if (attribute.is_number()) {
        if (!value.is_number())
            return false;
        return slot.value.assign_number(value.number());
    }
    if (attribute.value_kind() == ValueKind::text) {
        if (value.kind() == ValueKind::text)
            slot.value = value;
        else if (value.as_data() != nullptr && value.as_data()->type() == MFn::kStringData)
            slot.value = PlugValue::of_text(static_cast<StringData*>(value.as_data())->text);
        else
            return false;
        return true;
    }
    if (value.is_none()) {
        slot.value = value;
        return true;
    }
    if (value.as_data() == nullptr)
        return false;
    const MFn::Type wanted =
        attribute.kind() == AttributeKind::mesh ? MFn::kMeshData : MFn::kMatrixData;
    if (attribute.value_kind() != ValueKind::data || value.as_data()->type() != wanted)
        return false;
    slot.value = value.deep_copy();
    return true;
}

bool copy_values(Slot& from, Slot& to) {
    if (from.is_leaf() && to.is_leaf()) {
        // The source was never computed: keep the destination's value.
        if (from.value.is_none() && from.attribute().value_kind() == ValueKind::data)
            return true;
        if (from.attribute().kind() == AttributeKind::message ||
            to.attribute().kind() == AttributeKind::message)
            return true;
        return assign(to, from.value);
    }
    if (from.is_compound() && to.is_compound()) {
        const size_t count = to.attribute().children().size();
        if (count != from.attribute().children().size())
            return false;
        bool good = true;
        for (unsigned int i = 0; i < count; ++i)
            good = copy_values(*from.child(i), *to.child(i)) && good;
        return good;
    }
    if (from.is_array() && to.is_array()) {
        bool good = true;
        for (const auto& element : from.below())
            good =
                copy_values(*element, *to.element(static_cast<unsigned int>(element->index()))) &&
                good;
        return good;
    }
    return false;
}

bool can_connect(const Slot& from, const Slot& to) {
    const Attribute& a = from.attribute();
    const Attribute& b = to.attribute();
    if (a.kind() == AttributeKind::message || b.kind() == AttributeKind::message)
        return a.kind() == b.kind();
    if (from.is_array() != to.is_array())
        return false;
    if (a.is_compound() || b.is_compound()) {
        if (!a.is_compound() || !b.is_compound() || a.children().size() != b.children().size())
            return false;
        for (size_t i = 0; i < a.children().size(); ++i)
            if (a.children()[i]->value_kind() != b.children()[i]->value_kind() &&
                !(a.children()[i]->is_number() && b.children()[i]->is_number()))
                return false;
        return true;
    }
    if (a.is_number() && b.is_number())
        return true;
    return a.kind() == b.kind();
}

namespace {

bool is_locked(const Slot& slot) {
    if (slot.node().locked)
        return true;
    for (const Slot* at = &slot; at != nullptr; at = at->parent())
        if (at->locked)
            return true;
    return false;
}

bool is_writable(const Slot& slot) {
    for (const Slot* at = &slot; at != nullptr; at = at->parent())
        if (!at->attribute().flags.writable)
            return false;
    return true;
}

bool fits(const NumericData& data, const Slot& slot) {
    return slot.is_compound() && slot.attribute().children().size() == data.size();
}

void store(Slot& slot, const PlugValue& value) {
    slot.was_set = true;
    if (slot.source() != nullptr) {
        PlugValue own = slot.attribute().default_value();
        if (own.assign_number(value.number()))
            slot.links().own_value = own;
        return;
    }
    assign(slot, value);
}

} // namespace

Slot& value_target(Slot& slot) {
    const NodeType& type = slot.node().node_type();
    if (type.write_target == nullptr || !is_output(slot))
        return slot;
    return type.write_target(slot.node(), slot);
}

MStatus may_set(Slot& slot) {
    if (is_locked(slot) || !is_writable(slot) || slot.fed_ancestor() != nullptr)
        return MS::kFailure;
    if (is_strict() && slot.is_compound() && slot.fed_below() > 0)
        return MS::kFailure;
    return MS::kSuccess;
}

MStatus set_value(Slot& slot, const PlugValue& value) {
    const MStatus status = may_set(slot);
    if (!status)
        return status;
    const Object* data = value.as_data();
    if (data != nullptr && data->type() == MFn::kNumericData) {
        const auto& numbers = static_cast<const NumericData&>(*data);
        if (!fits(numbers, slot))
            return MS::kInvalidParameter;
        for (unsigned int i = 0; i < numbers.size(); ++i)
            if (is_locked(*slot.child(i)))
                return MS::kFailure;
        for (unsigned int i = 0; i < numbers.size(); ++i)
            store(*slot.child(i), numbers.component(i));
        slot.enter_block();
        slot.was_set = true;
        announce_change(slot);
        return MS::kSuccess;
    }
    Slot& target = value_target(slot);
    if (&target != &slot)
        return set_value(target, value);
    if (!slot.is_leaf() || !assign(slot, value))
        return MS::kInvalidParameter;
    slot.was_set = true;
    slot.enter_block();
    slot.dirty = false;
    announce_change(slot);
    return MS::kSuccess;
}

} // namespace host::graph
