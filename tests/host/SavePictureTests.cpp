// The real module, loaded at run time, from a picture to a checked file in its place.
#include "DecodeGif.h"
#include "ExportHost.h"
#include "FileManager.h"
#include "GiflibDecode.h"
#include "OkUser.h"
#include "Problem.h"
#include "RandomPictures.h"
#include "SavePicture.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

namespace gif89 {
namespace {

const ExportModule& TheModule() {
    static const ExportModule module(ExportModule::DefaultPath());
    return module;
}

Picture MakeRandomPicture(PictureKind kind, int rows, int columns, int planes, std::uint32_t seed) {
    const auto pixels = RandomPixels(kind, rows, columns, planes, seed);
    Picture picture =
        MakePicture(planes == 3 ? Picture::Kind::rgb : Picture::Kind::rgbAlpha, rows, columns);
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
    return picture;
}

// Saves with the options that the dialog shows when it opens.
SavedGif SaveAsItComes(const Picture& picture, const std::string& documentName,
                       const Destination& destination) {
    OkUser user;
    return SavePicture(TheModule(), picture, documentName, destination, {&user.Script(), nullptr});
}

// What giflib reads of a file here.
GiflibPicture ReadWithGiflib(const TemporaryFolder& folder, const std::string& name) {
    const std::string bytes = folder.Read(name);
    std::string reason;
    auto picture =
        GiflibDecode({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()}, &reason);
    EXPECT_TRUE(picture) << reason;
    return picture.value_or(GiflibPicture());
}

std::string ReasonOf(const std::function<void()>& action) {
    try {
        action();
    } catch (const std::exception& problem) { // a Problem, or std::bad_alloc
        return problem.what();
    }
    return "done";
}

TEST(SavePicture, KeepsEveryPixelOfAPictureWithFewColors) {
    const TemporaryFolder folder;
    for (const int planes : {3, 4}) {
        Picture picture = MakeRandomPicture(PictureKind::fewColors, 90, 130, planes, 3);
        picture.comment = "a comment";
        const SavedGif saved = SaveAsItComes(picture, "few" + std::to_string(planes),
                                             {folder.Path(), {}, -1, Existing::keep});
        const std::string name = "few" + std::to_string(planes) + ".gif";
        EXPECT_EQ(saved.path, folder.Path(name));
        const GiflibPicture gif = ReadWithGiflib(folder, name);
        ASSERT_EQ(gif.indices.size(), 90U * 130);
        EXPECT_EQ(gif.comment, "a comment");
        EXPECT_TRUE(gif.interlaced);
        const std::uint8_t* pixel = picture.pixels.get();
        for (const std::uint8_t index : gif.indices) {
            if (planes == 4 && pixel[3] == 0)
                ASSERT_EQ(index, gif.transparentIndex);
            else
                ASSERT_TRUE(gif.table.red[index] == pixel[0] &&
                            gif.table.green[index] == pixel[1] &&
                            gif.table.blue[index] == pixel[2]);
            pixel += planes;
        }
    }
}

TEST(SavePicture, TakesTheLargestSides) {
    const TemporaryFolder folder;
    const struct {
        int rows, columns, planes;
    } cases[] = {{3, 32767, 4}, {32767, 3, 4}, {1, 1, 3}, {2, 12000, 4}};
    for (const auto& c : cases) {
        const Picture picture =
            MakeRandomPicture(PictureKind::photo, c.rows, c.columns, c.planes, 4);
        SaveAsItComes(picture, "side", {folder.Path(), {}, -1, Existing::replace});
        const GiflibPicture gif = ReadWithGiflib(folder, "side.gif");
        EXPECT_EQ(gif.rows, c.rows);
        EXPECT_EQ(gif.columns, c.columns);
    }
}

TEST(SavePicture, RefusesAPictureThatNeedsMoreThanTheBudgetCanSay) {
    Picture picture;
    picture.kind = Picture::Kind::rgbAlpha;
    picture.rows = picture.columns = 32767; // no pixels: nothing may be read before the refusal
    const TemporaryFolder folder;
    const std::string reason = ReasonOf([&] {
        SaveAsItComes(picture, "huge", {folder.Path(), {}, -1, Existing::keep});
    });
    EXPECT_NE(reason.find("2 GiB"), std::string::npos) << reason;
}

// Requests for part of the planes are copies, requests for all of them are the picture itself;
// either way, and in bands or whole, the module must see the same pixels.
TEST(ExportHost, DeliversTheSamePixelsInPlaceAndCopied) {
    class Saver final : public StandardFileResponder {
      public:
        void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) override {
            reply->sfGood = 1;
            EXPECT_EQ(PathToFSSpec(folder.Path("x.gif"), &reply->sfFile), noErr);
        }
        void GetFile(FileFilterProc, StandardFileReply*) override {}
        TemporaryFolder folder;
    };
    // Every colour appears opaque only: with and without the plane the exact palette is the same.
    const Picture rgb = MakeRandomPicture(PictureKind::fewColors, 40, 50, 3, 6);
    Picture alpha = MakePicture(Picture::Kind::rgbAlpha, 40, 50);
    for (int i = 0; i < 40 * 50; ++i) {
        std::copy_n(rgb.pixels.get() + i * 3, 3, alpha.pixels.get() + i * 4);
        alpha.pixels[static_cast<std::size_t>(i) * 4 + 3] = 255;
    }
    Saver plain, withPlane;
    OkUser user;
    ExportPicture(TheModule(), {rgb, "x", plain, &user.Script()});
    ExportPicture(TheModule(), {alpha, "x", withPlane, &user.Script()});
    EXPECT_EQ(ReadWithGiflib(plain.folder, "x.gif").indices,
              ReadWithGiflib(withPlane.folder, "x.gif").indices);
}

TEST(ExportHost, EndsAWalkThatTheBudgetWillNeverFinish) {
    class Nobody final : public StandardFileResponder {
        void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply*) override {}
        void GetFile(FileFilterProc, StandardFileReply*) override {}
    } nobody;
    const Picture picture = MakeRandomPicture(PictureKind::flat, 20, 30, 3, 5);
    EXPECT_EQ(ReasonOf([&] {
                  ExportPicture(TheModule(), {picture, "x", nobody, nullptr, 10});
              }),
              "not enough memory");
    EXPECT_EQ(ReasonOf([&] { ExportPicture(TheModule(), {picture, "x", nobody}); }), "cancelled");
}

} // namespace
} // namespace gif89
