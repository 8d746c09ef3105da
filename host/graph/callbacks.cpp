#include "host/graph/callbacks.h"

#include "host/base/strictness.h"
#include "host/graph/script_host.h"

#include <algorithm>

namespace host::graph {

Callbacks& Callbacks::current() {
    static Callbacks* const callbacks = new Callbacks;
    return *callbacks;
}

CallbackId Callbacks::add_pre_removal(Node& node, std::function<void(Node&)> function,
                                      const void* code) {
    entries_.push_back({next_, &node, "", std::move(function), {}, code, ""});
    return next_++;
}

CallbackId Callbacks::add_post_render(const std::string& panel,
                                      std::function<void(const std::string&)> function,
                                      const void* code) {
    entries_.push_back({next_, nullptr, panel, {}, std::move(function), code, ""});
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

template <class Call>
void Callbacks::fire(CallbackId id, const std::string& subject, const Call& call) {
    const Registration* found = find(id);
    if (found == nullptr)
        return; // removed by a callback called before it
    if (!found->unloaded_plugin.empty()) {
        show_line(Severity::error, "Callback of the unloaded plug-in \"" + found->unloaded_plugin +
                                       "\" on \"" + subject +
                                       "\": the application would crash here.");
        return;
    }
    const Registration entry = *found; // the callback may remove its own registration
    const CallbackId outer = running_;
    running_ = id;
    call(entry);
    running_ = outer;
}

void Callbacks::fire_pre_removal(Node& node) {
    for (const CallbackId id : of_node(node))
        fire(id, node.name_text(), [&](const Registration& entry) { entry.on_removal(node); });
}

void Callbacks::fire_post_render(const std::string& panel) {
    for (const CallbackId id : of_panel(panel))
        fire(id, panel, [&](const Registration& entry) { entry.on_render(panel); });
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

void Callbacks::unload_code(const std::function<bool(const void*)>& is_in_plugin,
                            const std::string& plugin) {
    if (is_strict()) {
        for (Registration& entry : entries_)
            if (is_in_plugin(entry.code))
                entry.unloaded_plugin = plugin;
        return;
    }
    entries_.erase(
        std::remove_if(entries_.begin(), entries_.end(),
                       [&](const Registration& entry) { return is_in_plugin(entry.code); }),
        entries_.end());
}

void Callbacks::abandon(const Node& node, const std::string& plugin) {
    for (Registration& entry : entries_)
        if (entry.node == &node)
            entry.unloaded_plugin = plugin;
}

void Callbacks::clear() { entries_.clear(); }

} // namespace host::graph
