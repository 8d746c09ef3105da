/// Conversion of DAG paths between the public interface and the graph.
#pragma once

#include "host/graph/selection.h"

#include <maya/MDagPath.h>

namespace host::graph {

MHOST_EXPORT MDagPath to_interface(const DagPath& path);
/// Returns an empty path if `path` is invalid or holds nodes that do not belong to the scene.
MHOST_EXPORT DagPath to_graph(const MDagPath& path);

} // namespace host::graph
