#include "host/commands/commands.h"
#include "host/graph/edits.h"
#include "host/mesh/mesh.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

namespace host::script {

namespace {

using graph::DagNode;
using graph::Slot;

constexpr double k_radians = 0.017453292519943295;

struct Amount {
    double value[3];
    bool used[3];
};

/// Reads three numbers, or one per axis flag (-x -y -z), from the operands; the others are `names`.
Amount amount_of(const Flags& flags, StringArray& names, double absent) {
    const bool axes[3] = {flags.has("moveX"), flags.has("moveY"), flags.has("moveZ")};
    const bool any = axes[0] || axes[1] || axes[2];
    Amount amount{{absent, absent, absent}, {!any || axes[0], !any || axes[1], !any || axes[2]}};
    std::vector<double> numbers;
    for (const Value& operand : flags.operands()) {
        if (names.empty() && operand.is_number() && numbers.size() < 3)
            numbers.push_back(operand.to_real());
        else
            names.push_back(operand.to_string());
    }
    size_t wanted = 0;
    for (const bool used : amount.used)
        wanted += used;
    // A single number applies to all axes given.
    if (any && numbers.size() == 1)
        numbers.resize(wanted, numbers[0]);
    if (numbers.size() != wanted)
        throw ScriptFault(std::to_string(wanted) + " numbers are needed, " +
                          std::to_string(numbers.size()) + " are given.");
    size_t next = 0;
    for (int i = 0; i < 3; ++i)
        if (amount.used[i])
            amount.value[i] = numbers[next++];
    return amount;
}

const FlagTable k_flags = {{"r", "relative"}, {"a", "absolute"}, {"x", "moveX"},
                           {"y", "moveY"},    {"z", "moveZ"},    {"os", "objectSpace"}};

enum class Move { translate, rotate, scale };

double combined(Move move, bool relative, double before, double amount) {
    if (!relative)
        return amount;
    return move == Move::scale ? before * amount : before + amount;
}

void move_node(DagNode& node, Move move, const Amount& amount, bool relative,
               const std::string& command) {
    static const char* const attributes[] = {"translate", "rotate", "scale"};
    Slot* vector = node.slot(attributes[int(move)]);
    if (!vector)
        throw ScriptFault(command + ": \"" + name_of(node) + "\" is no transform.");
    for (unsigned i = 0; i < 3; ++i) {
        if (!amount.used[i])
            continue;
        Slot& plug = *vector->child(i);
        graph::evaluate(plug);
        const double factor = move == Move::rotate ? k_radians : 1.0;
        const double before = plug.value.number() / factor;
        const double after = combined(move, relative, before, amount.value[i]);
        perform(graph::set_value_edit(plug, graph::PlugValue::of_double(after * factor)), command,
                name_of(plug));
    }
}

/// Moves vertices in object space, by changing their tweaks.
void move_vertices(const graph::SelectionItem& item, const Amount& amount, bool relative,
                   const std::string& command) {
    if (item.component->kind() != graph::ComponentKind::vertex)
        throw ScriptFault(command + ": Of components, only vertices can be moved.");
    Slot* tweaks = item.node->slot("pnts");
    Slot* out = item.node->slot("outMesh");
    if (!tweaks || !out)
        throw ScriptFault(command + ": \"" + name_of(*item.node) + "\" is no mesh.");
    graph::evaluate(*out);
    MeshFace* face = out->value.as_data() ? out->value.as_data()->as_mesh() : nullptr;
    const Mesh* mesh = face ? face->mesh() : nullptr;
    const std::vector<Float3> points = mesh ? mesh->points() : std::vector<Float3>();
    for (const int id : item.component->ids()) {
        if (size_t(id) >= points.size())
            throw ScriptFault(command + ": There is no vertex " + std::to_string(id) + ".");
        const float before[3] = {points[size_t(id)].x, points[size_t(id)].y, points[size_t(id)].z};
        Slot& tweak = *tweaks->element(unsigned(id));
        for (unsigned i = 0; i < 3; ++i) {
            if (!amount.used[i])
                continue;
            Slot& plug = *tweak.child(i);
            const double change = relative ? amount.value[i] : amount.value[i] - double(before[i]);
            const double tweaked = plug.value.number() + change;
            perform(graph::set_value_edit(plug, graph::PlugValue::of_double(tweaked)), command,
                    name_of(plug));
        }
    }
}

template <Move M>
Value run(Invocation& call) {
    const Flags flags(call, k_flags);
    StringArray names;
    const Amount amount = amount_of(flags, names, 0.0);
    const graph::Selection items = items_named(names);
    if (items.empty())
        throw ScriptFault(call.name + ": Nothing is named or selected.");
    if (flags.has("relative") && flags.has("absolute"))
        throw ScriptFault(call.name + ": -relative and -absolute exclude each other.");
    const bool relative = flags.has("relative");
    for (const graph::SelectionItem& item : items) {
        if (item.component) {
            if (M != Move::translate)
                throw ScriptFault(call.name + ": Components can only be moved.");
            move_vertices(item, amount, relative, call.name);
            continue;
        }
        if (flags.has("objectSpace"))
            throw ScriptFault(call.name + ": -objectSpace is for vertices.");
        DagNode* dag = item.node->as_dag_node();
        if (dag && dag->is_shape() && !dag->parents().empty())
            dag = dag->parents()[0];
        if (!dag)
            throw ScriptFault(call.name + ": \"" + name_of(*item.node) + "\" is no transform.");
        move_node(*dag, M, amount, relative, call.name);
    }
    return Value();
}

} // namespace

void add_transform_commands(Interpreter& interpreter) {
    interpreter.add_command("move", run<Move::translate>);
    interpreter.add_command("rotate", run<Move::rotate>);
    interpreter.add_command("scale", run<Move::scale>);
}

} // namespace host::script
