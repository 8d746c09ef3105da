/// Unwraps one mesh through the host and the plug-in: polygons in, UVs per corner out.
#pragma once

#include "app/progress_display.h"
#include "app/report.h"
#include "host/io/obj_writer.h"
#include "host/mesh/mesh.h"

#include <functional>
#include <string>

namespace app {

struct UnwrapOutcome {
    bool good = false;
    bool out_of_memory = false; ///< the reason of the failure
    std::string reason;         ///< after a failure, a sentence without full stop
    host::Mesh mesh;            ///< as imported, without the new UVs
    host::ObjUvs uvs;           ///< after a success, the UVs of the document's corners
    uint64_t triangles = 0;
    UnwrapResult result;
    UnwrapSettingsRequest settings; ///< as used, clamped to their ranges
    std::vector<std::string>
        stack_breaches; ///< with stacks: the promises of packing that are broken, in words
};

/// The settings clamped as the plug-in clamps them.
UnwrapSettingsRequest in_range(UnwrapSettingsRequest request);

/// Receives warnings that the user should see before the work begins.
using UnwrapWarning = std::function<void(const std::string& sentence)>;

/// Called while the unwrapped mesh is still in the scene, with the plug-in's overlay attached.
using UnwrapVisitor = std::function<void()>;

/// Unwraps the document's mesh. Its old texture coordinates have an effect only with kept seams.
/// `progress` shows the stages; `seconds` receives collect, generate and apply for those that ran.
/// `visit` may be empty; it is not called after a failure.
/// Errors: std::bad_alloc; failed assertions in the libraries call abort().
UnwrapOutcome run_unwrap(const host::ObjDocument& document, const UnwrapSettingsRequest& settings,
                         const UnwrapWarning& warn, const UnwrapVisitor& visit,
                         ProgressDisplay& progress, StageSeconds& seconds);

} // namespace app
