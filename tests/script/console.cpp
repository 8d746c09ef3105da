// Runs script files in a bare interpreter: the language alone, without scene commands.

#include "host/script/interpreter.h"

#include <iostream>

namespace {

class Console : public host::script::Output {
public:
    void print(const std::string& text) override { std::cout << text; }
    void warning(const std::string& text) override { std::cout << "// Warning: " << text << '\n'; }
    void error(const std::string& text) override { std::cout << "// Error: " << text << '\n'; }
};

} // namespace

int main(int argc, char** argv) {
    Console console;
    host::script::Interpreter interpreter(console);
    interpreter.script_path().push_back("scripts");
    try {
        for (int i = 1; i < argc; ++i)
            interpreter.run(host::script::read_script(argv[i]), argv[i]);
    } catch (const std::exception& error) {
        console.error(error.what());
        return 1;
    }
    return 0;
}
