#include "atlas/polygons/read.h"

#include "polygon/unit_scale.h"

#include <algorithm>
#include <cmath>
#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace tessora::atlas {
namespace {

/// With more corners, edge numbers would not fit into 32 bits beside k_none.
constexpr size_t k_most_elements = 0xFFFFFFFEu / 3;

size_t size_of(Type type) {
    switch (type) {
    case Type::uint8:
        return 1;
    case Type::uint16:
        return 2;
    case Type::float32:
    case Type::uint32:
        return 4;
    case Type::float64:
        return 8;
    case Type::none:
        break;
    }
    return 0;
}

const char* name_of(Type type) {
    constexpr const char* k_names[] = {"none", "float32", "float64", "uint8", "uint16", "uint32"};
    const auto number = static_cast<size_t>(type);
    return number < sizeof k_names / sizeof *k_names ? k_names[number] : "unknown";
}

/// Reads one array of the caller's.
class Reader {
public:
    Reader(const char* name, const Array& array, size_t components)
        : name_(name), array_(array), components_(components) {}

    bool is_given() const { return array_.count != 0; }

    /// Checks pointer, type, stride and, unless it is k_any, the number of elements.
    Fault check(Type narrow, Type wide, size_t expected, const char* expected_of) const {
        const size_t element = components_ * size_of(array_.type);
        if (array_.data == nullptr)
            return fault(Status::invalid_argument, k_none, "%s: %zu elements at a null pointer",
                         name_, array_.count);
        if (array_.type != narrow && array_.type != wide)
            return fault(Status::invalid_argument, k_none, "%s: the type is %s; it must be %s%s%s",
                         name_, name_of(array_.type), name_of(narrow), narrow == wide ? "" : " or ",
                         narrow == wide ? "" : name_of(wide));
        if (array_.stride != 0 && array_.stride < element)
            return fault(Status::invalid_argument, k_none,
                         "%s: the stride is %zu bytes, an element takes %zu", name_, array_.stride,
                         element);
        if (array_.count > k_most_elements)
            return fault(Status::invalid_argument, k_none, "%s: %zu elements are more than %zu",
                         name_, array_.count, k_most_elements);
        if (expected != k_any && array_.count != expected)
            return fault(Status::invalid_argument, k_none, "%s: %zu elements for %zu %s", name_,
                         array_.count, expected, expected_of);
        return {};
    }

    /// Copies all components, converted to `To`.
    template <class To>
    std::vector<To> read() const {
        std::vector<To> values(array_.count * components_);
        switch (array_.type) {
        case Type::float32:
            copy<float>(values);
            break;
        case Type::float64:
            copy<double>(values);
            break;
        case Type::uint8:
            copy<uint8_t>(values);
            break;
        case Type::uint16:
            copy<uint16_t>(values);
            break;
        case Type::uint32:
            copy<uint32_t>(values);
            break;
        case Type::none:
            break;
        }
        return values;
    }

    static constexpr size_t k_any = static_cast<size_t>(-1);

private:
    template <class From, class To>
    void copy(std::vector<To>& values) const {
        const auto* const bytes = static_cast<const unsigned char*>(array_.data);
        const size_t stride = array_.stride != 0 ? array_.stride : components_ * sizeof(From);
        if (stride == components_ * sizeof(From) && std::is_same_v<From, To>) {
            std::memcpy(values.data(), bytes, values.size() * sizeof(To));
            return;
        }
        for (size_t i = 0; i < array_.count; ++i)
            for (size_t k = 0; k < components_; ++k) {
                From value; // not necessarily aligned
                std::memcpy(&value, bytes + i * stride + k * sizeof(From), sizeof value);
                values[i * components_ + k] = static_cast<To>(value);
            }
    }

