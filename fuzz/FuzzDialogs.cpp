// The options dialogs under a user who does anything at all. Whatever that is, the dialogs end,
// their state stays in order, and the document is left as it was.
#include "DescribedPicture.h"
#include "DialogState.h"
#include "ExportHost.h"
#include "FuzzUser.h"
#include "GifAgreement.h"
#include "MemoryManager.h"
#include "Problem.h"
#include "TheModule.h"

#include <algorithm>
#include <cstring>

namespace gif89 {
namespace {

constexpr int kMostColumns = 1200; // more than the previews show at once

bool SamePictures(const Picture& a, const Picture& b) {
    const auto same = [count = a.PixelBytes()](const auto& first, const auto& second) {
        return std::memcmp(first.get(), second.get(), count) == 0;
    };
    return std::memcmp(&a.table, &b.table, sizeof a.table) == 0 && same(a.pixels, b.pixels) &&
           a.comment == b.comment &&
           std::equal(a.channels.begin(), a.channels.end(), b.channels.begin(), b.channels.end(),
                      [&](const Channel& first, const Channel& second) {
                          return first.name == second.name && same(first.bytes, second.bytes);
                      });
}

// An indexed export keeps its comment until the next one has one.
void CheckMemory(long blocksBefore, const Picture& picture) {
    static long keptBlocks = 0;
    const bool keeps = picture.kind == Picture::Kind::indexed && !picture.comment.empty();
    const long kept = keeps ? 1 : keptBlocks;
    Require(LiveMemoryBlocks() - blocksBefore == kept - keptBlocks, "all memory is given back");
    keptBlocks = kept;
}

void Run(FuzzInput input) {
    const ExportModule& module = TheModule(); // its resources are there to stay
    const Picture picture = TakePicture(input, kMostColumns);
    const Picture before = CopyPicture(picture);
    const long blocks = LiveMemoryBlocks();
    FuzzUser user(input);
    std::string ending;
    try {
        ExportPicture(module, {picture, "fuzz", user, &user});
    } catch (const Problem& problem) {
        ending = problem.what();
    }
    Require(user.Failure().empty(), "the user can do whatever comes");
    Require(OpenDialogs().empty(), "no dialog is left");
    Require(SamePictures(picture, before), "the document is left as it was");
    CheckMemory(blocks, picture);
    const auto bytes = user.File().Bytes();
    if (user.HasSaved()) {
        Require(ending.empty(), "what was saved is written");
        RequireAgreement(DecodeGif(bytes), bytes);
    } else {
        Require(ending == "cancelled", "who does not save has cancelled");
        Require(bytes.empty(), "cancelling writes nothing");
    }
}

} // namespace
} // namespace gif89

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    gif89::Run({bytes, count});
    return 0;
}
