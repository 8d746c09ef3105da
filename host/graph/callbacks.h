/// Callbacks that plug-ins ask for: before a node goes, after a panel was drawn.
///
/// An id names one registration and is never used again. Callbacks may remove callbacks, their own
/// included, and add new ones; those added during a round are not called in it.
#pragma once

#include "host/graph/node.h"

#include <functional>

namespace host::graph {

using CallbackId = uint64_t;

class MHOST_EXPORT Callbacks {
public:
    static Callbacks& current();

    /// `code`: the address of the plug-in's function, so that it can be found when the plug-in
    /// goes.
    CallbackId add_pre_removal(Node& node, std::function<void(Node&)> function,
                               const void* code = nullptr);
    CallbackId add_post_render(const std::string& panel,
                               std::function<void(const std::string&)> function,
                               const void* code = nullptr);
    /// Removes everything whose code the question says yes to.
    void remove_code(const std::function<bool(const void* code)>& is_gone);
    /// Removes what watches a node.
    void forget(const Node& node);
    /// False when the id names nothing (any more).
    bool remove(CallbackId id);

    void fire_pre_removal(Node& node);
    void fire_post_render(const std::string& panel);

    /// How many post-render callbacks a panel has; of a node, the ids registered.
    size_t post_render_count(const std::string& panel) const;
    std::vector<CallbackId> of_node(const Node& node) const;
    /// The callback that runs now; 0 outside of any.
    CallbackId running() const { return running_; }
    void clear();

private:
    struct Entry {
        CallbackId id;
        const Node* node; ///< watched, not owned; entries go when the node does
        std::string panel;
        std::function<void(Node&)> on_removal;
        std::function<void(const std::string&)> on_render;
        const void* code;
    };
    const Entry* find(CallbackId id) const;
    std::vector<Entry> entries_;
    CallbackId next_ = 1;
    CallbackId running_ = 0;
};

} // namespace host::graph
