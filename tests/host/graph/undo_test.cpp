// The undo queue, also tested by a long random walk against a simple model.
#include "tests/host/graph/fixture.h"
#include "tests/host/graph/small_script.h"

#include <maya/MFnDependencyNode.h>
#include <maya/MGlobal.h>
#include <maya/MPxCommand.h>

#include <map>
#include <random>

namespace host::graph::testing {

using UndoTest = SceneTest;

TEST_F(UndoTest, OneStatementIsOneEntry) {
    Node& node = add("scaleNode");
    {
        UndoFrame frame("two settings");
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(4)));
        scene.perform(set_value_edit(plug(node, "factor"), PlugValue::of_double(5)));
    }
    EXPECT_EQ(undo.undo_name(), "two settings");
    EXPECT_EQ(undo.undo(), MS::kSuccess);
    EXPECT_EQ(pull(node, "result"), 2.0);
    EXPECT_EQ(undo.redo(), MS::kSuccess);
    EXPECT_EQ(pull(node, "result"), 20.0);
}

TEST_F(UndoTest, NestedFramesBecomePartOfTheOutermost) {
    Node& node = add("scaleNode");
    {
        UndoFrame outer("outer");
        UndoFrame inner("inner");
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(4)));
    }
    EXPECT_EQ(undo.names(), std::vector<std::string>{"outer"});
}

TEST_F(UndoTest, AFrameThatDoesNotRecordLeavesNoEntry) {
    Node& node = add("scaleNode");
    {
        UndoFrame frame("quiet", false);
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(4)));
    }
    EXPECT_EQ(undo.undo_count(), 0u);
    EXPECT_EQ(undo.undo(), MS::kFailure);
    EXPECT_EQ(pull(node, "input"), 4.0);
}

/// Sets the input of a node as one entry of the queue.
void set_input(Scene& scene, Slot& input, double value) {
    UndoFrame frame("set");
    scene.perform(set_value_edit(input, PlugValue::of_double(value)));
}

TEST_F(UndoTest, UndoBackToTheSavedStateMakesTheSceneUnmodified) {
    Slot& input = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    undo.mark_saved();
    EXPECT_FALSE(scene.is_modified);
    set_input(scene, input, 5);
    EXPECT_TRUE(scene.is_modified);
    undo.undo();
    EXPECT_FALSE(scene.is_modified);
    undo.redo();
    EXPECT_TRUE(scene.is_modified);
}

TEST_F(UndoTest, JoinedEntriesAreOneStep) {
    Slot& input = plug(add("scaleNode"), "input");
    Slot& other = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    set_input(scene, input, 5);
    set_input(scene, other, 7);
    undo.join_after(2); // one entry alone is left as it is
    EXPECT_EQ(3u, undo.undo_count());
    undo.join_after(1);
    EXPECT_EQ((std::vector<std::string>{"set", "set, set"}), undo.names());
    undo.undo();
    EXPECT_EQ(4.0, input.value.number());
    EXPECT_NE(7.0, other.value.number());
    undo.redo();
    EXPECT_EQ(5.0, input.value.number());
    EXPECT_EQ(7.0, other.value.number());
    undo.join_after(9);
    EXPECT_EQ(2u, undo.undo_count());
}

TEST_F(UndoTest, StateSavedInsideOfJoinedEntriesIsNotReachedByUndo) {
    Slot& input = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    undo.mark_saved();
    set_input(scene, input, 5);
    undo.join_after(0);
    undo.undo();
    EXPECT_TRUE(scene.is_modified);
    undo.redo();
    EXPECT_TRUE(scene.is_modified);
}

TEST_F(UndoTest, StateSavedAfterJoinedEntriesIsReachedByRedo) {
    Slot& input = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    set_input(scene, input, 5);
    undo.mark_saved();
    undo.join_after(0);
    EXPECT_FALSE(scene.is_modified);
    undo.undo();
    EXPECT_TRUE(scene.is_modified);
    undo.redo();
    EXPECT_FALSE(scene.is_modified);
}

TEST_F(UndoTest, EmptyingTheQueueInTheSavedStateKeepsItSaved) {
    Slot& input = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    undo.mark_saved();
    undo.clear();
    set_input(scene, input, 5);
    EXPECT_TRUE(scene.is_modified);
    undo.undo();
    EXPECT_FALSE(scene.is_modified);
}

TEST_F(UndoTest, EmptyingTheQueueOfAModifiedSceneLeavesItModified) {
    Slot& input = plug(add("scaleNode"), "input");
    undo.mark_saved();
    set_input(scene, input, 4);
    undo.clear();
    set_input(scene, input, 5);
    undo.undo();
    EXPECT_TRUE(scene.is_modified);
}

