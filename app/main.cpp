/// The program `tessora`: finds the subcommand and runs it.
#include "app/command.h"
#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/manual.h"
#include "app/measure_command.h"
#include "app/options.h"
#include "app/pack_command.h"
#include "app/pack_options.h"
#include "app/report_command.h"
#include "app/script_command.h"
#include "app/serve_command.h"
#include "app/system.h"
#include "app/unwrap_command.h"
#include "app/unwrap_options.h"
#include "app/view_command.h"
#include "app/view_options.h"
#include "app/worker_command.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <new>
#include <string>

namespace {

const std::vector<app::Command> k_commands = {
    {"unwrap", "give a mesh new texture coordinates", app::unwrap_command, app::unwrap_help},
    {"pack", "pack the charts that meshes have into one texture", app::pack_command,
     app::pack_help},
    {"measure", "tell how good a mesh's texture coordinates are", app::measure_command,
     app::measure_help},
    {"verify", "check that they keep what an unwrap promises", app::verify_command,
     app::verify_help},
    {"report", "merge or compare the figures of many meshes", app::report_command,
     app::report_help},
    {"serve", "unwrap what other programs ask for, a line of JSON each", app::serve_command,
     app::serve_help},
    {"view", "open the desktop window", app::view_command, app::view_help},
    {"script", "run a script file in the embedded host", app::script_command, app::script_help},
    {"shell", "a prompt for script statements", app::shell_command, app::shell_help},
};

const app::Command* find_command(const std::string& name) {
    for (const app::Command& command : k_commands)
        if (name == command.name)
            return &command;
    return nullptr;
}

std::string help() {
    std::string text = std::string("tessora ") + app::version() +
                       ": automatic UV unwrapping\n\nusage: tessora COMMAND ...\n\ncommands:\n";
    for (const app::Command& command : k_commands) {
        std::string name = command.name;
        name.resize(11, ' ');
        text += "  " + name + command.summary + "\n";
    }
    return text + R"(  manual     print the manual page of a command
  completion print what completes commands and options in bash, zsh or fish

  -c TEXT        runs script statements and prints their result
  -h, --help     this text; 'tessora COMMAND --help' for a command's options
  -V, --version  the version, also after a command

examples:
  tessora unwrap bunny.obj
  tessora unwrap chair.obj -o out/chair.obj --width 1024 --height 512 --padding 4
  tessora -c 'loadPlugin tessora; polyCube; tessora; file -f -exportAll "cube.obj";'
  tessora unwrap --help
)";
}

int unknown_command(const std::string& name) {
    std::vector<std::string> names = {"--help", "--version"};
    for (const app::Command& command : k_commands)
        names.push_back(command.name);
    const std::string guess = app::nearest(name, names);
    const bool mesh = name.size() > 4 && name.compare(name.size() - 4, 4, ".obj") == 0;
    app::say("unknown command " + name +
             (mesh            ? "; did you mean 'tessora unwrap " + name + "'?"
              : guess.empty() ? ""
                              : "; did you mean " + guess + "?") +
             "\nsee 'tessora --help'");
    return app::exit_usage;
}

int run(const app::Words& words) {
    if (words.empty()) {
        std::fputs(help().c_str(), stderr);
        return app::exit_usage;
    }
    const std::string& name = words[0];
    if (name == "--version" || name == "-V") {
        std::printf("tessora %s\n", app::version());
        return app::exit_done;
    }
    if (name == "--help" || name == "-h" || name == "help") {
        const app::Command* command = words.size() > 1 ? find_command(words[1]) : nullptr;
        if (command)
            return command->run({"--help"});
        std::fputs(help().c_str(), stdout);
        return app::exit_done;
    }
    if (name == "-c")
        return app::text_command({words.begin() + 1, words.end()});
    if (name == "manual")
        return app::manual_command(k_commands, {words.begin() + 1, words.end()});
    if (name == "completion")
        return app::completion_command(k_commands, {words.begin() + 1, words.end()});
    if (name == "worker")
        return app::worker_command({});
    const app::Command* command = find_command(name);
    if (command && words.size() == 2 && (words[1] == "--version" || words[1] == "-V"))
        return run({"--version"});
    return command ? command->run({words.begin() + 1, words.end()}) : unknown_command(name);
}

} // namespace

int main(int argc, char** argv) {
    app::prepare_process();
    app::install_signal_handlers();
    int code = app::exit_unexpected;
    try {
        code = run({argv + 1, argv + argc});
    } catch (const std::bad_alloc&) {
        app::say("not enough memory; no result was written");
        return app::exit_limit;
    }
    // A write error on standard output appears only when the buffer is flushed.
    if (std::fflush(stdout) != 0 && code == app::exit_done) {
        if (errno != EPIPE) // a reader that has seen enough, such as head, is nobody's mistake
            app::say(std::string("standard output cannot be written: ") + std::strerror(errno));
        return app::exit_output;
    }
    return code;
}
