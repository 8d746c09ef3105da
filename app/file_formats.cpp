#include "app/file_formats.h"

namespace app {
namespace {

struct OtherFormat {
    const char* extension;
    const char* name;
    /// A command line that converts, with FILE for the file without its extension.
    const char* converter;
};

constexpr OtherFormat k_others[] = {
    {".fbx", "FBX", "assimp export FILE.fbx FILE.obj"},
    {".gltf", "glTF", "assimp export FILE.gltf FILE.obj"},
    {".glb", "glTF", "assimp export FILE.glb FILE.obj"},
    {".ply", "PLY", "assimp export FILE.ply FILE.obj"},
    {".stl", "STL", "assimp export FILE.stl FILE.obj"},
    {".dae", "COLLADA", "assimp export FILE.dae FILE.obj"},
    {".3ds", "3DS", "assimp export FILE.3ds FILE.obj"},
    {".off", "OFF", "assimp export FILE.off FILE.obj"},
    {".usd", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usda", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usdc", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usdz", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".abc", "Alembic", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".blend", "Blender", "Blender: File > Export as Wavefront OBJ"},
    {".ma", "scene", "tessora -c 'file -open \"FILE.ma\"; file -exportAll \"FILE.obj\";'"},
    {".mb", "binary scene", "the application that wrote it: save it as .ma, or export OBJ"},
};

const OtherFormat* find(const std::string& path) {
    const std::string extension = lower_extension(path);
    for (const OtherFormat& format : k_others)
        if (extension == format.extension)
            return &format;
    return nullptr;
}

} // namespace

std::string lower_extension(const std::string& path) {
    const size_t slash = path.rfind('/'), begin = slash == path.npos ? 0 : slash + 1;
    const size_t dot = path.rfind('.');
    if (dot == path.npos || dot <= begin)
        return std::string();
    std::string extension = path.substr(dot);
    for (char& c : extension)
        if (c >= 'A' && c <= 'Z')
            c = char(c + 32);
    return extension;
}

bool is_other_format(const std::string& path) { return find(path) != nullptr; }

std::string input_refusal(const std::string& path) {
    const OtherFormat* format = find(path);
    if (!format)
        return std::string();
    const std::string stem = path.substr(0, path.size() - lower_extension(path).size());
    std::string converter = format->converter;
    for (size_t at = 0; (at = converter.find("FILE", at)) != converter.npos; at += stem.size())
        converter.replace(at, 4, stem);
    return path + ": " + format->name +
           " files cannot be read, only OBJ files; this converts it:\n  " + converter;
}

std::string output_refusal(const std::string& path) {
    return is_other_format(path) ? path + ": only OBJ files can be written" : std::string();
}

std::string picture_refusal(const std::string& path) {
    const std::string extension = lower_extension(path);
    for (const char* other : {".jpg", ".jpeg", ".bmp", ".gif", ".tga", ".tif", ".tiff", ".webp",
                              ".svg", ".exr", ".obj", ".pdf"})
        if (extension == other)
            return path + ": pictures are written as PNG files; name it " +
                   path.substr(0, path.size() - extension.size()) + ".png";
    return std::string();
}

} // namespace app
