#include "host/graph/slot.h"

#include <algorithm>

namespace host::graph {

Slot::Slot(Node& node, Attribute& attribute, Slot* parent, int index)
    : node_(node), attribute_(attribute), parent_(parent), index_(index) {
    keyable = attribute.flags.keyable;
    channel_box = attribute.flags.channel_box;
    if (is_leaf())
        value = attribute.default_value();
}

Slot::~Slot() {
    below_.clear();
    if (!links_)
        return;
    if (links_->source != nullptr)
        unlink(*links_->source, *this);
    while (!links_->destinations.empty())
        unlink(*this, *links_->destinations.back());
}

Slot* Slot::child(unsigned int index) {
    if (below_.empty()) {
        below_.reserve(attribute_.children().size());
        for (const Ref<Attribute>& child : attribute_.children())
            below_.push_back(std::make_unique<Slot>(node_, *child, this, -1));
    }
    return below_[index].get();
}

Slot* Slot::find_element(unsigned int logical_index) const {
    const int wanted = static_cast<int>(logical_index);
    const auto at = std::lower_bound(
        below_.begin(), below_.end(), wanted,
        [](const std::unique_ptr<Slot>& slot, int index) { return slot->index_ < index; });
    return at != below_.end() && (*at)->index_ == wanted ? at->get() : nullptr;
}

Slot* Slot::element(unsigned int logical_index) {
    const int wanted = static_cast<int>(logical_index);
    auto at = below_.end();
    if (!below_.empty() && below_.back()->index_ >= wanted)
        at = std::lower_bound(
            below_.begin(), below_.end(), wanted,
            [](const std::unique_ptr<Slot>& slot, int index) { return slot->index_ < index; });
    if (at == below_.end() || (*at)->index_ != wanted)
        at = below_.insert(at, std::make_unique<Slot>(node_, attribute_, this, wanted));
    return at->get();
}

void Slot::enter_block() {
    for (Slot* slot = this; slot != nullptr; slot = slot->parent_)
        slot->in_block = true;
}

const std::vector<Slot*>& Slot::destinations() const {
    static const std::vector<Slot*> none;
    return links_ ? links_->destinations : none;
}

Slot* Slot::fed_ancestor() {
    for (Slot* slot = this; slot != nullptr; slot = slot->parent_)
        if (slot->source() != nullptr)
            return slot;
    return nullptr;
}

std::string Slot::path(bool long_names) const {
    std::string text;
    if (is_element())
        return parent_->path(long_names) + "[" + std::to_string(index_) + "]";
    // Components of a plain top-level compound are addressed directly: "translateX".
    const bool nested =
        parent_ != nullptr && (parent_->is_element() || parent_->parent_ != nullptr);
    if (nested)
        text = parent_->path(long_names) + ".";
    return text + (long_names ? attribute_.long_name() : attribute_.short_name());
}

Links& Slot::links() {
    if (!links_)
        links_ = std::make_unique<Links>();
    return *links_;
}

void Slot::count_fed(int change) {
    for (Slot* slot = parent_; slot != nullptr; slot = slot->parent_)
        slot->fed_below_ = static_cast<unsigned int>(static_cast<int>(slot->fed_below_) + change);
}

void Slot::link(Slot& source, Slot& destination) {
    source.links().destinations.push_back(&destination);
    destination.links().source = &source;
    destination.count_fed(1);
}

void Slot::unlink(Slot& source, Slot& destination) {
    std::vector<Slot*>& list = source.links().destinations;
    list.erase(std::find(list.begin(), list.end(), &destination));
    destination.links().source = nullptr;
    destination.count_fed(-1);
}

void reset_state(Slot& slot) {
    slot.was_set = false;
    if (slot.is_leaf()) {
        slot.value = slot.attribute().default_value();
        if (slot.source() != nullptr)
            slot.links().own_value = slot.value;
    }
    for (const auto& below : slot.below())
        reset_state(*below);
}

SlotState save_state(const Slot& slot) {
    SlotState state;
    state.value = slot.value.deep_copy();
    state.was_set = slot.was_set;
    state.in_block = slot.in_block;
    state.index = slot.index();
    state.below.reserve(slot.below().size());
    for (const auto& below : slot.below())
        state.below.push_back(save_state(*below));
    return state;
}

void make_elements(Slot& slot, const SlotState& state) {
    if (slot.is_leaf())
        return;
    for (size_t i = 0; i < state.below.size(); ++i) {
        const SlotState& part = state.below[i];
        Slot* below = slot.is_array() ? slot.element(static_cast<unsigned int>(part.index))
                                      : slot.child(static_cast<unsigned int>(i));
        make_elements(*below, part);
    }
}

void restore_state(Slot& slot, const SlotState& state) {
    slot.was_set = state.was_set;
    slot.in_block = slot.in_block || state.in_block;
    if (slot.is_leaf()) {
        if (slot.source() != nullptr)
            slot.links().own_value = state.value.deep_copy();
        slot.value = state.value.deep_copy();
        return;
    }
    size_t next = 0;
    for (const auto& below : slot.below()) {
        if (slot.is_compound()) {
            if (next < state.below.size()) {
                restore_state(*below, state.below[next++]);
                continue;
            }
        } else {
            while (next < state.below.size() && state.below[next].index < below->index())
                ++next;
            if (next < state.below.size() && state.below[next].index == below->index()) {
                restore_state(*below, state.below[next++]);
                continue;
            }
        }
        reset_state(*below); // the element did not exist when the state was saved
    }
}

} // namespace host::graph
