// Pictures and cursors out of resource files, whole and damaged.
#include "BigEndian.h"
#include "Cursors.h"
#include "PictureResource.h"
#include "PixelSurface.h"
#include "QuickDraw.h"
#include "ResourceBytes.h"
#include "ResourceManager.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

/// One of the module's pictures of 48 x 48 pixels.
class Pictures : public testing::Test {
  protected:
    static constexpr short kSide = 48;

    void SetUp() override {
        file = OpenResFile(MODULE_RESOURCES);
        picture = GetPicture(506);
        ASSERT_TRUE(picture);
        bytes.assign(*picture, *picture + GetHandleSize(picture));
    }
    void TearDown() override { CloseResFile(file); }

    std::int16_t file = 0;
    PicHandle picture = nullptr;
    std::vector<std::uint8_t> bytes;
};

TEST_F(Pictures, AreDrawnInTheirRectangle) {
    constexpr short kTop = 3, kLeft = 5;
    GrafPort port;
    PixelSurface surface(kTop + kSide, kLeft + kSide);
    port.surface = &surface;
    SetPort(&port);
    const Rect rect = {kTop, kLeft, kTop + kSide, kLeft + kSide};
    DrawPicture(picture, &rect);
    SetPort(nullptr);
    std::vector<std::uint32_t> shown;
    for (int v = 0; v < kSide; ++v)
        for (int h = 0; h < kSide; ++h) shown.push_back(surface.At(kTop + v, kLeft + h));
    EXPECT_TRUE(shown == DecodePicture(bytes)->pixels);
}

TEST_F(Pictures, NeedAllOfTheirBytes) {
    for (std::size_t length = 0; length < bytes.size(); ++length)
        EXPECT_FALSE(DecodePicture({bytes.data(), length}))
            << length << " bytes of " << bytes.size();
}

TEST_F(Pictures, NeedRowsAndColumnsThatTheirBytesHold) {
    // All rectangles of the picture but its frame: top, left, bottom, right.
    const auto rectangle = [](short rows, short columns) {
        std::vector<std::uint8_t> sides(8);
        PutBE(&sides[4], rows);
        PutBE(&sides[6], columns);
        return sides;
    };
    const auto old = rectangle(kSide, kSide);
    const std::tuple<short, short, bool> cases[] = {
        {48, 48, true},  {48, 47, true},  {48, 49, false}, {48, -1, false},
        {47, 48, false}, {49, 48, false}, {0, 48, false}};
    for (const auto& [rows, columns, isWhole] : cases) {
        std::vector<std::uint8_t> changed = bytes;
        const auto other = rectangle(rows, columns);
        for (auto at = changed.begin();
             (at = std::search(at, changed.end(), old.begin(), old.end())) != changed.end(); ++at)
            std::copy(other.begin(), other.end(), at);
        EXPECT_EQ(DecodePicture(changed).has_value(), isWhole) << rows << " x " << columns;
    }
}

TEST(Cursors, OutliveTheirFileAndShortOnesAreRefused) {
    // Rows of the image, rows of the mask, and the hot spot, vertical first.
    const std::string whole = Word(0x8001) + std::string(30, '\0') + Word(0xC003) +
                              std::string(30, 0x7F) + Word(12) + Word(2);
    const TemporaryFolder folder;
    const std::int16_t file = OpenResFile(folder.Write(
        "r", ResourceFileOf({{"CURS", 200, whole}, {"CURS", 201, whole.substr(0, 67)}})));
    const CursHandle cursor = GetCursor(200);
    ASSERT_TRUE(cursor);
    EXPECT_EQ(GetCursor(200), cursor) << "asked for again";
    EXPECT_EQ(GetCursor(201), nullptr);
    CloseResFile(file);
    EXPECT_EQ(GetCursor(200), nullptr);
    Cursor want = {{0x8001}, {0xC003}, {12, 2}};
    std::fill_n(want.mask + 1, 15, 0x7F7F);
    EXPECT_TRUE(**cursor == want);
}

} // namespace
