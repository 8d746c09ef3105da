#include "formats/gltf_accessor.h"
#include "formats/gltf_mesh.h"
#include "formats/value_ids.h"
#include "host/io/obj_scale.h"

#include <cmath>
#include <map>

namespace formats {
namespace {

enum Mode { triangles = 4, strip = 5, fan = 6 };

class MeshReader {
public:
    MeshReader(int set, uint64_t max_corners, GltfMesh& mesh, host::ObjDocument& document)
        : max_corners_(max_corners), mesh_(mesh), document_(document),
          set_name_("TEXCOORD_" + std::to_string(set)) {
        mesh_.set = set;
    }
    bool run(std::string& error);

private:
    bool check_extensions();
    bool add_primitive(size_t mesh, size_t number, const Json& primitive);
    bool check_set(const Json& attributes);
    bool find_group(const Json& primitive, size_t vertex_count, size_t& group);
    bool check_values(const Json& indices, size_t vertex_count);
    bool read_corners(const Json& primitive, uint64_t mode, size_t vertex_count,
                      std::vector<uint32_t>& corners);
    bool add_triangles(const GltfPrimitive& primitive, const Json& attributes);
    bool add_vertex(const GltfElements& positions, uint32_t vertex);
    uint32_t coordinate_id(const GltfElements& coordinates, uint32_t vertex);
    bool fail(const std::string& reason) {
        error_ = reason;
        return false;
    }

