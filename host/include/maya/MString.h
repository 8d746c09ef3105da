/// A string in the public interface: bytes with value semantics. Positions and lengths count bytes;
/// positions start at 0. `asChar` never returns NULL; its result is valid until the string changes.
#pragma once

#include <maya/MStatus.h>

#include <iosfwd>
#include <string>

class MStringArray;

class MHOST_EXPORT MString {
public:
    MString();
    MString(const char* text); ///< NULL constructs the empty string
    MString(const char* text, int length);
    MString(const MString& other);
    MString(MString&& other) noexcept;
    ~MString();

    MString& operator=(const MString& other);
    MString& operator=(MString&& other) noexcept;
    MString& operator=(const char* text);
    MString& operator=(double value);

    MString& operator+=(const MString& other);
    MString& operator+=(const char* text);
    MString& operator+=(double value);
    MString& operator+=(float value);
    MString& operator+=(int value);
    MString& operator+=(unsigned int value);

    MString operator+(const MString& other) const;
    MString operator+(const char* text) const;
    MString operator+(double value) const;
    MString operator+(float value) const;
    MString operator+(int value) const;
    MString operator+(unsigned int value) const;

    bool operator==(const MString& other) const;
    bool operator==(const char* text) const;
    bool operator!=(const MString& other) const;
    bool operator!=(const char* text) const;

    const char* asChar() const;
    unsigned int length() const; ///< in bytes
    int numChars() const;        ///< number of code points, assuming UTF-8

    MStatus set(const char* text);
    MStatus set(double value);
    MStatus set(int value);
    void clear();

    /// Bytes `start` to `end`, inclusive; clipped to the string.
    MString substring(int start, int end) const;
    /// Position of the first or last occurrence of a byte, -1 if absent.
    int index(char c) const;
    int rindex(char c) const;
    /// Splits at separators and drops empty pieces. Fails if no piece remains.
    MStatus split(char separator, MStringArray& pieces) const;

    bool isInt() const;
    bool isDouble() const;
    int asInt() const;       ///< 0 if the text is not a number
    double asDouble() const; ///< 0 if the text is not a number

private:
    std::string text_;
};

MHOST_EXPORT MString operator+(const char* text, const MString& string);
MHOST_EXPORT bool operator==(const char* text, const MString& string);
MHOST_EXPORT bool operator!=(const char* text, const MString& string);
MHOST_EXPORT std::ostream& operator<<(std::ostream& stream, const MString& string);
