#include "app/panel_view.h"
#include "host/commands/session.h"
#include "host/view/view_commands.h"

#include <iterator>
#include <new>

namespace app {
namespace {

constexpr const char* k_panel_names[] = {"top", "front", "side", "persp"};

/// Never destroyed: at process exit the OpenGL driver may be unloaded first.
host::PictureStudio& studio() {
    static auto* const the_studio = new host::PictureStudio;
    return *the_studio;
}

/// Index of the panel with that name, or -1 (all panels).
int panel_of(const std::string& name) {
    for (int panel = 0; panel < int(std::size(k_panel_names)); ++panel)
        if (name == k_panel_names[panel])
            return panel;
    return -1;
}

} // namespace

void add_panel_commands() {
    host::add_view_commands(host::script::Session::current().interpreter(), studio());
}

bool open_panels(std::string& error) { return studio().open(error) != nullptr; }

bool is_panel_name(const std::string& name) { return name == "all" || panel_of(name) >= 0; }

bool draw_panels(const PanelPictureRequest& request, std::string& png, std::string& error) {
    host::PanelPictures* const pictures = studio().open(error);
    if (!pictures)
        return false;
    for (int panel = 0; panel < host::k_panel_count; ++panel) {
        pictures->panels().style(panel).has_selection = false;
        pictures->panels().style(panel).has_grid = false; // its lines would cut through the mesh
    }
    host::PanelPictures::Request size_and_panel;
    size_and_panel.panel = panel_of(request.panel);
    size_and_panel.width = request.width;
    size_and_panel.height = request.width * 3 / 4;
    size_and_panel.is_framed = true;
    host::Picture picture;
    if (!pictures->take(size_and_panel, picture, error))
        return false;
    png = host::png_of(picture);
    if (png.empty())
        throw std::bad_alloc();
    return true;
}

} // namespace app
