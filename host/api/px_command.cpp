/// MPxCommand. Results belong to the command that is running.
#include "host/graph/command_registry.h"
#include "host/graph/scene.h"

#include <maya/MPxCommand.h>

using host::graph::CommandResult;
using host::graph::Commands;
using host::graph::Severity;

MPxCommand::MPxCommand() = default;
MPxCommand::~MPxCommand() = default;

MStatus MPxCommand::doIt(const MArgList&) { return MS::kFailure; }
MStatus MPxCommand::undoIt() { return MS::kFailure; }
MStatus MPxCommand::redoIt() { return MS::kFailure; }
bool MPxCommand::isUndoable() const { return false; }
bool MPxCommand::hasSyntax() const { return syntax().host_flags().size() > 0; }

MSyntax MPxCommand::syntax() const { return Commands::current().syntax_of(name_.asChar()); }
MString MPxCommand::commandString() const { return text_; }
bool MPxCommand::isHistoryOn() const { return host::graph::Scene::current().records_history; }

void MPxCommand::displayInfo(const MString& theMessage) {
    host::graph::show_line(Severity::info, theMessage.asChar());
}
void MPxCommand::displayWarning(const MString& theWarning, bool) {
    host::graph::show_line(Severity::warning, theWarning.asChar());
}
void MPxCommand::displayError(const MString& theError, bool) {
    host::graph::show_line(Severity::error, theError.asChar());
}

// === Results =================================================================================

namespace {

CommandResult& result() { return Commands::current().result(); }

template <class Array, class Append>
void set_array(const Array& array, CommandResult::Kind kind, const Append& append) {
    CommandResult& r = result();
    r.clear();
    for (unsigned int i = 0; i < array.length(); ++i)
        append(r, array[i]);
    r.kind = kind;
    r.is_array = true;
}

} // namespace

void MPxCommand::clearResult() { result().clear(); }
void MPxCommand::setResult(unsigned int value) { result().set(static_cast<int>(value)); }
void MPxCommand::setResult(int value) { result().set(value); }
void MPxCommand::setResult(double value) { result().set(value); }
void MPxCommand::setResult(bool value) { result().set(value ? 1 : 0); }
void MPxCommand::setResult(const MString& value) { result().set(std::string(value.asChar())); }
void MPxCommand::setResult(const char* value) { setResult(MString(value)); }

void MPxCommand::setResult(const MIntArray& values) {
    set_array(values, CommandResult::Kind::integer,
              [](CommandResult& r, int value) { r.append(value); });
}
void MPxCommand::setResult(const MDoubleArray& values) {
    set_array(values, CommandResult::Kind::real,
              [](CommandResult& r, double value) { r.append(value); });
}
void MPxCommand::setResult(const MStringArray& values) {
    set_array(values, CommandResult::Kind::text, [](CommandResult& r, const MString& value) {
        r.append(std::string(value.asChar()));
    });
}

void MPxCommand::appendToResult(int value) { result().append(value); }
void MPxCommand::appendToResult(double value) { result().append(value); }
void MPxCommand::appendToResult(bool value) { result().append(value ? 1 : 0); }
void MPxCommand::appendToResult(const MString& value) {
    result().append(std::string(value.asChar()));
}
void MPxCommand::appendToResult(const char* value) { appendToResult(MString(value)); }
void MPxCommand::appendToResult(const MStringArray& values) {
    for (unsigned int i = 0; i < values.length(); ++i)
        appendToResult(values[i]);
}

MPxCommand::MResultType MPxCommand::currentResultType() {
    switch (result().kind) {
    case CommandResult::Kind::integer:
        return kLong;
    case CommandResult::Kind::real:
        return kDouble;
    case CommandResult::Kind::text:
        return kString;
    case CommandResult::Kind::none:
        break;
    }
    return kNoArg;
}

bool MPxCommand::isCurrentResultArray() { return result().is_array; }

MStatus MPxCommand::getCurrentResult(int& value) {
    return result().to(value) ? MS::kSuccess : MS::kFailure;
}
MStatus MPxCommand::getCurrentResult(double& value) {
    return result().to(value) ? MS::kSuccess : MS::kFailure;
}
MStatus MPxCommand::getCurrentResult(MString& value) {
    std::string text;
    if (!result().to(text))
        return MS::kFailure;
    value = text.c_str();
    return MS::kSuccess;
}
MStatus MPxCommand::getCurrentResult(MIntArray& values) {
    if (result().kind != CommandResult::Kind::integer)
        return MS::kFailure;
    values.clear();
    for (const int value : result().integers)
        values.append(value);
    return MS::kSuccess;
}
MStatus MPxCommand::getCurrentResult(MDoubleArray& values) {
    if (result().kind != CommandResult::Kind::real)
        return MS::kFailure;
    values.clear();
    for (const double value : result().reals)
        values.append(value);
    return MS::kSuccess;
}
MStatus MPxCommand::getCurrentResult(MStringArray& values) {
    if (result().kind == CommandResult::Kind::none)
        return MS::kFailure;
    values.clear();
    for (const std::string& value : result().to_texts())
        values.append(value.c_str());
    return MS::kSuccess;
}
