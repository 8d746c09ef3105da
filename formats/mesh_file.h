/// Mesh files of all formats that the program reads and writes.
#pragma once

#include "formats/gltf_mesh.h"
#include "formats/limits.h"
#include "formats/model.h"
#include "formats/ply_mesh.h"
#include "formats/stl_mesh.h"
#include "host/io/obj_document.h"
#include "host/io/obj_reader.h"
#include "host/io/obj_writer.h"

#include <cstdint>
#include <string>
#include <vector>

namespace formats {

enum class Format {
    obj,
    gltf,
    glb,
    ply,
    stl,
    // Those that the importer reads (app/mesh_reader.h).
    fbx,
    dae,
    zae,
    x3d,
    three_ds,
    three_mf,
    amf,
    ase,
    ac,
    b3d,
    dxf,
    lwo,
    lxo,
    ms3d,
    off,
    x
};

struct FormatFacts {
    Format format;
    const char* name;      ///< for --format and messages
    const char* extension; ///< with its dot
    bool is_read, is_written;
    const char* loses; ///< what a result does not keep of an input in the same format
    const char* lacks; ///< what a result does not keep of the model of another format's input
    Format result;     ///< of a result whose format nobody asked for
};

/// All formats, in the order of the enumeration.
const std::vector<FormatFacts>& all_formats();
inline const FormatFacts& facts_of(Format format) { return all_formats()[size_t(format)]; }

/// The format of a file by its name, with or without ".gz" behind it. Returns false if the
/// extension is not that of a mesh format in the list.
bool format_of(const std::string& path, Format& format);

/// True if the name ends in ".gz".
bool is_compressed_name(const std::string& path);

/// A mesh file in memory.
struct MeshFile {
    Format format = Format::obj;
    host::ObjDocument document; ///< the mesh; its text is the file only for OBJ
    std::string bytes;          ///< the file as it was, unless a member below has that
    GltfMesh gltf;
    PlyMesh ply;
    std::vector<StlSolid> solids;
    Model model;                          ///< of a foreign file, once it is imported
    std::string inflated;                 ///< the content of a foreign file
    std::vector<std::string> other_files; ///< that were read too

    /// Whether the importer has to make the document (app/mesh_reader.h).
    bool is_foreign() const { return format >= Format::fbx; }
    /// The file's bytes.
    const std::string& original() const {
        return !bytes.empty()          ? bytes
               : is_foreign()          ? inflated
               : format == Format::ply ? ply.file.bytes
                                       : document.text;
    }
};

struct ReadOptions {
    int texcoord = 0;                       ///< glTF: the set that is replaced
    uint64_t max_input = uint64_t(8) << 30; ///< bytes, of compressed files when inflated
    uint64_t max_corners = k_max_corners;
};

struct WriteOptions {
    std::string format; ///< by its name; empty for that of the output's name
    PlyUvs ply_uvs = PlyUvs::as_read;
    uint64_t max_glb = k_max_glb;          ///< bytes
    uint64_t max_vertices = k_max_corners; ///< PLY: after splitting
};

/// The place by its name: as_read, face or vertex. Returns false for any other.
bool ply_uvs_of(const std::string& name, PlyUvs& place);

/// Parses a file's bytes, which `read_text` of host/io reads. The format is that of the name;
/// without a known extension, that of the content. gzip is inflated whatever the name.
/// Errors: false with `error` set: "file: place: reason".
bool parse_mesh(const std::string& name, std::string bytes, const ReadOptions& options,
                MeshFile& file, host::IoError& error);

/// Checks before the work whether `format_mesh` can write the file under this name.
/// Errors: false with a sentence in `error`.
bool can_write(const MeshFile& file, const std::string& output, const WriteOptions& options,
               std::string& error);
/// What the user of a result should know before it is written; empty if nothing.
std::string warning_about_result(const MeshFile& file, const std::string& output,
                                 const WriteOptions& options);
/// Why no file of this format is written, a sentence; empty if one can be.
std::string cannot_be_written(const std::string& output, Format format);

/// The file with new texture coordinates, in the format asked for, that of the name or, if
/// neither tells, the usual one for the file.
/// Errors: false with a reason in `error`.
bool format_mesh(const MeshFile& file, const host::ObjUvs& uvs, const std::string& output,
                 const WriteOptions& options, std::string& bytes, std::string& error);

} // namespace formats
