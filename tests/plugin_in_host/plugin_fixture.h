/// Test fixture: the plug-in library loaded into an empty scene.
#pragma once

#include "faultpoint/faultpoint.h"
#include "host/graph/callbacks.h"
#include "host/graph/plugins.h"
#include "host/mesh/mesh.h"
#include "host/ui/menus.h"
#include "tests/fixtures/library_names.h"
#include "tests/host/graph/fixture.h"
#include "tests/host/graph/small_script.h"
#include "tests/plugin_in_host/mesh_bytes.h"

namespace host::graph::testing {

using plugin_in_host::bytes_of;

class PluginTest : public SceneTest {
protected:
    PluginTest() {
        fixtures::keep_names_of(TESSORA_PLUGIN_FILE);
        load();
    }
    ~PluginTest() override {
        faultpoint::disarm_all();
        scene.clear();
        if (Plugins::current().is_loaded("tessora"))
            Plugins::current().unload("tessora", true, error);
    }
    MStatus load() {
        error.clear();
        return Plugins::current().load(TESSORA_PLUGIN_FILE, error);
    }
    MStatus run(const std::string& text) {
        CommandResult result;
        return script.execute(text, false, true, result);
    }
    void select(Node& node) { scene.select({SelectionItem(node)}); }
    /// A mesh shape with construction history: polyCube -> shape.
    MeshNode& add_cube_with_history() {
        Node& maker = add("polyCube");
        DagNode& transform = add_dag("transform", "pCube1");
        auto& shape = static_cast<MeshNode&>(add("mesh", "pCubeShape1", &transform));
        connect(maker, "output", shape, "inMesh");
        return shape;
    }
    /// The shape's evaluated mesh as bytes.
    std::string shown(MeshNode& shape) {
        EXPECT_EQ(shape.refresh(), MS::kSuccess);
        EXPECT_NE(shape.mesh(), nullptr);
        return shape.mesh() == nullptr ? std::string() : bytes_of(*shape.mesh());
    }

    SmallScript script;
    std::string error;
};

} // namespace host::graph::testing
