#include "host/graph/node.h"

#include "host/graph/callbacks.h"
#include "host/graph/plugin_nodes.h"

#include <algorithm>
#include <charconv>

namespace host::graph {

Node::Node(const NodeTypeRef& type) : Object(type->function_set), type_(type) {
    type_->instances.push_back(this);
}

Node::~Node() {
    PluginNodes::destroy_instance(*this);
    Callbacks::current().forget(*this);
    order_.clear();
    slots_.clear();
    std::vector<Node*>& list = type_->instances;
    list.erase(std::find(list.begin(), list.end(), this));
}

Attribute* Node::find_attribute(std::string_view name) const {
    if (Attribute* attribute = type_->find(name))
        return attribute;
    for (const Ref<Attribute>& attribute : dynamic_) {
        if (attribute->long_name() == name || attribute->short_name() == name)
            return attribute.get();
        for (const Ref<Attribute>& child : attribute->children())
            if (child->long_name() == name || child->short_name() == name)
                return child.get();
    }
    return nullptr;
}

bool Node::owns(const Attribute& attribute) const {
    return find_attribute(attribute.long_name()) == &attribute;
}

MStatus Node::add_attribute(const Ref<Attribute>& attribute) {
    if (!attribute || attribute->long_name().empty())
        return MS::kInvalidParameter;
    if (find_attribute(attribute->long_name()) != nullptr ||
        find_attribute(attribute->short_name()) != nullptr)
        return MS::kInvalidParameter;
    attribute->dynamic = true;
    dynamic_.push_back(attribute);
    return MS::kSuccess;
}

MStatus Node::remove_attribute(const Attribute& attribute) {
    const auto at = std::find_if(dynamic_.begin(), dynamic_.end(),
                                 [&](const auto& held) { return held.get() == &attribute; });
    if (at == dynamic_.end())
        return MS::kNotFound;
    const auto held = slots_.find(&attribute);
    if (held != slots_.end()) {
        order_.erase(std::find(order_.begin(), order_.end(), held->second.get()));
        put_aside_.push_back(std::move(held->second));
        slots_.erase(held);
    }
    put_aside_attributes_.push_back(*at);
    dynamic_.erase(at);
    return MS::kSuccess;
}

Slot* Node::existing_slot(const Attribute& attribute) const {
    if (attribute.parent() != nullptr) {
        Slot* parent = existing_slot(*attribute.parent());
        if (parent == nullptr || parent->is_array() || parent->below().empty())
            return nullptr;
        return parent->child(attribute.index_in_parent());
    }
    const auto found = slots_.find(&attribute);
    return found == slots_.end() ? nullptr : found->second.get();
}

Slot* Node::slot(const Attribute& attribute) {
    if (attribute.parent() != nullptr) {
        Slot* parent = slot(*attribute.parent());
        if (parent == nullptr || parent->is_array())
            return nullptr;
        return parent->child(attribute.index_in_parent());
    }
    const auto found = slots_.find(&attribute);
    if (found != slots_.end())
        return found->second.get();
    if (!owns(attribute))
        return nullptr;
    auto made = std::make_unique<Slot>(*this, const_cast<Attribute&>(attribute), nullptr, -1);
    made->dirty = type_->is_output(attribute);
    Slot* slot = made.get();
    slots_.emplace(&attribute, std::move(made));
    order_.push_back(slot);
    return slot;
}

Slot* Node::slot(std::string_view attribute_name) {
    const Attribute* attribute = find_attribute(attribute_name);
    return attribute == nullptr ? nullptr : slot(*attribute);
}

namespace {

/// The component with this long or short name; NULL if `slot` is not a compound or has none.
Slot* find_component(Slot& slot, std::string_view name) {
    if (!slot.is_compound())
        return nullptr;
    const auto& children = slot.attribute().children();
    for (unsigned int i = 0; i < children.size(); ++i)
        if (children[i]->long_name() == name || children[i]->short_name() == name)
            return slot.child(i);
    return nullptr;
}

/// Removes "[INDEX]" from the front of `path` and returns INDEX; -1 if that is not at the front.
int take_index(std::string_view& path) {
    unsigned int index = 0;
    const char* const last = path.data() + path.size();
    const auto [stop, error] = std::from_chars(path.data() + 1, last, index);
    if (error != std::errc() || stop == last || *stop != ']' || index > 0x7FFFFFFFu)
        return -1;
    path.remove_prefix(static_cast<size_t>(stop - path.data()) + 1);
    return static_cast<int>(index);
}

} // namespace

Slot* Node::find_plug(std::string_view path, bool make) {
    Slot* at = nullptr;
    while (!path.empty()) {
        const size_t end = path.find_first_of(".[");
        const std::string_view word = path.substr(0, end);
        at = at == nullptr ? slot(word) : find_component(*at, word);
        if (at == nullptr || end == std::string_view::npos)
            return at;
        path.remove_prefix(end);
        if (path.front() == '[') {
            const int index = take_index(path);
            if (index < 0 || !at->is_array())
                return nullptr;
            const auto logical = static_cast<unsigned int>(index);
            at = make ? at->element(logical) : at->find_element(logical);
            if (at == nullptr || path.empty())
                return at;
            if (path.front() != '.')
                return nullptr;
        }
        path.remove_prefix(1);
        if (path.empty())
            return nullptr;
    }
    return nullptr;
}

int Node::state() {
    const Slot* held = existing_slot(*base_attributes().state);
    return held == nullptr ? 0 : static_cast<int>(held->value.number());
}

Node* node_of(const MObject& object) { return dynamic_cast<Node*>(object.host_object()); }

Attribute* attribute_of(const MObject& object) {
    return dynamic_cast<Attribute*>(object.host_object());
}

} // namespace host::graph
