#include "host/graph/callbacks.h"

#include <algorithm>

namespace host::graph {

Callbacks& Callbacks::current() {
    static Callbacks* const callbacks = new Callbacks;
    return *callbacks;
}

CallbackId Callbacks::add_pre_removal(Node& node, std::function<void(Node&)> function,
                                      const void* code) {
    entries_.push_back({next_, &node, "", std::move(function), {}, code});
    return next_++;
}

CallbackId Callbacks::add_post_render(const std::string& panel,
                                      std::function<void(const std::string&)> function,
                                      const void* code) {
    entries_.push_back({next_, nullptr, panel, {}, std::move(function), code});
    return next_++;
}

bool Callbacks::remove(CallbackId id) {
    const auto at = std::find_if(entries_.begin(), entries_.end(),
                                 [&](const Registration& entry) { return entry.id == id; });
    if (at == entries_.end())
        return false;
    entries_.erase(at);
    return true;
}

const Callbacks::Registration* Callbacks::find(CallbackId id) const {
    for (const Registration& entry : entries_)
        if (entry.id == id)
            return &entry;
    return nullptr;
}

void Callbacks::fire_pre_removal(Node& node) {
    for (const CallbackId id : of_node(node)) {
        const Registration* entry = find(id);
        if (entry == nullptr)
            continue; // removed by a callback called before it
        const auto function = entry->on_removal;
        const CallbackId outer = running_;
        running_ = id;
        function(node);
        running_ = outer;
    }
}

void Callbacks::fire_post_render(const std::string& panel) {
    for (const CallbackId id : of_panel(panel)) {
        const Registration* entry = find(id);
        if (entry == nullptr)
            continue;
        const auto function = entry->on_render;
        const CallbackId outer = running_;
        running_ = id;
        function(panel);
        running_ = outer;
    }
}

std::vector<CallbackId> Callbacks::of_node(const Node& node) const {
    std::vector<CallbackId> ids;
    for (const Registration& entry : entries_)
        if (entry.node == &node && entry.on_removal)
            ids.push_back(entry.id);
    return ids;
}

std::vector<CallbackId> Callbacks::of_panel(const std::string& panel) const {
    std::vector<CallbackId> ids;
    for (const Registration& entry : entries_)
        if (entry.on_render && entry.panel == panel)
            ids.push_back(entry.id);
    return ids;
}

void Callbacks::forget(const Node& node) {
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [&](const Registration& entry) { return entry.node == &node; }),
                   entries_.end());
}

void Callbacks::remove_code(const std::function<bool(const void*)>& is_gone) {
    entries_.erase(std::remove_if(entries_.begin(), entries_.end(),
                                  [&](const Registration& entry) { return is_gone(entry.code); }),
                   entries_.end());
}

void Callbacks::clear() { entries_.clear(); }

} // namespace host::graph
