/// The flags of the command `tessora`: one table for syntax, defaults and parser.
#pragma once

#include "plugin/unwrap_settings.h"

#include <maya/MArgDatabase.h>
#include <maya/MSyntax.h>

struct FlagRow {
    const char* short_name;
    const char* long_name;
    MSyntax::MArgType type;
    void (*reset)(UnwrapSettings& settings);
    /// Leaves the field unchanged if the value cannot be read.
    void (*read)(const MArgDatabase& arguments, const char* flag, UnwrapSettings& settings);
};

template <auto Field>
void read_flag(const MArgDatabase& arguments, const char* flag, UnwrapSettings& settings) {
    arguments.getFlagArgument(flag, 0, settings.*Field);
}

/// In the order in which the syntax declares them.
inline const FlagRow k_flags[] = {
    {"-mc", "-mapchannel", MSyntax::kString, [](UnwrapSettings& s) { s.uv_set = "map1"; },
     read_flag<&UnwrapSettings::uv_set>},
    {"-cr", "-charts", MSyntax::kLong, [](UnwrapSettings& s) { s.charts = 0; },
     read_flag<&UnwrapSettings::charts>},
    {"-st", "-stretch", MSyntax::kDouble, [](UnwrapSettings& s) { s.stretch = 0.15; },
     read_flag<&UnwrapSettings::stretch>},
    {"-pad", "-padding", MSyntax::kLong, [](UnwrapSettings& s) { s.padding = 2; },
     read_flag<&UnwrapSettings::padding>},
    {"-w", "-width", MSyntax::kLong, [](UnwrapSettings& s) { s.tex_width = 512; },
     read_flag<&UnwrapSettings::tex_width>},
    {"-h", "-height", MSyntax::kLong, [](UnwrapSettings& s) { s.tex_height = 512; },
     read_flag<&UnwrapSettings::tex_height>},
    {"-hq", "-high_quality", MSyntax::kBoolean, [](UnwrapSettings& s) { s.high_quality = false; },
     read_flag<&UnwrapSettings::high_quality>},
    {"-adm", "-adjacency_method", MSyntax::kLong, [](UnwrapSettings& s) { s.adjacency_method = 0; },
     read_flag<&UnwrapSettings::adjacency_method>},
    {"-e", "-epsilon", MSyntax::kDouble, [](UnwrapSettings& s) { s.epsilon = 0.001; },
     read_flag<&UnwrapSettings::epsilon>},
    {"-ks", "-keep_seams", MSyntax::kBoolean, [](UnwrapSettings& s) { s.keep_seams = false; },
     read_flag<&UnwrapSettings::keep_seams>},
    {"-ug", "-use_grooves", MSyntax::kBoolean, [](UnwrapSettings& s) { s.use_grooves = false; },
     read_flag<&UnwrapSettings::use_grooves>},
    {"-ga", "-groove_angle", MSyntax::kDouble, [](UnwrapSettings& s) { s.groove_angle = 90.0; },
     read_flag<&UnwrapSettings::groove_angle>},
    {"-ur", "-use_ridges", MSyntax::kBoolean, [](UnwrapSettings& s) { s.use_ridges = false; },
     read_flag<&UnwrapSettings::use_ridges>},
    {"-ra", "-ridge_angle", MSyntax::kDouble, [](UnwrapSettings& s) { s.ridge_angle = 90.0; },
     read_flag<&UnwrapSettings::ridge_angle>},
};
inline constexpr int k_flag_count = sizeof(k_flags) / sizeof(k_flags[0]);

/// Parsing order: as in the table, but the adjacency method comes before the quality.
inline constexpr int k_parse_order[] = {0, 1, 2, 3, 4, 5, 7, 6, 8, 9, 10, 11, 12, 13};
static_assert(sizeof(k_parse_order) / sizeof(k_parse_order[0]) == k_flag_count);
