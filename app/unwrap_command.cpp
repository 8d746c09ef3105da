#include "app/unwrap_command.h"

#include "app/batch_command.h"
#include "app/exit_code.h"
#include "app/one_atlas.h"
#include "app/unwrap_run.h"

#include <cstdio>

namespace app {

int unwrap_command(const Words& words) {
    UnwrapRequest request;
    std::string error;
    if (!parse_unwrap_request(words, request, error)) {
        say(error + "\nsee 'tessora unwrap --help'");
        return exit_usage;
    }
    if (request.help) {
        std::fputs(unwrap_help().text().c_str(), stdout);
        return exit_done;
    }
    if (request.batch.one_atlas)
        return run_one_atlas(request);
    if (request.batch.is_wanted)
        return run_batch(request);
    UnwrapReport report;
    return run_unwrap_request(request, report);
}

} // namespace app
