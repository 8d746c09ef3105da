/// `tessora pack`: packs the charts that meshes have into one texture.
#pragma once

#include "app/command.h"

namespace app {

int pack_command(const Words& words);

} // namespace app
