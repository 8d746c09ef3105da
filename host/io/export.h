/// Marks what the shared library of the host gives to programs that link it.
#pragma once

#if defined(_WIN32)
#define TESSORA_IO_API // the linker exports everything
#else
#define TESSORA_IO_API __attribute__((visibility("default")))
#endif
