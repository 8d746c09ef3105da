/// Meshes in OpenGL buffers, kept for as long as they are drawn and do not change.
///
/// A mesh is known by its storage, which copies share and writers replace: an entry holds a copy of
/// the mesh, so its storage stays where it is, and a mesh that was written has another one.
/// Instances and duplicates share an entry. What a frame did not use is dropped at its end.
///
/// Every function needs the context current that the buffers were made in.
#pragma once

#include "host/graph/selection.h"
#include "host/mesh/mesh.h"
#include "host/view/cameras.h"
#include "host/view/gl_panels.h"

#include <GL/gl.h>

#include <memory>
#include <vector>

namespace host {

/// A list of elements to draw from one of the vertex arrays of a mesh.
struct ElementBuffer {
    GLuint name = 0;
    GLsizei count = 0;
};

/// One mesh. The surface has vertices of its own (position, normal), split where the surface is
/// creased; the points are the mesh's own.
struct MeshBuffer {
    Mesh mesh; ///< without UV sets
    GLuint surface = 0;
    GLuint points = 0;
    ElementBuffer triangles;       ///< of the surface, polygon after polygon
    std::vector<uint32_t> corners; ///< the same list, for parts of it
    ElementBuffer edges;           ///< of the points
    Bounds bounds;
    double edge_length = 0.0; ///< mean
    bool is_used = false;

    struct Part {
        graph::Ref<graph::Component> component;
        ElementBuffer elements; ///< triangles, lines or points
        bool is_used = false;
    };
    std::vector<Part> parts;
};

class MeshBuffers {
public:
    explicit MeshBuffers(DrawCounts& counts) : counts_(counts) {}

    void begin_frame();
    /// Null when OpenGL has no memory for it.
    MeshBuffer* get(const Mesh& mesh);
    /// Faces, edges or vertices of a mesh; UVs give nothing.
    ElementBuffer get(MeshBuffer& buffer, const graph::Ref<graph::Component>& component);
    void end_frame();
    void release();

private:
    void build(const Mesh& mesh, MeshBuffer& buffer);
    void drop(MeshBuffer& buffer);
    GLuint upload(GLenum target, const void* data, size_t bytes);

    std::vector<std::unique_ptr<MeshBuffer>> held_;
    DrawCounts& counts_;
};

/// Position and normal, as the surface buffer has them.
struct SurfaceVertex {
    Float3 position;
    Float3 normal;
};

/// The surface's vertices and triangles: corners of a vertex share one where their polygons'
/// normals are within `k_crease` of the first one's.
void make_surface(const Mesh& mesh, std::vector<SurfaceVertex>& vertices,
                  std::vector<uint32_t>& indices);

} // namespace host
