#include "app/manual.h"

#include "app/command_help.h"
#include "app/exit_code.h"

#include <cstdio>
#include <sstream>

namespace app {
namespace {

using Row = OptionTable::Row;

// --- manual pages -------------------------------------------------------------------------------

/// Text in which roff sees nothing but text.
std::string roff(const std::string& text) {
    std::string out;
    for (const char c : text) {
        if (c == '\\')
            out += "\\e";
        else if (c == '-')
            out += "\\-";
        else if ((c == '.' || c == '\'') && (out.empty() || out.back() == '\n'))
            out += std::string("\\&") + c;
        else
            out += c;
    }
    return out;
}

std::vector<std::string> paragraphs_of(const std::string& text) {
    std::vector<std::string> paragraphs;
    std::istringstream lines(text);
    std::string line;
    bool begins = true;
    while (std::getline(lines, line)) {
        if (line.empty()) {
            begins = true;
            continue;
        }
        if (begins)
            paragraphs.emplace_back();
        begins = false;
        paragraphs.back() += line + "\n";
    }
    return paragraphs;
}

/// Removes `label` from the start of a paragraph that has it.
bool take_label(std::string& paragraph, const std::string& label) {
    if (paragraph.compare(0, label.size(), label) != 0)
        return false;
    paragraph.erase(0, label.size());
    paragraph.erase(0, paragraph.find_first_not_of(" \n"));
    return true;
}

std::string as_is(const std::string& paragraph) { return ".nf\n" + roff(paragraph) + ".fi\n"; }

/// The sections that a command's paragraphs belong to.
struct Sections {
    std::string synopsis, description, examples, notes, exit_status;

    void add(const std::string& text, std::string& other) {
        for (std::string paragraph : paragraphs_of(text)) {
            if (take_label(paragraph, "usage:"))
                synopsis += as_is(without_margin(paragraph));
            else if (take_label(paragraph, "examples:"))
                examples += as_is(paragraph);
            else if (take_label(paragraph, "exit codes:"))
                exit_status += roff(paragraph);
            else if (paragraph.find("\n ") != paragraph.npos) // a list
                other += ".PP\n" + as_is(paragraph);
            else
                other += ".PP\n" + roff(paragraph);
        }
    }

private:
    static std::string without_margin(const std::string& paragraph) {
        std::string out;
        std::istringstream lines(paragraph);
        for (std::string line; std::getline(lines, line);)
            out += line.substr(std::min(line.size(), line.find_first_not_of(' '))) + "\n";
        return out;
    }
};

std::string roff_options(const OptionTable& options) {
    std::string out;
    for (const Row& row : options.rows()) {
        if (row.name.empty()) {
            std::string heading = row.help;
            if (!heading.empty() && heading.back() == ':')
                heading.pop_back();
            out += ".SS " + roff(heading) + "\n";
            continue;
        }
        out += ".TP\n.B ";
        if (!row.alias.empty())
            out += roff(row.alias) + ", ";
        out += roff("--" + row.name);
        if (!row.value_name.empty())
            out += " \\fI" + roff(row.value_name) + "\\fR";
        out += "\n" + roff(row.help);
        if (!row.default_text.empty())
            out += " (" + roff(row.default_text) + ")";
        out += "\n";
    }
    return out;
}

std::string title(const std::string& name) {
    return ".TH \"" + roff(name) + "\" 1 \"\" \"tessora " + version() +
           "\" \"Tessora\"\n.nh\n.SH NAME\n";
}

std::string page_of(const Command& command) {
    const CommandHelp help = command.help();
    Sections sections;
    sections.add(help.usage, sections.description);
    sections.add(help.notes, sections.notes);
    std::string out = title(std::string("tessora-") + command.name) + "tessora\\-" + command.name +
                      " \\- " + roff(command.summary) + "\n";
    const std::pair<const char*, std::string> parts[] = {
        {"SYNOPSIS", sections.synopsis},         {"DESCRIPTION", sections.description},
        {"OPTIONS", roff_options(help.options)}, {"NOTES", sections.notes},
        {"EXIT STATUS", sections.exit_status},   {"EXAMPLES", sections.examples}};
    for (const auto& [name, text] : parts)
        if (!text.empty())
            out += ".SH \"" + std::string(name) + "\"\n" + text;
    return out + ".SH \"SEE ALSO\"\n.BR tessora (1)\n";
}

// --- completion ---------------------------------------------------------------------------------

enum class ValueKind { none, file, folder, choice, other };

ValueKind kind_of(const Row& row) {
    if (row.value_name.empty())
        return ValueKind::none;
    if (!row.choices.empty())
        return ValueKind::choice;
    if (row.value_name.rfind("FILE", 0) == 0 || row.value_name == "SOCKET")
        return ValueKind::file;
    return row.value_name == "DIR" ? ValueKind::folder : ValueKind::other;
}

std::string joined(const std::vector<std::string>& words) {
    std::string out;
    for (const std::string& word : words)
        out += (out.empty() ? "" : " ") + word;
    return out;
}

std::string command_names(const std::vector<Command>& commands) {
    std::string names;
    for (const Command& command : commands)
        names += std::string(names.empty() ? "" : " ") + command.name;
    return names + " manual completion help";
}

/// Words in single quotes of a shell.
std::string quoted(const std::string& text) {
    std::string out = "'";
    for (const char c : text)
        out += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return out + "'";
}

std::string bash_case(const Row& row) {
    const std::string pattern = "--" + row.name + (row.alias.empty() ? "" : "|" + row.alias);
    switch (kind_of(row)) {
    case ValueKind::none:
        return "";
    case ValueKind::file:
        return "        " + pattern + ") _tessora_files -f; return ;;\n";
    case ValueKind::folder:
        return "        " + pattern + ") _tessora_files -d; return ;;\n";
    case ValueKind::choice:
        return "        " + pattern + ") _tessora_words " + quoted(joined(row.choices)) +
               "; return ;;\n";
    case ValueKind::other:
        return "        " + pattern + ") return ;;\n";
    }
    return "";
}

std::string bash_command(const Command& command) {
    const CommandHelp help = command.help();
    std::string options, cases;
    for (const Row& row : help.options.rows()) {
        if (row.name.empty())
            continue;
        options += (options.empty() ? "--" : " --") + row.name;
        cases += bash_case(row);
    }
    std::string out = std::string("    ") + command.name + ")\n";
    if (!cases.empty())
        out += "        case $before in\n" + cases + "        esac\n";
    if (!help.verbs.empty())
        out += "        ((COMP_CWORD == 2)) && verbs=" + quoted(joined(help.verbs)) + "\n";
    return out + "        options=" + quoted(options) + " ;;\n";
}

std::string bash_script(const std::vector<Command>& commands) {
    std::string cases;
    for (const Command& command : commands)
        cases += bash_command(command);
    return R"(# bash completion of tessora, made from the program's options.
_tessora_words() { mapfile -t COMPREPLY < <(compgen -W "$1" -- "$word"); }
_tessora_files() {
    mapfile -t COMPREPLY < <(compgen "$1" -- "$word")
    compopt -o filenames 2>/dev/null
}
_tessora() {
    local word=${COMP_WORDS[COMP_CWORD]} before=${COMP_WORDS[COMP_CWORD-1]} options='' verbs=''
    COMPREPLY=()
    if ((COMP_CWORD == 1)); then
        _tessora_words ')" +
           command_names(commands) + R"( --help --version -c'
        return
    fi
    case ${COMP_WORDS[1]} in
)" + cases +
           "    manual|help) _tessora_words " + quoted(command_names(commands)) + R"(; return ;;
    completion) _tessora_words 'bash zsh fish'; return ;;
    esac
    if [[ $word == -* ]]; then
        _tessora_words "$options"
    elif [[ $verbs ]]; then
        _tessora_words "$verbs"
    else
        _tessora_files -f
    fi
}
complete -F _tessora tessora
)";
}

