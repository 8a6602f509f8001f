// The module's pictures and cursors as they come out of its resource file, and damaged ones.
#include "BigEndian.h"
#include "EventSource.h"
#include "MakePng.h"
#include "MemoryManager.h"
#include "Picture.h"
#include "PictureResource.h"
#include "PixelSurface.h"
#include "ResourceManager.h"
#include "ScriptSource.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <map>
#include <random>
#include <sstream>

namespace {

std::string ReadText(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return std::string(std::istreambuf_iterator<char>(file), {});
}

/// Pixels of a PNG file, 0x00RRGGBB.
std::vector<std::uint32_t> PngPixels(const std::string& path, int side) {
    png_image image = {};
    image.version = PNG_IMAGE_VERSION;
    png_image_begin_read_from_file(&image, path.c_str());
    image.format = PNG_FORMAT_RGB;
    if (static_cast<int>(image.width) != side || static_cast<int>(image.height) != side) return {};
    std::vector<std::uint8_t> rgb(PNG_IMAGE_SIZE(image));
    png_image_finish_read(&image, nullptr, rgb.data(), 0, nullptr);
    std::vector<std::uint32_t> pixels;
    for (std::size_t i = 0; i < rgb.size(); i += 3)
        pixels.push_back(rgb[i] * 65536U + rgb[i + 1] * 256U + rgb[i + 2]);
    return pixels;
}

class Artwork : public testing::Test {
  protected:
    void SetUp() override {
        file = OpenResFile(MODULE_RESOURCES);
        ASSERT_GT(file, 0);
        SetPort(&port);
    }
    void TearDown() override {
        SetPort(nullptr);
        CloseResFile(file);
    }
    std::vector<std::uint8_t> BytesOf(short picture) const {
        const PicHandle handle = GetPicture(picture);
        return handle ? std::vector<std::uint8_t>(*handle, *handle + GetHandleSize(handle))
                      : std::vector<std::uint8_t>();
    }
    std::int16_t file = 0;
    GrafPort port;
};

TEST_F(Artwork, PicturesShowThePixelsThatWereDrawnForThem) {
    constexpr short kSide = 48, kTop = 3, kLeft = 5;
    const std::string texts = ReadText(RESOURCE_FOLDER "/tools.r");
    std::istringstream words(texts);
    int count = 0;
    for (std::string word, name; words >> word;) {
        short id = 0;
        if (word != "picture" || !(words >> id >> name)) continue;
        ++count;
        PixelSurface surface(kTop + kSide, kLeft + kSide);
        port.surface = &surface;
        const Rect rect = {kTop, kLeft, kTop + kSide, kLeft + kSide};
        DrawPicture(GetPicture(id), &rect);
        std::vector<std::uint32_t> shown;
        for (int v = 0; v < kSide; ++v)
            for (int h = 0; h < kSide; ++h) shown.push_back(surface.At(kTop + v, kLeft + h));
        EXPECT_TRUE(shown ==
                    PngPixels(RESOURCE_FOLDER "/" + name.substr(1, name.size() - 2), kSide))
            << id;
    }
    EXPECT_EQ(count, 16);
}

TEST_F(Artwork, DamagedPicturesDrawNothingOrSomethingButHarmNothing) {
    const std::vector<std::uint8_t> whole = BytesOf(506);
    ASSERT_TRUE(DecodePicture(whole));
    for (std::size_t length = 0; length < whole.size(); ++length) {
        const std::vector<std::uint8_t> cut(whole.begin(),
                                            whole.begin() + static_cast<std::ptrdiff_t>(length));
        EXPECT_FALSE(DecodePicture(cut)) << length << " bytes of " << whole.size();
    }
    for (std::size_t i = 0; i < whole.size(); ++i)
        for (const int change : {0x01, 0x10, 0x80, 0xFF}) {
            std::vector<std::uint8_t> changed = whole;
            changed[i] = static_cast<std::uint8_t>(changed[i] ^ change);
            const auto picture = DecodePicture(changed);
            if (!picture) continue;
            ASSERT_EQ(picture->pixels.size(),
                      static_cast<std::size_t>(picture->rows * picture->columns))
                << "byte " << i;
        }
}

TEST_F(Artwork, PicturesNeedRowsAndColumnsThatTheirBytesHold) {
    // All rectangles of the picture but its frame: top, left, bottom, right.
    const auto rectangle = [](int rows, int columns) {
        std::vector<std::uint8_t> bytes(8);
        PutBE<std::int16_t>(&bytes[4], static_cast<std::int16_t>(rows));
        PutBE<std::int16_t>(&bytes[6], static_cast<std::int16_t>(columns));
        return bytes;
    };
    const std::vector<std::uint8_t> whole = BytesOf(506), old = rectangle(48, 48);
    const struct {
        int rows, columns;
        bool isWhole;
    } cases[] = {{48, 48, true},  {48, 47, true},  {48, 49, false}, {48, 0, false}, {48, -1, false},
                 {47, 48, false}, {49, 48, false}, {0, 48, false},  {-1, 48, false}};
    for (const auto& c : cases) {
        std::vector<std::uint8_t> changed = whole;
        const std::vector<std::uint8_t> other = rectangle(c.rows, c.columns);
        for (auto at = changed.begin();
             (at = std::search(at, changed.end(), old.begin(), old.end())) != changed.end(); ++at)
            std::copy(other.begin(), other.end(), at);
        EXPECT_EQ(DecodePicture(changed).has_value(), c.isWhole) << c.rows << " x " << c.columns;
    }
}

TEST(WidePictures, HaveRowsWithLengthsOfTwoBytes) {
    constexpr int kColumns = 300, kRows = 5;
    PngForm form = {.columns = kColumns, .rows = kRows, .colorType = PNG_COLOR_TYPE_RGB};
    std::vector<unsigned> samples;
    std::vector<std::uint32_t> want;
    std::mt19937 random(300);
    for (int i = 0; i < kColumns * kRows; ++i) {
        // Stretches of different colours and runs in turn.
        const unsigned shade = i / 70 % 2 ? static_cast<unsigned>(random() % 256) : 7U;
        samples.insert(samples.end(), {shade, 255 - shade, 9});
        want.push_back(shade * 65536 + (255 - shade) * 256 + 9);
    }
    const TemporaryFolder folder;
    const std::vector<std::uint8_t> png = MakePng(form, samples);
    const std::string path = folder.Write("wide.png", std::string(png.begin(), png.end()));
    const auto picture =
        DecodePicture(gif89::ConvertPicture(path, {0, 0, kRows, kColumns}, gif89::Place{path, 1}));
    ASSERT_TRUE(picture);
    EXPECT_EQ(picture->rows, kRows);
    EXPECT_EQ(picture->columns, kColumns);
    EXPECT_TRUE(picture->pixels == want);
}

TEST_F(Artwork, CursorsHaveTheRowsAndHotSpotsOfTheirTexts) {
    const std::string texts = ReadText(RESOURCE_FOLDER "/cursors.r");
    std::istringstream words(texts);
    int count = 0;
    for (std::string word, brace; words >> word;) {
        short id = 0;
        Cursor want = {};
        if (word != "cursor" || !(words >> id >> word >> want.hotSpot.h >> want.hotSpot.v >> brace))
            continue;
        ++count;
        std::string rows;
        std::getline(words, rows, '}');
        int pixel = 0;
        for (const char letter : rows) {
            if (letter != '#' && letter != 'o' && letter != '.') continue;
            const auto bit = static_cast<std::uint16_t>(32768 >> pixel % 16);
            if (letter == '#') want.data[pixel / 16] |= bit;
            if (letter != '.') want.mask[pixel / 16] |= bit;
            ++pixel;
        }
        const CursHandle got = GetCursor(id);
        ASSERT_TRUE(got) << id;
        EXPECT_TRUE(**got == want) << id;
        EXPECT_EQ(GetCursor(id), got) << "asked for again";
    }
    EXPECT_EQ(count, 7);
    EXPECT_EQ(GetCursor(2006), nullptr);
}

TEST_F(Artwork, CursorsOutliveTheirFileAndShortOnesAreRefused) {
    const CursHandle hand = GetCursor(2001);
    const Cursor before = **hand;
    ASSERT_EQ(SetHandleSize(GetResource(FourCC("CURS"), 2000), 67), noErr);
    EXPECT_EQ(GetCursor(2000), nullptr);
    CloseResFile(file);
    EXPECT_EQ(GetCursor(2001), nullptr);
    EXPECT_TRUE(**hand == before);
}

TEST_F(Artwork, CursorsAreShownByTheEventSourceIfThereIsOne) {
    const Cursor* const hand = *GetCursor(2001);
    SetCursor(hand);
    InitCursor();
    ScriptSource source(std::vector<Act>{});
    EventSource* const outer = SetEventSource(&source);
    SetCursor(hand);
    SetCursor(nullptr);
    EXPECT_EQ(source.ShownCursor(), hand);
    SetArrowCursor();
    EXPECT_EQ(source.ShownCursor(), nullptr);
    SetEventSource(outer);
}

} // namespace
