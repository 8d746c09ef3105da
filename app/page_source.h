/// The page that shows many meshes, before and after its data: app/page/, joined by
/// cmake/embed_page.cmake.
#pragma once

namespace app {

extern const char k_page_head[];
extern const char k_page_tail[];

} // namespace app
