/// A thin owner of a buffered standard file stream.
///
/// Ordinary failures are false results with the standard library's text in `error()`; an unknown
/// open mode is a BUG that ends the process.
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
    /// other is a BUG. A stream that is open already stays open when this fails and is closed when
    /// it succeeds.
    bool open(const char* name, int mode);
    bool is_open() const { return handle_ != nullptr; }
    /// Writes one block; true when exactly one block was written, so never for `size` 0.
    bool write(const void* bytes, size_t size);
    /// True without a stream. On failure the handle stays recorded.
    bool close();

    /// Kept empty: carried for readers of the record, no operation writes it.
    const string& name() const { return name_; }
    const string& error() const { return error_; }

private:
    bool fail(int error_number);
    bool close_stream();

    string name_;
    string error_;
    std::FILE* handle_ = nullptr;
    bool written_ = false;
    bool lost_ = false; ///< closing failed half-way: the handle is recorded but no longer usable
};
