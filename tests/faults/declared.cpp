#include "tests/faults/declared.h"

#include <algorithm>
#include <cstring>
#include <iterator>

namespace faults {

namespace {

bool ends_with(const std::string& text, const std::string& tail) {
    return text.size() >= tail.size() &&
           text.compare(text.size() - tail.size(), tail.size(), tail) == 0;
}

struct Declared {
    const char* point;
    const char* caller; ///< function of the plug-in; NULL: any
};

/// Calls whose status the plug-in does not look at: it goes on with what it received.
const Declared k_unchecked[] = {
    {"ID3DXMesh::LockVertexBuffer", "apply_gutter_margin"},
    {"ID3DXMesh::LockVertexBuffer", "correct_aspect"},
    {"ID3DXMesh::LockVertexBuffer", "fit_uv_range"},
    {"MArgParser::getFlagArgument", "parse_flags"}, // the flag keeps its default
    {"MFnDependencyNode::attribute", "initModifierNode"},
    {"MFnDependencyNode::setObject", "initModifierNode"},
    {"MGlobal::getActiveSelectionList", nullptr},
    {"MIntArray::append", nullptr},
    {"MItMeshEdge::getConnectedFaces", nullptr},
    {"MItMeshEdge::index", nullptr},
    {"MItMeshEdge::isDone", nullptr},
    {"MItMeshEdge::next", nullptr},
    {"MItMeshEdge::reset", nullptr},
    {"MItMeshPolygon::getNormal", nullptr},
    {"MItMeshPolygon::getTriangle", nullptr},
    {"MItMeshPolygon::getVertices", "apply_uvs"},
    {"MItMeshPolygon::isDone", nullptr},
    {"MItMeshPolygon::next", nullptr},
    {"MItMeshPolygon::numTriangles", nullptr},
    {"MItMeshPolygon::reset", nullptr},
    {"MItMeshVertex::getUVIndices", nullptr},
    {"MItMeshVertex::getUVs", nullptr},
    {"MItMeshVertex::isDone", nullptr},
    {"MItMeshVertex::next", nullptr},
    {"MItMeshVertex::reset", nullptr},
    {"MPlug::elementByPhysicalIndex", "collectNodeState"}, // skipped, as if it were no tweak
    {"MPlug::setValue", "initModifierNode"}, // later attributes are not written, but it connects
};

/// Calls whose failure is answered with another status than theirs.
const Declared k_other_status[] = {
    {"MArgParser::parse", nullptr},                    // kFailure, like any malformed command line
    {"MArgDatabase::MArgDatabase", nullptr},           // the same
    {"MItSelectionList::getDagPath", nullptr},         // not looked at: no valid mesh
    {"MSelectionList::getDagPath", "unwrap_selected"}, // the same
    {"MDagPath::node", "polyModifierCmd::doModifyPoly"}, // the same
    {"MDagPath::node", "polyModifierCmd::connectNodes"}, // a function set on no node
    {"MDagPath::node", "duplicate_mesh"},                // the same
    {"MDagPath::node", "insertDuplicate"},               // the same
    {"MDGModifier::createNode", "createModifierNode"},   // the status of the connection counts
    {"MFnPlugin::MFnPlugin", "uninitializePlugin"},      // that of the first deregistration
    {"MItMeshPolygon::isDone", "Collector::run"},        // kFailure: the iteration ended early
    // A list that stays too short, which the host refuses later.
    {"MFloatArray::append", "apply_uvs"},
    {"MIntArray::append", "apply_uvs"},
    {"MPlugArray::append", "connectNodes"},
    {"MPlugArray::append", "detachUpstream"},
};

/// The UVs of a mesh are written in place, and the writing stops at the first failure.
const Declared k_stops_half_way[] = {
    {"MFloatArray::append", "apply_uvs"},
    {"MFnMesh::assignUV", nullptr},
    {"MFnMesh::setUVs", nullptr},
    {"MFnMesh::clearUVs", nullptr},
};

/// The atlas stage does not release these if it cannot fill its mesh or get the adjacency.
const char* const k_leaks[] = {"d3dx9::allocate_abandoned_direct3d",
                               "d3dx9::allocate_abandoned_device", "d3dx9::allocate_abandoned_mesh",
                               "build_adjacency", "generate_atlas"};

template <size_t n>
bool is_among(const Declared (&list)[n], const char* point, const std::string& caller) {
    return std::any_of(list, list + n, [&](const Declared& one) {
        return std::strcmp(one.point, point) == 0 &&
               (one.caller == nullptr || ends_with(caller, one.caller));
    });
}

constexpr const char* k_no_faces = "Data collector could not retrieve faces from mesh.\n";
constexpr const char* k_not_possible =
    "Unwrapping not possible. Try increasing the maximum number of charts, the allowed stretch or "
    "the texture size.";

} // namespace

const Stated k_stated[] = {
    // The atlas.
    {"Direct3DCreate9", "create_device", "Direct3DCreate9 failed"},
    {"IDirect3D9::CreateDevice", "create_device", "CreateDevice failed"},
    {"D3DXCreateMesh", "create_mesh", "Failed to create d3dx mesh: E_FAIL"},
    {"ID3DXMesh::ConvertPointRepsToAdjacency", "build_adjacency",
     "ConvertPointRepsToAdjacency() failed: E_FAIL"},
    {"ID3DXMesh::LockVertexBuffer", "lock", "Unable to lock vertex buffer"},
    {"ID3DXMesh::LockIndexBuffer", "lock", "Unable to lock index buffer"},
    {"D3DXUVAtlasCreate", "run_uvatlas", k_not_possible},
    {"D3DXCreateMesh", "run_uvatlas", k_not_possible},
    {"D3DXCreateBuffer", "run_uvatlas", k_not_possible},
    // Collecting and applying.
    {"M3dView::active3dView", "Unwrapper::run_stages", "Could not access Maya HWND.\n"},
    {"M3dView::applicationShell", "Unwrapper::run_stages", "Could not access Maya HWND.\n"},
    {"MItMeshPolygon::MItMeshPolygon", "Collector::run", k_no_faces},
    {"MItMeshEdge::MItMeshEdge", "Collector::run", k_no_faces},
    {"MItMeshVertex::MItMeshVertex", "Collector::run", k_no_faces},
    {"MFnMesh::setObject", "Collector::run",
     "Data collector could not retrieve mesh_fn from mesh.\n"},
    {"MFnMesh::getPoints", "Collector::run",
     "Data collector could not retrieve mesh_fn from mesh.\n"},
    {"MItMeshPolygon::count", "Collector::run", "Data collector could not iterate triangles.\n"},
    {"MItMeshPolygon::getVertices", "Collector::run",
     "Data collector could not retrieve vertices from faces.\n"},
    {"MItMeshPolygon::MItMeshPolygon", "apply_uvs",
     "Data updater could not retrieve faces from mesh\n"},
    {"MFnMesh::setObject", "apply_uvs", "Data updater could not retrieve mesh_fn from mesh.\n"},
    {"MFnMesh::setObject", "ensure_uv_set",
     "Data updater could not retrieve mesh_fn from mesh.\n"
     "Unwrapping aborted because UV Set does not exist.\n"},
    {"MFnMesh::getUVSetNames", "ensure_uv_set",
     "Unwrapping aborted because UV Set does not exist.\n"},
    {"MFnMesh::clearUVs", "apply_uvs", "Data updater could not clear old UV's.\n"},
    {"MFnMesh::setUVs", "apply_uvs", "Data updater could not set new UV's.\n"},
    {"MFnMesh::assignUV", "apply_uvs", "Data updater could not assign new UV's.\n"},
    // The node.
    {"MNodeMessage::addNodePreRemovalCallback", "tmod_node::watch_removal",
     "Could not attach pre_removal_callback for tmod_node."},
    {"MDataBlock::inputValue", "tmod_node::evaluate", "ERROR getting inMesh\n"},
    {"MDataBlock::outputValue", "tmod_node::evaluate", "ERROR getting outMesh\n"},
    {"MDataHandle::set", "tmod_node::evaluate", "ERROR setting outMesh\n"},
    {"MDataBlock::outputValue", "tmod_node::process", "ERROR getting state\n"},
    {"MDataBlock::inputValue", "read_input", "Retrieving settings failed ("},
    {"MUiMessage::add3dViewPostRenderMsgCallback", "attach_callbacks",
     "Could not attach postrender callback to panel modelPanel"},
    {"MMessage::removeCallback", "remove_callbacks", "Failed to clear viewport callback "},
    // The command and the plug-in.
    {"MDGModifier::createNode", "polyModifierCmd::createModifierNode",
     "Invalid Modifier Node: inMesh and outMesh attributes are required."},
    {"MPlug::setValue", "tmod_cmd::initModifierNode", "Failed to connect node attribute: "},
    {"MDagPath::fullPathName", "tmod_cmd::initModifierNode", "Failed to retrieve mesh_path\n"},
    {"MFnPlugin::deregisterCommand", "uninitializePlugin", "deregisterCommand"},
    {"MFnPlugin::deregisterNode", "uninitializePlugin", "failed to deregister \"tessora_node\"\n"},
};
const size_t k_stated_count = std::size(k_stated);

const Stated* stated_for(const char* point, const std::string& caller) {
    const auto row = std::find_if(std::begin(k_stated), std::end(k_stated), [&](const Stated& one) {
        return point != nullptr && std::strcmp(one.point, point) == 0 &&
               ends_with(caller, one.caller);
    });
    return row == std::end(k_stated) ? nullptr : row;
}

bool may_change_the_status(const char* point, const std::string& caller) {
    return is_among(k_other_status, point, caller);
}

bool may_change_the_result(const char* point, const std::string& caller) {
    if (point == nullptr) // a list that cannot grow drops the element
        return caller == "core_realloc";
    if (std::strchr(point, ',') != nullptr) // a wrong answer with a status of success
        return true;
    return is_among(k_unchecked, point, caller) || is_among(k_stops_half_way, point, caller);
}

bool may_leave_nodes(const char* point) {
    // The temporary copy that the host does not delete.
    return point != nullptr && std::strcmp(point, "MGlobal::deleteNode") == 0;
}

bool is_declared_leak(const std::string& source) {
    return std::any_of(std::begin(k_leaks), std::end(k_leaks),
                       [&](const char* name) { return ends_with(source, name); });
}

} // namespace faults
