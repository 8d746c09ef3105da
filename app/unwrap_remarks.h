/// What the shell, scripts and the window say about a use of the plug-in's command `tessora`.
///
/// The plug-in itself is silent about values out of range, about settings without effect and about
/// a selection without a mesh.
#pragma once

#include <string>
#include <vector>

namespace app {

/// Warnings about the flags of a call, such as "-padding 99 counts as 32". `arguments`: as typed.
std::vector<std::string> warnings_about_flags(const std::vector<std::string>& arguments);

/// Prints warnings from now on whenever the command ran.
void watch_unwraps();

/// Evaluates the meshes that were unwrapped since the last call, as showing them would, and returns
/// a line for each: "tessora_node1: 12 charts, stretch 0.0440, on bunnyShape". Empty if none.
std::vector<std::string> finished_unwraps();

/// What is said of an unwrap that failed: `told`, or that it failed if nothing was told.
std::string reason_of_failure(const std::string& told);

} // namespace app
