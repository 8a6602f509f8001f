// The real module, loaded at run time, from a picture to a checked file. Whether the report on the
// file can be believed is looked at by the fuzz target for exports.
#include "Answers.h"
#include "ExportHost.h"
#include "OkUser.h"
#include "Problem.h"
#include "RandomPictures.h"
#include "SavePicture.h"
#include "Streams.h"
#include "TemporaryFolder.h"
#include "TheModule.h"

#include <gtest/gtest.h>

#include <fcntl.h>
#include <unistd.h>

#include <thread>

namespace gif89 {
namespace {

Picture MakeRandom(PictureKind kind, int rows, int columns, int planes) {
    Picture picture =
        MakePicture(planes == 3 ? Picture::Kind::rgb : Picture::Kind::rgbAlpha, rows, columns);
    const auto pixels = RandomPixels(kind, rows, columns, planes, 4);
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
    return picture;
}

// Saves with the options that the dialog shows when it opens.
ExportReport SaveAsItComes(const Picture& picture) {
    const TemporaryFolder folder;
    const Plan plan;
    Answers answers(plan);
    return SavePicture(TheModule(), picture, "as it comes", {folder.Path(), {}, -1, Existing::keep},
                       answers.User())
        .report;
}

std::string ReasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& problem) { // a Problem, or std::bad_alloc
        return problem.what();
    }
    return "done";
}

// The module counts colours in the first three planes of four, which are copied for it, and then
// goes through all planes, which it gets where they lie.
TEST(SavePicture, KeepsEveryPixelOfAPictureWithFewColors) {
    Picture picture = MakePicture(Picture::Kind::rgbAlpha, 3, 128);
    std::uint8_t* to = picture.pixels.get();
    for (int n = 0; n < 3 * 128; ++n) // a colour of its own for each column
        for (const int sample : {n % 8 * 32, n / 8 % 4 * 64, n / 32 % 4 * 64, 255})
            *to++ = static_cast<std::uint8_t>(sample);
    const ExportReport report = SaveAsItComes(picture);
    EXPECT_EQ(report.palette, PaletteKind::exact);
    EXPECT_EQ(report.changedPixels, 0);
}

TEST(SavePicture, TakesTheLargestSides) {
    for (const auto& [rows, columns] : {std::pair{3, 32767}, {32767, 3}, {1, 1}, {2, 12000}}) {
        const ExportReport report = SaveAsItComes(MakeRandom(PictureKind::photo, rows, columns, 4));
        EXPECT_EQ(report.rows, rows);
        EXPECT_EQ(report.columns, columns);
    }
}

TEST(SavePicture, RefusesAPictureThatNeedsMoreThanTheBudgetCanSay) {
    Picture picture;
    picture.kind = Picture::Kind::rgbAlpha;
    picture.rows = picture.columns = 32767; // no pixels: nothing may be read before the refusal
    const std::string reason = ReasonOf([&] { SaveAsItComes(picture); });
    EXPECT_NE(reason.find("2 GiB"), std::string::npos) << reason;
}

TEST(FileCheck, BlamesAFileThatIsNotAsItWasWritten) {
    const Picture picture = MakeRandom(PictureKind::flat, 2, 3, 3);
    const TemporaryFolder folder;
    const Descriptor file(open(folder.Write("a.gif", "GIF89a").c_str(), O_RDONLY | O_CLOEXEC));
    FileCheck check(picture, picture, false);
    check.Begin(file.Get());
    EXPECT_THROW(check.Finish({}), OutputProblem); // of the input it would be a mere Problem
}

TEST(SavePicture, WaitsForAStreamThatIsSetNotToWait) {
    int ends[2];
    ASSERT_EQ(pipe2(ends, O_NONBLOCK | O_CLOEXEC), 0);
    const Picture picture = MakeRandom(PictureKind::noise, 400, 500, 3);
    std::size_t taken = 0;
    std::thread reader([&] {
        char bytes[4096];
        for (ssize_t got; (got = ReadSome(ends[0], bytes, sizeof bytes)) > 0;)
            taken += static_cast<std::size_t>(got);
    });
    OkUser user;
    const ExportReport report =
        SavePicture(TheModule(), picture, "x", {{}, {}, ends[1]}, {&user.Script(), nullptr}).report;
    close(ends[1]);
    reader.join();
    close(ends[0]);
    EXPECT_GT(report.bytes, 65536U); // more than a pipe holds
    EXPECT_EQ(taken, report.bytes);
}

TEST(ExportHost, EndsAWalkThatTheBudgetWillNeverFinish) {
    class Nobody final : public StandardFileResponder {
        void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply*) override {}
        void GetFile(FileFilterProc, StandardFileReply*) override {}
    } nobody;
    const Picture picture = MakeRandom(PictureKind::flat, 20, 30, 3);
    EXPECT_EQ(ReasonOf([&] {
                  ExportPicture(TheModule(), {picture, "x", nobody, nullptr, 10});
              }),
              "not enough memory");
    EXPECT_EQ(ReasonOf([&] { ExportPicture(TheModule(), {picture, "x", nobody}); }), "cancelled");
}

} // namespace
} // namespace gif89
