/// Command arguments: argument list, syntax, parser.
#include "host/base/fault.h"
#include "host/graph/script_host.h"
#include "host/graph/selection.h"

#include <maya/MArgDatabase.h>
#include <maya/MSelectionList.h>

#include <cctype>
#include <cstdlib>
#include <limits>
#include <string>

using host::pass_fault;
using host::report;

namespace {

bool to_number(const MString& text, double& number) {
    const char* const start = text.asChar();
    char* end = nullptr;
    const double value = std::strtod(start, &end);
    if (end == start || *end != '\0')
        return false;
    number = value;
    return true;
}

/// Accepts whole numbers only: 4.7 is not an integer.
bool to_int(const MString& text, int& number) {
    double value = 0.0;
    if (!to_number(text, value) || !(value >= -2147483648.0 && value <= 2147483647.0) ||
        value != static_cast<double>(static_cast<int>(value)))
        return false;
    number = static_cast<int>(value);
    return true;
}

bool to_bool(const MString& text, bool& value) {
    for (const char* yes : {"on", "yes", "true"})
        if (text == yes)
            return value = true;
    for (const char* no : {"off", "no", "false"})
        if (text == no) {
            value = false;
            return true;
        }
    int number = 0;
    if (!to_int(text, number))
        return false;
    value = number != 0;
    return true;
}

/// A dash followed by a letter: "-hq" is a flag, "-3" a number.
bool looks_like_flag(const MString& text) {
    const char* const chars = text.asChar();
    return chars[0] == '-' && (std::isalpha(static_cast<unsigned char>(chars[1])) != 0);
}

MString without_dash(const char* flag) {
    return flag == NULL ? MString() : MString(flag[0] == '-' ? flag + 1 : flag);
}

bool fits(const MString& text, MSyntax::MArgType type) {
    double number = 0.0;
    int whole = 0;
    bool truth = false;
    switch (type) {
    case MSyntax::kBoolean:
        return to_bool(text, truth);
    case MSyntax::kLong:
        return to_int(text, whole);
    case MSyntax::kUnsigned:
        return to_int(text, whole) && whole >= 0;
    case MSyntax::kDouble:
    case MSyntax::kDistance:
    case MSyntax::kAngle:
    case MSyntax::kTime:
        return to_number(text, number);
    default:
        return true;
    }
}

const char* type_name(MSyntax::MArgType type) {
    switch (type) {
    case MSyntax::kBoolean:
        return "a boolean";
    case MSyntax::kLong:
        return "an integer";
    case MSyntax::kUnsigned:
        return "an integer that is not negative";
    case MSyntax::kString:
        return "a string";
    case MSyntax::kSelectionItem:
        return "a name";
    default:
        return "a number";
    }
}

MStatus refuse(const std::string& text) {
    host::graph::show_line(host::graph::Severity::error, text);
    return MS::kFailure;
}

} // namespace

// === MArgList ================================================================================

MArgList::MArgList() = default;
MArgList::MArgList(const MArgList& other) = default;
MArgList& MArgList::operator=(const MArgList& other) = default;
MArgList::~MArgList() = default;

unsigned int MArgList::length(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return arguments_.length();
}

namespace {

template <class T>
T read(const MStringArray& list, unsigned int index, bool (*convert)(const MString&, T&),
       MStatus* out) {
    T value = T();
    const bool good = index < list.length() && convert(list[index], value);
    report(out, good ? MS::kSuccess : MS::kInvalidParameter);
    return value;
}

} // namespace

bool MArgList::asBool(unsigned int index, MStatus* ReturnStatus) const {
    return read(arguments_, index, to_bool, ReturnStatus);
}
int MArgList::asInt(unsigned int index, MStatus* ReturnStatus) const {
    return read(arguments_, index, to_int, ReturnStatus);
}
double MArgList::asDouble(unsigned int index, MStatus* ReturnStatus) const {
    return read(arguments_, index, to_number, ReturnStatus);
}
MString MArgList::asString(unsigned int index, MStatus* ReturnStatus) const {
    const bool good = index < arguments_.length();
    report(ReturnStatus, good ? MS::kSuccess : MS::kInvalidParameter);
    return good ? arguments_[index] : MString();
}

