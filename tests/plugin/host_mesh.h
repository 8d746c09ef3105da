/// Converts test meshes to mesh data of the host and reads such data back.
#pragma once

#include "tests/fixtures/meshes.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MString.h>

#include <cstdint>
#include <utility>
#include <vector>

/// Mesh data with the fixture's geometry and the empty UV set "map1", which is current.
MObject make_host_mesh(const fixtures::Mesh& mesh);
/// Mesh data with the fixture's geometry and the UV layout in "map1".
MObject make_host_mesh(const fixtures::Mesh& mesh, const fixtures::UvLayout& layout);
/// Writes a layout into a UV set, which is created if missing.
void set_layout(MObject& mesh, const fixtures::UvLayout& layout, const char* uv_set);

/// The contents of a UV set: values and, per polygon, the ids of its corners.
fixtures::UvLayout layout_of(MObject& mesh, const char* uv_set);
std::vector<std::string> uv_sets_of(MObject& mesh);
/// Whether every polygon corner has the same UVs in both layouts.
bool same_uvs(const fixtures::UvLayout& a, const fixtures::UvLayout& b);

std::vector<int> values_of(const MIntArray& list);
MIntArray int_array(const std::vector<int>& values);
/// Converts a flat list to pairs.
std::vector<std::pair<int, int>> pairs_of(const MIntArray& list);
