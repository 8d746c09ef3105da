/// What the parts of the window share: the console, the statements that wait, what is shown.
///
/// The parts draw from this and put statements into `jobs`; nothing here is evaluated while a frame
/// is drawn. `refresh` takes over what the jobs changed.
#pragma once

#include "window/console.h"
#include "window/jobs.h"
#include "window/mesh_picker.h"
#include "window/places.h"
#include "window/subject.h"
#include "window/theme.h"
#include "window/uv_map.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace window {

/// How charts are told apart, in the texture and on the mesh.
enum class Display { plain, charts, checker, stretch };
inline constexpr const char* k_display_names[] = {"Plain", "Charts", "Checker", "Stretch"};

/// The unwrap node computes when this is 0, and sets it then.
inline constexpr const char* k_skip_attribute = "Skip_compute";

/// One attribute as the side panel shows it: a copy, so that it can be drawn at any time.
struct AttributeRow {
    std::string plug; ///< "node.attribute"
    std::string name;
    enum class Kind { boolean, integer, real, text } kind = Kind::real;
    bool is_input = true;
    bool has_changed = false; ///< since the UVs were made
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

    Subject subject;
    UvMap map;
    std::optional<MeshPicker> picker; ///< of the map's points; made when first asked for
    std::vector<AttributeRow> rows;   ///< of the unwrap node, or else of the newest maker
    std::string rows_node;
    bool has_changed_rows = false;    ///< another unwrap would use other settings than the last
    std::string undo_name, redo_name; ///< empty: nothing to undo or redo
    std::string scene_name;           ///< the scene's file
    bool is_modified = false;
    std::string status;         ///< what the last statement did, where the console says nothing
    size_t status_revision = 0; ///< of the console, when that statement began
    size_t map_revision = 0;    ///< counts up when `map` changes
    size_t scene_revision = 0;  ///< counts up with every refresh

    Display display = Display::charts;
    uint32_t hovered = k_none; ///< the chart under the pointer, wherever that is
    uint32_t chosen = k_none;  ///< the one that the keyboard stepped to
    uint32_t lit() const { return hovered != k_none ? hovered : chosen; }

    /// Takes over the scene as it is now. Evaluates nothing.
    void refresh();
    MeshPicker& made_picker();

    /// Puts statements to run; tells the user when they are refused because something runs.
    void run(const std::string& statements);

private:
    /// The settings that a node's UVs were made with, as far as the window saw it happen.
    struct Made {
        host::Mesh mesh; ///< the UVs; shares their storage
        int uv_set = -1;
        std::vector<AttributeRow> rows;
    };
    void take_rows();
    void compare_rows();
    std::map<std::string, Made> made_; ///< by node
};

/// Colours that pictures of layouts have too, as 0xAABBGGRR.
uint32_t chart_colour(uint32_t chart);
uint32_t stretch_colour(float stretch);
/// What a triangle has in a display.
uint32_t triangle_colour(const UvMap& map, uint32_t triangle, Display display);
/// The same per triangle corner; 12 bytes a triangle.
std::vector<uint32_t> corner_colours(const UvMap& map, Display display);

} // namespace window
