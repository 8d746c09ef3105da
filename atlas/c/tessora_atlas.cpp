#include "atlas/c/tessora_atlas.h"

#include "atlas/polygon_mesh.h"
#include "atlas/polygons/read.h"
#include "atlas/polygons/threads.h"
#include "atlas/progress.h"

#include <algorithm>
#include <cstdio>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <new>
#include <optional>

namespace atlas = tessora::atlas;

struct tessora_atlas {
    atlas::PolygonAtlas made;
};

namespace {

static_assert(TESSORA_NONE == atlas::k_none);
static_assert(TESSORA_OUT_OF_MEMORY == static_cast<int>(atlas::Status::out_of_memory));
static_assert(TESSORA_KEPT_CHART_OUTSIDE == static_cast<int>(atlas::Status::kept_chart_outside));
static_assert(TESSORA_DOES_NOT_FIT == static_cast<int>(atlas::Status::does_not_fit));
static_assert(TESSORA_UINT32 == static_cast<int>(atlas::Type::uint32));
static_assert(TESSORA_UINT8 == static_cast<int>(atlas::Type::uint8));
static_assert(sizeof(tessora_error::text) == sizeof(atlas::Fault::text));

int report(const atlas::Fault& fault, tessora_error* error) {
    if (error != nullptr) {
        error->code = static_cast<int32_t>(fault.status);
        error->element = fault.element;
        std::memcpy(error->text, fault.text, sizeof error->text);
    }
    return static_cast<int>(fault.status);
}

atlas::Fault null_argument(const char* name) {
    return atlas::fault(atlas::Status::invalid_argument, atlas::k_none, "%s is null", name);
}

/// The first fault of a list, if any.
atlas::Fault first_of(std::initializer_list<atlas::Fault> faults) {
    for (const atlas::Fault& fault : faults)
        if (fault.status != atlas::Status::ok)
            return fault;
    return {};
}

/// Copies the members that the caller's version of a struct has over the defaults.
template <class Struct>
atlas::Fault take(const Struct* given, const char* name, Struct& taken) {
    if (given == nullptr)
        return null_argument(name);
    if (given->struct_size <= sizeof given->struct_size)
        return atlas::fault(atlas::Status::invalid_argument, atlas::k_none,
                            "%s: struct_size is %zu; initialise the struct first", name,
                            given->struct_size);
    // Sizes of structs are multiples of this; another could end within a pointer.
    if (given->struct_size % alignof(Struct) != 0)
        return atlas::fault(atlas::Status::invalid_argument, atlas::k_none,
                            "%s: struct_size is %zu, which no version has; initialise the struct "
                            "first",
                            name, given->struct_size);
    std::memcpy(&taken, given, std::min(given->struct_size, sizeof taken));
    return {};
}

template <class Struct>
void set_defaults(Struct* given, size_t size, Struct defaults) {
    if (given == nullptr || size < sizeof defaults.struct_size)
        return;
    defaults.struct_size = size;
    std::memset(static_cast<void*>(given), 0, size);
    std::memcpy(static_cast<void*>(given), &defaults, std::min(size, sizeof defaults));
}

/// Converts a value of an enumeration, whose last enumerator is `last`.
template <class Enum>
atlas::Fault read_enum(const char* name, int32_t value, Enum last, Enum& read) {
    if (value < 0 || value > static_cast<int32_t>(last))
        return atlas::fault(atlas::Status::invalid_argument, atlas::k_none,
                            "%s is %d; it must be 0 to %d", name, static_cast<int>(value),
                            static_cast<int>(last));
    read = static_cast<Enum>(value);
    return {};
}

atlas::Array array_of(const tessora_array& array) {
    return {array.data, array.count, array.stride, static_cast<atlas::Type>(array.type)};
}

atlas::Fault read_mesh(const tessora_mesh* given, atlas::PolygonMesh& mesh) {
    tessora_mesh taken = {};
    const atlas::Fault bad = take(given, "mesh", taken);
    mesh.positions = array_of(taken.positions);
    mesh.indices = array_of(taken.indices);
    mesh.offsets = array_of(taken.offsets);
    mesh.cuts = array_of(taken.cuts);
    mesh.normals = array_of(taken.normals);
    mesh.neighbours = array_of(taken.neighbours);
    mesh.false_edges = array_of(taken.false_edges);
    mesh.normals_per_corner = taken.normals_per_corner != 0;
    mesh.weld = taken.weld != 0;
    return bad;
}

atlas::Fault read_uvs(const tessora_uvs* given, atlas::PolygonUvs& uvs) {
    tessora_uvs taken = {};
    const atlas::Fault bad = take(given, "uvs", taken);
    uvs.uvs = array_of(taken.uvs);
    uvs.charts = array_of(taken.charts);
    uvs.keep = array_of(taken.keep);
    return bad;
}

tessora_options default_options() {
    const atlas::Options defaults;
    tessora_options options = {};
    options.max_stretch = defaults.max_stretch;
    options.max_charts = defaults.max_charts;
    options.width = defaults.width;
    options.height = defaults.height;
    options.gutter = defaults.gutter;
    options.quality = TESSORA_FAST;
    options.texture_uvs = 1;
    options.threads = 1;
    options.effort = defaults.effort;
    return options;
}

tessora_pack_options default_pack_options() {
    const atlas::PackSettings defaults;
    tessora_pack_options options = {};
    options.width = defaults.width;
    options.height = defaults.height;
    options.gutter = defaults.gutter;
    options.tiles = defaults.tiles;
    options.effort = defaults.effort;
    options.quality = TESSORA_QUALITY;
    return options;
}

/// The caller's progress function.
struct Caller {
    tessora_progress progress = nullptr;
    void* user = nullptr;
    atlas::Stage first = atlas::Stage::surface; ///< of the call's stages

