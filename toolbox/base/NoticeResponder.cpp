#include "NoticeResponder.h"

#include <cstdio>
#include <utility>

namespace {

class PrintingResponder : public NoticeResponder {
  public:
    void Warn(const std::string& sentence) override {
        std::fprintf(stderr, "%s\n", sentence.c_str());
    }
    void About(const std::vector<std::string>& lines) override {
        for (const std::string& line : lines) std::fprintf(stderr, "%s\n", line.c_str());
    }
};

thread_local NoticeResponder* theResponder = nullptr;

} // namespace

NoticeResponder* SetNoticeResponder(NoticeResponder* responder) {
    return std::exchange(theResponder, responder);
}

NoticeResponder& CurrentNoticeResponder() {
    static PrintingResponder& printing = *new PrintingResponder;
    return theResponder ? *theResponder : printing;
}

bool HasNoticeResponder() {
    return theResponder != nullptr;
}
