/// Fuzz target: the glTF reader and writer, and gzip. The input is a file.
#include "formats/mesh_file.h"
#include "fuzz/finding.h"

#include <cmath>

namespace {

/// What every document promises (host/io/obj_document.h); "" if it holds.
std::string broken_invariant(const host::ObjDocument& document) {
    for (const uint32_t vertex : document.corner_vertex)
        if (vertex >= document.vertex_count())
            return "a corner has a vertex that does not exist";
    for (const uint32_t id : document.corner_texture)
        if (id != host::k_obj_none && id >= document.texture_count())
            return "a corner has a coordinate that does not exist";
    for (const float value : document.positions)
        if (!std::isfinite(value))
            return "a position is not finite";
    if (document.corner_texture.size() != document.corner_vertex.size() ||
        document.corner_begin.back() != document.corner_vertex.size())
        return "the lists do not fit each other";
    return "";
}

/// A different coordinate for every corner.
host::ObjUvs split_everywhere(const host::ObjDocument& document) {
    host::ObjUvs uvs;
    for (size_t c = 0; c < document.corner_vertex.size(); ++c) {
        uvs.u.push_back(float(c % 1024) / 1024.0f);
        uvs.v.push_back(float(c / 1024 % 1024) / 1024.0f);
        uvs.corner_uv.push_back(int32_t(c));
    }
    return uvs;
}

std::string check(const std::string& bytes) {
    formats::MeshFile file, again;
    host::IoError error;
    formats::ReadOptions options;
    options.max_input = 1u << 22;
    if (!formats::parse_mesh("-", bytes, options, file, error))
        return error.message.empty() ? "refused without a reason" : "";
    if (file.format == formats::Format::obj)
        return ""; // has a target of its own
    if (const std::string broken = broken_invariant(file.document); !broken.empty())
        return broken;
    std::string written, reason;
    if (!formats::format_mesh(file, split_everywhere(file.document), "out.glb", {}, written,
                              reason))
        return reason.empty() ? "not written without a reason" : "";
    if (!formats::parse_mesh("out.glb", {}, written, formats::ReadOptions(), again, error))
        return "the result is refused: " + error.message;
    return again.document.positions == file.document.positions &&
                   again.document.corner_vertex == file.document.corner_vertex
               ? ""
               : "the result is another mesh";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    report_finding(check(std::string(reinterpret_cast<const char*>(data), size)));
    return 0;
}
