/// Makes the n-th use of operator new throw.
#pragma once

/// Active during its lifetime; 0 = no failure.
class FailingNew {
public:
    explicit FailingNew(unsigned nth);
    ~FailingNew();
    FailingNew(const FailingNew&) = delete;
    FailingNew& operator=(const FailingNew&) = delete;
    /// Whether an allocation has failed.
    static bool happened();
};
