/// Script commands about the panels: viewFit, modelEditor, getPanel, and panelPicture, an addition
/// of this host, which writes the panels' content to a PNG file:
///
///   panelPicture [-panel modelPanel4] [-width 1280] [-height 960] [-samples 4] FILE
///
/// Without -panel the picture shows all four. The OpenGL context is created on first use and kept.
#pragma once

#include "host/script/interpreter.h"
#include "host/view/offscreen.h"

namespace host {

/// A session's offscreen panels, created on first use.
class PictureStudio {
public:
    /// Returns null and sets `error` to a sentence if no context can be created.
    PanelPictures* open(std::string& error);

    /// Display options per panel; may be set before there is a context.
    std::array<PanelStyle, k_panel_count> styles;

private:
    std::unique_ptr<PanelPictures> pictures_;
};

/// Adds the commands about panels. `studio` must outlive the interpreter's last script.
void add_view_commands(script::Interpreter& interpreter, PictureStudio& studio);

} // namespace host
