#include "host/graph/component_text.h"
#include "host/graph/data.h"
#include "host/graph/mesh_node.h"
#include "host/graph/plugins.h"
#include "host/io/mesh_block.h"
#include "host/io/obj_export.h"
#include "host/io/obj_mesh.h"
#include "host/io/scene_file.h"
#include "host/script/plugs.h"

#include <map>
#include <set>

namespace host {

namespace {

using graph::Attribute;
using graph::AttributeKind;
using graph::DagNode;
using graph::Node;
using graph::Slot;

constexpr double k_degrees = 57.29577951308232;
/// Items per setAttr statement, a number that other readers accept.
constexpr size_t k_per_block = 166;

class Writer {
public:
    explicit Writer(const std::string& name) : name_(name), notes_(SceneNotes::current()) {}

    std::string write() {
        sort_nodes();
        header();
        for (Node* node : nodes_)
            write_node(*node);
        for (const std::string& raw : notes_.unknown_nodes)
            text_ += raw + "\n";
        for (Node* node : nodes_)
            for (Slot* slot : node->slots())
                connections(*slot);
        for (const std::string& raw : notes_.unknown_connections)
            text_ += raw + "\n";
        text_ += "// End of " + name_ + "\n";
        return std::move(text_);
    }

private:
    // Parents before their children, then nodes outside the hierarchy.
    void sort_nodes() {
        graph::Scene& scene = graph::Scene::current();
        for (DagNode* node : scene.top_level())
            graph::walk_down(*node, [&](DagNode& one) {
                const bool is_new = seen_.insert(&one).second;
                if (is_new)
                    nodes_.push_back(&one);
                return is_new;
            });
        for (const auto& node : scene.nodes())
            if (!node->as_dag_node())
                nodes_.push_back(node.get());
    }

    void header() {
        text_ = "//Maya ASCII 2008 scene\n//Name: " + name_ + "\n//Codeset: UTF-8\n" +
                "requires maya \"2008\";\n";
        std::set<std::string> plugins;
        for (const Node* node : nodes_)
            if (!node->node_type().plugin.empty())
                plugins.insert(node->node_type().plugin);
        for (const std::string& plugin : plugins) {
            graph::PluginInfo info;
            graph::Plugins::current().info(plugin, info);
            text_ +=
                "requires " + script::quoted(plugin) + " " + script::quoted(info.version) + ";\n";
        }
        for (const std::string& raw : notes_.requirements)
            text_ += raw + "\n";
        text_ += "currentUnit -l centimeter -a degree -t film;\n";
        for (const auto& info : notes_.file_info)
            text_ += "fileInfo " + script::quoted(info.first) + " " + script::quoted(info.second) +
                     ";\n";
    }

    void write_node(Node& node) {
        const size_t before = text_.size();
        text_ += "createNode " + node.node_type().name;
        if (node.is_default)
            text_ += " -s";
        text_ += " -n " + script::quoted(node.name_text());
        DagNode* dag = node.as_dag_node();
        if (dag && !dag->parents().empty())
            text_ += " -p " + script::quoted(script::name_of(*dag->parents()[0]));
        text_ += ";\n";
        const size_t head = text_.size();
        for (const auto& attribute : node.dynamic_attributes())
            added_attribute(*attribute);
        for (const auto& attribute : node.node_type().attributes())
            if (!attribute->parent())
                settings_of(node, *attribute);
        for (const auto& attribute : node.dynamic_attributes())
            settings_of(node, *attribute);
        geometry(node);
        for (const auto& setting : notes_.unknown_settings)
            if (setting.first.get() == &node)
                text_ += "\t" + setting.second + "\n";
        // Default nodes always exist: write only those with changed attributes.
        if (node.is_default && text_.size() == head)
            text_.resize(before);
    }

    void added_attribute(const Attribute& attribute) {
        text_ += "\taddAttr -ln " + script::quoted(attribute.long_name()) + " -sn " +
                 script::quoted(attribute.short_name());
        const bool data =
            attribute.kind() == AttributeKind::text || attribute.kind() == AttributeKind::mesh;
        text_ += std::string(data ? " -dt \"" : " -at \"") + attribute.type_text() + "\"";
        if (attribute.is_array())
            text_ += " -m";
        if (attribute.is_number() && attribute.default_value().number() != 0.0)
            text_ += " -dv " + shortest(attribute.default_value().number());
        if (attribute.minimum)
            text_ += " -min " + shortest(*attribute.minimum);
        if (attribute.maximum)
            text_ += " -max " + shortest(*attribute.maximum);
        if (attribute.flags.keyable)
            text_ += " -k on";
        text_ += ";\n";
    }

    void settings_of(Node& node, const Attribute& attribute) {
        Slot* slot = node.existing_slot(attribute);
        if (slot && attribute.flags.storable)
            settings(*slot);
    }

