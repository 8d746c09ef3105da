#include "app/mesh_parts.h"

#include "formats/model_readers.h"
#include "host/io/obj_scale.h"

#include <set>

namespace app {
namespace {

using host::k_obj_none;
using host::ObjDocument;

/// Copies the polygons named in `part`, with the vertices and coordinates that they use.
class Extraction {
public:
    Extraction(const ObjDocument& from, const std::string& name)
        : from_(from), name_(name), vertices_(from.vertex_count(), k_obj_none),
          textures_(from.texture_count(), k_obj_none) {}
    void run(MeshPart& part);

private:
    /// The new number of `old`; what is new gets its values copied.
    static uint32_t number(uint32_t old, size_t components, const std::vector<float>& from,
                           std::vector<uint32_t>& numbers, std::vector<uint32_t>& used,
                           std::vector<float>& to) {
        if (old == k_obj_none)
            return k_obj_none;
        uint32_t& known = numbers[old];
        if (known == k_obj_none) {
            known = uint32_t(to.size() / components);
            used.push_back(old);
            const float* values = &from[components * size_t(old)];
            to.insert(to.end(), values, values + components);
        }
        return known;
    }

    const ObjDocument& from_;
    const std::string& name_; ///< of the file
    std::vector<uint32_t> vertices_, textures_;
};

void Extraction::run(MeshPart& part) {
    ObjDocument& to = part.document;
    std::vector<uint32_t> used_vertices, used_textures;
    to.name = name_ + ": " + part.name;
    to.corner_begin = {0};
    for (const uint32_t p : part.polygons) {
        for (uint32_t c = from_.corner_begin[p]; c < from_.corner_begin[p + 1]; ++c) {
            to.corner_vertex.push_back(number(from_.corner_vertex[c], 3, from_.positions, vertices_,
                                              used_vertices, to.positions));
            to.corner_texture.push_back(number(from_.corner_texture[c], 2, from_.texture_coords,
                                               textures_, used_textures, to.texture_coords));
            part.corners.push_back(c);
        }
        to.corner_begin.push_back(uint32_t(to.corner_vertex.size()));
    }
    for (const uint32_t old : used_vertices)
        vertices_[old] = k_obj_none;
    for (const uint32_t old : used_textures)
        textures_[old] = k_obj_none;
    std::vector<double> exact(to.positions.begin(), to.positions.end());
    host::fit_to_single_precision(exact, to);
}

} // namespace

bool split_meshes(const formats::MeshFile& file, std::vector<MeshPart>& parts, std::string& error) {
    formats::Model model;
    const host::ObjUvs none = {
        {}, {}, std::vector<int32_t>(file.document.corner_vertex.size(), -1)};
    if (!formats::model_of(file, none, model, error))
        return false;
    const std::vector<std::vector<uint32_t>> polygons = formats::polygons_by_part(model);
    std::set<std::string> names;
    Extraction extraction(file.document, file.document.name);
    for (size_t i = 0; i < polygons.size(); ++i) {
        if (polygons[i].empty())
            continue;
        parts.emplace_back();
        MeshPart& part = parts.back();
        const std::string name =
            model.parts[i].empty() ? "mesh " + std::to_string(i + 1) : model.parts[i];
        part.name = name;
        for (int again = 2; !names.insert(part.name).second; ++again)
            part.name = name + " (" + std::to_string(again) + ")";
        part.polygons = polygons[i];
        extraction.run(part);
    }
    return true;
}

} // namespace app
