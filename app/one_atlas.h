/// `tessora unwrap --one_atlas`: several meshes into one texture.
#pragma once

#include "app/unwrap_options.h"

namespace app {

/// Unwraps the meshes of a batch, then packs all their charts together, with as many texels per
/// unit of length everywhere, and writes the results, with one report (atlas.json) for all.
/// Nothing is written unless every mesh succeeds. Returns the exit code.
int run_one_atlas(const UnwrapRequest& request);

} // namespace app
