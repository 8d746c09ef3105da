/// Text in the host's interface: a byte string with value semantics. Positions and lengths count
/// bytes; positions start at 0. `asChar` is never NULL and stays valid until the next change.
#pragma once

#include <maya/MStatus.h>

#include <iosfwd>
#include <string>

class MStringArray;

class MHOST_EXPORT MString {
public:
    MString();
    MString(const char* text); ///< NULL gives the empty string
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
    unsigned int length() const; ///< bytes
    int numChars() const;        ///< characters (code points of UTF-8)

    MStatus set(const char* text);
    MStatus set(double value);
    MStatus set(int value);
    void clear();

    /// Bytes `start` to `end`, both included; clipped to the string, empty when nothing is left.
    MString substring(int start, int end) const;
    /// First and last place of a byte, -1 when absent.
    int index(char c) const;
    int rindex(char c) const;
    /// Pieces between separators; empty pieces are dropped. Fails when there is none.
    MStatus split(char separator, MStringArray& pieces) const;

    bool isInt() const;
    bool isDouble() const;
    int asInt() const;       ///< 0 when the text is not a number
    double asDouble() const; ///< 0 when the text is not a number

private:
    std::string text_;
};

MHOST_EXPORT MString operator+(const char* text, const MString& string);
MHOST_EXPORT bool operator==(const char* text, const MString& string);
MHOST_EXPORT bool operator!=(const char* text, const MString& string);
MHOST_EXPORT std::ostream& operator<<(std::ostream& stream, const MString& string);
