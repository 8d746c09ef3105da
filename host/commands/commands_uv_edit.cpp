// Commands that move UVs and manage UV sets: polyEditUV, polyNormalizeUV, polyUVSet.
#include "host/commands/commands.h"
#include "host/commands/mesh_history.h"
#include "host/graph/component_text.h"
#include "host/graph/edits.h"
#include "host/graph/uv_tweak.h"
#include "host/mesh/uv_edit.h"
#include "host/mesh/uv_move.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <cmath>

namespace host::script {

namespace {

using graph::ComponentKind;
using graph::MeshNode;
using graph::Node;
using graph::PlugValue;

std::string text_value(Node& node, const char* attribute) {
    const graph::Slot& slot = *node.slot(attribute);
    return slot.value.kind() == graph::ValueKind::text ? slot.value.as_text().asChar() : "";
}

// --- polyEditUV ---------------------------------------------------------------------------------

/// What polyEditUV does to a UV: scales, turns, then moves it.
struct UvMove {
    double pivot[2] = {0, 0};
    double scale[2] = {1, 1};
    double cosine = 1, sine = 0;
    double value[2] = {0, 0};
    bool is_given[2] = {false, false}; ///< -uValue, -vValue
    bool is_relative = true;

    explicit UvMove(const Flags& flags) {
        constexpr double k_degree = 3.14159265358979323846 / 180.0;
        pivot[0] = flags.real("pivotU", 0.0);
        pivot[1] = flags.real("pivotV", 0.0);
        is_relative = flags.boolean("relative", true);
        // As documented, the factors and the angle count only if these switches are on. Without a
        // switch they would be ignored in silence, so their presence switches them on.
        const bool scales = flags.has("scaleU") || flags.has("scaleV");
        if (flags.boolean("scale", scales)) {
            scale[0] = flags.real("scaleU", 1.0);
            scale[1] = flags.real("scaleV", 1.0);
        }
        if (flags.boolean("rotation", flags.has("angle"))) {
            const double angle = std::fmod(flags.real("angle", 0.0), 360.0);
            const double quarters = angle / 90.0;
            cosine = std::cos(angle * k_degree);
            sine = std::sin(angle * k_degree);
            if (quarters == std::floor(quarters)) { // exact
                cosine = std::round(cosine);
                sine = std::round(sine);
            }
        }
        const char* const names[] = {"uValue", "vValue"};
        for (size_t k = 0; k < 2; ++k) {
            is_given[k] = flags.has(names[k]);
            value[k] = flags.real(names[k], 0.0);
        }
    }

