/// One unwrap from the program's side: polygons in, texture coordinates per corner out.
#pragma once

#include "app/progress.h"
#include "app/report.h"
#include "host/io/obj_writer.h"

#include <functional>
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

/// Takes sentences that a person should read before the work begins.
using UnwrapWarning = std::function<void(const std::string& sentence)>;

/// Called while the unwrapped mesh is still in the scene, with the plug-in's overlay attached.
using UnwrapVisitor = std::function<void()>;

/// Unwraps the document's mesh; its old texture coordinates matter for kept seams only.
/// Stages are shown on `progress`; `seconds` gets collect, generate and apply as far as they ran.
/// `visit` may be empty; it is not called when the unwrap failed.
/// Broken contracts inside end in the runtime's abort. Errors: std::bad_alloc.
UnwrapOutcome run_unwrap(const host::ObjDocument& document, const UnwrapSettingsRequest& settings,
                         const UnwrapWarning& warn, const UnwrapVisitor& visit, Progress& progress,
                         StageSeconds& seconds);

} // namespace app
