/// Fuzz target: the PLY reader and writer, with coordinates of corners and of vertices. The input
/// is a file.
#include "fuzz/finding.h"
#include "fuzz/mesh_file_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    for (const formats::PlyUvs place : {formats::PlyUvs::face, formats::PlyUvs::vertex}) {
        formats::WriteOptions options;
        options.ply_uvs = place;
        report_finding(check_mesh_file("in.ply", bytes, "out.ply", options));
    }
    return 0;
}
