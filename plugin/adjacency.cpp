#include "plugin/adjacency.h"

#include "corelib/math/hresult_name.h"
#include "corelib/math/log_critical.h"
#include "plugin/mesh_data.h"

#include <algorithm>
#include <cstdlib>

uint32_t* build_adjacency(const Unwrapper&, ID3DXMesh* mesh, const array<uint32_t>& cut_edges) {
    const uint32_t count = cut_edges.count();
    // Deliberate: four words per entry although the library writes one. Never less than the library
    // writes, also when `cut_edges` is short because memory ran out.
    const size_t words = std::max<size_t>(4 * static_cast<size_t>(count),
                                          3 * static_cast<size_t>(mesh->GetNumFaces()));
    auto* const adjacency = static_cast<uint32_t*>(std::malloc(words * sizeof(uint32_t)));
    if (adjacency == nullptr) {
        log_critical("Out of memory, can not generate adjacency list");
        return nullptr;
    }
    const HRESULT result =
        mesh->ConvertPointRepsToAdjacency(nullptr, reinterpret_cast<DWORD*>(adjacency));
    if (FAILED(result)) {
        // Deliberate: the buffer leaks. A library that failed half-way may still write to it.
        log_critical("ConvertPointRepsToAdjacency() failed: %s\n", hresult_name(result));
        return nullptr;
    }
    for (uint32_t i = 0; i < count; ++i)
        if (cut_edges.get(i) == k_marked)
            adjacency[i] = k_marked;
    return adjacency;
}
