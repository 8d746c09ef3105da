#include "app/script_command.h"

#include "app/exit_code.h"
#include "app/interrupt.h"
#include "app/panel_view.h"
#include "app/prompt.h"
#include "app/session_setup.h"
#include "app/system.h"
#include "app/unwrap_remarks.h"
#include "host/commands/session.h"

#include <cstdio>
#include <filesystem>
#include <iostream>

namespace app {

namespace {

using host::script::Session;
using host::script::Value;

constexpr char k_script_help[] = R"(usage: tessora script FILE.mel [arguments]

Runs a script file in the embedded host. The arguments are the script's global array $argv.

examples:
  tessora script unwrap_all.mel chair.obj table.obj
  tessora -c 'loadPlugin tessora; polyCube; tessora; file -f -exportAll "cube.obj";'
)";

constexpr char k_script_notes[] = R"(
exit codes: 0 done, 1 the script failed, 2 wrong usage, 3 the file cannot be read,
            or the number that the script's `quit -exitCode` gives
)";

constexpr char k_shell_help[] = R"(usage: tessora shell

A prompt for statements. A statement may span lines; Tab completes commands and $variables; the
history is kept between sessions. `help` lists the commands, `help COMMAND` tells what one takes.
Ctrl-C cancels the line, or the statement that runs. End with `quit` or Ctrl-D.

examples:
  loadPlugin tessora; file -open "bunny.obj"; select -all;
  tessora -stretch 0.1 -padding 4;
  polyEvaluate -uvShell;
  file -force -exportAll "bunny_uv.obj";
)";

OptionTable help_option() {
    static bool ignored = false;
    OptionTable table;
    table.heading("options:");
    table.add("help", &ignored, "", "show this text");
    return table;
}

bool wants_help(const Words& words) {
    return !words.empty() && (words[0] == "--help" || words[0] == "-h");
}

void prepare() {
    set_up_session();
    add_panel_commands();
    watch_unwraps();
}

int finish(bool ok) {
    std::fflush(stdout);
    return ok ? exit_done : exit_unexpected;
}

void print_result(const Value& value) {
    if (value.is_none())
        return;
    const std::string text = value.printed();
    std::cout << "// Result: " << text << (value.type().array ? "" : "\n") << std::flush;
}

/// True if the text fails to parse only because more input must follow.
bool is_unfinished(const std::string& text) {
    try {
        host::script::parse(text, "shell");
        return false;
    } catch (const host::script::ScriptError& error) {
        for (const char* sign : {"end of the script", "is not closed", "Comment is not closed"})
            if (error.text().find(sign) != std::string::npos &&
                error.text().find("String") == std::string::npos)
                return true;
        return false;
    }
}

/// Runs what was typed, prints its result and what became of unwraps. Returns whether it succeeded.
bool run_and_print(const std::string& text) {
    const Session::Outcome outcome = Session::current().run(text, "shell");
    if (outcome.ok)
        print_result(outcome.value);
    for (const std::string& line : finished_unwraps())
        std::cout << "// " << line << std::endl;
    return outcome.ok;
}

// --- line editing -------------------------------------------------------------------------------

std::vector<std::string> known_names() {
    host::script::Interpreter& interpreter = Session::current().interpreter();
    std::vector<std::string> names = interpreter.command_names();
    for (const std::string& name : interpreter.variable_names())
        names.push_back("$" + name);
    return names;
}

std::string history_file() {
    const std::string options = host::script::option_variable_file();
    if (options.empty())
        return std::string();
    return (std::filesystem::path(options).parent_path() / "shell_history").string();
}

int run_prompt() {
    Prompt prompt(known_names, history_file());
    const InterruptNoted noted;
    Session::current().interpreter().set_stop(was_interrupted);
    std::string text, line;
    while (prompt.read(text.empty() ? "tessora> " : "    ...> ", line)) {
        if (take_interrupt()) {
            std::puts("^C");
            text.clear();
            continue;
        }
        text += line;
        if (is_unfinished(text)) {
            text += '\n';
            continue;
        }
        run_and_print(text);
        take_interrupt();
        text.clear();
        prompt.save_history();
    }
    Session::current().interpreter().set_stop(nullptr);
    std::puts("");
    return finish(true);
}

int run_stream() {
    std::string text, line;
    bool ok = true;
    while (std::getline(std::cin, line)) {
        text += line + "\n";
        if (is_unfinished(text))
            continue;
        ok = run_and_print(text) && ok;
        text.clear();
    }
    if (!text.empty())
        ok = run_and_print(text) && ok;
    return finish(ok);
}

} // namespace

CommandHelp script_help() { return {k_script_help, help_option(), k_script_notes}; }

CommandHelp shell_help() { return {k_shell_help, help_option(), ""}; }

int script_command(const Words& words) {
    if (wants_help(words)) {
        std::fputs(script_help().text().c_str(), stdout);
        return exit_done;
    }
    if (words.empty()) {
        std::fputs(script_help().text().c_str(), stderr);
        return exit_usage;
    }
    prepare();
    Session& session = Session::current();
    std::string text;
    try {
        text = host::script::read_script(words[0]);
    } catch (const host::script::ScriptFault& fault) {
        say(fault.what());
        return exit_input;
    }
    std::string arguments;
    for (size_t i = 1; i < words.size(); ++i)
        arguments += (i > 1 ? "," : "") + host::script::quoted(words[i]);
    session.run("global string $argv[] = {" + arguments + "};", "arguments", false);
    return finish(session.run(text, words[0]).ok);
}

int text_command(const Words& words) {
    if (wants_help(words) && words.size() == 1) {
        std::fputs(script_help().text().c_str(), stdout);
        return exit_done;
    }
    if (words.size() != 1) {
        say("-c takes one text; see 'tessora script --help'");
        return exit_usage;
    }
    prepare();
    const Session::Outcome outcome = Session::current().run(words[0], "-c");
    if (outcome.ok)
        print_result(outcome.value);
    return finish(outcome.ok);
}

int shell_command(const Words& words) {
    if (wants_help(words)) {
        std::fputs(shell_help().text().c_str(), stdout);
        return exit_done;
    }
    if (!words.empty()) {
        say("shell takes no arguments; see 'tessora shell --help'");
        return exit_usage;
    }
    prepare();
    return is_terminal_input_and_output() ? run_prompt() : run_stream();
}

} // namespace app
