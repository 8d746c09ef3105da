/// The mesh that the panels show, the texture it is unwrapped for, and the unwrap node in its
/// history.
#pragma once

#include "host/graph/mesh_node.h"
#include "host/mesh/mesh.h"
#include "measure/layout.h"

#include <string>
#include <utility>
#include <vector>

namespace window {

/// The attribute of unwrap nodes that shows their overlay: seams that were there before the unwrap
/// in green, new ones in blue.
inline constexpr const char* k_overlay_attribute = "Visualization";

struct Subject {
    host::Ref<host::graph::Node> shape; ///< null if the scene has no mesh
    host::Ref<host::graph::Node> node;  ///< last unwrap node in its history, or null
    host::Mesh mesh;                    ///< shares storage with the shape
    int uv_set = -1;              ///< the set that `node` writes, else the current one; -1 if none
    measure::Texture texture;     ///< size set on `node`, else 512 x 512
    double gutter = 2.0;          ///< texels
    bool has_later_edits = false; ///< the UVs were edited after `node` made them

    std::string shape_name() const { return shape ? name_of(shape) : std::string(); }
    std::string node_name() const { return node ? name_of(node) : std::string(); }

private:
    static std::string name_of(const host::Ref<host::graph::Node>& node);
};

/// All mesh shapes that are not hidden or intermediate, in order of creation.
std::vector<host::graph::MeshNode*> visible_meshes();

/// Whether a node unwraps.
bool is_unwrap(const host::graph::Node& node);
/// Whether an unwrap node is to draw its seams.
bool is_overlay_on(host::graph::Node& node);

/// Finds the subject without evaluating nodes: the first selected mesh, else `last` if it is still
/// in the scene, else the newest visible mesh.
Subject find_subject(const Subject& last);

/// Evaluates every visible mesh, which runs pending unwraps. Returns false if any failed.
bool update_meshes();

/// Makes an unwrap node show its seams, or hide them; no step of undo.
void show_overlay(host::graph::Node& node, bool is_on);

/// What the unwrap nodes of the scene put out. A computation that stops half-way leaves its input
/// there, so a cancelled statement is taken back by more than undo.
class UnwrapResults {
public:
    /// Those of the present scene; shares storage with the meshes.
    static UnwrapResults now();
    /// Puts them back.
    void restore() const;
    /// The nodes that have computed since and may show other seams than those of their results
    /// here: of another layout, or, if borders are kept, those of their input.
    std::vector<host::Ref<host::graph::Node>> with_stale_seams() const;

private:
    struct Result {
        host::Ref<host::graph::Node> node;
        host::Mesh mesh;
        bool keeps_borders;
    };
    std::vector<Result> results_;
};

/// Scalar and text attributes of a node that are neither hidden nor in an array, inputs first, in
/// order of declaration; without those that every node has.
std::vector<host::graph::Slot*> editable_slots(host::graph::Node& node);

/// The statement that opens (`import`: imports) an .obj or .ma file or runs a .mel file; empty for
/// any other extension.
std::string statement_for_file(const std::string& path, bool import);

/// Why a file for which `statement_for_file` has no statement is not opened.
std::string refusal_of(const std::string& path);

/// Statements for files dropped on the window, in order. If `replaces`, the first mesh or scene
/// replaces the current scene; all others are imported. `refused` receives files of other types.
std::vector<std::string> statements_for_drop(const std::vector<std::string>& paths, bool replaces,
                                             std::vector<std::string>& refused);

} // namespace window
