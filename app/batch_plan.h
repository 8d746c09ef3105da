/// Which files a batch reads and which it writes.
#pragma once

#include "app/unwrap_options.h"

#include <string>
#include <vector>

namespace app {

/// One mesh of a batch.
struct BatchItem {
    std::string input;
    std::string output;
    std::string report; ///< beside the output
    std::string layout; ///< picture beside the output; empty if not requested
};

/// Expands the operands and the list to the batch's items, in byte order of the inputs: the same
/// operands give the same order everywhere, so that shards fit together. Files are looked up but
/// not opened.
/// `left_out` receives a sentence about files in searched folders that look like meshes or scenes
/// but whose formats are not read; empty if there are none.
/// Errors: the exit code and a sentence in `error`: exit_input if an operand does not exist or
///         holds no mesh, exit_usage if two results would have the same name.
int plan_batch(const UnwrapRequest& request, std::vector<BatchItem>& items, std::string& left_out,
               std::string& error);

} // namespace app
