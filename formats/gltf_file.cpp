#include "formats/gltf_file.h"

#include "host/io/obj_reader.h"

#include <array>
#include <cstdint>
#include <cstring>
#include <filesystem>

namespace formats {
namespace {

namespace fs = std::filesystem;

constexpr uint32_t k_magic = 0x46546C67;      // "glTF"
constexpr uint32_t k_json_chunk = 0x4E4F534A; // "JSON"
constexpr uint32_t k_bin_chunk = 0x004E4942;  // "BIN"
/// Other formats' names may be anything; JSON is UTF-8.
constexpr auto k_replace = Json::error_handler_t::replace;
constexpr char k_digits[] = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

uint32_t word_at(const std::string& bytes, size_t at) {
    const auto byte = [&](size_t i) { return uint32_t(static_cast<unsigned char>(bytes[at + i])); };
    return byte(0) | byte(1) << 8 | byte(2) << 16 | byte(3) << 24;
}

void append_word(uint32_t word, std::string& bytes) {
    for (int shift = 0; shift < 32; shift += 8)
        bytes += static_cast<char>(word >> shift & 0xFF);
}

bool from_base64(std::string_view text, std::string& bytes) {
    while (!text.empty() && text.back() == '=')
        text.remove_suffix(1);
    uint32_t bits = 0;
    int count = 0;
    for (const char c : text) {
        const char* digit = c ? std::strchr(k_digits, c) : nullptr;
        if (!digit)
            return false;
        bits = bits << 6 | uint32_t(digit - k_digits);
        count += 6;
        if (count >= 8) {
            count -= 8;
            bytes += static_cast<char>(bits >> count & 0xFF);
        }
    }
    return true;
}

bool fail(const std::string& reason, std::string& error) {
    error = reason;
    return false;
}

/// Splits a binary file into its JSON, its binary chunk and the rest.
bool split_chunks(const std::string& bytes, std::string_view& json, std::string& binary,
                  bool& has_binary, std::string& rest, std::string& error) {
    if (bytes.size() < 20)
        return fail("the file is cut off in its header", error);
    if (word_at(bytes, 4) != 2)
        return fail("version " + std::to_string(word_at(bytes, 4)) + " of glTF; only 2 is read",
                    error);
    if (word_at(bytes, 8) != bytes.size())
        return fail("the header says " + std::to_string(word_at(bytes, 8)) +
                        " bytes, and the file has " + std::to_string(bytes.size()),
                    error);
    for (size_t at = 12, chunk = 0; at < bytes.size(); ++chunk) {
        const size_t begin = at + 8;
        if (bytes.size() < begin || word_at(bytes, at) > bytes.size() - begin)
            return fail("chunk " + std::to_string(chunk) + " at byte " + std::to_string(at) +
                            " is longer than the file",
                        error);
        const size_t size = word_at(bytes, at);
        const uint32_t type = word_at(bytes, at + 4);
        if ((chunk == 0) != (type == k_json_chunk))
            return fail("the first chunk and no other must be JSON", error);
        if (chunk == 0) {
            json = std::string_view(bytes).substr(begin, size);
        } else if (chunk == 1 && type == k_bin_chunk) {
            binary = bytes.substr(begin, size);
            has_binary = true;
        } else {
            rest.append(bytes, at, size + 8);
        }
        at = begin + size;
    }
    return true;
}

/// Decodes %20 and the like.
bool decode_percent(const std::string& text, std::string& out) {
    const auto digit = [](char c) {
        return c >= '0' && c <= '9'   ? c - '0'
               : c >= 'a' && c <= 'f' ? c - 'a' + 10
               : c >= 'A' && c <= 'F' ? c - 'A' + 10
                                      : -1;
    };
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            out += text[i];
            continue;
        }
        const int high = i + 2 < text.size() ? digit(text[i + 1]) : -1;
        const int low = i + 2 < text.size() ? digit(text[i + 2]) : -1;
        if (high < 0 || low < 0)
            return false;
        out += static_cast<char>(16 * high + low);
        i += 2;
    }
    return true;
}

