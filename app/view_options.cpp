#include "app/view_options.h"

#include "app/atomic_file.h"
#include "app/file_formats.h"
#include "app/options.h"

#include <algorithm>
#include <cstdio>

namespace app {
namespace {

constexpr char k_usage[] = R"(usage: tessora view [FILE] [options]

Opens the desktop window with FILE (a mesh of any format that is read, .ma or .mel): four model
panels, the texture with its charts, the plug-in's menus and dialogs, undo and redo, a script console.
Files can be dropped on it. F1 shows the keyboard shortcuts.
)";

constexpr char k_examples[] = R"(
examples:
  tessora view bunny.obj
  tessora view --exec 'polyTorus; tessora -padding 4;'
  tessora view bunny.obj --exec 'tessora;' --screenshot bunny.png

exit codes: 0 done, 1 FILE or --exec failed, or there is no screen; 2 wrong usage; 3 FILE cannot be read
)";

/// Options that need further parsing.
struct TypedWords {
    std::string size, statements;
};

OptionTable table_of(ViewRequest& request, TypedWords& typed) {
    OptionTable table;
    table.add("size", &typed.size, "WxH", "size of the window in pixels (1440x900)");
    table.add("exec", &typed.statements, "TEXT", "script statements to run once the file is open");
    table.add("display", &request.display, "NAME",
              "plain, charts, checker, stretch or density, in the texture and on the mesh "
              "(charts)");
    table.choices({"plain", "charts", "checker", "stretch", "density"});
    table.add("screenshot", &request.screenshot, "FILE.png",
              "write a picture of the window, then close it");
    table.add("places", &request.places, "FILE",
              "keep a list of where menus, buttons and fields stand, for programs that drive the "
              "window");
    table.add("verbose", &request.is_verbose, "", "say how long the start took");
    table.alias("-v");
    table.add("help", &request.wants_help, "", "this text");
    return table;
}

bool read_size(const std::string& text, ViewRequest& request) {
    int width = 0, height = 0;
    char rest = 0;
    if (std::sscanf(text.c_str(), "%dx%d%c", &width, &height, &rest) != 2 || width < 640 ||
        height < 480 || width > 16384 || height > 16384)
        return false;
    request.width = width;
    request.height = height;
    return true;
}

bool is_display(const std::string& name) {
    const auto known = {"", "plain", "charts", "checker", "stretch", "density"};
    return std::find(known.begin(), known.end(), name) != known.end();
}

/// A sentence if results would be written over each other or over the file; else empty.
std::string clash_of(const ViewRequest& request) {
    for (const std::string* result : {&request.screenshot, &request.places})
        if (same_file(*result, request.file))
            return *result + " would be written over the open file";
    if (same_file(request.screenshot, request.places))
        return "--screenshot and --places would be the same file";
    return picture_refusal(request.screenshot);
}

} // namespace

bool parse_view_request(const std::vector<std::string>& words, ViewRequest& request,
                        std::string& error) {
    TypedWords typed;
    std::vector<std::string> operands;
    if (!table_of(request, typed).parse(words, operands, error))
        return false;
    if (request.wants_help)
        return true;
    if (operands.size() > 1)
        error = "view takes one file";
    else if (!typed.size.empty() && !read_size(typed.size, request))
        error = "--size takes WIDTHxHEIGHT, from 640x480 on: " + typed.size;
    else if (!is_display(request.display))
        error =
            "--display takes plain, charts, checker, stretch or density, not " + request.display;
    if (!error.empty())
        return false;
    if (!typed.statements.empty())
        request.statements.push_back(typed.statements);
    if (!operands.empty())
        request.file = operands[0];
    error = clash_of(request);
    return error.empty();
}

CommandHelp view_help() {
    ViewRequest request;
    TypedWords typed;
    return {k_usage, table_of(request, typed), k_examples};
}

} // namespace app
