/// Shared by the core library's tests: failing allocations, the record of message boxes, literal
/// patterns for death tests, temporary files.
#pragma once

#include "corelib/memory.h"
#include "tests/fixtures/system.h"
#include "tests/fixtures/temporary.h"

#include <cstdio>
#include <cstdlib>
#include <functional>
#include <string>
#include <unistd.h>
#include <vector>

/// Records the sizes of allocations during its lifetime and can make them fail.
class AllocationWatch {
public:
    static constexpr size_t k_never = static_cast<size_t>(-1);

    /// Requests number `fail_from` (0 = the first) and later fail.
    explicit AllocationWatch(size_t fail_from = k_never) {
        sizes().clear();
        limit() = fail_from;
        core_allocation_filter = [](size_t bytes) {
            sizes().push_back(bytes);
            return sizes().size() <= limit();
        };
    }
    ~AllocationWatch() { core_allocation_filter = nullptr; }
    AllocationWatch(const AllocationWatch&) = delete;
    AllocationWatch& operator=(const AllocationWatch&) = delete;

    static std::vector<size_t>& sizes() {
        static std::vector<size_t> list;
        return list;
    }

private:
    static size_t& limit() {
        static size_t value = k_never;
        return value;
    }
};

/// The notices shown to this program's notice hook, and the hook's behaviour.
struct Notices {
    std::vector<std::string> captions;
    std::vector<std::string> texts;
    int answer = 0;                      ///< 0 = not handled: the stand-in goes to standard error
    std::function<void()> while_showing; ///< runs while the box is open
};
Notices& notices();

/// Escapes the text to a regular expression that matches exactly it.
inline std::string literally(const std::string& text) {
    std::string pattern;
    for (const char c : text) {
        if (std::string(R"(\^$.|?*+()[]{})").find(c) != std::string::npos)
            pattern += '\\';
        pattern += c;
    }
    return pattern;
}

/// A path in the temporary folder; a file there is removed before and after.
class TemporaryFile {
public:
    TemporaryFile() {
        path_ = fixtures::temporary_template("tessora_corelib_");
        const int descriptor = mkstemp(path_.data());
        close(descriptor);
        std::remove(path_.c_str());
    }
    ~TemporaryFile() { std::remove(path_.c_str()); }
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* path() const { return path_.c_str(); }
    bool exists() const { return access(path(), F_OK) == 0; }
    std::string text() const {
        std::string result;
        if (std::FILE* const stream = std::fopen(path(), "rb")) {
            for (int c = std::getc(stream); c != EOF; c = std::getc(stream))
                result += static_cast<char>(c);
            std::fclose(stream);
        }
        return result;
    }

private:
    std::string path_;
};
