#include "host/graph/registration.h"

namespace host::graph {

namespace {
NodeType* g_registering = nullptr;
}

NodeType* type_being_registered() { return g_registering; }

RegistrationScope::RegistrationScope(NodeType& type) : outer_(g_registering) {
    g_registering = &type;
}
RegistrationScope::~RegistrationScope() { g_registering = outer_; }

MStatus register_node_type(const std::string& name, unsigned int id, void* (*creator)(),
                           MStatus (*initializer)(), const std::string& plugin,
                           const std::string& classification) {
    Scene& scene = Scene::current();
    if (creator == nullptr || initializer == nullptr)
        return MS::kInvalidParameter;
    if (scene.find_type(name) || (id != 0 && scene.find_type(id)))
        return MS::kInvalidParameter;
    const NodeTypeRef type = make_node_type(name, id, MFn::kPluginDependNode);
    type->creator = creator;
    type->plugin = plugin;
    type->classification = classification;
    {
        RegistrationScope scope(*type);
        const MStatus status = initializer();
        if (!status)
            return status;
    }
    return scene.add_type(type);
}

} // namespace host::graph
