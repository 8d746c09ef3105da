#include "tests/plugin/host_mesh.h"

#include <maya/MFloatArray.h>
#include <maya/MFnMesh.h>
#include <maya/MFnMeshData.h>
#include <maya/MItMeshPolygon.h>
#include <maya/MPointArray.h>
#include <maya/MStringArray.h>

#include <gtest/gtest.h>

MObject make_host_mesh(const fixtures::Mesh& mesh) {
    MPointArray points;
    for (const auto& p : mesh.points)
        points.append(MPoint(p[0], p[1], p[2]));
    MIntArray counts, connects;
    for (const auto& polygon : mesh.polygons) {
        counts.append(static_cast<int>(polygon.size()));
        for (const int v : polygon)
            connects.append(v);
    }
    MObject data = MFnMeshData().create();
    MFnMesh mesh_fn;
    MStatus status;
    mesh_fn.create(static_cast<int>(mesh.points.size()), static_cast<int>(mesh.polygons.size()),
                   points, counts, connects, data, &status);
    EXPECT_TRUE(status) << mesh.name;
    if (mesh_fn.numUVSets() == 0) {
        MString name = "map1";
        EXPECT_TRUE(MFnMesh(data).createUVSetDataMesh(name));
    }
    return data;
}

MObject make_host_mesh(const fixtures::Mesh& mesh, const fixtures::UvLayout& layout) {
    MObject data = make_host_mesh(mesh);
    set_layout(data, layout, "map1");
    return data;
}

void set_layout(MObject& mesh, const fixtures::UvLayout& layout, const char* uv_set) {
    MFnMesh mesh_fn(mesh);
    MString name = uv_set;
    const std::vector<std::string> sets = uv_sets_of(mesh);
    if (std::find(sets.begin(), sets.end(), uv_set) == sets.end()) {
        ASSERT_TRUE(mesh_fn.createUVSetDataMesh(name));
    }
    MFloatArray u, v;
    for (const auto& uv : layout.uvs) {
        u.append(uv[0]);
        v.append(uv[1]);
    }
    MIntArray counts, ids;
    for (const auto& polygon : layout.ids) {
        counts.append(static_cast<int>(polygon.size()));
        for (const int id : polygon)
            ids.append(id);
    }
    ASSERT_TRUE(mesh_fn.clearUVs(&name));
    ASSERT_TRUE(mesh_fn.setUVs(u, v, &name));
    ASSERT_TRUE(mesh_fn.assignUVs(counts, ids, &name));
}

fixtures::UvLayout layout_of(MObject& mesh, const char* uv_set) {
    MFnMesh mesh_fn(mesh);
    const MString name = uv_set;
    MFloatArray u, v;
    MIntArray counts, ids;
    mesh_fn.getUVs(u, v, &name);
    mesh_fn.getAssignedUVs(counts, ids, &name);
    fixtures::UvLayout layout;
    for (unsigned i = 0; i < u.length(); ++i)
        layout.uvs.push_back({u[i], v[i]});
    unsigned at = 0;
    for (unsigned p = 0; p < counts.length(); ++p) {
        layout.ids.emplace_back();
        for (int c = 0; c < counts[p]; ++c)
            layout.ids.back().push_back(ids[at++]);
    }
    return layout;
}

std::vector<std::string> uv_sets_of(MObject& mesh) {
    MStringArray names;
    MFnMesh(mesh).getUVSetNames(names);
    std::vector<std::string> result;
    for (unsigned i = 0; i < names.length(); ++i)
        result.emplace_back(names[i].asChar());
    return result;
}

bool same_uvs(const fixtures::UvLayout& a, const fixtures::UvLayout& b) {
    if (a.ids.size() != b.ids.size())
        return false;
    for (size_t p = 0; p < a.ids.size(); ++p) {
        if (a.ids[p].size() != b.ids[p].size())
            return false;
        for (size_t c = 0; c < a.ids[p].size(); ++c)
            if (a.uvs[static_cast<size_t>(a.ids[p][c])] != b.uvs[static_cast<size_t>(b.ids[p][c])])
                return false;
    }
    return true;
}

std::vector<int> values_of(const MIntArray& list) {
    std::vector<int> values;
    for (unsigned i = 0; i < list.length(); ++i)
        values.push_back(list[i]);
    return values;
}

MIntArray int_array(const std::vector<int>& values) {
    MIntArray list;
    for (const int value : values)
        list.append(value);
    return list;
}

std::vector<std::pair<int, int>> pairs_of(const MIntArray& list) {
    EXPECT_EQ(list.length() % 2, 0u);
    std::vector<std::pair<int, int>> pairs;
    for (unsigned i = 0; i + 1 < list.length(); i += 2)
        pairs.emplace_back(list[i], list[i + 1]);
    return pairs;
}
