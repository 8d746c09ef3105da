/// The growable, bounds-checked array that holds all engine data.
///
/// Elements are plain records copied bit for bit; no element constructor or destructor ever runs,
/// and elements added by growth are not initialised unless ARRAY_ZERO_FILL is set. A broken
/// contract is a BUG report that ends the process; if memory runs out the operation returns false
/// and leaves the array unchanged. All counts and indices are unsigned 32-bit. The array owns its
/// buffer but not what its elements point to.
///
/// BUG reports name the operation as "array<ELEMENT>::OPERATION". ELEMENT comes from
/// `array_element_name`, because logs have always spelled 32-bit elements "unsigned long", also on
/// systems where that C++ type has 64 bits.
#pragma once

#include "corelib/memory.h"

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <type_traits>
#include <utility>

template <class T>
class array;

/// The spelling of an element type in BUG reports; specialised next to each element type.
template <class T>
struct array_element_name;
template <>
struct array_element_name<uint32_t> {
    static constexpr const char* text = "unsigned long";
};
template <>
struct array_element_name<array<uint32_t>*> {
    static constexpr const char* text = "class array<unsigned long> *";
};

/// Ends the process with a BUG report of an array operation; `assertion` may be null.
[[noreturn]] void report_array_bug(const char* element, const char* operation, int line,
                                   const char* assertion);

/// Bits of `array::properties`.
enum ArrayProperty : uint32_t {
    ARRAY_CONSTANT_SIZE = 1,           ///< the element count must not change
    ARRAY_ZERO_FILL = 2,               ///< elements added by growth are zeroed
    ARRAY_CONSTANT_BUFFER_ADDRESS = 4, ///< the buffer must not move
};

template <class T>
class array {
    static_assert(std::is_trivially_copyable_v<T>, "elements are copied bit for bit");

public:
    array() = default;
    array(array&& other) noexcept { swap(other); }
    array& operator=(array&& other) noexcept {
        array taken(std::move(other));
        swap(taken);
        return *this;
    }
    array(const array&) = delete;
    array& operator=(const array&) = delete;
    ~array() { core_free(raw_buffer_); }

    uint32_t count() const { return cur_elements_; }
    uint32_t capacity() const { return max_elements_; }
    /// The first element; null if there is no buffer.
    T* data() { return data_; }
    const T* data() const { return data_; }
    bool is_constant_size() const { return (properties_ & ARRAY_CONSTANT_SIZE) != 0; }
    bool is_constant_buffer_address() const {
        return (properties_ & ARRAY_CONSTANT_BUFFER_ADDRESS) != 0;
    }
    void set_properties(uint32_t properties) { properties_ = properties; }
    /// Alignment of the first element in bytes, a power of two; 0 = that of the allocator.
    void set_alignment(uint32_t alignment) { alignment_ = alignment; }

    T get(uint32_t ind) const {
        require(ind < cur_elements_, "get", __LINE__, "ind < cur_elements");
        return data_[ind];
    }

    /// Grows to hold `ind`; if memory runs out, that is a BUG.
    T& operator[](uint32_t ind) {
        if (ind >= cur_elements_) {
            require(!is_constant_size(), "operator []", __LINE__, "!is_constant_size()");
            if (ind >= max_elements_ && !grow_to_hold(ind))
                report_array_bug(element(), "operator []", __LINE__, nullptr);
            cur_elements_ = ind + 1;
        }
        return data_[ind];
    }

    /// Takes `e` by value, so that an element of the array itself may be appended.
    bool append(T e) {
        require(!is_constant_size(), "append", __LINE__, "!is_constant_size()");
        if (cur_elements_ == max_elements_ && !grow_to_hold(cur_elements_))
            return false;
        data_[cur_elements_] = e;
        cur_elements_ += 1;
        return true;
    }

    /// Grows to exactly the needed size.
    bool append_array(const array& e) {
        require(!is_constant_size(), "append_array", __LINE__, "!is_constant_size()");
        require(&e != this, "append_array", __LINE__, "&e != this");
        if (e.cur_elements_ == 0)
            return true;
        if (max_elements_ - cur_elements_ < e.cur_elements_ &&
            !resize_to(static_cast<uint64_t>(cur_elements_) + e.cur_elements_))
            return false;
        std::memcpy(data_ + cur_elements_, e.data_, e.cur_elements_ * sizeof(T));
        cur_elements_ += e.cur_elements_;
        return true;
    }

