// Unwraps a mesh on each of the plug-in's three paths, with and without vertex tweaks, with undo
// and redo.
#include "host/base/strictness.h"
#include "tests/plugin_in_host/plugin_fixture.h"

#include <functional>
#include <utility>

namespace host::graph::testing {

namespace {

enum class History { with_history, recorded, direct };
enum class Tweaks { none, plain, fed, feeding };

struct Case {
    History history;
    Tweaks tweaks;
    bool strict;
};

std::string case_name(const ::testing::TestParamInfo<Case>& info) {
    static const char* const k_histories[] = {"WithHistory", "Recorded", "Direct"};
    static const char* const k_tweaks[] = {"NoTweaks", "Tweaks", "FedTweaks", "FeedingTweaks"};
    return std::string(k_histories[static_cast<int>(info.param.history)]) +
           k_tweaks[static_cast<int>(info.param.tweaks)] +
           (info.param.strict ? "InAStrictHost" : "");
}

std::vector<Case> all_cases() {
    std::vector<Case> cases;
    for (const bool strict : {false, true})
        for (const History history : {History::with_history, History::recorded, History::direct})
            for (const Tweaks tweaks : {Tweaks::none, Tweaks::plain, Tweaks::fed, Tweaks::feeding})
                cases.push_back({history, tweaks, strict});
    return cases;
}

/// Calls a function before every "dgeval" of the command.
class DgevalWatch : public SmallScript {
public:
    explicit DgevalWatch(std::function<void()> call) : call_(std::move(call)) {}
    MStatus execute(const std::string& text, bool display, bool undoable,
                    CommandResult& result) override {
        if (text.rfind("dgeval", 0) == 0)
            call_();
        return SmallScript::execute(text, display, undoable, result);
    }

private:
    std::function<void()> call_;
};

} // namespace

class HistoryTest : public PluginTest, public ::testing::WithParamInterface<Case> {
protected:
    HistoryTest() : was_strict_(is_strict()) {
        set_strict(GetParam().strict);
        scene.records_history = GetParam().history == History::recorded;
        shape_ = GetParam().history == History::with_history ? &add_cube_with_history()
                                                             : &add_cube("box");
        driver_ = &add("scaleNode");
        if (GetParam().tweaks != Tweaks::none) {
            set(*shape_, "pnts[2].pntx", 0.25);
            set(*shape_, "pnts[2].pnty", -0.5);
            set(*shape_, "pnts[5].pntx", 0.75);
            set(*shape_, "pnts[5].pntz", 1.5);
        }
        if (GetParam().tweaks == Tweaks::fed) {
            connect(*driver_, "result", *shape_, "pnts[5].pntz");
            evaluate(plug(*shape_, "pnts"));
        }
        if (GetParam().tweaks == Tweaks::feeding)
            connect(*shape_, "pnts[2].pntx", *driver_, "other");
        select(*shape_->parents().front());
    }

    /// Bytes of a copy of the evaluated mesh after a direct unwrap.
    std::string unwrapped_copy() {
        const Mesh mesh = (shape_->refresh(), *shape_->mesh());
        DagNode& transform = add_dag("transform", "reference");
        auto& copy = static_cast<MeshNode&>(add("mesh", "referenceShape", &transform));
        copy.set_mesh(mesh);
        const bool recorded = scene.records_history;
        const Selection selected = scene.selection();
        scene.records_history = false;
        select(transform);
        CommandResult result;
        EXPECT_EQ(script.execute("tessora", false, false, result), MS::kSuccess);
        scene.records_history = recorded;
        scene.select(selected);
        const std::string bytes = shown(copy);
        scene.remove(transform);
        return bytes;
    }

    std::vector<std::string> tweaks() {
        std::vector<std::string> values;
        if (const Slot* offsets = shape_->existing_slot(*mesh_attributes().tweaks))
            for (const auto& offset : offsets->below())
                for (const auto& part : offset->below())
                    values.push_back(part->path() + "=" + std::to_string(part->value.number()));
        return values;
    }

    ~HistoryTest() override { set_strict(was_strict_); }

    bool was_strict_;
    MeshNode* shape_;
    Node* driver_;
};

TEST_P(HistoryTest, ResultEqualsADirectUnwrapOfTheTweakedMesh) {
    const std::string expected = unwrapped_copy();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(shown(*shape_), expected);
}

TEST_P(HistoryTest, UndoRestoresTheMeshBitForBit) {
    const std::string before = shown(*shape_);
    const std::vector<std::string> tweaks_before = tweaks();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    shown(*shape_);
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(shown(*shape_), before);
    EXPECT_EQ(tweaks(), tweaks_before);
}

TEST_P(HistoryTest, UndoBeforeTheFirstEvaluationRestoresTheMesh) {
    const std::string before = shown(*shape_);
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(shown(*shape_), before);
}

TEST_P(HistoryTest, UndoAndRedoTenTimesGiveTheSameMeshesAndNodes) {
    const std::string before = shown(*shape_);
    const std::string expected = unwrapped_copy();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    shown(*shape_);
    const size_t nodes = scene.nodes().size();
    for (int round = 0; round < 10; ++round) {
        EXPECT_EQ(undo.undo(), MS::kSuccess);
        EXPECT_EQ(shown(*shape_), before);
        EXPECT_EQ(undo.redo(), MS::kSuccess);
        EXPECT_EQ(shown(*shape_), expected);
        EXPECT_EQ(scene.nodes().size(), nodes);
    }
}

TEST_P(HistoryTest, UndoRestoresTheMeshDataBeforeTheTweaks) {
    if (GetParam().history != History::recorded || GetParam().tweaks == Tweaks::none)
        return;
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    shown(*shape_);
    int evaluations = 0;
    DgevalWatch watch([&] {
        ++evaluations;
        EXPECT_EQ(plug(*shape_, "pnts[2].pnty").value.number(), 0.0);
    });
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(evaluations, 1);
    EXPECT_EQ(plug(*shape_, "pnts[2].pnty").value.number(), -0.5);
}

TEST_P(HistoryTest, UndoRemovesAllNodesThatTheCommandMade) {
    const size_t before = scene.nodes().size();
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    shown(*shape_);
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(scene.nodes().size(), before);
}

TEST_P(HistoryTest, ConnectionsOfTweaksMoveToTheTweakNodeAndBack) {
    if (GetParam().tweaks != Tweaks::fed && GetParam().tweaks != Tweaks::feeding)
        return;
    const bool moves = GetParam().history != History::direct;
    const auto is_at_shape = [&] {
        return GetParam().tweaks == Tweaks::fed
                   ? plug(*shape_, "pnts[5].pntz").source() == &plug(*driver_, "result")
                   : plug(*driver_, "other").source() == &plug(*shape_, "pnts[2].pntx");
    };
    ASSERT_TRUE(is_at_shape());
    ASSERT_EQ(run("tessora"), MS::kSuccess);
    EXPECT_EQ(is_at_shape(), !moves);
    if (moves) {
        Node* tweak = scene.find("polyTweak1");
        ASSERT_NE(tweak, nullptr);
        if (GetParam().tweaks == Tweaks::fed) {
            EXPECT_EQ(plug(*tweak, "tweak[5].tz").source(), &plug(*driver_, "result"));
        } else {
            EXPECT_EQ(plug(*driver_, "other").source(), &plug(*tweak, "tweak[2].tx"));
        }
    }
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_TRUE(is_at_shape());
}

INSTANTIATE_TEST_SUITE_P(Unwrap, HistoryTest, ::testing::ValuesIn(all_cases()), case_name);

} // namespace host::graph::testing
