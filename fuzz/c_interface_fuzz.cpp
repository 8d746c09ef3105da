/// Fuzz target: the C interface. The input becomes a mesh in arrays of any type, stride and
/// content, options in and out of range, and a choice of calls. A call must fail with a status, a
/// sentence and no atlas, or return an atlas whose arrays fit the mesh.
#include "atlas/c/tessora_atlas.h"
#include "fuzz/finding.h"

#include <cmath>
#include <cstring>
#include <fuzzer/FuzzedDataProvider.h>
#include <memory>
#include <vector>

namespace {

/// Arrays in memory of exactly their size, so that reading past an end is noticed.
class Arrays {
public:
    explicit Arrays(FuzzedDataProvider& input) : input_(input) {}

    /// Elements of `components` numbers that `next` makes; mostly of the type asked for.
    template <class Next>
    tessora_array make(size_t count, size_t components, int32_t type, Next next) {
        const bool is_odd = input_.ConsumeIntegral<uint8_t>() == 255;
        tessora_array array = {};
        array.count = count;
        array.type = is_odd ? input_.ConsumeIntegralInRange<int32_t>(-1, 6) : type;
        const size_t dense = components * size_of(type);
        const size_t gap = input_.ConsumeIntegralInRange<size_t>(0, 3);
        array.stride = gap == 0 ? 0 : dense + gap;
        if (is_odd && input_.ConsumeBool()) {
            array.data = nullptr;
            return array;
        }
        const size_t stride = gap == 0 ? dense : array.stride;
        // 8 bytes a number: an odd type must not need more than there is.
        blocks_.emplace_back(new uint8_t[is_odd ? count * (8 * components + gap) : count * stride]);
        uint8_t* const bytes = blocks_.back().get();
        std::memset(bytes, 0, is_odd ? count * (8 * components + gap) : count * stride);
        for (size_t i = 0; i < count; ++i)
            for (size_t k = 0; k < components; ++k)
                store(next(), type, bytes + i * stride + k * size_of(type));
        array.data = bytes;
        return array;
    }

private:
    static size_t size_of(int32_t type) {
        return type == TESSORA_FLOAT64  ? 8
               : type == TESSORA_UINT8  ? 1
               : type == TESSORA_UINT16 ? 2
                                        : 4;
    }
    template <class Number>
    static void copy(Number number, uint8_t* place) {
        std::memcpy(place, &number, sizeof number);
    }
    static void store(double value, int32_t type, uint8_t* place) {
        switch (type) {
        case TESSORA_FLOAT32:
            return copy(float(value), place);
        case TESSORA_FLOAT64:
            return copy(value, place);
        case TESSORA_UINT8:
            return copy(uint8_t(value), place);
        case TESSORA_UINT16:
            return copy(uint16_t(value), place);
        default:
            return copy(uint32_t(value), place);
        }
    }

    FuzzedDataProvider& input_;
    std::vector<std::unique_ptr<uint8_t[]>> blocks_;
};

/// Mostly small numbers on a grid, so that points coincide and triangles degenerate.
double random_coordinate(FuzzedDataProvider& input) {
    const int value = input.ConsumeIntegral<int8_t>();
    return value != -128 ? value / 4.0 : input.ConsumeFloatingPoint<float>();
}

struct Shape {
    std::vector<uint32_t> offsets{0};
    uint32_t vertices = 0, corners = 0;
    bool triangles = false;

