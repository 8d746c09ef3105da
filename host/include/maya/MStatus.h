/// The result of an operation. Methods with an `MStatus*` parameter write success as well as
/// failure through it and accept NULL.
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

    /// Constructs success.
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

    /// Resets to success.
    void clear() { code_ = kSuccess; }
    MStatusCode statusCode() const { return code_; }

    /// "(kCode): text", for messages.
    MString errorString() const;

    /// Writes "PREFIX: ", the error string and a newline to standard error.
    void perror(const char* prefix) const;
    void perror(const MString& prefix) const;

private:
    MStatusCode code_;
};

/// Without these overloads a code on the left would be compared with the status converted to bool.
inline bool operator==(const MStatus::MStatusCode code, const MStatus& status) {
    return status == code;
}
inline bool operator!=(const MStatus::MStatusCode code, const MStatus& status) {
    return status != code;
}

typedef MStatus MS;
