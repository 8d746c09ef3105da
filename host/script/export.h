/// Marks what the shared library of the host gives to programs that run scripts.
#pragma once

#if defined(_WIN32)
#define TESSORA_SCRIPT_API // the linker exports everything
#else
#define TESSORA_SCRIPT_API __attribute__((visibility("default")))
#endif
