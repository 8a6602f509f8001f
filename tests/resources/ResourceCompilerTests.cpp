// The resource compiler: bytes of every type, its refusals, and the module's own resources.
#include "CompileResources.h"
#include "PictureResource.h"
#include "ResourceManager.h"
#include "TemporaryFolder.h"

#include <array>
#include <random>

#include <gtest/gtest.h>
#include <png.h>

namespace {

using gif89::Bytes;

/// "0C 00 'text'": pairs of hexadecimal digits, and text in single quotes.
Bytes FromHex(const std::string& hex) {
    Bytes bytes;
    for (std::size_t i = 0; i < hex.size(); ++i) {
        if (hex[i] == ' ') continue;
        if (hex[i] == '\'') {
            for (++i; hex[i] != '\''; ++i) bytes.push_back(static_cast<std::uint8_t>(hex[i]));
            continue;
        }
        bytes.push_back(static_cast<std::uint8_t>(std::stoi(hex.substr(i++, 2), nullptr, 16)));
    }
    return bytes;
}

/// An open resource file.
class OpenFile {
  public:
    explicit OpenFile(const std::string& path) : refNum(OpenResFile(path)) {
        EXPECT_GT(refNum, 0) << path;
    }
    OpenFile(const OpenFile&) = delete;
    OpenFile& operator=(const OpenFile&) = delete;
    ~OpenFile() { CloseResFile(refNum); }

    Bytes Data(const char (&type)[5], int id) const {
        const Handle handle = GetResource(FourCC(type), static_cast<std::int16_t>(id));
        EXPECT_TRUE(handle) << "no " << type << " " << id;
        return handle ? Bytes(*handle, *handle + GetHandleSize(handle)) : Bytes();
    }