    static int report(atlas::Stage stage, float fraction, void* user) {
        const Caller& caller = *static_cast<const Caller*>(user);
        const double whole = atlas::ProgressMeter::whole(stage, double{fraction}, caller.first);
        return caller.progress(atlas::describe(stage), static_cast<float>(whole), caller.user);
    }
};

/// Reads what the options of all calls have. `options` refers to `caller` then.
template <class Given, class Options>
atlas::Fault read_common(const Given& given, Options& options, Caller& caller) {
    options.width = given.width;
    options.height = given.height;
    options.gutter = given.gutter;
    options.executor = given.parallel_for;
    caller.progress = given.progress;
    caller.user = given.user;
    if (given.progress != nullptr) {
        options.stage_progress = Caller::report;
        options.user = &caller;
    }
    return read_enum("quality", given.quality, atlas::Quality::quality, options.quality);
}

static_assert(TESSORA_TURN_NONE == static_cast<int>(atlas::Turns::none));
static_assert(TESSORA_DENSITY_FIXED == static_cast<int>(atlas::Density::fixed));
static_assert(TESSORA_STACK_MIRRORED == static_cast<int>(atlas::Stack::mirrored));
static_assert(TESSORA_QUALITY == static_cast<int>(atlas::Quality::quality));

/// What a call makes an atlas of. Its members refer to each other.
struct UnwrapCall {
    atlas::PolygonMesh mesh;
    atlas::Options options;
    atlas::UvSpace space = atlas::UvSpace::texture;
    Caller caller;
    std::optional<atlas::Threads> threads;

    atlas::Fault read(const tessora_mesh* given_mesh, const tessora_options* given) {
        tessora_options taken = default_options();
        const atlas::Fault bad = first_of({
            read_mesh(given_mesh, mesh),
            given != nullptr ? take(given, "options", taken) : atlas::Fault(),
            read_common(taken, options, caller),
            atlas::check_threads(taken.threads),
        });
        options.max_stretch = taken.max_stretch;
        options.max_charts = taken.max_charts;
        options.stack = taken.stack != 0;
        options.cut_to_pack = taken.cut_to_pack != 0;
        options.effort = taken.effort;
        space = taken.texture_uvs != 0 ? atlas::UvSpace::texture : atlas::UvSpace::isotropic;
        if (bad.status == atlas::Status::ok && options.executor == nullptr)
            options.executor = threads.emplace(taken.threads).executor();
        return bad;
    }
};

struct PackCall {
    atlas::PolygonMesh mesh;
    atlas::PolygonUvs uvs;
    atlas::PackSettings settings;
    Caller caller{nullptr, nullptr, atlas::Stage::packing};

