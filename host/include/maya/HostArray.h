/// What the array classes of the interface share. Elements are numbered from 0 and access by index
/// is not checked. Shrinking (`clear`, `setLength`, `remove`) keeps the memory, so an array that is
/// filled over and over stops allocating once it has grown. An operation that cannot get memory
/// fails with kInsufficientMemory and leaves the array as it was.
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

    /// Replaces one element; kInvalidParameter outside the array.
    MStatus set(const T& element, unsigned int index);
    /// New elements are zero or empty.
    MStatus setLength(unsigned int length);
    MStatus append(const T& element);
    /// Puts an element before `index` (the length itself is allowed).
    MStatus insert(const T& element, unsigned int index);
    MStatus remove(unsigned int index);
    MStatus clear();
    /// Copies all elements into a buffer of at least `length()` elements.
    MStatus get(T values[]) const;

    /// How many elements more than needed an array asks for when it grows; a hint.
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
