#include "tests/faults/scenarios.h"

#include "host/graph/callbacks.h"
#include "host/graph/command_registry.h"
#include "host/graph/dag.h"
#include "host/graph/evaluate.h"
#include "host/graph/plugins.h"
#include "host/graph/scene.h"
#include "host/graph/undo.h"
#include "tests/plugin_in_host/mesh_bytes.h"

#include <functional>
#include <unistd.h>

namespace faults {

namespace {

using host::graph::Node;
using host::graph::Scene;

std::string g_scene_file; ///< written by the parent process, read by its children

std::string scratch_file(const char* ending) {
    return "/tmp/tessora_faults_" + std::to_string(getpid()) + ending;
}

void make_box(World& world, bool with_history, bool with_tweaks) {
    world.run(with_history ? "polyCube -n box" : "polyCube -ch 0 -n box");
    if (with_tweaks)
        world.run("setAttr boxShape.pnts[2] 0.25 -0.5 0; setAttr boxShape.pnts[5] 0 0 1.5");
    world.run("select -r box");
}

bool unwrap(World& world) { return world.run("tessora") && world.evaluate("boxShape"); }

void prepare_direct(World& world) {
    make_box(world, false, true);
    world.run("constructionHistory -tgl off");
}
void prepare_history(World& world) { make_box(world, true, true); }
void prepare_copy(World& world) { make_box(world, false, true); }
void prepare_keep_seams(World& world) {
    prepare_direct(world);
    world.run("tessora");
}
void prepare_redo(World& world) {
    make_box(world, false, true);
    unwrap(world);
    world.run("undo");
}
void prepare_load(World& world) {
    make_box(world, true, false);
    unwrap(world);
    g_scene_file = scratch_file(".ma");
    world.run("file -rename \"" + g_scene_file +
              "\"; file -save -type \"mayaAscii\"; file -f -new");
}
void prepare_unwrapped(World& world) {
    make_box(world, true, false);
    unwrap(world);
    world.redraw();
}

} // namespace

World::World() {
    host::script::Session& session = host::script::Session::current();
    session.set_output(this);
    session.interpreter().script_path() = {TESSORA_SCRIPTS};
    host::graph::Plugins::current().search_path() = {TESSORA_PLUGIN_FOLDER};
    host::set_panel_renderer(this);
    run("loadPlugin tessora; file -f -new; constructionHistory -tgl on;");
}

bool World::run(const std::string& statements) {
    return host::script::Session::current().run(statements, "sweep").ok;
}

bool World::evaluate(const char* shape) {
    Node* const node = Scene::current().find(shape);
    evaluation = node == nullptr || node->as_mesh() == nullptr ? MStatus(MS::kFailure)
                                                               : node->as_mesh()->refresh();
    return static_cast<bool>(evaluation);
}

uint64_t World::mesh(const char* shape) {
    if (!evaluate(shape))
        return 0;
    const host::Mesh* const mesh = Scene::current().find(shape)->as_mesh()->mesh();
    return mesh == nullptr ? 0 : std::hash<std::string>()(plugin_in_host::bytes_of(*mesh));
}

void World::unwrap_again() {
    host::graph::set_value(*Scene::current().find("tessora_node1")->find_plug("Skip_compute"),
                           host::graph::PlugValue::of_int(0));
}

size_t World::node_count() const { return Scene::current().nodes().size(); }

size_t World::undo_count() const { return host::graph::UndoQueue::current().undo_count(); }

void World::redraw() {
    for (int panel = 0; panel < host::k_panel_count; ++panel)
        host::graph::Callbacks::current().fire_post_render(host::panel_name(panel).asChar());
}

MStatus World::camera(int, MDagPath& path) {
    return MDagPath::getAPathTo(MObject(Scene::current().find("perspShape")), path);
}

MStatus World::size(int, int& width, int& height) {
    width = 640;
    height = 480;
    return MS::kSuccess;
}

const std::vector<Scenario>& scenarios() {
    static const std::vector<Scenario> all = {
        {"direct path", prepare_direct, unwrap, true},
        {"history path", prepare_history, unwrap, true},
        {"history path with a copy", prepare_copy, unwrap, true},
        {"keep seams", prepare_keep_seams,
         [](World& world) { return world.run("tessora -ks true"); }, true},
        {"redo", prepare_redo,
         [](World& world) { return world.run("redo") && world.evaluate("boxShape"); }, false},
        {"scene load", prepare_load,
         [](World& world) {
             return world.run("file -f -open \"" + g_scene_file + "\"") &&
                    world.evaluate("boxShape");
         },
         false},
        {"overlay redraw", prepare_unwrapped,
         [](World& world) {
             world.redraw();
             return true;
         },
         true},
        {"unload", prepare_unwrapped,
         [](World& world) { return world.run("file -f -new; unloadPlugin tessora"); }, false},
        {"export", prepare_unwrapped,
         [](World& world) { // exporting evaluates the mesh, which unwraps it again
             world.unwrap_again();
             return world.run("file -f -exportAll \"" + scratch_file(".obj") + "\"");
         },
         false},
    };
    return all;
}

uint64_t next_unwrap(World& world) {
    // An unload that failed may have removed the command already.
    if (!host::graph::Commands::current().knows("tessora")) {
        world.run("unloadPlugin -f tessora");
        world.run("loadPlugin tessora");
    }
    world.run("file -f -new; constructionHistory -tgl on; polyCube -n next; select -r next");
    return world.run("tessora") ? world.mesh("nextShape") : 0;
}

} // namespace faults
