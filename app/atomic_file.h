/// A file that appears under its name when it is whole, or not at all.
///
/// The bytes go to a temporary file in the same directory, named after the target and the process
/// (so that several processes can write into one directory), which `commit` renames. Until then an
/// older file of that name stays as it was. Destruction, `discard` and signals (interrupt.h) remove
/// the temporary file. Symbolic links are followed, so that a link stays a link; a replaced file
/// hands on its permissions. Targets that are no regular files (standard output as "-", devices,
/// pipes) are written directly, in `commit`.
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

    /// Makes sure that the file can be written, before long work is begun for it.
    /// Errors (here and below): false with "PATH: cannot be written: reason" in `error`.
    bool open(const std::string& path, std::string& error);
    bool is_open() const { return state_ != closed; }

    /// Gives the file its content and waits until the disk has it. Call it once.
    bool write(std::string_view bytes, std::string& error);
    /// Publishes the file.
    bool commit(std::string& error);
    /// Leaves the target as it was.
    void discard();

private:
    enum State { closed, direct, temporary };

    bool create_temporary(std::string& error);
    bool commit_direct(std::string& error);
    bool fail(int reason, std::string& error) const;

    std::string path_;   // as the caller named it
    std::string target_; // behind symbolic links
    std::string temporary_;
    std::string pending_; // content of a direct target
    int file_ = -1;
    State state_ = closed;
};

/// True when both names lead to one existing file.
bool same_file(const std::string& a, const std::string& b);

} // namespace app
