#include "app/mesh_reader.h"

#include "app/child_process.h"
#include "app/file_formats.h"
#include "app/fingerprint.h"
#include "app/interrupt.h"
#include "app/system.h"
#include "formats/model_stream.h"

#include <chrono>
#include <filesystem>

namespace app {
namespace {

/// Beside the program's modules. In a build folder, lib/tessora is a link to the programs.
std::string importer_file() { return program_directory() + "/../lib/tessora/tessora_import"; }

bool refuse(const std::string& path, const std::string& reason, host::IoError& error) {
    error = {host::IoError::malformed, path + ": " + reason};
    return false;
}

/// Receives all that the child writes, until it ends or there is another reason to stop waiting.
enum class Waited { ended, too_long, interrupted };
Waited receive(ChildProcess& child, unsigned seconds, std::string& answer, std::string& how) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(seconds + seconds / 2);
    while (!child.has_ended(how)) {
        if (deferred_signal() != 0 || was_interrupted())
            return Waited::interrupted;
        if (std::chrono::steady_clock::now() > end)
            return Waited::too_long;
        constexpr int k_look_again = 10; // milliseconds
        wait_for_children({&child}, k_look_again);
        answer += child.take_bytes();
    }
    return Waited::ended;
}

/// Why the child has not answered; empty if it has.
std::string failure_of(Waited waited, const std::string& how, unsigned seconds) {
    if (waited == Waited::interrupted)
        return "interrupted";
    constexpr const char* k_out_of_time = "by signal 24"; // SIGXCPU, by the limit of processor time
    if (waited == Waited::too_long || how == k_out_of_time)
        return "it takes more than " + std::to_string(seconds) + " s to read";
    if (how == "with code 127")
        return "tessora_import, which reads this format, does not start; is Assimp (libassimp5) "
               "installed?";
    if (how != "with code 0")
        return "the library that reads this format ended " + how + "; the file is probably damaged";
    return std::string();
}

/// A result is a new file of what was read.
void add_warnings(formats::MeshFile& file) {
    std::string list;
    for (const std::string& kind : file.model.left_out)
        list += (list.empty() ? "" : ", ") + kind;
    if (!list.empty())
        file.document.warnings.push_back(file.document.name + ": results lack its " + list);
}

} // namespace

ImportLimits import_limits(size_t file_size) {
    constexpr unsigned long long k_memory = 2ull << 30;
    constexpr unsigned long long k_memory_a_byte = 100;
    constexpr size_t k_bytes_a_second = 1u << 20;
    return {k_memory + k_memory_a_byte * file_size, unsigned(60 + file_size / k_bytes_a_second)};
}

bool import_model(const std::string& importer, const std::string& path, const std::string& bytes,
                  const ImportLimits& limits, formats::MeshFile& file, host::IoError& error) {
    std::error_code failure;
    if (!std::filesystem::exists(importer, failure))
        return refuse(path,
                      "this program was built without Assimp, which reads this format; convert the "
                      "file to OBJ or GLB",
                      error);
    const std::string extension = formats::facts_of(file.format).extension;
    ChildProcess child;
    std::string answer, how, reason;
    if (!child.start({importer, extension.substr(1), std::to_string(limits.memory),
                      std::to_string(limits.seconds)},
                     reason))
        return refuse(path, reason, error);
    child.send_bytes(bytes); // if it has ended, its answer says why
    child.close_input();
    const Waited waited = receive(child, limits.seconds, answer, how);
    reason = failure_of(waited, how, limits.seconds);
    if (!reason.empty() || !formats::read_model_stream(answer, file.model, reason))
        return refuse(path, reason, error);
    file.document = formats::document_of(file.model, path);
    add_warnings(file);
    return true;
}

bool read_mesh(const std::string& path, const formats::ReadOptions& options,
               formats::MeshFile& file, host::IoError& error, std::string* hash) {
    std::string bytes;
    error = {};
    if (const std::string refusal = input_refusal(path); !refusal.empty()) {
        error = {host::IoError::malformed, refusal};
        return false;
    }
    // One byte more than allowed is refused; a device without an end would fill all memory.
    if (!host::read_start(path, options.max_input + 1, bytes, error))
        return false;
    if (hash)
        *hash = fingerprint(bytes);
    if (!formats::parse_mesh(path, std::move(bytes), options, file, error))
        return false;
    return !file.is_foreign() || import_model(importer_file(), path, file.inflated,
                                              import_limits(file.inflated.size()), file, error);
}

} // namespace app
