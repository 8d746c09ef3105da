/// `tessora pack`: packs the charts that meshes have into one texture.
#pragma once

#include "app/command.h"
#include "app/pack_options.h"

namespace app {

int pack_command(const Words& words);

/// Packs as the request says and returns the exit code.
int run_pack(const PackRequest& request);

} // namespace app
