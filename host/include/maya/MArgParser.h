/// Parses an argument list according to a syntax. The constructor fails, after reporting the error
/// to the user, on an unknown or repeated flag and on missing, surplus or mistyped arguments.
#pragma once

#include <maya/MArgList.h>
#include <maya/MStatus.h>
#include <maya/MString.h>
#include <maya/MStringArray.h>
#include <maya/MSyntax.h>

#include <vector>

class MHOST_EXPORT MArgParser {
public:
    MArgParser(const MSyntax& syntax, const MArgList& argList, MStatus* ReturnStatus = NULL);
    MArgParser(const MArgParser& other);
    MArgParser& operator=(const MArgParser& other);
    virtual ~MArgParser();

    /// `flag`: short or long name, with or without the dash.
    bool isFlagSet(const char* flag, MStatus* ReturnStatus = NULL) const;
    bool isEdit(MStatus* ReturnStatus = NULL) const;
    bool isQuery(MStatus* ReturnStatus = NULL) const;
    unsigned int numberOfFlagsUsed() const;
    unsigned int numberOfFlagUses(const char* flag) const;

    /// Reads argument `index` of a flag's first use. Fails, with `result` unchanged, if the flag
    /// was not used, has no such argument, or has one of another type.
    MStatus getFlagArgument(const char* flag, unsigned int index, bool& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, int& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, double& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, MString& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, unsigned int& result) const;
    /// The arguments of a flag's use number `index`.
    MStatus getFlagArgumentList(const char* flag, unsigned int index, MArgList& args) const;

    MStatus getCommandArgument(unsigned int index, bool& result) const;
    MStatus getCommandArgument(unsigned int index, int& result) const;
    MStatus getCommandArgument(unsigned int index, double& result) const;
    MStatus getCommandArgument(unsigned int index, MString& result) const;
    MStatus getObjects(MStringArray& result) const;

protected:
    MArgParser();
    MStatus parse(const MSyntax& syntax, const MArgList& argList);

private:
    struct Use {
        MString long_name;
        std::vector<MString> arguments;
    };
    const Use* find(const char* flag, unsigned int nth) const;
    MStatus argument(const char* flag, unsigned int index, MString& text) const;
    MSyntax syntax_;
    std::vector<Use> uses_;
    std::vector<MString> positional_;
    bool edit_;
    bool query_;
};
