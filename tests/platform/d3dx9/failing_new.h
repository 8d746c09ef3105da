/// Memory that runs out: the n-th use of operator new throws.
#pragma once

/// Counts down while it lives; 0 lets everything through.
class FailingNew {
public:
    explicit FailingNew(unsigned nth);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
    /// Whether the failing request came.
    static bool happened();
};
