/// Small pictures of an unwrapped mesh for pages that show many.
#pragma once

#include "app/layout_picture.h"

#include <cstddef>
#include <string>

namespace app {

/// The most bytes that the thumbnails of one mesh take.
inline constexpr size_t k_thumbnails_limit = 24 * 1024;

/// Draws four square pictures side by side in one PNG file: the layout, the mesh with a
/// checkerboard, the stretch, the mesh with its seams. They are k_thumbnail_side pixels wide, and
/// smaller or with fewer colours if they would take more than k_thumbnails_limit bytes.
/// Errors: false with a sentence in `error`; std::bad_alloc.
bool draw_thumbnails(const PictureSubject& subject, std::string& png, std::string& error);

inline constexpr int k_thumbnail_side = 176; ///< pixels

} // namespace app
