/// History nodes that pack the charts of a mesh: type polyLayoutUV. The host cannot pack; a program
/// that can gives it a packer.
#pragma once

#include "host/graph/node.h"
#include "host/mesh/mesh.h"

#include <string>
#include <vector>

namespace host::graph {

enum class UvTurns { none, quarter, any };

struct UvLayout {
    int width = 512, height = 512; ///< texels, of the texture
    double gutter = 2.0;           ///< between charts, texels
    UvTurns turns = UvTurns::any;
    bool grows = true;       ///< charts grow, or shrink, alike to fill the texture
    bool is_uniform = false; ///< every chart first gets the same number of texels per area in space
    /// Polygons, ascending. Their charts stay where they are if `locks_faces`, else only their
    /// charts are packed; empty: all charts are packed.
    std::vector<std::uint32_t> faces;
    bool locks_faces = false;
};

/// Packs the charts of a UV set. Returns the set with its new UVs; ids of corners stay the same
/// unless charts share a UV. Errors: false with a sentence in `error`.
using UvPacker = bool (*)(const Mesh& mesh, std::uint32_t set, const UvLayout& layout,
                          UvSet& packed, std::string& error);

/// Sets what nodes of type polyLayoutUV pack with. Without a packer they pass their mesh on.
MHOST_EXPORT void set_uv_packer(UvPacker packer);

/// Sets the attributes of a polyLayoutUV node, undoable. Tells it the result for `mesh`, which is
/// about to enter it, so that it need not pack again.
MHOST_EXPORT MStatus set_up_layout_node(Node& node, const UvLayout& layout, const Mesh& mesh,
                                        std::uint32_t set, const UvSet& packed);

} // namespace host::graph
