// History of changes to UVs: nodes that take a mesh, change one UV set of it, and pass it on.
#include "host/graph/component_text.h"
#include "host/graph/data.h"
#include "host/graph/mesh_node.h"
#include "host/graph/standard_types.h"
#include "host/graph/uv_nodes.h"
#include "host/mesh/uv_edit.h"
#include "host/mesh/uv_move.h"

#include <algorithm>
#include <limits>

namespace host::graph {

namespace {

/// The position of the set that the node works on, by default the current one; -1 if none.
int set_of(Node& node, const Mesh& mesh) {
    const std::string name = text_in(node, "uvSetName");
    return name.empty() ? mesh.current_uv_set() : mesh.find_uv_set(name.c_str());
}

std::vector<std::uint32_t> edges_of(Node& node, const Mesh& mesh) {
    return ids_in_text(text_in(node, "inputComponents"), "e", mesh.connectivity().edge_count());
}

// --- what the types do --------------------------------------------------------------------------

void cut(Node& node, Mesh& mesh, std::uint32_t set) { cut_uvs(mesh, set, edges_of(node, mesh)); }
void sew(Node& node, Mesh& mesh, std::uint32_t set) { sew_uvs(mesh, set, edges_of(node, mesh)); }

void move_and_sew(Node& node, Mesh& mesh, std::uint32_t set) {
    const double most = number_in(node, "limitPieceSize") != 0.0
                            ? std::max(number_in(node, "numberFaces"), 0.0)
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
    how.each_polygon = number_in(node, "normalizeType") == 0.0;
    how.keeps_aspect = number_in(node, "preserveAspectRatio") != 0.0;
    how.is_centred = number_in(node, "centerOnTile") != 0.0;
    const double direction = number_in(node, "normalizeDirection");
    how.direction = direction == 1.0   ? UvNormalization::u
                    : direction == 2.0 ? UvNormalization::v
                                       : UvNormalization::both;
    normalize_uvs(
        mesh, set,
        ids_in_text(text_in(node, "inputComponents"), "f", mesh.connectivity().polygon_count()),
        how);
}

void remove_set(Node&, Mesh& mesh, std::uint32_t set) {
    if (mesh.uv_set_count() > 1)
        mesh.remove_uv_set(set);
}

void rename_set(Node& node, Mesh& mesh, std::uint32_t set) {
    const std::string name = text_in(node, "newUVSetName");
    if (!name.empty() && mesh.find_uv_set(name.c_str()) < 0)
        mesh.edit_uv_set(set).name = name.c_str();
}

void choose_set(Node&, Mesh& mesh, std::uint32_t set) {
    mesh.set_current_uv_set(static_cast<int>(set));
}

/// Copies the set uvSetNameInput into the set uvSetName, which stays the set of that name.
void copy_set(Node& node, Mesh& mesh, std::uint32_t set) {
    const int from = mesh.find_uv_set(text_in(node, "uvSetNameInput").c_str());
    if (from >= 0)
        copy_uvs(mesh, static_cast<std::uint32_t>(from), set);
}

void nothing_more(Node&, Mesh&, std::uint32_t) {}

// --- the types ----------------------------------------------------------------------------------

Ref<Attribute> offsets_attribute() {
    Ref<Attribute> offsets = new Attribute("uvTweak", "uvtk", AttributeKind::compound);
    offsets->tuple = Tuple::float2;
    offsets->flags.array = true;
    offsets->add_child(new Attribute("uvTweakU", "tu", AttributeKind::real32));
    offsets->add_child(new Attribute("uvTweakV", "tv", AttributeKind::real32));
    return offsets;
}

Ref<Attribute> components() {
    return uv_setting("inputComponents", "ics", AttributeKind::component_list);
}

} // namespace

double number_in(Node& node, const char* attribute) {
    Slot& slot = *node.slot(attribute);
    evaluate(slot);
    return slot.value.number();
}

std::string text_in(Node& node, const char* attribute) {
    Slot& slot = *node.slot(attribute);
    evaluate(slot);
    return slot.value.kind() == ValueKind::text ? slot.value.as_text().asChar() : "";
}

MStatus compute_uvs(Node& node, Slot& output, UvChange change, MissingSet missing) {
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
        if (set < 0 && missing == MissingSet::makes_it)
            set = static_cast<int>(mesh->add_uv_set(text_in(node, "uvSetName").c_str()));
        if (set >= 0)
            change(node, *mesh, static_cast<std::uint32_t>(set));
    }
    if (is_clean(input))
        set_clean(output);
    return MS::kSuccess;
}

Ref<Attribute> uv_setting(const char* long_name, const char* short_name, AttributeKind kind,
                          double value) {
    Ref<Attribute> attribute = new Attribute(long_name, short_name, kind);
    if (attribute->is_number()) {
        PlugValue start = attribute->default_value();
        start.assign_number(value);
        attribute->set_default(start);
    }
    return attribute;
}

void add_uv_type(Scene& scene, const char* name, unsigned int id, MStatus (*compute)(Node&, Slot&),
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

void add_uv_types(Scene& scene) {
    using Kind = AttributeKind;
    add_layout_type(scene);
    add_uv_type(scene, "polyMapCut", 0x504D4355, change_of_uvs<cut, MissingSet::makes_it>,
                {components()});
    add_uv_type(scene, "polyMapSew", 0x504D5345, change_of_uvs<sew>, {components()});
    add_uv_type(scene, "polyMapSewMove", 0x504D534D, change_of_uvs<move_and_sew>,
                {components(), uv_setting("numberFaces", "nf", Kind::integer, 10),
                 uv_setting("limitPieceSize", "lps", Kind::boolean)});
    add_uv_type(scene, "polyTweakUV", 0x50545556, change_of_uvs<tweak>, {offsets_attribute()});
    add_uv_type(scene, "polyNormalizeUV", 0x504E5556, change_of_uvs<normalize>,
                {components(), uv_setting("normalizeType", "nt", Kind::integer, 1),
                 uv_setting("preserveAspectRatio", "pa", Kind::boolean, 1),
                 uv_setting("centerOnTile", "cot", Kind::boolean),
                 uv_setting("normalizeDirection", "nd", Kind::integer)});
    add_uv_type(scene, "createUVSet", 0x43555653, change_of_uvs<nothing_more, MissingSet::makes_it>,
                {});
    add_uv_type(scene, "deleteUVSet", 0x44555653, change_of_uvs<remove_set>, {});
    add_uv_type(scene, "renameUVSet", 0x52555653, change_of_uvs<rename_set>,
                {uv_setting("newUVSetName", "nuv", Kind::text)});
    add_uv_type(scene, "currentUVSet", 0x55555653, change_of_uvs<choose_set>, {});
    add_uv_type(scene, "polyCopyUV", 0x50435556, change_of_uvs<copy_set, MissingSet::makes_it>,
                {uv_setting("uvSetNameInput", "uvi", Kind::text)});
}

} // namespace host::graph
