/// A fixed-size buffer for the look-up tables of one operation. Allocated by the core library's
/// counting allocator; elements are plain records and not initialised. Running out of memory is
/// reported by a false result.
#pragma once

#include "corelib/memory.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

template <class T>
class WorkBuffer {
    static_assert(std::is_trivially_copyable_v<T>, "elements are raw memory");

public:
    WorkBuffer() = default;
    ~WorkBuffer() { core_free(data_); }
    WorkBuffer(const WorkBuffer&) = delete;
    WorkBuffer& operator=(const WorkBuffer&) = delete;

    /// To be called once. A count of 0 allocates nothing and succeeds.
    bool allocate(size_t count) {
        if (count == 0)
            return true;
        if (count > SIZE_MAX / sizeof(T))
            return false;
        data_ = static_cast<T*>(core_realloc(nullptr, count * sizeof(T)));
        count_ = data_ == nullptr ? 0 : count;
        return data_ != nullptr;
    }

    /// Allocates and sets every element to `value`.
    bool allocate(size_t count, const T& value) {
        if (!allocate(count))
            return false;
        for (T& element : *this)
            element = value;
        return true;
    }

    size_t count() const { return count_; }
    T& operator[](size_t index) { return data_[index]; }
    const T& operator[](size_t index) const { return data_[index]; }
    T* begin() { return data_; }
    T* end() { return data_ + count_; }
    const T* begin() const { return data_; }
    const T* end() const { return data_ + count_; }

private:
    T* data_ = nullptr;
    size_t count_ = 0;
};
