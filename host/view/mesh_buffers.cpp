#include "host/view/mesh_buffers.h"

#include "host/view/scene_shapes.h"

#include <GL/gl.h>
#include <GL/glext.h>

#include <algorithm>
#include <cmath>

namespace host {

using graph::Component;
using graph::ComponentKind;

namespace {

/// Cosine of the crease angle, about 40 degrees; edges bent by more are shaded sharp.
constexpr float k_crease = 0.766f;

float dot(const Float3& a, const Float3& b) { return a.x * b.x + a.y * b.y + a.z * b.z; }

Float3 to_float(const MVector& v) { return {float(v.x), float(v.y), float(v.z)}; }

/// Corners at one mesh vertex that share a normal.
struct Fan {
    Float3 first; ///< normal of the first corner, which others are compared to
    Float3 sum;
    uint32_t vertex;
};

/// Returns the surface vertex of each corner of the mesh.
std::vector<uint32_t> share_vertices(const Mesh& mesh, std::vector<SurfaceVertex>& vertices) {
    const Connectivity& faces = mesh.connectivity();
    std::vector<Float3> normals(faces.polygon_count());
    for (uint32_t p = 0; p < faces.polygon_count(); ++p)
        normals[p] = to_float(mesh.normal(p));
    std::vector<uint32_t> vertex_of(faces.corner_count());
    std::vector<Fan> fans;
    vertices.reserve(faces.vertex_count());
    for (uint32_t v = 0; v < faces.vertex_count(); ++v) {
        fans.clear();
        for (const uint32_t corner : faces.vertex_corners(v)) {
            const Float3& normal = normals[faces.corner_polygon(corner)];
            auto fan = std::find_if(fans.begin(), fans.end(), [&](const Fan& held) {
                return dot(held.first, normal) >= k_crease;
            });
            if (fan == fans.end()) {
                fans.push_back({normal, {}, uint32_t(vertices.size())});
                vertices.push_back({mesh.points()[v], {}});
                fan = fans.end() - 1;
            }
            fan->sum = {fan->sum.x + normal.x, fan->sum.y + normal.y, fan->sum.z + normal.z};
            vertex_of[corner] = fan->vertex;
        }
        for (const Fan& fan : fans)
            vertices[fan.vertex].normal = fan.sum; // normalised by GL_NORMALIZE
    }
    return vertex_of;
}

std::vector<uint32_t> edge_list(const Connectivity& faces) {
    std::vector<uint32_t> ends;
    ends.reserve(2 * size_t(faces.edge_count()));
    for (uint32_t e = 0; e < faces.edge_count(); ++e) {
        ends.push_back(faces.edge(e).first);
        ends.push_back(faces.edge(e).second);
    }
    return ends;
}

double mean_edge_length(const Mesh& mesh) {
    const Connectivity& faces = mesh.connectivity();
    double sum = 0.0;
    for (uint32_t e = 0; e < faces.edge_count(); ++e) {
        const Float3& a = mesh.points()[faces.edge(e).first];
        const Float3& b = mesh.points()[faces.edge(e).second];
        const Float3 way = {b.x - a.x, b.y - a.y, b.z - a.z};
        sum += std::sqrt(double(dot(way, way)));
    }
    return faces.edge_count() == 0 ? 0.0 : sum / faces.edge_count();
}

/// Indices of a component: into the points (vertices, edges) or the surface (faces).
std::vector<uint32_t> part_list(const MeshBuffer& buffer, const Component& component) {
    const Connectivity& faces = buffer.mesh.connectivity();
    std::vector<uint32_t> list;
    for (const int id : component.ids()) {
        const auto part = uint32_t(id);
        if (component.kind() == ComponentKind::vertex && part < faces.vertex_count())
            list.push_back(part);
        if (component.kind() == ComponentKind::edge && part < faces.edge_count())
            list.insert(list.end(), {faces.edge(part).first, faces.edge(part).second});
        if (component.kind() == ComponentKind::face && part < faces.polygon_count()) {
            const auto first = buffer.corners.begin() + 3 * (faces.first_corner(part) - 2L * part);
            list.insert(list.end(), first, first + 3 * (faces.corners_of(part) - 2));
        }
    }
    return list;
}

void drop_name(GLuint& name) {
    if (name != 0)
        glDeleteBuffers(1, &name);
    name = 0;
}

bool same_storage(const Mesh& a, const Mesh& b) {
    return &a.points() == &b.points() && &a.connectivity() == &b.connectivity();
}

} // namespace

void make_surface(const Mesh& mesh, std::vector<SurfaceVertex>& vertices,
                  std::vector<uint32_t>& indices) {
    const Connectivity& faces = mesh.connectivity();
    vertices.clear();
    indices.clear();
    const std::vector<uint32_t> vertex_of = share_vertices(mesh, vertices);
    indices.reserve(3 * (size_t(faces.corner_count()) - 2 * size_t(faces.polygon_count())));
    for (uint32_t p = 0; p < faces.polygon_count(); ++p)
        for (const uint32_t corner : mesh.triangles(p))
            indices.push_back(vertex_of[faces.first_corner(p) + corner]);
}

GLuint MeshBuffers::upload(GLenum target, const void* data, size_t bytes) {
    GLuint name = 0;
    glGenBuffers(1, &name);
    glBindBuffer(target, name);
    glBufferData(target, GLsizeiptr(bytes), data, GL_STATIC_DRAW);
    glBindBuffer(target, 0);
    counts_.bytes_uploaded += bytes;
    return name;
}

void MeshBuffers::build(const Mesh& mesh, MeshBuffer& buffer) {
    buffer.mesh = mesh;
    // UVs are not drawn, and sharing them would make later writes to them copy.
    while (buffer.mesh.uv_set_count() > 0)
        buffer.mesh.remove_uv_set(0);
    std::vector<SurfaceVertex> vertices;
    make_surface(mesh, vertices, buffer.corners);
    const std::vector<uint32_t>& indices = buffer.corners;
    buffer.surface =
        upload(GL_ARRAY_BUFFER, vertices.data(), vertices.size() * sizeof(SurfaceVertex));
    buffer.triangles = {upload(GL_ELEMENT_ARRAY_BUFFER, indices.data(), indices.size() * 4),
                        GLsizei(indices.size())};
    const std::vector<Float3>& points = mesh.points();
    buffer.points = upload(GL_ARRAY_BUFFER, points.data(), points.size() * sizeof(Float3));
    const std::vector<uint32_t> ends = edge_list(mesh.connectivity());
    buffer.edges = {upload(GL_ELEMENT_ARRAY_BUFFER, ends.data(), ends.size() * 4),
                    GLsizei(ends.size())};
    buffer.bounds = bounds_of(mesh);
    buffer.edge_length = mean_edge_length(mesh);
    counts_.buffers_built += 1;
    counts_.buffers_held += 1;
}

void MeshBuffers::drop(MeshBuffer& buffer) {
    for (GLuint* name :
         {&buffer.surface, &buffer.points, &buffer.triangles.name, &buffer.edges.name})
        drop_name(*name);
    for (MeshBuffer::Part& part : buffer.parts)
        drop_name(part.elements.name);
    counts_.buffers_held -= 1 + buffer.parts.size();
}

void MeshBuffers::begin_frame() {
    for (const auto& buffer : held_) {
        buffer->is_used = false;
        for (MeshBuffer::Part& part : buffer->parts)
            part.is_used = false;
    }
}

MeshBuffer* MeshBuffers::get(const Mesh& mesh) {
    auto found = std::find_if(held_.begin(), held_.end(),
                              [&](const auto& buffer) { return same_storage(buffer->mesh, mesh); });
    if (found == held_.end()) {
        auto made = std::make_unique<MeshBuffer>();
        for (int old = 0; old < 16 && glGetError() != GL_NO_ERROR; ++old) {
        }
        build(mesh, *made);
        if (glGetError() == GL_OUT_OF_MEMORY) {
            drop(*made);
            return nullptr;
        }
        held_.push_back(std::move(made));
        found = held_.end() - 1;
    }
    (*found)->is_used = true;
    return found->get();
}

ElementBuffer MeshBuffers::get(MeshBuffer& buffer, const Ref<Component>& component) {
    if (!component || component->kind() == ComponentKind::uv)
        return {};
    for (MeshBuffer::Part& part : buffer.parts)
        if (part.component == component) {
            part.is_used = true;
            return part.elements;
        }
    const std::vector<uint32_t> list = part_list(buffer, *component);
    const ElementBuffer elements = {upload(GL_ELEMENT_ARRAY_BUFFER, list.data(), list.size() * 4),
                                    GLsizei(list.size())};
    buffer.parts.push_back({component, elements, true});
    counts_.buffers_built += 1;
    counts_.buffers_held += 1;
    return elements;
}

void MeshBuffers::end_frame() {
    for (const auto& buffer : held_) {
        if (!buffer->is_used)
            drop(*buffer);
        const auto unused =
            std::remove_if(buffer->parts.begin(), buffer->parts.end(), [&](MeshBuffer::Part& part) {
                if (part.is_used || !buffer->is_used)
                    return false;
                drop_name(part.elements.name);
                counts_.buffers_held -= 1;
                return true;
            });
        buffer->parts.erase(unused, buffer->parts.end());
    }
    held_.erase(std::remove_if(held_.begin(), held_.end(),
                               [](const auto& buffer) { return !buffer->is_used; }),
                held_.end());
}

void MeshBuffers::release() {
    begin_frame();
    end_frame();
}

} // namespace host
