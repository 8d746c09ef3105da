/// The built plug-in in a complete host, driven by script statements as users drive it.
#pragma once

#include "faultpoint/faultpoint.h"
#include "host/commands/session.h"
#include "host/graph/callbacks.h"
#include "host/graph/dag.h"
#include "host/graph/evaluate.h"
#include "host/graph/mesh_node.h"
#include "host/graph/plugins.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"
#include "host/mesh/mesh.h"
#include "tests/plugin_in_host/mesh_bytes.h"

#include <algorithm>
#include <gtest/gtest.h>
#include <string>
#include <vector>

namespace plugin_in_host {

class InHostTest : public ::testing::Test, protected host::script::Output {
protected:
    InHostTest() {
        session.set_output(this);
        host::graph::Plugins::current().search_path() = {TESSORA_PLUGIN_FOLDER};
        session.interpreter().script_path() = {TESSORA_SCRIPTS};
        EXPECT_TRUE(run("loadPlugin tessora; file -f -new; constructionHistory -tgl on;"));
        undo_queue.clear();
        printed.clear();
    }
    ~InHostTest() override {
        faultpoint::disarm_all();
        run("file -f -new");
        if (host::graph::Plugins::current().is_loaded("tessora"))
            run("unloadPlugin -f tessora");
        session.set_output(nullptr);
    }

    /// Runs statements; their output is appended to `printed`.
    bool run(const std::string& text) {
        const auto outcome = session.run(text, "test");
        last_error = outcome.error;
        return outcome.ok;
    }
    double number_of(const std::string& plug) {
        host::graph::Slot* const slot = find(plug);
        EXPECT_NE(slot, nullptr) << plug;
        return slot == nullptr ? 0.0 : slot->value.number();
    }
    host::graph::Slot* find(const std::string& plug) {
        const size_t dot = plug.find('.');
        host::graph::Node* const node = scene.find(plug.substr(0, dot));
        return node == nullptr ? nullptr : node->find_plug(plug.substr(dot + 1));
    }
    /// The displayed mesh of a shape as bytes, evaluated as a viewport does.
    std::string shown(host::graph::Node& shape) {
        host::MeshFace& face = *shape.as_mesh();
        EXPECT_EQ(face.refresh(), MS::kSuccess);
        return face.mesh() == nullptr ? "" : bytes_of(*face.mesh());
    }
    std::string shown(const std::string& shape) {
        host::graph::Node* const node = scene.find(shape);
        EXPECT_NE(node, nullptr) << shape;
        return node == nullptr ? "" : shown(*node);
    }
    std::vector<std::string> names_of_nodes() {
        std::vector<std::string> names;
        for (const auto& node : scene.nodes())
            names.push_back(node->name_text());
        std::sort(names.begin(), names.end());
        return names;
    }
    static size_t callbacks_attached() {
        size_t count = 0;
        for (const char* panel : {"modelPanel1", "modelPanel2", "modelPanel3", "modelPanel4"})
            count += host::graph::Callbacks::current().of_panel(panel).size();
        return count;
    }
    /// Number of publications of results since the last call.
    size_t publications() {
        size_t count = 0;
        for (size_t at = printed.find(".Charts_result\""); at != std::string::npos;
             at = printed.find(".Charts_result\"", at + 1))
            ++count;
        printed.clear();
        return count;
    }

    void print(const std::string& text) override { printed += text; }
    void warning(const std::string& text) override { printed += "warning: " + text + "\n"; }
    void error(const std::string& text) override { printed += "error: " + text + "\n"; }

    host::script::Session& session = host::script::Session::current();
    host::graph::Scene& scene = host::graph::Scene::current();
    host::graph::UndoQueue& undo_queue = host::graph::UndoQueue::current();
    std::string printed;    ///< all output so far
    std::string last_error; ///< of the last `run`; empty if it succeeded
};

} // namespace plugin_in_host
