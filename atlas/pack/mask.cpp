#include "atlas/pack/mask.h"

#include <algorithm>
#include <utility>

namespace tessora::atlas {
namespace {

/// Every drawn span is widened by this many cells: far more than the rounding errors of computing
/// it (below 1e-11 cells on grids of up to 65536), far less than would cost room.
constexpr double k_rounding = 1e-7;

void set_span(uint64_t* row, uint32_t first, uint32_t last) {
    const uint32_t a = first / 64, b = last / 64;
    const uint64_t head = ~uint64_t(0) << (first % 64), tail = ~uint64_t(0) >> (63 - last % 64);
    if (a == b) {
        row[a] |= head & tail;
        return;
    }
    row[a] |= head;
    for (uint32_t i = a + 1; i < b; ++i)
        row[i] = ~uint64_t(0);
    row[b] |= tail;
}

/// One side of a capsule, the set of points within `radius` of a segment: its maximum x at a given
/// y. With `mirror` = -1 the minimum x instead.
class Flank {
public:
    Flank(Vec2 a, Vec2 b, double radius, double mirror) : radius_(radius), mirror_(mirror) {
        low_ = {a.x * mirror, a.y};
        high_ = {b.x * mirror, b.y};
        const Vec2 d = high_ - low_;
        const double size = length(d);
        level_ = !(d.y > 0);
        if (level_) {
            low_.x = high_.x = std::max(low_.x, high_.x);
            line_low_ = line_high_ = low_.y;
        } else {
            const Vec2 normal{d.y / size * radius, -d.x / size * radius};
            line_low_ = low_.y + normal.y;
            line_high_ = high_.y + normal.y;
            line_x_ = low_.x + normal.x;
            slope_ = d.x / d.y;
        }
        peak_ = low_.x >= high_.x ? low_.y : high_.y;
    }

    /// Maximum x (minimum if mirrored) over bottom <= y <= top, a range that meets the capsule's.
    double extreme(double bottom, double top) const {
        const double y = std::min(std::max(peak_, bottom), top);
        return mirror_ * at(y);
    }

private:
    double at(double y) const {
        if (!level_ && y > line_low_ && y < line_high_)
            return line_x_ + (y - line_low_) * slope_;
        const Vec2 centre = y <= line_low_ ? low_ : high_;
        const double dy = y - centre.y, left = radius_ * radius_ - dy * dy;
        return centre.x + (left > 0 ? std::sqrt(left) : 0);
    }

