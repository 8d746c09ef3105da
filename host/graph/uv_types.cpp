// History of changes to UVs: nodes that take a mesh, change one UV set of it, and pass it on.
#include "host/graph/component_text.h"
#include "host/graph/data.h"
#include "host/graph/mesh_node.h"
#include "host/graph/standard_types.h"
#include "host/mesh/uv_edit.h"
#include "host/mesh/uv_move.h"

#include <algorithm>
#include <limits>

namespace host::graph {

namespace {

double number(Node& node, const char* name) {
    Slot& slot = *node.slot(name);
    evaluate(slot);
    return slot.value.number();
}

std::string text(Node& node, const char* name) {
    Slot& slot = *node.slot(name);
    evaluate(slot);
    return slot.value.kind() == ValueKind::text ? slot.value.as_text().asChar() : "";
}

/// The position of the set that the node works on, by default the current one; -1 if none.
int set_of(Node& node, const Mesh& mesh) {
    const std::string name = text(node, "uvSetName");
    return name.empty() ? mesh.current_uv_set() : mesh.find_uv_set(name.c_str());
}

std::vector<std::uint32_t> edges_of(Node& node, const Mesh& mesh) {
    return ids_in_text(text(node, "inputComponents"), "e", mesh.connectivity().edge_count());
}

// --- what the types do --------------------------------------------------------------------------

void cut(Node& node, Mesh& mesh, std::uint32_t set) { cut_uvs(mesh, set, edges_of(node, mesh)); }
void sew(Node& node, Mesh& mesh, std::uint32_t set) { sew_uvs(mesh, set, edges_of(node, mesh)); }

void move_and_sew(Node& node, Mesh& mesh, std::uint32_t set) {
    const double most = number(node, "limitPieceSize") != 0.0
                            ? std::max(number(node, "numberFaces"), 0.0)
                            : std::numeric_limits<std::uint32_t>::max();
    move_and_sew_uvs(mesh, set, edges_of(node, mesh), static_cast<std::uint32_t>(most));
}

void tweak(Node& node, Mesh& mesh, std::uint32_t set) {
    Slot& offsets = *node.slot("uvTweak");
    evaluate(offsets);
    UvSet& uvs = mesh.edit_uv_set(set);
    for (const auto& offset : offsets.below()) {
        const auto uv = static_cast<size_t>(offset->index());
        if (uv >= uvs.u.size() || offset->below().empty())
            continue;
        uvs.u[uv] += static_cast<float>(offset->child(0)->value.number());
        uvs.v[uv] += static_cast<float>(offset->child(1)->value.number());
    }
}

void normalize(Node& node, Mesh& mesh, std::uint32_t set) {
    UvNormalization how;
    how.each_polygon = number(node, "normalizeType") == 0.0;
    how.keeps_aspect = number(node, "preserveAspectRatio") != 0.0;
    how.is_centred = number(node, "centerOnTile") != 0.0;
    const double direction = number(node, "normalizeDirection");
    how.direction = direction == 1.0   ? UvNormalization::u
                    : direction == 2.0 ? UvNormalization::v
                                       : UvNormalization::both;
    normalize_uvs(
        mesh, set,
        ids_in_text(text(node, "inputComponents"), "f", mesh.connectivity().polygon_count()), how);
}

void remove_set(Node&, Mesh& mesh, std::uint32_t set) {
    if (mesh.uv_set_count() > 1)
        mesh.remove_uv_set(set);
}

void rename_set(Node& node, Mesh& mesh, std::uint32_t set) {
    const std::string name = text(node, "newUVSetName");
    if (!name.empty() && mesh.find_uv_set(name.c_str()) < 0)
        mesh.edit_uv_set(set).name = name.c_str();
}

void choose_set(Node&, Mesh& mesh, std::uint32_t set) {
    mesh.set_current_uv_set(static_cast<int>(set));
}

/// Copies the set uvSetNameInput into the set uvSetName, which stays the set of that name.
void copy_set(Node& node, Mesh& mesh, std::uint32_t set) {
    const int from = mesh.find_uv_set(text(node, "uvSetNameInput").c_str());
    if (from >= 0)
        copy_uvs(mesh, static_cast<std::uint32_t>(from), set);
}

// --- the types ----------------------------------------------------------------------------------

using Change = void (*)(Node&, Mesh&, std::uint32_t set);

/// What a node does if the mesh lacks the set that it works on.
enum class Missing { passes_through, makes_it };

template <Change Apply, Missing Otherwise = Missing::passes_through>
MStatus compute(Node& node, Slot& output) {
    Slot& input = *node.slot("inputPolymesh");
    const MStatus status = evaluate(input);
    if (!status)
        return status;
    constexpr int k_has_no_effect = 1;
    output.value = input.value.deep_copy();
    Object* data = output.value.as_data();
    Mesh* mesh = data ? data->as_mesh()->edit() : nullptr;
    if (mesh && node.state() != k_has_no_effect) {
        int set = set_of(node, *mesh);
        if (set < 0 && Otherwise == Missing::makes_it)
            set = static_cast<int>(mesh->add_uv_set(text(node, "uvSetName").c_str()));
        if (set >= 0)
            Apply(node, *mesh, static_cast<std::uint32_t>(set));
    }
    if (is_clean(input))
        set_clean(output);
    return MS::kSuccess;
}

void nothing_more(Node&, Mesh&, std::uint32_t) {}

Ref<Attribute> offsets_attribute() {
    Ref<Attribute> offsets = new Attribute("uvTweak", "uvtk", AttributeKind::compound);
    offsets->tuple = Tuple::float2;
    offsets->flags.array = true;
    offsets->add_child(new Attribute("uvTweakU", "tu", AttributeKind::real32));
    offsets->add_child(new Attribute("uvTweakV", "tv", AttributeKind::real32));
    return offsets;
}

Ref<Attribute> setting(const char* long_name, const char* short_name, AttributeKind kind,
                       double value = 0.0) {
    Ref<Attribute> attribute = new Attribute(long_name, short_name, kind);
    if (attribute->is_number()) {
        PlugValue start = attribute->default_value();
        start.assign_number(value);
        attribute->set_default(start);
    }
    return attribute;
}

Ref<Attribute> components() {
    return setting("inputComponents", "ics", AttributeKind::component_list);
}

/// Adds a type with a mesh in, a mesh out, the name of a UV set, and more settings.
void add_type(Scene& scene, const char* name, unsigned int id, MStatus (*compute)(Node&, Slot&),
              const std::vector<Ref<Attribute>>& settings) {
    NodeTypeRef type = make_node_type(name, id, MFn::kDependencyNode);
    const Ref<Attribute> output = new Attribute("output", "out", AttributeKind::mesh);
    output->flags.writable = false;
    output->flags.storable = false;
    type->add(output);
    std::vector<Ref<Attribute>> inputs = {new Attribute("inputPolymesh", "ip", AttributeKind::mesh),
                                          new Attribute("uvSetName", "uvs", AttributeKind::text)};
    inputs.insert(inputs.end(), settings.begin(), settings.end());
    for (const Ref<Attribute>& input : inputs) {
        type->add(input);
        type->affects(*input, *output);
    }
    type->compute = compute;
    scene.add_type(type);
}

} // namespace

void add_uv_types(Scene& scene) {
    using Kind = AttributeKind;
    add_type(scene, "polyMapCut", 0x504D4355, compute<cut, Missing::makes_it>, {components()});
    add_type(scene, "polyMapSew", 0x504D5345, compute<sew>, {components()});
    add_type(scene, "polyMapSewMove", 0x504D534D, compute<move_and_sew>,
             {components(), setting("numberFaces", "nf", Kind::integer, 10),
              setting("limitPieceSize", "lps", Kind::boolean)});
    add_type(scene, "polyTweakUV", 0x50545556, compute<tweak>, {offsets_attribute()});
    add_type(scene, "polyNormalizeUV", 0x504E5556, compute<normalize>,
             {components(), setting("normalizeType", "nt", Kind::integer, 1),
              setting("preserveAspectRatio", "pa", Kind::boolean, 1),
              setting("centerOnTile", "cot", Kind::boolean),
              setting("normalizeDirection", "nd", Kind::integer)});
    add_type(scene, "createUVSet", 0x43555653, compute<nothing_more, Missing::makes_it>, {});
    add_type(scene, "deleteUVSet", 0x44555653, compute<remove_set>, {});
    add_type(scene, "renameUVSet", 0x52555653, compute<rename_set>,
             {setting("newUVSetName", "nuv", Kind::text)});
    add_type(scene, "currentUVSet", 0x55555653, compute<choose_set>, {});
    add_type(scene, "polyCopyUV", 0x50435556, compute<copy_set, Missing::makes_it>,
             {setting("uvSetNameInput", "uvi", Kind::text)});
}

} // namespace host::graph
