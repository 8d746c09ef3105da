/// One unwrap from the program's side: polygons in, texture coordinates per corner out.
#pragma once

#include "app/mesh_import.h"
#include "app/progress.h"
#include "app/report.h"
#include "host/io/obj_writer.h"

#include <string>

namespace app {

/// What came of it.
struct UnwrapOutcome {
    bool good = false;
    bool out_of_memory = false; ///< why it is not good
    std::string reason;         ///< a sentence without full stop when it is not
    host::ObjUvs uvs;           ///< of the document's corners, when it is
    uint64_t triangles = 0;
    UnwrapResult result;
    UnwrapSettingsRequest settings; ///< as used, out-of-range values corrected
};

/// Unwraps `mesh`, whose file is `document` (its old texture coordinates matter for kept seams).
/// Stages are shown on `progress`; `seconds` gets collect, generate and apply as far as they ran.
/// Broken contracts inside end in the runtime's abort.
UnwrapOutcome run_unwrap(const host::ObjDocument& document, const ImportedMesh& mesh,
                         const UnwrapSettingsRequest& settings, Progress& progress,
                         StageSeconds& seconds);

} // namespace app
