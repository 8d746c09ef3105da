#include "corelib/string.h"

#include "corelib/error.h"
#include "corelib/memory.h"

#include <algorithm>
#include <cstring>

namespace {

constexpr uint64_t k_growth_step = 100;

// The line numbers in the BUG reports; fixed, because people search logs for them.
constexpr int k_truncate_check_line = 349;
constexpr int k_self_append_check_line = 572;

} // namespace

string::string(const char* text) { *this = text; }

string::string(const string& other) { *this = other; }

string::~string() {
    core_free(buffer_);
    buffer_ = nullptr;
    capacity_ = 0;
    length_ = 0;
}

bool string::set_capacity(uint64_t bytes) {
    if (bytes > UINT32_MAX)
        return false;
    void* const block = core_realloc(buffer_, bytes);
    if (block == nullptr)
        return false;
    buffer_ = static_cast<char*>(block);
    capacity_ = static_cast<uint32_t>(bytes);
    return true;
}

string& string::operator=(const char* text) {
    if (text == nullptr)
        return *this;
    const size_t bytes = std::strlen(text) + 1;
    if (bytes <= capacity_) {
        // Move before shrinking: the text may lie inside the buffer.
        std::memmove(buffer_, text, bytes);
        set_capacity(bytes);
    } else {
        if (!set_capacity(bytes))
            return *this;
        std::memcpy(buffer_, text, bytes);
    }
    update_length();
    return *this;
}

string& string::operator=(const string& other) { return *this = other.buffer_; }

bool string::operator+=(const char* text) {
    if (text == nullptr)
        return true;
    const uint64_t added = std::strlen(text);
    const bool own_text = buffer_ != nullptr && text >= buffer_ && text < buffer_ + capacity_;
    const size_t own_offset = own_text ? static_cast<size_t>(text - buffer_) : 0;
    const uint64_t needed = length_ + added + 1;
    if (needed >= capacity_) {
        const uint32_t old_capacity = capacity_;
        const uint64_t step = (added / k_growth_step + 1) * k_growth_step;
        // One step is enough unless `truncate` ran out of memory before: then the length exceeds
        // the buffer, and the bytes between are zeros.
        if (!set_capacity(std::max(old_capacity + step, needed)))
            return false;
        const uint32_t filled = std::min(length_, old_capacity);
        std::memset(buffer_ + filled, 0, capacity_ - filled);
    }
    std::memmove(buffer_ + length_, own_text ? buffer_ + own_offset : text, added);
    length_ += static_cast<uint32_t>(added);
    buffer_[length_] = '\0';
    return true;
}

bool string::operator+=(const string& s) {
    if (&s == this)
        report_bug("string::operator +=", "string", k_self_append_check_line, "&s != this");
    return *this += s.buffer_;
}

bool string::truncate(uint32_t size) {
    if (size < length_) {
        // After a lengthening that ran out of memory the length exceeds the buffer.
        const uint32_t len = capacity_ == 0 ? 0 : capacity_ - 1;
        if (buffer_ == nullptr || size > len)
            report_bug("string::truncate", "string", k_truncate_check_line, "size <= len");
        buffer_[size] = '\0';
        length_ = size;
        return true;
    }
    if (size == length_)
        return true;
    const uint32_t filled = std::min(length_, capacity_);
    const bool grown = set_capacity(static_cast<uint64_t>(size) + 1);
    if (grown)
        std::memset(buffer_ + filled, 0, capacity_ - filled);
    length_ = size;
    return grown;
}

void string::update_length() {
    length_ = buffer_ == nullptr ? 0 : static_cast<uint32_t>(std::strlen(buffer_));
}

string operator+(const string& left, const char* right) {
    string result(left);
    result += right;
    return result;
}

string operator+(const string& left, const string& right) { return left + right.c_str(); }
