// The nodes polyMapCut and polyMapSew: history of cutting and sewing UVs along edges.
#include "host/graph/data.h"
#include "host/graph/mesh_node.h"
#include "host/graph/standard_types.h"
#include "host/mesh/uv_edit.h"

#include <cstdio>

namespace host::graph {

namespace {

struct UvEditAttributes {
    Ref<Attribute> input, output, edges, uv_set;
};

const UvEditAttributes& uv_edit_attributes() {
    static const UvEditAttributes* const attributes = [] {
        auto* a = new UvEditAttributes;
        a->input = new Attribute("inputPolymesh", "ip", AttributeKind::mesh);
        a->output = new Attribute("output", "out", AttributeKind::mesh);
        a->output->flags.writable = false;
        a->output->flags.storable = false;
        // Edges as text, "e[3] e[5:8]".
        a->edges = new Attribute("inputComponents", "ics", AttributeKind::text);
        a->uv_set = new Attribute("uvSetName", "uvs", AttributeKind::text);
        return a;
    }();
    return *attributes;
}

std::string text_in(Node& node, const Attribute& attribute) {
    const Slot* slot = node.existing_slot(attribute);
    return slot && slot->value.kind() == ValueKind::text ? slot->value.as_text().asChar() : "";
}

using UvEdit = std::uint32_t (*)(Mesh&, std::uint32_t, const std::vector<std::uint32_t>&);

template <UvEdit Edit>
MStatus compute(Node& node, Slot& output) {
    const UvEditAttributes& a = uv_edit_attributes();
    Slot& input = *node.slot(*a.input);
    const MStatus status = evaluate(input);
    if (!status)
        return status;
    constexpr int k_has_no_effect = 1;
    output.value = input.value.deep_copy();
    Object* data = output.value.as_data();
    Mesh* mesh = data ? data->as_mesh()->edit() : nullptr;
    if (mesh && node.state() != k_has_no_effect) {
        const std::string name = text_in(node, *a.uv_set);
        const int set = name.empty() ? mesh->current_uv_set() : mesh->find_uv_set(name.c_str());
        if (set >= 0)
            Edit(*mesh, static_cast<std::uint32_t>(set),
                 ids_in_text(text_in(node, *a.edges),
                             static_cast<std::uint32_t>(mesh->connectivity().edge_count())));
    }
    if (is_clean(input))
        set_clean(output);
    return MS::kSuccess;
}

void add_type(Scene& scene, const char* name, unsigned int id, MStatus (*compute)(Node&, Slot&)) {
    const UvEditAttributes& a = uv_edit_attributes();
    NodeTypeRef type = make_node_type(name, id, MFn::kDependencyNode);
    for (const auto& attribute : {a.input, a.output, a.edges, a.uv_set}) {
        type->add(attribute);
        if (attribute != a.output)
            type->affects(*attribute, *a.output);
    }
    type->compute = compute;
    scene.add_type(type);
}

} // namespace

std::vector<std::uint32_t> ids_in_text(const std::string& text, std::uint32_t count) {
    std::vector<std::uint32_t> ids;
    for (size_t at = text.find('['); at != std::string::npos; at = text.find('[', at + 1)) {
        unsigned int first = 0, last = 0;
        const int read = std::sscanf(text.c_str() + at, "[%u:%u]", &first, &last);
        if (read == 1)
            last = first;
        for (std::uint32_t id = first; read > 0 && id <= last && id < count; ++id)
            ids.push_back(id);
    }
    return ids;
}

void add_uv_types(Scene& scene) {
    add_type(scene, "polyMapCut", 0x504D4355, compute<cut_uvs>); // "PMCU"
    add_type(scene, "polyMapSew", 0x504D5345, compute<sew_uvs>); // "PMSE"
}

} // namespace host::graph
