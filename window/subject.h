/// What the window's panels tell about: the mesh in the scene that the user works on, the texture
/// it is unwrapped for, and the unwrap node in its history.
#pragma once

#include "host/graph/mesh_node.h"
#include "host/mesh/mesh.h"
#include "measure/layout.h"

#include <string>
#include <vector>

namespace window {

struct Subject {
    host::graph::Ref<host::graph::Node> shape; ///< null: there is no mesh
    host::graph::Ref<host::graph::Node> node;  ///< the newest unwrap node above it, or null
    host::Mesh mesh;                           ///< shares the shape's storage
    int uv_set = -1;                           ///< the one the node writes, else the current one
    measure::Texture texture;                  ///< the node's, else 512 x 512
    double gutter = 2.0;                       ///< texels

    std::string shape_name() const { return shape ? name_of(shape) : std::string(); }
    std::string node_name() const { return node ? name_of(node) : std::string(); }

private:
    static std::string name_of(const host::graph::Ref<host::graph::Node>& node);
};

/// All shapes with a mesh that a user can see, in the order in which they entered the scene.
std::vector<host::graph::MeshNode*> visible_meshes();

/// Finds the subject without evaluating anything: the first selected mesh, else `last` while it is
/// in the scene, else the newest visible one.
Subject find_subject(const Subject& last);

/// Brings every visible mesh up to date: this is where unwrapping happens. False when one failed.
bool update_meshes();

/// Attributes of a node that a person may look at or change: scalars and texts that are neither
/// hidden nor part of an array, inputs first, in the order of their declaration.
std::vector<host::graph::Slot*> editable_slots(host::graph::Node& node);

/// The statement that opens, imports or runs a file, by its extension; empty for one that is none
/// of .obj, .ma, .mel. `import`: add to the scene instead of replacing it.
std::string statement_for_file(const std::string& path, bool import);

/// The statements for files that were dropped in, in their order. The first mesh or scene replaces
/// what is there when `replaces`; every other one is added to it. What is no such file is
/// `refused`.
std::vector<std::string> statements_for_drop(const std::vector<std::string>& paths, bool replaces,
                                             std::vector<std::string>& refused);

} // namespace window
