/// Fixtures as mesh data of the host, and what tests read back from such data.
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
/// The same with a layout in "map1".
MObject make_host_mesh(const fixtures::Mesh& mesh, const fixtures::UvLayout& layout);
/// Puts a layout into a set, which is made if need be.
void set_layout(MObject& mesh, const fixtures::UvLayout& layout, const char* uv_set);

/// A UV set as it stands: values and, per polygon, the ids of its corners.
fixtures::UvLayout layout_of(MObject& mesh, const char* uv_set);
std::vector<std::string> uv_sets_of(MObject& mesh);
/// Whether every corner has the same texture coordinates in both.
bool same_uvs(const fixtures::UvLayout& a, const fixtures::UvLayout& b);

std::vector<int> values_of(const MIntArray& list);
MIntArray int_array(const std::vector<int>& values);
/// The pairs of a flat list.
std::vector<std::pair<int, int>> pairs_of(const MIntArray& list);
