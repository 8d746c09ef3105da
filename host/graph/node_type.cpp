#include "host/graph/node_type.h"

#include <algorithm>

namespace host::graph {

MStatus NodeType::add_names(Attribute& attribute) {
    if (by_name_.count(attribute.long_name()) != 0 || by_name_.count(attribute.short_name()) != 0)
        return MS::kInvalidParameter;
    by_name_[attribute.long_name()] = &attribute;
    by_name_[attribute.short_name()] = &attribute;
    for (const Ref<Attribute>& child : attribute.children()) {
        const MStatus status = add_names(*child);
        if (!status)
            return status;
    }
    return MS::kSuccess;
}

MStatus NodeType::add(const Ref<Attribute>& attribute) {
    if (!attribute || attribute->long_name().empty() || attribute->parent() != nullptr)
        return MS::kInvalidParameter;
    const MStatus status = add_names(*attribute);
    if (status)
        attributes_.push_back(attribute);
    return status;
}

MStatus NodeType::affects(const Attribute& when_changes, Attribute& is_affected) {
    if (!owns(when_changes) || !owns(is_affected))
        return MS::kInvalidParameter;
    std::vector<Attribute*>& list = affects_[&when_changes];
    if (std::find(list.begin(), list.end(), &is_affected) == list.end())
        list.push_back(&is_affected);
    if (std::find(outputs_.begin(), outputs_.end(), &is_affected) == outputs_.end())
        outputs_.push_back(&is_affected);
    return MS::kSuccess;
}

MStatus NodeType::inherit(const NodeType& other) {
    for (const Ref<Attribute>& attribute : other.attributes_) {
        if (owns(*attribute))
            continue;
        const MStatus status = add(attribute);
        if (!status)
            return status;
    }
    for (const Ref<Attribute>& attribute : other.attributes_)
        for (Attribute* affected : other.affected_by(*attribute))
            affects(*attribute, *affected);
    return MS::kSuccess;
}

Attribute* NodeType::find(std::string_view name) const {
    const auto found = by_name_.find(std::string(name));
    return found == by_name_.end() ? nullptr : found->second;
}

bool NodeType::owns(const Attribute& attribute) const {
    return find(attribute.long_name()) == &attribute;
}

const std::vector<Attribute*>& NodeType::affected_by(const Attribute& attribute) const {
    static const std::vector<Attribute*> none;
    const auto found = affects_.find(&attribute);
    return found == affects_.end() ? none : found->second;
}

bool NodeType::is_output(const Attribute& attribute) const {
    return std::find(outputs_.begin(), outputs_.end(), &attribute) != outputs_.end();
}

const BaseAttributes& base_attributes() {
    static const BaseAttributes* const attributes = [] {
        auto* base = new BaseAttributes;
        base->message = new Attribute("message", "msg", AttributeKind::message);
        base->message->flags.writable = false;
        base->message->flags.storable = false;
        base->caching = new Attribute("caching", "cch", AttributeKind::boolean);
        base->state = new Attribute("nodeState", "nds", AttributeKind::enumeration);
        base->state->fields = {
            {"Normal", 0},         {"HasNoEffect", 1},         {"Blocking", 2},
            {"Waiting-Normal", 3}, {"Waiting-HasNoEffect", 4}, {"Waiting-Blocking", 5}};
        base->is_historically_interesting =
            new Attribute("isHistoricallyInteresting", "ihi", AttributeKind::byte);
        base->is_historically_interesting->set_default(PlugValue::of_byte(2));
        return base;
    }();
    return *attributes;
}

NodeTypeRef make_node_type(const std::string& name, unsigned int id, MFn::Type function_set) {
    auto type = std::make_shared<NodeType>(name, id, function_set);
    const BaseAttributes& base = base_attributes();
    type->add(base.message);
    type->add(base.caching);
    type->add(base.is_historically_interesting);
    type->add(base.state);
    return type;
}

} // namespace host::graph
