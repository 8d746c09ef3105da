/// Implementation of MSelectionList.
#pragma once

#include "host/graph/selection.h"

namespace host::graph {

struct SelectionItems {
    Selection list;
};

} // namespace host::graph
