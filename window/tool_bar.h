/// The bar above the model panels: what the mouse picks, and what is done with picked edges.
#pragma once

#include "window/state.h"

namespace window {

void draw_tool_bar(State& state);

/// The statements of the seam tools; each is one step of undo.
std::string statement_cutting(const State& state);
std::string statement_sewing(const State& state);
/// Keeps the seams that are there and adds as few as can be.
inline constexpr const char* k_along_seams = "tessora -keep_seams on -stretch 1;";
/// Keeps the seams that are there and adds those that the default settings ask for.
inline constexpr const char* k_suggest_rest = "tessora -keep_seams on;";

} // namespace window