    /// Moves u and v; false if the result is not a number that a UV can hold.
    bool apply(float& u, float& v) const {
        const double x = (static_cast<double>(u) - pivot[0]) * scale[0];
        const double y = (static_cast<double>(v) - pivot[1]) * scale[1];
        double at[2] = {static_cast<double>(u), static_cast<double>(v)};
        if (scale[0] != 1.0 || scale[1] != 1.0 || cosine != 1.0 || sine != 0.0) {
            at[0] = pivot[0] + cosine * x - sine * y;
            at[1] = pivot[1] + sine * x + cosine * y;
        }
        for (size_t k = 0; k < 2; ++k)
            if (is_given[k])
                at[k] = is_relative ? at[k] + value[k] : value[k];
        u = static_cast<float>(at[0]);
        v = static_cast<float>(at[1]);
        return std::isfinite(u) && std::isfinite(v);
    }
};

/// The coordinates that a query asks for: u, v, or both of each UV.
RealArray queried_uvs(const UvSet& set, const std::vector<std::uint32_t>& uvs, const Flags& flags) {
    const bool wants_u = flags.has("uValue") || !flags.has("vValue");
    const bool wants_v = flags.has("vValue") || !flags.has("uValue");
    RealArray values;
    for (const std::uint32_t uv : uvs) {
        if (wants_u)
            values.push_back(static_cast<double>(set.u[uv]));
        if (wants_v)
            values.push_back(static_cast<double>(set.v[uv]));
    }
    return values;
}

/// The polyTweakUV node at the end of the history that takes more offsets of a set; else a new one.
Node& tweak_node(MeshNode& shape, const std::string& set, const std::string& command) {
    Node* last = last_history_node(shape);
    if (last && last->node_type().name == "polyTweakUV" && last->state() == 0 &&
        text_value(*last, "uvSetName") == set)
        return *last;
    Node& made = insert_history_node(shape, "polyTweakUV", "polyTweakUV1", nullptr, command);
    set_attribute(made, "uvSetName", PlugValue::of_text(set.c_str()), command);
    return made;
}

/// Gives UVs new places: in the history as offsets, without history in the mesh itself.
void place_uvs(MeshNode& shape, const Mesh& mesh, std::uint32_t set,
               const std::vector<std::uint32_t>& uvs, const UvMove& move,
               const std::string& command) {
    const UvSet& old = mesh.uv_set(set);
    std::vector<graph::UvOffset> offsets;
    UvSet moved = old;
    for (const std::uint32_t uv : uvs) {
        if (!move.apply(moved.u[uv], moved.v[uv]))
            throw ScriptFault(command + ": The UVs would be moved to infinity.");
        offsets.push_back({uv, moved.u[uv] - old.u[uv], moved.v[uv] - old.v[uv]});
    }
    const std::string name = old.name.asChar();
    if (last_history_node(shape))
        perform(graph::tweak_uvs_edit(tweak_node(shape, name, command), std::move(offsets)),
                command, name);
    else
        change_mesh(shape, command,
                    [&](Mesh& changed) { changed.edit_uv_set(set) = std::move(moved); });
}

Value edit_uv(Invocation& call) {
    static const FlagTable table = {
        {"u", "uValue", "f", "cq"}, {"v", "vValue", "f", "cq"}, {"r", "relative", "b"},
        {"rot", "rotation", "b"},   {"a", "angle", "f"},        {"s", "scale", "b"},
        {"su", "scaleU", "f"},      {"sv", "scaleV", "f"},      {"pu", "pivotU", "f"},
        {"pv", "pivotV", "f"},      {"uvs", "uvSetName", "s"}};
    const Flags flags(call, table);
    const graph::Selection items = items_named(flags.names());
    MeshNode& shape = only_mesh_shape(items, call.name);
    const Mesh mesh = mesh_of(shape, call.name);
    const std::uint32_t set = uv_set_of(flags, mesh, call.name);
    const std::vector<std::uint32_t> uvs = components_of(items, ComponentKind::uv, mesh, set);
    if (uvs.empty())
        throw ScriptFault(call.name + ": No UVs are named or selected.");
    if (flags.query())
        return queried_uvs(mesh.uv_set(set), uvs, flags);
    place_uvs(shape, mesh, set, uvs, UvMove(flags), call.name);
    return Value();
}

// --- polyNormalizeUV ----------------------------------------------------------------------------

struct NormalizeSettings {
    int32_t type, direction;
    bool keeps_aspect, is_centred;

