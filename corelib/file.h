/// A thin owner of a buffered standard file stream.
///
/// An operation that fails returns false and stores the standard library's message in `error()`; an
/// unknown open mode is a BUG that ends the process.
#pragma once

#include "corelib/string.h"

#include <cstddef>
#include <cstdio>

class file {
public:
    file() = default;
    /// Closes the stream if open; the result is ignored.
    ~file();
    file(const file&) = delete;
    file& operator=(const file&) = delete;

    /// Mode 1 reads ("rb"), 2 writes ("wb"), 3 reads and writes ("r+b"), 4 appends ("ab"); any
    /// other is a BUG. A stream that was open before stays open on failure and is closed on
    /// success.
    bool open(const char* name, int mode);
    bool is_open() const { return handle_ != nullptr; }
    /// Writes one block of `size` bytes. True if all of it was written; false for `size` 0.
    bool write(const void* bytes, size_t size);
    /// Closes the stream; succeeds if none is open. If closing fails, returns false and `is_open`
    /// stays true.
    bool close();

    /// Always empty: part of the record, but no operation sets it.
    const string& name() const { return name_; }
    const string& error() const { return error_; }

private:
    bool fail(int error_number);
    bool close_stream();

    string name_;
    string error_;
    std::FILE* handle_ = nullptr;
    bool written_ = false;
    bool lost_ = false; ///< fclose failed: the handle is kept but must not be used
};
