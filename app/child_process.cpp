#include "app/child_process.h"

namespace app {

bool ChildProcess::take_line(std::string& line) {
    const size_t end = received_.find('\n');
    if (end == received_.npos)
        return false;
    line = received_.substr(0, end);
    received_.erase(0, end + 1);
    return true;
}

} // namespace app
