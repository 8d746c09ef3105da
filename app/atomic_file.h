/// A file that appears under its name complete, or not at all.
///
/// The bytes go to a temporary file in the same directory, named after the target and the process
/// (so that several processes can write into one directory); `commit` renames it. Until then an
/// older file of that name stays as it was. Destruction, `discard` and signals (interrupt.h) remove
/// the temporary file. Symbolic links are followed, so that a link stays a link; the new file gets
/// the permissions of the file it replaces. Targets that are not regular files (standard output,
/// named "-", devices, pipes) are written directly, in `commit`.
#pragma once

#include <string>
#include <string_view>

namespace app {

class AtomicFile {
public:
    AtomicFile() = default;
    ~AtomicFile() { discard(); }
    AtomicFile(const AtomicFile&) = delete;
    AtomicFile& operator=(const AtomicFile&) = delete;

    /// Checks that the file can be written, before any long work for it begins.
    /// Errors (here and below): false with "PATH: cannot be written: reason" in `error`.
    bool open(const std::string& path, std::string& error);
    bool is_open() const { return state_ != closed; }

    /// Writes the whole content and waits until it is on disk. Call once.
    bool write(std::string_view bytes, std::string& error);
    /// Makes the file appear under its name.
    bool commit(std::string& error);
    /// Leaves the target as it was.
    void discard();

private:
    enum State { closed, direct, temporary };

    bool create_temporary(std::string& error);
    bool commit_direct(std::string& error);
    bool fail(int reason, std::string& error) const;

    std::string path_;   // as the caller named it
    std::string target_; // path_ with symbolic links resolved
    std::string temporary_;
    std::string pending_; // content of a direct target, until commit
    int file_ = -1;
    State state_ = closed;
};

/// True if both names lead to the same existing file.
bool same_file(const std::string& a, const std::string& b);

} // namespace app