TEST_F(UndoTest, UndoBeyondTheSavedStateMakesTheSceneModified) {
    Slot& input = plug(add("scaleNode"), "input");
    set_input(scene, input, 4);
    undo.mark_saved();
    undo.undo();
    EXPECT_TRUE(scene.is_modified);
    undo.redo();
    EXPECT_FALSE(scene.is_modified);
    undo.undo();
    set_input(scene, input, 6);
    undo.undo();
    EXPECT_TRUE(scene.is_modified) << "the saved state is out of reach";
}

TEST_F(UndoTest, SelectingDoesNotModifyTheScene) {
    Node& node = add("scaleNode");
    undo.mark_saved();
    {
        UndoFrame frame("select");
        scene.perform(select_edit({SelectionItem(node)}));
    }
    EXPECT_FALSE(scene.is_modified);
    undo.undo();
    EXPECT_FALSE(scene.is_modified);
    EXPECT_EQ(1u, undo.redo_count());
}

TEST_F(UndoTest, StateSavedInsideOfAnEntryIsNotReachedByUndo) {
    Slot& input = plug(add("scaleNode"), "input");
    {
        UndoFrame frame("set and save");
        scene.perform(set_value_edit(input, PlugValue::of_double(7)));
        undo.mark_saved();
    }
    EXPECT_FALSE(scene.is_modified);
    undo.undo();
    EXPECT_TRUE(scene.is_modified);
}

TEST_F(UndoTest, ANewEntryClearsTheRedoList) {
    Node& node = add("scaleNode");
    for (const double value : {4.0, 5.0}) {
        UndoFrame frame("set");
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(value)));
    }
    undo.undo();
    {
        UndoFrame frame("other");
        scene.perform(set_value_edit(plug(node, "factor"), PlugValue::of_double(1)));
    }
    EXPECT_EQ(undo.redo_count(), 0u);
    EXPECT_EQ(undo.redo(), MS::kFailure);
}

TEST_F(UndoTest, TheOldestEntriesAreDroppedAtTheLimit) {
    Node& node = add("scaleNode");
    undo.set_limit(2);
    for (int i = 0; i < 5; ++i) {
        UndoFrame frame(std::to_string(i));
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(i)));
    }
    EXPECT_EQ(undo.names(), (std::vector<std::string>{"3", "4"}));
    undo.set_limit(0);
}

TEST_F(UndoTest, WhenDisabledItRecordsNothing) {
    Node& node = add("scaleNode");
    undo.set_enabled(false);
    {
        UndoFrame frame("set");
        scene.perform(set_value_edit(plug(node, "input"), PlugValue::of_double(3)));
    }
    undo.set_enabled(true);
    EXPECT_EQ(undo.undo_count(), 0u);
}

TEST_F(UndoTest, UndoOfAUsersConnectionRestoresTheOldValue) {
    Node& first = add("scaleNode");
    Node& second = add("scaleNode");
    {
        UndoFrame frame("connect");
        scene.perform(connect_edit(plug(first, "result"), plug(second, "input"), false));
    }
    EXPECT_EQ(pull(second, "input"), 2.0);
    undo.undo();
    EXPECT_EQ(pull(second, "input"), 1.0);
}

// === Commands of plug-ins ====================================================================

namespace {

/// Logs its calls.
class LoudCommand : public MPxCommand {
public:
    ~LoudCommand() override { log.push_back("delete"); }
    MStatus doIt(const MArgList& args) override {
        log.push_back(std::string("do ") + args.asString(0).asChar());
        setResult(3);
        return answer;
    }
    MStatus undoIt() override {
        log.push_back("undo");
        setResult("undone");
        return MS::kSuccess;
    }
    MStatus redoIt() override {
        log.push_back("redo");
        clearResult();
        appendToResult(true);
        return MS::kSuccess;
    }
    bool isUndoable() const override { return undoable; }

    static void* create() { return fails ? nullptr : new LoudCommand; }
    static std::vector<std::string> log;
    static MStatus answer;
    static bool undoable, fails;
};
std::vector<std::string> LoudCommand::log;
MStatus LoudCommand::answer;
bool LoudCommand::undoable = true;
bool LoudCommand::fails = false;

} // namespace