    explicit Shape(FuzzedDataProvider& input) {
        vertices = input.ConsumeIntegralInRange<uint32_t>(0, 9);
        triangles = input.ConsumeBool();
        for (uint32_t p = input.ConsumeIntegralInRange<uint32_t>(0, 6); p > 0; --p) {
            const uint8_t size = input.ConsumeIntegral<uint8_t>();
            corners += triangles ? 3 : size == 255 ? size % 3 : 3 + size % 4;
            offsets.push_back(size == 254 && !triangles ? corners / 2 : corners);
        }
    }
    uint32_t polygons() const { return uint32_t(offsets.size() - 1); }
    uint32_t triangle_count() const { return corners - 2 * polygons(); }
};

tessora_mesh random_mesh(FuzzedDataProvider& input, Arrays& arrays, const Shape& shape) {
    const auto coordinate = [&] { return random_coordinate(input); };
    const auto vertex = [&]() -> double {
        const uint8_t id = input.ConsumeIntegral<uint8_t>();
        return id < 250 && shape.vertices > 0 ? id % shape.vertices : id;
    };
    const auto mark = [&]() -> double { return input.ConsumeIntegral<uint8_t>() % 4 == 0; };
    const auto real = [&] { return input.ConsumeBool() ? TESSORA_FLOAT32 : TESSORA_FLOAT64; };
    tessora_mesh mesh;
    tessora_mesh_init(&mesh, sizeof mesh);
    mesh.positions = arrays.make(shape.vertices, 3, real(), coordinate);
    mesh.indices = arrays.make(shape.corners, 1,
                               input.ConsumeBool() ? TESSORA_UINT16 : TESSORA_UINT32, vertex);
    if (!shape.triangles) {
        size_t p = 0;
        mesh.offsets = arrays.make(shape.offsets.size(), 1, TESSORA_UINT32,
                                   [&]() -> double { return shape.offsets[p++]; });
    }
    if (input.ConsumeBool())
        mesh.cuts = arrays.make(shape.corners, 1, TESSORA_UINT8, mark);
    mesh.normals_per_corner = input.ConsumeBool();
    if (input.ConsumeBool())
        mesh.normals = arrays.make(mesh.normals_per_corner != 0 ? shape.corners : shape.vertices, 3,
                                   real(), coordinate);
    if (input.ConsumeIntegral<uint8_t>() % 4 == 0)
        mesh.neighbours = arrays.make(shape.corners, 1, TESSORA_UINT32, [&]() -> double {
            const uint8_t id = input.ConsumeIntegral<uint8_t>();
            return id % 2 == 0 ? double(TESSORA_NONE) : id % 8;
        });
    if (input.ConsumeIntegral<uint8_t>() % 4 == 0)
        mesh.false_edges = arrays.make(shape.corners, 1, TESSORA_UINT8, mark);
    mesh.weld = input.ConsumeBool();
    return mesh;
}

/// As it is, of an older program that knew the first `least` bytes, or not initialised.
template <class Struct>
void shorten(FuzzedDataProvider& input, Struct& given, size_t least) {
    const uint8_t choice = input.ConsumeIntegral<uint8_t>();
    if (choice % 16 == 0)
        given.struct_size = input.ConsumeIntegralInRange<size_t>(least, sizeof given);
    else if (choice == 1)
        given.struct_size = 0;
}

template <class Options>
void randomise_texture(FuzzedDataProvider& input, Options& options) {
    options.width = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.height = input.ConsumeIntegralInRange<uint32_t>(0, 64);
    options.gutter = float(input.ConsumeIntegralInRange<int>(-1, 16)) / 2;
    options.quality = input.ConsumeIntegral<uint8_t>() % 16 == 0
                          ? input.ConsumeIntegralInRange<int32_t>(-1, 2)
                          : TESSORA_FAST;
}

tessora_options random_options(FuzzedDataProvider& input) {
    tessora_options options;
    tessora_options_init(&options, sizeof options);
    randomise_texture(input, options);
    if (input.ConsumeBool())
        options.max_stretch = float(input.ConsumeIntegralInRange<int>(-1, 11)) / 10;
    options.max_charts = input.ConsumeBool() ? input.ConsumeIntegral<uint8_t>() : 0;
    options.stack = input.ConsumeBool();
    options.cut_to_pack = input.ConsumeIntegral<uint8_t>() % 8 == 0;
    options.texture_uvs = input.ConsumeBool();
    options.effort = input.ConsumeBool() ? 4 : input.ConsumeIntegralInRange<int32_t>(-1, 5);
    options.threads = input.ConsumeIntegralInRange<uint32_t>(0, 3);
    if (input.ConsumeIntegral<uint8_t>() % 16 == 0)
        options.progress = [](const char*, float fraction, void*) { return int(fraction > 0.5f); };
    shorten(input, options, offsetof(tessora_options, width));
    return options;
}

tessora_pack_options random_pack_options(FuzzedDataProvider& input) {
    tessora_pack_options options;
    tessora_pack_options_init(&options, sizeof options);
    randomise_texture(input, options);
    options.tiles = input.ConsumeIntegralInRange<uint32_t>(0, 3);
    options.turns = input.ConsumeIntegralInRange<int32_t>(-1, 3);
    options.align = input.ConsumeBool();
    options.density = input.ConsumeIntegralInRange<int32_t>(0, 3);
    options.stack = input.ConsumeIntegralInRange<int32_t>(0, 3);
    options.effort = input.ConsumeIntegralInRange<int32_t>(-1, 2);
    options.texels_per_unit = random_coordinate(input);
    shorten(input, options, offsetof(tessora_pack_options, height));
    return options;
}

/// What is wrong with the outcome of a call; "" if nothing is.
std::string fault_of(int code, const tessora_error& error) {
    if (code < TESSORA_OK || code > TESSORA_KEPT_CHART_OUTSIDE || error.code != code)
        return "the code is none of the header's";
    if (code == TESSORA_OUT_OF_MEMORY)
        return "out of memory on a small mesh";
    const size_t length = strnlen(error.text, sizeof error.text);
    if (length == sizeof error.text || (length == 0) != (code == TESSORA_OK))
        return "no sentence, or one that does not end";
    return "";
}

bool are_all_below(const uint32_t* list, size_t count, size_t limit) {
    for (size_t i = 0; i < count; ++i)
        if (list[i] >= limit)
            return false;
    return true;
}

std::string fault_of(const tessora_atlas* atlas, const Shape& shape) {
    size_t vertices, sources, corners, entries, triangle_corners, charts;
    const float* const uvs = tessora_atlas_uvs(atlas, &vertices);
    const uint32_t* const source = tessora_atlas_source_vertices(atlas, &sources);
    const uint32_t* const corner = tessora_atlas_corner_vertices(atlas, &corners);
    const uint32_t* const index = tessora_atlas_indices(atlas, &entries);
    const uint32_t* const of_triangle = tessora_atlas_triangle_corners(atlas, &triangle_corners);
    const uint32_t* const chart = tessora_atlas_charts(atlas, &charts);
    if (sources != vertices || corners != shape.corners || charts != shape.triangle_count() ||
        entries != 3 * charts || triangle_corners != entries)
        return "an array has the wrong size";
    if (!are_all_below(source, sources, shape.vertices) ||
        !are_all_below(corner, corners, vertices) || !are_all_below(index, entries, vertices) ||
        !are_all_below(of_triangle, entries, corners) ||
        !are_all_below(chart, charts, tessora_atlas_chart_count(atlas)))
        return "an array names what is not there";
    for (size_t i = 0; i < 2 * vertices; ++i)
        if (!std::isfinite(uvs[i]))
            return "a coordinate is not finite";
    return "";
}

/// Judges a call that makes an atlas, and frees it.
void judge(int code, tessora_atlas* atlas, const tessora_error& error, const Shape& shape) {
    report_finding(fault_of(code, error));
    if ((atlas != nullptr) != (code == TESSORA_OK))
        report_finding("an atlas after a failure, or none after success");
    if (atlas != nullptr)
        report_finding(fault_of(atlas, shape));
    tessora_atlas_free(atlas);
}

void list_triangles(FuzzedDataProvider& input, const tessora_mesh& mesh, const Shape& shape) {
    tessora_error error;
    std::vector<uint32_t> list(input.ConsumeBool() ? 3 * size_t{shape.triangle_count() % 64} : 7);
    report_finding(fault_of(tessora_triangulate(&mesh, list.data(), list.size(), &error), error));
    report_finding(fault_of(tessora_neighbours(&mesh, list.data(), list.size(), &error), error));
}

void pack(FuzzedDataProvider& input, Arrays& arrays, const tessora_mesh& mesh, const Shape& shape) {
    tessora_uvs uvs;
    tessora_uvs_init(&uvs, sizeof uvs);
    uvs.uvs = arrays.make(shape.corners, 2, TESSORA_FLOAT32,
                          [&] { return random_coordinate(input) / 8; });
    if (input.ConsumeBool())
        uvs.charts = arrays.make(shape.polygons(), 1, TESSORA_UINT32,
                                 [&]() -> double { return input.ConsumeIntegral<uint8_t>() % 4; });
    if (input.ConsumeBool())
        uvs.keep = arrays.make(shape.polygons(), 1, TESSORA_UINT8,
                               [&]() -> double { return input.ConsumeIntegral<uint8_t>() % 3; });
    shorten(input, uvs, offsetof(tessora_uvs, charts));
    const tessora_pack_options options = random_pack_options(input);
    tessora_atlas* atlas = nullptr;
    tessora_error error;
    const int code = tessora_pack(&mesh, &uvs, &options, &atlas, &error);
    judge(code, atlas, error, shape);
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    FuzzedDataProvider input(data, size);
    Arrays arrays(input);
    const uint8_t calls = input.ConsumeIntegral<uint8_t>();
    const Shape shape(input);
    tessora_mesh mesh = random_mesh(input, arrays, shape);
    shorten(input, mesh, offsetof(tessora_mesh, cuts));
    if (calls % 8 == 0)
        list_triangles(input, mesh, shape);
    if (calls % 8 == 1)
        return pack(input, arrays, mesh, shape), 0;
    const tessora_options options = random_options(input);
    // Packing takes most of the time.
    const bool packs = calls % 8 == 2 && shape.corners <= 12;
    tessora_atlas* atlas = nullptr;
    tessora_error error;
    const int code = (packs ? tessora_create : tessora_partition)(&mesh, &options, &atlas, &error);
    judge(code, atlas, error, shape);
    return 0;
}
