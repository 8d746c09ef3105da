/// Greedy merging of charts along common borders: which pairs are tried, and in which order.
///
/// A queue holds the pairs of neighbouring charts. Trials of pairs further back may run beside that
/// of the first, on other threads, as long as no chart is in two of them; what they find is taken
/// over only in the order of the queue, and only if their charts are still the same then. So the
/// result does not depend on the number of threads.
#pragma once

#include "atlas/charts/merge_trial.h"
#include "atlas/parallel.h"
#include "atlas/progress.h"

#include <condition_variable>
#include <list>
#include <mutex>
#include <queue>
#include <unordered_map>

namespace tessora::atlas {

class Merger {
public:
    Merger(Flattener& flattener, const MergeOptions& options, ParallelFor executor);
    /// Merges until no pair is left. False if the callback asked to stop.
    bool run(MergeRound round, const MergeTerms& terms, ProgressMeter& progress);
    /// Glues the two sides of every slit that coincide in UV space; no coordinate changes.
    void zip();

private:
    /// Two charts that share a border, in the order of merging.
    struct Pair {
        double priority;
        uint32_t a, b, version_a, version_b;
        bool operator<(const Pair& o) const {
            if (priority != o.priority)
                return priority < o.priority;
            if (a != o.a)
                return a > o.a;
            return b > o.b;
        }
    };
    struct FailedPair {
        uint32_t other, own_version, other_version;
    };
    /// What is known of a pair that failed: trying these versions again fails in the same way under
    /// every limit below the given one.
    struct Refusal {
        uint32_t version_a, version_b;
        double below;
    };
    /// Data that merging keeps for each chart.
    struct History {
        uint32_t version = 0; ///< merges so far; pairs queued for an earlier version are stale
        uint32_t parent = 0;  ///< the chart that absorbed this one; itself if none has
        uint32_t claim = 0;   ///< value of claims_ when next_trial last took it
        bool in_trial = false;
        std::vector<FailedPair> failures;
    };
    /// Workspace of push_pairs.
    struct SharedBorders {
        std::vector<double> length; ///< per chart: of the border shared with it; 0 when unused
        std::vector<uint32_t> charts;
    };
    /// One of the pairs at the head of the queue.
    struct Candidate {
        enum class Trial { none, running, failed, joined };
        Pair pair;
        Trial trial = Trial::none;
        double next_limit = 0; ///< of a trial that has ended
        Union joined;          ///< of a trial that joined the charts
    };

    void push_pairs(uint32_t a);
    void push(const Pair& p);
    bool is_stale(const Pair& p) const;
    bool failed_before(const Pair& p);
    bool refused_before(const Pair& p) const;
    void forget_refusals_unless_same(MergeRound round, const MergeTerms& terms);
    void commit(Union&& joined);
    void redo(const Union::Change& change);
    bool zip_edge(uint32_t h);

    void work(ProgressMeter& progress);
    bool report(ProgressMeter& progress, size_t& reported, std::unique_lock<std::mutex>& lock);
    bool fill_head();
    void settle_decided();
    bool is_decided(const Candidate& candidate);
    void settle(Candidate&& candidate);
    bool is_like_another(std::list<Candidate>::iterator candidate);
    Candidate* next_trial();
    bool claim(const Pair& p);
    void run_trial(Candidate& candidate, std::unique_lock<std::mutex>& lock);

    Flattener& flattener_;
    ChartSet& set_;
    MergeState state_;
    const ParallelFor executor_;
    std::priority_queue<Pair> queue_;
    std::list<Candidate> head_;                      ///< in order; all are before those in queue_
    std::vector<History> history_;                   ///< per chart
    std::unordered_map<uint64_t, Refusal> refusals_; ///< by pair_key
    SharedBorders shared_;
    std::mutex mutex_;                ///< of all this and of the charts that are not in a trial
    std::condition_variable changed_; ///< a trial has ended
    size_t running_ = 0;              ///< trials
    size_t merged_ = 0;               ///< pairs, in this run
    uint32_t claims_ = 0;
    bool stopped_ = false;
    MergeTrial first_trial_;
    std::vector<std::unique_ptr<Flattener>> flatteners_; ///< of the other trials
    WorkspacePool<MergeTrial> trials_{first_trial_};
};

} // namespace tessora::atlas
