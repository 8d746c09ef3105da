/// OBJ and PLY files of models: formats with one mesh in one space.
#include "formats/model_writers.h"
#include "formats/text_parts.h"

#include <algorithm>
#include <cmath>

namespace formats {
namespace {

/// Numbers, from 1, of a layer's values that corners use, in their order, and their lines.
std::vector<uint32_t> write_values(const ModelLayer& layer, const char* keyword,
                                   std::string& text) {
    std::vector<uint32_t> numbers(layer.components ? layer.values.size() / layer.components : 0, 0);
    for (const uint32_t id : layer.corner)
        if (id != host::k_obj_none)
            numbers[id] = 1;
    uint32_t next = 1;
    for (size_t i = 0; i < numbers.size(); ++i) {
        if (numbers[i] == 0)
            continue;
        numbers[i] = next++;
        text += keyword;
        for (size_t k = 0; k < layer.components; ++k)
            append_number(layer.values[layer.components * i + k], text);
        text += '\n';
    }
    return numbers;
}

void write_corner(const Model& model, uint32_t c, const std::vector<uint32_t>& uv_numbers,
                  const std::vector<uint32_t>& normal_numbers, std::string& text) {
    const auto number = [&](const ModelLayer& layer, const std::vector<uint32_t>& numbers) {
        return layer.is_present() && layer.corner[c] != host::k_obj_none ? numbers[layer.corner[c]]
                                                                         : 0;
    };
    const uint32_t uv = number(model.uvs, uv_numbers);
    const uint32_t normal = number(model.normals, normal_numbers);
    text += ' ' + std::to_string(model.corner_vertex[c] + 1);
    if (uv || normal)
        text += '/' + (uv ? std::to_string(uv) : "");
    if (normal)
        text += '/' + std::to_string(normal);
}

/// A layer by vertices: the value of each, or nothing if a vertex has several or none.
std::vector<float> by_vertex(const Model& model, const ModelLayer& layer) {
    std::vector<uint32_t> id(model.vertex_count(), host::k_obj_none);
    if (!layer.is_present())
        return {};
    for (size_t c = 0; c < layer.corner.size(); ++c) {
        uint32_t& known = id[model.corner_vertex[c]];
        if (layer.corner[c] == host::k_obj_none)
            return {};
        if (known == host::k_obj_none)
            known = layer.corner[c];
        const float* a = &layer.values[layer.components * known];
        if (!std::equal(a, a + layer.components, layer.at(c)))
            return {};
    }
    std::vector<float> values;
    for (const uint32_t i : id)
        for (size_t k = 0; k < layer.components; ++k)
            values.push_back(i == host::k_obj_none ? 0.0f : layer.values[layer.components * i + k]);
    return values;
}

double to_byte(float share) { return std::round(255.0 * double(std::clamp(share, 0.0f, 1.0f))); }

/// A PLY file without texture coordinates.
std::string plain_ply(const Model& model) {
    const std::vector<float> normals = by_vertex(model, model.normals);
    const std::vector<float> colors = by_vertex(model, model.colors);
    uint32_t longest = 0;
    for (size_t p = 0; p < model.polygon_count(); ++p)
        longest = std::max(longest, model.corner_begin[p + 1] - model.corner_begin[p]);
    const PlyType count_type = longest > 255 ? PlyType::uint32 : PlyType::uint8;
    std::string bytes = "ply\nformat binary_little_endian 1.0\nelement vertex " +
                        std::to_string(model.vertex_count()) +
                        "\nproperty float x\nproperty float y\nproperty float z\n";
    if (!normals.empty())
        bytes += "property float nx\nproperty float ny\nproperty float nz\n";
    if (!colors.empty())
        bytes += "property uchar red\nproperty uchar green\nproperty uchar blue\n"
                 "property uchar alpha\n";
    bytes += "element face " + std::to_string(model.polygon_count()) + "\nproperty list " +
             ply_name(count_type) + " int vertex_indices\nend_header\n";
    PlyWriter writer(PlyEncoding::little_endian, "\n", bytes);
    for (size_t v = 0; v < model.vertex_count(); ++v) {
        for (size_t k = 0; k < 3; ++k)
            writer.add(PlyType::float32, double(model.positions[3 * v + k]));
        for (size_t k = 0; k < 3 && !normals.empty(); ++k)
            writer.add(PlyType::float32, double(normals[3 * v + k]));
        for (size_t k = 0; k < 4 && !colors.empty(); ++k)
            writer.add(PlyType::uint8, to_byte(colors[4 * v + k]));
    }
    for (size_t p = 0; p < model.polygon_count(); ++p) {
        writer.add(count_type, double(model.corner_begin[p + 1] - model.corner_begin[p]));
        for (uint32_t c = model.corner_begin[p]; c < model.corner_begin[p + 1]; ++c)
            writer.add(PlyType::int32, double(model.corner_vertex[c]));
    }
    return bytes;
}

} // namespace

bool model_to_obj(const Model& original, std::string& text, std::string& error) {
    Model model;
    if (!flatten(original, model, error))
        return false;
    text.clear();
    for (size_t v = 0; v < model.vertex_count(); ++v) {
        text += 'v';
        for (size_t k = 0; k < 3; ++k)
            append_number(model.positions[3 * v + k], text);
        text += '\n';
    }
    const std::vector<uint32_t> uvs = write_values(model.uvs, "vt", text);
    const std::vector<uint32_t> normals = write_values(model.normals, "vn", text);
    uint32_t part = host::k_obj_none, material = host::k_obj_none;
    for (size_t p = 0; p < model.polygon_count(); ++p) {
        if (model.polygon_part[p] != part && !model.parts[model.polygon_part[p]].empty())
            text += "o " + one_line(model.parts[model.polygon_part[p]]) + '\n';
        part = model.polygon_part[p];
        if (model.polygon_material[p] != material && model.polygon_material[p] != host::k_obj_none)
            text += "usemtl " + one_line(model.materials[model.polygon_material[p]]) + '\n';
        material = model.polygon_material[p];
        text += 'f';
        for (uint32_t c = model.corner_begin[p]; c < model.corner_begin[p + 1]; ++c)
            write_corner(model, c, uvs, normals, text);
        text += '\n';
    }
    return true;
}

bool model_to_ply(const Model& original, PlyUvs place, std::string& bytes, std::string& error) {
    Model model;
    if (!flatten(original, model, error))
        return false;
    // The coordinates come in as into any file that has none.
    PlyMesh mesh;
    host::ObjDocument document;
    host::IoError failure;
    host::ObjUvs uvs;
    for (size_t i = 0; i < model.uvs.values.size(); i += 2) {
        uvs.u.push_back(model.uvs.values[i]);
        uvs.v.push_back(model.uvs.values[i + 1]);
    }
    uvs.corner_uv.assign(model.uvs.corner.begin(), model.uvs.corner.end());
    if (read_ply_mesh("PLY", plain_ply(model), k_max_corners, mesh, document, failure))
        return patch_ply(mesh, document, uvs, place, k_max_corners, bytes, error);
    error = failure.message;
    return false;
}

} // namespace formats
