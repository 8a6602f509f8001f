// GIF pictures of all kinds, written with the library, against the indices they were written from.
#include "PictureFromBytes.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <gif_lib.h>
#include <string>

using gif89::Picture;

namespace {

struct Screen {
    int columns = 4, rows = 3;
    int colors = 4; // of its table; 0 for none
    int background = 0;
};

struct GifFrame {
    int left = 0, top = 0, columns = 4, rows = 3;
    Bytes indices = {};
    int colors = 0; // of a table of its own; 0 for none
    bool interlaced = false;
    int transparent = -1;
    std::string comment = {}; // before the picture
};

// Colors that differ from table to table.
ColorMapObject* MakeTable(int colors) {
    if (colors == 0) return nullptr;
    ColorMapObject* const table = GifMakeMapObject(colors, nullptr);
    for (int n = 0; n < colors; ++n)
        table->Colors[n] = {static_cast<GifByteType>(n), static_cast<GifByteType>(colors - 1), 7};
    return table;
}

void WriteFrame(GifFileType* gif, GifFrame frame) {
    if (!frame.comment.empty()) EGifPutComment(gif, frame.comment.c_str());
    if (frame.transparent >= 0) {
        const GraphicsControlBlock control = {0, false, 0, frame.transparent};
        GifByteType bytes[4];
        EGifGCBToExtension(&control, bytes);
        EGifPutExtension(gif, GRAPHICS_EXT_FUNC_CODE, 4, bytes);
    }
    ColorMapObject* const table = MakeTable(frame.colors);
    EGifPutImageDesc(gif, frame.left, frame.top, frame.columns, frame.rows, frame.interlaced,
                     table);
    GifFreeMapObject(table);
    constexpr int kFirst[] = {0, 4, 2, 1}, kStep[] = {8, 8, 4, 2};
    for (int pass = 0; pass < (frame.interlaced ? 4 : 1); ++pass)
        for (int row = kFirst[pass]; row < frame.rows; row += frame.interlaced ? kStep[pass] : 1)
            EGifPutLine(gif, frame.indices.data() + row * frame.columns, frame.columns);
}

Bytes MakeGif(const Screen& screen, const std::vector<GifFrame>& frames) {
    const TemporaryFolder folder;
    GifFileType* const gif = EGifOpenFileName(folder.Path("a.gif").c_str(), false, nullptr);
    EGifSetGifVersion(gif, true);
    ColorMapObject* const table = MakeTable(screen.colors);
    EGifPutScreenDesc(gif, screen.columns, screen.rows, 8, screen.background, table);
    GifFreeMapObject(table);
    for (const GifFrame& frame : frames) WriteFrame(gif, frame);
    EGifCloseFile(gif, nullptr);
    return folder.ReadBytes("a.gif");
}

Bytes OpacitiesOf(const Picture& picture) {
    const std::uint8_t* const bytes = OpacityOf(picture);
    return bytes ? Bytes(bytes, bytes + picture.PixelBytes()) : Bytes();
}

} // namespace

TEST(ReadGif, IndicesAndTheRightTableAreKept) {
    for (const auto& [shared, own] : {std::pair{256, 0}, {16, 0}, {0, 8}, {16, 256}, {256, 8}})
        for (const bool interlaced : {false, true}) {
            const auto colors = static_cast<unsigned>(own ? own : shared);
            const GifFrame frame = {.columns = 31,
                                    .rows = 21,
                                    .indices = RandomBytes(31 * 21, 1, colors),
                                    .colors = own,
                                    .interlaced = interlaced};
            const Picture picture = PictureFromBytes(MakeGif({31, 21, shared}, {frame}));
            EXPECT_EQ(PixelsOf(picture), frame.indices) << interlaced;
            EXPECT_EQ(picture.colors, static_cast<int>(colors));
            for (unsigned n = 0; n < 256; ++n)
                EXPECT_EQ(PackColor(TableEntry(picture.table, static_cast<int>(n))),
                          n < colors ? n << 16 | (colors - 1) << 8 | 7 : 0U);
            EXPECT_TRUE(picture.channels.empty());
        }
}

