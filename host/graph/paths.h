/// DAG paths as the interface has them and as the graph has them.
#pragma once

#include "host/graph/selection.h"

#include <maya/MDagPath.h>

namespace host::graph {

MHOST_EXPORT MDagPath to_interface(const DagPath& path);
/// Empty for an invalid path, or one of nodes that are not the graph's.
MHOST_EXPORT DagPath to_graph(const MDagPath& path);

} // namespace host::graph
