#include "formats/mesh_file.h"

#include "formats/gzip.h"
#include "formats/model_readers.h"
#include "formats/model_writers.h"

#include <cctype>
#include <filesystem>
#include <new>

namespace formats {
namespace {

std::string lower_case(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string extension_of(const std::string& path) {
    std::filesystem::path name = std::filesystem::path(path).filename();
    if (is_compressed_name(path))
        name = name.stem();
    return lower_case(name.extension().string());
}

constexpr std::string_view k_binary_fbx = "Kaydara FBX Binary";

Format format_of_content(std::string_view bytes) {
    if (bytes.substr(0, 4) == "glTF")
        return Format::glb;
    if (bytes.substr(0, 3) == "ply" && bytes.substr(3, 1).find_first_of("\r\n ") == 0)
        return Format::ply;
    if (bytes.substr(0, k_binary_fbx.size()) == k_binary_fbx || bytes.substr(0, 6) == "; FBX ")
        return Format::fbx;
    if (bytes.substr(0, 5) == "<?xml" && bytes.substr(0, 1024).find("<COLLADA") != bytes.npos)
        return Format::dae;
    const size_t first = bytes.find_first_not_of(" \t\r\n");
    if (first != bytes.npos && bytes.substr(first, 6) == "solid ")
        return Format::stl;
    return first != bytes.npos && bytes[first] == '{' ? Format::gltf : Format::obj;
}

Format output_format(const MeshFile& file, const std::string& output, const WriteOptions& options) {
    Format format = facts_of(file.format).result;
    if (!format_of(output, format))
        for (const FormatFacts& facts : all_formats())
            if (options.format == facts.name)
                format = facts.format;
    return format;
}

bool refuse(host::IoError::Kind kind, const std::string& message, host::IoError& error) {
    error = {kind, message};
    return false;
}

/// Inflates the bytes if they are compressed.
bool inflate(const std::string& name, const ReadOptions& options, const std::string& bytes,
             std::string& text, host::IoError& error) {
    std::string reason;
    bool is_too_large = false;
    return inflate_gzip(bytes, options.max_input, text, is_too_large, reason) ||
           refuse(is_too_large ? host::IoError::too_large : host::IoError::malformed,
                  name + ": " + reason, error);
}

/// Reads the formats whose mesh has the content of the file.
bool take_content(const std::string& name, std::string content, const ReadOptions& options,
                  MeshFile& file, host::IoError& error) {
    if (file.is_foreign()) {
        file.inflated = std::move(content);
        return true;
    }
    if (file.format == Format::ply)
        return read_ply_mesh(name, std::move(content), options.max_corners, file.ply, file.document,
                             error);
    return host::parse_obj(name, std::move(content), file.document, error);
}

bool parse(const std::string& name, std::string bytes, const ReadOptions& options, MeshFile& file,
           host::IoError& error) {
    std::string inflated;
    const bool is_compressed = is_gzip(bytes);
    if (is_compressed && !inflate(name, options, bytes, inflated, error))
        return false;
    const std::string& text = is_compressed ? inflated : bytes;
    if (text.size() > options.max_input)
        return refuse(host::IoError::too_large,
                      name + ": more than " + std::to_string(options.max_input) +
                          " bytes; --max_input allows more",
                      error);
    if (!format_of(name, file.format))
        file.format = format_of_content(text);
    if (file.is_foreign() || file.format == Format::obj || file.format == Format::ply) {
        std::string content = std::move(is_compressed ? inflated : bytes);
        if (is_compressed)
            file.bytes = std::move(bytes);
        return take_content(name, std::move(content), options, file, error);
    }
    if (file.format == Format::stl) {
        const bool good =
            read_stl_mesh(name, text, options.max_corners, file.solids, file.document, error);
        file.bytes = std::move(bytes);
        return good;
    }
    const GltfLimits limits = {options.max_input, options.max_corners};
    const bool good =
        read_gltf_mesh(name, text, options.texcoord, limits, file.gltf, file.document, error);
    file.other_files = file.gltf.file.file_names;
    file.bytes = std::move(bytes);
    return good;
}

/// Whether a result in this format is the input with changes, not a new file.
bool is_patched(const MeshFile& file, Format format) {
    const auto family = [](Format f) { return f == Format::glb ? Format::gltf : f; };
    return !file.is_foreign() && family(file.format) == family(format);
}

std::string data_uri(const std::string& buffer) {
    return "data:application/octet-stream;base64," + to_base64(buffer);
}

bool format_new(const MeshFile& file, const host::ObjUvs& uvs, Format format,
                const WriteOptions& options, std::string& bytes, std::string& error) {
    Model model;
    if (!model_of(file, uvs, model, error))
        return false;
    if (format == Format::obj)
        return model_to_obj(model, bytes, error);
    if (format == Format::ply)
        return model_to_ply(model, options.ply_uvs, bytes, error);
    if (format == Format::fbx)
        return model_to_fbx(model, bytes, error);
    GltfFile result = model_to_gltf(model);
    if (format == Format::glb)
        return write_glb(result, options.max_glb, bytes, error);
    result.json["buffers"][0]["uri"] = data_uri(result.buffers[0]);
    bytes = write_gltf_text(result);
    return true;
}

bool format_patched(const MeshFile& file, const host::ObjUvs& uvs, Format format,
                    const WriteOptions& options, std::string& bytes, std::string& error) {
    if (file.format == Format::obj)
        return host::format_obj(file.document, uvs, bytes, error);
    if (file.format == Format::ply)
        return patch_ply(file.ply, file.document, uvs, options.ply_uvs, options.max_vertices, bytes,
                         error);
    GltfFile result;
    if (!patch_gltf(file.gltf, uvs, result, error))
        return false;
    if (format == Format::glb)
        return write_glb(result, options.max_glb, bytes, error);
    for (size_t i = 0; i < result.buffers.size(); ++i)
        if (!result.json["buffers"][i].contains("uri")) // it was the binary chunk
            result.json["buffers"][i]["uri"] = data_uri(result.buffers[i]);
    bytes = write_gltf_text(result);
    return true;
}

/// Whether the coordinates belong to the mesh; the patching writers check for themselves.
bool fit(const MeshFile& file, const host::ObjUvs& uvs, std::string& error) {
    bool good =
        uvs.v.size() == uvs.u.size() && uvs.corner_uv.size() == file.document.corner_vertex.size();
    for (size_t c = 0; good && c < uvs.corner_uv.size(); ++c)
        good = uvs.corner_uv[c] < int64_t(uvs.u.size());
    if (!good)
        error = "the UV set does not fit the mesh";
    return good;
}

} // namespace

const std::vector<FormatFacts>& all_formats() {
    const auto imported = [](Format format, const char* name, const char* extension) {
        return FormatFacts{format, name, extension, true, false, "OBJ is written", "", Format::obj};
    };
    static const std::vector<FormatFacts> list = {
        {Format::obj, "obj", ".obj", true, true, "nothing: every other byte stays",
         "other UV sets, colours, hierarchy", Format::obj},
        {Format::gltf, "gltf", ".gltf", true, true,
         "nothing; JSON is laid out anew, with its keys in their order",
         "polygons: they become triangles", Format::gltf},
        {Format::glb, "glb", ".glb", true, true,
         "nothing; JSON is laid out anew, with its keys in their order",
         "polygons: they become triangles", Format::glb},
        {Format::ply, "ply", ".ply", true, true, "nothing; rows of text are laid out anew",
         "other UV sets, hierarchy, names, materials; normals and colours that differ at the "
         "corners of a vertex",
         Format::ply},
        {Format::stl, "stl", ".stl", true, false, "cannot hold texture coordinates: OBJ is written",
         "", Format::obj},
        {Format::fbx, "fbx", ".fbx", true, true, "all but the model; text is written",
         "nothing of the model", Format::fbx},
        imported(Format::dae, "dae", ".dae"),
        imported(Format::zae, "zae", ".zae"),
        imported(Format::x3d, "x3d", ".x3d"),
        imported(Format::three_ds, "3ds", ".3ds"),
        imported(Format::three_mf, "3mf", ".3mf"),
        imported(Format::amf, "amf", ".amf"),
        imported(Format::ase, "ase", ".ase"),
        imported(Format::ac, "ac", ".ac"),
        imported(Format::b3d, "b3d", ".b3d"),
        imported(Format::dxf, "dxf", ".dxf"),
        imported(Format::lwo, "lwo", ".lwo"),
        imported(Format::lxo, "lxo", ".lxo"),
        imported(Format::ms3d, "ms3d", ".ms3d"),
        imported(Format::off, "off", ".off"),
        imported(Format::x, "x", ".x"),
    };
    return list;
}

bool ply_uvs_of(const std::string& name, PlyUvs& place) {
    const char* const names[] = {"as_read", "face", "vertex"};
    for (int i = 0; i < 3; ++i)
        if (name == names[i]) {
            place = PlyUvs(i);
            return true;
        }
    return false;
}

bool is_compressed_name(const std::string& path) {
    return path.size() > 3 && lower_case(path.substr(path.size() - 3)) == ".gz";
}

bool format_of(const std::string& path, Format& format) {
    const std::string extension = extension_of(path);
    for (const FormatFacts& facts : all_formats())
        if (extension == facts.extension) {
            format = facts.format;
            return true;
        }
    return false;
}

bool parse_mesh(const std::string& name, std::string bytes, const ReadOptions& options,
                MeshFile& file, host::IoError& error) {
    file = MeshFile();
    error = {};
    try {
        return parse(name, std::move(bytes), options, file, error);
    } catch (const std::bad_alloc&) {
        return refuse(host::IoError::too_large, name + ": not enough memory for the mesh", error);
    }
}

namespace {

bool is_binary_fbx(const MeshFile& file) {
    return file.format == Format::fbx &&
           file.inflated.compare(0, k_binary_fbx.size(), k_binary_fbx) == 0;
}

/// Whether pictures are files of their own; a GLB contains all buffers, but not those.
bool names_images(const GltfFile& file) {
    const Json images = file.json.value("images", Json::array());
    for (const Json& image : images)
        if (const Json uri = image.is_object() ? image.value("uri", Json()) : Json();
            uri.is_string() && uri.get<std::string>().compare(0, 5, "data:") != 0)
            return true;
    return false;
}

} // namespace

std::string cannot_be_written(const std::string& output, Format format) {
    if (facts_of(format).is_written)
        return std::string();
    if (format == Format::stl)
        return output + ": STL files cannot hold texture coordinates; name an OBJ file instead";
    return output + ": files of this format are read, but not written; name an OBJ, GLB or FBX "
                    "file instead";
}

bool can_write(const MeshFile& file, const std::string& output, const WriteOptions& options,
               std::string& error) {
    namespace fs = std::filesystem;
    const Format format = output_format(file, output, options);
    error = cannot_be_written(output, format);
    std::error_code failure;
    if (error.empty() && is_binary_fbx(file) && fs::equivalent(output, file.document.name, failure))
        error = output + ": binary FBX files cannot be written, only text ones (-o OTHER.fbx); for "
                         "programs that read no text (Blender), write OBJ or GLB";
    if (!error.empty())
        return false;
    if (!is_patched(file, format) || file.format != Format::gltf)
        return true;
    const auto folder = [&](const std::string& path) {
        const fs::path parent = fs::path(path).parent_path();
        return fs::weakly_canonical(parent.empty() ? "." : parent, failure);
    };
    const bool needs_files =
        format == Format::glb ? names_images(file.gltf.file) : file.gltf.file.has_files;
    if (!needs_files || folder(output) == folder(file.document.name))
        return true;
    error = output + ": " + file.document.name +
            " names files beside it, which would be missing there; write the result into the same "
            "folder";
    return false;
}

std::string warning_about_result(const MeshFile& file, const std::string& output,
                                 const WriteOptions& options) {
    return is_binary_fbx(file) && output_format(file, output, options) == Format::fbx
               ? output + ": text, not binary FBX; programs that read no text FBX (Blender) take "
                          "OBJ or GLB (--format glb)"
               : std::string();
}

bool format_mesh(const MeshFile& file, const host::ObjUvs& uvs, const std::string& output,
                 const WriteOptions& options, std::string& bytes, std::string& error) {
    const Format format = output_format(file, output, options);
    const bool good =
        is_patched(file, format)
            ? format_patched(file, uvs, format, options, bytes, error)
            : fit(file, uvs, error) && format_new(file, uvs, format, options, bytes, error);
    if (!good)
        return false;
    if (is_compressed_name(output))
        bytes = deflate_gzip(bytes);
    return true;
}

} // namespace formats
