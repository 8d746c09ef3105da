/// State shared by all panels: console, queued statements, and a snapshot of the scene.
///
/// Panels draw from the snapshot and enqueue statements in `jobs`; drawing never evaluates the
/// scene. `refresh` updates the snapshot after statements ran.
#pragma once

#include "window/console.h"
#include "window/edge_pick.h"
#include "window/findings.h"
#include "window/glyphs.h"
#include "window/jobs.h"
#include "window/mesh_picker.h"
#include "window/places.h"
#include "window/settings.h"
#include "window/subject.h"
#include "window/texture_picture.h"
#include "window/theme.h"
#include "window/uv_map.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace window {

/// Display mode of charts, in the texture and on the mesh.
enum class Display { plain, charts, checker, stretch, density, picture };
inline constexpr const char* k_display_names[] = {"Plain",   "Charts",  "Checker",
                                                  "Stretch", "Density", "Picture"};
inline constexpr int k_display_count = 6;

/// The unwrap node recomputes when this is 0, and then sets it to 1.
inline constexpr const char* k_skip_attribute = "Skip_compute";

/// What stands for no preset and for one in a file, where presets are named.
inline constexpr const char* k_no_preset = "defaults";
inline constexpr const char* k_preset_from_file = "file";

/// Snapshot of one attribute for the attribute panel.
struct ShownAttribute {
    std::string plug; ///< "node.attribute"
    std::string name;
    std::string label; ///< of a setting of the unwrap; else empty
    std::string help;  ///< what the attribute means; empty if unknown
    bool has_effect = true;
    enum class Kind { boolean, integer, real, text } kind = Kind::real;
    bool is_input = true;
    bool has_changed = false; ///< differs from the value that the current UVs were made with
    double number = 0.0;
    std::string text;
};

struct State {
    explicit State(Jobs::Run run, const std::string& places_file)
        : jobs(std::move(run)), places(places_file) {}

    Console console;
    Jobs jobs;
    Places places;
    Fonts fonts;
    float scale = 1.0f; ///< of everything that is drawn; 1 for 96 dpi
    Glyphs glyphs;      ///< characters of names that are shown
    std::map<std::string, Setting> settings;

    Subject subject;
    UvMap map;
    std::optional<MeshPicker> picker; ///< over map.points(); built on demand
    std::vector<ShownAttribute>
        rows; ///< of the unwrap node, else of the newest node in the history
    std::string rows_node;
    bool has_changed_rows = false;    ///< some row has_changed
    std::string undo_name, redo_name; ///< empty: nothing to undo or redo
    std::string scene_name;           ///< the scene's file; empty if it was never saved
    std::string opened_name;          ///< the mesh or scene file that was opened; else empty
    bool is_modified = false;
    std::string title;          ///< the opened file's name, with a star if modified
    std::string status;         ///< summary of the last statement; console messages take precedence
    size_t status_revision = 0; ///< the console's revision when that statement began
    size_t map_revision = 0;    ///< increases when `map` changes
    size_t scene_revision = 0;  ///< increases with every refresh

    double wanted_scale = -1.0; ///< picked in the menu; 0: as the screen asks for, negative: none
    std::string wanted_file;    ///< picked from the recent files; empty if none
    std::string wanted_preset;  ///< picked in the settings' head; empty if none

    Display display = Display::charts;
    TexturePicture picture;      ///< shown as the texture in that mode
    size_t picture_revision = 0; ///< increases with every picture read
    bool wants_picture = false;  ///< a file of it is to be chosen
    int walk_step = -1;          ///< of the walk for new users; negative: it is not on
    bool is_live = false;        ///< cuts go before the unwrap node, which follows them at once
    bool is_overlay_on = false;  ///< of the unwrap node
    std::string hidden_overlay; ///< the node whose overlay Live put out: it does not know its seams
    bool is_waiting = false;    ///< Live is late: a child process still unwraps
    size_t live_results = 0;    ///< received so far
    /// Places of the pointer since the last frame while a button is held, in pixels of the window.
    std::vector<ScreenPoint> pointer_path;
    bool picks_edges = false;      ///< the mouse picks edges on the mesh, not objects
    std::vector<uint32_t> marked;  ///< triangles of the selected polygons
    std::vector<uint32_t> picked;  ///< selected edges of the mesh shown, ascending
    std::vector<float> picked_uvs; ///< these in the texture: u0 v0 u1 v1 for each side of an edge
    uint32_t hovered = k_none;     ///< the chart under the pointer, in any panel
    uint32_t chosen = k_none;      ///< the chart that stays lit, by a click or by keyboard
    int check_frame = -1;          ///< the frame that says that the UVs are checked; -1: none asked
    bool frames_chosen = false;    ///< it is to fill the views, once
    /// The chart to highlight; k_none if none.
    uint32_t lit() const { return hovered != k_none ? hovered : chosen; }

    /// Updates the snapshot from the scene, without evaluating nodes.
    void refresh();
    /// Whether the unwrap node draws its seams itself, because they are those of the shown UVs.
    bool shows_overlay() const { return subject.node && !subject.has_later_edits && is_overlay_on; }
    /// Whether the window draws the seams instead; neither does if the user put the overlay out.
    bool draws_seams() const {
        return !subject.node || subject.has_later_edits ||
               (!is_overlay_on && (is_live || subject.node_name() == hidden_overlay));
    }
    MeshPicker& mesh_picker();
    /// The path of the shape shown, as statements name it; there must be one.
    std::string shape_path() const;
    /// The guarantees that the UVs break; computed once for every map.
    const std::vector<measure::Breach>& breaches();
    /// Whether computing them is quick enough to be done without being asked.
    bool checks_by_itself() const { return map.triangle_count() <= 100000; }
    bool has_checked() const { return breaches_.has_value(); }
    /// Shows words in the status line.
    void say(const std::string& words);
    /// Switches the display; a mode that lacks its picture asks for one.
    void show(Display mode) {
        display = mode;
        wants_picture = mode == Display::picture && picture.is_empty();
    }
    /// Says so if there is nothing to undo or redo.
    void undo();
    void redo();
    /// The statement that makes the unwrap node compute again; there must be one.
    std::string unwrap_again() const {
        return "setAttr \"" + rows_node + "." + k_skip_attribute + "\" 0;";
    }

    /// Enqueues statements; warns in the console if refused because a statement is running.
    void run(const std::string& statements);
    /// Enqueues statements that work on the selection; if nothing is selected, on the mesh shown.
    void run_on_shown(const std::string& statements);

private:
    /// UVs of a node and the attributes at the time the window first saw these UVs.
    struct UsedSettings {
        host::Mesh mesh; ///< shares storage with the node's mesh, which identifies the UVs
        int uv_set = -1;
        std::vector<ShownAttribute> rows;
    };
    void take_selection();
    void take_picked(const std::vector<int>& edges);
    void take_rows();
    void explain_rows();
    void compare_rows();
    std::map<std::string, UsedSettings> used_settings_; ///< by node
    std::optional<std::vector<measure::Breach>> breaches_;
};

/// Colours as 0xAABBGGRR, the same as in layout pictures.
uint32_t chart_colour(uint32_t chart);
uint32_t stretch_colour(float stretch);
/// Colour of a triangle in a display mode.
uint32_t triangle_colour(const UvMap& map, uint32_t triangle, Display display);
/// Shape: one colour per triangle corner.
std::vector<uint32_t> corner_colours(const UvMap& map, Display display);

} // namespace window
