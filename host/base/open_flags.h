/// Flags of open() that only some systems have: O_BINARY on Windows, which otherwise translates
/// line ends, and O_CLOEXEC elsewhere; descriptors are not inherited on Windows.
#pragma once

#include <fcntl.h>

#ifndef O_BINARY
#define O_BINARY 0
#endif
#ifndef O_CLOEXEC
#define O_CLOEXEC 0
#endif