    atlas::Fault read(const tessora_mesh* given_mesh, const tessora_uvs* given_uvs,
                      const tessora_pack_options* given) {
        tessora_pack_options taken = default_pack_options();
        const atlas::Fault bad = first_of({
            read_mesh(given_mesh, mesh),
            read_uvs(given_uvs, uvs),
            given != nullptr ? take(given, "options", taken) : atlas::Fault(),
            read_common(taken, settings, caller),
            read_enum("turns", taken.turns, atlas::Turns::none, settings.turns),
            read_enum("density", taken.density, atlas::Density::fixed, settings.density),
            read_enum("stack", taken.stack, atlas::Stack::mirrored, settings.stack),
        });
        settings.tiles = taken.tiles;
        settings.align = taken.align != 0;
        settings.effort = taken.effort;
        settings.texels_per_unit = taken.texels_per_unit;
        return bad;
    }
};

/// Makes an atlas by `make`, which returns a fault, and hands it over.
template <class Make>
int hand_over(tessora_atlas** result, tessora_error* error, Make make) {
    if (result == nullptr)
        return report(null_argument("atlas"), error);
    *result = nullptr;
    std::unique_ptr<tessora_atlas> made(new (std::nothrow) tessora_atlas);
    if (made == nullptr)
        return report(atlas::fault(atlas::Status::out_of_memory, atlas::k_none, "%s",
                                   atlas::describe(atlas::Status::out_of_memory)),
                      error);
    const atlas::Fault bad = make(made->made);
    if (bad.status == atlas::Status::ok)
        *result = made.release();
    return report(bad, error);
}

/// Copies the list that `find` makes of a mesh into the caller's array, which must have its size.
template <class Find>
int give_list(const tessora_mesh* given, Find find, const char* name, uint32_t* array, size_t count,
              tessora_error* error) {
    atlas::PolygonMesh mesh;
    std::vector<uint32_t> list;
    atlas::Fault bad = read_mesh(given, mesh);
    if (bad.status == atlas::Status::ok)
        bad = find(mesh, list);
    if (bad.status != atlas::Status::ok)
        return report(bad, error);
    if (count != list.size())
        return report(atlas::fault(atlas::Status::invalid_argument, atlas::k_none,
                                   "%s has %zu entries; %zu are needed", name, count, list.size()),
                      error);
    if (array == nullptr && count != 0)
        return report(null_argument(name), error);
    std::copy(list.begin(), list.end(), array);
    return report({}, error);
}

template <class Value>
const Value* view(const std::vector<Value>& list, size_t* count, size_t per_element = 1) {
    if (count != nullptr)
        *count = list.size() / per_element;
    return list.data();
}

} // namespace

uint32_t tessora_abi_version(void) { return TESSORA_ABI_VERSION; }

const char* tessora_version(void) { return TESSORA_VERSION; }

void tessora_mesh_init(tessora_mesh* mesh, size_t size) { set_defaults(mesh, size, {}); }

void tessora_options_init(tessora_options* options, size_t size) {
    set_defaults(options, size, default_options());
}

int tessora_create(const tessora_mesh* mesh, const tessora_options* options, tessora_atlas** atlas,
                   tessora_error* error) {
    return hand_over(atlas, error, [&](atlas::PolygonAtlas& made) {
        UnwrapCall call;
        const atlas::Fault bad = call.read(mesh, options);
        return bad.status == atlas::Status::ok
                   ? atlas::create(call.mesh, call.options, call.space, made)
                   : bad;
    });
}

