/// The texture as a grid of taken and free cells, with the search for a place where a mask fits.
///
/// Beside the cells the field keeps, for every power of two, where a run and where a square of that
/// size would hit something: a mask's largest square rules most positions out, its runs decide the
/// rest exactly. 64 positions are tested by one operation.
#pragma once

#include "atlas/pack/mask.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

struct Spot {
    bool found = false;
    uint32_t x = 0;
    uint32_t y = 0;
};

class Field {
public:
    /// An empty field. `run_level` must bound that of every mask to come; squares are kept up to
    /// `square_level`, larger ones are tested by a part of theirs.
    void reset(uint32_t width, uint32_t height, uint32_t run_level, uint32_t square_level);

    /// From here on no mask comes with longer runs or larger squares: saves keeping them up.
    void narrow(uint32_t run_level, uint32_t square_level);

    /// The lowest free place whose upper edge stays at or below `top`, of several the leftmost.
    /// Starts looking at row `bottom`.
    Spot find(const Mask& mask, uint32_t bottom, uint32_t top);

    /// Takes the cells of a mask; it must lie inside the field.
    void place(const Mask& mask, uint32_t x, uint32_t y);

    /// Whether the mask hits nothing at this place.
    bool fits(const Mask& mask, uint32_t x, uint32_t y) const;

    uint32_t width() const { return width_; }
    uint32_t height() const { return height_; }
    /// Words looked at so far: a measure of effort that no clock disturbs.
    uint64_t effort() const { return effort_; }

private:
    /// One bit per cell: something lies in the run (square) of 2^level cells that starts there.
    struct Level {
        std::vector<uint64_t> bits;
        std::vector<uint64_t> open_words; ///< squares: a bit per word with a free position
        std::vector<uint64_t> open_rows;  ///< squares: a bit per row with a free position
    };

    uint64_t window(const Level& level, uint32_t row, uint32_t bit) const {
        const uint64_t* p = &level.bits[size_t(row) * words_ + bit / 64];
        const uint32_t shift = bit % 64;
        return shift == 0 ? p[0] : p[0] >> shift | p[1] << (64 - shift);
    }
    /// The level of the mask's largest square, or the largest kept: the same corner will do.
    const Level& square_of(const Mask& mask) const {
        return squares_[mask.square_level < square_level_ ? mask.square_level : square_level_];
    }
    void seal_outside(Level& level, uint32_t run, uint32_t rows);
    uint32_t next_open_row(const Level& level, uint32_t row) const;
    uint32_t next_open_word(const Level& level, uint32_t row, uint32_t word) const;
    uint32_t find_in_row(const Mask& mask, uint32_t y);
    void close_word(Level& level, uint32_t row, uint32_t word);
    uint64_t taken_by_runs(const Mask& mask, uint32_t x, uint32_t y, uint64_t taken);
    void spread_runs(uint32_t level, uint32_t x, uint32_t y, const Mask& mask);
    void spread_squares(uint32_t level, uint32_t x, uint32_t y, const Mask& mask);

    uint32_t width_ = 0, height_ = 0;
    uint32_t words_ = 0;                        ///< per row, one spare word included
    uint32_t groups_ = 0;                       ///< words of 64 bits for one bit per word of a row
    uint32_t run_level_ = 0, square_level_ = 0; ///< the highest levels still kept up
    std::vector<Level> runs_, squares_;         ///< level 0 of runs_ is the cells themselves
    uint64_t effort_ = 0;
};

} // namespace tessora::atlas
