/// A growable byte string with an explicit length and capacity.
///
/// Owns its buffer; an empty string may have none. A buffer always contains a terminating zero, at
/// `length` or before it. If memory runs out an operation returns false or does nothing, as stated
/// for each; misuse is a BUG that ends the process.
#pragma once

#include <cstdint>

class string {
public:
    string() = default;
    /// A null text makes an empty string.
    string(const char* text);
    string(const string& other);
    ~string();

    /// Copies the text into a buffer of exactly its length + 1 bytes. Deliberate: a null text, and
    /// therefore a string without a buffer, leaves this string unchanged; so does lack of memory.
    string& operator=(const char* text);
    string& operator=(const string& other);

    /// Appends; null is a no-op that succeeds. If memory runs out: false, the string unchanged. The
    /// capacity grows in multiples of 100 bytes, so that short appends rarely reallocate.
    bool operator+=(const char* text);
    /// Appends under the same rules; appending a string to itself is a BUG.
    bool operator+=(const string& s);

    /// Cuts to `size` bytes, or lengthens with zero bytes in a buffer of exactly `size` + 1 bytes.
    /// Deliberate: if memory for that runs out, the result is false, the buffer is unchanged and
    /// the length is `size` nevertheless, because callers rely on the length.
    bool truncate(uint32_t size);

    /// Recomputes the length after a caller wrote into the buffer.
    void update_length();

    /// The buffer; null if there is none.
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
