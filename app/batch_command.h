/// `tessora unwrap` with several meshes: plans the batch and lets worker processes do it.
#pragma once

#include "app/batch_plan.h"
#include "app/unwrap_options.h"

namespace app {

/// Runs the batch of a request and returns the exit code: 0 if every mesh is done or was up to
/// date, 1 if at least one failed, 130 or 143 if it was interrupted.
int run_batch(const UnwrapRequest& request);
/// The same for items that are planned already.
int run_batch(const UnwrapRequest& request, std::vector<BatchItem> items);

} // namespace app
