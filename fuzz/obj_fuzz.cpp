/// Fuzz target: the OBJ reader and writer. The input is a file.
#include "fuzz/finding.h"
#include "tests/host/io/obj_properties.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    report_finding(test::check_obj_bytes(std::string(reinterpret_cast<const char*>(data), size)));
    return 0;
}