int tessora_partition(const tessora_mesh* mesh, const tessora_options* options,
                      tessora_atlas** atlas, tessora_error* error) {
    return hand_over(atlas, error, [&](atlas::PolygonAtlas& made) {
        UnwrapCall call;
        const atlas::Fault bad = call.read(mesh, options);
        return bad.status == atlas::Status::ok ? atlas::partition(call.mesh, call.options, made)
                                               : bad;
    });
}

void tessora_uvs_init(tessora_uvs* uvs, size_t size) { set_defaults(uvs, size, {}); }

void tessora_pack_options_init(tessora_pack_options* options, size_t size) {
    set_defaults(options, size, default_pack_options());
}

int tessora_pack(const tessora_mesh* mesh, const tessora_uvs* uvs,
                 const tessora_pack_options* options, tessora_atlas** atlas, tessora_error* error) {
    return hand_over(atlas, error, [&](atlas::PolygonAtlas& made) {
        PackCall call;
        const atlas::Fault bad = call.read(mesh, uvs, options);
        return bad.status == atlas::Status::ok
                   ? atlas::pack(call.mesh, call.uvs, call.settings, made)
                   : bad;
    });
}

void tessora_atlas_free(tessora_atlas* atlas) { delete atlas; }

uint32_t tessora_atlas_chart_count(const tessora_atlas* atlas) {
    return atlas->made.triangles.chart_count;
}

float tessora_atlas_stretch(const tessora_atlas* atlas) { return atlas->made.triangles.stretch; }

const float* tessora_atlas_uvs(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.uvs, count, 2);
}

const uint32_t* tessora_atlas_source_vertices(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.source_vertex, count);
}

const uint32_t* tessora_atlas_corner_vertices(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.corner_vertex, count);
}

const uint32_t* tessora_atlas_indices(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.indices, count);
}

const uint32_t* tessora_atlas_triangle_corners(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangle_corner, count);
}

const uint32_t* tessora_atlas_charts(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.chart, count);
}

const uint32_t* tessora_atlas_over_limit(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.over_limit, count);
}

const uint32_t* tessora_atlas_lost(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.triangles.lost, count);
}

const uint32_t* tessora_atlas_neighbours(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.neighbours, count);
}

const double* tessora_atlas_coverage(const tessora_atlas* atlas, size_t* count) {
    return view(atlas->made.coverage, count);
}

double tessora_atlas_texels_per_unit(const tessora_atlas* atlas) {
    return atlas->made.texels_per_unit;
}

uint32_t tessora_atlas_chart_tile(const tessora_atlas* atlas, uint32_t chart) {
    return chart < atlas->made.packed.size() ? atlas->made.packed[chart].tile : 0;
}

uint32_t tessora_atlas_chart_stacked_on(const tessora_atlas* atlas, uint32_t chart) {
    return chart < atlas->made.packed.size() ? atlas->made.packed[chart].stacked_on : TESSORA_NONE;
}

int tessora_triangulate(const tessora_mesh* mesh, uint32_t* triangle_corners, size_t count,
                        tessora_error* error) {
    return give_list(mesh, atlas::triangulate, "triangle_corners", triangle_corners, count, error);
}

int tessora_neighbours(const tessora_mesh* mesh, uint32_t* neighbours, size_t count,
                       tessora_error* error) {
    return give_list(mesh, atlas::find_neighbours, "neighbours", neighbours, count, error);
}

int tessora_to_texture(float* uvs, size_t count, uint32_t width, uint32_t height, float gutter,
                       tessora_error* error) {
    if (uvs == nullptr && count != 0)
        return report(null_argument("uvs"), error);
    atlas::Options options;
    options.width = width;
    options.height = height;
    options.gutter = gutter;
    const atlas::Fault bad = atlas::check_options(options, true);
    if (bad.status == atlas::Status::ok)
        atlas::to_texture(uvs, count, width, height, gutter);
    return report(bad, error);
}
