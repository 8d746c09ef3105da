/// Notices: message boxes that something inside the application wants to show.
#pragma once

#include <maya/MTypes.h>

namespace host {

/// Shows a notice and returns true when the person has seen it, or false when it could not.
class NoticeListener {
public:
    virtual bool show(const char* caption, const char* text) = 0;

protected:
    ~NoticeListener() = default;
};

/// Sets who shows notices; NULL for nobody. Not owned.
MHOST_EXPORT void set_notice_listener(NoticeListener* listener);

} // namespace host

/// The application's notice hook. Libraries that know no host look it up by this name at run time.
/// Non-zero: the notice was shown; 0: nobody listens, so the caller must find another way.
extern "C" MHOST_EXPORT int host_show_notice(const char* caption, const char* text);
