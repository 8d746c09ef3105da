/// An argument parser that also resolves names to nodes, plugs and components.
#pragma once

#include <maya/MArgParser.h>

class MSelectionList;

class MHOST_EXPORT MArgDatabase : public MArgParser {
public:
    MArgDatabase();
    MArgDatabase(const MSyntax& syntax, const MArgList& argList, MStatus* ReturnStatus = NULL);
    MArgDatabase(const MArgDatabase& other);
    MArgDatabase& operator=(const MArgDatabase& other);
    ~MArgDatabase() override;

    using MArgParser::getFlagArgument;
    MStatus getFlagArgument(const char* flag, unsigned int index, MSelectionList& result) const;
    using MArgParser::getObjects;
    MStatus getObjects(MSelectionList& result) const;
};
