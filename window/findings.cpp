#include "window/findings.h"

#include "host/graph/node.h"
#include "host/script/value.h"
#include "window/uv_map.h"

#include <algorithm>

namespace window {

std::vector<measure::Breach> find_breaches(const Subject& subject) {
    if (!subject.shape || subject.uv_set < 0)
        return {};
    const measure::Layout layout = layout_of(subject.mesh, subject.uv_set);
    if (layout.uvs.empty())
        return {};
    measure::Promise promise;
    promise.gutter = subject.gutter;
    if (subject.node)
        if (const host::graph::Slot* stretch = subject.node->slot("Stretch"))
            promise.max_stretch = std::clamp(stretch->value.number(), 0.0, 1.0);
    return measure::verify(layout, measure::measure(layout, subject.texture), promise);
}

std::string statement_selecting(const std::string& shape, const std::vector<uint32_t>& ids,
                                char kind, bool adds) {
    std::string statement = adds ? "select -add" : "select";
    for (size_t i = 0; i < ids.size();) {
        size_t end = i + 1;
        while (end < ids.size() && ids[end] == ids[end - 1] + 1)
            ++end;
        std::string range = std::to_string(ids[i]);
        if (end - i > 1)
            range += ":" + std::to_string(ids[end - 1]);
        statement += " " + host::script::quoted(shape + "." + kind + "[" + range + "]");
        i = end;
    }
    return statement + ";";
}

} // namespace window
