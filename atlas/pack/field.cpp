#include "atlas/pack/field.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

constexpr uint64_t k_all = ~uint64_t(0);

} // namespace

void Field::reset(uint32_t width, uint32_t height, uint32_t run_level, uint32_t square_level) {
    width_ = width;
    height_ = height;
    words_ = (width + 63) / 64 + 1;
    groups_ = words_ / 64 + 1;
    run_level_ = run_level;
    square_level_ = square_level;
    if (runs_.size() <= run_level)
        runs_.resize(run_level + 1);
    if (squares_.size() <= square_level)
        squares_.resize(square_level + 1);
    for (uint32_t i = 0; i <= run_level; ++i)
        runs_[i].bits.assign(size_t(words_) * height, 0);
    for (uint32_t i = 0; i <= square_level; ++i) {
        const uint32_t size = uint32_t(1) << i;
        squares_[i].bits.assign(size_t(words_) * height, 0);
        seal_outside(squares_[i], size, height >= size ? height - size + 1 : 0);
    }
    effort_ += uint64_t(words_) * height * (run_level + square_level + 2) / 8;
}

void Field::narrow(uint32_t run_level, uint32_t square_level) {
    run_level_ = std::min(run_level_, run_level);
    square_level_ = std::min(square_level_, square_level);
}

/// Marks positions from which a square of size `run` would leave the field.
void Field::seal_outside(Level& level, uint32_t run, uint32_t rows) {
    const uint32_t columns = width_ >= run ? width_ - run + 1 : 0;
    level.open_words.assign(size_t(height_) * groups_, 0);
    level.open_rows.assign(height_ / 64 + 1, 0);
    for (uint32_t y = 0; y < height_; ++y) {
        uint64_t* row = &level.bits[size_t(y) * words_];
        const uint32_t open = y < rows ? columns : 0;
        for (uint32_t i = 0; i < words_; ++i) {
            if (open >= 64 * (i + 1))
                continue;
            row[i] = open <= 64 * i ? k_all : k_all << (open % 64);
        }
        for (uint32_t i = 0; i < (open + 63) / 64; ++i)
            level.open_words[size_t(y) * groups_ + i / 64] |= uint64_t(1) << (i % 64);
        if (open > 0)
            level.open_rows[y / 64] |= uint64_t(1) << (y % 64);
    }
}

/// Returns height_ if there is none.
uint32_t Field::next_open_row(const Level& level, uint32_t row) const {
    size_t i = row / 64;
    uint64_t w = level.open_rows[i] & (k_all << (row % 64));
    while (w == 0) {
        if (++i == level.open_rows.size())
            return height_;
        w = level.open_rows[i];
    }
    return uint32_t(i * 64) + uint32_t(__builtin_ctzll(w));
}

/// Returns words_ if there is none.
uint32_t Field::next_open_word(const Level& level, uint32_t row, uint32_t word) const {
    const uint64_t* open = &level.open_words[size_t(row) * groups_];
    uint32_t i = word / 64;
    uint64_t w = open[i] & (k_all << (word % 64));
    while (w == 0) {
        if (++i == groups_)
            return words_;
        w = open[i];
    }
    return i * 64 + uint32_t(__builtin_ctzll(w));
}

void Field::close_word(Level& level, uint32_t row, uint32_t word) {
    uint64_t* open = &level.open_words[size_t(row) * groups_];
    open[word / 64] &= ~(uint64_t(1) << (word % 64));
    if (std::all_of(open, open + groups_, [](uint64_t w) { return w == 0; }))
        level.open_rows[row / 64] &= ~(uint64_t(1) << (row % 64));
}

/// Adds the positions x .. x + 63 at which a run of the mask hits a taken cell to `taken`.
uint64_t Field::taken_by_runs(const Mask& mask, uint32_t x, uint32_t y, uint64_t taken) {
    for (const Run& run : mask.runs) {
        const uint32_t j = level_of(run.length);
        const uint32_t first = x + run.x, row = y + run.row;
        if (first / 64 + 1 >= words_)
            return k_all;
        taken |= window(runs_[j], row, first);
        const uint32_t second = first + run.length - (uint32_t(1) << j);
        if (second / 64 + 1 < words_)
            taken |= window(runs_[j], row, second);
        ++effort_;
        if (taken == k_all)
            break;
    }
    return taken;
}

