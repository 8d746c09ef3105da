/// `tessora report`: the figures of many meshes, merged or compared.
#pragma once

#include "app/command.h"

namespace app {

int report_command(const Words& words);
CommandHelp report_help();

} // namespace app
