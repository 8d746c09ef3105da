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

Slot* Node::find_plug(std::string_view path, bool make) {
    Slot* at = nullptr;
    while (!path.empty()) {
        const size_t end = path.find_first_of(".[");
        const std::string_view word = path.substr(0, end);
        if (at == nullptr) {
            at = slot(word);
        } else {
            if (!at->is_compound())
                return nullptr;
            Slot* next = nullptr;
            const auto& children = at->attribute().children();
            for (unsigned int i = 0; i < children.size(); ++i)
                if (children[i]->long_name() == word || children[i]->short_name() == word)
                    next = at->child(i);
            at = next;
        }
        if (at == nullptr || end == std::string_view::npos)
            return at;
        path.remove_prefix(end);
        if (path.front() == '[') {
            unsigned int index = 0;
            const char* const first = path.data() + 1;
            const char* const last = path.data() + path.size();
            const auto [stop, error] = std::from_chars(first, last, index);
            if (error != std::errc() || stop == last || *stop != ']' || index > 0x7FFFFFFFu ||
                !at->is_array())
                return nullptr;
            at = make ? at->element(index) : at->find_element(index);
            path.remove_prefix(static_cast<size_t>(stop - first) + 2);
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
