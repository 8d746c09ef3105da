/// One unwrap from reading the mesh file to writing the mesh, the report and the pictures.
#pragma once

#include "app/report.h"
#include "app/unwrap_options.h"

namespace app {

/// Runs a request and returns its exit code; `report` receives what was done, or why not. Files
/// appear under their names only after all of them are complete. After a failure only the report is
/// written, if the request names one.
/// Errors: std::bad_alloc; failed assertions in the libraries call abort().
int run_unwrap_request(const UnwrapRequest& request, UnwrapReport& report);

} // namespace app
