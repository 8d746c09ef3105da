#include <maya/MStatus.h>
#include <maya/MString.h>

#include <cstdio>

MString MStatus::errorString() const {
    switch (code_) {
    case kSuccess:
        return "(kSuccess): No error";
    case kFailure:
        return "(kFailure): The operation failed inside the application";
    case kInsufficientMemory:
        return "(kInsufficientMemory): Out of memory";
    case kInvalidParameter:
        return "(kInvalidParameter): The argument does not fit this operation";
    case kLicenseFailure:
        return "(kLicenseFailure): The application is not licensed for this operation";
    case kUnknownParameter:
        return "(kUnknownParameter): The argument is not known here";
    case kNotImplemented:
        return "(kNotImplemented): The operation is not available";
    case kNotFound:
        return "(kNotFound): What was asked for does not exist";
    case kEndOfFile:
        return "(kEndOfFile): Unexpected end of file";
    }
    return "(unknown): Unknown status code";
}

void MStatus::perror(const char* prefix) const {
    std::fprintf(stderr, "%s: %s\n", prefix == NULL ? "" : prefix, errorString().asChar());
}

void MStatus::perror(const MString& prefix) const { perror(prefix.asChar()); }
