#include "plugin/mesh_data.h"

#include "corelib/memory.h"

#include <new>

CornerList* new_corner_list() {
    void* const block = core_realloc(nullptr, sizeof(CornerList));
    return block == nullptr ? nullptr : new (block) CornerList;
}

void free_corner_list(CornerList* list) {
    list->~CornerList();
    core_free(list);
}

void free_corner_lists(array<CornerList*>& lists) {
    for (uint32_t p = 0; p < lists.count(); ++p)
        free_corner_list(lists.get(p));
    lists.clear();
}
