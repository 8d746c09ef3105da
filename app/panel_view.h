/// Pictures of the scene in the host's model panels, overlays of plug-ins included, drawn without a
/// screen. In builds without OpenGL every call fails with an error that says so.
#pragma once

#include <string>

namespace app {

/// Adds viewFit, modelEditor, getPanel and panelPicture to the script language.
void add_panel_commands();

/// Creates the OpenGL context, so that a missing one is found before the unwrap, not after it.
/// Errors: false with a sentence in `error`.
bool open_panels(std::string& error);

struct PanelPictureRequest {
    std::string panel = "all"; ///< all, top, front, side or persp
    int width = 1280;          ///< pixels; the height is 3/4 of it
};

/// True for a valid PanelPictureRequest::panel.
bool is_panel_name(const std::string& name);

/// Draws the whole scene, framed in each panel, without selection and grid; `png` is a PNG file.
/// Errors: false with a sentence in `error`; std::bad_alloc.
bool draw_panels(const PanelPictureRequest& request, std::string& png, std::string& error);

} // namespace app
