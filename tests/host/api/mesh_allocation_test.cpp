/// Counts allocations: methods that plug-ins call per corner, edge or vertex must not allocate.
#include "host/mesh/mesh_object.h"
#include "tests/host/mesh/mesh_builder.h"

#include <maya/MFnMesh.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>

#include <cstdlib>
#include <gtest/gtest.h>
#include <new>

namespace {
unsigned long allocations = 0;
} // namespace

__attribute__((noinline)) void* operator new(std::size_t size) {
    allocations += 1;
    void* const memory = std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr)
        throw std::bad_alloc();
    return memory;
}
__attribute__((noinline)) void operator delete(void* memory) noexcept { std::free(memory); }
__attribute__((noinline)) void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

namespace {

struct Outputs {
    MIntArray ids;
    MIntArray faces;
    MFloatArray u;
    MFloatArray v;
    MPointArray points;
    MVector normal;
    int count = 0;
};

void walk_polygons(MObject& data, Outputs& out) {
    for (MItMeshPolygon polygons(data); !polygons.isDone(); polygons.next()) {
        polygons.getVertices(out.ids);
        polygons.getNormal(out.normal);
        polygons.numTriangles(out.count);
        for (int t = 0; t < out.count; ++t)
            polygons.getTriangle(t, out.points, out.ids);
    }
}

void walk_edges(MObject& data, Outputs& out) {
    for (MItMeshEdge edges(data); !edges.isDone(); edges.next()) {
        edges.getConnectedFaces(out.faces);
        out.count = edges.index(0) + edges.index(1);
    }
}

void walk_vertices(MObject& data, Outputs& out, const MString& set) {
    for (MItMeshVertex vertices(data); !vertices.isDone(); vertices.next()) {
        vertices.getConnectedEdges(out.ids);
        vertices.numConnectedEdges(out.count);
        vertices.getUVIndices(out.ids, &set);
        vertices.getUVs(out.u, out.v, out.faces, &set);
        vertices.numUVs(out.count, &set);
    }
}

void assign_all(MFnMesh& mesh, const MString& set) {
    const int polygons = mesh.numPolygons();
    for (int p = 0; p < polygons; ++p)
        for (int c = 0; c < mesh.polygonVertexCount(p); ++c)
            mesh.assignUV(p, c, (p + c) % 7, &set);
}

class MeshAllocation : public testing::TestWithParam<int> {
protected:
    static host::Mesh value() {
        return GetParam() == 0 ? mesh_builder::grid(30, 30).mesh() : mesh_builder::fan(500).mesh();
    }
};

TEST_P(MeshAllocation, DoesNotHappenOnceOutputArraysHaveGrown) {
    host::Mesh mesh = value();
    mesh.add_uv_set("map1");
    MObject data = host::make_mesh_data(mesh);
    const MString set("map1");
    MFnMesh functions(data);
    for (int i = 0; i < 7; ++i)
        functions.setUV(i, 0, 0);
    Outputs out;
    unsigned long second_time = 0;
    for (int time = 0; time < 2; ++time) {
        const unsigned long before = allocations;
        assign_all(functions, set);
        walk_polygons(data, out);
        walk_edges(data, out);
        walk_vertices(data, out, set);
        second_time = allocations - before;
    }
    EXPECT_EQ(second_time, 0u);
}

INSTANTIATE_TEST_SUITE_P(Meshes, MeshAllocation, testing::Values(0, 1),
                         [](const auto& info) { return info.param == 0 ? "grid" : "hub"; });

} // namespace
