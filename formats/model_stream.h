/// A model as bytes, on its way from the importer's process to the program.
#pragma once

#include "formats/model.h"

#include <string>
#include <string_view>

namespace formats {

/// A line of JSON with names and counts, then the arrays, as this computer stores them.
std::string write_model_stream(const Model& model);
/// A line that says why there is no model.
std::string write_model_failure(const std::string& reason);

/// Trusts nothing: every count is checked against the bytes, every number against its range.
/// Errors: false with a reason in `error`.
bool read_model_stream(std::string_view bytes, Model& model, std::string& error);

} // namespace formats
