/// Reads a host mesh into flat lists.
#pragma once

#include "plugin/mesh_data.h"

#include <maya/MIntArray.h>
#include <maya/MObject.h>
#include <maya/MStatus.h>

class Unwrapper;

/// Fills `data` from the mesh: vertices, the host's triangulation, the map from triangle corners to
/// polygon corners, and the flags of every triangle edge.
/// Positions are in object space. Existing seams are those of the mesh's current UV set or, if it
/// has none, of the set named in the settings.
/// Shape:  `seam_pairs` (may be null) gets two vertex ids per triangle edge on a UV border: an edge
///         between two triangles is listed twice, once in each direction.
/// Lists:  `vertices`, `indices` and `face_corners` are emptied first. Deliberately, `cut_edges`
/// and
///         `real_edges` are not: they match `indices` only if they were empty before.
/// Errors: one line on standard error and the failing status of the host; the lists then hold what
///         was read so far.
/// Cost:   O(corners log valence); shows percent of polygons done in the progress window if held.
MStatus collect_mesh_data(const Unwrapper& unwrapper, MObject& mesh, MeshData& data,
                          MIntArray* seam_pairs);

/// The same for the seam pairs alone: reads what the other reads, normals for creases excepted, and
/// keeps nothing else.
MStatus collect_mesh_data(const Unwrapper& unwrapper, MObject& mesh, MIntArray* seam_pairs);
