/// Live: whenever the seams before the unwrap node of the shown mesh change, a child process
/// unwraps the mesh along them, and the node puts out the result.
///
/// The node itself does not compute meanwhile: it keeps what it has, as always without a request.
/// Undo and redo of cuts change the node's input, too, and are followed in the same way.
#pragma once

#include "app/unwrap_child.h"
#include "window/subject.h"

#include <chrono>
#include <filesystem>
#include <string>

namespace window {

/// A new folder for temporary files that only this user can read; empty if none can be made.
std::filesystem::path make_private_folder();

class LiveUnwrap {
public:
    using Clock = std::chrono::steady_clock;

    LiveUnwrap();
    ~LiveUnwrap();
    LiveUnwrap(const LiveUnwrap&) = delete;
    LiveUnwrap& operator=(const LiveUnwrap&) = delete;

    /// Begins an unwrap if the input of the subject's node is another than that of the last one.
    /// `revision` of the scene, from 1: with the same one as before nothing is looked at.
    /// Errors: false with a sentence in `error`.
    bool follow(const Subject& subject, size_t revision, std::string& error);
    /// Puts a result that has arrived into the node, its charts with the densities that they were
    /// given by hand; the meshes must then be brought up to date.
    /// `error`: why there is none, empty if it has not arrived.
    bool take_result(const Subject& subject, std::string& error);
    /// Ends the child and forgets what it was given.
    void stop();

    /// Whether a result is under way for what the subject's node takes now.
    bool awaits(const Subject& subject) const;
    bool is_busy() const { return child_.is_busy(); }
    /// Whether a result is awaited for longer than people take for "at once".
    bool is_late() const {
        return is_busy() && Clock::now() - begun_ > std::chrono::milliseconds(300);
    }
    /// Of the last result: from the change of the input to the result in the node.
    Clock::duration last_time() const { return last_time_; }

private:
    std::filesystem::path folder_; ///< of the files that travel
    app::UnwrapChild child_;
    host::Ref<host::graph::Node> node_;
    host::Mesh input_;    ///< of the unwrap under way or last done; shares storage with the node's
    size_t revision_ = 0; ///< of the scene, in the last `follow`
    Clock::time_point begun_;
    Clock::duration last_time_{};
};

/// The mesh that an unwrap node takes; null if it has none.
const host::Mesh* input_of(host::graph::Node& node);

/// A mesh as OBJ text: positions, faces, and one UV set; -1: none.
std::string obj_text(const host::Mesh& mesh, int uv_set);

/// The statements that give the shown mesh an unwrap node that Live can follow.
std::string statement_beginning_live(const Subject& subject, bool has_uvs);

} // namespace window
