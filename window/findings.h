/// What `tessora verify` would say about the UVs that are shown.
#pragma once

#include "measure/verify.h"
#include "window/subject.h"

#include <string>
#include <vector>

namespace window {

/// The guarantees that the layout breaks, for the texture and gutter of the subject, and for the
/// stretch limit of its unwrap node (0.15 without one). Empty without UVs.
/// Cost: as `tessora verify`, near-linear in triangles.
std::vector<measure::Breach> find_breaches(const Subject& subject);

/// The statement that selects components of a shape, or adds them to the selection: "shape.f[3]",
/// "shape.f[5:9]", with runs as ranges. `kind`: f for polygons, e for edges. `ids`: ascending.
std::string statement_selecting(const std::string& shape, const std::vector<uint32_t>& ids,
                                char kind, bool adds = false);

} // namespace window
