/// STL files, ASCII and binary: triangles without common vertices and without texture coordinates.
/// They are read only.
/// Source: 3D Systems, "StereoLithography Interface Specification" (1989).
#pragma once

#include "host/io/obj_document.h"
#include "host/io/obj_reader.h"

#include <string>
#include <string_view>
#include <vector>

namespace formats {

/// A part of the file and its first triangle.
struct StlSolid {
    std::string name;
    size_t first_polygon = 0;
};

/// Reads the file's bytes, of `max_corners` at most, which is `k_max_corners` or less. Corners at
/// bit-equal positions become one vertex; a warning says how many there are. Errors: false with
/// `error` set, "file: place: reason".
bool read_stl_mesh(const std::string& name, std::string_view bytes, uint64_t max_corners,
                   std::vector<StlSolid>& solids, host::ObjDocument& document,
                   host::IoError& error);

} // namespace formats