    const char* name_;
    const Array& array_;
    size_t components_;
};

Fault read_indices(const PolygonMesh& mesh, MeshArrays& arrays) {
    const Reader reader("indices", mesh.indices, 1);
    if (!reader.is_given())
        return {};
    Fault bad = reader.check(Type::uint16, Type::uint32, Reader::k_any, "");
    if (bad.status != Status::ok)
        return bad;
    arrays.corners = reader.read<uint32_t>();
    for (size_t c = 0; c < arrays.corners.size(); ++c)
        if (arrays.corners[c] >= arrays.vertex_count)
            return fault(Status::index_out_of_range, static_cast<uint32_t>(c),
                         "indices[%zu] is %u, but there are %u vertices", c, arrays.corners[c],
                         arrays.vertex_count);
    return {};
}

Fault check_offsets(const std::vector<uint32_t>& offsets, size_t corners) {
    if (offsets.front() != 0)
        return fault(Status::invalid_argument, 0, "offsets[0] is %u; it must be 0",
                     offsets.front());
    for (size_t p = 0; p + 1 < offsets.size(); ++p) {
        const auto element = static_cast<uint32_t>(p);
        if (offsets[p + 1] < offsets[p])
            return fault(Status::invalid_argument, element + 1,
                         "offsets[%zu] is %u, less than the one before it", p + 1, offsets[p + 1]);
        if (offsets[p + 1] - offsets[p] < 3)
            return fault(Status::invalid_argument, element,
                         "offsets: polygon %zu has %u corners; it must have at least 3", p,
                         offsets[p + 1] - offsets[p]);
    }
    if (offsets.back() != corners)
        return fault(Status::invalid_argument, static_cast<uint32_t>(offsets.size() - 1),
                     "offsets ends with %u, but there are %zu indices", offsets.back(), corners);
    return {};
}

Fault read_offsets(const PolygonMesh& mesh, MeshArrays& arrays) {
    const size_t corners = arrays.corners.size();
    const Reader reader("offsets", mesh.offsets, 1);
    if (reader.is_given()) {
        const Fault bad = reader.check(Type::uint32, Type::uint32, Reader::k_any, "");
        if (bad.status != Status::ok)
            return bad;
        arrays.offsets = reader.read<uint32_t>();
        return check_offsets(arrays.offsets, corners);
    }
    if (corners % 3 != 0)
        return fault(Status::invalid_argument, k_none,
                     "indices: %zu corners are not a whole number of triangles, and there are no "
                     "offsets",
                     corners);
    arrays.offsets.resize(corners / 3 + 1);
    for (size_t p = 0; p < arrays.offsets.size(); ++p)
        arrays.offsets[p] = static_cast<uint32_t>(3 * p);
    return {};
}

/// Reads several numbers per element and refuses those that are not finite.
template <class Real>
Fault read_vectors(const char* name, const Reader& reader, std::vector<Real>& values,
                   int components = 3) {
    values = reader.read<Real>();
    const auto found =
        std::find_if(values.begin(), values.end(), [](Real x) { return !std::isfinite(x); });
    if (found == values.end())
        return {};
    const auto element = static_cast<uint32_t>((found - values.begin()) / components);
    return fault(Status::non_finite_position, element, "%s[%u] is not finite", name, element);
}

/// Reads the positions; corners must have been read, for the box of those in use.
Fault read_positions(const PolygonMesh& mesh, MeshArrays& arrays) {
    const Reader reader("positions", mesh.positions, 3);
    if (!reader.is_given())
        return {};
    if (mesh.positions.type == Type::float32)
        return read_vectors("positions", reader, arrays.positions);
    std::vector<double> exact;
    const Fault bad = read_vectors("positions", reader, exact);
    if (bad.status == Status::ok)
        arrays.unit = polygon::scale_to_unit(exact, arrays.corners.data(), arrays.corners.size(),
                                             arrays.positions);
    return bad;
}

Fault read_marks(const char* name, const Array& array, size_t count, const char* count_of,
                 std::vector<uint8_t>& marks) {
    const Reader reader(name, array, 1);
    if (!reader.is_given())
        return {};
    const Fault bad = reader.check(Type::uint8, Type::uint8, count, count_of);
    if (bad.status == Status::ok)
        marks = reader.read<uint8_t>();
    return bad;
}

Fault read_normals(const PolygonMesh& mesh, MeshArrays& arrays) {
    const Reader reader("normals", mesh.normals, 3);
    if (!reader.is_given())
        return {};
    const bool per_corner = mesh.normals_per_corner;
    const Fault bad = reader.check(Type::float32, Type::float64,
                                   per_corner ? arrays.corners.size() : arrays.vertex_count,
                                   per_corner ? "corners" : "vertices");
    return bad.status != Status::ok ? bad : read_vectors("normals", reader, arrays.normals);
}

Fault read_neighbours(const PolygonMesh& mesh, MeshArrays& arrays) {
    const Reader reader("neighbours", mesh.neighbours, 1);
    if (!reader.is_given())
        return {};
    const Fault bad = reader.check(Type::uint32, Type::uint32, arrays.corners.size(), "corners");
    if (bad.status != Status::ok)
        return bad;
    arrays.neighbours = reader.read<uint32_t>();
    for (size_t c = 0; c < arrays.neighbours.size(); ++c)
        if (arrays.neighbours[c] != k_none && arrays.neighbours[c] >= arrays.polygon_count())
            return fault(Status::adjacency_out_of_range, static_cast<uint32_t>(c),
                         "neighbours[%zu] is %u, but there are %u triangles", c,
                         arrays.neighbours[c], arrays.polygon_count());
    return {};
}

/// What describes edges of triangles has no meaning for other polygons.
Fault check_triangles_only(const PolygonMesh& mesh) {
    if (mesh.offsets.count == 0)
        return {};
    for (const auto& [name, array] :
         {std::pair("neighbours", &mesh.neighbours), std::pair("false_edges", &mesh.false_edges)})
        if (array->count != 0)
            return fault(Status::invalid_argument, k_none,
                         "%s is for meshes of triangles, without offsets", name);
    return {};
}

Fault check_texture(uint32_t width, uint32_t height, float gutter) {
    if (width == 0 || height == 0)
        return fault(Status::invalid_argument, k_none, "%s is 0; it must be at least 1",
                     width == 0 ? "width" : "height");
    if (!(gutter >= 0.0f && std::isfinite(gutter)))
        return fault(Status::invalid_argument, k_none,
                     "gutter is %g; it must be a finite number, 0 or more", double{gutter});
    return {};
}

} // namespace