    const uint64_t max_corners_;
    GltfMesh& mesh_;
    host::ObjDocument& document_;
    std::string set_name_;
    std::string error_;
    std::map<std::string, size_t> groups_; ///< by attributes and targets
    ValueIds vertices_;                    ///< of the present mesh
    ValueIds coordinates_;                 ///< of all meshes
    std::vector<double> exact_;
};

/// Compressed data would have to be decompressed and compressed again.
bool MeshReader::check_extensions() {
    const Json used = mesh_.file.json.value("extensionsUsed", Json::array());
    const auto uses = [&](const char* extension) {
        for (const Json& name : used)
            if (name == extension)
                return true;
        return false;
    };
    for (const char* extension :
         {"KHR_draco_mesh_compression", "EXT_meshopt_compression", "KHR_meshopt_compression"})
        if (uses(extension))
            return fail(std::string(extension) +
                        ": compressed meshes are not read; 'gltf-transform copy IN OUT' (npm "
                        "@gltf-transform/cli) decompresses them");
    return true;
}

/// Texture coordinate sets must be without gaps.
bool MeshReader::check_set(const Json& attributes) {
    if (mesh_.set == 0 || attributes.contains("TEXCOORD_" + std::to_string(mesh_.set - 1)))
        return true;
    return fail("it has no TEXCOORD_" + std::to_string(mesh_.set - 1) + ", so it cannot get " +
                set_name_);
}

/// Whether every vertex has each of the attributes.
bool MeshReader::check_values(const Json& indices, size_t vertex_count) {
    for (const Json& index : indices) {
        GltfElements elements;
        if (!read_accessor(mesh_.file, index, elements, error_))
            return false;
        if (elements.count < vertex_count)
            return fail("accessor " + index.dump() + ": it has " + std::to_string(elements.count) +
                        " elements for " + std::to_string(vertex_count) + " vertices");
    }
    return true;
}

bool MeshReader::find_group(const Json& primitive, size_t vertex_count, size_t& group) {
    const Json& attributes = primitive["attributes"];
    const Json targets = primitive.value("targets", Json::array());
    const auto [place, is_new] =
        groups_.try_emplace(attributes.dump() + targets.dump(), mesh_.groups.size());
    group = place->second;
    if (!is_new)
        return true;
    mesh_.groups.push_back({attributes, targets, vertex_count});
    bool good = check_values(attributes, vertex_count);
    for (size_t i = 0; good && i < targets.size(); ++i)
        good = check_values(targets[i], vertex_count);
    return good;
}

bool MeshReader::read_corners(const Json& primitive, uint64_t mode, size_t vertex_count,
                              std::vector<uint32_t>& corners) {
    GltfElements indices;
    const bool is_indexed = primitive.contains("indices");
    if (is_indexed && !read_accessor(mesh_.file, primitive["indices"], indices, error_))
        return false;
    if (is_indexed && (indices.components != 1 || indices.component_type == 5120 ||
                       indices.component_type == 5122 || indices.component_type == 5126))
        return fail("its indices are not unsigned whole numbers");
    const size_t count = is_indexed ? indices.count : vertex_count;
    for (size_t i = 0; is_indexed && i < count; ++i)
        if (indices.index(i) >= vertex_count)
            return fail("index " + std::to_string(i) + " is " + std::to_string(indices.index(i)) +
                        ", and it has " + std::to_string(vertex_count) + " vertices");
    const auto vertex = [&](size_t i) { return is_indexed ? indices.index(i) : uint32_t(i); };
    if (count < 3 || (mode == triangles && count % 3 != 0))
        return fail("its " + std::to_string(count) + " corners are not whole triangles");
    const size_t end = mode == triangles ? count / 3 : count - 2;
    for (size_t t = 0; t < end; ++t) {
        if (mode == triangles)
            corners.insert(corners.end(), {vertex(3 * t), vertex(3 * t + 1), vertex(3 * t + 2)});
        else if (mode == strip)
            corners.insert(corners.end(),
                           {vertex(t), vertex(t + 1 + t % 2), vertex(t + 2 - t % 2)});
        else
            corners.insert(corners.end(), {vertex(t + 1), vertex(t + 2), vertex(0)});
    }
    return true;
}

bool MeshReader::add_triangles(const GltfPrimitive& primitive, const Json& attributes) {
    GltfElements positions, coordinates;
    if (!read_accessor(mesh_.file, attributes["POSITION"], positions, error_))
        return false;
    const bool has_coordinates = attributes.contains(set_name_);
    if (has_coordinates && !read_accessor(mesh_.file, attributes[set_name_], coordinates, error_))
        return false;
    if (has_coordinates && (coordinates.components != 2 || coordinates.count != positions.count))
        return fail(set_name_ + " does not fit its positions");
    for (const uint32_t vertex : primitive.corners) {
        if (!add_vertex(positions, vertex))
            return false;
        document_.corner_texture.push_back(has_coordinates ? coordinate_id(coordinates, vertex)
                                                           : host::k_obj_none);
    }
    for (size_t end = primitive.first_corner + 3; end <= document_.corner_vertex.size(); end += 3)
        document_.corner_begin.push_back(uint32_t(end));
    return true;
}

/// Adds a corner at a vertex's position.
bool MeshReader::add_vertex(const GltfElements& positions, uint32_t vertex) {
    float place[3];
    for (size_t k = 0; k < 3; ++k) {
        place[k] = float(positions.number(vertex, k));
        if (!std::isfinite(place[k]))
            return fail("vertex " + std::to_string(vertex) + " has a position that is not finite");
    }
    const auto next = uint32_t(document_.vertex_count());
    const uint32_t id = vertices_.of(place, 3, next);
    if (id == next)
        for (const float value : place) {
            document_.positions.push_back(value);
            exact_.push_back(double(value));
        }
    document_.corner_vertex.push_back(id);
    return true;
}

/// The document's number for a vertex's texture coordinate, equal for equal values.
uint32_t MeshReader::coordinate_id(const GltfElements& coordinates, uint32_t vertex) {
    const float uv[2] = {float(coordinates.number(vertex, 0)),
                         float(1.0 - coordinates.number(vertex, 1))}; // glTF counts downwards
    if (!std::isfinite(uv[0]) || !std::isfinite(uv[1]))
        return host::k_obj_none;
    const auto next = uint32_t(document_.texture_count());
    const uint32_t id = coordinates_.of(uv, 2, next);
    if (id == next)
        document_.texture_coords.insert(document_.texture_coords.end(), uv, uv + 2);
    return id;
}

bool MeshReader::add_primitive(size_t mesh, size_t number, const Json& primitive) {
    const Json mode = primitive.value("mode", Json(4u));
    if (!mode.is_number_unsigned() || mode.get<uint64_t>() > 6)
        return fail("its mode is not known");
    const Json& attributes = primitive["attributes"];
    if (mode.get<int>() < triangles || !attributes.contains("POSITION"))
        return true;
    GltfElements positions;
    if (!check_set(attributes) ||
        !read_accessor(mesh_.file, attributes["POSITION"], positions, error_))
        return false;
    if (positions.components != 3)
        return fail("its positions have " + std::to_string(positions.components) + " components");
    GltfPrimitive read;
    read.mesh = mesh;
    read.number = number;
    read.first_corner = document_.corner_vertex.size();
    if (!read_corners(primitive, mode.get<uint64_t>(), positions.count, read.corners))
        return false;
    if (read.first_corner + read.corners.size() > max_corners_)
        return fail("the file has more than " + std::to_string(max_corners_) + " corners");
    if (!find_group(primitive, positions.count, read.group))
        return false;
    mesh_.primitives.push_back(std::move(read));
    return add_triangles(mesh_.primitives.back(), attributes);
}

bool MeshReader::run(std::string& error) {
    const Json none = Json::array();
    const auto found = mesh_.file.json.find("meshes");
    const Json& meshes = found == mesh_.file.json.end() ? none : *found;
    bool good = check_extensions();
    document_.corner_begin.push_back(0);
    for (size_t m = 0; good && m < meshes.size(); ++m) {
        vertices_.clear();
        const Json primitives = meshes[m].value("primitives", Json::array());
        for (size_t p = 0; good && p < primitives.size(); ++p)
            if (!add_primitive(m, p, primitives[p])) {
                error_ =
                    "mesh " + std::to_string(m) + " primitive " + std::to_string(p) + ": " + error_;
                good = false;
            }
    }
    if (good && document_.polygon_count() == 0)
        good = fail("no mesh in the file: it has no triangles");
    if (good)
        fit_to_single_precision(exact_, document_);
    error = error_;
    return good;
}

} // namespace

bool read_gltf_mesh(const std::string& name, const std::string& bytes, int set,
                    const GltfLimits& limits, GltfMesh& mesh, host::ObjDocument& document,
                    host::IoError& error) {
    mesh = GltfMesh();
    document = host::ObjDocument();
    document.name = name;
    std::string reason;
    try {
        if (read_gltf(name, bytes, limits.bytes, mesh.file, reason) &&
            MeshReader(set, limits.corners, mesh, document).run(reason))
            return true;
    } catch (const Json::exception&) { // a member is used as what it is not
        reason = k_wrong_type;
    }
    error = {mesh.file.is_too_large ? host::IoError::too_large : host::IoError::malformed,
             name + ": " + reason};
    return false;
}

} // namespace formats
