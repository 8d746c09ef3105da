#include "formats/gzip.h"

#include <algorithm>
#include <new>
#include <zlib.h>

namespace formats {
namespace {

constexpr int k_gzip = 16; ///< added to the window size: gzip instead of zlib's own frame
constexpr size_t k_block = 1u << 16;
constexpr size_t k_max_feed = 1u << 30; ///< zlib counts in 32 bits

/// One use of zlib's inflate, ended in every case.
struct Inflater {
    z_stream stream = {};
    Inflater() {
        if (inflateInit2(&stream, MAX_WBITS + k_gzip) != Z_OK)
            throw std::bad_alloc();
    }
    ~Inflater() { inflateEnd(&stream); }
    Inflater(const Inflater&) = delete;
    Inflater& operator=(const Inflater&) = delete;
};

/// Calls zlib's `inflate` or `deflate` once: takes what it reads off the front of `bytes`; what it
/// writes begins `block` and leaves `stream.avail_out` bytes of it free. Returns zlib's status.
int take_step(z_stream& stream, int (*step)(z_stream*, int), int flush, std::string_view& bytes,
              std::string& block) {
    const size_t feed = std::min(bytes.size(), k_max_feed);
    stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(bytes.data()));
    stream.avail_in = static_cast<uInt>(feed);
    stream.next_out = reinterpret_cast<Bytef*>(block.data());
    stream.avail_out = static_cast<uInt>(block.size());
    const int status = step(&stream, flush);
    bytes.remove_prefix(feed - stream.avail_in);
    return status;
}

/// Inflates the member at the front of `bytes` and takes it off.
bool inflate_member(std::string_view& bytes, uint64_t max_size, std::string& inflated,
                    bool& is_too_large, std::string& error) {
    Inflater inflater;
    z_stream& stream = inflater.stream;
    std::string block(k_block, '\0');
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        status = take_step(stream, inflate, Z_NO_FLUSH, bytes, block);
        if (status == Z_MEM_ERROR)
            throw std::bad_alloc();
        if (status != Z_OK && status != Z_STREAM_END) {
            error = bytes.empty() && status == Z_BUF_ERROR ? "the gzip data are cut off"
                                                           : "the gzip data are damaged";
            return false;
        }
        const size_t got = block.size() - stream.avail_out;
        if (got > max_size - inflated.size()) {
            error = "more than " + std::to_string(max_size) +
                    " bytes when inflated; --max_input allows more";
            is_too_large = true;
            return false;
        }
        inflated.append(block, 0, got);
    }
    return true;
}

} // namespace

bool is_gzip(std::string_view bytes) { return bytes.substr(0, 2) == "\x1f\x8b"; }

bool inflate_gzip(std::string_view bytes, uint64_t max_size, std::string& inflated,
                  bool& is_too_large, std::string& error) {
    inflated.clear();
    is_too_large = false;
    do {
        if (!inflate_member(bytes, max_size, inflated, is_too_large, error))
            return false;
    } while (is_gzip(bytes));
    if (!bytes.empty())
        error = std::to_string(bytes.size()) + " bytes follow the gzip data";
    return bytes.empty();
}

std::string deflate_gzip(std::string_view bytes) {
    z_stream stream = {};
    constexpr int k_default_memory = 8;
    if (deflateInit2(&stream, Z_DEFAULT_COMPRESSION, Z_DEFLATED, MAX_WBITS + k_gzip,
                     k_default_memory, Z_DEFAULT_STRATEGY) != Z_OK)
        throw std::bad_alloc();
    std::string out, block(k_block, '\0');
    int status = Z_OK;
    while (status != Z_STREAM_END) {
        const int flush = bytes.size() <= k_max_feed ? Z_FINISH : Z_NO_FLUSH;
        status = take_step(stream, deflate, flush, bytes, block);
        out.append(block, 0, block.size() - stream.avail_out);
    }
    deflateEnd(&stream);
    return out;
}

} // namespace formats
