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
    if (squares_.size() <= square_level)
        squares_.resize(square_level + 1);
    runs_.assign(size_t(words_) * height * (run_level + 1), 0);
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
void Field::seal_outside(Squares& level, uint32_t run, uint32_t rows) {
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
uint32_t Field::next_open_row(const Squares& level, uint32_t row) const {
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
uint32_t Field::next_open_word(const Squares& level, uint32_t row, uint32_t word) const {
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

void Field::close_word(Squares& level, uint32_t row, uint32_t word) {
    uint64_t* open = &level.open_words[size_t(row) * groups_];
    open[word / 64] &= ~(uint64_t(1) << (word % 64));
    if (std::all_of(open, open + groups_, [](uint64_t w) { return w == 0; }))
        level.open_rows[row / 64] &= ~(uint64_t(1) << (row % 64));
}

void Field::add_probe(const Run& run) {
    const uint32_t level = level_of(run.length), second = run.x + run.length - (1u << level);
    const uint32_t row = (level * height_ + run.row) * words_;
    probes_[probed_++] = {row + run.x / 64, row + second / 64, uint8_t(run.x % 64),
                          uint8_t(second % 64)};
}

/// Adds the positions 64 * block and the 63 after it at which a run of the mask hits a taken cell
/// to `taken`. The first of them must be one of the mask.
uint64_t Field::taken_by_runs(const Mask& mask, uint32_t block, uint32_t y, uint64_t taken) {
    const uint64_t* const at = runs_.data() + size_t(y) * words_ + block;
    size_t i = 0;
    while (taken != k_all && i < mask.runs.size()) {
        if (i == probed_)
            add_probe(mask.runs[i]);
        const Probe& probe = probes_[i++];
        taken |= window(at + probe.first, probe.first_shift) |
                 window(at + probe.second, probe.second_shift);
    }
    effort_ += i;
    return taken;
}

/// The leftmost position where the mask fits with its lowest row at y; k_none if there is none.
uint32_t Field::find_in_row(const Mask& mask, uint32_t y) {
    const Squares& square = square_of(mask);
    const uint32_t columns = width_ - mask.width + 1, row = y + mask.square_y;
    // 64 positions of the mask correspond to 64 positions of its square, which lie in one or two
    // words of the level; words without a free position are skipped.
    const uint32_t skip = mask.square_x / 64, shift = mask.square_x % 64, spills = shift != 0;
    const uint64_t* const bits = &square.bits[size_t(row) * words_ + skip];
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
            uint64_t taken = window(bits + block, shift);
            if (columns - x < 64)
                taken |= k_all << (columns - x);
            if (taken != k_all)
                taken = taken_by_runs(mask, block, y, taken);
            if (taken != k_all)
                return x + uint32_t(__builtin_ctzll(~taken));
        }
    }
}

Spot Field::find(const Mask& mask, uint32_t bottom, uint32_t top) {
    if (mask.width > width_ || mask.height > top || top > height_)
        return {};
    const Squares& square = square_of(mask);
    probed_ = 0;
    if (probes_.size() < mask.runs.size())
        probes_.resize(mask.runs.size());
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
        uint64_t* row = &runs_[size_t(y + r) * words_ + x / 64];
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
    const uint32_t across = half / 64, shift = half % 64;
    const uint32_t end = std::min(last + 1, words_ - 1 - std::min(across, words_ - 1));
    effort_ += uint64_t(mask.height) * (last - first + 1);
    for (uint32_t r = y; r < y + mask.height; ++r) {
        const uint64_t* const below = run_bits(level - 1) + size_t(r) * words_;
        uint64_t* const here = run_bits(level) + size_t(r) * words_;
        for (uint32_t i = first; i < end; ++i)
            here[i] = below[i] | window(below + i + across, shift);
        for (uint32_t i = std::max(first, end); i <= last; ++i)
            here[i] = below[i]; // what lies beyond is outside
    }
}

void Field::spread_squares(uint32_t level, uint32_t x, uint32_t y, const Mask& mask) {
    const uint32_t size = uint32_t(1) << level, half = size / 2;
    const uint32_t first = (x >= size - 1 ? x - (size - 1) : 0) / 64;
    const uint32_t last = (x + mask.width - 1) / 64;
    const uint32_t bottom = y >= size - 1 ? y - (size - 1) : 0;
    const uint32_t across = half / 64, shift = half % 64;
    const uint64_t* const below = level > 0 ? squares_[level - 1].bits.data() : runs_.data();
    Squares& here = squares_[level];
    effort_ += uint64_t(y + mask.height - bottom) * (last - first + 1);
    for (uint32_t r = bottom; r < y + mask.height; ++r) {
        uint64_t* const kept = &here.bits[size_t(r) * words_];
        const uint64_t* const low = below + size_t(r) * words_;
        const uint64_t* const high = r + half < height_ ? low + size_t(half) * words_ : low;
        for (uint32_t i = first; i <= last; ++i) {
            if (kept[i] == k_all)
                continue;
            uint64_t w = kept[i] | low[i] | high[i];
            if (i + across + 1 < words_)
                w |= window(low + i + across, shift) | window(high + i + across, shift);
            kept[i] = w;
            if (w == k_all)
                close_word(here, r, i);
        }
    }
}

} // namespace tessora::atlas
