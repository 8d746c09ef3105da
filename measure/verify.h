/// Holds a measured layout against what an unwrap promises.
#pragma once

#include "measure/measure.h"

#include <cstdint>
#include <string>
#include <vector>

namespace measure {

/// What is promised. Tolerances are in docs/measures.md.
struct Promise {
    double gutter = 2.0;       ///< least gap between charts, texels
    double max_stretch = 0.15; ///< largest share of sampling rate lost by a chart, 0..1
};

/// One broken guarantee.
struct Breach {
    const char* name;               ///< key for programs: "flipped", "gap", ...
    std::string sentence;           ///< for a person, without a full stop
    std::vector<uint32_t> polygons; ///< ascending
};

/// Charts over the stretch limit, and whether that is allowed: a chart of one polygon may be over
/// the limit, since it cannot be divided.
struct OverLimit {
    std::vector<uint32_t> allowed; ///< polygons, ascending
    std::vector<uint32_t> broken;  ///< polygons, ascending
};

OverLimit find_over_limit(const Layout& layout, const Measures& measures, double max_stretch);

/// Empty: everything promised holds.
std::vector<Breach> verify(const Layout& layout, const Measures& measures, const Promise& promise);

} // namespace measure
