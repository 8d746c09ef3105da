/// Restores a variable at the end of a scope.
#pragma once

namespace host {

template <class T>
class Restore {
public:
    explicit Restore(T& variable) : variable_(variable), before_(variable) {}
    ~Restore() { variable_ = before_; }
    Restore(const Restore&) = delete;
    Restore& operator=(const Restore&) = delete;

private:
    T& variable_;
    T before_;
};

} // namespace host
