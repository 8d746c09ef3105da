/// Reads whole files.
#pragma once

#include <maya/MTypes.h>

#include <cstdint>
#include <string>

namespace host {

/// Why a file could not be read.
struct IoError {
    enum Kind {
        none,
        unreadable, ///< missing, a directory, no permission, a device error
        malformed,  ///< the text is not a valid mesh
        too_large   ///< exceeds 32-bit counts, available memory or a limit of bytes
    };
    Kind kind = none;
    std::string message;
};

/// Reads a file, pipe, or standard input (path "-") to its end.
/// Errors: false with `error` set; `text` is then unspecified. More than 8 GiB of a file are an
///         error, and more than 256 MiB of anything else: a device may have no end.
MHOST_EXPORT bool read_text(const std::string& path, std::string& text, IoError& error);

/// As `read_text`, but reads the first `most` bytes and no more, also of pipes. A device with more
/// than 256 MiB is refused.
MHOST_EXPORT bool read_start(const std::string& path, uint64_t most, std::string& text,
                             IoError& error);

} // namespace host
