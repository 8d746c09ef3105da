/// Brings the texture coordinates of an atlas into the unit square of its texture. The three steps
/// are made to run one after the other on the mesh that the atlas call gave.
///
/// All arithmetic is single precision; the texture's sizes are converted first.
/// Errors: each returns false at once, without a line, if the vertex buffer cannot be locked.
#pragma once

#include "corelib/math/atlas_context.h"

/// Scales everything by the shorter texture side over the longer one if any coordinate exceeds 1.
bool fit_uv_range(AtlasContext& context, ID3DXMesh* mesh);

/// Stretches the coordinates along the shorter texture side, so that charts keep their shape when
/// the unit square is shown with the texture's proportions.
bool correct_aspect(AtlasContext& context, ID3DXMesh* mesh);

/// Shrinks the atlas to leave half a gutter free along the longer texture side's ends.
bool apply_gutter_margin(AtlasContext& context, ID3DXMesh* mesh);
