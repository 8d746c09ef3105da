#include "host/graph/uv_layout.h"

#include "host/graph/component_text.h"
#include "host/graph/edits.h"
#include "host/graph/script_host.h"
#include "host/graph/uv_nodes.h"

#include <algorithm>

namespace host::graph {
namespace {

UvPacker& the_packer() {
    static UvPacker packer = nullptr;
    return packer;
}

bool same(const UvLayout& a, const UvLayout& b) {
    return a.width == b.width && a.height == b.height && a.gutter == b.gutter &&
           a.turns == b.turns && a.grows == b.grows && a.is_uniform == b.is_uniform &&
           a.faces == b.faces && a.locks_faces == b.locks_faces;
}

/// Remembers the last result: packing takes long, and nodes above may ask for evaluation again
/// although nothing changed.
class LayoutNode : public Node {
public:
    explicit LayoutNode(const NodeTypeRef& type) : Node(type) {}

    void remember(const Mesh& mesh, std::uint32_t set, const UvLayout& layout,
                  const UvSet& packed) {
        mesh_ = mesh;
        set_ = set;
        layout_ = layout;
        packed_ = packed;
    }

    /// Replaces the set by its packed one; if it cannot be packed, says why and leaves it.
    void pack(Mesh& mesh, std::uint32_t set, const UvLayout& layout) {
        if (!is_remembered(mesh, set, layout)) {
            UvSet packed = mesh.uv_set(set);
            std::string error;
            if (!the_packer()(mesh, set, layout, packed, error)) {
                packed = mesh.uv_set(set);
                show_line(Severity::warning, name_text() + ": " + error);
            }
            remember(mesh, set, layout, packed);
        }
        mesh.edit_uv_set(set) = packed_;
    }

private:
    /// Copies of a mesh share their parts until one is written, so parts in the same place are
    /// equal while this node holds a copy.
    bool is_remembered(const Mesh& mesh, std::uint32_t set, const UvLayout& layout) const {
        return &mesh.connectivity() == &mesh_.connectivity() && &mesh.points() == &mesh_.points() &&
               set == set_ && set < mesh_.uv_set_count() &&
               &mesh.uv_set(set) == &mesh_.uv_set(set) && same(layout, layout_);
    }

    Mesh mesh_;
    std::uint32_t set_ = 0;
    UvLayout layout_;
    UvSet packed_;
};

UvLayout layout_of(Node& node, const Mesh& mesh) {
    UvLayout layout;
    layout.width = static_cast<int>(number_in(node, "textureWidth"));
    layout.height = static_cast<int>(number_in(node, "textureHeight"));
    layout.gutter = number_in(node, "gutter");
    const double turns = number_in(node, "rotateForBestFit");
    layout.turns = turns <= 0.0 ? UvTurns::none : turns == 1.0 ? UvTurns::quarter : UvTurns::any;
    layout.grows = number_in(node, "scale") != 0.0;
    layout.is_uniform = number_in(node, "prescale") != 0.0;
    layout.faces =
        ids_in_text(text_in(node, "inputComponents"), "f", mesh.connectivity().polygon_count());
    layout.locks_faces = number_in(node, "lockComponents") != 0.0;
    return layout;
}

void pack(Node& node, Mesh& mesh, std::uint32_t set) {
    if (the_packer())
        static_cast<LayoutNode&>(node).pack(mesh, set, layout_of(node, mesh));
}

} // namespace

void set_uv_packer(UvPacker packer) { the_packer() = packer; }

MStatus set_up_layout_node(Node& node, const UvLayout& layout, const Mesh& mesh, std::uint32_t set,
                           const UvSet& packed) {
    const std::pair<const char*, double> numbers[] = {
        {"textureWidth", layout.width},
        {"textureHeight", layout.height},
        {"gutter", layout.gutter},
        {"rotateForBestFit", static_cast<double>(layout.turns)},
        {"scale", layout.grows ? 1.0 : 0.0},
        {"prescale", layout.is_uniform ? 1.0 : 0.0},
        {"lockComponents", layout.locks_faces ? 1.0 : 0.0}};
    MStatus status;
    for (const auto& [name, value] : numbers)
        if (status)
            status = Scene::current().perform(
                set_value_edit(*node.slot(name), PlugValue::of_double(value)));
    const std::pair<const char*, MString> texts[] = {
        {"inputComponents", component_text("f", layout.faces).c_str()},
        {"uvSetName", mesh.uv_set(set).name}};
    for (const auto& [name, value] : texts)
        if (status)
            status = Scene::current().perform(
                set_value_edit(*node.slot(name), PlugValue::of_text(value)));
    // As the node will read the settings: the gutter is a single-precision attribute.
    static_cast<LayoutNode&>(node).remember(mesh, set, layout_of(node, mesh), packed);
    return status;
}

void add_layout_type(Scene& scene) {
    using Kind = AttributeKind;
    const UvLayout layout;
    add_uv_type(
        scene, "polyLayoutUV", 0x504C5556, change_of_uvs<pack>,
        {uv_setting("inputComponents", "ics", Kind::component_list),
         uv_setting("textureWidth", "tw", Kind::integer, layout.width),
         uv_setting("textureHeight", "th", Kind::integer, layout.height),
         uv_setting("gutter", "gut", Kind::real32, layout.gutter),
         uv_setting("rotateForBestFit", "rbf", Kind::integer, static_cast<double>(layout.turns)),
         uv_setting("scale", "sc", Kind::integer, 1), uv_setting("prescale", "psc", Kind::integer),
         uv_setting("lockComponents", "lc", Kind::boolean)});
    scene.find_type("polyLayoutUV")->make = [](const NodeTypeRef& type) -> Ref<Node> {
        return new LayoutNode(type);
    };
}

} // namespace host::graph
