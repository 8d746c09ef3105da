#include "host/commands/commands.h"
#include "host/commands/mesh_history.h"
#include "host/graph/edits.h"
#include "host/graph/mesh_node.h"
#include "host/mesh/mesh.h"
#include "host/mesh/uv_move.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

namespace host::script {

namespace {

using graph::DagNode;
using graph::Node;
using graph::Scene;
using graph::Slot;

// --- creators -----------------------------------------------------------------------------------

/// A flag of a primitive's command, such as polyCube -width, and the attribute that it sets.
struct Parameter {
    const char* short_name;
    const char* long_name;
    const char* attribute;
};

struct Creator {
    const char* command; ///< name of the command and of the node type
    const char* base;    ///< name of new transforms without their number: "pCube"
    std::vector<Parameter> parameters;
};

const std::vector<Creator>& creators() {
    static const std::vector<Creator> table = {{"polyCube",
                                                "pCube",
                                                {{"w", "width", "width"},
                                                 {"h", "height", "height"},
                                                 {"d", "depth", "depth"},
                                                 {"sx", "subdivisionsX", "subdivisionsWidth"},
                                                 {"sy", "subdivisionsY", "subdivisionsHeight"},
                                                 {"sz", "subdivisionsZ", "subdivisionsDepth"}}},
                                               {"polyPlane",
                                                "pPlane",
                                                {{"w", "width", "width"},
                                                 {"h", "height", "height"},
                                                 {"sx", "subdivisionsX", "subdivisionsWidth"},
                                                 {"sy", "subdivisionsY", "subdivisionsHeight"}}},
                                               {"polySphere",
                                                "pSphere",
                                                {{"r", "radius", "radius"},
                                                 {"sx", "subdivisionsX", "subdivisionsAxis"},
                                                 {"sy", "subdivisionsY", "subdivisionsHeight"}}},
                                               {"polyCylinder",
                                                "pCylinder",
                                                {{"r", "radius", "radius"},
                                                 {"h", "height", "height"},
                                                 {"sx", "subdivisionsX", "subdivisionsAxis"},
                                                 {"sy", "subdivisionsY", "subdivisionsHeight"},
                                                 {"sz", "subdivisionsZ", "subdivisionsCaps"}}},
                                               {"polyTorus",
                                                "pTorus",
                                                {{"r", "radius", "radius"},
                                                 {"sr", "sectionRadius", "sectionRadius"},
                                                 {"sx", "subdivisionsX", "subdivisionsAxis"},
                                                 {"sy", "subdivisionsY", "subdivisionsHeight"}}}};
    return table;
}

FlagTable flags_of(const Creator& creator) {
    FlagTable table = {{"n", "name", "s"}, {"ch", "constructionHistory", "b"}};
    for (const Parameter& parameter : creator.parameters) {
        const bool count = std::string(parameter.long_name).rfind("subdivisions", 0) == 0;
        table.push_back({parameter.short_name, parameter.long_name, count ? "i" : "f", "cqe"});
    }
    return table;
}

Node& add(const char* type, const std::string& name, DagNode* parent, const std::string& command) {
    Scene& scene = Scene::current();
    const Ref<Node> node = scene.make_node(scene.find_type(type), name);
    if (!node)
        throw ScriptFault(command + ": A " + type + " could not be made.");
    perform(graph::add_node_edit(*node, parent), command, name);
    return *node;
}

/// Queries or sets parameters of an existing primitive node.
Value query_or_edit(Invocation& call, const Creator& creator, const Flags& flags) {
    flags.require_operands(1, 1);
    Node& node = node_named(flags.names()[0]);
    if (node.node_type().name != creator.command)
        throw ScriptFault(call.name + ": \"" + flags.names()[0] + "\" is no " + creator.command +
                          ".");
    Value value;
    for (const Parameter& parameter : creator.parameters) {
        if (!flags.has(parameter.long_name))
            continue;
        Slot& plug = *node.slot(parameter.attribute);
        if (flags.query())
            value = value_of(plug);
        else
            set_plug(plug, flags.value(parameter.long_name), call.name);
    }
    return value;
}

Value create(Invocation& call, const Creator& creator) {
    const Flags flags(call, flags_of(creator));
    if (flags.mode() != Mode::create)
        return query_or_edit(call, creator, flags);
    flags.require_operands(0, 0);
    Node& maker = add(creator.command, std::string(creator.command) + "1", nullptr, call.name);
    for (const Parameter& parameter : creator.parameters)
        if (flags.has(parameter.long_name))
            set_plug(*maker.slot(parameter.attribute), flags.value(parameter.long_name), call.name);
    Node& transform =
        add("transform", flags.text("name", (creator.base + std::string("1")).c_str()), nullptr,
            call.name);
    std::string shape_name = transform.name_text();
    shape_name.insert(shape_name.find_last_not_of("0123456789") + 1, "Shape");
    Node& shape = add("mesh", shape_name, transform.as_dag_node(), call.name);
    Slot& output = *maker.slot("output");
    Slot& input = *shape.slot(*graph::mesh_attributes().in_mesh);
    perform(graph::connect_edit(output, input, false), call.name, shape_name);
    StringArray names = {name_of(transform)};
    if (flags.boolean("constructionHistory", Scene::current().records_history)) {
        names.push_back(name_of(maker));
    } else {
        require(graph::evaluate(input), call.name, shape_name);
        // Set the mesh explicitly: redo would disconnect the input before it is ever evaluated.
        const Mesh made = *input.value.as_data()->as_mesh()->mesh();
        perform(graph::disconnect_edit(output, input), call.name, shape_name);
        perform(graph::remove_node_edit(maker), call.name, shape_name);
        put_mesh(static_cast<graph::MeshNode&>(shape), made, call.name);
    }
    perform(graph::select_edit({graph::SelectionItem(transform)}), call.name, "selection");
    return names;
}

// --- meshes -------------------------------------------------------------------------------------

int32_t triangle_count(const Mesh& mesh) {
    const Connectivity& connectivity = mesh.connectivity();
    return int32_t(connectivity.corner_count()) - 2 * int32_t(connectivity.polygon_count());
}

struct MeshCounts {
    int32_t vertices = 0, edges = 0, faces = 0, triangles = 0, uvs = 0, shells = 0;