class CommandTest : public SceneTest {
protected:
    CommandTest() {
        LoudCommand::log.clear();
        LoudCommand::answer = MS::kSuccess;
        LoudCommand::undoable = true;
        LoudCommand::fails = false;
        Commands::current().add("loud", LoudCommand::create, nullptr);
    }
    ~CommandTest() override { Commands::current().remove("loud"); }
    MStatus run() { return Commands::current().run("loud", {"once"}, result); }
    CommandResult result;
};

TEST_F(CommandTest, AnUndoableCommandStaysOnTheQueueAndIsDoneOnce) {
    EXPECT_EQ(run(), MS::kSuccess);
    int number = 0;
    EXPECT_TRUE(result.to(number));
    EXPECT_EQ(number, 3);
    undo.undo();
    std::string text;
    EXPECT_TRUE(Commands::current().result().to(text));
    EXPECT_EQ(text, "undone");
    undo.redo();
    EXPECT_TRUE(Commands::current().result().to(number));
    EXPECT_EQ(number, 1);
    undo.clear();
    EXPECT_EQ(LoudCommand::log, (std::vector<std::string>{"do once", "undo", "redo", "delete"}));
}

TEST_F(CommandTest, AFailingCommandIsDeletedAtOnce) {
    LoudCommand::answer = MS::kLicenseFailure;
    EXPECT_EQ(run(), MS::kLicenseFailure);
    EXPECT_EQ(LoudCommand::log, (std::vector<std::string>{"do once", "delete"}));
    EXPECT_EQ(undo.undo_count(), 0u);
}

TEST_F(CommandTest, ACommandThatIsNotUndoableIsDeletedAtOnce) {
    LoudCommand::undoable = false;
    EXPECT_EQ(run(), MS::kSuccess);
    EXPECT_EQ(LoudCommand::log.back(), "delete");
}

TEST_F(CommandTest, ACommandRunWithoutUndoIsDeletedAtOnce) {
    SmallScript script;
    EXPECT_EQ(MGlobal::executeCommand("loud now", false, false), MS::kSuccess);
    EXPECT_EQ(LoudCommand::log, (std::vector<std::string>{"do now", "delete"}));
    EXPECT_EQ(undo.undo_count(), 0u);
}

TEST_F(CommandTest, UnknownCommandsAndFailingCreatorsAreReported) {
    EXPECT_EQ(Commands::current().run("nobody", {}, result), MS::kUnknownParameter);
    LoudCommand::fails = true;
    EXPECT_EQ(run(), MS::kInsufficientMemory);
}

TEST_F(CommandTest, ANameCanBeRegisteredOnlyOnce) {
    EXPECT_EQ(Commands::current().add("loud", LoudCommand::create, nullptr), MS::kInvalidParameter);
    EXPECT_EQ(Commands::current().remove("nobody"), MS::kInvalidParameter);
}

TEST(CommandResults, AppendingMakesAnArray) {
    CommandResult result;
    int number = 0;
    EXPECT_FALSE(result.to(number));
    result.append(4);
    EXPECT_TRUE(result.to(number));
    result.append(0.5);
    EXPECT_EQ(result.kind, CommandResult::Kind::real);
    result.append(std::string("x"));
    EXPECT_EQ(result.to_texts(), (std::vector<std::string>{"4", "0.5", "x"}));
    EXPECT_FALSE(result.to(number));
}

// === Random walk =============================================================================

namespace {

/// The model of the scene: numbers and connections of scale nodes.
struct Model {
    struct One {
        double input = 1.0, factor = 2.0;
        int source = -1; ///< index of the node that feeds `in`, -1 if none
    };
    std::map<int, One> nodes;

    double input(int node, int depth = 0) const {
        const One& one = nodes.at(node);
        return one.source < 0 || depth > 64 ? one.input : result(one.source, depth + 1);
    }
    double result(int node, int depth = 0) const {
        return input(node, depth + 1) * nodes.at(node).factor;
    }
    bool feeds(int from, int to) const {
        for (int at = from; at >= 0; at = nodes.at(at).source)
            if (at == to)
                return true;
        return false;
    }
};

} // namespace

class RandomWalk : public SceneTest, public ::testing::WithParamInterface<unsigned> {
protected:
    /// The model after evaluating everything: destinations hold the values of their sources.
    void settle(Model& model) {
        std::map<int, double> inputs;
        for (const auto& one : model.nodes)
            inputs[one.first] = model.input(one.first);
        for (auto& one : model.nodes)
            one.second.input = inputs[one.first];
    }
    void compare(const Model& model) {
        for (const auto& one : model.nodes) {
            ASSERT_TRUE(nodes[size_t(one.first)]->is_valid());
            ASSERT_EQ(pull(*nodes[size_t(one.first)], "result"), model.result(one.first));
        }
    }
    int pick(const Model& model) {
        auto at = model.nodes.begin();
        std::advance(at, random() % model.nodes.size());
        return at->first;
    }
    /// Performs one step in scene and model; returns false if it is not possible now.
    bool step(Model& model);

