// Makes every single allocation of an operation fail in turn: no exception may reach the host.
#include "host/base/strictness.h"
#include "host/graph/callbacks.h"
#include "host/graph/command_registry.h"
#include "plugin/progress.h"
#include "plugin/tmod_cmd.h"
#include "plugin/tmod_node.h"
#include "tests/host/graph/fixture.h"
#include "tests/host/graph/small_script.h"
#include "tests/platform/d3dx9/failing_new.h"

#include <maya/MArgList.h>

#include <cstdio>
#include <sys/wait.h>
#include <unistd.h>

namespace host::graph::testing {

namespace {

unsigned failing_allocation = 0; ///< in the next call of the plug-in, 1 = the first; 0 = none
bool has_failed = false;
bool has_escaped = false;

/// Calls the plug-in with the chosen allocation failing.
template <class Call>
MStatus watched(Call call) {
    const FailingNew failing(failing_allocation);
    MStatus status = MS::kFailure;
    try {
        status = call();
    } catch (...) {
        has_escaped = true;
    }
    has_failed = FailingNew::happened();
    failing_allocation = 0;
    return status;
}

class WatchedNode : public tmod_node {
public:
    MStatus compute(const MPlug& plug, MDataBlock& block) override {
        return watched([&] { return tmod_node::compute(plug, block); });
    }
    static void* create() { return new WatchedNode; }
};

class WatchedCommand : public tmod_cmd {
public:
    MStatus doIt(const MArgList& arguments) override {
        return watched([&] { return tmod_cmd::doIt(arguments); });
    }
    MStatus undoIt() override {
        return watched([&] { return tmod_cmd::undoIt(); });
    }
    MStatus redoIt() override {
        return watched([&] { return tmod_cmd::redoIt(); });
    }
    static void* create() { return new WatchedCommand; }
};

} // namespace

class Exhaustion : public SceneTest {
protected:
    Exhaustion() : was_strict_(is_strict()) {
        set_strict(true);
        register_node_type("tessora_node", 0x113C40, WatchedNode::create, tmod_node::initialize,
                           "test");
        Commands::current().add("tessora", WatchedCommand::create, tmod_cmd::create_syntax);
    }
    ~Exhaustion() override {
        scene.clear();
        undo.clear();
        Commands::current().remove("tessora");
        scene.remove_type("tessora_node");
        set_strict(was_strict_);
    }

    /// A selected cube with a tweak, without history.
    MeshNode& start() {
        scene.clear();
        undo.clear();
        MeshNode& shape = add_cube("box");
        set(shape, "pnts[2].pnty", 0.5);
        scene.select({SelectionItem(*shape.parents().front())});
        scene.records_history = true;
        return shape;
    }
    MStatus run() {
        CommandResult result;
        return script.execute("tessora", false, true, result);
    }
    /// Repeats `attempt` with a later allocation failing each time, until none is left to fail;
    /// each in a process of its own, because an exception within the host may leave its scene
    /// inconsistent.
    template <class Attempt>
    unsigned repeat(Attempt attempt) {
        unsigned failures = 0;
        ::testing::internal::CaptureStderr();
        // Every allocation of the first hundreds, then a sample.
        for (unsigned nth = 1; nth < 100000; nth += nth < 400 ? 1 : nth / 50) {
            const int outcome = outcome_of(attempt, nth);
            EXPECT_TRUE(outcome == k_failed || outcome == k_done)
                << "allocation " << nth << ": outcome " << outcome;
            if (outcome != k_failed)
                break;
            ++failures;
        }
        const std::string output = ::testing::internal::GetCapturedStderr();
        if (HasFailure())
            std::fprintf(stderr, "%s", output.c_str());
        return failures;
    }

    // Not from 0: a sanitizer ends the process with 1.
    enum Outcome { k_failed = 10, k_done, k_escaped, k_window_held, k_wrong, k_crashed };

    template <class Attempt>
    int outcome_of(Attempt attempt, unsigned nth) {
        const pid_t child = fork();
        if (child == 0) {
            attempt(nth);
            Outcome outcome = has_failed ? k_failed : k_done;
            if (has_escaped)
                outcome = k_escaped;
            else if (progress_reserved)
                outcome = k_window_held;
            else if (HasFailure())
                outcome = k_wrong;
            _exit(outcome);
        }
        int status = 0;
        waitpid(child, &status, 0);
        return WIFEXITED(status) ? WEXITSTATUS(status) : k_crashed;
    }

    SmallScript script;

private:
    bool was_strict_;
};

TEST_F(Exhaustion, DoesNotLeaveCompute) {
    const unsigned failures = repeat([&](unsigned nth) {
        MeshNode& shape = start();
        ASSERT_EQ(run(), MS::kSuccess);
        failing_allocation = nth;
        shape.refresh();
    });
    EXPECT_GT(failures, 50u);
}

TEST_F(Exhaustion, DoesNotLeaveTheCommand) {
    const unsigned failures = repeat([&](unsigned nth) {
        start();
        failing_allocation = nth;
        run();
    });
    EXPECT_GT(failures, 50u);
}

TEST_F(Exhaustion, DoesNotLeaveTheDirectUnwrap) {
    const unsigned failures = repeat([&](unsigned nth) {
        start();
        scene.records_history = false;
        failing_allocation = nth;
        run();
    });
    EXPECT_GT(failures, 50u);
}

TEST_F(Exhaustion, DoesNotLeaveUndo) {
    const unsigned failures = repeat([&](unsigned nth) {
        start();
        ASSERT_EQ(run(), MS::kSuccess);
        failing_allocation = nth;
        undo.undo();
    });
    EXPECT_GT(failures, 10u);
}

TEST_F(Exhaustion, DoesNotLeaveRedo) {
    const unsigned failures = repeat([&](unsigned nth) {
        start();
        ASSERT_EQ(run(), MS::kSuccess);
        undo.undo();
        failing_allocation = nth;
        undo.redo();
    });
    EXPECT_GT(failures, 10u);
}

TEST_F(Exhaustion, DoesNotLeaveTheOverlaysCallbacks) {
    const unsigned failures = repeat([&](unsigned nth) {
        MeshNode& shape = start();
        VisualizationData data;
        MDagPath::getAPathTo(MObject(&shape), data.mesh_path);
        data.new_seams.append(0);
        data.new_seams.append(1);
        failing_allocation = nth;
        watched([&] {
            attach_viewport_callbacks(data);
            draw_seams("modelPanel4", &data);
            return detach_viewport_callbacks(data);
        });
        detach_viewport_callbacks(data);
        for (const char* panel : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
            EXPECT_EQ(Callbacks::current().of_panel(panel).size(), 0u) << "allocation " << nth;
    });
    EXPECT_GT(failures, 3u);
}

TEST_F(Exhaustion, DoesNotLeaveTheCreators) {
    for (void* (*const create)() : {&tmod_cmd::creator, &tmod_node::creator}) {
        failing_allocation = 1;
        watched([&] {
            EXPECT_EQ(create(), nullptr);
            return MStatus();
        });
        EXPECT_TRUE(has_failed);
        EXPECT_FALSE(has_escaped);
    }
}

} // namespace host::graph::testing
