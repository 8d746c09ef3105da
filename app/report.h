/// The report of one unwrap, as JSON for programs.
///
/// One object, keys in a fixed order, schema number first. Lengths of time in seconds, memory in
/// MiB, polygon ids from 0 in the order of the file's faces of three corners or more. A figure that
/// was not reached is absent: after a failure `status` and `reason` say why.
#pragma once

#include "app/unwrap_options.h"

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace app {

struct MeshCounts {
    uint64_t polygons = 0;
    uint64_t triangles = 0; ///< what the polygons are divided into
    uint64_t vertices = 0;  ///< of the file, used or not
};

struct UnwrapResult {
    int charts = 0;
    double stretch = 0.0;             ///< largest L2 stretch of a chart, less one
    std::vector<uint32_t> over_limit; ///< polygons that cannot meet the limit even alone
    uint64_t existing_seam_edges = 0; ///< kept UV borders of the input
    uint64_t new_seam_edges = 0;      ///< seams that the unwrap introduced
};

/// Time by stage; absent stages did not run.
struct StageSeconds {
    std::optional<double> read, collect, generate, apply, verify, write;
};

struct UnwrapReport {
    std::string input, output, layout, view;
    int code = 0; ///< the program's exit code
    std::string reason;
    std::vector<std::string> warnings;
    std::optional<MeshCounts> mesh;
    std::optional<UnwrapResult> result;
    UnwrapSettingsRequest settings; ///< as used, out-of-range values corrected
    StageSeconds seconds;
    double peak_mb = 0.0;
    std::string measures; ///< JSON object of the verification, or empty
};

/// Indented by two blanks, with a line end. Names that are no UTF-8 get replacement characters.
std::string to_json(const UnwrapReport& report);

} // namespace app
