#include "host/script/plugs.h"

#include "host/graph/component_text.h"
#include "host/graph/data.h"
#include "host/graph/edits.h"

#include <cstdlib>

namespace host::script {

namespace {

constexpr double k_degrees = 57.29577951308232;
constexpr uint64_t k_max_plugs = 50'000'000;

graph::Node& selected_node() {
    const graph::Selection& selection = graph::Scene::current().selection();
    if (selection.empty())
        throw ScriptFault("No object is selected that the plug could be on.");
    return *selection.back().node;
}

/// Finds a plug on a node or, if a transform lacks it, on its first shape that has it.
graph::Slot* find_plug(graph::Node& node, const std::string& path) {
    if (graph::Slot* plug = node.find_plug(path))
        return plug;
    if (graph::DagNode* dag = node.as_dag_node())
        for (graph::DagNode* child : dag->children())
            if (child->is_shape() && !child->is_intermediate())
                if (graph::Slot* plug = child->find_plug(path))
                    return plug;
    return nullptr;
}

struct Split {
    graph::Node& node;
    std::string path;
};

Split split(const std::string& name) {
    const size_t dot = name.find('.');
    if (dot == std::string::npos || dot + 1 == name.size())
        throw ScriptFault("\"" + name + "\" is not the name of an attribute.");
    return {dot == 0 ? selected_node() : node_named(name.substr(0, dot)), name.substr(dot + 1)};
}

graph::Slot& existing(graph::Node& node, const std::string& path) {
    graph::Slot* plug = find_plug(node, path);
    if (!plug)
        throw ScriptFault("No object matches name: " + name_of(node) + "." + path);
    return *plug;
}

/// Appends the plugs of a path with ranges such as "[a:b]"; the rightmost range varies fastest.
void expand(graph::Node& node, const std::string& path, std::vector<graph::Slot*>& plugs) {
    size_t open = path.find('[');
    while (open != std::string::npos) {
        const size_t close = path.find(']', open);
        const size_t colon = path.find(':', open);
        if (close != std::string::npos && colon < close) {
            const long first = std::atol(path.c_str() + open + 1);
            const long last = std::atol(path.c_str() + colon + 1);
            if (first < 0 || last < first || plugs.size() + uint64_t(last - first) > k_max_plugs)
                throw ScriptFault("The range in \"" + path + "\" is not valid.");
            const std::string head = path.substr(0, open + 1), tail = path.substr(close);
            // A range at the end of the path: look the array up once, not once per element.
            if (tail == "]") {
                graph::Slot& array = existing(node, path.substr(0, open));
                if (!array.is_array())
                    throw ScriptFault("\"" + path + "\" is not an array.");
                for (long i = first; i <= last; ++i)
                    plugs.push_back(array.element(unsigned(i)));
                return;
            }
            for (long i = first; i <= last; ++i)
                expand(node, head + std::to_string(i) + tail, plugs);
            return;
        }
        open = path.find('[', open + 1);
    }
    plugs.push_back(&existing(node, path));
}

double shown(const graph::Attribute& attribute, double stored) {
    return attribute.unit == graph::Unit::angle ? stored * k_degrees : stored;
}

Value matrix_value(const MMatrix& matrix) {
    RealArray cells;
    for (int row = 0; row < 4; ++row)
        for (int column = 0; column < 4; ++column)
            cells.push_back(matrix.matrix[row][column]);
    return cells;
}

Value leaf_value(graph::Slot& plug) {
    const graph::Attribute& attribute = plug.attribute();
    switch (plug.value.kind()) {
    case graph::ValueKind::text:
        if (attribute.kind() == graph::AttributeKind::component_list)
            return graph::component_words(plug.value.as_text().asChar());
        return std::string(plug.value.as_text().asChar());
    case graph::ValueKind::real32:
    case graph::ValueKind::real64:
        return shown(attribute, plug.value.number());
    case graph::ValueKind::none:
        return Value();
    case graph::ValueKind::data:
        if (attribute.kind() == graph::AttributeKind::matrix && plug.value.as_data())
            return matrix_value(static_cast<graph::MatrixData*>(plug.value.as_data())->matrix);
        throw ScriptFault("The value of " + name_of(plug) + " is " + plug.attribute().type_text() +
                          " data, which has no text.");
    default:
        return int32_t(plug.value.number());
    }
}

graph::PlugValue stored_value(graph::Slot& plug, const Value& value) {
    const graph::Attribute& attribute = plug.attribute();
    if (attribute.kind() == graph::AttributeKind::text)
        return graph::PlugValue::of_text(value.to_string().c_str());
    if (!attribute.is_number())
        throw ScriptFault("The attribute " + name_of(plug) + " holds " + attribute.type_text() +
                          " data and cannot be set to \"" + value.to_string() + "\".");
    if (value.is_string()) {
        for (const auto& field : attribute.fields)
            if (field.first == value.text())
                return graph::PlugValue::of_double(field.second);
        throw ScriptFault("The attribute " + name_of(plug) +
                          " is a number and cannot be set to \"" + value.text() + "\".");
    }
    const double number = value.to_real();
    const bool angle = attribute.unit == graph::Unit::angle;
    return graph::PlugValue::of_double(angle ? number / k_degrees : number);
}

} // namespace

graph::Node& node_named(const std::string& name) {
    graph::Scene& scene = graph::Scene::current();
    if (graph::Node* node = scene.find(name))
        return *node;
    if (scene.find_all(name).size() > 1)
        throw ScriptFault("More than one object matches name: " + name);
    throw ScriptFault("No object matches name: " + name);
}

graph::Selection items_named(const StringArray& names) {
    if (names.empty())
        return graph::Scene::current().selection();
    graph::Selection items;
    for (const std::string& name : names) {
        const graph::Selection found = graph::resolve(name);
        if (found.empty())
            throw ScriptFault("No object matches name: " + name);
        items.insert(items.end(), found.begin(), found.end());
    }
    return items;
}

graph::Slot& plug_named(const std::string& name) {
    const Split parts = split(name);
    return existing(parts.node, parts.path);
}

std::vector<graph::Slot*> plugs_named(const std::string& name) {
    const Split parts = split(name);
    std::vector<graph::Slot*> plugs;
    expand(parts.node, parts.path, plugs);
    return plugs;
}

std::string name_of(graph::Node& node) {
    graph::DagNode* dag = node.as_dag_node();
    return dag ? graph::Scene::current().partial_name(*dag) : node.name_text();
}

std::string full_name_of(graph::Node& node) {
    graph::DagNode* dag = node.as_dag_node();
    return dag ? graph::full_name(dag->path()) : node.name_text();
}

std::string name_of(graph::Slot& plug) { return name_of(plug.node()) + "." + plug.path(); }

void require(MStatus status, const std::string& command, const std::string& about) {
    if (status)
        return;
    throw ScriptFault(command + ": " + about + ": " + status.errorString().asChar() + ".");
}

void perform(std::unique_ptr<graph::Edit> edit, const std::string& command,
             const std::string& about) {
    require(graph::Scene::current().perform(std::move(edit)), command, about);
}

Value value_of(graph::Slot& plug) {
    graph::evaluate(plug);
    if (plug.is_leaf())
        return leaf_value(plug);
    if (plug.is_array())
        throw ScriptFault("The attribute " + name_of(plug) + " is an array; name an element.");
    if (plug.attribute().tuple == graph::Tuple::none)
        throw ScriptFault("The attribute " + name_of(plug) + " has several parts; name one.");
    RealArray numbers;
    bool whole = true;
    for (unsigned i = 0; i < plug.attribute().children().size(); ++i) {
        const Value part = leaf_value(*plug.child(i));
        whole = whole && part.type().basic == Basic::integer;
        numbers.push_back(part.to_real());
    }
    const Value value(std::move(numbers));
    return whole ? value.converted({Basic::integer, true}) : value;
}

void set_plug(graph::Slot& plug, const Value& value, const std::string& command) {
    if (!plug.is_leaf())
        throw ScriptFault("The attribute " + name_of(plug) + " takes several values.");
    const MStatus status =
        graph::Scene::current().perform(graph::set_value_edit(plug, stored_value(plug, value)));
    if (status == MS::kFailure)
        throw ScriptFault(command + ": The attribute '" + name_of(plug) +
                          "' is locked or connected and cannot be modified.");
    require(status, command, name_of(plug));
}

} // namespace host::script