MStatus MArgList::addArg(const MString& arg) { return arguments_.append(arg); }
MStatus MArgList::addArg(bool arg) { return addArg(MString(arg ? "1" : "0")); }
MStatus MArgList::addArg(int arg) { return addArg(MString(std::to_string(arg).c_str())); }
MStatus MArgList::addArg(double arg) {
    MString text;
    text.set(arg);
    return addArg(text);
}

unsigned int MArgList::flagIndex(const char* flag, const char* flagLong) const {
    const MString brief = without_dash(flag);
    const MString full = without_dash(flagLong);
    for (unsigned int i = 0; i < arguments_.length(); ++i) {
        if (!looks_like_flag(arguments_[i]))
            continue;
        const MString name = without_dash(arguments_[i].asChar());
        if (name == brief || (full.length() > 0 && name == full))
            return i;
    }
    return kInvalidArgIndex;
}

// === MSyntax =================================================================================

MSyntax::MSyntax()
    : objects_(kNone), minimum_objects_(0), selection_default_(false), query_(false), edit_(false) {
}
MSyntax::MSyntax(const MSyntax& other) = default;
MSyntax& MSyntax::operator=(const MSyntax& other) = default;
MSyntax::~MSyntax() = default;

MStatus MSyntax::addFlag(const char* shortName, const char* longName, MArgType argType1,
                         MArgType argType2, MArgType argType3, MArgType argType4, MArgType argType5,
                         MArgType argType6) {
    const MStatus status = pass_fault("MSyntax::addFlag");
    if (!status)
        return status;
    const MString brief = without_dash(shortName);
    const MString full = without_dash(longName);
    if (brief.length() < 1 || brief.length() > 3 || full.length() < 4)
        return MS::kInvalidParameter;
    if (host_find(brief.asChar()) != NULL || host_find(full.asChar()) != NULL)
        return MS::kInvalidParameter;
    Flag flag = {brief, full, {}, false};
    for (const MArgType type : {argType1, argType2, argType3, argType4, argType5, argType6}) {
        if (type == kNoArg || type == kInvalidArgType)
            break;
        flag.arguments.push_back(type);
    }
    flags_.push_back(flag);
    return status;
}

MStatus MSyntax::makeFlagMultiUse(const char* flag) {
    Flag* const found = const_cast<Flag*>(host_find(flag));
    if (found == NULL)
        return MS::kInvalidParameter;
    found->multi_use = true;
    return MS::kSuccess;
}

MStatus MSyntax::addArg(MArgType type) {
    arguments_.push_back(type);
    return MS::kSuccess;
}

MStatus MSyntax::setObjectType(MObjectFormat format, unsigned int minimumObjects) {
    objects_ = format;
    minimum_objects_ = minimumObjects;
    return MS::kSuccess;
}

void MSyntax::useSelectionAsDefault(bool state) { selection_default_ = state; }
void MSyntax::enableQuery(bool supportsQuery) { query_ = supportsQuery; }
void MSyntax::enableEdit(bool supportsEdit) { edit_ = supportsEdit; }

const MSyntax::Flag* MSyntax::host_find(const char* flag) const {
    const MString name = without_dash(flag);
    for (const Flag& one : flags_)
        if (one.short_name == name || one.long_name == name)
            return &one;
    return NULL;
}

// === MArgParser ==============================================================================

MArgParser::MArgParser() : edit_(false), query_(false) {}

MArgParser::MArgParser(const MSyntax& syntax, const MArgList& argList, MStatus* ReturnStatus)
    : edit_(false), query_(false) {
    report(ReturnStatus, parse(syntax, argList));
}

MArgParser::MArgParser(const MArgParser& other) = default;
MArgParser& MArgParser::operator=(const MArgParser& other) = default;
MArgParser::~MArgParser() = default;

