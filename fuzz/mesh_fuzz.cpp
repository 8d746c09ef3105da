/// Fuzz target: the host's mesh through its public interface. The input is a mesh with polygons of
/// any shape, then a series of calls with ids in and out of range.
#include "fuzz/finding.h"
#include "host/mesh/mesh_object.h"

#include <maya/MFnMesh.h>
#include <maya/MFnMeshData.h>
#include <maya/MItMeshEdge.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MItMeshVertex.h>
#include <maya/MPoint.h>
#include <maya/MStringArray.h>

#include <fuzzer/FuzzedDataProvider.h>

namespace {

host::Mesh random_mesh(FuzzedDataProvider& input) {
    const uint32_t vertices = input.ConsumeIntegralInRange<uint32_t>(0, 24);
    std::vector<host::Float3> points(vertices);
    for (host::Float3& p : points)
        p = {float(input.ConsumeIntegral<int8_t>()), float(input.ConsumeIntegral<int8_t>()),
             input.ConsumeBool() ? 0.0f : float(input.ConsumeIntegral<int8_t>())};
    std::vector<uint32_t> counts, corners;
    for (uint32_t p = input.ConsumeIntegralInRange<uint32_t>(0, 12); p > 0; --p) {
        counts.push_back(input.ConsumeIntegralInRange<uint32_t>(2, 14));
        for (uint32_t c = 0; c < counts.back(); ++c)
            corners.push_back(input.ConsumeIntegralInRange<uint32_t>(0, vertices));
    }
    host::Mesh mesh;
    host::Mesh::make(std::move(points), std::move(counts), std::move(corners), mesh);
    return mesh;
}

MIntArray random_ids(FuzzedDataProvider& input) {
    MIntArray ids;
    for (uint32_t n = input.ConsumeIntegralInRange<uint32_t>(0, 40); n > 0; --n)
        ids.append(input.ConsumeIntegral<int8_t>());
    return ids;
}

MFloatArray random_floats(FuzzedDataProvider& input) {
    MFloatArray values;
    for (uint32_t n = input.ConsumeIntegralInRange<uint32_t>(0, 12); n > 0; --n)
        values.append(input.ConsumeFloatingPoint<float>());
    return values;
}

/// One call of the function set.
void change(FuzzedDataProvider& input, MFnMesh& mesh) {
    MString name = input.ConsumeRandomLengthString(4).c_str();
    const MString* set = input.ConsumeBool() ? &name : nullptr;
    const int a = input.ConsumeIntegral<int8_t>(), b = input.ConsumeIntegral<int8_t>();
    switch (input.ConsumeIntegralInRange<int>(0, 8)) {
    case 0:
        mesh.createUVSetDataMesh(name);
        break;
    case 1:
        mesh.deleteUVSet(name);
        break;
    case 2:
        mesh.renameUVSet(name, input.ConsumeRandomLengthString(4).c_str());
        break;
    case 3:
        mesh.setUVs(random_floats(input), random_floats(input), set);
        break;
    case 4:
        mesh.setUV(a, 0.25f, 0.5f, set);
        break;
    case 5:
        mesh.assignUV(a, b, input.ConsumeIntegral<int8_t>(), set);
        break;
    case 6:
        mesh.assignUVs(random_ids(input), random_ids(input), set);
        break;
    case 7:
        mesh.clearUVs(set);
        break;
    default:
        mesh.setCurrentUVSetName(name);
    }
}

/// Reads every polygon with its triangles, edges and vertices, and checks that all ids exist.
/// Returns the fault found; "" if none.
std::string walk(MObject& data, MFnMesh& mesh) {
    for (MItMeshPolygon polygon(data); !polygon.isDone(); polygon.next()) {
        MIntArray vertices, triangle_vertices;
        polygon.getVertices(vertices);
        MPointArray points;
        if (polygon.getTriangles(points, triangle_vertices) &&
            triangle_vertices.length() != 3 * (vertices.length() - 2))
            return "a polygon of n corners has not n - 2 triangles";
        for (unsigned int i = 0; i < triangle_vertices.length(); ++i)
            if (triangle_vertices[i] < 0 || triangle_vertices[i] >= mesh.numVertices())
                return "a triangle names no vertex";
    }
    for (MItMeshEdge edge(data); !edge.isDone(); edge.next()) {
        MIntArray faces;
        edge.getConnectedFaces(faces);
        if (faces.length() == 0)
            return "an edge without polygons";
    }
    for (MItMeshVertex vertex(data); !vertex.isDone(); vertex.next()) {
        MIntArray edges;
        vertex.getConnectedEdges(edges);
    }
    MIntArray counts, ids;
    if (mesh.getAssignedUVs(counts, ids))
        for (unsigned int i = 0; i < ids.length(); ++i)
            if (ids[i] < 0 || ids[i] >= mesh.numUVs())
                return "an assigned UV does not exist";
    return "";
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    FuzzedDataProvider input(bytes, size);
    MObject data = host::make_mesh_data(random_mesh(input));
    MFnMesh mesh(data);
    for (int calls = 0; calls < 40 && input.remaining_bytes() > 0; ++calls)
        change(input, mesh);
    report_finding(walk(data, mesh));
    return 0;
}
