/// Script commands about the panels: viewFit, modelEditor, getPanel as the application has them,
/// and one of our own, panelPicture, which writes what the panels show to a PNG file:
///
///   panelPicture [-panel modelPanel4] [-width 1280] [-height 960] [-samples 4] FILE
///
/// Without -panel all four are in the picture. The OpenGL context is made on first use, and stays.
#pragma once

#include "host/script/interpreter.h"
#include "host/view/offscreen.h"

namespace host {

/// Panels that a session has for its pictures; made on first use.
class PictureStudio {
public:
    /// Null with a sentence in `error` when the system gives no context.
    PanelPictures* open(std::string& error);
    /// Lets go of the context and all buffers.
    void close() { pictures_.reset(); }

    /// The style of a panel: kept here, so that it can be set before there is a context.
    std::array<PanelStyle, k_panel_count> styles;

private:
    std::unique_ptr<PanelPictures> pictures_;
};

/// The studio must outlive the interpreter's last script.
void add_view_commands(script::Interpreter& interpreter, PictureStudio& studio);

} // namespace host
