#include "window/menu_bar.h"

#include "host/ui/menus.h"
#include "window/preferences.h"
#include "window/tool_bar.h"

#include <GLFW/glfw3.h>
#include <filesystem>
#include <imgui.h>
#include <imgui_internal.h>

namespace window {
namespace {

/// One of the window's own menu items; performs an action or runs a statement.
struct Item {
    const char* label; ///< null: a separator
    const char* keys;
    Action action;
    const char* statement;
};

constexpr Item k_file_begin[] = {{"New scene", "Ctrl+N", Action::new_scene, nullptr},
                                 {"Open…", "Ctrl+O", Action::open, nullptr}};
constexpr Item k_file[] = {{"Import…", "Ctrl+I", Action::import, nullptr},
                           {nullptr, nullptr, Action::none, nullptr},
                           {"Save", "Ctrl+S", Action::save, nullptr},
                           {"Save as…", "Ctrl+Shift+S", Action::save_as, nullptr},
                           {"Export mesh…", "Ctrl+E", Action::export_mesh, nullptr},
                           {nullptr, nullptr, Action::none, nullptr},
                           {"Quit", "Ctrl+Q", Action::quit, nullptr}};
constexpr Item k_create[] = {{"Cube", nullptr, Action::none, "polyCube;"},
                             {"Sphere", nullptr, Action::none, "polySphere;"},
                             {"Cylinder", nullptr, Action::none, "polyCylinder;"},
                             {"Torus", nullptr, Action::none, "polyTorus;"},
                             {"Plane", nullptr, Action::none, "polyPlane;"}};
constexpr Item k_display[] = {{"Frame all", "A", Action::frame_all, nullptr},
                              {"One panel or four", "Space", Action::toggle_alone, nullptr},
                              {"Texture alone", nullptr, Action::toggle_uv_alone, nullptr}};
constexpr Item k_window[] = {{"Panels", "F2", Action::focus_panels, nullptr},
                             {"UVs", "F3", Action::focus_uv, nullptr},
                             {"Attributes", "F4", Action::focus_attributes, nullptr},
                             {"Console", "F5", Action::focus_console, nullptr},
                             {nullptr, nullptr, Action::none, nullptr},
                             {"Next chart", "]", Action::next_chart, nullptr},
                             {"Previous chart", "[", Action::previous_chart, nullptr}};
constexpr Item k_help[] = {{"Keyboard and mouse", "F1", Action::help, nullptr},
                           {"About Tessora", nullptr, Action::about, nullptr}};

template <size_t N>
Action draw_items(State& state, const Item (&items)[N]) {
    Action action = Action::none;
    for (const Item& item : items) {
        if (!item.label) {
            ImGui::Separator();
            continue;
        }
        if (ImGui::MenuItem(item.label, item.keys)) {
            action = item.action;
            if (item.statement)
                state.run(item.statement);
        }
        state.places.add_item(std::string("menuitem/") + item.label);
    }
    return action;
}

void draw_edit(State& state) {
    const auto item = [&](const char* verb, const std::string& what, const char* keys,
                          const char* statement) {
        const std::string label = verb + (what.empty() ? "" : " " + what) + "###" + verb;
        if (ImGui::MenuItem(label.c_str(), keys, false, !what.empty()))
            state.run(statement);
        state.places.add_item(std::string("menuitem/") + verb);
    };
    item("Undo", state.undo_name, "Ctrl+Z", "undo;");
    item("Redo", state.redo_name, "Ctrl+Shift+Z", "redo;");
    ImGui::Separator();
    if (ImGui::MenuItem("Select all", "Ctrl+A"))
        state.run("select -all;");
    state.places.add_item("menuitem/Select all");
    if (ImGui::MenuItem("Delete", "Del"))
        state.run("delete;");
}

void draw_display(State& state) {
    ImGui::Separator();
    for (int i = 0; i < k_display_count; ++i) {
        const char key[] = {static_cast<char>('4' + i), 0};
        if (ImGui::MenuItem(k_display_names[i], key, static_cast<int>(state.display) == i))
            state.show(static_cast<Display>(i));
        state.places.add_item(std::string("menuitem/") + k_display_names[i]);
    }
    if (ImGui::MenuItem("Picture as texture…"))
        state.wants_picture = true;
    state.places.add_item("menuitem/Picture as texture…");
}

void draw_scales(State& state) {
    const bool is_open = ImGui::BeginMenu("Size of everything");
    state.places.add_item("menuitem/Size of everything");
    if (!is_open)
        return;
    if (ImGui::MenuItem("As the screen asks"))
        state.wanted_scale = 0.0;
    state.places.add_item("menuitem/As the screen asks");
    for (const int percent : {75, 100, 125, 150, 175, 200, 250, 300}) {
        const std::string label = std::to_string(percent) + " %";
        const bool is_on = std::abs(100.0f * state.scale - static_cast<float>(percent)) < 1.0f;
        if (ImGui::MenuItem(label.c_str(), nullptr, is_on))
            state.wanted_scale = 0.01 * percent;
        state.places.add_item("menuitem/" + label);
    }
    ImGui::EndMenu();
}

void draw_recent(State& state) {
    const bool is_open = ImGui::BeginMenu("Open recent");
    state.places.add_item("menuitem/Open recent");
    if (!is_open)
        return;
    const std::vector<std::string> files = recent_files();
    if (files.empty())
        ImGui::TextDisabled("None yet");
    for (const std::string& file : files) {
        state.glyphs.note(file);
        const std::string name = std::filesystem::path(file).filename().string();
        if (ImGui::MenuItem((name + "###" + file).c_str()))
            state.wanted_file = file;
        state.places.add_item("menuitem/" + name);
        if (ImGui::IsItemHovered())
            ImGui::SetTooltip("%s", file.c_str());
    }
    ImGui::EndMenu();
}

/// The first item is not "Open recent": the right arrow would open that instead of the next menu.
Action draw_file(State& state) {
    const Action first = draw_items(state, k_file_begin);
    draw_recent(state);
    const Action second = draw_items(state, k_file);
    return first == Action::none ? second : first;
}

/// What can be done with the mesh that is shown.
void draw_mesh(State& state) {
    const bool has_mesh = static_cast<bool>(state.subject.shape);
    const auto item = [&](const char* label, const char* keys, bool is_enabled,
                          const std::string& statements) {
        if (ImGui::MenuItem(label, keys, false, is_enabled))
            state.run_on_shown(statements);
        state.places.add_item(std::string("menuitem/") + label);
    };
    item("Unwrap", nullptr, has_mesh, "tessora;");
    item("Unwrap again", nullptr, static_cast<bool>(state.subject.node), state.unwrap_again());
    item("Unwrap along my seams", nullptr, !state.map.charts().empty(),
         statement_along_seams(state));
    item("Suggest the rest of the seams", nullptr, !state.map.charts().empty(),
         statement_suggesting_rest(state));
    ImGui::Separator();
    if (ImGui::MenuItem("Pick edges", "E", state.picks_edges))
        state.picks_edges = !state.picks_edges;
    state.places.add_item("menuitem/Pick edges");
    item("Cut the picked edges", "C", has_mesh, statement_cutting(state));
    item("Sew the picked edges", "S", has_mesh, statement_sewing(state));
    ImGui::Separator();
    item("Delete history", nullptr, has_mesh, "delete -constructionHistory;");
}

/// "mainModifyMenu" -> "Modify".
std::string label_of(const std::string& menu) {
    std::string label = menu;
    if (label.compare(0, 4, "main") == 0)
        label.erase(0, 4);
    if (label.size() > 4 && label.compare(label.size() - 4, 4, "Menu") == 0)
        label.resize(label.size() - 4);
    return label;
}

Action draw_own(State& state, const std::string& label) {
    if (label == "File")
        return draw_file(state);
    if (label == "Create")
        return draw_items(state, k_create);
    if (label == "Window")
        return draw_items(state, k_window);
    if (label == "Help")
        return draw_items(state, k_help);
    if (label == "Edit")
        draw_edit(state);
    if (label == "Mesh")
        draw_mesh(state);
    if (label == "Display") {
        const Action action = draw_items(state, k_display);
        draw_display(state);
        draw_scales(state);
        return action;
    }
    return Action::none;
}

/// Items that plug-ins and scripts added.
void draw_added(State& state, const std::string& menu, bool has_own) {
    host::MenuTree::current().open(menu);
    const std::vector<host::MenuItem> items = host::MenuTree::current().items(menu);
    if (items.empty()) {
        if (!has_own)
            ImGui::TextDisabled("Nothing here yet");
        return;
    }
    if (has_own)
        ImGui::Separator();
    for (const host::MenuItem& item : items) {
        const char* keys = item.label == "Tessora" ? "Ctrl+U" : nullptr;
        if (ImGui::MenuItem((item.label + "###" + item.name).c_str(), keys))
            state.run_on_shown(item.command);
        state.places.add_item("menuitem/" + item.label);
    }
}

void run_menu_item(State& state, const std::string& menu, const char* label) {
    for (const host::MenuItem& item : host::MenuTree::current().items(menu))
        if (item.label == label)
            return state.run_on_shown(item.command);
    state.console.warning(std::string("The menu has no item ") + label + ".");
}

bool pressed(int key) { return ImGui::IsKeyPressed(key, false); }

Action control_action(State& state, bool with_shift) {
    if (ImGui::IsKeyPressed(GLFW_KEY_Z, true))
        with_shift ? state.redo() : state.undo();
    if (ImGui::IsKeyPressed(GLFW_KEY_Y, true))
        state.redo();
    if (pressed(GLFW_KEY_A) && !ImGui::GetIO().WantTextInput)
        state.run("select -all;");
    if (pressed(GLFW_KEY_U))
        run_menu_item(state, "mainModifyMenu", "Tessora");
    if (pressed(GLFW_KEY_S))
        return with_shift ? Action::save_as : Action::save;
    const std::pair<int, Action> keys[] = {{GLFW_KEY_N, Action::new_scene},
                                           {GLFW_KEY_O, Action::open},
                                           {GLFW_KEY_I, Action::import},
                                           {GLFW_KEY_E, Action::export_mesh},
                                           {GLFW_KEY_Q, Action::quit}};
    for (const auto& [key, action] : keys)
        if (pressed(key))
            return action;
    return Action::none;
}

/// Opens the menu that is drawn next. The arrow keys go on from it, and not from the one that was
/// used last, which the bar remembers.
void open_menu(const std::string& label) {
    ImGui::OpenPopup(label.c_str());
    ImGuiWindow* bar = ImGui::GetCurrentWindow();
    const ImVec2 at = ImGui::GetCursorScreenPos(), size = ImGui::CalcTextSize(label.c_str());
    bar->NavLastIds[ImGuiNavLayer_Menu] = ImGui::GetID(label.c_str());
    bar->NavRectRel[ImGuiNavLayer_Menu] =
        ImGui::WindowRectAbsToRel(bar, {at, {at.x + size.x, at.y + size.y}});
}

} // namespace

Action draw_menu_bar(State& state, bool takes_input, bool opens) {
    Action action = Action::none;
    if (!ImGui::BeginMainMenuBar())
        return action;
    ImGui::BeginDisabled(!takes_input);
    for (const std::string& menu : host::MenuTree::current().menus()) {
        const std::string label = label_of(menu);
        if (opens)
            open_menu(label);
        opens = false;
        const bool is_open = ImGui::BeginMenu(label.c_str());
        state.places.add_item("menu/" + label);
        if (!is_open)
            continue;
        const float before = ImGui::GetCursorPosY();
        const Action own = draw_own(state, label);
        action = own == Action::none ? action : own;
        draw_added(state, menu, ImGui::GetCursorPosY() > before);
        ImGui::EndMenu();
    }
    ImGui::EndDisabled();
    ImGui::EndMainMenuBar();
    return action;
}

Action pressed_action(State& state) {
    const ImGuiIO& io = ImGui::GetIO();
    if (io.KeyAlt) // turns the view by mouse
        return Action::none;
    if (io.KeyCtrl)
        // A text field has its own undo.
        return io.WantTextInput && (pressed(GLFW_KEY_Z) || pressed(GLFW_KEY_Y))
                   ? Action::none
                   : control_action(state, io.KeyShift);
    const std::pair<int, Action> function_keys[] = {
        {GLFW_KEY_F1, Action::help},          {GLFW_KEY_F2, Action::focus_panels},
        {GLFW_KEY_F3, Action::focus_uv},      {GLFW_KEY_F4, Action::focus_attributes},
        {GLFW_KEY_F5, Action::focus_console}, {GLFW_KEY_F10, Action::open_menu}};
    for (const auto& [key, action] : function_keys)
        if (pressed(key))
            return action;
    if (io.WantTextInput)
        return Action::none;
    if (pressed(GLFW_KEY_DELETE))
        state.run("delete;");
    if (pressed(GLFW_KEY_E))
        state.picks_edges = !state.picks_edges;
    if (pressed(GLFW_KEY_C))
        state.run(statement_cutting(state));
    if (pressed(GLFW_KEY_S))
        state.run(statement_sewing(state));
    for (int i = 0; i < k_display_count; ++i)
        if (pressed(GLFW_KEY_4 + i))
            state.show(static_cast<Display>(i));
    if (ImGui::IsKeyPressed(GLFW_KEY_RIGHT_BRACKET))
        return Action::next_chart;
    return ImGui::IsKeyPressed(GLFW_KEY_LEFT_BRACKET) ? Action::previous_chart : Action::none;
}

/// Table of all keys and mouse actions, for the help window.
const std::vector<Shortcut>& shortcuts() {
    static const std::vector<Shortcut> list = {
        {"Ctrl+N, O, I", "new scene, open, import"},
        {"Ctrl+S, Ctrl+Shift+S, Ctrl+E", "save, save as, export the mesh"},
        {"Ctrl+Z, Ctrl+Shift+Z", "undo, redo"},
        {"click, Ctrl+A", "select a mesh, all meshes"},
        {"Ctrl+U", "the options of Tessora"},
        {"E", "pick edges instead of meshes, or meshes again"},
        {"C, S", "cut, sew the UVs along the picked edges"},
        {"Ctrl+Q", "quit"},
        {"Alt or F10, arrows, Enter", "the menus"},
        {"Tab, Shift+Tab, arrows, Space", "from control to control in a dialog or panel"},
        {"Enter, Esc", "the main button of a dialog; close it"},
        {"Esc", "stop what is being computed"},
        {"Ctrl+Tab", "from window to window"},
        {"F2, F3, F4, F5", "to the panels, the UVs, the attributes, the console"},
        {"4, 5, 6, 7, 8, 9", "show plain, charts, checker, stretch, density, a picture"},
        {"[ and ]", "light up the previous or the next chart; Esc: none"},
        {"", ""},
        {"In a model panel", ""},
        {"left drag, Alt+left drag, arrows", "turn (the flat views: move)"},
        {"middle drag, Shift+left drag, Shift+arrows", "move"},
        {"wheel, right drag, + and -", "nearer, farther"},
        {"picking edges: click, double click", "the edge, its loop or its whole seam"},
        {"Shift+click, left drag, Ctrl", "the way from the last edge, those inside, add"},
        {"F, A", "frame the selection, frame everything"},
        {"1, 2, 3, 0", "use the top, front, side, persp panel"},
        {"Space", "that panel alone, or all four"},
        {"", ""},
        {"In the UVs", ""},
        {"drag, arrows; wheel, + and -", "move; zoom"},
        {"Space", "the texture alone, or beside the panels"},
        {"F, A", "show the lit chart, show everything"},
        {"click, Ctrl+click", "keep a chart lit, pick several"},
        {"M, T, R, drag; Shift", "move, turn, scale charts; straight, by steps"},
        {"L", "lock the picked charts, or unlock them"},
        {"", ""},
        {"In the console", ""},
        {"Enter; up, down; Tab", "run; earlier and later statements; complete"},
    };
    return list;
}

} // namespace window
