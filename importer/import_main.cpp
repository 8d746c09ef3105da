/// `tessora_import EXTENSION MEMORY SECONDS`: reads a file of that format on standard input and
/// writes its model (formats/model_stream.h) on standard output. MEMORY is in bytes; going beyond
/// it, or beyond the seconds of processor time, ends the process.
#include "formats/model_stream.h"
#include "formats/value_ids.h"

#include <algorithm>
#include <array>
#include <assimp/IOSystem.hpp>
#include <assimp/Importer.hpp>
#include <assimp/config.h>
#include <assimp/mesh.h>
#include <assimp/scene.h>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <new>
#include <stdexcept>
#include <sys/resource.h>

namespace {

using formats::Model;
using formats::ModelLayer;
using host::k_obj_none;

/// No file but the one on standard input is read, whatever that one names.
class NoOtherFiles : public Assimp::IOSystem {
public:
    bool Exists(const char*) const override { return false; }
    char getOsSeparator() const override { return '/'; }
    Assimp::IOStream* Open(const char*, const char*) override { return nullptr; }
    void Close(Assimp::IOStream*) override {}
};

class Conversion {
public:
    Conversion(const aiScene& scene, Model& model) : scene_(scene), model_(model) {}
    void run();

private:
    void add_materials();
    void add_node(const aiNode& node, int32_t parent);
    int32_t part_of(const aiNode& node);
    void add_mesh(const aiMesh& mesh, uint32_t part);
    void add_layer(ModelLayer& layer, size_t components, const aiMesh& mesh, const void* values,
                   size_t stride);
    double metres() const;
    formats::Matrix axes() const;
    void note_left_out();

