/// gzip files (RFC 1952), by zlib.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace formats {

/// True if the bytes begin like a gzip file.
bool is_gzip(std::string_view bytes);

/// Inflates a whole file, which may consist of several members, and checks lengths and checksums.
/// Errors: false with a reason in `error`: damaged, cut off, followed by other bytes, or more than
///         `max_size` bytes when inflated (`is_too_large` is then true).
bool inflate_gzip(std::string_view bytes, uint64_t max_size, std::string& inflated,
                  bool& is_too_large, std::string& error);

/// Compresses to one member without a name or a time, so that equal bytes give equal files.
/// Errors: std::bad_alloc.
std::string deflate_gzip(std::string_view bytes);

} // namespace formats
