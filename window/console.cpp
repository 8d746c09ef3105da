#include "window/console.h"

#include <algorithm>
#include <iostream>

namespace window {

void Console::add(Kind kind, const std::string& text) {
    std::string line;
    for (const char c : text + "\n") {
        if (c != '\n') {
            line += c;
            continue;
        }
        lines_.push_back({kind, line});
        line.clear();
        if (lines_.size() > k_max_lines)
            lines_.pop_front();
        ++revision_;
    }
}

void Console::print(const std::string& text) {
    if (echoes_to_streams)
        std::cout << text << std::flush;
    unfinished_ += text;
    const size_t end = unfinished_.rfind('\n');
    if (end == std::string::npos)
        return;
    add(Kind::output, unfinished_.substr(0, end));
    unfinished_.erase(0, end + 1);
}

void Console::warning(const std::string& text) {
    if (withholds_errors)
        return;
    if (echoes_to_streams)
        errors_ << "// Warning: " << text << std::endl;
    add(Kind::warning, "// Warning: " + text);
}

void Console::error(const std::string& text) {
    if (withholds_errors)
        return;
    if (echoes_to_streams)
        errors_ << "// Error: " << text << std::endl;
    add(Kind::error, "// Error: " + text);
}

std::string plain_words(const Console::Line& line) {
    std::string words = line.text;
    if (words.compare(0, 3, "// ") == 0)
        words.erase(0, 3);
    if (line.kind == Console::Kind::result)
        return words;
    for (const std::string mark : {"Error: ", "Warning: "})
        if (words.compare(0, mark.size(), mark) == 0)
            words.erase(0, mark.size());
    // "window:1:7: ..."
    static constexpr char k_place[] = "window:";
    if (words.compare(0, sizeof k_place - 1, k_place) == 0) {
        const size_t end = words.find_first_not_of("0123456789:", sizeof k_place - 1);
        if (end != std::string::npos && words[end] == ' ')
            words.erase(0, end + 1);
    }
    return words;
}

void Console::echo(const std::string& statements) { add(Kind::input, statements); }

void Console::result(const std::string& text) {
    if (echoes_to_streams)
        std::cout << "// Result: " << text << std::endl;
    add(Kind::result, "// Result: " + text);
}

const Console::Line* Console::last(size_t since) const {
    size_t left = revision_ - std::min(since, revision_);
    for (auto line = lines_.rbegin(); line != lines_.rend() && left > 0; ++line, --left)
        if (line->kind != Kind::input && line->kind != Kind::output)
            return &*line;
    return nullptr;
}

void Console::clear() {
    lines_.clear();
    unfinished_.clear();
    ++revision_;
}

void Console::remember(const std::string& statements) {
    if (!statements.empty() && (history_.empty() || history_.back() != statements))
        history_.push_back(statements);
    place_ = history_.size();
    draft_.clear();
}

std::string Console::recall(bool forward, const std::string& draft) {
    if (place_ == history_.size())
        draft_ = draft;
    if (forward ? place_ == history_.size() : place_ == 0)
        return draft;
    place_ += forward ? 1 : size_t(-1);
    return place_ == history_.size() ? draft_ : history_[place_];
}

std::vector<std::string> completions(const host::script::Interpreter& interpreter,
                                     const std::string& text, std::string& common) {
    common.clear();
    size_t start = text.size();
    const auto is_name = [](char c) {
        return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
               c == '_';
    };
    while (start > 0 && is_name(text[start - 1]))
        --start;
    const bool is_variable = start > 0 && text[start - 1] == '$';
    const std::string prefix = text.substr(start);
    std::vector<std::string> found;
    if (prefix.empty() && !is_variable)
        return found;
    for (const std::string& name :
         is_variable ? interpreter.variable_names() : interpreter.command_names())
        if (name.compare(0, prefix.size(), prefix) == 0)
            found.push_back(name);
    if (found.empty())
        return found;
    common = found[0];
    for (const std::string& name : found) {
        size_t same = 0;
        while (same < std::min(common.size(), name.size()) && common[same] == name[same])
            ++same;
        common.resize(same);
    }
    common.erase(0, prefix.size());
    return found;
}

} // namespace window
