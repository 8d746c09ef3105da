/// Owning, typed handle of a host object: MObject for the host's own code.
#pragma once

#include "host/base/object.h"

#include <utility>

namespace host {

template <class T>
class Ref {
public:
    Ref() = default;
    Ref(T* object) : object_(object) {
        if (object_ != nullptr)
            object_->retain();
    }
    Ref(const Ref& other) : Ref(other.object_) {}
    Ref(Ref&& other) noexcept : object_(std::exchange(other.object_, nullptr)) {}
    ~Ref() {
        if (object_ != nullptr)
            object_->release();
    }
    Ref& operator=(Ref other) noexcept {
        std::swap(object_, other.object_);
        return *this;
    }

    T* get() const { return object_; }
    T& operator*() const { return *object_; }
    T* operator->() const { return object_; }
    explicit operator bool() const { return object_ != nullptr; }
    bool operator==(const Ref& other) const { return object_ == other.object_; }
    bool operator!=(const Ref& other) const { return object_ != other.object_; }

private:
    T* object_ = nullptr;
};

} // namespace host
