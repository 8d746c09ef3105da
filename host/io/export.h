/// Marks what the shared library of the host gives to programs that link it.
#pragma once

#define TESSORA_IO_API __attribute__((visibility("default")))
