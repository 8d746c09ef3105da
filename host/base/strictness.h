/// How the host behaves where the real application is more awkward than a plug-in might expect.
///
/// A lenient host helps; a strict one does as the real application does:
/// - API calls outside a modifier, such as `MFnDagNode::duplicate`, are not undone with the command
///   that made them;
/// - `MFnDagNode::duplicate` copies the vertex tweaks (pnts) of a mesh;
/// - undoing the creation of a node does not call its pre-removal callbacks;
/// - callbacks that a plug-in leaves behind when it is unloaded stay registered. Calling one would
///   crash the real application; here it is reported as an error that names the plug-in;
/// - a compound plug with connected components cannot be set;
/// - `undoIt` of a modifier that has not been done fails;
/// - the built-in entries of the Modify menu are made when it is first opened, and not at all if
///   the menu is not empty then.
#pragma once

#include <maya/MTypes.h>

namespace host {

/// Initially true, unless the environment variable TESSORA_HOST_STRICT is "0".
MHOST_EXPORT bool is_strict();
MHOST_EXPORT void set_strict(bool strict);

} // namespace host
