/// Registration of plug-in node types. MPxNode's static members act on the type being registered.
#pragma once

#include "host/graph/scene.h"

namespace host::graph {

/// NULL unless a plug-in's node initializer is running.
NodeType* type_being_registered();

/// Makes `type` the one being registered while the scope exists.
class MHOST_EXPORT RegistrationScope {
public:
    explicit RegistrationScope(NodeType& type);
    ~RegistrationScope();
    RegistrationScope(const RegistrationScope&) = delete;
    RegistrationScope& operator=(const RegistrationScope&) = delete;

private:
    NodeType* outer_;
};

/// Registers a plug-in's node type: runs the initializer, then adds the type to the scene. Fails if
/// the initializer fails or if the name or the id is taken.
MHOST_EXPORT MStatus register_node_type(const std::string& name, unsigned int id,
                                        void* (*creator)(), MStatus (*initializer)(),
                                        const std::string& plugin,
                                        const std::string& classification = "");

} // namespace host::graph
