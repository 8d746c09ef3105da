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

/// Shows `text` under `caption` and returns when the person has seen it. The notice goes to the
/// application's own notice hook when the process has one (an exported function
/// `int host_show_notice(const char* caption, const char* text)` that answers non-zero); otherwise
/// to standard error, waiting for Enter only if both standard input and standard error are
/// terminals. `owner` and `type` are taken as given: there is one button.
/// Returns IDOK, or 0 when nothing could be shown.
int WINAPI MessageBoxA(HWND owner, LPCSTR text, LPCSTR caption, UINT type);

/// Hands `text` to whoever watches the process: it is appended to the file named by the environment
/// variable OUTPUT_DEBUG_STRING_FILE; without that name, and on any failure, to nobody.
void WINAPI OutputDebugStringA(LPCSTR text);
