/// What `tessora unwrap` does with charts that the plug-in has finished: packs them again, as
/// --density, --align and --stack ask.
#pragma once

#include "app/progress_display.h"
#include "app/unwrap_driver.h"

#include <string>

namespace app {

/// True if a setting asks for it.
bool wants_packing(const UnwrapSettingsRequest& settings);

/// Replaces the outcome's UVs and, for a density, the sides of its texture.
/// Returns an exit code, and for a failure the reason.
int pack_again(const host::ObjDocument& document, UnwrapOutcome& outcome, ProgressDisplay& progress,
               std::string& reason);

} // namespace app
