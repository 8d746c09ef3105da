/// The outcome of the last UV-atlas call made by the plug-in.
///
/// The program neither links the atlas library nor calls it: the plug-in brings it along, and the
/// host's interface reports only that an unwrap failed, not why. So the program looks the library's
/// three inspection functions up by name once the plug-in is loaded (platform/d3dx9/inspect.h
/// declares them). Where the platform's own atlas stands in, the functions are missing; every query
/// then returns its empty value.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace app {

/// The library's file name without the system's prefix and extension.
constexpr const char* k_atlas_library = "tessora_d3dx9";

/// Names and types of the functions looked up.
constexpr const char* k_last_result_name = "d3dx9_last_result";
constexpr const char* k_last_reason_name = "d3dx9_last_reason";
constexpr const char* k_over_limit_name = "d3dx9_over_limit";
using LastResult = int32_t();
using LastReason = const char*();
using OverLimit = unsigned(const uint32_t** triangles);

/// The result code of the last call: negative if it failed. 0 if unknown.
int32_t last_atlas_result();

/// True if the last call failed because memory ran out.
bool atlas_ran_out_of_memory();

/// True if the last call failed because the texture has no room for the charts and their gutter.
bool atlas_had_no_room();

/// Why the last call failed, as a sentence without full stop; "" after a success or if unknown.
std::string last_atlas_reason();

/// Triangles, ascending, of the polygons that exceed the stretch limit even as a chart of their
/// own.
std::vector<uint32_t> triangles_over_limit();

} // namespace app