namespace {

/// Checks a flag's arguments, starting at position `at`, and moves `at` past them. Reports the
/// first error to the user.
MStatus take_arguments(const MSyntax& syntax, const MSyntax::Flag& flag, const MArgList& list,
                       unsigned int& at, std::vector<MString>& taken) {
    for (const MSyntax::MArgType type : flag.arguments) {
        const bool is_there = at + 1 < list.length();
        const MString value = is_there ? list.asString(at + 1) : MString();
        // A string argument may begin with a dash unless it is a flag of this syntax.
        const bool is_flag = is_there && looks_like_flag(value) &&
                             (type != MSyntax::kString || syntax.host_find(value.asChar()));
        if (!is_there || is_flag || !fits(value, type))
            return refuse(std::string("Flag '-") + flag.long_name.asChar() + "' needs " +
                          type_name(type) + " argument.");
        taken.push_back(value);
        at += 1;
    }
    return MS::kSuccess;
}

MStatus check_positional(const MSyntax& syntax, const std::vector<MString>& given, bool is_query) {
    const std::vector<MSyntax::MArgType>& declared = syntax.host_arguments();
    const bool takes_objects = syntax.host_objects() == MSyntax::kSelectionList ||
                               syntax.host_objects() == MSyntax::kStringObjects;
    if (!takes_objects && given.size() > declared.size())
        return refuse(std::string("Argument '") + given[declared.size()].asChar() +
                      "' is one too many.");
    if (!takes_objects && !is_query && given.size() < declared.size())
        return refuse("An argument is missing.");
    for (size_t i = 0; i < declared.size() && i < given.size(); ++i)
        if (!fits(given[i], declared[i]))
            return refuse(std::string("Argument '") + given[i].asChar() + "' has to be " +
                          type_name(declared[i]) + ".");
    if (takes_objects && given.size() < syntax.host_minimum_objects() &&
        !syntax.host_selection_default())
        return refuse("Too few objects are given.");
    return MS::kSuccess;
}

} // namespace

MStatus MArgParser::parse(const MSyntax& syntax, const MArgList& argList) {
    const MStatus fault = pass_fault("MArgParser::parse");
    if (!fault)
        return fault;
    syntax_ = syntax;
    for (unsigned int i = 0; i < argList.length(); ++i) {
        const MString text = argList.asString(i);
        if (!looks_like_flag(text)) {
            positional_.push_back(text);
            continue;
        }
        const MString name = without_dash(text.asChar());
        const MSyntax::Flag* const flag = syntax.host_find(name.asChar());
        if (flag == NULL) {
            if (syntax.host_query() && (name == "q" || name == "query"))
                query_ = true;
            else if (syntax.host_edit() && (name == "e" || name == "edit"))
                edit_ = true;
            else
                return refuse(std::string("Invalid flag '") + text.asChar() + "'.");
            continue;
        }
        if (!flag->multi_use && find(name.asChar(), 0) != NULL)
            return refuse(std::string("Flag '-") + flag->long_name.asChar() +
                          "' is given more than once.");
        Use use = {flag->long_name, {}};
        if (!query_) { // in a query, flags have no arguments
            const MStatus status = take_arguments(syntax, *flag, argList, i, use.arguments);
            if (!status)
                return status;
        }
        uses_.push_back(use);
    }
    return check_positional(syntax, positional_, query_);
}

const MArgParser::Use* MArgParser::find(const char* flag, unsigned int nth) const {
    const MSyntax::Flag* const known = syntax_.host_find(flag);
    if (known != NULL)
        for (const Use& use : uses_)
            if (use.long_name == known->long_name && nth-- == 0)
                return &use;
    return NULL;
}

bool MArgParser::isFlagSet(const char* flag, MStatus* ReturnStatus) const {
    const bool is_known = syntax_.host_find(flag) != NULL;
    report(ReturnStatus, is_known ? MS::kSuccess : MS::kInvalidParameter);
    return find(flag, 0) != NULL;
}

bool MArgParser::isEdit(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return edit_;
}

bool MArgParser::isQuery(MStatus* ReturnStatus) const {
    report(ReturnStatus, MS::kSuccess);
    return query_;
}

unsigned int MArgParser::numberOfFlagsUsed() const {
    return static_cast<unsigned int>(uses_.size());
}

unsigned int MArgParser::numberOfFlagUses(const char* flag) const {
    unsigned int count = 0;
    while (find(flag, count) != NULL)
        count += 1;
    return count;
}

