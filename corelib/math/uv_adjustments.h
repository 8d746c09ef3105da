/// Brings the UVs of an atlas into the unit square of its texture: three steps, to be run in this
/// order on the mesh that the atlas call returned.
///
/// All arithmetic is single precision; the texture's sizes are converted first.
/// Errors: each returns false, without a log line, if the vertex buffer cannot be locked.
#pragma once

#include "corelib/math/atlas_context.h"

/// Scales everything by the shorter texture side over the longer one if any coordinate exceeds 1.
bool fit_uv_range(AtlasContext& context, ID3DXMesh* mesh);

/// Scales the coordinates up along the shorter texture side, so that charts keep their shape when
/// the unit square is mapped to a texture that is not square.
bool correct_aspect(AtlasContext& context, ID3DXMesh* mesh);

/// Shrinks the atlas so that half a gutter stays free at both ends of the longer texture side.
bool apply_gutter_margin(AtlasContext& context, ID3DXMesh* mesh);
