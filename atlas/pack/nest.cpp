#include "atlas/pack/nest.h"

#include <algorithm>

namespace tessora::atlas {
namespace {

/// Weight of a pair of charts that did not overlap so far, and the largest weight.
constexpr int32_t k_first_weight = 16, k_max_weight = 1024;

/// Places all over the page are first looked for on a grid coarser by this factor.
constexpr int32_t k_coarse = 4;

/// So many of the turns whose best place is best on that grid are tried on the finer one.
constexpr size_t k_candidates = 3;

/// How far, in cells, a chart moves that does not look everywhere.
constexpr int32_t k_margin = 16;

uint32_t count_bits(uint64_t w) {
    w -= w >> 1 & 0x5555555555555555u;
    w = (w & 0x3333333333333333u) + (w >> 2 & 0x3333333333333333u);
    w = (w + (w >> 4)) & 0x0f0f0f0f0f0f0f0fu;
    return uint32_t(w * 0x0101010101010101u >> 56);
}

/// `quarter` is the mask turned by another quarter: its rows are the columns.
void take_columns(const Mask& quarter, NestShape& out) {
    out.width = int32_t(quarter.height);
    out.height = int32_t(quarter.width);
    out.runs.clear();
    for (const Run& run : quarter.runs)
        out.runs.push_back(
            {int32_t(run.row), out.height - int32_t(run.x + run.length), int32_t(run.length)});
}

/// The cells of a coarser grid that are at least half covered.
void take_coarse_columns(const Mask& mask, NestShape& out) {
    static_assert(k_coarse == 4, "a word holds 16 groups of 4 cells");
    out.width = (int32_t(mask.width) + k_coarse - 1) / k_coarse;
    out.height = (int32_t(mask.height) + k_coarse - 1) / k_coarse;
    out.runs.clear();
    std::vector<uint8_t> cells(size_t(out.width) * size_t(out.height), 0);
    for (uint32_t y = 0; y < mask.height; ++y)
        for (uint32_t x = 0; x < uint32_t(out.width); ++x)
            cells[y / k_coarse * size_t(out.width) + x] +=
                uint8_t(count_bits(mask.row_word(y, x / 16) >> x % 16 * k_coarse & 15));
    for (int32_t x = 0; x < out.width; ++x) {
        ColumnRun run{x, 0, 0};
        for (int32_t y = 0; y <= out.height; ++y) {
            const bool set = y < out.height && cells[size_t(y) * size_t(out.width) + size_t(x)] >=
                                                   k_coarse * k_coarse / 2;
            if (set && run.length++ == 0)
                run.y = y;
            if (!set && run.length > 0) {
                out.runs.push_back(run);
                run.length = 0;
            }
        }
    }
    if (out.runs.empty())
        out.runs.push_back({0, 0, 1});
}

} // namespace

void OverlapMap::open(int32_t x, int32_t y, int32_t width, int32_t height) {
    x_ = x;
    y_ = y;
    width_ = width;
    height_ = height;
    sums_.assign(size_t(width) * size_t(height + 1), 0);
    effort_ += sums_.size() / 16;
}

void OverlapMap::add(const NestShape& shape, int32_t x, int32_t y, int32_t weight) {
    x -= x_;
    y -= y_;
    if (x >= width_ || y >= height_ || x + shape.width <= 0 || y + shape.height <= 0)
        return;
    effort_ += shape.runs.size() / 2;
    for (const ColumnRun& run : shape.runs) {
        const int32_t column = x + run.x;
        const int32_t begin = std::max(0, y + run.y),
                      end = std::min(height_, y + run.y + run.length);
        if (column < 0 || column >= width_ || begin >= end)
            continue;
        row(begin)[column] += weight; // differences; close() sums them up twice
        row(end)[column] -= weight;
    }
}

void OverlapMap::close() {
    effort_ += sums_.size() / 8;
    weights_.assign(size_t(width_), 0);
    under_.assign(size_t(width_), 0);
    int32_t* __restrict weight = weights_.data();
    int32_t* __restrict sum = under_.data();
    for (int32_t y = 0; y <= height_; ++y) {
        int32_t* __restrict at = row(y);
        for (int32_t x = 0; x < width_; ++x) {
            weight[x] += at[x];
            at[x] = sum[x];
            sum[x] += weight[x];
        }
    }
}

int64_t OverlapMap::under(const NestShape& shape, int32_t x, int32_t y) const {
    int64_t total = 0;
    effort_ += shape.runs.size() / 2;
    const int32_t* at = row(y - y_) + (x - x_);
    for (const ColumnRun& run : shape.runs) {
        const int32_t* p = at + ptrdiff_t(run.y) * width_ + run.x;
        total += p[ptrdiff_t(run.length) * width_] - p[0];
    }
    return total;
}

void OverlapMap::shrink(int32_t factor, OverlapMap& out) const {
    out.open(0, 0, width_ / factor, height_ / factor);
    out.effort_ += size_t(width_) * size_t(out.height_) / 8;
    for (int32_t y = 0; y <= out.height_; ++y) {
        const int32_t* from = row(y * factor);
        int32_t* to = out.row(y);
        for (int32_t x = 0; x < out.width_; ++x)
            for (int32_t k = 0; k < factor; ++k)
                to[x] += from[x * factor + k];
    }
}

int64_t OverlapMap::find_least(const NestShape& shape, int32_t& x, int32_t& y) {
    const int32_t columns = width_ - shape.width + 1;
    if (columns <= 0 || shape.height > height_)
        return INT64_MAX;
    int32_t least = INT32_MAX;
    under_.resize(size_t(width_));
    int32_t* sum = under_.data();
    for (int32_t bottom = 0; bottom + shape.height <= height_ && least > 0; ++bottom) {
        effort_ += shape.runs.size() * uint64_t(columns + 8) / 12;
        std::fill(sum, sum + columns, 0);
        for (const ColumnRun& run : shape.runs) {
            const int32_t* p = row(bottom + run.y) + run.x;
            const int32_t* q = p + ptrdiff_t(run.length) * width_;
            for (int32_t i = 0; i < columns; ++i)
                sum[i] += q[i] - p[i];
        }
        for (int32_t i = 0; i < columns; ++i)
            if (sum[i] < least) {
                least = sum[i];
                x = i;
                y = bottom;
            }
    }
    return least;
}

Nester::Nester(MaskSet& masks, const Page& page, size_t charts, std::function<bool()> goes_on)
    : masks_(masks), page_(page), goes_on_(std::move(goes_on)) {
    plan_.fine_turn.assign(charts, 0);
}

const Mask& Nester::mask(const Pose& pose) {
    plan_.fine_turn[pose.chart] = pose.fine_turn;
    return masks_.mask(plan_, pose.chart, pose.quarter);
}

const NestShape& Nester::shape(const Pose& pose, bool coarse) {
    const size_t turns = MaskSet::k_fine * MaskSet::k_quarters;
    const size_t i = pose.chart * turns + pose.fine_turn * MaskSet::k_quarters + pose.quarter;
    NestShape& out = coarse ? coarse_shapes_[i] : shapes_[i];
    if (!out.runs.empty())
        return out;
    if (coarse) {
        take_coarse_columns(mask(pose), out);
    } else {
        mask(pose); // draws the fine turn
        take_columns(masks_.mask(plan_, pose.chart, (pose.quarter + 1) % MaskSet::k_quarters), out);
    }
    effort_ += out.runs.size();
    return out;
}

bool Nester::start(const std::vector<Pose>& poses, const std::vector<Vec2>& centres) {
    const size_t turns = MaskSet::k_fine * MaskSet::k_quarters;
    shapes_.resize(plan_.fine_turn.size() * turns);
    coarse_shapes_.resize(shapes_.size());
    for (std::vector<NestShape>* list : {&shapes_, &coarse_shapes_})
        for (NestShape& s : *list)
            s.runs.clear();
    poses_ = poses;
    weight_.assign(poses.size() * poses.size(), k_first_weight);
    for (size_t i = 0; i < poses.size(); ++i) {
        const NestShape& s = shape(poses_[i]);
        if (s.width > int32_t(page_.width) || s.height > int32_t(page_.height))
            return false;
        place_at(poses_[i], centres[i] * page_.density);
    }
    return true;
}

/// Moves a chart so that its centre is as near to `centre` as the page allows.
void Nester::place_at(Pose& pose, Vec2 centre) {
    const NestShape& s = shape(pose);
    const auto clamp = [](double low, int32_t size, uint32_t page) {
        return std::min(int32_t(page) - size, std::max(0, int32_t(low)));
    };
    pose.x = clamp(centre.x - 0.5 * s.width + 0.5, s.width, page_.width);
    pose.y = clamp(centre.y - 0.5 * s.height + 0.5, s.height, page_.height);
}

std::vector<Vec2> Nester::centres() {
    std::vector<Vec2> out;
    for (const Pose& pose : poses_) {
        const NestShape& s = shape(pose);
        out.push_back(Vec2{pose.x + 0.5 * s.width, pose.y + 0.5 * s.height} * (1 / page_.density));
    }
    return out;
}

Layout Nester::layout() {
    Layout layout;
    layout.scale = masks_.scale();
    layout.slots.resize(plan_.fine_turn.size());
    for (const Pose& pose : poses_) {
        const Mask& drawn = mask(pose); // sets the fine turn
        layout.slots[pose.chart] =
            masks_.slot(plan_, pose.chart, pose.quarter, drawn, uint32_t(pose.x), uint32_t(pose.y));
    }
    layout.complete = find_overlaps() == 0;
    return layout;
}

int64_t Nester::shared_cells(const Pose& left, const Pose& right) {
    if (right.x < left.x)
        return shared_cells(right, left);
    const Mask& a = mask(left);
    const Mask& b = mask(right);
    const int32_t dx = right.x - left.x, dy = right.y - left.y;
    const int32_t first = std::max(0, dy);
    const int32_t last = std::min(int32_t(a.height), dy + int32_t(b.height));
    if (dx >= int32_t(a.width) || first >= last)
        return 0;
    const uint32_t skip = uint32_t(dx) / 64, shift = uint32_t(dx) % 64;
    const uint32_t words = std::min(a.words, skip + b.words + (shift != 0 ? 1 : 0));
    effort_ += uint64_t(last - first) * (words - skip);
    int64_t cells = 0;
    for (int32_t r = first; r < last; ++r)
        for (uint32_t k = skip; k < words; ++k) {
            const uint32_t at = k - skip, y = uint32_t(r - dy);
            uint64_t w = at < b.words ? b.row_word(y, at) << shift : 0;
            if (shift != 0 && at > 0)
                w |= b.row_word(y, at - 1) >> (64 - shift);
            w &= a.row_word(uint32_t(r), k);
            if (w != 0)
                cells += count_bits(w);
        }
    return cells;
}

/// Fills found_; returns how many cells are shared.
int64_t Nester::find_overlaps() {
    found_.clear();
    int64_t total = 0;
    for (uint32_t i = 0; i < poses_.size(); ++i)
        for (uint32_t j = i + 1; j < poses_.size(); ++j) {
            const int64_t cells = shared_cells(poses_[i], poses_[j]);
            if (cells != 0)
                found_.push_back({i, j, cells});
            total += cells;
        }
    return total;
}

/// Overlaps that are there weigh more from now on, large ones most; their charts are to move, in
/// random order.
void Nester::raise_weights() {
    int64_t most = 1;
    for (const Found& f : found_)
        most = std::max(most, f.cells);
    moving_.clear();
    for (const Found& f : found_) {
        int32_t& weight = weight_[f.i * poses_.size() + f.j];
        weight = std::min(k_max_weight, weight + weight / 8 + int32_t(f.cells * weight / most));
        weight_[f.j * poses_.size() + f.i] = weight;
        moving_.push_back(f.i);
        moving_.push_back(f.j);
    }
    std::sort(moving_.begin(), moving_.end());
    moving_.erase(std::unique(moving_.begin(), moving_.end()), moving_.end());
    for (uint32_t i = uint32_t(moving_.size()); i > 1; --i)
        std::swap(moving_[i - 1], moving_[random_.below(i)]);
}

bool Nester::separate(int64_t tolerance, int patience, bool everywhere) {
    std::vector<Pose> best;
    int64_t least = INT64_MAX;
    for (int rounds = 0;; ++rounds) {
        const int64_t total = find_overlaps();
        if (total < least) {
            least = total;
            best = poses_;
            rounds = 0;
        }
        if (total <= tolerance || rounds >= patience || !goes_on_())
            break;
        raise_weights();
        for (uint32_t i : moving_)
            move(i, everywhere);
    }
    poses_ = best;
    return least <= tolerance;
}

void Nester::swap_two() {
    const uint32_t n = uint32_t(poses_.size()), i = random_.below(n), j = random_.below(n);
    const std::vector<Vec2> at = centres();
    place_at(poses_[i], at[j] * page_.density);
    place_at(poses_[j], at[i] * page_.density);
}

/// The map of all other charts, as they weigh for chart i.
void Nester::open_map(uint32_t i, bool everywhere) {
    const Pose& pose = poses_[i];
    const NestShape& own = shape(pose);
    const int32_t width = int32_t(page_.width), height = int32_t(page_.height);
    const int32_t left = everywhere ? 0 : std::max(0, pose.x - k_margin);
    const int32_t low = everywhere ? 0 : std::max(0, pose.y - k_margin);
    const int32_t right = everywhere ? width : std::min(width, pose.x + own.width + k_margin);
    const int32_t high = everywhere ? height : std::min(height, pose.y + own.height + k_margin);
    map_.open(left, low, right - left, high - low);
    for (uint32_t j = 0; j < poses_.size(); ++j)
        if (j != i)
            map_.add(shape(poses_[j]), poses_[j].x, poses_[j].y, weight_[i * poses_.size() + j]);
    map_.close();
}

/// Moves a chart by steps of `step` cells and less for as long as that lowers the cost.
int64_t Nester::descend(Pose& pose, int64_t cost, int32_t step) {
    const NestShape& s = shape(pose);
    while (step > 0 && cost > 0) {
        const Pose from = pose;
        for (int32_t dy = -step; dy <= step; dy += step)
            for (int32_t dx = -step; dx <= step; dx += step) {
                const int32_t x = from.x + dx, y = from.y + dy;
                if ((dx == 0 && dy == 0) || !map_.holds(s, x, y))
                    continue;
                const int64_t there = map_.under(s, x, y);
                if (there < cost) {
                    cost = there;
                    pose.x = x;
                    pose.y = y;
                }
            }
        if (pose.x == from.x && pose.y == from.y)
            step /= 2;
    }
    return cost;
}

/// Looks for a better place on all of the page, in every quarter turn, with the present fine turn
/// and another.
int64_t Nester::look_everywhere(Pose& pose, int64_t cost) {
    map_.shrink(k_coarse, coarse_);
    std::vector<std::pair<int64_t, Pose>> candidates;
    const auto try_turns = [&](uint32_t fine_turn) {
        for (uint32_t quarter = 0; quarter < MaskSet::k_quarters; ++quarter) {
            Pose p{pose.chart, uint8_t(fine_turn), uint8_t(quarter), 0, 0};
            const NestShape& s = shape(p);
            int32_t x = 0, y = 0;
            if (s.width > int32_t(page_.width) || s.height > int32_t(page_.height))
                continue;
            const int64_t least = coarse_.find_least(shape(p, true), x, y);
            if (least == INT64_MAX)
                continue;
            p.x = std::min(x * k_coarse, int32_t(page_.width) - s.width);
            p.y = std::min(y * k_coarse, int32_t(page_.height) - s.height);
            candidates.push_back({least, p});
        }
    };
    try_turns(pose.fine_turn);
    if (masks_.chains().shapes[pose.chart].turns_finely)
        try_turns(random_.below(MaskSet::k_fine));
    std::stable_sort(candidates.begin(), candidates.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    for (size_t k = 0; k < candidates.size() && k < k_candidates; ++k) {
        Pose p = candidates[k].second;
        const int64_t there = descend(p, map_.under(shape(p), p.x, p.y), k_coarse / 2);
        if (there < cost) {
            cost = there;
            pose = p;
        }
    }
    return cost;
}

/// Moves a chart to where it overlaps less, if there is such a place.
void Nester::move(uint32_t i, bool everywhere) {
    open_map(i, everywhere);
    Pose pose = poses_[i];
    int64_t cost = map_.under(shape(pose), pose.x, pose.y);
    cost = descend(pose, cost, k_coarse);
    if (everywhere && cost > 0)
        look_everywhere(pose, cost);
    poses_[i] = pose;
}

} // namespace tessora::atlas
