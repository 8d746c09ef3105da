/// Base of the public array classes. Indices start at 0; access by index is not range-checked.
/// `clear`, `setLength` and `remove` keep the allocated memory, so an array that is refilled
/// repeatedly stops allocating. An operation that runs out of memory returns kInsufficientMemory
/// and leaves the array unchanged.
#pragma once

#include <maya/MStatus.h>

#include <vector>

namespace host {

template <class T>
class Array {
public:
    const T& operator[](unsigned int index) const { return items_[index]; }
    T& operator[](unsigned int index) { return items_[index]; }
    unsigned int length() const { return static_cast<unsigned int>(items_.size()); }

    /// Replaces an element.
    /// Errors: kInvalidParameter if the index is out of range.
    MStatus set(const T& element, unsigned int index);
    /// Additional elements are zero or empty.
    MStatus setLength(unsigned int length);
    MStatus append(const T& element);
    /// Inserts an element before `index`, which may equal the length.
    MStatus insert(const T& element, unsigned int index);
    MStatus remove(unsigned int index);
    MStatus clear();
    /// Copies all elements into a buffer with room for `length()` elements.
    MStatus get(T values[]) const;

    /// Number of spare elements to allocate when the array grows; a hint.
    void setSizeIncrement(unsigned int increment) { increment_ = increment; }
    unsigned int sizeIncrement() const { return increment_; }

protected:
    Array();
    Array(unsigned int length, const T& value);
    Array(const Array& other);
    Array& operator=(const Array& other);
    ~Array();
    MStatus assign(const Array& other);

private:
    std::vector<T> items_;
    unsigned int increment_ = 16;
};

} // namespace host
