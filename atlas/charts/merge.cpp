#include "atlas/charts/merge.h"

#include <algorithm>
#include <limits>

namespace tessora::atlas {
namespace {

int bit_length(size_t n) {
    int bits = 0;
    for (; n != 0; n >>= 1)
        ++bits;
    return bits;
}

uint64_t pair_key(uint32_t a, uint32_t b) { return uint64_t(a) << 32 | b; }

} // namespace

Merger::Merger(Flattener& flattener, const MergeOptions& options, ParallelFor executor)
    : flattener_(flattener), set_(flattener.set), state_(set_, options, executor),
      executor_(executor), history_(set_.charts.size()), first_trial_(flattener, state_) {
    for (uint32_t a = 0; a < history_.size(); ++a)
        history_[a].parent = a;
    shared_.length.assign(history_.size(), 0);
}

/// Queues a chart with each of its neighbours. Long common borders come first and small pairs
/// before large ones, which keeps the growth of charts balanced.
void Merger::push_pairs(uint32_t a) {
    constexpr double k_priority_per_doubling = 0.1; // docs/atlas.md, "Merging"
    const Chart& chart = set_.charts[a];
    if (state_.hardness(a, a) < state_.terms.min_hardness)
        return;
    for (uint32_t h : chart.border) {
        const uint32_t mate = set_.surface.mate[h];
        const uint32_t b = mate == k_none ? a : set_.chart[mate / 3];
        if (b == a || state_.hardness(b, b) < state_.terms.min_hardness)
            continue;
        if (shared_.length[b] == 0)
            shared_.charts.push_back(b);
        shared_.length[b] += set_.surface.edge_length(h);
    }
    for (uint32_t b : shared_.charts) {
        const Chart& other = set_.charts[b];
        const double shorter = std::min(chart.border_length, other.border_length);
        const int size = bit_length(chart.faces.size() + other.faces.size());
        const double priority = shared_.length[b] / shorter - k_priority_per_doubling * size;
        shared_.length[b] = 0;
        const uint32_t low = std::min(a, b), high = std::max(a, b);
        push({priority, low, high, history_[low].version, history_[high].version});
    }
    shared_.charts.clear();
}

void Merger::push(const Pair& p) {
    if (head_.empty() || !(head_.back().pair < p)) {
        queue_.push(p);
        return;
    }
    auto at = head_.begin();
    while (!(at->pair < p))
        ++at;
    head_.emplace(at)->pair = p;
}

/// Whether one of the charts is no longer the one that was queued.
bool Merger::is_stale(const Pair& p) const {
    return !set_.charts[p.a].alive || !set_.charts[p.b].alive ||
           history_[p.a].version != p.version_a || history_[p.b].version != p.version_b;
}

/// A pair is retried once both of its charts have changed; in fast mode never. The answer may
/// change while pairs ahead are being decided: only for the first pair of the queue it is the last
/// word.
bool Merger::failed_before(const Pair& p) {
    const bool a_shorter = history_[p.a].failures.size() <= history_[p.b].failures.size();
    const uint32_t own = a_shorter ? p.a : p.b, other = a_shorter ? p.b : p.a;
    for (FailedPair& f : history_[own].failures) {
        while (history_[f.other].parent != f.other)
            f.other = history_[f.other].parent;
        if (f.other == other &&
            (!state_.options.thorough || f.own_version == history_[own].version ||
             f.other_version == history_[other].version))
            return true;
    }
    return false;
}

/// Whether an earlier run has tried these versions of the pair, and the limit has not risen enough
/// since for another result.
bool Merger::refused_before(const Pair& p) const {
    const auto found = refusals_.find(pair_key(p.a, p.b));
    return found != refusals_.end() && found->second.version_a == p.version_a &&
           found->second.version_b == p.version_b && state_.terms.limit < found->second.below;
}

/// Refusals hold for any limit, but only as long as nothing else that decides changes.
void Merger::forget_refusals_unless_same(MergeRound round, const MergeTerms& terms) {
    if (round != state_.round || terms.slack != state_.terms.slack)
        refusals_.clear();
}

bool Merger::run(MergeRound round, const MergeTerms& terms, ProgressMeter& progress) {
    constexpr size_t k_most_workers = 64; // those beyond the executor's threads find nothing to do
    forget_refusals_unless_same(round, terms);
    state_.round = round;
    state_.terms = terms;
    for (History& history : history_)
        history.failures.clear();
    state_.charts = 0;
    for (const Chart& chart : set_.charts)
        state_.charts += chart.alive;
    for (uint32_t a = 0; a < set_.charts.size(); ++a)
        if (set_.charts[a].alive)
            push_pairs(a);
    merged_ = 0;
    parallel_for(executor_, executor_ == nullptr ? 1 : k_most_workers,
                 [&](size_t) { work(progress); });
    return !stopped_;
}

/// Tries pairs until the queue is empty. Any number of threads may do this. A single one always
/// tries the first pair, so that no trial is in vain.
void Merger::work(ProgressMeter& progress) {
    std::unique_lock<std::mutex> lock(mutex_);
    size_t reported = 0;
    try {
        for (settle_decided(); report(progress, reported, lock);) {
            if (Candidate* next = next_trial())
                run_trial(*next, lock);
            else if (running_ != 0)
                changed_.wait(lock);
            else
                return;
        }
    } catch (...) {
        if (!lock.owns_lock())
            lock.lock();
        stopped_ = true;
        changed_.notify_all();
        throw;
    }
}

/// Reports the merges that have been made since the last report. False if merging is to stop.
bool Merger::report(ProgressMeter& progress, size_t& reported, std::unique_lock<std::mutex>& lock) {
    if (reported != merged_) {
        reported = merged_;
        lock.unlock();
        const bool go_on = progress.advance(double(reported) / double(set_.charts.size()));
        lock.lock();
        stopped_ = stopped_ || !go_on;
    }
    if (stopped_)
        changed_.notify_all();
    return !stopped_;
}

/// Moves the next pair from the queue to the end of head_. False if there is none.
bool Merger::fill_head() {
    if (queue_.empty())
        return false;
    head_.emplace_back().pair = queue_.top();
    queue_.pop();
    return true;
}

/// Takes over, in order, whatever has been decided at the head of the queue.
void Merger::settle_decided() {
    while ((!head_.empty() || fill_head()) && is_decided(head_.front())) {
        Candidate first = std::move(head_.front());
        head_.pop_front();
        settle(std::move(first));
    }
}

bool Merger::is_decided(const Candidate& candidate) {
    if (candidate.trial == Candidate::Trial::none)
        return is_stale(candidate.pair) || failed_before(candidate.pair) ||
               refused_before(candidate.pair);
    return candidate.trial != Candidate::Trial::running;
}

void Merger::settle(Candidate&& candidate) {
    const Pair& p = candidate.pair;
    if (is_stale(p) || failed_before(p))
        return;
    if (candidate.trial == Candidate::Trial::joined) {
        ++merged_;
        commit(std::move(candidate.joined));
        return;
    }
    if (candidate.trial == Candidate::Trial::failed)
        refusals_[pair_key(p.a, p.b)] = {p.version_a, p.version_b, candidate.next_limit};
    history_[p.a].failures.push_back({p.b, p.version_a, p.version_b});
    history_[p.b].failures.push_back({p.a, p.version_b, p.version_a});
}

/// The first pair that is worth trying now: both of its charts are neither in a trial nor in a pair
/// ahead that may still join them to others. Null if there is none near the head of the queue.
Merger::Candidate* Merger::next_trial() {
    constexpr size_t k_ahead = 16, k_ahead_per_trial = 8;
    const size_t most = running_ == 0 ? 1 : k_ahead + k_ahead_per_trial * running_;
    ++claims_;
    auto at = head_.begin();
    for (size_t i = 0; i < most; ++i) {
        if (at == head_.end()) {
            if (!fill_head())
                return nullptr;
            at = std::prev(head_.end());
        }
        const Candidate::Trial trial = at->trial;
        if (trial == Candidate::Trial::none && is_stale(at->pair)) {
            at = head_.erase(at);
            continue;
        }
        const bool fails = trial == Candidate::Trial::failed ||
                           (trial == Candidate::Trial::none && is_like_another(at));
        if (!fails && claim(at->pair) && trial == Candidate::Trial::none)
            return &*at;
        ++at;
    }
    return nullptr;
}

/// Whether a pair that has not been tried is likely to be refused without a trial, because it or
/// one like it failed before; or because the queue has it twice.
bool Merger::is_like_another(std::list<Candidate>::iterator candidate) {
    const Pair& p = candidate->pair;
    return failed_before(p) || refused_before(p) ||
           std::any_of(head_.begin(), candidate, [&](const Candidate& other) {
               return other.pair.a == p.a && other.pair.b == p.b;
           });
}

/// Marks both charts as taken for the rest of next_trial. True if neither was, nor is in a trial.
bool Merger::claim(const Pair& p) {
    bool free = true;
    for (uint32_t chart : {p.a, p.b}) {
        free = free && !history_[chart].in_trial && history_[chart].claim != claims_;
        history_[chart].claim = claims_;
    }
    return free;
}

/// Tries a pair with the lock released. If it is not the first by then, a union is taken apart
/// again until it is.
void Merger::run_trial(Candidate& candidate, std::unique_lock<std::mutex>& lock) {
    const auto begin_or_end = [&](bool begins) {
        for (uint32_t chart : {candidate.pair.a, candidate.pair.b})
            history_[chart].in_trial = begins;
        running_ += begins ? 1 : size_t(-1);
    };
    const auto trial = trials_.lease([&] {
        flatteners_.push_back(std::make_unique<Flattener>(set_, flattener_.options));
        return std::make_unique<MergeTrial>(*flatteners_.back(), state_);
    });
    candidate.trial = Candidate::Trial::running;
    begin_or_end(true);
    trial->begin(candidate.pair.a, candidate.pair.b);
    lock.unlock();
    const bool joined = trial->run();
    if (joined)
        candidate.joined = trial->take_union();
    lock.lock();
    settle_decided();
    if (joined && (&candidate != &head_.front() || failed_before(candidate.pair))) {
        lock.unlock();
        trial->take_back(candidate.joined.change);
        lock.lock();
    }
    candidate.next_limit = trial->next_limit();
    candidate.trial = joined ? Candidate::Trial::joined : Candidate::Trial::failed;
    begin_or_end(false);
    settle_decided();
    changed_.notify_all();
}

/// Makes a union again that was taken apart.
void Merger::redo(const Union::Change& change) {
    for (uint32_t h : change.edges)
        set_.set_glued(h, true);
    for (uint32_t n : change.nodes)
        set_.rename_node(n);
    for (const auto& [node, uv] : change.uv)
        set_.uv[node] = uv;
}

/// Replaces chart b by the union; chart a is no longer alive.
void Merger::commit(Union&& joined) {
    redo(joined.change);
    for (const auto& [t, sums] : joined.face_sums)
        state_.face_sums[t] = sums;
    const uint32_t a = joined.a, b = joined.b;
    joined.chart.stretch.flipped = 0;
    Chart& from = set_.charts[a];
    Chart& to = set_.charts[b];
    for (uint32_t t : from.faces)
        set_.chart[t] = b;
    joined.chart.faces = std::move(to.faces);
    joined.chart.faces.insert(joined.chart.faces.end(), from.faces.begin(), from.faces.end());
    to = std::move(joined.chart);
    from = Chart{};
    from.alive = false;
    history_[a].parent = b;
    history_[a].failures = {};
    state_.extent[b].hard_area += state_.extent[a].hard_area;
    state_.extent[b].box = joined.box;
    ++history_[b].version;
    push_pairs(b);
}

/// Glues h to its mate if both are slit sides in the same place. True if it did.
bool Merger::zip_edge(uint32_t h) {
    const uint32_t mate = set_.surface.mate[h];
    if (mate == k_none || set_.glued[h] || set_.chart[h / 3] != set_.chart[mate / 3])
        return false;
    const uint32_t from = set_.node[h], to = set_.node[next_corner(h)];
    const uint32_t mate_from = set_.node[mate], mate_to = set_.node[next_corner(mate)];
    if (!(set_.uv[from] == set_.uv[mate_to]) || !(set_.uv[to] == set_.uv[mate_from]))
        return false;
    set_.set_glued(h, true);
    set_.rename_node(from);
    if (from != to)
        set_.rename_node(to);
    return true;
}

void Merger::zip() {
    for (Chart& chart : set_.charts) {
        if (!chart.alive)
            continue;
        bool changed = false;
        for (uint32_t h : chart.border)
            changed = zip_edge(h) || changed;
        if (changed)
            set_.trace_border(chart);
    }
}

} // namespace tessora::atlas
