/// What a selection list of the interface holds.
#pragma once

#include "host/graph/selection.h"

namespace host::graph {

struct SelectionItems {
    Selection list;
};

} // namespace host::graph