    std::mt19937 random{GetParam()};
    std::vector<Ref<Node>> nodes;
};

bool RandomWalk::step(Model& model) {
    const unsigned kind = random() % 7;
    if (model.nodes.empty() && kind != 0)
        return false;
    const int a = model.nodes.empty() ? -1 : pick(model);
    const int b = model.nodes.empty() ? -1 : pick(model);
    UndoFrame frame("step");
    if (kind == 0) { // create
        if (model.nodes.size() > 12)
            return false;
        nodes.push_back(scene.make_node(scene.find_type("scaleNode")));
        EXPECT_EQ(scene.perform(add_node_edit(*nodes.back(), nullptr)), MS::kSuccess);
        model.nodes[int(nodes.size()) - 1] = {};
    } else if (kind == 1 || kind == 2) { // set
        const double value = double(random() % 8) - 3.0;
        const bool is_input = kind == 1;
        Slot& slot = plug(*nodes[size_t(a)], is_input ? "input" : "factor");
        const MStatus status = scene.perform(set_value_edit(slot, PlugValue::of_double(value)));
        EXPECT_EQ(bool(status), !is_input || model.nodes[a].source < 0);
        if (status)
            (is_input ? model.nodes[a].input : model.nodes[a].factor) = value;
    } else if (kind == 3) { // connect
        if (model.feeds(a, b))
            return false;
        const MStatus status = scene.perform(connect_edit(plug(*nodes[size_t(a)], "result"),
                                                          plug(*nodes[size_t(b)], "input"), false));
        EXPECT_EQ(bool(status), model.nodes[b].source < 0);
        if (status)
            model.nodes[b].source = a;
    } else if (kind == 4) { // disconnect
        if (model.nodes[a].source < 0)
            return false;
        EXPECT_EQ(
            scene.perform(disconnect_edit(plug(*nodes[size_t(model.nodes[a].source)], "result"),
                                          plug(*nodes[size_t(a)], "input"))),
            MS::kSuccess);
        model.nodes[a].source = -1;
    } else if (kind == 5) { // duplicate
        if (model.nodes.size() > 12)
            return false;
        std::vector<Scene::Copy> copies;
        EXPECT_EQ(scene.duplicate(*nodes[size_t(a)], true, copies), MS::kSuccess);
        nodes.push_back(copies.front().node);
        EXPECT_EQ(scene.perform(add_node_edit(*nodes.back(), nullptr)), MS::kSuccess);
        model.nodes[int(nodes.size()) - 1] = {model.input(a), model.nodes[a].factor, -1};
    } else { // delete
        EXPECT_EQ(scene.perform(remove_node_edit(*nodes[size_t(a)])), MS::kSuccess);
        for (auto& one : model.nodes)
            if (one.second.source == a)
                one.second.source = -1;
        model.nodes.erase(a);
    }
    return true;
}

TEST_P(RandomWalk, AgreesWithASimpleModel) {
    constexpr int k_steps = 25000;
    std::vector<Model> done(1);
    std::vector<Model> undone;
    for (int i = 0; i < k_steps && !HasFatalFailure(); ++i) {
        const unsigned kind = random() % 10;
        const size_t entries = undo.undo_count();
        if (kind < 2 && done.size() > 1) {
            ASSERT_EQ(undo.undo(), MS::kSuccess) << "seed " << GetParam() << " step " << i;
            undone.push_back(done.back());
            done.pop_back();
        } else if (kind == 2 && !undone.empty()) {
            ASSERT_EQ(undo.redo(), MS::kSuccess) << "seed " << GetParam() << " step " << i;
            done.push_back(undone.back());
            undone.pop_back();
        } else {
            Model next = done.back();
            step(next);
            if (undo.undo_count() != entries) {
                done.push_back(next);
                undone.clear();
            }
        }
        // Everything is evaluated after each step, so that values after disconnections are known.
        compare(done.back());
        settle(done.back());
        if (done.size() > 200) { // bounds the memory of the walk
            undo.clear();
            done.erase(done.begin(), done.end() - 1);
            undone.clear();
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, RandomWalk, ::testing::Values(1u, 2u, 3u, 4u));

} // namespace host::graph::testing