MStatus MArgParser::argument(const char* flag, unsigned int index, MString& text) const {
    const MStatus status = pass_fault("MArgParser::getFlagArgument");
    if (!status)
        return status;
    const Use* const use = find(flag, 0);
    if (use == NULL)
        return MS::kFailure;
    if (index >= use->arguments.size())
        return MS::kInvalidParameter;
    text = use->arguments[index];
    return status;
}

namespace {

template <class T>
MStatus converted(const MStatus& status, const MString& text, bool (*convert)(const MString&, T&),
                  T& result) {
    if (!status)
        return status;
    return convert(text, result) ? MS::kSuccess : MS::kInvalidParameter;
}

} // namespace

MStatus MArgParser::getFlagArgument(const char* flag, unsigned int index, bool& result) const {
    MString text;
    const MStatus status = argument(flag, index, text);
    return converted(status, text, to_bool, result);
}

MStatus MArgParser::getFlagArgument(const char* flag, unsigned int index, int& result) const {
    MString text;
    const MStatus status = argument(flag, index, text);
    return converted(status, text, to_int, result);
}

MStatus MArgParser::getFlagArgument(const char* flag, unsigned int index, double& result) const {
    MString text;
    const MStatus status = argument(flag, index, text);
    return converted(status, text, to_number, result);
}

MStatus MArgParser::getFlagArgument(const char* flag, unsigned int index, MString& result) const {
    MString text;
    const MStatus status = argument(flag, index, text);
    if (status)
        result = text;
    return status;
}

MStatus MArgParser::getFlagArgument(const char* flag, unsigned int index,
                                    unsigned int& result) const {
    int whole = 0;
    const MStatus status = getFlagArgument(flag, index, whole);
    if (status && whole < 0)
        return MS::kInvalidParameter;
    if (status)
        result = static_cast<unsigned int>(whole);
    return status;
}

MStatus MArgParser::getFlagArgumentList(const char* flag, unsigned int index,
                                        MArgList& args) const {
    const Use* const use = find(flag, index);
    if (use == NULL)
        return MS::kFailure;
    args = MArgList();
    for (const MString& argument : use->arguments)
        args.addArg(argument);
    return MS::kSuccess;
}

MStatus MArgParser::getCommandArgument(unsigned int index, bool& result) const {
    if (index >= positional_.size())
        return MS::kInvalidParameter;
    return converted(MS::kSuccess, positional_[index], to_bool, result);
}
MStatus MArgParser::getCommandArgument(unsigned int index, int& result) const {
    if (index >= positional_.size())
        return MS::kInvalidParameter;
    return converted(MS::kSuccess, positional_[index], to_int, result);
}
MStatus MArgParser::getCommandArgument(unsigned int index, double& result) const {
    if (index >= positional_.size())
        return MS::kInvalidParameter;
    return converted(MS::kSuccess, positional_[index], to_number, result);
}
MStatus MArgParser::getCommandArgument(unsigned int index, MString& result) const {
    if (index >= positional_.size())
        return MS::kInvalidParameter;
    result = positional_[index];
    return MS::kSuccess;
}

MStatus MArgParser::getObjects(MStringArray& result) const {
    result.clear();
    for (const MString& name : positional_)
        result.append(name);
    return MS::kSuccess;
}

// === MArgDatabase ============================================================================

MArgDatabase::MArgDatabase() = default;
MArgDatabase::MArgDatabase(const MSyntax& syntax, const MArgList& argList, MStatus* ReturnStatus) {
    MStatus status = pass_fault("MArgDatabase::MArgDatabase");
    if (status)
        status = parse(syntax, argList);
    report(ReturnStatus, status);
}
MArgDatabase::MArgDatabase(const MArgDatabase& other) = default;
MArgDatabase& MArgDatabase::operator=(const MArgDatabase& other) = default;
MArgDatabase::~MArgDatabase() = default;

MStatus MArgDatabase::getFlagArgument(const char* flag, unsigned int index,
                                      MSelectionList& result) const {
    MString name;
    const MStatus status = getFlagArgument(flag, index, name);
    return status ? result.add(name) : status;
}

MStatus MArgDatabase::getObjects(MSelectionList& result) const {
    MStringArray names;
    MStatus status = getObjects(names);
    for (unsigned int i = 0; status && i < names.length(); ++i)
        status = result.add(names[i]);
    return status;
}
