// The command `tessora view`: parses its options and runs the window.
#include "app/view_command.h"

#include "app/atomic_file.h"
#include "app/exit_code.h"
#include "app/options.h"
#include "window/application.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>

namespace app {
namespace {

constexpr char k_usage[] = R"(usage: tessora view [FILE] [options]

Opens the desktop window with FILE (.obj, .ma or .mel): four model panels, the texture with its
charts, the plug-in's menus and dialogs, undo and redo, a script console. Files can be dropped on it.
F1 shows the keyboard shortcuts.

)";

constexpr char k_examples[] = R"(
examples:
  tessora view bunny.obj
  tessora view --exec 'polyTorus; tessora -padding 4;'
  tessora view bunny.obj --exec 'select -all; tessora;' --screenshot bunny.png

exit codes: 0 done, 1 FILE or --exec failed, or there is no screen; 2 wrong usage; 3 FILE cannot be read
)";

bool read_size(const std::string& text, window::LaunchOptions& options) {
    int width = 0, height = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) != 2 || width < 640 ||
        height < 480 || width > 16384 || height > 16384)
        return false;
    options.width = width;
    options.height = height;
    return true;
}

int wrong(const std::string& sentence) {
    say(sentence + "\nsee 'tessora view --help'");
    return exit_usage;
}

bool is_display(const std::string& name) {
    const auto known = {"", "plain", "charts", "checker", "stretch"};
    return std::find(known.begin(), known.end(), name) != known.end();
}

/// Options that need further parsing.
struct TypedWords {
    std::string size, statements;
    bool wants_help = false;
};

OptionTable table_of(window::LaunchOptions& options, TypedWords& typed) {
    OptionTable table;
    table.add("size", &typed.size, "WxH", "size of the window in pixels (1440x900)");
    table.add("exec", &typed.statements, "TEXT", "script statements to run once the file is open");
    table.add("display", &options.display, "NAME",
              "plain, charts, checker or stretch, in the texture and on the mesh (charts)");
    table.add("screenshot", &options.screenshot, "FILE.png",
              "write a picture of the window, then close it");
    table.add("places", &options.places, "FILE",
              "keep a list of where menus, buttons and fields stand, for programs that drive the "
              "window");
    table.add("verbose", &options.is_verbose, "", "say how long the start took");
    table.alias("-v");
    table.add("help", &typed.wants_help, "", "this text");
    table.alias("-h");
    return table;
}

int show(const window::LaunchOptions& options) {
    std::string error;
    window::Application application(options, error);
    if (!error.empty()) {
        say(error);
        return exit_unexpected;
    }
    return application.run() ? exit_done : exit_unexpected;
}

} // namespace

int view_command(const Words& words) {
    window::LaunchOptions options;
    TypedWords typed;
    std::string error;
    OptionTable table = table_of(options, typed);
    Words operands;
    if (!table.parse(words, operands, error))
        return wrong(error);
    if (typed.wants_help) {
        std::fputs((k_usage + table.help() + k_examples).c_str(), stdout);
        return exit_done;
    }
    if (operands.size() > 1)
        return wrong("view takes one file");
    if (!typed.size.empty() && !read_size(typed.size, options))
        return wrong("--size takes WIDTHxHEIGHT, from 640x480 on: " + typed.size);
    if (!is_display(options.display))
        return wrong("--display takes plain, charts, checker or stretch, not " + options.display);
    if (!typed.statements.empty())
        options.statements.push_back(typed.statements);
    if (!operands.empty()) {
        options.file = operands[0];
        std::error_code failure;
        if (!std::filesystem::is_regular_file(options.file, failure)) {
            say(options.file + ": there is no such file");
            return exit_input;
        }
    }
    for (const std::string* result : {&options.screenshot, &options.places})
        if (same_file(*result, options.file))
            return wrong(*result + " would be written over the open file");
    if (same_file(options.screenshot, options.places))
        return wrong("--screenshot and --places would be the same file");
    return show(options);
}

} // namespace app
