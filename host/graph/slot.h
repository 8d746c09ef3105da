/// The state of a node's attribute, array element or component: value, flags, connections.
///
/// Slots form the same trees as attributes. They are created on first use and live as long as their
/// node, so a plug can hold a pointer to its slot together with a reference to the node. `dirty`
/// matters for computed outputs and for connected destinations only: an unconnected input is always
/// clean.
#pragma once

#include "host/graph/attribute.h"

#include <memory>
#include <string>
#include <vector>

namespace host::graph {

class Node;
class Slot;

/// The connections of a slot; allocated only for slots that are or were connected.
struct Links {
    Slot* source = nullptr;          ///< the slot that feeds this one
    std::vector<Slot*> destinations; ///< the slots fed by this one, in order of connection
    /// The value that was set while the slot was connected; it becomes the slot's value on
    /// disconnection. ValueKind::none: the slot keeps the last value that came through the
    /// connection.
    PlugValue own_value;
};

class MHOST_EXPORT Slot {
public:
    Slot(Node& node, Attribute& attribute, Slot* parent, int index);
    ~Slot();
    Slot(const Slot&) = delete;
    Slot& operator=(const Slot&) = delete;

    Node& node() const { return node_; }
    Attribute& attribute() const { return attribute_; }
    Slot* parent() const { return parent_; }
    /// Logical index of an array element, else -1.
    int index() const { return index_; }

    bool is_element() const { return index_ >= 0; }
    bool is_in_block() const { return in_block; }
    /// Marks this element, and any elements that contain it, as existing.
    void enter_block();
    /// The array as a whole, not one of its elements.
    bool is_array() const { return attribute_.is_array() && !is_element(); }
    /// Has components. An array of compounds has elements instead.
    bool is_compound() const { return attribute_.is_compound() && !is_array(); }
    bool is_leaf() const { return !is_array() && !is_compound(); }

    /// A component of a compound, created on first use. `index` must be less than the number of
    /// children.
    Slot* child(unsigned int index);
    /// An array element by logical index. `element` creates a missing one, `find_element` returns
    /// NULL.
    Slot* element(unsigned int logical_index);
    Slot* find_element(unsigned int logical_index) const;
    /// The elements (ordered by logical index) or components created so far.
    const std::vector<std::unique_ptr<Slot>>& below() const { return below_; }

    Slot* source() const { return links_ ? links_->source : nullptr; }
    const std::vector<Slot*>& destinations() const;
    bool is_connected() const { return source() != nullptr || !destinations().empty(); }
    /// Number of connections into elements and components of this slot, at any depth.
    unsigned int fed_below() const { return fed_below_; }
    /// The nearest slot that has an incoming connection: this one or an ancestor; NULL if none.
    Slot* fed_ancestor();

    /// The plug's path from its attribute: "pnts[2].pntx" in long names, "pt[2].px" in short names.
    std::string path(bool long_names = true) const;

    PlugValue value;
    bool dirty = false;
    bool locked = false;
    bool was_set = false; ///< was given a value explicitly: saved with the scene
    bool busy = false;    ///< is being evaluated
    bool keyable = false;
    bool channel_box = false;
    bool in_block =
        false;          ///< for array elements: exists, because it was requested, set or evaluated
    uint32_t visit = 0; ///< number of the last dirty propagation that visited this slot

    /// Edits the connection lists of both ends, without checks and without propagating dirty marks.
    static void link(Slot& source, Slot& destination);
    static void unlink(Slot& source, Slot& destination);
    Links& links();

private:
    void count_fed(int change);
    Node& node_;
    Attribute& attribute_;
    Slot* parent_;
    int index_;
    unsigned int fed_below_ = 0;
    std::unique_ptr<Links> links_;
    std::vector<std::unique_ptr<Slot>> below_;
};

/// Values of a slot with all its elements and components, for undo and copies.
struct SlotState {
    PlugValue value;
    bool was_set = false;
    bool in_block = false;
    int index = -1;
    std::vector<SlotState> below;
};
MHOST_EXPORT SlotState save_state(const Slot& slot);
/// Resets the slot and everything below it to default values.
MHOST_EXPORT void reset_state(Slot& slot);
/// Creates the elements of a saved state that the slot lacks.
MHOST_EXPORT void make_elements(Slot& slot, const SlotState& state);
/// Restores saved values. Elements created since are reset to defaults. A slot that is connected
/// now takes the value for the time after disconnection (Links::own_value).
MHOST_EXPORT void restore_state(Slot& slot, const SlotState& state);

} // namespace host::graph