/// Text in an argument of zsh's _arguments, where brackets and colons have a meaning.
std::string zsh_text(const std::string& text) {
    std::string out;
    for (const char c : text)
        out += (c == '[' || c == ']' || c == ':' || c == '\\') ? std::string("\\") + c
                                                               : std::string(1, c);
    return out;
}

std::string zsh_option(const Row& row) {
    std::string value;
    switch (kind_of(row)) {
    case ValueKind::none:
        break;
    case ValueKind::file:
        value = ":" + row.value_name + ":_files";
        break;
    case ValueKind::folder:
        value = ":" + row.value_name + ":_files -/";
        break;
    case ValueKind::choice:
        value = ":" + row.value_name + ":(" + joined(row.choices) + ")";
        break;
    case ValueKind::other:
        value = ":" + row.value_name + ": ";
        break;
    }
    const std::string help = "[" + zsh_text(row.help) + "]" + value;
    std::string out = "        " + quoted("--" + row.name + (value.empty() ? "" : "=") + help);
    if (!row.alias.empty())
        out += " \\\n        " + quoted(row.alias + help);
    return out + " \\\n";
}

std::string zsh_case(const Command& command) {
    std::string cases = std::string("    ") + command.name + ")\n        _arguments \\\n";
    const CommandHelp help = command.help();
    for (const Row& row : help.options.rows())
        if (!row.name.empty())
            cases += zsh_option(row);
    if (!help.verbs.empty())
        cases += "        " + quoted("1:what:(" + joined(help.verbs) + ")") + " \\\n";
    cases += "        '*:file:_files' ;;\n";
    return cases;
}

