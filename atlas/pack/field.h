/// The texture as a grid of taken and free cells, and the search for a place where a mask fits.
///
/// For every power of two the field also stores where a run, and where a square, of that size would
/// hit a taken cell. A mask's largest square rules out most positions; its runs decide the rest
/// exactly. One operation tests 64 positions.
#pragma once

#include "atlas/pack/mask.h"

#include <cstdint>
#include <vector>

namespace tessora::atlas {

/// The result of a search: position of a mask's lower left cell.
struct Spot {
    bool found = false;
    uint32_t x = 0;
    uint32_t y = 0;
};

class Field {
public:
    /// Empties the field. `run_level` must not be below that of any mask to come. Squares are
    /// stored up to `square_level`; a mask with a larger square is tested by a part of it.
    void reset(uint32_t width, uint32_t height, uint32_t run_level, uint32_t square_level);

    /// Promises that no mask to come has longer runs or larger squares, so that higher levels need
    /// no further updates.
    void narrow(uint32_t run_level, uint32_t square_level);

    /// The lowest, then leftmost, free place with all rows in bottom .. top - 1.
    Spot find(const Mask& mask, uint32_t bottom, uint32_t top);

    /// Marks the cells of a mask as taken; it must lie inside the field.
    void place(const Mask& mask, uint32_t x, uint32_t y);

    uint32_t height() const { return height_; }
    /// Words of bitmaps read so far: a reproducible measure of effort.
    uint64_t effort() const { return effort_; }

private:
    /// One bit per cell: set if the square of 2^level cells that starts there hits a taken cell or
    /// leaves the field.
    struct Squares {
        std::vector<uint64_t> bits;
        std::vector<uint64_t> open_words; ///< one bit per word, set if it has a free position
        std::vector<uint64_t> open_rows;  ///< one bit per row, set if it has a free position
    };
    /// Where a run of a mask at the origin is looked up: two windows of its level, which cover it.
    struct Probe {
        uint32_t first, second; ///< words, from the beginning of runs_
        uint8_t first_shift, second_shift;
    };

    /// 64 bits that begin `shift` < 64 bits after those of *p.
    static uint64_t window(const uint64_t* p, uint32_t shift) {
        return p[0] >> shift | p[1] << 1 << (63 - shift);
    }
    /// The level of the mask's largest square, or the highest stored one, whose square lies in the
    /// same corner.
    const Squares& square_of(const Mask& mask) const {
        return squares_[mask.square_level < square_level_ ? mask.square_level : square_level_];
    }
    void seal_outside(Squares& level, uint32_t run, uint32_t rows);
    uint32_t next_open_row(const Squares& level, uint32_t row) const;
    uint32_t next_open_word(const Squares& level, uint32_t row, uint32_t word) const;
    uint32_t find_in_row(const Mask& mask, uint32_t y);
    void close_word(Squares& level, uint32_t row, uint32_t word);
    void add_probe(const Run& run);
    uint64_t taken_by_runs(const Mask& mask, uint32_t block, uint32_t y, uint64_t taken);
    uint64_t* run_bits(uint32_t level) { return &runs_[size_t(level) * words_ * height_]; }
    void spread_runs(uint32_t level, uint32_t x, uint32_t y, const Mask& mask);
    void spread_squares(uint32_t level, uint32_t x, uint32_t y, const Mask& mask);

    uint32_t width_ = 0, height_ = 0;
    uint32_t words_ = 0;                        ///< per row, including a spare one
    uint32_t groups_ = 0;                       ///< words in a row of open_words
    uint32_t run_level_ = 0, square_level_ = 0; ///< the highest levels still updated
    /// Level by level; level 0 is the cells themselves. Here, too, a bit tells whether the run that
    /// starts there hits a taken cell.
    std::vector<uint64_t> runs_;
    std::vector<Squares> squares_; ///< by level
    /// The first probed_ are those of the first runs of the mask that find() was called with.
    std::vector<Probe> probes_;
    size_t probed_ = 0;
    uint64_t effort_ = 0;
};

} // namespace tessora::atlas
