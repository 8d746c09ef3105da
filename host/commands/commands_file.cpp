#include "host/commands/commands.h"
#include "host/graph/edits.h"
#include "host/graph/mesh_node.h"
#include "host/graph/undo.h"
#include "host/io/obj_export.h"
#include "host/io/obj_mesh.h"
#include "host/io/obj_reader.h"
#include "host/io/scene_file.h"
#include "host/io/write_file.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <filesystem>

namespace host::script {

namespace {

using graph::DagNode;
using graph::MeshNode;
using graph::Node;
using graph::Scene;

/// Path of the scene's file; empty until it is saved or opened.
std::string& scene_file() {
    static std::string name;
    return name;
}

/// Path of the file that was opened, a mesh or a scene; empty for a new scene.
std::string& opened_file() {
    static std::string name;
    return name;
}

void write(const std::string& path, const std::string& text) {
    std::string reason;
    if (!write_file(path, text, Durability::power, reason))
        throw ScriptFault("file: \"" + path + "\" cannot be written: " + reason + ".");
}

std::string lower_extension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z')
            c = char(c + 32);
    return extension;
}

enum class Format { obj, scene };

Format format_of(const Flags& flags, const std::string& path) {
    const std::string type = flags.text("type", "");
    if (type == "OBJ" || type == "OBJexport")
        return Format::obj;
    if (type == "mayaAscii")
        return Format::scene;
    if (!type.empty())
        throw ScriptFault("file: The type \"" + type + "\" is not known.");
    const std::string extension = lower_extension(path);
    if (extension == ".obj")
        return Format::obj;
    if (extension == ".ma")
        return Format::scene;
    throw ScriptFault("file: \"" + path + "\" is neither an .obj nor an .ma file.");
}

void new_scene() {
    Scene::current().clear();
    SceneNotes::current().clear();
    scene_file().clear();
    opened_file().clear();
}

Mesh read_obj(const std::string& path) {
    IoError error;
    std::string text;
    ObjDocument document;
    if (!read_text(path, text, error) || !parse_obj(path, std::move(text), document, error))
        throw ScriptFault("file: " + error.message);
    Mesh mesh;
    if (!mesh_of_document(document, mesh))
        throw ScriptFault("file: \"" + path + "\" is too large.");
    document.unit_positions = {}; // not needed for an export
    mesh.set_origin(std::make_shared<ObjOrigin>(std::move(document)));
    return mesh;
}

std::string add_obj(const Mesh& mesh, const std::string& path) {
    Scene& scene = Scene::current();
    const std::string stem = Scene::legal_name(std::filesystem::path(path).stem().string());
    const Ref<Node> transform = scene.make_node(scene.find_type("transform"), stem);
    perform(graph::add_node_edit(*transform, nullptr), "file", stem);
    const Ref<Node> shape =
        scene.make_node(scene.find_type("mesh"), transform->name_text() + "Shape");
    perform(graph::add_node_edit(*shape, transform->as_dag_node()), "file", stem);
    require(static_cast<MeshNode&>(*shape).set_mesh(mesh), "file", stem);
    perform(graph::select_edit({graph::SelectionItem(*transform)}), "file", stem);
    return name_of(*transform);
}

void gather(DagNode& node, std::vector<MeshNode*>& meshes) {
    graph::walk_down(node, [&](DagNode& one) {
        auto* mesh = dynamic_cast<MeshNode*>(&one);
        if (mesh != nullptr && !mesh->is_intermediate())
            meshes.push_back(mesh);
        return true;
    });
}

void export_obj(const std::string& path, bool selected) {
    std::vector<MeshNode*> meshes;
    if (selected) {
        for (const graph::SelectionItem& item : Scene::current().selection())
            if (DagNode* dag = item.node->as_dag_node())
                gather(*dag, meshes);
    } else {
        for (DagNode* node : Scene::current().top_level())
            gather(*node, meshes);
    }
    std::vector<ObjPart> parts;
    for (MeshNode* node : meshes) {
        require(node->refresh(), "file", name_of(*node));
        if (const Mesh* mesh = node->mesh())
            parts.push_back({name_of(*node), mesh, graph::world_matrix(node)});
    }
    if (parts.empty())
        throw ScriptFault("file: There is no mesh to export.");
    std::string text, error;
    if (!obj_of_meshes(parts, text, error))
        throw ScriptFault("file: \"" + path + "\" cannot be written: " + error + ".");
    write(path, text);
}

std::string read_scene_text(const std::string& path) {
    try {
        return read_script(path);
    } catch (const ScriptFault& fault) {
        throw ScriptFault(std::string("file: ") + fault.what());
    }
}

void open_file(Invocation& call, const Flags& flags, const std::string& path) {
    const Format format = format_of(flags, path);
    std::error_code failure;
    if (!std::filesystem::exists(path, failure))
        throw ScriptFault("file: Cannot read the file \"" + path + "\".");
    // Opening a scene makes no undo entries.
    const graph::UndoFrame quiet("file", false);
    // Read the file first: on failure the current scene stays.
    const Mesh mesh = format == Format::obj ? read_obj(path) : Mesh();
    const std::string text = format == Format::scene ? read_scene_text(path) : std::string();
    new_scene();
    if (format == Format::obj)
        add_obj(mesh, path);
    else
        read_scene(text, path, call.interpreter);
    graph::UndoQueue::current().clear();
    scene_file() = format == Format::scene ? path : std::string();
    opened_file() = path;
    perform(graph::select_edit({}), "file", path);
    graph::UndoQueue::current().mark_saved();
}

Value save(const Flags& flags) {
    const std::string path = scene_file();
    if (path.empty())
        throw ScriptFault("file: The scene has no name yet; give one with -rename.");
    if (flags.has("type") && format_of(flags, path) != Format::scene)
        throw ScriptFault(
            "file: A scene is saved as \"mayaAscii\"; export meshes with -exportAll.");
    write(path, write_scene(std::filesystem::path(path).filename().string()));
    opened_file() = path;
    graph::UndoQueue::current().mark_saved();
    return path;
}

Value query(const Flags& flags) {
    if (flags.count() != 1)
        throw ScriptFault("file answers one flag at a time.");
    if (flags.has("modified"))
        return Scene::current().is_modified;
    if (flags.has("location"))
        return opened_file().empty() ? "unknown" : opened_file();
    return scene_file();
}

/// Returns the name of the new transform, or the path of a scene.
std::string import_file(Invocation& call, const Flags& flags, const std::string& path) {
    if (format_of(flags, path) == Format::obj)
        return add_obj(read_obj(path), path);
    read_scene(read_scene_text(path), path, call.interpreter);
    return path;
}

/// Throws if the command would discard unsaved changes and -force is not given.
void require_saved(const Flags& flags) {
    const bool discards = flags.has("newFile") || flags.has("open");
    if (discards && Scene::current().is_modified && !flags.has("force"))
        throw ScriptFault("file: There are unsaved changes; save them or use -force.");
}

void export_file(const Flags& flags, const std::string& path) {
    if (format_of(flags, path) == Format::obj)
        export_obj(path, flags.has("exportSelected"));
    else if (flags.has("exportSelected"))
        throw ScriptFault("file: Selected objects are exported as OBJ; a scene is saved whole.");
    else
        write(path, write_scene(std::filesystem::path(path).filename().string()));
}

/// Table: the flags of the command.
const FlagTable k_file_flags = {{"new", "newFile"},
                                {"o", "open"},
                                {"i", "import"},
                                {"s", "save"},
                                {"ea", "exportAll"},
                                {"es", "exportSelected"},
                                {"rn", "rename", "s"},
                                {"typ", "type", "s"},
                                {"f", "force"},
                                {"sn", "sceneName", "", "q"},
                                {"loc", "location", "", "q"},
                                {"mf", "modified", "", "q"}};

Value file(Invocation& call) {
    const Flags flags(call, k_file_flags);
    if (flags.query())
        return query(flags);
    if (flags.has("rename"))
        scene_file() = flags.text("rename", "");
    require_saved(flags);
    if (flags.has("newFile")) {
        flags.require_operands(0, 0);
        new_scene();
        return Value();
    }
    if (flags.has("save"))
        return save(flags);
    if (flags.has("rename") && flags.operands().empty())
        return scene_file();
    flags.require_operands(1, 1);
    const std::string path = flags.names()[0];
    if (flags.has("open")) {
        open_file(call, flags, path);
    } else if (flags.has("import")) {
        return import_file(call, flags, path);
    } else if (flags.has("exportAll") || flags.has("exportSelected")) {
        export_file(flags, path);
    } else {
        throw ScriptFault("file needs -new, -open, -import, -save, -exportAll or -exportSelected.");
    }
    return path;
}

} // namespace

void add_file_commands(Interpreter& interpreter) { interpreter.add_command("file", file); }

} // namespace host::script
