// The console itself edits lines and remembers them for as long as it is open.
#include "app/prompt.h"

#include <iostream>
#include <utility>

namespace app {

Prompt::Prompt(Names, std::string history_file) : history_file_(std::move(history_file)) {}

bool Prompt::read(const std::string& mark, std::string& line) {
    std::cout << mark << std::flush;
    if (!std::getline(std::cin, line))
        return false;
    if (!line.empty() && line.back() == '\r')
        line.pop_back();
    return true;
}

void Prompt::save_history() const {}

} // namespace app
