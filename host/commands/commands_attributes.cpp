#include "host/commands/commands.h"
#include "host/graph/component_text.h"
#include "host/graph/edits.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

#include <cmath>

namespace host::script {

namespace {

using graph::Attribute;
using graph::AttributeKind;
using graph::Slot;
using graph::Tuple;

// --- getAttr ------------------------------------------------------------------------------------

Value joined(const std::vector<Slot*>& plugs) {
    RealArray numbers;
    for (Slot* plug : plugs) {
        const Value value = value_of(*plug);
        for (size_t i = 0; i < value.size(); ++i)
            numbers.push_back(value.type().array ? value.element(int32_t(i)).to_real()
                                                 : value.to_real());
    }
    return numbers;
}

Value get_attribute(Invocation& call) {
    static const FlagTable table = {{"typ", "type"},   {"s", "size"},        {"l", "lock"},
                                    {"k", "keyable"},  {"cb", "channelBox"}, {"mi", "multiIndices"},
                                    {"se", "settable"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    if (flags.count() > 1)
        throw ScriptFault("getAttr answers one flag at a time.");
    const std::vector<Slot*> plugs = plugs_named(flags.names()[0]);
    Slot& plug = *plugs[0];
    if (flags.has("type"))
        return plug.attribute().type_text();
    if (flags.has("lock"))
        return plug.locked;
    if (flags.has("keyable"))
        return plug.keyable || plug.attribute().flags.keyable;
    if (flags.has("channelBox"))
        return plug.channel_box || plug.attribute().flags.channel_box;
    if (flags.has("settable"))
        return bool(graph::may_set(plug));
    if (flags.has("size"))
        return int32_t(plug.is_array() ? plug.below().size() : 1);
    if (flags.has("multiIndices")) {
        if (!plug.is_array())
            throw ScriptFault("The attribute " + name_of(plug) + " is no array.");
        IntArray indices;
        for (const auto& element : plug.below())
            indices.push_back(element->index());
        return indices;
    }
    return plugs.size() == 1 ? value_of(plug) : joined(plugs);
}

// --- setAttr ------------------------------------------------------------------------------------

struct TupleName {
    const char* name;
    Tuple tuple;
};
constexpr TupleName k_tuples[] = {
    {"short2", Tuple::short2},   {"short3", Tuple::short3},   {"long2", Tuple::int2},
    {"long3", Tuple::int3},      {"float2", Tuple::float2},   {"float3", Tuple::float3},
    {"double2", Tuple::double2}, {"double3", Tuple::double3}, {"double4", Tuple::double4}};

bool known_type(const std::string& name) {
    if (name == "string" || name == "componentList")
        return true;
    for (const TupleName& tuple : k_tuples)
        if (name == tuple.name)
            return true;
    return false;
}

size_t values_of(const Slot& plug) {
    return plug.is_leaf() ? 1 : plug.attribute().children().size();
}

void set_values(const std::vector<Slot*>& plugs, const std::vector<Value>& values,
                const std::string& about) {
    size_t wanted = 0;
    for (const Slot* plug : plugs)
        wanted += values_of(*plug);
    if (wanted != values.size())
        throw ScriptFault("setAttr: " + about + " takes " + std::to_string(wanted) +
                          (wanted == 1 ? " value, " : " values, ") + std::to_string(values.size()) +
                          (values.size() == 1 ? " is given." : " are given."));
    size_t next = 0;
    for (Slot* plug : plugs) {
        if (plug->is_array())
            throw ScriptFault("setAttr: " + name_of(*plug) + " is an array; name an element.");
        if (plug->is_leaf()) {
            set_plug(*plug, values[next++], "setAttr");
            continue;
        }
        for (unsigned i = 0; i < plug->attribute().children().size(); ++i)
            set_plug(*plug->child(i), values[next++], "setAttr");
    }
}

/// Sets a component list to values such as 2 "e[3]" "e[5:8]": their number, then the components.
void set_components(Slot& plug, const std::vector<Value>& values) {
    if (plug.attribute().kind() != AttributeKind::component_list)
        throw ScriptFault("setAttr: " + name_of(plug) + " is no list of components.");
    if (values.empty() || values[0].is_string() ||
        values[0].to_real() != static_cast<double>(values.size() - 1))
        throw ScriptFault("setAttr: A component list starts with the number of its entries.");
    std::string text;
    for (size_t i = 1; i < values.size(); ++i) {
        const std::string word = values[i].to_string();
        if (!graph::is_component_word(word))
            throw ScriptFault("setAttr: \"" + word + "\" does not name components.");
        text += (i > 1 ? " " : "") + word;
    }
    perform(graph::set_value_edit(plug, graph::PlugValue::of_text(text.c_str())), "setAttr",
            name_of(plug));
}

double clamped(const Attribute& attribute, double value) {
    if (attribute.minimum && value < *attribute.minimum)
        value = *attribute.minimum;
    if (attribute.maximum && value > *attribute.maximum)
        value = *attribute.maximum;
    return value;
}

void check_range(const std::vector<Slot*>& plugs, std::vector<Value>& values, bool clamp) {
    if (plugs.size() != 1 || !plugs[0]->is_leaf() || values.size() != 1)
        return;
    const Attribute& attribute = plugs[0]->attribute();
    if (!attribute.is_number() || values[0].is_string())
        return;
    const double value = values[0].to_real();
    const double inside = clamped(attribute, value);
    if (inside == value)
        return;
    if (!clamp)
        throw ScriptFault("setAttr: Cannot set the attribute '" + name_of(*plugs[0]) +
                          "' past its " + (inside < value ? "maximum" : "minimum") + " value of " +
                          real_to_text(inside) + ".");
    values[0] = Value(inside);
}

void set_marks(const Flags& flags, const std::vector<Slot*>& plugs) {
    using graph::PlugMark;
    const std::pair<const char*, PlugMark> marks[] = {{"lock", PlugMark::locked},
                                                      {"keyable", PlugMark::keyable},
                                                      {"channelBox", PlugMark::channel_box}};
    for (const auto& mark : marks)
        for (Slot* plug : plugs)
            if (flags.has(mark.first))
                perform(graph::mark_edit(*plug, mark.second, flags.boolean(mark.first, false)),
                        "setAttr", name_of(*plug));
}

Value set_attribute(Invocation& call) {
    static const FlagTable table = {
        {"typ", "type", "s"},      {"s", "size", "i"}, {"l", "lock", "b"},    {"k", "keyable", "b"},
        {"cb", "channelBox", "b"}, {"c", "clamp"},     {"av", "alteredValue"}};
    const Flags flags(call, table);
    if (flags.operands().empty())
        throw ScriptFault("setAttr needs the name of an attribute.");
    const std::string name = flags.operands()[0].to_string();
    std::vector<Value> values(flags.operands().begin() + 1, flags.operands().end());
    const std::string type = flags.text("type", "");
    if (!type.empty() && !known_type(type))
        throw ScriptFault("setAttr: The type \"" + type + "\" cannot be set by a script.");
    const std::vector<Slot*> plugs = plugs_named(name);
    if (type == "string" && plugs[0]->attribute().kind() != AttributeKind::text)
        throw ScriptFault("setAttr: " + name_of(*plugs[0]) + " is no text.");
    // Without values, -size is only a hint, and the other flags set marks of the plug.
    if (values.empty() && (flags.has("size") || flags.count() != flags.has("type"))) {
        set_marks(flags, plugs);
        return Value();
    }
    // Unlock before setting the value, lock after it.
    const bool unlock = flags.has("lock") && !flags.boolean("lock", false);
    if (unlock)
        set_marks(flags, plugs);
    check_range(plugs, values, flags.has("clamp"));
    if (type == "componentList")
        set_components(*plugs[0], values);
    else
        set_values(plugs, values, name);
    if (!unlock)
        set_marks(flags, plugs);
    return Value();
}

// --- addAttr ------------------------------------------------------------------------------------

struct TypeName {
    const char* name;
    AttributeKind kind;
};
constexpr TypeName k_types[] = {
    {"bool", AttributeKind::boolean},  {"byte", AttributeKind::byte},
    {"char", AttributeKind::byte},     {"short", AttributeKind::short_},
    {"long", AttributeKind::integer},  {"float", AttributeKind::real32},
    {"double", AttributeKind::real64}, {"message", AttributeKind::message}};

Ref<Attribute> make_attribute(const Flags& flags, const std::string& long_name,
                              const std::string& short_name) {
    const std::string number = flags.text("attributeType", "double");
    const std::string data = flags.text("dataType", "");
    if (!data.empty() && data != "string" && data != "mesh")
        throw ScriptFault("addAttr: The data type \"" + data + "\" is not known.");
    if (data == "string")
        return Ref<Attribute>(new Attribute(long_name, short_name, AttributeKind::text));
    if (data == "mesh")
        return Ref<Attribute>(new Attribute(long_name, short_name, AttributeKind::mesh));
    for (const TypeName& type : k_types)
        if (number == type.name)
            return Ref<Attribute>(new Attribute(long_name, short_name, type.kind));
    throw ScriptFault("addAttr: The attribute type \"" + number + "\" is not known.");
}

void apply_flags(Attribute& attribute, const Flags& flags) {
    if (flags.has("defaultValue")) {
        graph::PlugValue value = attribute.default_value();
        if (!value.assign_number(flags.real("defaultValue", 0.0)))
            throw ScriptFault("addAttr: -defaultValue is for numbers.");
        attribute.set_default(value);
    }
    if (flags.has("minValue"))
        attribute.minimum = flags.real("minValue", 0.0);
    if (flags.has("maxValue"))
        attribute.maximum = flags.real("maxValue", 0.0);
    attribute.flags.keyable = flags.boolean("keyable", false);
    attribute.flags.hidden = flags.boolean("hidden", false);
    attribute.flags.cached = flags.boolean("cachedInternally", true);
    attribute.flags.storable = flags.boolean("storable", true);
    attribute.flags.writable = flags.boolean("writable", true);
    attribute.flags.readable = flags.boolean("readable", true);
    attribute.flags.array = flags.has("multi");
    attribute.dynamic = true;
}

Value add_attribute(Invocation& call) {
    static const FlagTable table = {{"ln", "longName", "s"},
                                    {"sn", "shortName", "s"},
                                    {"at", "attributeType", "s"},
                                    {"dt", "dataType", "s"},
                                    {"dv", "defaultValue", "f"},
                                    {"min", "minValue", "f"},
                                    {"max", "maxValue", "f"},
                                    {"k", "keyable", "b"},
                                    {"ci", "cachedInternally", "b"},
                                    {"h", "hidden", "b"},
                                    {"m", "multi"},
                                    {"s", "storable", "b"},
                                    {"w", "writable", "b"},
                                    {"r", "readable", "b"}};
    const Flags flags(call, table);
    if (!flags.has("longName") && !flags.has("shortName"))
        throw ScriptFault("addAttr needs -longName or -shortName.");
    const std::string long_name = flags.text("longName", flags.text("shortName", "").c_str());
    const std::string short_name = flags.text("shortName", long_name.c_str());
    if (graph::Scene::legal_name(long_name) != long_name)
        throw ScriptFault("addAttr: \"" + long_name + "\" is not a legal name.");
    for (const graph::SelectionItem& item : items_named(flags.names())) {
        const Ref<Attribute> attribute = make_attribute(flags, long_name, short_name);
        apply_flags(*attribute, flags);
        perform(graph::add_attribute_edit(*item.node, attribute), "addAttr",
                name_of(*item.node) + "." + long_name);
    }
    return Value();
}

Value delete_attribute(Invocation& call) {
    static const FlagTable table = {{"at", "attribute", "s"}};
    const Flags flags(call, table);
    flags.require_operands(1, 1);
    const std::string name = flags.names()[0];
    Slot& plug =
        plug_named(flags.has("attribute") ? name + "." + flags.text("attribute", "") : name);
    if (!plug.attribute().dynamic)
        throw ScriptFault("deleteAttr: " + name_of(plug) + " belongs to every node of its type.");
    perform(graph::remove_attribute_edit(plug.node(), Ref<Attribute>(&plug.attribute())),
            "deleteAttr", name_of(plug));
    return Value();
}

// --- connections --------------------------------------------------------------------------------

/// The first array element after those with incoming connections; a plug that is no array itself.
Slot& next_free(Slot& array) {
    if (!array.is_array())
        return array;
    unsigned int index = 0;
    for (const auto& element : array.below())
        if (element->source() || element->fed_below() != 0)
            index = unsigned(element->index()) + 1;
    return *array.element(index);
}

Value connect_attribute(Invocation& call) {
    static const FlagTable table = {{"f", "force"}, {"na", "nextAvailable"}, {"l", "lock", "b"}};
    const Flags flags(call, table);
    flags.require_operands(2, 2);
    Slot& source = plug_named(flags.names()[0]);
    Slot* destination = &plug_named(flags.names()[1]);
    if (flags.has("nextAvailable"))
        destination = &next_free(*destination);
    const std::string about = name_of(source) + " to " + name_of(*destination);
    if (Slot* fed_by = destination->source()) {
        if (fed_by == &source) {
            call.interpreter.output().warning("'" + name_of(source) +
                                              "' is already connected to '" +
                                              name_of(*destination) + "'.");
            return Value();
        }
        if (!flags.has("force"))
            throw ScriptFault("connectAttr: '" + name_of(*destination) +
                              "' already has an incoming connection from '" + name_of(*fed_by) +
                              "'.");
        perform(graph::disconnect_edit(*fed_by, *destination), "connectAttr", about);
    }
    perform(graph::connect_edit(source, *destination, false), "connectAttr", about);
    if (flags.boolean("lock", false))
        perform(graph::mark_edit(*destination, graph::PlugMark::locked, true), "connectAttr",
                about);
    return "Connected " + name_of(source) + " to " + name_of(*destination) + ".";
}

Value disconnect_attribute(Invocation& call) {
    static const FlagTable table = {{"na", "nextAvailable"}};
    const Flags flags(call, table);
    flags.require_operands(2, 2);
    Slot& source = plug_named(flags.names()[0]);
    Slot* destination = &plug_named(flags.names()[1]);
    if (flags.has("nextAvailable") && destination->is_array())
        for (Slot* fed : source.destinations())
            if (fed->parent() == destination) {
                destination = fed;
                break;
            }
    const std::string about = name_of(source) + " from " + name_of(*destination);
    if (destination->source() != &source)
        throw ScriptFault("disconnectAttr: There is no connection from '" + name_of(source) +
                          "' to '" + name_of(*destination) + "' to disconnect.");
    perform(graph::disconnect_edit(source, *destination), "disconnectAttr", about);
    return "Disconnected " + name_of(source) + " from " + name_of(*destination) + ".";
}

void list_attribute(const Attribute& attribute, const std::string& prefix, StringArray& names) {
    const std::string name = prefix + attribute.long_name();
    names.push_back(name);
    for (const auto& child : attribute.children())
        list_attribute(*child, name + ".", names);
}

Value list_attributes(Invocation& call) {
    static const FlagTable table = {{"ud", "userDefined"}};
    const Flags flags(call, table);
    StringArray names;
    for (const graph::SelectionItem& item : items_named(flags.names())) {
        if (!flags.has("userDefined"))
            for (const auto& attribute : item.node->node_type().attributes())
                if (!attribute->parent())
                    list_attribute(*attribute, "", names);
        for (const auto& attribute : item.node->dynamic_attributes())
            list_attribute(*attribute, "", names);
    }
    return names;
}

} // namespace

void add_attribute_commands(Interpreter& interpreter) {
    interpreter.add_command("getAttr", get_attribute);
    interpreter.add_command("setAttr", set_attribute);
    interpreter.add_command("addAttr", add_attribute);
    interpreter.add_command("deleteAttr", delete_attribute);
    interpreter.add_command("connectAttr", connect_attribute);
    interpreter.add_command("disconnectAttr", disconnect_attribute);
    interpreter.add_command("listAttr", list_attributes);
}

} // namespace host::script