    void add(const Mesh& mesh, int uv_set) {
        vertices += int32_t(mesh.connectivity().vertex_count());
        edges += int32_t(mesh.connectivity().edge_count());
        faces += int32_t(mesh.connectivity().polygon_count());
        triangles += triangle_count(mesh);
        if (uv_set < 0)
            return;
        uvs += int32_t(mesh.uv_set(uint32_t(uv_set)).u.size());
        shells += int32_t(uv_shells(mesh, uint32_t(uv_set)).count);
    }
    /// The count that a flag of polyEvaluate asks for.
    int32_t of_flag(const std::string& flag) const {
        return flag == "vertex"     ? vertices
               : flag == "edge"     ? edges
               : flag == "face"     ? faces
               : flag == "triangle" ? triangles
               : flag == "uvShell"  ? shells
                                    : uvs;
    }
};

Value evaluate_mesh(Invocation& call) {
    static const FlagTable table = {{"v", "vertex"},          {"e", "edge"},     {"f", "face"},
                                    {"t", "triangle"},        {"uv", "uvcoord"}, {"us", "uvShell"},
                                    {"uvs", "uvSetName", "s"}};
    const Flags flags(call, table);
    MeshCounts counts;
    const graph::Selection items = items_named(flags.names());
    if (items.empty())
        throw ScriptFault("polyEvaluate: Nothing is named or selected.");
    for (const graph::SelectionItem& item : items) {
        const Mesh& mesh = mesh_of(mesh_shape(item, call.name), call.name);
        counts.add(mesh, flags.has("uvSetName")
                             ? mesh.find_uv_set(flags.text("uvSetName", "").c_str())
                             : mesh.current_uv_set());
    }
    IntArray asked;
    for (const std::string& flag : flags.given())
        if (flag != "uvSetName")
            asked.push_back(counts.of_flag(flag));
    if (asked.size() == 1)
        return asked[0];
    if (!asked.empty())
        return asked;
    return "vertices: " + std::to_string(counts.vertices) +
           " edges: " + std::to_string(counts.edges) + " faces: " + std::to_string(counts.faces) +
           " triangles: " + std::to_string(counts.triangles) +
           " uvs: " + std::to_string(counts.uvs);
}

} // namespace

void add_mesh_commands(Interpreter& interpreter) {
    for (const Creator& creator : creators())
        interpreter.add_command(creator.command,
                                [&creator](Invocation& call) { return create(call, creator); });
    interpreter.add_command("polyEvaluate", evaluate_mesh);
}

} // namespace host::script
