/// The statements that change charts in the texture; each is one step of undo.
#pragma once

#include "window/subject.h"
#include "window/uv_map.h"

#include <string>
#include <vector>

namespace window {

/// The charts of a mesh that statements name.
struct ChartsOf {
    std::string shape; ///< its path
    const UvMap& map;
};

/// A change of charts in the texture: turned and scaled about `pivot`, then moved.
struct ChartChange {
    double move[2] = {0.0, 0.0}; ///< in UVs
    double angle = 0.0;          ///< degrees, counter-clockwise
    double scale = 1.0;
    double pivot[2] = {0.0, 0.0};
};
/// The statement that makes the change; there must be charts.
std::string statement_changing(const ChartsOf& all, const std::vector<uint32_t>& charts,
                               const ChartChange& change);

/// The statement that packs all charts but the locked ones, for the texture and the gutter of the
/// subject.
std::string statement_packing(const ChartsOf& all, const Subject& subject,
                              const std::vector<uint32_t>& locked);

} // namespace window
