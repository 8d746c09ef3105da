/// Checks a measured layout against the guarantees of an unwrap.
#pragma once

#include "measure/measure.h"

#include <cstdint>
#include <string>
#include <vector>

namespace measure {

/// The guarantees. Tolerances: docs/measures.md.
struct Promise {
    double gutter = 2.0;       ///< minimum gap between charts, texels
    double max_stretch = 0.15; ///< maximum fraction of the sampling rate a chart loses, 0..1
};

/// A violated guarantee.
struct Breach {
    const char* name;               ///< machine-readable key: "flipped", "gap", ...
    std::string sentence;           ///< message, without a full stop
    std::vector<uint32_t> polygons; ///< ascending
};

/// Polygons of charts over the stretch limit. A chart of a single polygon is allowed to exceed it,
/// since it cannot be cut further.
struct OverLimit {
    std::vector<uint32_t> allowed; ///< polygons that are charts by themselves, ascending
    std::vector<uint32_t> broken;  ///< all other polygons over the limit, ascending
};

OverLimit find_over_limit(const Layout& layout, const Measures& measures, double max_stretch);

/// Returns the violated guarantees; empty if all hold.
std::vector<Breach> verify(const Layout& layout, const Measures& measures, const Promise& promise);

} // namespace measure
