#include "app/fingerprint.h"

#include <cstdio>
#include <fstream>
#include <vector>
#define XXH_INLINE_ALL
#include <xxhash.h>

namespace app {
namespace {

std::string hexadecimal(const XXH128_hash_t& hash) {
    char text[33];
    std::snprintf(text, sizeof text, "%016llx%016llx", static_cast<unsigned long long>(hash.high64),
                  static_cast<unsigned long long>(hash.low64));
    return text;
}

} // namespace

std::string fingerprint(std::string_view bytes) {
    return hexadecimal(XXH3_128bits(bytes.data(), bytes.size()));
}

std::string file_fingerprint(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file)
        return "";
    XXH3_state_t state;
    XXH3_128bits_reset(&state);
    std::vector<char> block(1u << 16);
    while (file.read(block.data(), std::streamsize(block.size())) || file.gcount() > 0)
        XXH3_128bits_update(&state, block.data(), size_t(file.gcount()));
    return file.bad() ? "" : hexadecimal(XXH3_128bits_digest(&state));
}

} // namespace app