/// The leftmost position where the mask fits with its lowest row at y; k_none if there is none.
uint32_t Field::find_in_row(const Mask& mask, uint32_t y) {
    const Level& square = square_of(mask);
    const uint32_t columns = width_ - mask.width + 1, row = y + mask.square_y;
    // 64 positions of the mask correspond to 64 positions of its square, which lie in one or two
    // words of the level; words without a free position are skipped.
    const uint32_t skip = mask.square_x / 64, spills = mask.square_x % 64 != 0 ? 1 : 0;
    uint32_t block = 0;
    for (uint32_t word = skip;; ++word) {
        ++effort_;
        word = next_open_word(square, row, word);
        if (word + 1 >= words_)
            return k_none;
        block = std::max(block, word - skip - std::min(spills, word - skip));
        for (; block <= word - skip; ++block) {
            const uint32_t x = 64 * block;
            if (x >= columns)
                return k_none;
            uint64_t taken = window(square, row, x + mask.square_x);
            if (columns - x < 64)
                taken |= k_all << (columns - x);
            if (taken != k_all)
                taken = taken_by_runs(mask, x, y, taken);
            if (taken != k_all)
                return x + uint32_t(__builtin_ctzll(~taken));
        }
    }
}

Spot Field::find(const Mask& mask, uint32_t bottom, uint32_t top) {
    if (mask.width > width_ || mask.height > top || top > height_)
        return {};
    const Level& square = square_of(mask);
    for (uint32_t y = bottom; y + mask.height <= top; ++y) {
        const uint32_t open = next_open_row(square, y + mask.square_y);
        if (open + mask.height > top + mask.square_y)
            return {};
        y = open - mask.square_y;
        const uint32_t x = find_in_row(mask, y);
        if (x != k_none)
            return {true, x, y};
    }
    return {};
}

void Field::place(const Mask& mask, uint32_t x, uint32_t y) {
    const uint32_t shift = x % 64;
    for (uint32_t r = 0; r < mask.height; ++r) {
        uint64_t* row = &runs_[0].bits[size_t(y + r) * words_ + x / 64];
        for (uint32_t i = 0; i < mask.words; ++i) {
            const uint64_t w = mask.row_word(r, i);
            row[i] |= w << shift;
            if (shift != 0 && (w >> (64 - shift)) != 0)
                row[i + 1] |= w >> (64 - shift);
        }
    }
    for (uint32_t j = 1; j <= run_level_; ++j)
        spread_runs(j, x, y, mask);
    for (uint32_t j = 0; j <= square_level_; ++j)
        spread_squares(j, x, y, mask);
}

void Field::spread_runs(uint32_t level, uint32_t x, uint32_t y, const Mask& mask) {
    const uint32_t half = uint32_t(1) << (level - 1), size = 2 * half;
    const uint32_t first = (x >= size - 1 ? x - (size - 1) : 0) / 64;
    const uint32_t last = (x + mask.width - 1) / 64;
    const Level& below = runs_[level - 1];
    effort_ += uint64_t(mask.height) * (last - first + 1);
    for (uint32_t r = y; r < y + mask.height; ++r)
        for (uint32_t i = first; i <= last; ++i) {
            const uint32_t second = 64 * i + half;
            uint64_t w = below.bits[size_t(r) * words_ + i];
            if (second / 64 + 1 < words_)
                w |= window(below, r, second);
            runs_[level].bits[size_t(r) * words_ + i] = w;
        }
}

void Field::spread_squares(uint32_t level, uint32_t x, uint32_t y, const Mask& mask) {
    const uint32_t size = uint32_t(1) << level, half = size / 2;
    const uint32_t first = (x >= size - 1 ? x - (size - 1) : 0) / 64;
    const uint32_t last = (x + mask.width - 1) / 64;
    const uint32_t bottom = y >= size - 1 ? y - (size - 1) : 0;
    const Level& below = level > 0 ? squares_[level - 1] : runs_[0];
    Level& here = squares_[level];
    effort_ += uint64_t(y + mask.height - bottom) * (last - first + 1);
    for (uint32_t r = bottom; r < y + mask.height; ++r) {
        const bool second_row = level > 0 && r + half < height_;
        for (uint32_t i = first; i <= last; ++i) {
            uint64_t& kept = here.bits[size_t(r) * words_ + i];
            if (kept == k_all)
                continue;
            const uint32_t across = 64 * i + half;
            const bool second_column = level > 0 && across / 64 + 1 < words_;
            uint64_t w = kept | below.bits[size_t(r) * words_ + i];
            if (second_column)
                w |= window(below, r, across);
            if (second_row)
                w |= below.bits[size_t(r + half) * words_ + i];
            if (second_row && second_column)
                w |= window(below, r + half, across);
            kept = w;
            if (w == k_all)
                close_word(here, r, i);
        }
    }
}

} // namespace tessora::atlas
