/// The report of one unwrap, as JSON for programs.
///
/// One object, keys in a fixed order, schema number first. Times in seconds, memory in MiB; polygon
/// ids count from 0, in file order, over faces of three corners or more. Figures of stages that
/// were not reached are absent; `status` and `reason` tell why.
#pragma once

#include "app/unwrap_options.h"
#include "host/io/obj_writer.h"

#include <cstdint>
#include <optional>
#include <string>
#include <utility>
#include <vector>

namespace app {

struct MeshCounts {
    uint64_t polygons = 0;
    uint64_t triangles = 0; ///< of the triangulated polygons
    uint64_t vertices = 0;  ///< in the file, used or not
};

struct UnwrapResult {
    int charts = 0;
    double stretch = 0.0; ///< largest L2 stretch of a chart, minus one
    std::vector<uint32_t>
        over_limit; ///< polygons that exceed the limit even as charts of their own
    uint64_t existing_seam_edges = 0; ///< UV borders of the input that were kept
    uint64_t new_seam_edges = 0;      ///< seams added by the unwrap
};

/// Seconds per stage; empty for stages that did not run.
struct StageSeconds {
    std::optional<double> read, collect, generate, apply, verify, write;
};

/// One mesh of a file, each of which got a texture of its own.
struct MeshReport;

struct UnwrapReport {
    std::string input, output, layout, view;
    std::string input_hash, output_hash; ///< fingerprints of the mesh files; empty if not reached
    /// Of the files that the mesh file names: path, fingerprint.
    std::vector<std::pair<std::string, std::string>> other_hashes;
    int code = 0; ///< the program's exit code
    std::string reason;
    std::vector<std::string> warnings;
    std::optional<MeshCounts> mesh;
    std::optional<UnwrapResult> result;
    UnwrapSettingsRequest settings; ///< as used, clamped to their ranges
    StageSeconds seconds;
    double peak_mb = 0.0;
    std::string measures; ///< JSON object from measures_json, or ""; with `meshes` each has its own
    std::vector<MeshReport> meshes; ///< with each_mesh
    host::ObjUvs uvs;               ///< of a mesh in the request; not part of the JSON
};

struct MeshReport {
    std::string name;
    UnwrapReport report;
};

/// The report as JSON, indented by two blanks, with a line end. Bytes in file names that are not
/// valid UTF-8 become replacement characters.
std::string to_json(const UnwrapReport& report);

} // namespace app
