/// Fuzz target: the command line of `tessora unwrap`. The input is a list of words, each ended by a
/// zero byte. A refusal must state the reason; an accepted command line must name an input.
#include "app/unwrap_options.h"
#include "fuzz/finding.h"

#include <cstdint>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    std::vector<std::string> words;
    std::string word;
    for (size_t i = 0; i < size; ++i) {
        if (data[i] != 0) {
            word += char(data[i]);
            continue;
        }
        words.push_back(word);
        word.clear();
    }
    if (!word.empty())
        words.push_back(word);
    app::UnwrapRequest request;
    std::string error;
    if (!app::parse_unwrap_request(words, request, error))
        report_finding(error.empty() ? "refused without a reason" : "");
    else if (!request.help && request.input.empty() && request.batch.operands.empty() &&
             request.batch.list.empty())
        report_finding("accepted without an input");
    return 0;
}
