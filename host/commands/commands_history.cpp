#include "host/commands/commands.h"
#include "host/graph/undo.h"
#include "host/script/functions.h"
#include "host/script/plugs.h"

namespace host::script {

namespace {

using graph::Slot;
using graph::UndoQueue;

Value undo(Invocation& call) {
    require_arguments(call, 0, 0);
    UndoQueue& queue = UndoQueue::current();
    if (queue.undo_count() == 0)
        throw ScriptFault("There are no more commands to undo.");
    require(queue.undo(), "undo", "the last command");
    return Value();
}

Value redo(Invocation& call) {
    require_arguments(call, 0, 0);
    UndoQueue& queue = UndoQueue::current();
    if (queue.redo_count() == 0)
        throw ScriptFault("There are no more commands to redo.");
    require(queue.redo(), "redo", "the next command");
    return Value();
}

Value undo_info(Invocation& call) {
    static const FlagTable table = {
        {"st", "state", "b", "cq"},         {"l", "length", "i", "cq"},
        {"in", "infinity", "b", "cq"},      {"swf", "stateWithoutFlush", "b", "cq"},
        {"un", "undoName", "", "q"},        {"rn", "redoName", "", "q"},
        {"uqe", "undoQueueEmpty", "", "q"}, {"rqe", "redoQueueEmpty", "", "q"}};
    const Flags flags(call, table);
    UndoQueue& queue = UndoQueue::current();
    if (flags.query()) {
        if (flags.count() != 1)
            throw ScriptFault("undoInfo answers one flag at a time.");
        if (flags.has("state") || flags.has("stateWithoutFlush"))
            return queue.enabled();
        if (flags.has("length"))
            return int32_t(queue.limit());
        if (flags.has("infinity"))
            return queue.limit() == 0;
        if (flags.has("undoName"))
            return queue.undo_name();
        if (flags.has("redoName"))
            return queue.redo_name();
        if (flags.has("undoQueueEmpty"))
            return queue.undo_count() == 0;
        return queue.redo_count() == 0;
    }
    if (flags.has("stateWithoutFlush"))
        throw ScriptFault("undoInfo: -stateWithoutFlush can be queried only; -state forgets what "
                          "was recorded.");
    if (flags.has("state"))
        queue.set_enabled(flags.boolean("state", true));
    if (flags.has("length"))
        queue.set_limit(size_t(std::max(flags.integer("length", 0), 0)));
    if (flags.has("infinity") && flags.boolean("infinity", false))
        queue.set_limit(0);
    return Value();
}

Value construction_history(Invocation& call) {
    static const FlagTable table = {{"tgl", "toggle", "b", "cq"}};
    const Flags flags(call, table);
    flags.require_operands(0, 0);
    graph::Scene& scene = graph::Scene::current();
    if (!flags.has("toggle"))
        throw ScriptFault("constructionHistory needs -toggle.");
    if (flags.query())
        return scene.records_history;
    scene.records_history = flags.boolean("toggle", true);
    return Value();
}

/// Evaluates plugs, or all outputs of a node. A compute that fails reports its own error.
Value evaluate_graph(Invocation& call) {
    static const FlagTable table = {{"src", "src"}, {"v", "verbose"}};
    const Flags flags(call, table);
    StringArray names = flags.names();
    if (names.empty())
        for (const graph::SelectionItem& item : graph::Scene::current().selection())
            for (const std::string& name : graph::names_of(item))
                names.push_back(name);
    for (const std::string& name : names) {
        if (name.find('.') != std::string::npos) {
            for (Slot* plug : plugs_named(name))
                graph::evaluate(*plug);
            continue;
        }
        graph::Node& node = node_named(name);
        for (graph::Attribute* output : node.node_type().outputs())
            if (Slot* slot = node.slot(*output))
                graph::evaluate(*slot);
    }
    return Value();
}

Value mark_dirty(Invocation& call) {
    static const FlagTable table = {{"v", "verbose"}, {"a", "allPlugs"}};
    const Flags flags(call, table);
    for (const std::string& name : flags.names()) {
        if (name.find('.') != std::string::npos) {
            for (Slot* plug : plugs_named(name)) {
                plug->dirty = true;
                graph::announce_change(*plug);
            }
            continue;
        }
        graph::Node& node = node_named(name);
        for (graph::Attribute* output : node.node_type().outputs())
            if (Slot* slot = node.slot(*output)) {
                slot->dirty = true;
                graph::announce_change(*slot);
            }
    }
    return Value();
}

} // namespace

void add_history_commands(Interpreter& interpreter) {
    interpreter.add_command("undo", undo);
    interpreter.add_command("redo", redo);
    interpreter.add_command("undoInfo", undo_info);
    interpreter.add_command("constructionHistory", construction_history);
    interpreter.add_command("dgeval", evaluate_graph);
    interpreter.add_command("dgdirty", mark_dirty);
}

} // namespace host::script
