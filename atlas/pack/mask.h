/// A chart as a set of grid cells: every cell within a given distance of it.
#pragma once

#include "atlas/pack/chains.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// The largest level with 2^level <= length, which is > 0.
inline uint32_t level_of(uint32_t length) { return 31 - uint32_t(__builtin_clz(length)); }

/// Cells x .. x+length-1 of a mask's row.
struct Run {
    uint32_t row = 0;
    uint32_t x = 0;
    uint32_t length = 0;
};

/// Cell (x, y) is bit x%64 of word y*words + x/64. Bits at and beyond `width` are 0.
struct Mask {
    uint32_t width = 0;  ///< cells
    uint32_t height = 0; ///< cells
    uint32_t words = 0;  ///< per row
    uint32_t cells = 0;  ///< number of set cells
    double mean_row = 0; ///< of the cells that are set
    std::vector<uint64_t> bits;
    std::vector<Run> runs;  ///< horizontal runs of set cells, in the order of testing
    uint32_t run_level = 0; ///< of the longest run: 2^level <= length < 2^(level+1)
    Vec2 origin;            ///< cell = scale * turned point - origin
    /// Level and lower left cell of a square of 2^level x 2^level set cells with the highest level.
    uint32_t square_level = 0, square_x = 0, square_y = 0;

    uint64_t row_word(uint32_t y, uint32_t word) const { return bits[size_t(y) * words + word]; }
};

/// Working memory for making masks; keeps its memory between them.
struct MaskWork {
    std::vector<Vec2> points;
    std::vector<uint64_t> flips, square, smaller_square;
    std::vector<Run> runs;
    std::vector<uint32_t> row_begin, rows;
};

/// Draws chart `shape`, turned, scaled and widened by `radius`: sets every cell whose closed square
/// comes within `radius` cells of the chart, and few others. `scale` is cells per chart unit,
/// `radius` > 0 is in cells and must include the chains' tolerance. A shape without
/// chains makes an empty mask.
/// Cost: O(border length in cells * radius + cells / 64).
void draw_mask(const ChartChains& chains, const ChartShape& shape, Turn turn, double scale,
               double radius, Mask& mask, MaskWork& work);

/// Draws a kept chart, whose points times `scale`, turned and moved by `shift` are cells, into a
/// mask of the size of a tile, clipped to it. Width, height, words and bits must be set; the
/// chart's cells are added. Only bits are changed.
void draw_in_place(const ChartChains& chains, const ChartShape& shape, Turn turn, double scale,
                   Vec2 shift, double radius, Mask& mask, MaskWork& work);

/// Turns a mask by `quarters` * 90 degrees counter-clockwise, 1 to 3. The result is a valid mask of
/// the turned chart, and far cheaper than drawing it.
void turn_mask(const Mask& mask, uint32_t quarters, Mask& turned, MaskWork& work);

} // namespace tessora::atlas