    NormalizeSettings(const Flags& flags, const std::string& command)
        : type(flags.integer("normalizeType", 1)),
          direction(flags.integer("normalizeDirection", 0)),
          keeps_aspect(flags.boolean("preserveAspectRatio", true)),
          is_centred(flags.boolean("centerOnTile", false)) {
        if (type < 0 || type > 1)
            throw ScriptFault(command + ": -normalizeType is 0 (each face) or 1 (all together).");
        if (direction < 0 || direction > 2)
            throw ScriptFault(command + ": -normalizeDirection is 0 (both), 1 (U) or 2 (V).");
    }
    UvNormalization how() const {
        constexpr UvNormalization::Direction k_directions[] = {
            UvNormalization::both, UvNormalization::u, UvNormalization::v};
        return {type == 0, keeps_aspect, is_centred, k_directions[direction]};
    }
    void set_on(Node& node, const std::string& command) const {
        set_attribute(node, "normalizeType", PlugValue::of_int(type), command);
        set_attribute(node, "normalizeDirection", PlugValue::of_int(direction), command);
        set_attribute(node, "preserveAspectRatio", PlugValue::of_bool(keeps_aspect), command);
        set_attribute(node, "centerOnTile", PlugValue::of_bool(is_centred), command);
    }
};

/// Returns the name of the node, or nothing without history.
Value normalize_uv(Invocation& call) {
    static const FlagTable table = {
        {"nt", "normalizeType", "i"},       {"pa", "preserveAspectRatio", "b"},
        {"cot", "centerOnTile", "b"},       {"nd", "normalizeDirection", "i"},
        {"ch", "constructionHistory", "b"}, {"n", "name", "s"},
        {"uvs", "uvSetName", "s"}};
    const Flags flags(call, table);
    const NormalizeSettings settings(flags, call.name);
    const graph::Selection items = items_named(flags.names());
    MeshNode& shape = only_mesh_shape(items, call.name);
    const Mesh& mesh = mesh_of(shape, call.name);
    const std::uint32_t set = uv_set_of(flags, mesh, call.name);
    const std::vector<std::uint32_t> faces = components_of(items, ComponentKind::face, mesh, set);
    if (!makes_history(shape, flags)) {
        change_mesh(shape, call.name,
                    [&](Mesh& changed) { normalize_uvs(changed, set, faces, settings.how()); });
        return Value();
    }
    const MString name = mesh.uv_set(set).name;
    Node& node = insert_history_node(shape, call.name, flags.text("name", "polyNormalizeUV1"),
                                     nullptr, call.name);
    set_attribute(node, "inputComponents",
                  PlugValue::of_text(graph::component_text("f", faces).c_str()), call.name);
    set_attribute(node, "uvSetName", PlugValue::of_text(name), call.name);
    settings.set_on(node, call.name);
    return StringArray{node.name_text()};
}

// --- polyUVSet ----------------------------------------------------------------------------------

/// Name of the current UV set, or with -allUVSets the names of all.
StringArray queried_uv_sets(const Mesh& mesh, const Flags& flags) {
    StringArray names;
    for (uint32_t i = 0; i < mesh.uv_set_count(); ++i)
        if (flags.has("allUVSets") || int(i) == mesh.current_uv_set())
            names.emplace_back(mesh.uv_set(i).name.asChar());
    return names;
}

/// A change of the UV sets of a mesh: a type of history nodes, and what it is to do.
struct SetChange {
    std::string type; ///< createUVSet, deleteUVSet, renameUVSet, polyCopyUV or currentUVSet
    std::string set;  ///< of uvSetName
    std::string more; ///< of newUVSetName or uvSetNameInput
    const char* more_attribute = nullptr;
};

void require_set(const Mesh& mesh, const std::string& name) {
    if (mesh.find_uv_set(name.c_str()) < 0)
        throw ScriptFault("polyUVSet: There is no UV set \"" + name + "\".");
}

/// What the flags ask for, if the mesh allows it.
SetChange asked_change(const Mesh& mesh, const Flags& flags) {
    const std::string name = flags.text("uvSet", ""), other = flags.text("newUVSet", "");
    const std::string current =
        mesh.current_uv_set() < 0 ? "" : mesh.uv_set(uint32_t(mesh.current_uv_set())).name.asChar();
    if (flags.has("create")) {
        Mesh trial = mesh; // which name is free
        return {"createUVSet", trial.uv_set(trial.add_uv_set(name.c_str())).name.asChar(), "",
                nullptr};
    }
    const std::string meant = name.empty() ? current : name;
    require_set(mesh, meant);
    if (flags.has("copy")) {
        if (other.empty())
            throw ScriptFault("polyUVSet: -copy needs -newUVSet, the set to copy to.");
        return {"polyCopyUV", other, meant, "uvSetNameInput"};
    }
    if (flags.has("delete")) {
        if (mesh.uv_set_count() < 2)
            throw ScriptFault("polyUVSet: The last UV set cannot be deleted.");
        return {"deleteUVSet", meant, "", nullptr};
    }
    if (flags.has("rename")) {
        if (other.empty() || mesh.find_uv_set(other.c_str()) >= 0)
            throw ScriptFault("polyUVSet: The name \"" + other + "\" cannot be given.");
        return {"renameUVSet", meant, other, "newUVSetName"};
    }
    if (!flags.has("currentUVSet"))
        throw ScriptFault("polyUVSet needs -create, -copy, -delete, -rename or -currentUVSet.");
    return {"currentUVSet", meant, "", nullptr};
}

/// Does what a node of the change's type would do.
void apply(const SetChange& change, Mesh& mesh) {
    if (change.type == "createUVSet" ||
        (change.type == "polyCopyUV" && mesh.find_uv_set(change.set.c_str()) < 0))
        mesh.add_uv_set(change.set.c_str());
    const auto set = uint32_t(mesh.find_uv_set(change.set.c_str()));
    if (change.type == "polyCopyUV")
        copy_uvs(mesh, uint32_t(mesh.find_uv_set(change.more.c_str())), set);
    else if (change.type == "deleteUVSet")
        mesh.remove_uv_set(set);
    else if (change.type == "renameUVSet")
        mesh.edit_uv_set(set).name = change.more.c_str();
    else if (change.type == "currentUVSet")
        mesh.set_current_uv_set(int(set));
}

/// Inserts the node of a change. Choosing the current set again changes the node that chose it.
Node& insert_set_node(MeshNode& shape, const SetChange& change, const std::string& command) {
    Node* last = last_history_node(shape);
    Node& node = change.type == "currentUVSet" && last && last->node_type().name == change.type
                     ? *last
                     : insert_history_node(shape, change.type, change.type + "1", nullptr, command);
    set_attribute(node, "uvSetName", PlugValue::of_text(change.set.c_str()), command);
    if (change.more_attribute)
        set_attribute(node, change.more_attribute, PlugValue::of_text(change.more.c_str()),
                      command);
    return node;
}

/// Returns the name of the set that was made, copied to, deleted, renamed or chosen.
Value uv_set(Invocation& call) {
    static const FlagTable table = {{"cr", "create"},
                                    {"cp", "copy"},
                                    {"d", "delete"},
                                    {"rn", "rename"},
                                    {"uvs", "uvSet", "s"},
                                    {"nuv", "newUVSet", "s"},
                                    {"cuv", "currentUVSet", "", "cq"},
                                    {"auv", "allUVSets", "", "q"}};
    const Flags flags(call, table);
    const graph::Selection items = items_named(flags.names());
    if (items.size() != 1)
        throw ScriptFault("polyUVSet needs one mesh.");
    MeshNode& shape = mesh_shape(items[0], call.name);
    const Mesh& mesh = mesh_of(shape, call.name);
    if (flags.query())
        return queried_uv_sets(mesh, flags);
    const SetChange change = asked_change(mesh, flags);
    if (last_history_node(shape))
        insert_set_node(shape, change, call.name);
    else
        change_mesh(shape, call.name, [&](Mesh& changed) { apply(change, changed); });
    return change.type == "renameUVSet" ? change.more : change.set;
}

} // namespace

void add_uv_edit_commands(Interpreter& interpreter) {
    interpreter.add_command("polyEditUV", edit_uv);
    interpreter.add_command("polyNormalizeUV", normalize_uv);
    interpreter.add_command("polyUVSet", uv_set);
}

} // namespace host::script