  private:
    std::int16_t refNum;
};

class ResourceCompiler : public testing::Test {
  protected:
    Bytes Compile(const std::string& source) {
        return gif89::CompileResources({folder.Write("text.r", source)}, {{"VERSION", "1.2"}});
    }
    OpenFile CompileAndOpen(const std::string& source) {
        const Bytes file = Compile(source);
        return OpenFile(folder.Write("compiled", std::string(file.begin(), file.end())));
    }
    /// What the compiler says, with the folder's path cut away; empty when it accepts the source.
    std::string Refusal(const std::string& source) {
        try {
            Compile(source);
            return "";
        } catch (const std::exception& error) {
            std::string message = error.what();
            for (std::size_t at; (at = message.find(folder.Path() + "/")) != std::string::npos;)
                message.erase(at, folder.Path().size() + 1);
            return message;
        }
    }
    void WritePNG(const std::string& name, int columns, int rows, const Bytes& pixels,
                  png_uint_32 format = PNG_FORMAT_RGB) {
        png_image image = {};
        image.version = PNG_IMAGE_VERSION;
        image.width = static_cast<png_uint_32>(columns);
        image.height = static_cast<png_uint_32>(rows);
        image.format = format;
        ASSERT_TRUE(png_image_write_to_file(&image, folder.Path(name).c_str(), 0, pixels.data(), 0,
                                            nullptr));
    }
    TemporaryFolder folder;
};

TEST_F(ResourceCompiler, WritesAStringListAsTheseBytes) {
    Bytes expected = FromHex("00000100 0000010C 0000000C 00000032"); // offsets and lengths
    expected.resize(256);
    const std::string rest = "00000008 0002 02'Hi' 02C3A9"         // data
                             "00000100 0000010C 0000000C 00000032" // map: header again
                             "00000000 0000 0000 001C 0032"        // type and name lists
                             "0000 'STR#' 0000 000A"               // one type, one resource
                             "0080 FFFF 00000000 00000000";        // its reference
    for (const std::uint8_t byte : FromHex(rest)) expected.push_back(byte);
    EXPECT_EQ(Compile("# a comment\nstrings 128 { \"Hi\" \"\xC3\xA9\" }"), expected);
}

TEST_F(ResourceCompiler, GivesTheSameBytesWhateverTheOrderOfItsInputs) {
    const std::string first = folder.Write("a.r", "strings 2 { \"x\" } strings -1 { }");
    const std::string second = folder.Write("b.r", "bytes \"DATA\" 2 { \"FF\" }");
    EXPECT_EQ(gif89::CompileResources({first, second}, {}),
              gif89::CompileResources({second, first}, {}));
}

TEST_F(ResourceCompiler, LaysOutDialogsMenusAndCursorsByTheBook) {
    const OpenFile file = CompileAndOpen(R"(
        dialog 300 "Title" size 200 100 {
            1 button "OK"  at 10 20 size 80 16
            2 static "v${VERSION} \"^0\"" at 0 0 size 1 1 disabled
            3 user at 1 2 size 3 4 disabled
            4 popup 301 at 5 6 size 10 10
            5 picture 302 at 0 0 size 1 1
            6 edit "" at 0 0 size 1 1
            7 check "A" at 0 0 size 1 1
            8 radio "B" at 0 0 size 1 1
            9 control 303 at 0 0 size 1 1
        }
        alert 400 size 10 20 { }
        menu 301 "M" { "One" "Two" disabled separator "Four" }
        control 303 "C" at 1 2 size 3 4 value 5 min -6 max 7 kind 16
        bytes "PICT" 302 { "00 ff" "A0" }
        cursor 304 hotspot 3 15 {
            "#o.............." "................" "................" "................"
            "................" "................" "................" "................"
            "................" "................" "................" "................"
            "................" "................" "................" "oooooooooooooooo" })");
    EXPECT_EQ(file.Data("DLOG", 300),
              FromHex("0000 0000 0064 00C8 0005 0000 0000 00000000 012C 05'Title'"));
    EXPECT_EQ(file.Data("DITL", 300), FromHex("0008"
                                              "00000000 0014 000A 0024 005A 04 02'OK'"
                                              "00000000 0000 0000 0001 0001 88 09'v1.2 \"^0\"' 00"
                                              "00000000 0002 0001 0006 0004 80 00"
                                              "00000000 0006 0005 0010 000F 07 02 012D"
                                              "00000000 0000 0000 0001 0001 40 02 012E"
                                              "00000000 0000 0000 0001 0001 10 00"
                                              "00000000 0000 0000 0001 0001 05 01'A' 00"
                                              "00000000 0000 0000 0001 0001 06 01'B' 00"
                                              "00000000 0000 0000 0001 0001 07 02 012F"));
    EXPECT_EQ(file.Data("CNTL", 301),
              FromHex("0006 0005 0010 000F 0000 0100 0000 012D 03F0 00000000 00"));
    EXPECT_EQ(file.Data("ALRT", 400), FromHex("0000 0000 0014 000A 0190 5555"));
    EXPECT_EQ(file.Data("DITL", 400), FromHex("FFFF"));
    EXPECT_EQ(file.Data("MENU", 301),
              FromHex("012D 0000 0000 0000 0000 FFFFFFF3 01'M' 03'One' 00000000 03'Two' 00000000"
                      "01'-' 00000000 04'Four' 00000000 00"));
    EXPECT_EQ(file.Data("CNTL", 303),
              FromHex("0002 0001 0006 0004 0005 0100 0007 FFFA 0010 00000000 01'C'"));
    EXPECT_EQ(file.Data("PICT", 302), FromHex("00FFA0"));
    Bytes cursor(68);
    cursor[0] = 0x80;
    cursor[32] = 0xC0;
    cursor[62] = cursor[63] = 0xFF;
    cursor[65] = 15; // the hotspot, vertical first
    cursor[67] = 3;
    EXPECT_EQ(file.Data("CURS", 304), cursor);
}

TEST_F(ResourceCompiler, SaysWhereAndWhatIsWrong) {
    WritePNG("clear.png", 2, 2, Bytes(16, 127), PNG_FORMAT_RGBA);
    WritePNG("wide.png", 3, 2, Bytes(18));
    Bytes colorful;
    for (int i = 0; i < 257; ++i)
        for (const int channel : {i & 0xFF, i >> 8, 0})
            colorful.push_back(static_cast<std::uint8_t>(channel));
    WritePNG("colors.png", 257, 1, colorful);
    const std::string dialog = "dialog 1 \"T\" size 9 9 {\n", longest(255, 'x');
    EXPECT_EQ(Refusal("strings 1 { \"" + longest + "\" }"), "");
    const std::pair<std::string, std::string> cases[] = {
        {"strings 1 {\n\"" + longest + "x\" }", "2: the text has 256 bytes"},
        {"\nfoo 1", "2: 'foo' stands here, expected one of strings, dialog"},
        {"strings 40000 { }", "1: '40000' stands here, expected a resource id"},
        {"strings 1 { }\nstrings 1 { }", "2: the file has a STR# 1 already (text.r:1)"},
        {"strings 1 { \"a\n\" }", "1: the line ends inside a text"},
        {"strings 1 { \"a\"\n", "2: the file ends here"},
        {"strings 1 { \"${NAME}\" }", "1: ${NAME} stands for nothing"},
        {"# \xC3\xA9\n# \xC0\xAF", "2: a byte is no part of a character"},
        {"strings 1x { }", "1: '1' begins something that is no number"},
        {dialog + "2 user at 0 0 size 1 1 }", "2: the item's number is 2"},
        {dialog + "1 user at 32000 0 size 800 1 }", "2: '800' stands here"},
        {dialog + "1 popup 77 at 0 0 size 1 1 }", "2: the item refers to MENU 77"},
        {"cursor 1 hotspot 0 0 {\n\"#\" }", "2: the row is \"#\""},
        {"palette 1 { color 0 0 0 }", "1: the palette has 1 entries"},
        {"bytes \"LONGER\" 1 { }", "1: the type is \"LONGER\""},
        {"bytes \"DATA\" 1 { \"0\" }", "1: the row is no list of bytes"},
        {"picture 1 \"no.png\" size 1 1", "1: no.png cannot be read (No such file or directory)"},
        {"picture 1\n\"clear.png\" size 1 1", "2: clear.png has see-through pixels"},
        {"picture 1 \"wide.png\" size 1 1", "1: wide.png has 3 x 2 pixels"},
        {"picture 1 \"colors.png\" size 257 1", "1: colors.png has more than 256 colours"}};
    for (const auto& [source, reason] : cases) {
        const std::string refusal = Refusal(source);
        EXPECT_TRUE(refusal.starts_with("text.r:" + reason)) << source << '\n' << refusal;
        EXPECT_NE(refusal.find(", expected "), std::string::npos) << refusal;
    }
    EXPECT_THROW(gif89::CompileResources({folder.Path("missing.r")}, {}), gif89::SourceError);
}

TEST_F(ResourceCompiler, KeepsEveryPixelOfAPicture) {
    constexpr unsigned kSeed = 20;
    std::mt19937 random(kSeed);
    const std::tuple<int, int, int, int, unsigned> cases[] = {
        // one pixel in so many differs
        {1, 1, 1, 1, 1},     {48, 48, 2, 9, 4},   {250, 3, 1, 2, 2},
        {252, 5, 1, 256, 1}, {900, 3, 3, 3, 200}, {260, 4, 4, 2, 128}};
    for (const auto& [columns, rows, scale, colors, repeat] : cases) {
        Bytes rgb;
        std::vector<std::uint32_t> pixels;
        for (int i = 0; i < columns * rows; ++i) {
            if (i == 0 || random() % repeat == 0)
                pixels.push_back(random() % static_cast<unsigned>(colors) * 0x01FF01 & 0xFFFFFF);
            else
                pixels.push_back(pixels.back());
            for (const int shift : {16, 8, 0})
                rgb.push_back(static_cast<std::uint8_t>(pixels.back() >> shift));
        }
        WritePNG("art.png", columns, rows, rgb);
        const OpenFile file =
            CompileAndOpen("picture 9 \"art.png\" size " + std::to_string(columns / scale) + " " +
                           std::to_string(rows / scale));
        const Bytes bytes = file.Data("PICT", 9);
        Bytes frame;
        gif89::PutRect(frame, {0, 0, static_cast<std::int16_t>(rows / scale),
                               static_cast<std::int16_t>(columns / scale)});
        EXPECT_EQ(Bytes(&bytes[2], &bytes[10]), frame);
        EXPECT_EQ(bytes[72] * 256 + bytes[73], 72 * scale) << "resolution";
        const auto decoded = DecodePicture(bytes);
        ASSERT_TRUE(decoded);
        EXPECT_TRUE(decoded->rows == rows && decoded->columns == columns);
        EXPECT_TRUE(decoded->pixels == pixels) << columns << " x " << rows << ", seed " << kSeed;
    }
}

TEST(ModuleResources, HoldTheFixedPalette) {
    const OpenFile file(MODULE_RESOURCES);
    // A cube counted down in base six, then the multiples of 17 that are none of 51.
    std::vector<std::array<int, 3>> colors;
    for (int code = 215; code > 0; --code)
        colors.push_back({code / 36 * 51, code / 6 % 6 * 51, code % 6 * 51});
    for (const int channels : {0b100, 0b010, 0b001, 0b111})
        for (int step = 15; step > 0; --step)
            if (step % 3 != 0)
                colors.push_back({(channels >> 2 & 1) * step * 17, (channels >> 1 & 1) * step * 17,
                                  (channels & 1) * step * 17});
    colors.push_back({0, 0, 0});
    ASSERT_EQ(colors.size(), 256U);
    const Bytes planes = file.Data("PLUT", 3);
    ASSERT_EQ(planes.size(), 768U);
    for (std::size_t i = 0; i < 256; ++i)
        for (std::size_t channel = 0; channel < 3; ++channel)
            EXPECT_EQ(planes[channel * 256 + i], colors[i][channel]) << i << " channel " << channel;
}

TEST(ModuleResources, HoldTheVersion) {
    const OpenFile file(MODULE_RESOURCES);
    const Bytes about = file.Data("DITL", 16010);
    EXPECT_NE(std::string(about.begin(), about.end()).find("Version " PROJECT_VERSION),
              std::string::npos);
}

} // namespace
