#include "host/graph/uv_tweak.h"

namespace host::graph {
namespace {

/// Saves what it replaces and no more: the states of all offsets, as change_slot_edit keeps them,
/// would make a series of moves cost memory for the whole chart map each time.
class TweakUvs : public Edit {
public:
    TweakUvs(Node& tweak, std::vector<UvOffset> offsets)
        : node_(&tweak), offsets_(std::move(offsets)) {}

    MStatus redo() override {
        before_.clear();
        for (const UvOffset& offset : offsets_) {
            Slot& element = *array().element(offset.uv);
            before_.push_back({offset.uv, value(element, 0), value(element, 1)});
            put(element, before_.back().u + offset.u, before_.back().v + offset.v);
        }
        announce_change(array());
        return MS::kSuccess;
    }
    MStatus undo() override {
        for (const UvOffset& old : before_)
            put(*array().element(old.uv), old.u, old.v);
        announce_change(array());
        return MS::kSuccess;
    }

private:
    Slot& array() { return *node_->slot("uvTweak"); }
    static float value(Slot& element, unsigned int part) {
        return static_cast<float>(element.child(part)->value.number());
    }
    static void put(Slot& element, float u, float v) {
        const float values[] = {u, v};
        for (unsigned int part = 0; part < 2; ++part) {
            Slot& slot = *element.child(part);
            slot.value = PlugValue::of_float(values[part]);
            slot.was_set = true;
        }
        element.enter_block();
    }

    Ref<Node> node_;
    std::vector<UvOffset> offsets_, before_;
};

} // namespace

EditPtr tweak_uvs_edit(Node& tweak, std::vector<UvOffset> offsets) {
    return std::make_unique<TweakUvs>(tweak, std::move(offsets));
}

} // namespace host::graph
