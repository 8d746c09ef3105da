/// A file that appears under its name complete, or not at all.
///
/// The bytes go to a temporary file in the same directory, named after the target and the process
/// (so that several processes can write into one directory); `commit` renames it. Until then an
/// older file of that name stays as it was. Destruction, `discard` and signals (interrupt.h) remove
/// the temporary file; what a killed process left, NAME.tessora-tmp.PROCESS, is removed by the next
/// process that writes into the directory. Symbolic links are followed, so that a link stays a
/// link; the new file gets the permissions of the file it replaces. A link to a missing file
/// creates that file. Targets that are not regular files (standard output, named "-", devices,
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

    /// What `commit` does if the target exists, whether or not it existed at `open`.
    enum Existing { replace, keep };

    /// Checks that the file can be written, before any long work for it begins. With `keep`,
    /// `commit` fails rather than replace a file. Errors (here and below): false with "PATH: cannot
    /// be written: reason" in `error`.
    bool open(const std::string& path, std::string& error, Existing existing = replace);
    bool is_open() const { return state_ != closed; }
    /// True if `commit` writes the content itself (a device, pipe or standard output) and may
    /// block.
    bool is_direct() const { return state_ == direct; }

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
    Existing existing_ = replace;
    State state_ = closed;
};

/// True if a file of any kind has this name, behind symbolic links.
bool file_exists(const std::string& path);

/// True if both names lead to the same file, whether it exists or not: a missing file is identified
/// by its folder and its name, behind symbolic links. False for character devices (such as
/// /dev/null) and sockets, which several results can share.
bool same_file(const std::string& a, const std::string& b);

} // namespace app
