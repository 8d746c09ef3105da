/// The bar above the model panels: what the mouse picks, and what is done with picked edges.
#pragma once

#include "window/state.h"

namespace window {

void draw_tool_bar(State& state);

/// The statements of the seam tools; each is one step of undo.
std::string statement_cutting(const State& state);
std::string statement_sewing(const State& state);
/// Unwraps with the seams that are there, for the texture and the gutter of the last unwrap: with
/// as few others as can be, or with those that the default stretch asks for.
std::string statement_along_seams(const State& state);
std::string statement_suggesting_rest(const State& state);
/// Whether a statement is one of these two; the charts then keep the densities given by hand.
bool lays_out_anew(const State& state, const std::string& statement);

} // namespace window