/// The path that a URI names: relative, and below the folder of the file, also behind links.
bool resolve(const std::string& name, const std::string& uri, fs::path& path, std::string& error) {
    std::string text;
    if (!decode_percent(uri, text) || text.find('\0') != text.npos || text.empty())
        return fail("its URI cannot be decoded", error);
    if (text.find(':') != text.npos)
        return fail("its URI has a scheme; only data: and relative file names are read", error);
    const fs::path relative(text);
    bool leaves = text[0] == '/' || text.find('\\') != text.npos || !relative.is_relative();
    for (const fs::path& part : relative)
        leaves |= part == "..";
    fs::path folder = fs::path(name).parent_path();
    folder = folder.empty() ? "." : folder;
    path = folder / relative;
    std::error_code failure;
    const fs::path inside = fs::weakly_canonical(path, failure)
                                .lexically_relative(fs::weakly_canonical(folder, failure));
    if (leaves || failure || inside.empty() || *inside.begin() == "..")
        return fail("its URI leads out of the file's folder", error);
    return true;
}

bool read_data_uri(const std::string& uri, std::string& bytes, std::string& error) {
    const size_t comma = uri.find(',');
    const size_t base64 = uri.rfind(";base64", comma);
    if (comma == uri.npos || base64 == uri.npos || base64 + 7 != comma)
        return fail("its data: URI is not base64", error);
    return from_base64(std::string_view(uri).substr(comma + 1), bytes) ||
           fail("its data: URI is not base64", error);
}

bool read_buffer(const std::string& name, const Json& buffer, GltfFile& file, std::string& bytes,
                 std::string& error) {
    const Json& uri = buffer["uri"];
    if (!uri.is_string())
        return fail("its URI is not a text", error);
    const auto text = uri.get<std::string>();
    if (text.compare(0, 5, "data:") == 0)
        return read_data_uri(text, bytes, error);
    fs::path path;
    host::IoError failure;
    if (!resolve(name, text, path, error))
        return false;
    std::error_code missing;
    if (fs::exists(path, missing) && !fs::is_regular_file(path, missing))
        return fail("its URI names no regular file", error); // a pipe would keep it waiting
    if (!host::read_start(path.string(), buffer["byteLength"].get<uint64_t>(), bytes, failure))
        return fail(failure.message, error);
    file.file_names.push_back(path.string());
    return true;
}

bool read_buffers(const std::string& name, uint64_t most, std::string binary, bool has_binary,
                  GltfFile& file, std::string& error) {
    uint64_t sum = 0;
    Json& buffers = file.json["buffers"];
    for (size_t i = 0; i < buffers.size(); ++i) {
        const Json& buffer = buffers[i];
        const std::string where = "buffer " + std::to_string(i) + ": ";
        if (!buffer.is_object() || !buffer.value("byteLength", Json()).is_number_unsigned())
            return fail(where + "it has no byteLength", error);
        const auto size = buffer["byteLength"].get<uint64_t>();
        file.is_too_large = size > most - sum;
        if (file.is_too_large)
            return fail(where + "more than " + std::to_string(most) +
                            " bytes in all; --max_input allows more",
                        error);
        sum += size;
        std::string bytes;
        if (buffer.contains("uri")) {
            if (!read_buffer(name, buffer, file, bytes, error))
                return fail(where + error, error);
        } else if (i == 0 && has_binary) {
            bytes = std::move(binary);
        } else {
            return fail(where + "it has neither a URI nor a binary chunk", error);
        }
        if (size > bytes.size())
            return fail(where + "it should have " + std::to_string(size) + " bytes and has " +
                            std::to_string(bytes.size()),
                        error);
        bytes.resize(size);
        file.buffers.push_back(std::move(bytes));
    }
    return true;
}

/// Every buffer view lies inside its buffer.
bool check_views(const GltfFile& file, std::string& error) {
    const Json none = Json::array();
    const auto found = file.json.find("bufferViews");
    const Json& views = found == file.json.end() ? none : *found;
    for (size_t i = 0; i < views.size(); ++i) {
        const Json& view = views[i];
        const std::string where = "bufferView " + std::to_string(i) + ": ";
        const auto number = [&](const char* key, uint64_t missing) -> uint64_t {
            const Json value = view.value(key, Json(missing));
            return value.is_number_unsigned() ? value.get<uint64_t>() : UINT64_MAX;
        };
        if (!view.is_object())
            return fail(where + "it is not an object", error);
        const uint64_t buffer = number("buffer", UINT64_MAX), begin = number("byteOffset", 0),
                       size = number("byteLength", UINT64_MAX), stride = number("byteStride", 4);
        if (buffer >= file.buffers.size())
            return fail(where + "it has no buffer that exists", error);
        if (begin > file.buffers[buffer].size() || size > file.buffers[buffer].size() - begin)
            return fail(where + "it reaches beyond buffer " + std::to_string(buffer), error);
        if (stride < 4 || stride > 252)
            return fail(where + "its byteStride is not 4 to 252", error);
    }
    return true;
}

