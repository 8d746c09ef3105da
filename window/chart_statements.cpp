#include "window/chart_statements.h"

#include "host/script/value.h"

#include <cstdio>

namespace window {
namespace {

std::string flag(const char* name, double value) {
    char text[48];
    std::snprintf(text, sizeof text, " %s %.9g", name, value);
    return text;
}

/// One polygon of each of these charts, as the arguments of a statement.
std::string polygon_names(const ChartsOf& all, const std::vector<uint32_t>& charts) {
    std::string names;
    for (const uint32_t polygon : all.map.one_polygon_each(charts))
        names += " " + host::script::quoted(all.shape + ".f[" + std::to_string(polygon) + "]");
    return names;
}

} // namespace

std::string statement_changing(const ChartsOf& all, const std::vector<uint32_t>& charts,
                               const ChartChange& change) {
    std::string flags;
    if (change.move[0] != 0.0 || change.move[1] != 0.0)
        flags += flag("-u", change.move[0]) + flag("-v", change.move[1]);
    if (change.angle != 0.0)
        flags += flag("-a", change.angle);
    if (change.scale != 1.0)
        flags += flag("-su", change.scale) + flag("-sv", change.scale);
    if (change.angle != 0.0 || change.scale != 1.0)
        flags += flag("-pu", change.pivot[0]) + flag("-pv", change.pivot[1]);
    // The conversion extends a polygon to its whole chart.
    return "polyEditUV" + flags + " `polyListComponentConversion -toUV -uvShell" +
           polygon_names(all, charts) + "`;";
}

std::string statement_packing(const ChartsOf& all, const Subject& subject,
                              const std::vector<uint32_t>& locked) {
    char flags[96];
    std::snprintf(flags, sizeof flags,
                  "polyLayoutUV -textureWidth %.0f -textureHeight %.0f -gutter %g",
                  subject.texture.width, subject.texture.height, subject.gutter);
    if (locked.empty())
        return flags + (" " + host::script::quoted(all.shape)) + ";";
    return std::string(flags) + " -lockComponents on" + polygon_names(all, locked) + ";";
}

} // namespace window
