#include "formats/mesh_file.h"

#include "formats/gzip.h"

#include <cctype>
#include <charconv>
#include <filesystem>
#include <new>

namespace formats {
namespace {

std::string lower_case(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return text;
}

std::string upper_case(std::string text) {
    for (char& c : text)
        c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    return text;
}

std::string extension_of(const std::string& path) {
    std::filesystem::path name = std::filesystem::path(path).filename();
    if (is_compressed_name(path))
        name = name.stem();
    return lower_case(name.extension().string());
}

Format format_of_content(std::string_view bytes) {
    if (bytes.substr(0, 4) == "glTF")
        return Format::glb;
    if (bytes.substr(0, 3) == "ply" && bytes.substr(3, 1).find_first_of("\r\n ") == 0)
        return Format::ply;
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

void append_number(float value, std::string& text) {
    char digits[32];
    text += ' ';
    text.append(digits, std::to_chars(digits, digits + sizeof digits, value).ptr);
}

/// An OBJ file of the mesh alone: positions, texture coordinates, polygons.
std::string plain_obj(const host::ObjDocument& document, const host::ObjUvs& uvs) {
    std::string text;
    for (size_t v = 0; v < document.vertex_count(); ++v) {
        text += 'v';
        for (size_t k = 0; k < 3; ++k)
            append_number(document.positions[3 * v + k], text);
        text += '\n';
    }
    for (size_t i = 0; i < uvs.u.size(); ++i) {
        text += "vt";
        append_number(uvs.u[i], text);
        append_number(uvs.v[i], text);
        text += '\n';
    }
    for (size_t p = 0; p < document.polygon_count(); ++p) {
        text += 'f';
        for (uint32_t c = document.corner_begin[p]; c < document.corner_begin[p + 1]; ++c) {
            text += ' ' + std::to_string(document.corner_vertex[c] + 1);
            if (uvs.corner_uv[c] >= 0)
                text += '/' + std::to_string(uvs.corner_uv[c] + 1);
        }
        text += '\n';
    }
    return text;
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
    if (file.format == Format::obj) {
        file.bytes = is_compressed ? std::move(bytes) : "";
        return host::parse_obj(name, is_compressed ? std::move(inflated) : std::move(bytes),
                               file.document, error);
    }
    if (file.format == Format::ply) {
        file.bytes = is_compressed ? std::move(bytes) : "";
        return read_ply_mesh(name, is_compressed ? std::move(inflated) : std::move(bytes), file.ply,
                             file.document, error);
    }
    if (file.format == Format::stl) {
        const bool good = read_stl_mesh(name, text, file.solids, file.document, error);
        file.bytes = std::move(bytes);
        return good;
    }
    const bool good = read_gltf_mesh(name, text, options.texcoord, file.gltf, file.document, error);
    file.other_files = file.gltf.file.file_names;
    file.bytes = std::move(bytes);
    return good;
}

/// Texture coordinates that some corner uses, in their order, for writers that write them all.
host::ObjUvs used_only(const host::ObjUvs& uvs) {
    host::ObjUvs used;
    std::vector<int32_t> number(uvs.u.size(), -1);
    for (const int32_t id : uvs.corner_uv)
        if (id >= 0)
            number[size_t(id)] = 0;
    for (size_t i = 0; i < number.size(); ++i)
        if (number[i] == 0) {
            number[i] = static_cast<int32_t>(used.u.size());
            used.u.push_back(uvs.u[i]);
            used.v.push_back(uvs.v[i]);
        }
    for (const int32_t id : uvs.corner_uv)
        used.corner_uv.push_back(id < 0 ? -1 : number[size_t(id)]);
    return used;
}

} // namespace

const std::vector<FormatFacts>& all_formats() {
    static const std::vector<FormatFacts> list = {
        {Format::obj, "obj", ".obj", true, true, "nothing: every other byte stays", Format::obj},
        {Format::gltf, "gltf", ".gltf", true, true,
         "nothing; JSON is laid out anew, with its keys in their order", Format::gltf},
        {Format::glb, "glb", ".glb", true, true,
         "nothing; JSON is laid out anew, with its keys in their order", Format::glb},
        {Format::ply, "ply", ".ply", true, true, "nothing; rows of text are laid out anew",
         Format::ply},
        {Format::stl, "stl", ".stl", true, false, "cannot hold texture coordinates: OBJ is written",
         Format::obj},
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

std::string cannot_be_written(const std::string& output, Format format) {
    return facts_of(format).is_written
               ? std::string()
               : output + ": STL files cannot hold texture coordinates; name an OBJ file instead";
}

bool can_write(const MeshFile& file, const std::string& output, const WriteOptions& options,
               std::string& error) {
    namespace fs = std::filesystem;
    const Format format = output_format(file, output, options);
    error = cannot_be_written(output, format);
    if (!error.empty())
        return false;
    if (file.format != Format::gltf) {
        if (format == file.format || format == Format::obj)
            return true;
        error = output + ": a mesh read as " + upper_case(facts_of(file.format).name) +
                " cannot be written in this format; OBJ can";
        return false;
    }
    std::error_code failure;
    const auto folder = [&](const std::string& path) {
        const fs::path parent = fs::path(path).parent_path();
        return fs::weakly_canonical(parent.empty() ? "." : parent, failure);
    };
    if (format == Format::obj || !file.gltf.file.has_files ||
        folder(output) == folder(file.document.name))
        return true;
    error = output + ": " + file.document.name +
            " names files beside it, which would be missing there; write the result into the same "
            "folder";
    return false;
}

bool format_mesh(const MeshFile& file, const host::ObjUvs& uvs, const std::string& output,
                 const WriteOptions& options, std::string& bytes, std::string& error) {
    const Format format = output_format(file, output, options);
    if (file.format == Format::obj) {
        if (!host::format_obj(file.document, uvs, bytes, error))
            return false;
    } else if (format == Format::ply) {
        if (!patch_ply(file.ply, file.document, uvs, options.ply_uvs, bytes, error))
            return false;
    } else if (format == Format::obj) {
        bytes = plain_obj(file.document, used_only(uvs));
    } else {
        GltfFile result;
        if (!patch_gltf(file.gltf, uvs, result, error))
            return false;
        if (format == Format::gltf)
            bytes = write_gltf_text(result);
        else if (!write_glb(result, bytes, error))
            return false;
    }
    if (is_compressed_name(output))
        bytes = deflate_gzip(bytes);
    return true;
}

} // namespace formats
