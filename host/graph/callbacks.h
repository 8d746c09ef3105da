/// Callbacks registered by plug-ins: before a node is removed from the scene, and after a panel was
/// drawn.
///
/// Every registration has its own id; ids are never reused. A callback may remove any callback,
/// itself included, and may add callbacks; those added while an event is being delivered are called
/// from the next event on.
#pragma once

#include "host/graph/node.h"

#include <functional>

namespace host::graph {

using CallbackId = uint64_t;

class MHOST_EXPORT Callbacks {
public:
    static Callbacks& current();

    /// `code`: address of the plug-in's function; identifies the plug-in's callbacks when its
    /// library is unloaded.
    CallbackId add_pre_removal(Node& node, std::function<void(Node&)> function,
                               const void* code = nullptr);
    CallbackId add_post_render(const std::string& panel,
                               std::function<void(const std::string&)> function,
                               const void* code = nullptr);
    /// Removes every callback for whose code address `is_gone` returns true.
    void remove_code(const std::function<bool(const void* code)>& is_gone);
    /// Removes all callbacks registered on a node.
    void forget(const Node& node);
    /// Returns false if no callback has this id.
    bool remove(CallbackId id);

    void fire_pre_removal(Node& node);
    void fire_post_render(const std::string& panel);

    /// The ids of a node's pre-removal callbacks and of a panel's post-render callbacks.
    std::vector<CallbackId> of_node(const Node& node) const;
    std::vector<CallbackId> of_panel(const std::string& panel) const;
    /// The id of the callback being called, 0 if none.
    CallbackId running() const { return running_; }
    void clear();

private:
    struct Registration {
        CallbackId id;
        const Node* node; ///< not owned; null for panel callbacks. Removed with the node
        std::string panel;
        std::function<void(Node&)> on_removal;
        std::function<void(const std::string&)> on_render;
        const void* code;
    };
    const Registration* find(CallbackId id) const;
    std::vector<Registration> entries_;
    CallbackId next_ = 1;
    CallbackId running_ = 0;
};

} // namespace host::graph
