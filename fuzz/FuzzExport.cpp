// Whole exports: a picture and options out of the input, through the loaded module, to a file that
// two decoders read alike and that keeps what is promised.
#include "DescribedPicture.h"
#include "ExportHost.h"
#include "ExportPromises.h"
#include "GifAgreement.h"
#include "MemoryFile.h"
#include "Operator.h"
#include "PaletteFiles.h"
#include "SavePicture.h"
#include "Shape.h"
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

void TakeIndexedChoices(FuzzInput& input, const Picture& picture, ExportChoices& choices) {
    switch (input.Number(0, 3)) {
    case 0:
        for (int left = input.Number(0, 6); left > 0; --left)
            choices.transparent.push_back(std::to_string(input.Number(0, picture.colors - 1)));
        return;
    case 1:
        if (!picture.channels.empty())
            choices.alpha =
                std::to_string(input.Number(1, static_cast<int>(picture.channels.size())));
        choices.invert = !choices.alpha.empty() && input.Flag();
        return;
    case 2:
        choices.opaque = true;
        return;
    default:
        return;
    }
}

void TakeRGBChoices(FuzzInput& input, ExportChoices& choices) {
    const int way = input.Number(0, 6);
    const char* const names[] = {"", "exact", "adaptive", "fixed"};
    choices.palette = way < 4 ? names[way] : PaletteFilePath(way - 4);
    if (input.Flag()) choices.colors = input.Number(1, 257);
    choices.resize = input.Flag();
}

ExportChoices TakeChoices(FuzzInput& input, const Picture& picture) {
    ExportChoices choices;
    choices.interlace = TakeSwitch(input);
    choices.comment = TakeSwitch(input);
    if (input.Flag()) choices.matte = TakeColor(input);
    if (picture.kind == Picture::Kind::indexed)
        TakeIndexedChoices(input, picture, choices);
    else
        TakeRGBChoices(input, choices);
    return choices;
}

/// As the command line exports: the whole picture in one band, checked, reported.
void Save(const Picture& original, const Picture& picture, const ExportChoices& choices,
          const std::string& name) {
    Operator user(picture, choices);
    const MemoryFile file;
    SaveChecks checks;
    checks.original = &original;
    Destination destination;
    destination.stream = file.FileDescriptor();
    try {
        const SavedGif saved = SavePicture(TheModule(), picture, name, destination,
                                           {&user.Events(), &user.Files()}, checks);
        user.ThrowFailure();
        const auto bytes = file.Bytes();
        Require(saved.report.bytes == bytes.size(), "all of the file is there");
        const GiflibPicture gif = RequireAgreement(DecodeGif(bytes), bytes);
        CheckPromises({original, picture, choices, gif}, saved.report);
    } catch (const Problem& problem) {
        Require(file.Bytes().empty(), "nothing is written unless all goes well");
        user.ThrowFailure(); // the choice was refused
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
void ExportInBands(const Picture& picture, const ExportChoices& choices, const std::string& name,
                   std::int32_t budget) {
    Operator user(picture, choices);
    SaveToMemory answer(user.Files());
    ExportPicture(TheModule(), {picture, name, answer, &user.Events(), budget});
    user.ThrowFailure();
    const auto bytes = answer.file.Bytes();
    RequireAgreement(DecodeGif(bytes), bytes);
}

void Run(FuzzInput input) {
    const Picture original = TakePicture(input, kMostColumns);
    Picture picture = CopyPicture(original);
    if (input.Flag()) Shape(picture, {});
    const ExportChoices choices = TakeChoices(input, picture);
    const std::string name = input.Text();
    if (input.Flag())
        ExportInBands(picture, choices, name, input.Number(0, 8191));
    else
        Save(original, picture, choices, name);
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
