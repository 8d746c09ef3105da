/// The result of a host operation. A method that takes an `MStatus*` writes success as well as
/// failure through it and accepts NULL; a method that returns one must be looked at.
#pragma once

#include <maya/MTypes.h>

class MString;

class MHOST_EXPORT MStatus {
public:
    enum MStatusCode {
        kSuccess = 0,
        kFailure,
        kInsufficientMemory,
        kInvalidParameter,
        kLicenseFailure,
        kUnknownParameter,
        kNotImplemented,
        kNotFound,
        kEndOfFile
    };

    /// Success, until something else is assigned.
    MStatus() : code_(kSuccess) {}
    MStatus(MStatusCode code) : code_(code) {}

    bool operator==(const MStatus& other) const { return code_ == other.code_; }
    bool operator==(const MStatusCode code) const { return code_ == code; }
    bool operator!=(const MStatus& other) const { return code_ != other.code_; }
    bool operator!=(const MStatusCode code) const { return code_ != code; }

    /// True on success.
    operator bool() const { return code_ == kSuccess; }
    bool operator!() const { return code_ != kSuccess; }
    bool error() const { return code_ != kSuccess; }

    /// Forgets a failure: behaves as success from here on.
    void clear() { code_ = kSuccess; }
    MStatusCode statusCode() const { return code_; }

    /// "(kCode): text", for people.
    MString errorString() const;

    /// Writes "PREFIX: " and the error string, with a newline, to standard error.
    void perror(const char* prefix) const;
    void perror(const MString& prefix) const;

private:
    MStatusCode code_;
};

/// Without these a code on the left would be compared with the status' truth value.
inline bool operator==(const MStatus::MStatusCode code, const MStatus& status) {
    return status == code;
}
inline bool operator!=(const MStatus::MStatusCode code, const MStatus& status) {
    return status != code;
}

typedef MStatus MS;
