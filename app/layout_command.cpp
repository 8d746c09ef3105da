#include "app/layout_command.h"

#include "app/chart_packing.h"
#include "host/base/threads.h"
#include "host/commands/mesh_history.h"
#include "host/commands/session.h"
#include "host/graph/uv_layout.h"
#include "host/io/obj_scale.h"
#include "host/script/plugs.h"
#include "host/ui/stages.h"

#include <algorithm>
#include <cmath>
#include <unordered_map>

namespace app {
namespace {

namespace atlas = tessora::atlas;
using host::graph::UvLayout;
using host::graph::UvTurns;
using host::script::Flags;
using host::script::Invocation;
using host::script::ScriptFault;
using host::script::Value;

// --- packing ------------------------------------------------------------------------------------

/// A mesh of the scene as packing takes it: in the form of a file's.
host::ObjDocument document_of(const host::Mesh& mesh, uint32_t set) {
    const host::Connectivity& polygons = mesh.connectivity();
    const host::UvSet& uvs = mesh.uv_set(set);
    host::ObjDocument document;
    std::vector<double> exact;
    for (const host::Float3& p : mesh.points()) {
        document.positions.insert(document.positions.end(), {p.x, p.y, p.z});
        exact.insert(exact.end(), {static_cast<double>(p.x), static_cast<double>(p.y),
                                   static_cast<double>(p.z)});
    }
    for (uint32_t polygon = 0; polygon < polygons.polygon_count(); ++polygon)
        document.corner_begin.push_back(polygons.first_corner(polygon));
    document.corner_begin.push_back(polygons.corner_count());
    for (uint32_t corner = 0; corner < polygons.corner_count(); ++corner) {
        document.corner_vertex.push_back(polygons.corner_vertex(corner));
        const int32_t uv = uvs.corner_uvs[corner];
        document.corner_texture.push_back(uv < 0 ? host::k_obj_none : static_cast<uint32_t>(uv));
    }
    for (size_t i = 0; i < uvs.u.size(); ++i) {
        document.texture_coords.push_back(uvs.u[i]);
        document.texture_coords.push_back(uvs.v[i]);
    }
    host::fit_to_single_precision(exact, document);
    return document;
}

/// Marks the triangles whose charts stay.
void keep_charts(const UvLayout& layout, ChartList& list) {
    if (layout.faces.empty()) {
        list.keep.assign(list.chart.size(), 0);
        return;
    }
    const uint32_t charts = 1 + *std::max_element(list.chart.begin(), list.chart.end());
    std::vector<uint8_t> is_named(charts);
    for (uint32_t t = 0; t < list.chart.size(); ++t)
        if (std::binary_search(layout.faces.begin(), layout.faces.end(), list.polygon(t)))
            is_named[list.chart[t]] = 1;
    for (uint32_t t = 0; t < list.chart.size(); ++t)
        list.keep[t] = (is_named[list.chart[t]] != 0) == layout.locks_faces;
}

/// Area of a triangle in texels.
double texel_area(const ChartList& list, uint32_t t, const UvLayout& layout) {
    double at[3][2];
    for (uint32_t k = 0; k < 3; ++k) {
        const size_t uv = list.indices[3 * size_t(t) + k];
        at[k][0] = double(list.uvs[2 * uv]) * layout.width;
        at[k][1] = double(list.uvs[2 * uv + 1]) * layout.height;
    }
    return std::abs((at[1][0] - at[0][0]) * (at[2][1] - at[0][1]) -
                    (at[1][1] - at[0][1]) * (at[2][0] - at[0][0])) /
           2;
}

/// The density that keeps charts at their sizes: texel areas count as their areas in space, or with
/// one density for all, the sizes stay the same on the whole.
void keep_sizes(const UvLayout& layout, ChartList& list, atlas::PackSettings& settings) {
    double texels = 0, space = 0;
    for (uint32_t t = 0; t < list.chart.size(); ++t) {
        const double area = texel_area(list, t, layout);
        texels += area;
        space += double(list.area[t]);
        if (!layout.is_uniform)
            list.area[t] = static_cast<float>(area);
    }
    settings.density = atlas::Density::fixed;
    settings.texels_per_unit = layout.is_uniform && space > 0 ? std::sqrt(texels / space) : 1.0;
}

atlas::PackSettings settings_of(const UvLayout& layout) {
    atlas::PackSettings settings;
    settings.width = static_cast<uint32_t>(layout.width);
    settings.height = static_cast<uint32_t>(layout.height);
    settings.gutter = static_cast<float>(layout.gutter);
    settings.turns = layout.turns == UvTurns::none      ? atlas::Turns::none
                     : layout.turns == UvTurns::quarter ? atlas::Turns::quarter
                                                        : atlas::Turns::any;
    settings.density = layout.is_uniform ? atlas::Density::uniform : atlas::Density::as_is;
    settings.executor = host_parallel_for;
    settings.stage_progress = [](atlas::Stage stage, float fraction, void*) {
        return host_report_stage(atlas::describe(stage), fraction);
    };
    return settings;
}

std::string reason(const atlas::Failure& failure, const ChartList& list) {
    using atlas::Status;
    const auto at = [&] { return std::to_string(list.polygon(failure.element)); };
    switch (failure.status) {
    case Status::kept_charts_collide:
        return "Charts that stay collide: one lies on another or closer than the gutter, at face " +
               at() + ".";
    case Status::kept_chart_outside:
        return "A chart that stays lies outside of the texture, at face " + at() + ".";
    case Status::does_not_fit:
        return "The texture is too small for the charts with this gutter between them.";
    case Status::aborted:
        return "Interrupted.";
    default:
        return "The charts cannot be packed: " + std::string(atlas::describe(failure.status)) + ".";
    }
}

/// Puts packed UVs into a set. The first chart that has a UV keeps its id, others get new ones.
void take_uvs(const host::ObjUvs& uvs, host::UvSet& set) {
    std::vector<int32_t> keeper(set.u.size(), -1); // per id: the packed UV that has it
    std::unordered_map<int32_t, int32_t> added;    // packed UV -> id
    for (size_t corner = 0; corner < set.corner_uvs.size(); ++corner) {
        const int32_t packed = uvs.corner_uv[corner];
        int32_t& id = set.corner_uvs[corner];
        if (packed < 0 || id < 0)
            continue;
        int32_t& owner = keeper[size_t(id)];
        if (owner == packed)
            continue;
        const float u = uvs.u[size_t(packed)], v = uvs.v[size_t(packed)];
        if (owner < 0) {
            owner = packed;
            set.u[size_t(id)] = u;
            set.v[size_t(id)] = v;
            continue;
        }
        const auto [copy, is_new] = added.try_emplace(packed, int32_t(set.u.size()));
        if (is_new) {
            set.u.push_back(u);
            set.v.push_back(v);
        }
        id = copy->second;
    }
}

} // namespace

bool pack_charts(const host::Mesh& mesh, uint32_t set, const UvLayout& layout, host::UvSet& packed,
                 std::string& error) {
    if (layout.width < 1 || layout.width > 8192 || layout.height < 1 || layout.height > 8192) {
        error = "The texture must have 1 to 8192 texels a side.";
        return false;
    }
    if (!(layout.gutter >= 0 && layout.gutter <= 256)) {
        error = "The gutter must be 0 to 256 texels.";
        return false;
    }
    const host::ObjDocument document = document_of(mesh, set);
    PackSource source;
    source.document = &document;
    ChartList list;
    // A cut separates charts before they are moved apart.
    if (!list_charts({source}, list, error, measure::SameUv::entry))
        return false;
    if (list.chart.empty()) {
        error = "The mesh has no UVs to pack.";
        return false;
    }
    keep_charts(layout, list);
    atlas::PackSettings settings = settings_of(layout);
    if (!layout.grows)
        keep_sizes(layout, list, settings);
    atlas::PackResult result;
    const atlas::Failure failure = atlas::pack(list.mesh(), settings, result);
    if (failure.status != atlas::Status::ok) {
        error = reason(failure, list);
        return false;
    }
    packed = mesh.uv_set(set);
    take_uvs(packed_uvs(list, result)[0], packed);
    return true;
}

namespace {

// --- the command --------------------------------------------------------------------------------

int whole_number(const Flags& flags, const char* flag, int absent, int most, const char* meaning) {
    const int value = flags.integer(flag, absent);
    if (value < 0 || value > most)
        throw ScriptFault("polyLayoutUV: -" + std::string(flag) + " is " + meaning + ".");
    return value;
}

UvLayout asked_layout(const Flags& flags) {
    UvLayout layout;
    layout.width = flags.integer("textureWidth", layout.width);
    layout.height = flags.integer("textureHeight", layout.height);
    layout.gutter = flags.real("gutter", layout.gutter);
    layout.turns = static_cast<UvTurns>(
        whole_number(flags, "rotateForBestFit", 2, 2, "0 (no turns), 1 (by quarters) or 2 (any)"));
    layout.grows = whole_number(flags, "scale", 1, 1,
                                "0 (charts keep their sizes) or 1 (they fill the texture)") != 0;
    layout.is_uniform =
        whole_number(flags, "prescale", 0, 1,
                     "0 (as they are) or 1 (all with the same texels per area in space)") != 0;
    layout.locks_faces = flags.boolean("lockComponents", false);
    return layout;
}

/// The faces that the components among the items are on; none if whole meshes are named.
std::vector<uint32_t> named_faces(const host::graph::Selection& items, const host::Mesh& mesh,
                                  uint32_t set) {
    for (const host::graph::SelectionItem& item : items)
        if (!item.component)
            return {};
    return host::script::components_of(items, host::graph::ComponentKind::face, mesh, set);
}

/// Returns the name of the node, or nothing without history.
Value layout_uvs(Invocation& call) {
    static const host::script::FlagTable table = {{"tw", "textureWidth", "i"},
                                                  {"th", "textureHeight", "i"},
                                                  {"gut", "gutter", "f"},
                                                  {"rbf", "rotateForBestFit", "i"},
                                                  {"sc", "scale", "i"},
                                                  {"psc", "prescale", "i"},
                                                  {"lc", "lockComponents", "b"},
                                                  {"ch", "constructionHistory", "b"},
                                                  {"n", "name", "s"},
                                                  {"uvs", "uvSetName", "s"}};
    const Flags flags(call, table);
    UvLayout layout = asked_layout(flags);
    const host::graph::Selection items = host::script::items_named(flags.names());
    host::graph::MeshNode& shape = host::script::only_mesh_shape(items, call.name);
    const host::Mesh mesh = host::script::mesh_of(shape, call.name);
    const uint32_t set = host::script::uv_set_of(flags, mesh, call.name);
    layout.faces = named_faces(items, mesh, set);
    if (layout.locks_faces && layout.faces.empty())
        throw ScriptFault("polyLayoutUV: -lockComponents needs components, whose charts stay.");
    host::UvSet packed;
    std::string error;
    if (!pack_charts(mesh, set, layout, packed, error))
        throw ScriptFault("polyLayoutUV: " + error);
    if (!host::script::makes_history(shape, flags)) {
        host::script::change_mesh(shape, call.name, [&](host::Mesh& changed) {
            changed.edit_uv_set(set) = std::move(packed);
        });
        return Value();
    }
    host::graph::Node& node = host::script::insert_history_node(
        shape, call.name, flags.text("name", "polyLayoutUV1"), nullptr, call.name);
    host::script::require(host::graph::set_up_layout_node(node, layout, mesh, set, packed),
                          call.name, node.name_text());
    return host::script::StringArray{node.name_text()};
}

} // namespace

void add_layout_command() {
    host::graph::set_uv_packer(pack_charts);
    host::script::Session::current().interpreter().add_command("polyLayoutUV", layout_uvs);
}

} // namespace app