bool names_a_file(const Json& item) {
    const auto uri = item.is_object() ? item.find("uri") : item.end();
    return item.is_object() && uri != item.end() && uri->is_string() &&
           uri->get<std::string>().compare(0, 5, "data:") != 0;
}

/// All buffers one after the other; changes the JSON to say so.
std::string merge_buffers(const GltfFile& file, Json& json) {
    std::string binary;
    std::vector<size_t> begin;
    for (const std::string& buffer : file.buffers) {
        binary.resize((binary.size() + 3) / 4 * 4);
        begin.push_back(binary.size());
        binary += buffer;
    }
    if (binary.empty())
        return binary;
    const auto views = json.find("bufferViews");
    for (size_t i = 0; views != json.end() && i < views->size(); ++i) {
        Json& view = (*views)[i];
        const auto buffer = view["buffer"].get<size_t>();
        if (buffer > 0) {
            view["buffer"] = 0;
            view["byteOffset"] = begin[buffer] + view.value("byteOffset", uint64_t(0));
        }
    }
    Json first = json["buffers"][0];
    first.erase("uri");
    first["byteLength"] = binary.size();
    json["buffers"] = Json::array({first});
    return binary;
}

/// Whether an object begins there, after blanks and the mark that some editors put first.
bool begins_as_json(std::string_view text) {
    if (text.substr(0, 3) == "\xEF\xBB\xBF")
        text.remove_prefix(3);
    const size_t first = text.find_first_not_of(" \t\r\n");
    return first != text.npos && text[first] == '{';
}

} // namespace

bool read_gltf(const std::string& name, const std::string& bytes, uint64_t most, GltfFile& file,
               std::string& error) {
    file = GltfFile();
    std::string_view text = bytes;
    std::string binary;
    bool has_binary = false;
    file.is_binary = bytes.size() >= 4 && word_at(bytes, 0) == k_magic;
    if (bytes.empty())
        return fail("no mesh in the file: it is empty", error);
    if (!file.is_binary && !begins_as_json(text))
        return fail("this is not a glTF file: it begins neither as GLB nor as JSON", error);
    if (file.is_binary && !split_chunks(bytes, text, binary, has_binary, file.other_chunks, error))
        return false;
    if (!parse_json(text, file.json, error) || !check_gltf(file.json, error))
        return false;
    for (const char* list : {"buffers", "images"})
        if (file.json.contains(list))
            for (const Json& item : file.json[list])
                file.has_files |= names_a_file(item);
    return (!file.json.contains("buffers") ||
            read_buffers(name, most, std::move(binary), has_binary, file, error)) &&
           check_views(file, error);
}

std::string to_base64(const std::string& bytes) {
    std::string out;
    for (size_t i = 0; i < bytes.size(); i += 3) {
        const auto byte = [&](size_t k) {
            return i + k < bytes.size() ? uint32_t(static_cast<unsigned char>(bytes[i + k])) : 0u;
        };
        const uint32_t bits = byte(0) << 16 | byte(1) << 8 | byte(2);
        for (size_t k = 0; k < 4; ++k)
            out += i + k <= bytes.size() ? k_digits[bits >> (18 - 6 * k) & 63] : '=';
    }
    return out;
}

bool write_glb(const GltfFile& file, uint64_t max_size, std::string& bytes, std::string& error) {
    Json json = file.json;
    std::string binary = merge_buffers(file, json);
    std::string text = json.dump(-1, ' ', false, k_replace);
    text.resize((text.size() + 3) / 4 * 4, ' ');
    binary.resize((binary.size() + 3) / 4 * 4);
    const uint64_t size = uint64_t(20) + text.size() + (binary.empty() ? 0 : 8 + binary.size()) +
                          file.other_chunks.size();
    if (size > max_size)
        return fail("the result would have " + std::to_string(size) +
                        " bytes; a GLB file has at most " + std::to_string(max_size),
                    error);
    bytes.clear();
    for (const uint32_t word : {k_magic, 2u, uint32_t(size), uint32_t(text.size()), k_json_chunk})
        append_word(word, bytes);
    bytes += text;
    if (!binary.empty()) {
        append_word(uint32_t(binary.size()), bytes);
        append_word(k_bin_chunk, bytes);
        bytes += binary;
    }
    bytes += file.other_chunks;
    return true;
}

std::string write_gltf_text(const GltfFile& file) {
    return file.json.dump(2, ' ', false, k_replace) + "\n";
}

} // namespace formats
