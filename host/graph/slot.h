/// What one node holds for one attribute, array element or component: value, state, connections.
///
/// Slots form the same trees as attributes. They are made when somebody first asks for them and
/// live as long as their node, so a plug may keep a pointer to its slot together with a reference
/// to the node. `dirty` means something only for computed outputs and for connected destinations:
/// an input that nothing feeds is always clean.
#pragma once

#include "host/graph/attribute.h"

#include <memory>
#include <string>
#include <vector>

namespace host::graph {

class Node;
class Slot;

/// The connections of a slot; most slots have none and no record.
struct Links {
    Slot* source = nullptr;          ///< what feeds this slot
    std::vector<Slot*> destinations; ///< what this slot feeds, in the order of connecting
    /// A value that was set while a connection fed the slot: it is what the slot holds when the
    /// connection goes. Kind none: the slot keeps what came last through the connection.
    Value under;
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
    /// Logical index of an array element, -1 for everything else.
    int index() const { return index_; }

    bool is_element() const { return index_ >= 0; }
    bool is_in_block() const { return in_block; }
    /// From now on this element, and those it lies in, count as existing.
    void enter_block();
    /// The array itself, not one of its elements.
    bool is_array() const { return attribute_.is_array() && !is_element(); }
    /// Has components (an array of compounds has elements instead).
    bool is_compound() const { return attribute_.is_compound() && !is_array(); }
    bool is_leaf() const { return !is_array() && !is_compound(); }

    /// Component of a compound; made on first use. `index` below the attribute's children.
    Slot* child(unsigned int index);
    /// Element of an array by logical index, made if missing; or null if missing.
    Slot* element(unsigned int logical_index);
    Slot* find_element(unsigned int logical_index) const;
    /// Elements or components made so far, elements in order of their logical index.
    const std::vector<std::unique_ptr<Slot>>& below() const { return below_; }
    /// Takes an element out of its array and drops it, when nothing is connected to it.
    bool drop_element(unsigned int logical_index);

    Slot* source() const { return links_ ? links_->source : nullptr; }
    const std::vector<Slot*>& destinations() const;
    bool is_connected() const { return source() != nullptr || !destinations().empty(); }
    /// Connections that feed this slot's elements and components, at any depth.
    unsigned int fed_below() const { return fed_below_; }
    /// This slot or one above it is fed by a connection.
    Slot* fed_ancestor();

    /// Components and elements by path: "pnts[2].pntx" (long names), "pt[2].px" (short).
    std::string path(bool long_names = true) const;

    Value value;
    bool dirty = false;
    bool locked = false;
    bool was_set =
        false;         ///< somebody gave it a value other than the default's: saved with the scene
    bool busy = false; ///< being evaluated right now
    bool keyable = false;
    bool channel_box = false;
    bool in_block = false; ///< an element that counts: it was asked for, set or evaluated
    uint32_t visit = 0;    ///< last dirty propagation that came by

    /// Plain surgery on the connection lists of both ends; no checks, no propagation.
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

/// Bit-for-bit comparison and copy of whole slots, components and elements included.
struct SlotState {
    Value value;
    bool was_set = false;
    bool in_block = false;
    int index = -1;
    std::vector<SlotState> below;
};
MHOST_EXPORT SlotState save_state(const Slot& slot);
/// Gives the slot and all below it the defaults of their attributes.
MHOST_EXPORT void reset_state(Slot& slot);
/// Makes the elements that a saved state has and the slot lacks.
MHOST_EXPORT void make_elements(Slot& slot, const SlotState& state);
/// Gives the slot the saved values back. Elements that came into being since then keep existing
/// with their defaults. Fed slots take the value as what lies under the connection.
MHOST_EXPORT void restore_state(Slot& slot, const SlotState& state);

} // namespace host::graph
