/// A hash that tells whether a file is still the same. It is not a protection against forgery.
#pragma once

#include <string>
#include <string_view>

namespace app {

/// The 128-bit XXH3 hash of the bytes, as 32 hexadecimal digits.
std::string fingerprint(std::string_view bytes);

/// The fingerprint of a file's content; "" if it cannot be read.
std::string file_fingerprint(const std::string& path);

} // namespace app
