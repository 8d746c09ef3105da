/// A growable byte string with an explicit length and capacity.
///
/// Owns its buffer; an empty string may have none. A buffer always ends in a zero, at `length` or
/// before it. Running out of memory is a false result and leaves the string as each operation says;
/// misuse is a BUG that ends the process.
#pragma once

#include <cstdint>

class string {
public:
    string() = default;
    /// A null text gives an empty string.
    string(const char* text);
    string(const string& other);
    ~string();

    /// Takes over the text; the buffer gets exactly its length + 1 bytes. A null text, and so a
    /// string without a buffer, leaves this string unchanged, deliberately; so does failed memory.
    string& operator=(const char* text);
    string& operator=(const string& other);

    /// Appends. Null is a no-op that succeeds; false when memory is out, the string then unchanged.
    /// Capacity grows by whole hundreds, so that short appends reallocate every hundred bytes only.
    bool operator+=(const char* text);
    /// The same; appending a string to itself is a BUG.
    bool operator+=(const string& s);

    /// Cuts to `size` bytes, or lengthens with zero bytes to a buffer of exactly `size` + 1. When
    /// lengthening runs out of memory the result is false and the length is `size` all the same,
    /// deliberately: callers count on it, the buffer stays what it was.
    bool truncate(uint32_t size);

    /// Recomputes the length after somebody wrote into the buffer.
    void update_length();

    /// The buffer; null when there is none.
    char* c_str() { return buffer_; }
    const char* c_str() const { return buffer_; }
    uint32_t length() const { return length_; }
    uint32_t capacity() const { return capacity_; }

private:
    bool set_capacity(uint64_t bytes);

    uint32_t capacity_ = 0;
    uint32_t length_ = 0;
    char* buffer_ = nullptr;
};

string operator+(const string& left, const char* right);
string operator+(const string& left, const string& right);