    double radius_, mirror_;
    Vec2 low_, high_;
    double line_low_ = 0, line_high_ = 0, line_x_ = 0, slope_ = 0, peak_ = 0;
    bool level_ = false;
};

/// Draws the capsule around a segment given in cells.
void draw_segment(Mask& mask, Vec2 a, Vec2 b, double radius) {
    if (a.y > b.y)
        std::swap(a, b);
    const double wide = radius + k_rounding;
    const Flank right(a, b, wide, 1), left(a, b, wide, -1);
    const double bottom = a.y - wide, top = b.y + wide;
    if (top < 0 || bottom >= mask.height)
        return;
    const uint32_t first = uint32_t(std::max(0.0, std::floor(bottom)));
    const uint32_t last = uint32_t(std::min(double(mask.height - 1), std::floor(top)));
    const double width = double(mask.width - 1);
    for (uint32_t y = first; y <= last; ++y) {
        const double low = std::max(double(y), bottom), high = std::min(double(y) + 1, top);
        const double from = std::floor(left.extreme(low, high) - k_rounding);
        const double to = std::floor(right.extreme(low, high) + k_rounding);
        if (to >= 0 && from <= width)
            set_span(&mask.bits[size_t(y) * mask.words], uint32_t(std::max(0.0, from)),
                     uint32_t(std::min(width, to)));
    }
}

/// Flips one bit per row whose centre line the segment crosses: the first cell to the right of the
/// crossing. The running parity of a row then tells inside from outside.
void mark_crossings(Mask& mask, std::vector<uint64_t>& flips, Vec2 a, Vec2 b) {
    if (a.y > b.y)
        std::swap(a, b);
    if (!(b.y > a.y))
        return;
    const double slope = (b.x - a.x) / (b.y - a.y);
    const uint32_t first = uint32_t(std::max(0.0, std::ceil(a.y - 0.5)));
    const uint32_t stop =
        uint32_t(std::min(double(mask.height), std::max(0.0, std::ceil(b.y - 0.5))));
    for (uint32_t y = first; y < stop; ++y) {
        const double x = a.x + (y + 0.5 - a.y) * slope;
        const double cell = std::max(0.0, std::ceil(x - 0.5));
        if (cell < mask.width)
            flips[size_t(y) * mask.words + uint32_t(cell) / 64] ^= uint64_t(1)
                                                                   << (uint32_t(cell) % 64);
    }
}

/// Bit i of the result is the parity of bits 0..i.
uint64_t running_parity(uint64_t w) {
    for (int shift = 1; shift < 64; shift *= 2)
        w ^= w << shift;
    return w;
}

/// Sets the cells whose centre is inside. A cell that no capsule touches is entirely inside or
/// entirely outside, so its centre decides.
void fill_inside(Mask& mask, const std::vector<uint64_t>& flips) {
    const uint32_t spare = mask.words * 64 - mask.width;
    for (uint32_t y = 0; y < mask.height; ++y) {
        uint64_t carry = 0;
        for (uint32_t i = 0; i < mask.words; ++i) {
            const size_t at = size_t(y) * mask.words + i;
            const uint64_t inside = running_parity(flips[at]) ^ carry;
            carry = uint64_t(0) - (inside >> 63);
            mask.bits[at] |= i + 1 == mask.words ? inside << spare >> spare : inside;
        }
    }
}

/// Sets the cells whose centre is inside a convex closed polygon.
void fill_convex(Mask& mask, const Vec2* begin, const Vec2* end) {
    double low = begin->y, high = begin->y;
    for (const Vec2* p = begin; p != end; ++p) {
        low = std::min(low, p->y);
        high = std::max(high, p->y);
    }
    const double last = std::min(double(mask.height), std::ceil(high - 0.5));
    for (double y = std::max(0.0, std::ceil(low - 0.5)); y < last; ++y) {
        double from = mask.width, to = -1;
        for (const Vec2* p = begin; p + 1 != end; ++p) {
            const Vec2 a = p[0], b = p[1];
            if ((a.y > y + 0.5) == (b.y > y + 0.5))
                continue;
            const double x = a.x + (y + 0.5 - a.y) / (b.y - a.y) * (b.x - a.x);
            from = std::min(from, std::ceil(x - 0.5));
            to = std::max(to, std::ceil(x - 0.5) - 1);
        }
        from = std::max(from, 0.0);
        to = std::min(to, double(mask.width) - 1);
        if (from <= to)
            set_span(&mask.bits[size_t(y) * mask.words], uint32_t(from), uint32_t(to));
    }
}

/// Draws the chains of a shape, whose points are in work.points in cells, and fills them.
void draw_chains(const ChartChains& chains, const ChartShape& shape, double radius, Mask& mask,
                 MaskWork& work) {
    const uint32_t first = chains.chain_begin[shape.chain_begin];
    const std::vector<Vec2>& points = work.points;
    std::vector<uint64_t>& flips = work.flips;
    flips.assign(mask.bits.size(), 0);
    for (uint32_t chain = shape.chain_begin; chain < shape.chain_end; ++chain) {
        const uint32_t begin = chains.chain_begin[chain] - first;
        const uint32_t end = chains.chain_begin[chain + 1] - first;
        if (end - begin == 1)
            draw_segment(mask, points[begin], points[begin], radius);
        for (uint32_t i = begin; i + 1 < end; ++i) {
            draw_segment(mask, points[i], points[i + 1], radius);
            if (!shape.apart)
                mark_crossings(mask, flips, points[i], points[i + 1]);
        }
        if (shape.apart)
            fill_convex(mask, &points[begin], &points[end - 1] + 1);
    }
    if (!shape.apart)
        fill_inside(mask, flips);
}

/// Takes a cell in every row and column that has none, so that a chart in several pieces cannot be
/// placed across the border between two tiles, however it is turned.
void join_pieces(Mask& mask) {
    std::vector<uint64_t> columns(mask.words, 0);
    for (uint32_t y = 0; y < mask.height; ++y) {
        uint64_t* row = &mask.bits[size_t(y) * mask.words];
        if (std::all_of(row, row + mask.words, [](uint64_t w) { return w == 0; }))
            row[0] = 1;
        for (uint32_t i = 0; i < mask.words; ++i)
            columns[i] |= row[i];
    }
    const uint32_t spare = mask.words * 64 - mask.width;
    for (uint32_t i = 0; i < mask.words; ++i)
        mask.bits[i] |= i + 1 == mask.words ? ~columns[i] << spare >> spare : ~columns[i];
}

/// Lists the runs of set cells, row by row, in work.runs; row y has the runs from
/// work.row_begin[y] to work.row_begin[y + 1] - 1.
void list_by_row(const Mask& mask, MaskWork& work) {
    std::vector<Run>& runs = work.runs;
    std::vector<uint32_t>& row_begin = work.row_begin;
    runs.clear();
    row_begin.resize(mask.height + 1);
    for (uint32_t y = 0; y < mask.height; ++y) {
        row_begin[y] = uint32_t(runs.size());
        bool inside = false;
        uint32_t start = 0;
        for (uint32_t i = 0; i < mask.words; ++i) {
            const uint64_t w = mask.row_word(y, i);
            uint32_t x = 0;
            while (x < 64) {
                const uint64_t rest = (inside ? ~w : w) >> x;
                if (rest == 0)
                    break;
                x += uint32_t(__builtin_ctzll(rest));
                if (inside)
                    runs.push_back({y, start, i * 64 + x - start});
                else
                    start = i * 64 + x;
                inside = !inside;
            }
        }
        if (inside)
            runs.push_back({y, start, mask.words * 64 - start});
    }
    row_begin[mask.height] = uint32_t(runs.size());
}

/// Fills the mask's runs and the members that are computed from them.
void list_runs(Mask& mask, MaskWork& work) {
    list_by_row(mask, work);
    const std::vector<uint32_t>& row_begin = work.row_begin;
    const std::vector<Run>& by_row = work.runs;
    mask.runs.clear();
    mask.cells = 0;
    for (const Run& run : by_row) {
        mask.cells += run.length;
        mask.mean_row += (run.row + 0.5) * run.length;
        mask.run_level = std::max(mask.run_level, 31 - uint32_t(__builtin_clz(run.length)));
    }
    mask.mean_row /= std::max(1u, mask.cells);
    // Test the middle row first and neighbouring rows late: where a mask does not fit, its middle
    // is usually hit, and neighbours mostly repeat each other's answer.
    uint32_t top = 1;
    while (top < mask.height)
        top *= 2;
    mask.runs.reserve(by_row.size());
    const auto append = [&](uint32_t y) {
        for (uint32_t i = row_begin[y]; i < row_begin[y + 1]; ++i)
            mask.runs.push_back(by_row[i]);
    };
    for (uint32_t stride = top / 2; stride >= 1; stride /= 2)
        for (uint32_t y = stride; y < mask.height; y += 2 * stride)
            append(y);
    append(0);
}

/// A word of a row shifted by `by` cells towards lower x; zeros enter from beyond the row.
uint64_t shifted_word(const std::vector<uint64_t>& bits, size_t row, uint32_t words, uint32_t word,
                      uint32_t by) {
    const uint32_t from = word + by / 64, shift = by % 64;
    const uint64_t low = from < words ? bits[row + from] : 0;
    if (shift == 0)
        return low;
    const uint64_t high = from + 1 < words ? bits[row + from + 1] : 0;
    return low >> shift | high << (64 - shift);
}

/// Finds the largest square of set cells by eroding with squares of doubling size until no cell is
/// left; takes one from the middle of the last survivors.
void find_square(Mask& mask, MaskWork& work) {
    std::vector<uint64_t>&now = work.square, &next = work.smaller_square;
    std::vector<uint32_t>& rows = work.rows;
    now = mask.bits;
    uint32_t height = mask.height;
    const uint32_t words = mask.words;
    for (uint32_t level = 0;; ++level) {
        rows.clear();
        for (uint32_t y = 0; y < height; ++y)
            if (std::any_of(&now[size_t(y) * words], &now[size_t(y) * words] + words,
                            [](uint64_t w) { return w != 0; }))
                rows.push_back(y);
        if (rows.empty())
            return;
        mask.square_level = level;
        mask.square_y = rows[rows.size() / 2];
        const uint64_t* row = &now[size_t(mask.square_y) * words];
        uint32_t word = 0;
        while (row[word] == 0)
            ++word;
        mask.square_x = word * 64 + uint32_t(__builtin_ctzll(row[word]));
        const uint32_t step = uint32_t(1) << level;
        if (height <= step)
            return;
        height -= step;
        next.resize(size_t(height) * words);
        for (uint32_t y = 0; y < height; ++y)
            for (uint32_t i = 0; i < words; ++i) {
                const size_t a = size_t(y) * words, b = size_t(y + step) * words;
                next[a + i] = now[a + i] & now[b + i] & shifted_word(now, a, words, i, step) &
                              shifted_word(now, b, words, i, step);
            }
        now.swap(next);
    }
}

/// Transposes 64 x 64 bits (Warren, "Hacker's Delight", 2002, chapter 7).
void transpose_block(uint64_t* block) {
    uint64_t low = 0x00000000FFFFFFFFull;
    for (uint32_t half = 32; half != 0; half /= 2, low ^= low << half)
        for (uint32_t i = 0; i < 64; i = (i + half + 1) & ~half) {
            const uint64_t t = (block[i] >> half ^ block[i + half]) & low;
            block[i] ^= t << half;
            block[i + half] ^= t;
        }
}

uint64_t reversed(uint64_t w) {
    w = (w >> 1 & 0x5555555555555555ull) | (w & 0x5555555555555555ull) << 1;
    w = (w >> 2 & 0x3333333333333333ull) | (w & 0x3333333333333333ull) << 2;
    w = (w >> 4 & 0x0F0F0F0F0F0F0F0Full) | (w & 0x0F0F0F0F0F0F0F0Full) << 4;
    return __builtin_bswap64(w);
}

/// Reverses the order of the bits in a row.
void reverse_row(uint64_t* row, uint32_t words, uint32_t width) {
    const uint32_t spare = words * 64 - width;
    std::reverse(row, row + words);
    for (uint32_t i = 0; i < words; ++i)
        row[i] = reversed(row[i]);
    for (uint32_t i = 0; i < words && spare != 0; ++i)
        row[i] = row[i] >> spare | (i + 1 < words ? row[i + 1] << (64 - spare) : 0);
}

/// Transposes a mask.
void transpose_bits(const Mask& from, Mask& to) {
    constexpr uint32_t k_small = 24; // cells; a block of 64 x 64 takes longer than their bits
    if (from.width <= k_small && from.height <= k_small) {
        for (uint32_t y = 0; y < from.height; ++y)
            for (uint64_t rest = from.bits[y]; rest != 0; rest &= rest - 1)
                to.bits[uint32_t(__builtin_ctzll(rest))] |= uint64_t(1) << y;
        return;
    }
    uint64_t block[64];
    for (uint32_t by = 0; by < to.words; ++by)
        for (uint32_t bx = 0; bx < from.words; ++bx) {
            for (uint32_t i = 0; i < 64; ++i)
                block[i] = by * 64 + i < from.height ? from.row_word(by * 64 + i, bx) : 0;
            transpose_block(block);
            for (uint32_t i = 0; i < 64 && bx * 64 + i < to.height; ++i)
                to.bits[size_t(bx * 64 + i) * to.words + by] = block[i];
        }
}

/// Makes a mask empty; it keeps its memory.
void clear(Mask& mask) {
    std::vector<uint64_t> bits = std::move(mask.bits);
    std::vector<Run> runs = std::move(mask.runs);
    bits.clear();
    runs.clear();
    mask = Mask();
    mask.bits = std::move(bits);
    mask.runs = std::move(runs);
}

} // namespace

void draw_mask(const ChartChains& chains, const ChartShape& shape, Turn turn, double scale,
               double radius, Mask& mask, MaskWork& work) {
    clear(mask);
    if (shape.chain_begin == shape.chain_end)
        return;
    const uint32_t first = chains.chain_begin[shape.chain_begin];
    const uint32_t last = chains.chain_begin[shape.chain_end];
    std::vector<Vec2>& points = work.points;
    points.resize(last - first);
    const Turn scaled{turn.cosine * scale, turn.sine * scale};
    Vec2 low{}, high{};
    for (uint32_t i = first; i < last; ++i) {
        const Vec2 p = turned(chains.points[i], scaled);
        points[i - first] = p;
        low = i == first ? p : Vec2{std::min(low.x, p.x), std::min(low.y, p.y)};
        high = i == first ? p : Vec2{std::max(high.x, p.x), std::max(high.y, p.y)};
    }
    const double border = radius + 2 * k_rounding;
    mask.origin = {low.x - border, low.y - border};
    mask.width = uint32_t(std::floor(high.x + border - mask.origin.x)) + 1;
    mask.height = uint32_t(std::floor(high.y + border - mask.origin.y)) + 1;
    mask.words = (mask.width + 63) / 64;
    mask.bits.assign(size_t(mask.words) * mask.height, 0);
    for (Vec2& p : points)
        p = p - mask.origin;
    draw_chains(chains, shape, radius, mask, work);
    if (shape.apart)
        join_pieces(mask);
    list_runs(mask, work);
    find_square(mask, work);
}

void draw_in_place(const ChartChains& chains, const ChartShape& shape, Turn turn, double scale,
                   Vec2 shift, double radius, Mask& mask, MaskWork& work) {
    std::vector<Vec2>& points = work.points;
    points.clear();
    const uint32_t last = chains.chain_begin[shape.chain_end];
    for (uint32_t i = chains.chain_begin[shape.chain_begin]; i < last; ++i)
        points.push_back(turned(chains.points[i], turn) * scale + shift);
    draw_chains(chains, shape, radius, mask, work);
}

void turn_mask(const Mask& mask, uint32_t quarters, Mask& turned, MaskWork& work) {
    clear(turned);
    if (mask.width == 0)
        return;
    const bool across = quarters % 2 == 1;
    const uint32_t size = uint32_t(1) << mask.square_level;
    const uint32_t right = mask.width - mask.square_x - size;
    const uint32_t above = mask.height - mask.square_y - size;
    const Vec2 far = mask.origin + Vec2{double(mask.width), double(mask.height)};
    turned.width = across ? mask.height : mask.width;
    turned.height = across ? mask.width : mask.height;
    turned.words = (turned.width + 63) / 64;
    turned.square_level = mask.square_level;
    turned.bits.assign(size_t(turned.words) * turned.height, 0);
    if (across)
        transpose_bits(mask, turned);
    else
        turned.bits = mask.bits;
    if (quarters >= 2)
        for (uint32_t y = 0; y < turned.height / 2; ++y)
            std::swap_ranges(&turned.bits[size_t(y) * turned.words],
                             &turned.bits[size_t(y) * turned.words] + turned.words,
                             &turned.bits[size_t(turned.height - 1 - y) * turned.words]);
    if (quarters <= 2)
        for (uint32_t y = 0; y < turned.height; ++y)
            reverse_row(&turned.bits[size_t(y) * turned.words], turned.words, turned.width);
    if (quarters == 1)
        turned.origin = {-far.y, mask.origin.x};
    else if (quarters == 2)
        turned.origin = {-far.x, -far.y};
    else
        turned.origin = {mask.origin.y, -far.x};
    turned.square_x = quarters == 1 ? above : quarters == 2 ? right : mask.square_y;
    turned.square_y = quarters == 1 ? mask.square_x : quarters == 2 ? above : right;
    list_runs(turned, work);
}

} // namespace tessora::atlas
