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

#include <cstring>

namespace host::graph::testing {

/// Serializes a mesh; two meshes are bitwise equal if and only if the strings are.
inline std::string bytes_of(const Mesh& mesh) {
    std::string bytes;
    const auto add = [&](const void* data, size_t size) {
        bytes.append(static_cast<const char*>(data), size);
    };
    add(mesh.points().data(), mesh.points().size() * sizeof(Float3));
    const Connectivity& faces = mesh.connectivity();
    for (uint32_t corner = 0; corner < faces.corner_count(); ++corner) {
        const uint32_t ids[] = {faces.corner_polygon(corner), faces.corner_vertex(corner)};
        add(ids, sizeof(ids));
    }
    for (uint32_t s = 0; s < mesh.uv_set_count(); ++s) {
        const UvSet& set = mesh.uv_set(s);
        bytes += set.name.asChar();
        add(set.u.data(), set.u.size() * sizeof(float));
        add(set.v.data(), set.v.size() * sizeof(float));
        add(set.corner_uvs.data(), set.corner_uvs.size() * sizeof(int32_t));
    }
    return bytes;
}

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
    void select(Node& node) { scene.select({item_of(node)}); }
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
