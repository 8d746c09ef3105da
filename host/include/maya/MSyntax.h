/// The flags and positional arguments that a command accepts.
#pragma once

#include <maya/MStatus.h>
#include <maya/MString.h>

#include <vector>

class MHOST_EXPORT MSyntax {
public:
    enum MArgType {
        kInvalidArgType = 0,
        kNoArg,
        kBoolean,
        kLong,
        kDouble,
        kString,
        kUnsigned,
        kDistance,
        kAngle,
        kTime,
        kSelectionItem,
        kLastArgType
    };
    enum MObjectFormat { kInvalidFormat = 0, kNone, kSelectionList, kStringObjects };

    MSyntax();
    MSyntax(const MSyntax& other);
    MSyntax& operator=(const MSyntax& other);
    ~MSyntax();

    /// Short names have at most three characters, long names at least four; the dash is optional.
    /// Fails on other lengths and on names that are taken.
    MStatus addFlag(const char* shortName, const char* longName, MArgType argType1 = kNoArg,
                    MArgType argType2 = kNoArg, MArgType argType3 = kNoArg,
                    MArgType argType4 = kNoArg, MArgType argType5 = kNoArg,
                    MArgType argType6 = kNoArg);
    MStatus makeFlagMultiUse(const char* flag);
    /// Adds a positional argument.
    MStatus addArg(MArgType type);
    MStatus setObjectType(MObjectFormat format, unsigned int minimumObjects = 0);
    void useSelectionAsDefault(bool state = false);
    /// Unless enabled here, "-q" and "-e" are ordinary flags.
    void enableQuery(bool supportsQuery = true);
    void enableEdit(bool supportsEdit = true);

    /// Internal.
    struct Flag {
        MString short_name; ///< without the dash
        MString long_name;
        std::vector<MArgType> arguments;
        bool multi_use;
    };
    const std::vector<Flag>& host_flags() const { return flags_; }
    const Flag* host_find(const char* flag) const;
    const std::vector<MArgType>& host_arguments() const { return arguments_; }
    bool host_query() const { return query_; }
    bool host_edit() const { return edit_; }
    MObjectFormat host_objects() const { return objects_; }
    unsigned int host_minimum_objects() const { return minimum_objects_; }
    bool host_selection_default() const { return selection_default_; }

private:
    std::vector<Flag> flags_;
    std::vector<MArgType> arguments_;
    MObjectFormat objects_;
    unsigned int minimum_objects_;
    bool selection_default_;
    bool query_;
    bool edit_;
};
