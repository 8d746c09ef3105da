/// A cache of meshes in OpenGL buffers.
///
/// Entries are keyed by a mesh's copy-on-write storage. An entry holds a copy of the mesh, so its
/// storage cannot be reused, and a modified mesh has different storage. Instances and duplicates
/// share an entry. Entries not used during a frame are dropped at its end.
///
/// Every function requires the context in which the buffers were created to be current.
#pragma once

#include "host/graph/selection.h"
#include "host/mesh/mesh.h"
#include "host/view/cameras.h"
#include "host/view/gl_panels.h"

#include <GL/gl.h>

#include <memory>
#include <vector>

namespace host {

/// An index buffer into one of a mesh's vertex arrays.
struct ElementBuffer {
    GLuint name = 0;
    GLsizei count = 0;
};

/// One mesh. `surface` holds positions with normals, vertices duplicated along creases; `points`
/// holds the mesh's vertices.
struct MeshBuffer {
    Mesh mesh; ///< without UV sets
    GLuint surface = 0;
    GLuint points = 0;
    ElementBuffer triangles;       ///< indices into surface, polygon by polygon
    std::vector<uint32_t> corners; ///< the same indices in memory, to select faces from
    ElementBuffer edges;           ///< indices into points
    Bounds bounds;
    double edge_length = 0.0; ///< mean length of an edge
    bool is_used = false;

    struct Part {
        Ref<graph::Component> component;
        ElementBuffer elements; ///< triangles, lines or points
        bool is_used = false;
    };
    std::vector<Part> parts;
};

class MeshBuffers {
public:
    explicit MeshBuffers(DrawCounts& counts) : counts_(counts) {}

    void begin_frame();
    /// Returns the buffers of a mesh, built on first use; null if OpenGL is out of memory.
    MeshBuffer* get(const Mesh& mesh);
    /// Returns the indices of a face, edge or vertex component; empty for UVs.
    ElementBuffer get(MeshBuffer& buffer, const Ref<graph::Component>& component);
    void end_frame();
    void release();

private:
    void build(const Mesh& mesh, MeshBuffer& buffer);
    void drop(MeshBuffer& buffer);
    GLuint upload(GLenum target, const void* data, size_t bytes);

    std::vector<std::unique_ptr<MeshBuffer>> held_;
    DrawCounts& counts_;
};

/// Vertex layout of the surface buffer.
struct SurfaceVertex {
    Float3 position;
    Float3 normal;
};

/// Builds the surface's vertices and triangles. Corners at a mesh vertex share a surface vertex if
/// their polygons' normals differ by less than the crease angle from the first one's.
void make_surface(const Mesh& mesh, std::vector<SurfaceVertex>& vertices,
                  std::vector<uint32_t>& indices);

} // namespace host
