/// Writes an atlas into a host mesh: one UV per polygon corner, in a named UV set.
#pragma once

#include "plugin/mesh_data.h"

#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

class Unwrapper;

/// Replaces the contents of the UV set named in the settings (created if missing) by the atlas: the
/// set's UVs are the atlas vertices in their order, unchanged, and every polygon corner gets the
/// atlas vertex of the last triangle corner that maps to it.
/// Shape:  `face_corners` is borrowed; its lists, concatenated, run parallel to `atlas_indices`. A
///         corner that no triangle maps to gets UV 0.
/// Errors: one line on standard error and the failing status of the host. A failure before the UV
///         set is created leaves the mesh untouched; a later one leaves the set partly written.
///         An atlas index list that is too short is a BUG.
MStatus apply_uvs(const Unwrapper& unwrapper, MObject& mesh, const array<Vertex>& atlas_vertices,
                  const array<uint32_t>& atlas_indices, const array<CornerList*>& face_corners);

/// Creates the UV set in the mesh data unless it exists.
/// Errors: one line on standard error and the status of the host.
MStatus ensure_uv_set(const MString& uv_set, MObject& mesh);
