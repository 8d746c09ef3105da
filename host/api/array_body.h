/// Member definitions of host::Array, for the sources that instantiate array classes.
#pragma once

#include "host/base/fault.h"

#include <maya/HostArray.h>

#include <algorithm>

namespace host {

/// Name of the fault point of `append`; specialized for every array class.
template <class T>
const char* append_point();

template <class T>
Array<T>::Array() = default;

template <class T>
Array<T>::Array(unsigned int length, const T& value) : items_(length, value) {}

template <class T>
Array<T>::Array(const Array& other) = default;

template <class T>
Array<T>& Array<T>::operator=(const Array& other) = default;

template <class T>
Array<T>::~Array() = default;

template <class T>
MStatus Array<T>::assign(const Array& other) {
    return guard_memory([&] { items_ = other.items_; });
}

template <class T>
MStatus Array<T>::set(const T& element, unsigned int index) {
    if (index >= items_.size())
        return MS::kInvalidParameter;
    items_[index] = element;
    return MS::kSuccess;
}

template <class T>
MStatus Array<T>::setLength(unsigned int length) {
    return guard_memory([&] { items_.resize(length); });
}

template <class T>
MStatus Array<T>::append(const T& element) {
    const MStatus fault = pass_fault(append_point<T>());
    if (fault.error())
        return fault;
    if (items_.size() < items_.capacity()) {
        items_.push_back(element);
        return MS::kSuccess;
    }
    return guard_memory([&] {
        const T kept = element; // a copy, because it may refer to memory that growing frees
        const std::size_t size = items_.size();
        items_.reserve(std::max<std::size_t>(size + increment_, size * 2));
        items_.push_back(kept);
    });
}

template <class T>
MStatus Array<T>::insert(const T& element, unsigned int index) {
    if (index > items_.size())
        return MS::kInvalidParameter;
    return guard_memory([&] {
        const T kept = element;
        items_.insert(items_.begin() + index, kept);
    });
}

template <class T>
MStatus Array<T>::remove(unsigned int index) {
    if (index >= items_.size())
        return MS::kInvalidParameter;
    items_.erase(items_.begin() + index);
    return MS::kSuccess;
}

template <class T>
MStatus Array<T>::clear() {
    items_.clear();
    return MS::kSuccess;
}

template <class T>
MStatus Array<T>::get(T values[]) const {
    std::copy(items_.begin(), items_.end(), values);
    return MS::kSuccess;
}

} // namespace host

/// Defines the members of public array class CLASS, derived from host::Array<TYPE>.
#define MHOST_DEFINE_ARRAY(CLASS, TYPE, VALUE)                                                     \
    template <>                                                                                    \
    const char* host::append_point<TYPE>() {                                                       \
        return #CLASS "::append";                                                                  \
    }                                                                                              \
    template class host::Array<TYPE>;                                                              \
    CLASS::CLASS() = default;                                                                      \
    CLASS::CLASS(const CLASS& other) = default;                                                    \
    CLASS::CLASS(unsigned int initialSize, VALUE initialValue)                                     \
        : host::Array<TYPE>(initialSize, initialValue) {}                                          \
    CLASS::~CLASS() = default;                                                                     \
    CLASS& CLASS::operator=(const CLASS& other) = default;                                         \
    MStatus CLASS::copy(const CLASS& source) { return assign(source); }
