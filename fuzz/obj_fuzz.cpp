/// libFuzzer target of the OBJ reader and writer.
#include "tests/host/io/obj_properties.h"

#include <cstdio>
#include <cstdlib>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string broken =
        test::check_obj_bytes(std::string(reinterpret_cast<const char*>(data), size));
    if (broken.empty())
        return 0;
    std::fprintf(stderr, "violated property: %s\n", broken.c_str());
    std::abort();
}
