// Whoever tells the user what a module has to say beside its dialogs.
#pragma once

#include <string>
#include <vector>

#pragma GCC visibility push(default)

/// Speaks to the user: a display, a command line, a test.
class NoticeResponder {
  public:
    virtual ~NoticeResponder() = default;
    /// One sentence that the user must see.
    virtual void Warn(const std::string& sentence) = 0;
    /// The lines of an about box, top to bottom.
    virtual void About(const std::vector<std::string>& lines) = 0;
};

/// Makes `responder` speak on this thread and returns the one before; null prints on standard
/// error. The caller keeps ownership.
NoticeResponder* SetNoticeResponder(NoticeResponder* responder);
/// The responder of this thread, or the one that prints.
NoticeResponder& CurrentNoticeResponder();
bool HasNoticeResponder(); ///< one was set on this thread

#pragma GCC visibility pop
