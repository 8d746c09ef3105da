/// Fuzz target: the STL reader, and conversion to OBJ. The input is a file.
#include "fuzz/finding.h"
#include "fuzz/mesh_file_check.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
    const std::string bytes(reinterpret_cast<const char*>(data), size);
    report_finding(check_mesh_file("in.stl", bytes, "out.obj", {}));
    return 0;
}
