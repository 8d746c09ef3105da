/// The node type whose plug-in initializer is running: what MPxNode's static members work on.
#pragma once

#include "host/graph/scene.h"

namespace host::graph {

/// Null outside of an initializer.
NodeType* type_being_registered();

/// Makes a type the one being registered for the length of a scope.
class MHOST_EXPORT RegistrationScope {
public:
    explicit RegistrationScope(NodeType& type);
    ~RegistrationScope();
    RegistrationScope(const RegistrationScope&) = delete;
    RegistrationScope& operator=(const RegistrationScope&) = delete;

private:
    NodeType* outer_;
};

/// Registers a plug-in's node type: runs the initializer, then adds the type to the scene. The
/// initializer's failure, or a name or id that is taken, fails the whole.
MHOST_EXPORT MStatus register_node_type(const std::string& name, unsigned int id,
                                        void* (*creator)(), MStatus (*initializer)(),
                                        const std::string& plugin,
                                        const std::string& classification = "");

} // namespace host::graph
