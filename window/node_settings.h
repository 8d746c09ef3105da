/// The settings of an unwrap node, as the command line has them.
#pragma once

#include "app/unwrap_options.h"
#include "host/graph/node.h"

#include <string>

namespace window {

/// What the node's attributes say; the name of the UV set and settings that only the command line
/// has keep their defaults.
app::UnwrapSettingsRequest settings_of(host::graph::Node& node);

/// The statement that sets the attributes in which `wanted` differs from `now`, as one step of
/// undo; empty if none does. The UV set stays, as it belongs to the mesh.
std::string statement_changing(const std::string& node, const app::UnwrapSettingsRequest& now,
                               const app::UnwrapSettingsRequest& wanted);

} // namespace window
