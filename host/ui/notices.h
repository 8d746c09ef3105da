/// Notices: message boxes requested by code inside the application.
#pragma once

#include <maya/MTypes.h>

namespace host {

/// Shows notices. `show` returns true once the user has dismissed it, false if it cannot.
class NoticeListener {
public:
    virtual bool show(const char* caption, const char* text) = 0;

protected:
    ~NoticeListener() = default;
};

/// Sets the listener that shows notices; NULL for none. Not owned.
MHOST_EXPORT void set_notice_listener(NoticeListener* listener);

} // namespace host

/// Shows a notice. Exported under this name for libraries that do not link to the host and look it
/// up at run time. Returns non-zero if the notice was shown, 0 if there is no listener.
extern "C" MHOST_EXPORT int host_show_notice(const char* caption, const char* text);
