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
    /// Called when a plug-in is unloaded: removes the callbacks whose code address lies in it. A
    /// strict host keeps them and reports an error whenever one of them should be called.
    void unload_code(const std::function<bool(const void* code)>& is_in_plugin,
                     const std::string& plugin);
    /// Treats the pre-removal callbacks of a node as left behind by an unloaded plug-in.
    void abandon(const Node& node, const std::string& plugin);
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
        std::string unloaded_plugin; ///< not empty: must not be called any more
    };
    template <class Call>
    void fire(CallbackId id, const std::string& subject, const Call& call);
    const Registration* find(CallbackId id) const;
    std::vector<Registration> entries_;
    CallbackId next_ = 1;
    CallbackId running_ = 0;
};

} // namespace host::graph