TEST(ReadGif, FrameLiesOnItsScreen) {
    const auto inside = [](int transparent = -1, int colors = 0) {
        return GifFrame{.left = 1,
                        .top = 1,
                        .columns = 2,
                        .rows = 1,
                        .indices = {1, 2},
                        .colors = colors,
                        .transparent = transparent};
    };
    const Bytes on0 = {0, 0, 0, 0, 0, 1, 2, 0, 0, 0, 0, 0},
                around = {0, 0, 0, 0, 0, 255, 255, 0, 0, 0, 0, 0};
    const struct {
        const char* name;
        Screen screen;
        GifFrame frame;
        Bytes indices, opacities;
    } cases[] = {
        {"background", {.background = 3}, inside(), {3, 3, 3, 3, 3, 1, 2, 3, 3, 3, 3, 3}, {}},
        {"no such color", {.background = 4}, inside(), on0, around},
        {"background of another table", {.background = 3}, inside(-1, 8), on0, around},
        {"transparent index",
         {.background = 3},
         inside(2),
         {2, 2, 2, 2, 2, 1, 2, 2, 2, 2, 2, 2},
         {0, 0, 0, 0, 0, 255, 0, 0, 0, 0, 0, 0}},
        {"transparent but unused", {2, 1}, {0, 0, 2, 1, {1, 2}, 0, false, 0}, {1, 2}, {}},
        {"larger than its screen", {1, 1}, inside(), {0, 0, 0, 0, 1, 2}, {}}};
    for (const auto& c : cases) {
        const Picture picture = PictureFromBytes(MakeGif(c.screen, {c.frame}));
        EXPECT_EQ(PixelsOf(picture), c.indices) << c.name;
        EXPECT_EQ(OpacitiesOf(picture), c.opacities) << c.name;
    }
}

TEST(ReadGif, OnlyATransparentIndexMayLiePastTheTable) {
    const auto with = [](const Bytes& indices) {
        const GifFrame frame = {.columns = 2, .rows = 1, .indices = indices, .transparent = 3};
        Bytes file = MakeGif({2, 1, 4}, {frame});
        file[10] = static_cast<std::uint8_t>(file[10] & ~7); // the table's size: from 4 to 2 colors
        file.erase(file.begin() + 13, file.begin() + 19);
        return file;
    };
    const Picture picture = PictureFromBytes(with({3, 1}));
    EXPECT_EQ(picture.colors, 4);
    EXPECT_EQ(OpacitiesOf(picture), (Bytes{0, 255}));
    EXPECT_EQ(RefusalOf(with({3, 2})),
              "is a damaged GIF picture: a pixel has colour 2 of a table of 2");
}

TEST(ReadGif, FirstPictureAndFirstCommentCount) {
    const Bytes one = RandomBytes(12, 2, 4), other = RandomBytes(12, 3, 4);
    const std::string text(300, 'x');
    const GifFrame frames[] = {{.indices = one},
                               {.indices = other, .transparent = 1, .comment = text + "\xE9"},
                               {.indices = other, .comment = "later"}};
    const Picture picture = PictureFromBytes(MakeGif({}, {std::begin(frames), std::end(frames)}));
    EXPECT_EQ(PixelsOf(picture), one);
    EXPECT_EQ(picture.comment, text + "\xC3\xA9");
    EXPECT_EQ(picture.notes.pictures, 3);
    EXPECT_EQ(picture.notes.format, "GIF");
    EXPECT_EQ(picture.notes.bits, 2);
    EXPECT_TRUE(picture.channels.empty());
}

TEST(ReadGif, DamageIsRefusedOrHarmless) {
    const Bytes indices = RandomBytes(12, 4, 4);
    const Bytes file =
        MakeGif({6, 3, 4}, {{.left = 1, .indices = indices, .interlaced = true, .comment = "c"},
                            {.indices = indices, .transparent = 2}});
    EXPECT_GT(CountNoticedDamage(file), 100U);
    EXPECT_EQ(RefusalOf(Join({file, Bytes(9, 0x55)})), "");
}

TEST(ReadGif, RefusalsSayWhy) {
    const GifFrame frame = {.columns = 2, .rows = 1, .indices = {1, 2}};
    const Bytes file = MakeGif({2, 1, 4}, {frame});
    EXPECT_EQ(RefusalOf(Bytes(file.begin(), file.end() - 3)),
              "is a damaged GIF picture: the file ends before the picture does");
    for (const int missing : {1, 2}) // the trailer; the empty block before it
        EXPECT_EQ(ComplaintAbout(Bytes(file.begin(), file.end() - missing)),
                  "all pixels were read, but behind them the file is damaged: its end is missing");
    EXPECT_EQ(RefusalOf(MakeGif({2, 1, 4}, {})),
              "is a damaged GIF picture: there is no picture in it");
    EXPECT_EQ(RefusalOf(MakeGif({40000, 1, 4}, {frame})),
              "is 40000 x 1 pixels; sides above 32767 cannot be stored");
    Bytes bare = file;
    bare[10] = 0; // the screen's flags
    bare.erase(bare.begin() + 13, bare.begin() + 25);
    EXPECT_EQ(RefusalOf(bare), "is a damaged GIF picture: its first picture has no colour table");
}
