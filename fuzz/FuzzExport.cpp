// Whole exports: a picture and options out of the input, through the loaded module, to a file that
// two decoders read alike and that keeps what is promised.
#include "Answers.h"
#include "DescribedPicture.h"
#include "ExportHost.h"
#include "ExportPromises.h"
#include "GifAgreement.h"
#include "MemoryFile.h"
#include "PaletteFiles.h"
#include "Plan.h"
#include "SavePicture.h"
#include "TheModule.h"

#include <optional>

namespace gif89 {
namespace {

constexpr int kMostColumns = 64;

RGBtuple TakeColor(FuzzInput& input) {
    const std::uint8_t red = input.Byte(), green = input.Byte(), blue = input.Byte();
    return {0, red, green, blue};
}

std::optional<bool> TakeSwitch(FuzzInput& input) {
    const int way = input.Number(0, 2);
    return way == 2 ? std::nullopt : std::optional(way == 1);
}

void TakeTransparency(FuzzInput& input, const Picture& picture, Wishes& wishes) {
    switch (input.Number(0, 4)) {
    case 0:
        for (int left = input.Number(0, 6); left > 0; --left)
            wishes.transparent.emplace_back(input.Number(0, picture.colors - 1));
        wishes.dropOwn = input.Flag();
        return;
    case 1:
        if (!picture.channels.empty())
            wishes.alpha =
                std::to_string(input.Number(1, static_cast<int>(picture.channels.size())));
        wishes.invert = !wishes.alpha.empty() && input.Flag();
        return;
    case 2:
        wishes.opaque = true;
        return;
    case 3:
        wishes.alphaThreshold = input.Number(1, 255);
        return;
    default:
        return;
    }
}

void TakePalette(FuzzInput& input, Wishes& wishes) {
    const int way = input.Number(0, 6);
    wishes.palette = way < 4 ? static_cast<PaletteKind>(way) : PaletteKind::file;
    if (way >= 4) wishes.paletteFile = PaletteFilePath(way - 4);
    if (input.Flag()) wishes.colors = input.Number(1, 257);
    wishes.resize = input.Flag();
}

Wishes TakeWishes(FuzzInput& input, const Picture& picture) {
    Wishes wishes = {.leavesToModule = true};
    wishes.mode = static_cast<Mode>(input.Number(0, 2));
    wishes.interlace = TakeSwitch(input);
    wishes.comment = TakeSwitch(input);
    if (input.Flag()) wishes.matte = TakeColor(input);
    if (picture.kind == Picture::Kind::indexed) TakeTransparency(input, picture, wishes);
    if (wishes.mode != Mode::indexed && input.Flag()) TakePalette(input, wishes);
    return wishes;
}

/// As the command line exports: the whole picture in one band, checked, reported.
void Save(const Picture& original, const Picture& picture, const Plan& plan,
          const std::string& name) {
    Answers answers(plan);
    const MemoryFile file;
    SaveChecks checks;
    checks.original = &original;
    Destination destination;
    destination.stream = file.FileDescriptor();
    try {
        const SavedGif saved =
            SavePicture(TheModule(), picture, name, destination, answers.User(), checks);
        answers.ThrowFailure();
        const auto bytes = file.Bytes();
        Require(saved.report.bytes == bytes.size(), "all of the file is there");
        const GiflibPicture gif = RequireAgreement(DecodeGif(bytes), bytes);
        CheckPromises({original, picture, plan, gif}, saved.report);
    } catch (const Problem& problem) {
        Require(file.Bytes().empty(), "nothing is written unless all goes well");
        answers.ThrowFailure(); // the dialogs refused it
        std::fprintf(stderr, "%s\n", problem.what());
        Require(false, "what the dialogs allow is exported");
    }
}

/// Answers the save dialog with a file in memory.
class SaveToMemory final : public StandardFileResponder {
  public:
    explicit SaveToMemory(StandardFileResponder& openDialog) : opener(openDialog) {}
    void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) override {
        reply->sfFile = DescriptorToFSSpec(file.FileDescriptor());
        reply->sfGood = 1;
    }
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override {
        opener.GetFile(filter, reply);
    }
    MemoryFile file;

  private:
    StandardFileResponder& opener;
};

/// As a host with little memory does: rows between bands are missing, but it is a file.
void ExportInBands(const Picture& picture, const Plan& plan, const std::string& name,
                   std::int32_t budget) {
    Answers answers(plan);
    SaveToMemory answer(*answers.User().files);
    ExportPicture(TheModule(), {picture, name, answer, answers.User().events, budget});
    answers.ThrowFailure();
    const auto bytes = answer.file.Bytes();
    RequireAgreement(DecodeGif(bytes), bytes);
}

void Run(FuzzInput input) {
    const Picture original = TakePicture(input, kMostColumns);
    Picture picture = CopyPicture(original);
    const Wishes wishes = TakeWishes(input, picture);
    const std::string name = input.Text();
    ApplyWishes(picture, wishes);
    const auto planned = MakePlan(picture, wishes);
    const Plan* const plan = std::get_if<Plan>(&planned);
    if (!plan) return;
    BringIntoShape(picture, *plan);
    if (input.Flag())
        ExportInBands(picture, *plan, name, input.Number(0, 8191));
    else
        Save(original, picture, *plan, name);
}

} // namespace
} // namespace gif89

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t count) {
    try {
        gif89::Run({bytes, count});
    } catch (const gif89::Problem&) {
        // Choices that the picture does not allow, or a budget for no band.
    }
    return 0;
}
