/// Writes an atlas into a host mesh: one UV per polygon corner, in a named UV set.
#pragma once

#include "plugin/mesh_data.h"

#include <maya/MObject.h>
#include <maya/MStatus.h>
#include <maya/MString.h>

class Unwrapper;

/// Replaces the UV set that the settings name (it is created if need be) by the atlas: the set's
/// UVs are the atlas vertices in their order, unchanged, and every polygon corner gets the atlas
/// vertex of the last triangle corner that maps to it.
/// Shape:  `face_corners` is borrowed; walked polygon by polygon it passes the corners of
///         `atlas_indices`. A corner that no triangle reaches gets UV 0.
/// Errors: one line on standard error and the failing status of the host. Up to the UV set's
///         creation the mesh is untouched; later failures leave the set as far as it was written.
///         An atlas index list that is too short is a BUG.
MStatus apply_uvs(const Unwrapper& unwrapper, MObject& mesh, const array<Vertex>& atlas_vertices,
                  const array<uint32_t>& atlas_indices, const array<CornerList*>& face_corners);

/// Makes sure that mesh data has a UV set of this name.
/// Errors: one line on standard error and the status of the host.
MStatus ensure_uv_set(const MString& uv_set, MObject& mesh);
