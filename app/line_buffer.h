/// A stream buffer that passes on whole lines: redirects std::cerr, which plug-ins write to.
#pragma once

#include <functional>
#include <streambuf>
#include <string>
#include <utility>

namespace app {

class LineBuffer : public std::streambuf {
public:
    /// `take_line` receives each line without its line end and without carriage returns.
    explicit LineBuffer(std::function<void(const std::string&)> take_line)
        : take_line_(std::move(take_line)) {}

    /// Passes on an unfinished line, if there is one.
    void end_line() {
        if (!line_.empty())
            take_line_(std::exchange(line_, std::string()));
    }

private:
    int_type overflow(int_type character) override {
        if (traits_type::eq_int_type(character, traits_type::eof()))
            return traits_type::not_eof(character);
        if (character == '\n')
            take_line_(std::exchange(line_, std::string()));
        else if (character != '\r')
            line_ += traits_type::to_char_type(character);
        return character;
    }

    std::function<void(const std::string&)> take_line_;
    std::string line_; ///< unfinished
};

} // namespace app
