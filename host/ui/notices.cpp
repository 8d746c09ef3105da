#include "host/ui/notices.h"

namespace {

host::NoticeListener* current_listener = nullptr;

} // namespace

namespace host {

void set_notice_listener(NoticeListener* listener) { current_listener = listener; }

} // namespace host

int host_show_notice(const char* caption, const char* text) {
    if (current_listener == nullptr)
        return 0;
    return current_listener->show(caption == NULL ? "" : caption, text == NULL ? "" : text) ? 1 : 0;
}
