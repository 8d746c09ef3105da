#include "host/view/view_commands.h"

#include "host/io/write_file.h"
#include "host/script/flags.h"
#include "host/view/scene_shapes.h"

#include <filesystem>

namespace host {

using script::Flags;
using script::FlagTable;
using script::Invocation;
using script::ScriptFault;
using script::StringArray;
using script::Value;

namespace {

int panel_named(const std::string& name, const std::string& command) {
    const int panel = find_panel(name.c_str());
    if (panel < 0)
        throw ScriptFault(command + ": There is no panel \"" + name + "\".");
    return panel;
}

/// The panel whose camera's transform or shape has this name; throws if none.
int panel_looking_through(const std::string& name) {
    for (int panel = 0; panel < k_panel_count; ++panel) {
        const graph::DagPath camera = panel_camera(panel);
        if (!camera.empty() && (camera_name(camera) == name || camera.back()->name_text() == name))
            return panel;
    }
    throw ScriptFault("viewFit: There is no panel that looks through \"" + name + "\".");
}

Viewport shape_of(int panel) {
    Viewport viewport{0, 0, 4, 3};
    int width = 0, height = 0;
    if (panel_renderer() && panel_renderer()->size(panel, width, height) && width > 0 && height > 0)
        viewport = {0, 0, width, height};
    return viewport;
}

Value view_fit(Invocation& call) {
    static const FlagTable table = {
        {"all", "allObjects"}, {"f", "fitFactor", "f"}, {"an", "animate", "b"}};
    const Flags flags(call, table);
    flags.require_operands(0, 1);
    const double factor = flags.real("fitFactor", 0.95);
    if (!(factor > 0.0) || factor > 1.0)
        throw ScriptFault("viewFit: -fitFactor is above 0 and at most 1.");
    const int panel =
        flags.names().empty() ? active_panel() : panel_looking_through(flags.names()[0]);
    if (panel < 0)
        throw ScriptFault("viewFit: There is no active panel.");
    frame_points(panel_camera(panel), shape_of(panel), scene_points(!flags.has("allObjects")),
                 factor);
    if (panel_renderer())
        panel_renderer()->refresh(panel, false);
    return Value();
}

Value get_panel(Invocation& call) {
    static const FlagTable table = {{"typ", "type", "s"}, {"wf", "withFocus"}};
    const Flags flags(call, table);
    flags.require_operands(0, 0);
    if (flags.has("withFocus"))
        return active_panel() < 0 ? "" : panel_name(active_panel()).asChar();
    StringArray names;
    for (int panel = 0; panel < k_panel_count; ++panel)
        if (flags.text("type", "modelPanel") == "modelPanel")
            names.push_back(panel_name(panel).asChar());
    return names;
}

const char* appearance_name(Appearance appearance) {
    return appearance == Appearance::wireframe ? "wireframe" : "smoothShaded";
}

Value query_editor(const Flags& flags, const PanelStyle& style) {
    const std::vector<std::string> asked = flags.given();
    if (asked.size() != 1)
        throw ScriptFault("modelEditor: A query asks for one thing.");
    if (asked[0] == "displayAppearance")
        return appearance_name(style.appearance);
    if (asked[0] == "wireframeOnShaded")
        return style.has_wire;
    return asked[0] == "grid" ? style.has_grid : style.has_selection;
}

Value model_editor(Invocation& call, PictureStudio& studio) {
    static const FlagTable table = {{"da", "displayAppearance", "s", "qe"},
                                    {"wos", "wireframeOnShaded", "b", "qe"},
                                    {"gr", "grid", "b", "qe"},
                                    {"sel", "selectionHiliteDisplay", "b", "qe"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    PanelStyle& style = studio.styles[size_t(panel_named(flags.names()[0], "modelEditor"))];
    if (flags.query())
        return query_editor(flags, style);
    if (!flags.edit())
        throw ScriptFault("modelEditor: The panels are there already; use -edit or -query.");
    const std::string appearance =
        flags.text("displayAppearance", appearance_name(style.appearance));
    if (appearance != "wireframe" && appearance != "smoothShaded")
        throw ScriptFault("modelEditor: -displayAppearance is wireframe or smoothShaded.");
    style.appearance = appearance == "wireframe" ? Appearance::wireframe : Appearance::shaded;
    style.has_wire = flags.boolean("wireframeOnShaded", style.has_wire);
    style.has_grid = flags.boolean("grid", style.has_grid);
    style.has_selection = flags.boolean("selectionHiliteDisplay", style.has_selection);
    return Value();
}

bool has_other_extension(const std::string& path) {
    std::string extension = std::filesystem::path(path).extension().string();
    for (char& c : extension)
        c = c >= 'A' && c <= 'Z' ? char(c + 32) : c;
    return !extension.empty() && extension != ".png";
}

Value panel_picture(Invocation& call, PictureStudio& studio) {
    static const FlagTable table = {
        {"p", "panel", "s"}, {"w", "width", "i"}, {"h", "height", "i"}, {"s", "samples", "i"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    PanelPictures::Request request;
    if (flags.has("panel"))
        request.panel = panel_named(flags.text("panel", ""), "panelPicture");
    request.width = flags.integer("width", request.width);
    request.height = flags.integer("height", request.height);
    request.samples = flags.integer("samples", request.samples);
    const std::string path = flags.names()[0];
    if (has_other_extension(path))
        throw ScriptFault("panelPicture: \"" + path + "\": pictures are written as .png files.");
    if (request.width < 16 || request.height < 16)
        throw ScriptFault("panelPicture: A picture has 16 x 16 pixels at least.");
    std::string error;
    Picture picture;
    PanelPictures* const pictures = studio.open(error);
    if (!pictures || !pictures->take(request, picture, error))
        throw ScriptFault("panelPicture: " + error + ".");
    const std::string bytes = png_of(picture);
    std::string reason = "not enough memory";
    if (bytes.empty() || !write_file(path, bytes, Durability::process, reason))
        throw ScriptFault("panelPicture: \"" + path + "\" cannot be written: " + reason + ".");
    return path;
}

} // namespace

PanelPictures* PictureStudio::open(std::string& error) {
    if (!pictures_)
        pictures_ = PanelPictures::make(error);
    for (int panel = 0; pictures_ && panel < k_panel_count; ++panel)
        pictures_->panels().style(panel) = styles[size_t(panel)];
    return pictures_.get();
}

void add_view_commands(script::Interpreter& interpreter, PictureStudio& studio) {
    interpreter.add_command("viewFit", view_fit);
    interpreter.add_command("getPanel", get_panel);
    interpreter.add_command("modelEditor",
                            [&studio](Invocation& call) { return model_editor(call, studio); });
    interpreter.add_command("panelPicture",
                            [&studio](Invocation& call) { return panel_picture(call, studio); });
}

} // namespace host
