// Random sequences of the operations that users perform with the command and its node.
//
// The environment variable TESSORA_WALK_STEPS sets the number of steps of each kind of walk,
// divided among the seeds (default 2,000).
#include "tests/plugin_in_host/fixture.h"

#include <cstdlib>
#include <random>

namespace plugin_in_host {

namespace {

constexpr int k_node_seeds = 2, k_scene_seeds = 3;

int steps() {
    const char* const text = std::getenv("TESSORA_WALK_STEPS");
    return text == nullptr ? 2000 : std::atoi(text);
}

} // namespace

class WalkTest : public InHostTest, public ::testing::WithParamInterface<unsigned> {
protected:
    unsigned below(size_t count) { return static_cast<unsigned>(random_() % count); }
    std::string number(int size) { return std::to_string(below(static_cast<size_t>(size))); }

    std::mt19937 random_{GetParam()};
};

// === The node ================================================================================

/// Reference model: predicts whether an evaluation unwraps.
struct NodeModel {
    int passes = 0; ///< evaluations that got past the visualization switch
    bool active = true;
    bool visualization = true;
    int skip = 1;
    int state = 0;
    bool dirty = true;

    /// Whether the next evaluation unwraps.
    bool pull() {
        if (!dirty)
            return false;
        if (visualization != active) {
            active = visualization;
            return false;
        }
        if (passes++ > 0) {
            if (skip == 1)
                return false;
            skip = 1;
        }
        if (state == 1)
            return false;
        dirty = false;
        return true;
    }
};

class NodeWalkTest : public WalkTest {};

TEST_P(NodeWalkTest, TheNodeUnwrapsExactlyWhenTheReferenceModelDoes) {
    ASSERT_TRUE(run("polyCube -n box; tessora"));
    NodeModel model;
    int unwraps = 0;
    for (int i = 0; i < steps() / k_node_seeds && !HasFailure(); ++i) {
        SCOPED_TRACE("seed " + std::to_string(GetParam()) + " step " + std::to_string(i));
        switch (below(7)) {
        case 0:
            model.visualization = below(2) == 1;
            run("setAttr tessora_node1.Visualization " + std::to_string(model.visualization));
            model.dirty = true;
            break;
        case 1:
            model.skip = static_cast<int>(below(4)) - 1;
            run("setAttr tessora_node1.Skip_compute " + std::to_string(model.skip));
            model.dirty = true;
            break;
        case 2: // results alone do not make the output dirty, a setting does
            model.state = static_cast<int>(below(2));
            run("setAttr tessora_node1.nodeState " + std::to_string(model.state));
            run("setAttr tessora_node1.Padding " + number(5));
            model.dirty = true;
            break;
        case 3:
            run("setAttr tessora_node1.Charts_result " + number(50)); // affects nothing
            break;
        default:
            publications();
            run("dgeval tessora_node1.outMesh");
            const bool expected = model.pull();
            unwraps += expected;
            ASSERT_EQ(publications(), expected ? 1u : 0u);
            if (expected) {
                ASSERT_EQ(callbacks_attached(), 4u);
            }
        }
        ASSERT_EQ(number_of("tessora_node1.Skip_compute"), model.skip);
    }
    EXPECT_GT(unwraps, 0);
}

INSTANTIATE_TEST_SUITE_P(Seeds, NodeWalkTest, ::testing::Range(0u, unsigned(k_node_seeds)));

// === The scene ===============================================================================

/// Everything that undo must restore, as text; evaluations and published results are not undone.
class SceneWalkTest : public WalkTest {
protected:
    static bool is_fed(host::graph::Node& shape) {
        return shape.find_plug("inMesh")->source() != nullptr;
    }
    /// Shapes without history store their geometry themselves, so undo must restore it bit for bit.
    std::string geometry(host::graph::Node& node) {
        if (node.name_text().rfind("raw", 0) != 0 || node.as_mesh() == nullptr || is_fed(node))
            return "";
        return std::to_string(std::hash<std::string>()(shown(node)));
    }
    void tell_plug(const host::graph::Slot& slot, std::string& text) {
        if (slot.source() != nullptr)
            text += " " + slot.path() + "<" + slot.source()->path();
        else if (slot.value.number() != 0.0)
            text += " " + slot.path() + "=" + std::to_string(slot.value.number());
        for (const auto& below : slot.below())
            tell_plug(*below, text);
    }
    std::string fingerprint() {
        std::vector<std::string> lines;
        for (const auto& node : scene.nodes()) {
            std::string line = node->name_text() + ":" + node->type_name().asChar();
            if (const host::graph::DagNode* dag = node->as_dag_node())
                for (const host::graph::DagNode* child : dag->children())
                    line += " >" + child->name_text();
            for (const char* name : {"inMesh", "inputPolymesh", "UV_Set", "Padding", "Charts",
                                     "Visualization", "pnts", "tweak", "translateX", "width"})
                if (node->find_plug(name) != nullptr)
                    tell_plug(*node->find_plug(name), line);
            lines.push_back(line + geometry(*node));
        }
        std::sort(lines.begin(), lines.end());
        std::string text;
        for (const std::string& line : lines)
            text += line + "\n";
        return text;
    }
    /// The full path of a random node of a type; with `up`, of its parent.
    std::string pick(const char* type, bool up = false) {
        std::vector<host::graph::Node*> found;
        for (const auto& node : scene.nodes())
            if (std::string(node->type_name().asChar()) == type && !is_hidden(*node))
                found.push_back(node.get());
        if (found.empty())
            return "";
        host::graph::Node* const node = found[below(found.size())];
        const host::graph::DagNode* const dag = node->as_dag_node();
        if (dag == nullptr)
            return node->name_text();
        return host::graph::full_name((up ? *dag->parents().front() : *dag).path());
    }
    static bool is_hidden(host::graph::Node& node) {
        host::graph::DagNode* const dag = node.as_dag_node();
        return dag != nullptr && dag->is_intermediate();
    }
    size_t count(const char* type) {
        size_t count = 0;
        for (const auto& node : scene.nodes())
            count += std::string(node->type_name().asChar()) == type;
        return count;
    }
    /// A random statement; empty if the scene has no node for it.
    std::string statement();
};

std::string SceneWalkTest::statement() {
    const std::string shape = pick("mesh"), box = pick("mesh", true), node = pick("tessora_node");
    const unsigned kind = below(12);
    const bool is_full = count("mesh") > 8;
    if (kind == 0 && !is_full)
        return below(2) == 0 ? "polyCube -n fed" : "polyCube -ch 0 -n raw";
    if (shape.empty())
        return "polyCube -ch 0 -n raw";
    const std::string vertex = shape + ".pnts[" + number(8) + "]";
    switch (kind) {
    case 1:
        return "select -r " + box;
    case 2:
    case 3:
        return count("tessora_node") > 8 ? "" : "tessora -pad " + number(9);
    case 4:
        return "setAttr " + vertex + " " + number(3) + " 0 " + number(3);
    case 5:
        return "connectAttr -f " + pick("mesh", true) + ".translateX " + vertex + ".pntx";
    case 6:
        return is_full ? "" : "duplicate " + box;
    case 7:
        return below(3) == 0 ? "delete " + box : "";
    case 8:
        return "setAttr " + box + ".translateX " + number(4);
    case 9:
        return "constructionHistory -tgl " + number(2);
    case 10:
        return node.empty() ? "" : "setAttr " + node + ".Padding " + number(9);
    case 11:
        return node.empty() ? "" : "setAttr " + node + ".Visualization " + number(2);
    default:
        return "";
    }
}

TEST_P(SceneWalkTest, UndoAndRedoVisitTheSameScenes) {
    std::vector<std::string> done = {fingerprint()}, undone;
    std::string trail;
    for (int i = 0; i < steps() / k_scene_seeds && !HasFailure(); ++i) {
        const unsigned kind = below(10);
        std::string text;
        if (kind < 3 && done.size() > 1) {
            text = "undo";
            ASSERT_TRUE(run(text)) << last_error << trail;
            undone.push_back(done.back());
            done.pop_back();
        } else if (kind == 3 && !undone.empty()) {
            text = "redo";
            ASSERT_TRUE(run(text)) << last_error << trail;
            done.push_back(undone.back());
            undone.pop_back();
        } else if (kind == 4) {
            for (const auto& node : std::vector<host::Ref<host::graph::Node>>(scene.nodes()))
                if (node->as_mesh() != nullptr)
                    node->as_mesh()->refresh(); // fails if the source node has no output yet
        } else {
            text = statement();
            const size_t entries = undo_queue.undo_count();
            run(text); // may be refused, and must then change nothing
            if (undo_queue.undo_count() != entries) {
                done.push_back(fingerprint());
                undone.clear();
            }
        }
        trail += "\n" + (text.empty() ? "pull" : text);
        ASSERT_EQ(fingerprint(), done.back())
            << "seed " << GetParam() << " step " << i
            << trail.substr(trail.size() > 3000 ? trail.size() - 3000 : 0);
        // Undoing the creation of a node leaves its callbacks until the next redraw.
        for (const char* panel : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
            host::graph::Callbacks::current().fire_post_render(panel);
        ASSERT_LE(callbacks_attached(), 4 * count("tessora_node"));
        if (done.size() > 60 || i % 400 == 399) { // bounds time and memory
            run("file -f -new");
            undo_queue.clear();
            done = {fingerprint()};
            undone.clear();
            trail.clear();
        }
        printed.clear();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, SceneWalkTest, ::testing::Range(0u, unsigned(k_scene_seeds)));

} // namespace plugin_in_host
