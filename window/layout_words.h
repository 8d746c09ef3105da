/// What the status line says about a layout that an unwrap has made.
#pragma once

#include "window/uv_map.h"

#include <string>

namespace window {

/// "12 charts, worst stretch 0.0440, 71.2 % covered".
std::string words_about(const UvMap& map);

/// The same after an unwrap along the seams that were there, which divided the surface into
/// `islands`: also how many cuts it could not do without, and how many charts have more stretch
/// than an unwrap has by default.
std::string words_along_seams(const UvMap& map, size_t islands);

} // namespace window
