/// Marks what the shared library of the host gives to programs that run scripts.
#pragma once

#define TESSORA_SCRIPT_API __attribute__((visibility("default")))
