#include "host/script/functions.h"
#include "host/script/patterns.h"

#include <fnmatch.h>
#include <regex.h>

namespace host::script {

namespace {

class Regex {
public:
    explicit Regex(const std::string& pattern) {
        const int failure = regcomp(&compiled_, pattern.c_str(), REG_EXTENDED);
        if (failure == 0)
            return;
        char reason[200];
        regerror(failure, &compiled_, reason, sizeof reason);
        throw ScriptFault("The pattern \"" + pattern + "\" is no regular expression: " + reason +
                          ".");
    }
    ~Regex() { regfree(&compiled_); }
    Regex(const Regex&) = delete;
    Regex& operator=(const Regex&) = delete;

    bool find(const std::string& text, size_t& first, size_t& last) const {
        regmatch_t match;
        if (regexec(&compiled_, text.c_str(), 1, &match, 0) != 0)
            return false;
        first = size_t(match.rm_so);
        last = size_t(match.rm_eo);
        return true;
    }

private:
    regex_t compiled_;
};

} // namespace

bool find_pattern(const std::string& pattern, const std::string& text, size_t& first,
                  size_t& last) {
    return Regex(pattern).find(text, first, last);
}

bool fits_wildcards(const std::string& pattern, const std::string& text) {
    return fnmatch(pattern.c_str(), text.c_str(), 0) == 0;
}

} // namespace host::script