    const aiScene& scene_;
    Model& model_;
    std::vector<uint32_t> materials_;                ///< by the library's numbers, or k_obj_none
    std::map<std::vector<unsigned>, int32_t> parts_; ///< by the meshes of a node
    formats::ValueIds places_;
    std::vector<unsigned> corners_; ///< of the present mesh: the library's vertices
};

bool has_polygons(const aiMesh& mesh) {
    return std::any_of(mesh.mFaces, mesh.mFaces + mesh.mNumFaces,
                       [](const aiFace& face) { return face.mNumIndices >= 3; });
}

bool are_finite(const float* values, size_t count) {
    return std::all_of(values, values + count, [](float value) { return std::isfinite(value); });
}

/// The corners of the present mesh get the vertices' values; none where there are none or they are
/// not finite.
void Conversion::add_layer(ModelLayer& layer, size_t components, const aiMesh& mesh,
                           const void* values, size_t stride) {
    const size_t before = model_.corner_vertex.size() - corners_.size();
    if (!values && !layer.is_present())
        return;
    layer.components = components;
    layer.corner.resize(before, k_obj_none);
    std::vector<uint32_t> number(mesh.mNumVertices, k_obj_none);
    formats::ValueIds ids;
    for (unsigned v = 0; values && v < mesh.mNumVertices; ++v) {
        const auto* value =
            reinterpret_cast<const float*>(static_cast<const char*>(values) + size_t(v) * stride);
        if (!are_finite(value, components))
            continue;
        const auto next = uint32_t(layer.values.size() / components);
        number[v] = ids.of(value, components, next);
        if (number[v] == next)
            layer.values.insert(layer.values.end(), value, value + components);
    }
    for (const unsigned vertex : corners_)
        layer.corner.push_back(number[vertex]);
}

/// The library gives every corner a vertex of its own; those at equal positions become one.
void Conversion::add_mesh(const aiMesh& mesh, uint32_t part) {
    corners_.clear();
    for (unsigned f = 0; f < mesh.mNumFaces; ++f) {
        const aiFace& face = mesh.mFaces[f];
        if (face.mNumIndices < 3)
            continue;
        for (unsigned i = 0; i < face.mNumIndices; ++i) {
            if (face.mIndices[i] >= mesh.mNumVertices)
                std::abort(); // a bug of the library; the program tells which file it met
            const aiVector3D& place = mesh.mVertices[face.mIndices[i]];
            const float position[3] = {place.x, place.y, place.z};
            const auto next = uint32_t(model_.vertex_count());
            const uint32_t vertex = places_.of(position, 3, next);
            if (vertex == next)
                model_.positions.insert(model_.positions.end(), position, position + 3);
            model_.corner_vertex.push_back(vertex);
            corners_.push_back(face.mIndices[i]);
        }
        model_.corner_begin.push_back(uint32_t(model_.corner_vertex.size()));
        model_.polygon_part.push_back(part);
        model_.polygon_material.push_back(
            mesh.mMaterialIndex < materials_.size() ? materials_[mesh.mMaterialIndex] : k_obj_none);
    }
    if (mesh.HasTextureCoordsName(0))
        model_.uvs.name = mesh.GetTextureCoordsName(0)->C_Str();
    add_layer(model_.uvs, 2, mesh, mesh.mTextureCoords[0], sizeof(aiVector3D));
    add_layer(model_.normals, 3, mesh, mesh.mNormals, sizeof(aiVector3D));
    add_layer(model_.colors, 4, mesh, mesh.mColors[0], sizeof(aiColor4D));
    for (unsigned set = 1; set < AI_MAX_NUMBER_OF_TEXTURECOORDS; ++set) {
        if (mesh.mTextureCoords[set] && model_.other_uvs.size() < set)
            model_.other_uvs.resize(set);
        if (model_.other_uvs.size() < set)
            continue;
        ModelLayer& layer = model_.other_uvs[set - 1];
        if (mesh.HasTextureCoordsName(set))
            layer.name = mesh.GetTextureCoordsName(set)->C_Str();
        add_layer(layer, 2, mesh, mesh.mTextureCoords[set], sizeof(aiVector3D));
    }
}

/// A node's meshes are one mesh, which the library divided by materials. Nodes that show the same
/// ones are instances.
int32_t Conversion::part_of(const aiNode& node) {
    std::vector<unsigned> meshes;
    std::copy_if(node.mMeshes, node.mMeshes + node.mNumMeshes, std::back_inserter(meshes),
                 [&](unsigned mesh) { return has_polygons(*scene_.mMeshes[mesh]); });
    if (meshes.empty())
        return -1;
    const auto [known, is_new] = parts_.try_emplace(meshes, int32_t(model_.parts.size()));
    if (!is_new)
        return known->second;
    const std::string name = scene_.mMeshes[meshes[0]]->mName.C_Str();
    model_.parts.push_back(name.empty() ? node.mName.C_Str() : name);
    places_.clear();
    for (const unsigned mesh : meshes)
        add_mesh(*scene_.mMeshes[mesh], uint32_t(known->second));
    return known->second;
}

void Conversion::add_node(const aiNode& node, int32_t parent) {
    formats::ModelNode copy;
    const aiMatrix4x4& m = node.mTransformation;
    copy.name = node.mName.C_Str();
    copy.parent = parent;
    copy.part = part_of(node);
    copy.matrix = {m.a1, m.b1, m.c1, m.d1, m.a2, m.b2, m.c2, m.d2,
                   m.a3, m.b3, m.c3, m.d3, m.a4, m.b4, m.c4, m.d4};
    if (!std::all_of(copy.matrix.begin(), copy.matrix.end(),
                     [](double x) { return std::isfinite(x); }))
        throw std::runtime_error("node \"" + copy.name + "\": its transformation is not finite");
    const bool is_plain_root = !node.mParent && copy.part < 0 && copy.matrix == formats::k_identity;
    const int32_t id = is_plain_root ? -1 : int32_t(model_.nodes.size());
    if (parent < 0)
        copy.matrix = formats::product(axes(), copy.matrix);
    if (!is_plain_root)
        model_.nodes.push_back(std::move(copy));
    for (unsigned i = 0; i < node.mNumChildren; ++i)
        add_node(*node.mChildren[i], id);
}

/// Of the formats that tell their unit, FBX counts in centimetres and does not apply it.
double Conversion::metres() const {
    double factor = 0.0;
    float single = 0.0f;
    if (!scene_.mMetaData)
        return 0.0;
    if (!scene_.mMetaData->Get("UnitScaleFactor", factor) &&
        scene_.mMetaData->Get("UnitScaleFactor", single))
        factor = double(single);
    return factor > 0.0 && factor < 1e9 ? factor / 100.0 : 0.0;
}

/// From the axes of an FBX file, which the library does not apply either, to x right, y up.
formats::Matrix Conversion::axes() const {
    const std::array<std::string, 3> names = {"CoordAxis", "UpAxis", "FrontAxis"};
    formats::Matrix matrix = {};
    matrix[15] = 1.0;
    for (size_t row = 0; row < 3; ++row) {
        int axis = 0, sign = 0;
        if (!scene_.mMetaData || !scene_.mMetaData->Get(names[row], axis) || axis < 0 || axis > 2 ||
            !scene_.mMetaData->Get(names[row] + "Sign", sign))
            return formats::k_identity;
        matrix[row + 4 * size_t(axis)] = sign < 0 ? -1.0 : 1.0;
    }
    const formats::Matrix& m = matrix;
    const double volume = m[0] * (m[5] * m[10] - m[6] * m[9]) +
                          m[4] * (m[9] * m[2] - m[1] * m[10]) + m[8] * (m[1] * m[6] - m[5] * m[2]);
    return volume > 0.0 ? matrix : formats::k_identity; // axes named twice, or a mirror
}

/// Where a file names no material, the library makes one up.
void Conversion::add_materials() {
    for (unsigned i = 0; i < scene_.mNumMaterials; ++i) {
        const std::string name = scene_.mMaterials[i]->GetName().C_Str();
        const bool is_made_up =
            name == AI_DEFAULT_MATERIAL_NAME || (name.empty() && scene_.mNumMaterials == 1);
        materials_.push_back(is_made_up ? k_obj_none : uint32_t(model_.materials.size()));
        if (!is_made_up)
            model_.materials.push_back(name);
    }
}

void Conversion::note_left_out() {
    const auto any_mesh = [&](auto has) {
        return std::any_of(scene_.mMeshes, scene_.mMeshes + scene_.mNumMeshes, has);
    };
    if (any_mesh([](const aiMesh* mesh) { return mesh->mNumBones > 0; }))
        model_.left_out.emplace_back("skins");
    if (any_mesh([](const aiMesh* mesh) { return mesh->mNumAnimMeshes > 0; }))
        model_.left_out.emplace_back("morph targets");
    if (scene_.mNumAnimations > 0)
        model_.left_out.emplace_back("animations");
    if (scene_.mNumCameras > 0)
        model_.left_out.emplace_back("cameras");
    if (scene_.mNumLights > 0)
        model_.left_out.emplace_back("lights");
}

void Conversion::run() {
    note_left_out();
    add_materials();
    model_.metres = metres();
    model_.uvs.components = 2;
    add_node(*scene_.mRootNode, -1);
    const auto fill = [&](ModelLayer& layer) {
        if (layer.is_present())
            layer.corner.resize(model_.corner_vertex.size(), k_obj_none);
    };
    fill(model_.uvs);
    fill(model_.normals);
    fill(model_.colors);
    for (ModelLayer& layer : model_.other_uvs)
        fill(layer);
    const auto is_absent = [](const ModelLayer& layer) { return !layer.is_present(); };
    model_.other_uvs.erase(
        std::remove_if(model_.other_uvs.begin(), model_.other_uvs.end(), is_absent),
        model_.other_uvs.end());
}

/// A process that goes beyond `soft` gets a signal, or no memory; at `hard` it ends.
void limit(int resource, rlim_t soft, rlim_t hard) {
    const rlimit both = {soft, hard};
    setrlimit(static_cast<__rlimit_resource>(resource), &both);
}

std::string read_input() {
    std::string bytes;
    char block[65536];
    for (size_t got; (got = std::fread(block, 1, sizeof block, stdin)) > 0;)
        bytes.append(block, got);
    return bytes;
}

std::string answer(const std::string& extension) {
    const std::string bytes = read_input();
    if (bytes.empty())
        return formats::write_model_failure("the file is empty");
    Assimp::Importer importer;
    importer.SetIOHandler(new NoOtherFiles); // it becomes the importer's
    // Nodes as the file has them, not one for each step of their transformation.
    importer.SetPropertyBool(AI_CONFIG_IMPORT_FBX_PRESERVE_PIVOTS, false);
    const aiScene* const scene =
        importer.ReadFileFromMemory(bytes.data(), bytes.size(), 0, extension.c_str());
    if (importer.GetException())
        std::rethrow_exception(importer.GetException());
    if (!scene || !scene->mRootNode)
        return formats::write_model_failure(importer.GetErrorString());
    Model model;
    Conversion(*scene, model).run();
    return formats::write_model_stream(model);
}

} // namespace

int main(int argc, char** argv) {
    if (argc != 4)
        return 2;
    const rlim_t memory = std::strtoull(argv[2], nullptr, 10);
    const rlim_t seconds = std::strtoull(argv[3], nullptr, 10);
    limit(RLIMIT_CORE, 0, 0);
#ifndef __SANITIZE_ADDRESS__ // which reserves far more than any limit
    limit(RLIMIT_AS, memory, memory);
#endif
    limit(RLIMIT_CPU, seconds, seconds + 1);
    std::string text;
    try {
        text = answer(argv[1]);
    } catch (const std::bad_alloc&) {
        text = formats::write_model_failure("it takes more than " + std::to_string(memory >> 20) +
                                            " MiB of memory to read");
    } catch (const std::exception& error) {
        text = formats::write_model_failure(error.what());
    }
    std::fwrite(text.data(), 1, text.size(), stdout);
    return std::fflush(stdout) == 0 ? 0 : 1;
}
