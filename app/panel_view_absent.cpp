// The panel functions for builds without OpenGL: each fails with an error.
#include "app/panel_view.h"

namespace app {

namespace {

bool refuse(std::string& error) {
    error = "this build draws no panels: it was made without OpenGL";
    return false;
}

} // namespace

void add_panel_commands() {}
bool open_panels(std::string& error) { return refuse(error); }
bool is_panel_name(const std::string&) { return true; }
bool draw_panels(const PanelPictureRequest&, std::string&, std::string& error) {
    return refuse(error);
}

} // namespace app