    void settings(Slot& slot) {
        if (slot.is_array())
            return elements(slot);
        if (!slot.source()) {
            if (slot.is_compound())
                compound(slot);
            else if (slot.was_set)
                leaf(slot);
        }
        if (slot.locked)
            text_ += "\tsetAttr -l on \"." + slot.path(false) + "\";\n";
        if (slot.keyable && !slot.attribute().flags.keyable)
            text_ += "\tsetAttr -k on \"." + slot.path(false) + "\";\n";
    }

    static bool any_set(const Slot& slot) {
        for (const auto& below : slot.below())
            if (below->was_set || any_set(*below))
                return true;
        return slot.was_set;
    }

    static bool whole_tuple(const Slot& slot) {
        return slot.attribute().tuple != graph::Tuple::none && slot.fed_below() == 0;
    }

    void compound(Slot& slot) {
        if (!any_set(slot))
            return;
        if (!whole_tuple(slot)) {
            for (const auto& below : slot.below())
                settings(*below);
            return;
        }
        text_ += "\tsetAttr \"." + slot.path(false) + "\" -type \"" + slot.attribute().type_text() +
                 "\"";
        components(slot);
        text_ += ";\n";
    }

    void components(Slot& slot) {
        for (unsigned i = 0; i < slot.attribute().children().size(); ++i)
            text_ += " " + number(*slot.child(i));
    }

    /// Writes consecutive elements in one statement.
    void elements(Slot& slot) {
        const auto& below = slot.below();
        const bool tuples = slot.attribute().tuple != graph::Tuple::none;
        for (size_t i = 0; i < below.size();) {
            Slot& first = *below[i];
            if (!tuples || first.source() || !whole_tuple(first) || !any_set(first)) {
                settings(first);
                ++i;
                continue;
            }
            size_t end = i + 1;
            while (end < below.size() && end - i < k_per_block &&
                   below[end]->index() == below[end - 1]->index() + 1 && whole_tuple(*below[end]) &&
                   !below[end]->source() && any_set(*below[end]))
                ++end;
            text_ += "\tsetAttr \"." + slot.path(false) + "[" + std::to_string(first.index());
            if (end - i > 1)
                text_ += ":" + std::to_string(below[end - 1]->index());
            text_ += std::string("]\" -type \"") + slot.attribute().type_text() + "\"";
            for (; i < end; ++i)
                components(*below[i]);
            text_ += ";\n";
        }
    }

    static std::string number(const Slot& slot) {
        const double value = slot.value.number();
        switch (slot.value.kind()) {
        case graph::ValueKind::real32:
            return shortest(float(value));
        case graph::ValueKind::real64:
            return shortest(slot.attribute().unit == graph::Unit::angle ? value * k_degrees
                                                                        : value);
        case graph::ValueKind::boolean:
            return value != 0.0 ? "yes" : "no";
        default:
            return std::to_string(int64_t(value));
        }
    }

    void leaf(Slot& slot) {
        const std::string head = "\tsetAttr \"." + slot.path(false) + "\"";
        if (slot.attribute().kind() == AttributeKind::component_list) {
            const auto words = graph::component_words(slot.value.as_text().asChar());
            text_ += head + " -type \"componentList\" " + std::to_string(words.size());
            for (const std::string& word : words)
                text_ += " " + script::quoted(word);
            text_ += ";\n";
        } else if (slot.value.kind() == graph::ValueKind::text)
            text_ +=
                head + " -type \"string\" " + script::quoted(slot.value.as_text().asChar()) + ";\n";
        else if (slot.value.is_number())
            text_ += head + " " + number(slot) + ";\n";
    }

    void geometry(Node& node) {
        if (node.node_type().name != "mesh")
            return;
        Slot* input = node.existing_slot(*graph::mesh_attributes().in_mesh);
        if (!input || input->source() || !input->value.as_data())
            return;
        const Mesh* mesh = input->value.as_data()->as_mesh()->mesh();
        if (!mesh)
            return;
        write_mesh(*mesh, text_);
        // What an export would keep of the file that the mesh was read from: all of it.
        if (has_other_lines(*mesh))
            text_ += std::string("\taddAttr -ln \"") + k_obj_attribute + "\" -sn \"" +
                     k_obj_attribute + "\" -dt \"string\";\n\tsetAttr \"." + k_obj_attribute +
                     "\" -type \"string\" " +
                     script::quoted(static_cast<const ObjOrigin*>(mesh->origin())->document.text) +
                     ";\n";
    }

    void connections(Slot& slot) {
        if (Slot* source = slot.source())
            text_ += "connectAttr " + script::quoted(short_name(*source)) + " " +
                     script::quoted(short_name(slot)) + ";\n";
        for (const auto& below : slot.below())
            connections(*below);
    }

    static std::string short_name(const Slot& slot) {
        return script::name_of(slot.node()) + "." + slot.path(false);
    }

    std::string name_;
    const SceneNotes& notes_;
    std::string text_;
    std::vector<Node*> nodes_;
    std::set<const Node*> seen_;
};

} // namespace

std::string write_scene(const std::string& name) { return Writer(name).write(); }

} // namespace host
