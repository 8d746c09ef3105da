/// The host's model panels in the program: pictures of the scene as it stands, with what plug-ins
/// draw over it. Needs no screen. Builds without OpenGL have none of it and say so.
#pragma once

#include <string>

namespace app {

/// Adds viewFit, modelEditor, getPanel and panelPicture to the script language.
void add_panel_commands();

/// Makes what pictures need, so that a run that wants one fails before its work, not after it.
/// Errors: false with a sentence in `error`.
bool open_panels(std::string& error);

struct PanelPictureRequest {
    std::string panel = "all"; ///< or one of top, front, side, persp
    int width = 1280;          ///< pixels; the height is three quarters of it
};

/// False when a picture cannot be asked for by this name.
bool is_panel_name(const std::string& name);

/// Everything in the scene, framed in each panel, as a PNG file, without selection and grid.
/// Errors: false with a sentence in `error`.
bool draw_panels(const PanelPictureRequest& request, std::string& png, std::string& error);

} // namespace app
