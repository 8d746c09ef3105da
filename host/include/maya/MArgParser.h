/// Reads an argument list by a syntax. An unknown or repeated flag, an argument that is missing, of
/// the wrong type or too many: the constructor's status fails and the user has seen a line that
/// says what was wrong.
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

    /// By short or long name, with or without the dash.
    bool isFlagSet(const char* flag, MStatus* ReturnStatus = NULL) const;
    bool isEdit(MStatus* ReturnStatus = NULL) const;
    bool isQuery(MStatus* ReturnStatus = NULL) const;
    unsigned int numberOfFlagsUsed() const;
    unsigned int numberOfFlagUses(const char* flag) const;

    /// The argument of a flag's first use. Fails and leaves the result alone when the flag was not
    /// used, has no such argument, or when the types do not go together.
    MStatus getFlagArgument(const char* flag, unsigned int index, bool& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, int& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, double& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, MString& result) const;
    MStatus getFlagArgument(const char* flag, unsigned int index, unsigned int& result) const;
    /// The argument list of the n-th use.
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
