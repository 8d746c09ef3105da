/// The small part of <windows.h> that the product uses, for systems without it: the system time,
/// the message box, the debugger's line. Names, types and values are the published ones.
#pragma once

#include <windef.h>

struct SYSTEMTIME {
    WORD wYear;
    WORD wMonth;     ///< 1..12
    WORD wDayOfWeek; ///< 0 = Sunday
    WORD wDay;       ///< 1..31
    WORD wHour;
    WORD wMinute;
    WORD wSecond;
    WORD wMilliseconds;
};
using LPSYSTEMTIME = SYSTEMTIME*;

/// The current date and time in UTC.
void WINAPI GetSystemTime(LPSYSTEMTIME time);

#define MB_OK 0x00000000u
#define IDOK 1

/// Shows a notice. It is passed to the application's notice hook if the process exports one
/// (`int host_show_notice(const char* caption, const char* text)`; non-zero = handled). Otherwise
/// it is written to standard error, and if standard input and standard error are both terminals the
/// call waits for Enter. `owner` and `type` are ignored: there is one button, OK.
/// Returns IDOK, or 0 if nothing could be shown.
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

/// The debugger's output: appends `text` to the file named by the environment variable
/// OUTPUT_DEBUG_STRING_FILE. Does nothing if the variable is not set, or on failure.
void WINAPI OutputDebugStringA(LPCSTR text);