std::string zsh_script(const std::vector<Command>& commands) {
    std::string list, cases;
    for (const Command& command : commands) {
        cases += zsh_case(command);
        list +=
            "        " + quoted(std::string(command.name) + ":" + zsh_text(command.summary)) + "\n";
    }
    return R"(#compdef tessora
# zsh completion of tessora, made from the program's options.
_tessora() {
    local -a commands
    commands=(
)" + list + R"(        'manual:print a manual page'
        'completion:print a completion script'
    )
    if ((CURRENT == 2)); then
        _describe command commands
        return
    fi
    local command=${words[2]}
    shift words
    ((CURRENT--))
    case $command in
)" + cases +
           R"(    manual) _describe command commands ;;
    completion) compadd bash zsh fish ;;
    esac
}
if [[ $funcstack[1] == _tessora ]]; then
    _tessora "$@"
else
    compdef _tessora tessora
fi
)";
}

std::string fish_option(const std::string& condition, const Row& row) {
    std::string out = "complete -c tessora -n " + quoted(condition) + " -l " + row.name;
    if (row.alias.size() == 2)
        out += " -s " + row.alias.substr(1);
    switch (kind_of(row)) {
    case ValueKind::none:
        break;
    case ValueKind::file:
        out += " -r -F";
        break;
    case ValueKind::folder:
        out += " -x -a '(__fish_complete_directories)'";
        break;
    case ValueKind::choice:
        out += " -x -a " + quoted(joined(row.choices));
        break;
    case ValueKind::other:
        out += " -x";
        break;
    }
    return out + " -d " + quoted(row.help) + "\n";
}

std::string fish_script(const std::vector<Command>& commands) {
    std::string out = "# fish completion of tessora, made from the program's options.\n";
    for (const Command& command : commands) {
        out += std::string("complete -c tessora -f -n __fish_use_subcommand -a ") + command.name +
               " -d " + quoted(command.summary) + "\n";
        const std::string condition = std::string("__fish_seen_subcommand_from ") + command.name;
        const CommandHelp help = command.help();
        if (!help.verbs.empty())
            out += "complete -c tessora -n " + quoted(condition) + " -a " +
                   quoted(joined(help.verbs)) + "\n";
        for (const Row& row : help.options.rows())
            if (!row.name.empty())
                out += fish_option(condition, row);
    }
    return out +
           "complete -c tessora -f -n __fish_use_subcommand -a manual -d 'print a manual page'\n"
           "complete -c tessora -f -n __fish_use_subcommand -a completion -d 'print a completion "
           "script'\n"
           "complete -c tessora -x -n '__fish_seen_subcommand_from completion' -a 'bash zsh fish'\n"
           "complete -c tessora -x -n '__fish_seen_subcommand_from manual' -a " +
           quoted(command_names(commands)) + "\n";
}

} // namespace

std::string manual_page(const std::vector<Command>& commands, const Command* command) {
    if (command)
        return page_of(*command);
    std::string out = title("tessora") +
                      "tessora \\- automatic UV unwrapping of polygon meshes\n"
                      ".SH SYNOPSIS\n.B tessora\n\\fICOMMAND\\fR ...\n.SH COMMANDS\n";
    std::string also;
    for (const Command& one : commands) {
        out += std::string(".TP\n.B ") + one.name + "\n" + roff(one.summary) + "\n";
        also += std::string(also.empty() ? "" : ",\n") + ".BR tessora\\-" + one.name + " (1)";
    }
    return out +
           ".TP\n.BI \\-c \" TEXT\"\nruns script statements and prints their result\n"
           ".TP\n.BR \\-h ,\\  \\-\\-help\nlists the commands; after a command, its options\n"
           ".TP\n.BR \\-V ,\\  \\-\\-version\nprints the version\n.SH \"SEE ALSO\"\n" +
           also + "\n";
}

std::string completion_script(const std::vector<Command>& commands, const std::string& shell) {
    return shell == "bash"   ? bash_script(commands)
           : shell == "zsh"  ? zsh_script(commands)
           : shell == "fish" ? fish_script(commands)
                             : std::string();
}

int manual_command(const std::vector<Command>& commands, const Words& words) {
    const Command* found = nullptr;
    for (const Command& command : commands)
        if (!words.empty() && words[0] == command.name)
            found = &command;
    if (words.size() > 1 || (!words.empty() && !found)) {
        say("usage: tessora manual [COMMAND]: prints the manual page, for 'man -l -'");
        return exit_usage;
    }
    std::fputs(manual_page(commands, found).c_str(), stdout);
    return exit_done;
}

int completion_command(const std::vector<Command>& commands, const Words& words) {
    const std::string script =
        words.size() == 1 ? completion_script(commands, words[0]) : std::string();
    if (script.empty()) {
        say("usage: tessora completion bash|zsh|fish: prints a script for the shell to source");
        return exit_usage;
    }
    std::fputs(script.c_str(), stdout);
    return exit_done;
}

} // namespace app
