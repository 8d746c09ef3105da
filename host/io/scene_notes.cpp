#include "host/io/scene_notes.h"

namespace host {

SceneNotes& SceneNotes::current() {
    static SceneNotes notes;
    return notes;
}

} // namespace host
