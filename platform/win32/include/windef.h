/// The basic types of <windows.h>, for systems without it.
///
/// Sizes are those of 64-bit Windows, where `long` has 32 bits: every type that the published
/// headers spell with `long` is a 32-bit type here, whatever `long` is on this system.
#pragma once

#include <cstddef>
#include <cstdint>

using BYTE = uint8_t;
using WORD = uint16_t;
using DWORD = uint32_t;
using UINT = unsigned int;
using INT = int;
using LONG = int32_t;
using ULONG = uint32_t;
using BOOL = int;
using FLOAT = float;
using HRESULT = int32_t;

using UINT_PTR = uintptr_t;
using SIZE_T = size_t;

using LPVOID = void*;
using LPCVOID = const void*;
using LPDWORD = DWORD*;
using LPSTR = char*;
using LPCSTR = const char*;

/// Handles are pointers to distinct incomplete types, so that two kinds cannot be mixed up.
using HWND = struct HWND__*;
using HMONITOR = struct HMONITOR__*;
using HDC = struct HDC__*;

struct POINT {
    LONG x;
    LONG y;
};

struct RECT {
    LONG left;
    LONG top;
    LONG right;
    LONG bottom;
};

struct GUID {
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};
using IID = GUID;
using REFIID = const IID&;
using REFGUID = const GUID&;

inline bool operator==(const GUID& a, const GUID& b) {
    bool same = a.Data1 == b.Data1 && a.Data2 == b.Data2 && a.Data3 == b.Data3;
    for (int i = 0; i < 8; ++i)
        same = same && a.Data4[i] == b.Data4[i];
    return same;
}
inline bool operator!=(const GUID& a, const GUID& b) { return !(a == b); }

// Calling conventions and parameter annotations, without meaning on this system.
#define WINAPI
#define APIENTRY
#define CALLBACK
#define STDMETHODCALLTYPE
#define CONST const
#define FALSE 0
#define TRUE 1

// Result codes of COM calls: the high bit is set on failure.
#define SUCCEEDED(result) (static_cast<HRESULT>(result) >= 0)
#define FAILED(result) (static_cast<HRESULT>(result) < 0)
#define S_OK (static_cast<HRESULT>(0))
#define S_FALSE (static_cast<HRESULT>(1))
#define E_NOTIMPL (static_cast<HRESULT>(0x80004001u))
#define E_NOINTERFACE (static_cast<HRESULT>(0x80004002u))
#define E_POINTER (static_cast<HRESULT>(0x80004003u))
#define E_ABORT (static_cast<HRESULT>(0x80004004u))
#define E_FAIL (static_cast<HRESULT>(0x80004005u))
#define E_OUTOFMEMORY (static_cast<HRESULT>(0x8007000Eu))
#define E_INVALIDARG (static_cast<HRESULT>(0x80070057u))