Fault fault(Status status, uint32_t element, const char* format, ...) noexcept {
    Fault made;
    made.status = status;
    made.element = element;
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(made.text, sizeof made.text, format, arguments);
    va_end(arguments);
    return made;
}

Fault read_mesh(const PolygonMesh& mesh, MeshArrays& arrays) {
    arrays.vertex_count = static_cast<uint32_t>(mesh.positions.count);
    Fault bad = check_triangles_only(mesh);
    const auto step = [&](auto read) {
        if (bad.status == Status::ok)
            bad = read();
    };
    const size_t any = Reader::k_any;
    if (mesh.positions.count != 0)
        step([&] {
            return Reader("positions", mesh.positions, 3)
                .check(Type::float32, Type::float64, any, "");
        });
    step([&] { return read_indices(mesh, arrays); });
    step([&] { return read_offsets(mesh, arrays); });
    step([&] { return read_positions(mesh, arrays); });
    step([&] {
        return read_marks("cuts", mesh.cuts, arrays.corners.size(), "corners", arrays.cuts);
    });
    step([&] { return read_normals(mesh, arrays); });
    step([&] { return read_neighbours(mesh, arrays); });
    step([&] {
        return read_marks("false_edges", mesh.false_edges, arrays.corners.size(), "corners",
                          arrays.false_edges);
    });
    return bad;
}

Fault read_uvs(const PolygonUvs& uvs, const MeshArrays& mesh, UvArrays& arrays) {
    const Reader reader("uvs", uvs.uvs, 2);
    if (!reader.is_given() && !mesh.corners.empty())
        return fault(Status::invalid_argument, k_none, "uvs: 0 elements for %zu corners",
                     mesh.corners.size());
    Fault bad;
    if (reader.is_given())
        bad = reader.check(Type::float32, Type::float64, mesh.corners.size(), "corners");
    if (bad.status == Status::ok && reader.is_given())
        bad = read_vectors("uvs", reader, arrays.uvs, 2);
    const Reader charts("charts", uvs.charts, 1);
    if (bad.status == Status::ok && charts.is_given())
        bad = charts.check(Type::uint32, Type::uint32, mesh.polygon_count(), "polygons");
    if (bad.status == Status::ok && charts.is_given())
        arrays.charts = charts.read<uint32_t>();
    if (bad.status == Status::ok)
        bad = read_marks("keep", uvs.keep, mesh.polygon_count(), "polygons", arrays.keep);
    return bad;
}

namespace {

Fault check_effort(int effort) {
    if (effort < 0 || effort > k_max_effort)
        return fault(Status::invalid_argument, k_none, "effort is %d; it must be 0 to %d", effort,
                     k_max_effort);
    return {};
}

} // namespace

Fault check_options(const Options& options, bool packs) noexcept {
    if (!(options.max_stretch >= 0.0f && options.max_stretch <= 1.0f))
        return fault(Status::invalid_argument, k_none, "max_stretch is %g; it must be 0 to 1",
                     double{options.max_stretch});
    const Fault bad = check_effort(options.effort);
    return packs && bad.status == Status::ok
               ? check_texture(options.width, options.height, options.gutter)
               : bad;
}

Fault check_options(const PackSettings& settings) noexcept {
    if (settings.tiles < 1 || settings.tiles > 100)
        return fault(Status::invalid_argument, k_none, "tiles is %u; it must be 1 to 100",
                     settings.tiles);
    const Fault bad = check_effort(settings.effort);
    if (bad.status != Status::ok)
        return bad;
    if (settings.density == Density::fixed &&
        !(settings.texels_per_unit > 0 && std::isfinite(settings.texels_per_unit)))
        return fault(Status::invalid_argument, k_none,
                     "texels_per_unit is %g; it must be over 0 for a fixed density",
                     settings.texels_per_unit);
    return check_texture(settings.width, settings.height, settings.gutter);
}

} // namespace tessora::atlas
