#include "app/file_formats.h"

#include "formats/mesh_file.h"

#include <cctype>

namespace app {
namespace {

struct OtherFormat {
    const char* extension;
    const char* name;
    /// A command line that converts, with FILE for the file without its extension.
    const char* converter;
};

/// Formats that are not read.
constexpr OtherFormat k_others[] = {
    {".usd", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usda", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usdc", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".usdz", "USD", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".abc", "Alembic", "Blender: File > Import, then File > Export as Wavefront OBJ"},
    {".blend", "Blender", "Blender: File > Export as Wavefront OBJ"},
    {".stp", "STEP", "a CAD program: export the shape as a mesh, STL or OBJ"},
    {".step", "STEP", "a CAD program: export the shape as a mesh, STL or OBJ"},
    {".igs", "IGES", "a CAD program: export the shape as a mesh, STL or OBJ"},
    {".iges", "IGES", "a CAD program: export the shape as a mesh, STL or OBJ"},
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

template <class Predicate>
std::string names_of(Predicate belongs) {
    std::vector<std::string> names;
    for (const formats::FormatFacts& facts : formats::all_formats())
        if (belongs(facts)) {
            names.emplace_back(facts.name);
            for (char& c : names.back())
                c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        }
    std::string text;
    for (size_t i = 0; i < names.size(); ++i)
        text += (i == 0 ? "" : i + 1 == names.size() ? " and " : ", ") + names[i];
    return text;
}

std::string refusal_of(const std::string& path, const std::string& readable) {
    const OtherFormat* format = find(path);
    if (!format)
        return std::string();
    const std::string stem = path.substr(0, path.size() - lower_extension(path).size());
    std::string converter = format->converter;
    for (size_t at = 0; (at = converter.find("FILE", at)) != converter.npos; at += stem.size())
        converter.replace(at, 4, stem);
    return path + ": " + format->name + " files cannot be read, only " + readable +
           " files; this converts it:\n  " + converter;
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

std::string format_names() {
    return names_of([](const formats::FormatFacts& facts) { return facts.is_read; });
}

std::string written_format_names() {
    return names_of([](const formats::FormatFacts& facts) { return facts.is_written; });
}

std::pair<std::string, std::string> split_name(const std::string& path) {
    const size_t slash = path.rfind('/'), begin = slash == path.npos ? 0 : slash + 1;
    size_t dot = path.rfind('.');
    if (formats::is_compressed_name(path) && dot > begin) {
        const size_t second = path.rfind('.', dot - 1);
        dot = second != path.npos && second > begin ? second : dot;
    }
    if (dot == path.npos || dot <= begin) // a name that starts with a dot has no extension
        return {path, ""};
    return {path.substr(0, dot), path.substr(dot)};
}

bool is_mesh_file(const std::string& path) {
    formats::Format format;
    return formats::format_of(path, format) && formats::facts_of(format).is_read;
}

std::string input_refusal(const std::string& path) {
    return is_mesh_file(path) ? std::string() : refusal_of(path, format_names());
}

std::string output_refusal(const std::string& path) {
    formats::Format format;
    if (formats::format_of(path, format))
        return formats::cannot_be_written(path, format);
    return find(path) ? path + ": only " + written_format_names() + " files can be written"
                      : std::string();
}

std::string picture_refusal(const std::string& path) {
    const std::string extension = lower_extension(path);
    for (const char* other : {".jpg", ".jpeg", ".bmp", ".gif", ".tga", ".tif", ".tiff", ".webp",
                              ".svg", ".exr", ".obj", ".gltf", ".glb", ".ply", ".stl", ".pdf"})
        if (extension == other)
            return path + ": pictures are written as PNG files; name it " +
                   path.substr(0, path.size() - extension.size()) + ".png";
    return std::string();
}

} // namespace app