    /// Sets the count, and the capacity, to exactly `elements`.
    bool alloc(uint32_t elements) {
        require(!is_constant_size(), "alloc", __LINE__, "!is_constant_size()");
        require(elements >= cur_elements_, "alloc", __LINE__, "elements >= cur_elements");
        if (!resize(elements))
            return false;
        cur_elements_ = elements;
        return true;
    }

    /// Grows to exactly `ind` + 1 if needed. `value` must not be an element of this array.
    bool overwrite_at(uint32_t ind, const T& value) {
        check_pointer(&value);
        if (ind >= max_elements_) {
            require(!is_constant_size(), "overwrite_at", __LINE__, "!is_constant_size()");
            if (!resize_to(static_cast<uint64_t>(ind) + 1))
                return false;
        }
        data_[ind] = value;
        if (ind >= cur_elements_)
            cur_elements_ = ind + 1;
        return true;
    }

    /// A BUG if `p` points into the array's own storage, which growth may move.
    void check_pointer(const T* p) const {
        const auto address = reinterpret_cast<uintptr_t>(p);
        const auto first = reinterpret_cast<uintptr_t>(data_);
        if (address >= first && address < first + max_elements_ * sizeof(T))
            report_array_bug(element(), "__check_pointer", __LINE__, nullptr);
    }

    /// Sets the capacity to exactly `elements`; a larger count is cut to it. 0 frees the buffer.
    bool resize(uint32_t elements) {
        require(!is_constant_size(), "resize", __LINE__, "!is_constant_size()");
        require(!is_constant_buffer_address(), "resize", __LINE__, "!is_constant_buffer_address()");
        if (alignment_ != 0)
            require(cur_elements_ == 0 && max_elements_ == 0, "resize", __LINE__,
                    "cur_elements == 0 && max_elements == 0");
        if (elements == 0)
            release_buffer();
        else if (!reallocate(elements))
            return false;
        max_elements_ = elements;
        if (cur_elements_ > elements)
            cur_elements_ = elements;
        return true;
    }

    /// Sets the count to 0; the buffer is kept.
    void clear() {
        require(!is_constant_size(), "clear", __LINE__, "!is_constant_size()");
        cur_elements_ = 0;
    }

private:
    static constexpr const char* element() { return array_element_name<T>::text; }

    static void require(bool holds, const char* operation, int line, const char* assertion) {
        if (!holds)
            report_array_bug(element(), operation, line, assertion);
    }

    /// A size that does not fit into 32 bits counts as out of memory.
    bool resize_to(uint64_t elements) {
        return elements <= UINT32_MAX && resize(static_cast<uint32_t>(elements));
    }

    bool grow_to_hold(uint32_t ind) { return resize_to(2 * (static_cast<uint64_t>(ind) + 1)); }

    void release_buffer() {
        core_free(raw_buffer_);
        raw_buffer_ = nullptr;
        data_ = nullptr;
    }

    bool reallocate(uint32_t elements) {
        const size_t slack = alignment_ == 0 ? 0 : alignment_ - 1;
        void* const block = core_realloc(raw_buffer_, elements * sizeof(T) + slack);
        if (block == nullptr)
            return false;
        raw_buffer_ = block;
        const auto start = (reinterpret_cast<uintptr_t>(block) + slack) & ~uintptr_t{slack};
        data_ = reinterpret_cast<T*>(start);
        if ((properties_ & ARRAY_ZERO_FILL) != 0 && elements > max_elements_)
            std::memset(static_cast<void*>(data_ + max_elements_), 0,
                        (elements - max_elements_) * sizeof(T));
        return true;
    }

    void swap(array& other) noexcept {
        std::swap(raw_buffer_, other.raw_buffer_);
        std::swap(data_, other.data_);
        std::swap(properties_, other.properties_);
        std::swap(alignment_, other.alignment_);
        std::swap(max_elements_, other.max_elements_);
        std::swap(cur_elements_, other.cur_elements_);
    }

    void* raw_buffer_ = nullptr; ///< as returned by the allocator
    T* data_ = nullptr;          ///< equals raw_buffer_ unless an alignment is set
    uint32_t properties_ = 0;
    uint32_t alignment_ = 0;
    uint32_t max_elements_ = 0;
    uint32_t cur_elements_ = 0;
};
