// The command line as its users meet it: files, streams, exit codes, sentences.
#include "DecodeGif.h"
#include "RunProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

using gif89::DecodedGif;
using gif89::DecodeGif;

namespace {

using Names = std::vector<std::string>;

DecodedGif Decode(const std::string& bytes) {
    return DecodeGif({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

// Three pixels beside each other.
const std::string kPicture = "P6 3 1 255\n\x0A\x14\x1E\xFF\xFF\xFF\xC8\x64\x32";

std::string NoisePicture(int side) {
    std::string picture = "P6 " + std::to_string(side) + ' ' + std::to_string(side) + " 255\n";
    std::mt19937 random(7);
    for (int i = 0; i < side * side * 3; ++i) picture += static_cast<char>(random());
    return picture;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

TEST(CommandLine, WritesTheGifBesideItsInputUnderItsName) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("photo.v2.ppm", kPicture);
    const ProgramRun run = RunProgram("gif89", {input});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(Contains(run.errors, "photo.v2.gif")) << run.errors;
    EXPECT_EQ(folder.Names(), (Names{"photo.v2.gif", "photo.v2.ppm"}));

    // White, the two others in descending order, black: the exact palette.
    const DecodedGif gif = Decode(folder.Read("photo.v2.gif"));
    EXPECT_TRUE(gif.interlaced);
    const int expected[] = {2, 0, 1};
    for (std::size_t x = 0; x < 3; ++x) EXPECT_EQ(gif.indices[x], expected[x]) << "column " << x;
    EXPECT_EQ(TableEntry(gif.table, 1).red, 0xC8);
    EXPECT_EQ(TableEntry(gif.table, 2).blue, 0x1E);
}

TEST(CommandLine, WritesWhereTheOptionsSay) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("a.ppm", kPicture);
    std::filesystem::create_directory(folder.Path("out"));
    const std::string strange = "-odd\nname \xFF";
    const struct {
        Names arguments;
        std::string written; // relative to the folder; empty is standard output
    } cases[] = {
        {{"-q", "-o", folder.Path("named.gif"), input}, "named.gif"},
        {{"-q", "--output=" + folder.Path("equal.gif"), input}, "equal.gif"},
        {{"-qO", folder.Path("out"), input}, "out/a.gif"},
        {{"-qo", folder.Path(strange), "--", "a.ppm"}, strange},
        {{"-q", "-o", "-", input}, ""},
        {{"-q", "-"}, ""},
        {{"-q", "-o", folder.Path("piped.gif"), "-"}, "piped.gif"},
        {{"-qO", folder.Path("out"), "-"}, "out/stdin.gif"},
    };
    std::string first;
    for (const auto& c : cases) {
        const ProgramRun run = RunProgram("gif89", c.arguments, {folder.Path(), input});
        EXPECT_EQ(run.exitCode, 0) << c.written << ": " << run.errors;
        EXPECT_EQ(run.errors, "") << c.written;
        const std::string bytes = c.written.empty() ? run.output : folder.Read(c.written);
        ASSERT_NO_THROW(Decode(bytes)) << c.written;
        if (first.empty()) first = bytes;
        EXPECT_EQ(bytes, first) << c.written;
    }
}

TEST(CommandLine, ReplacesAFileOnlyWhenToldTo) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("a.ppm", kPicture);
    folder.Write("a.gif", "old");
    const ProgramRun kept = RunProgram("gif89", {input});
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_TRUE(Contains(kept.errors, "a.ppm: exists already; -f replaces it")) << kept.errors;
    EXPECT_EQ(folder.Read("a.gif"), "old");

    EXPECT_EQ(RunProgram("gif89", {"-f", input}).exitCode, 0);
    EXPECT_NO_THROW(Decode(folder.Read("a.gif")));

    // The input is read before the output takes its place.
    folder.Write("same", kPicture);
    EXPECT_EQ(RunProgram("gif89", {"-f", "-o", folder.Path("same"), folder.Path("same")}).exitCode,
              0);
    EXPECT_NO_THROW(Decode(folder.Read("same")));
}

TEST(CommandLine, GoesOnAfterABadInput) {
    const TemporaryFolder folder;
    folder.Write("good.ppm", kPicture);
    folder.Write("bad.png", "\x89PNG\r\n\x1A\nrubbish");
    folder.Write("short.ppm", kPicture.substr(0, kPicture.size() - 1));
    folder.Write("good.pnm", kPicture); // would be written over good.gif
    const ProgramRun run = RunProgram(
        "gif89", {"-f", "absent.png", "bad.png", "short.ppm", ".", "good.ppm", "good.pnm"},
        {folder.Path(), {}});
    EXPECT_EQ(run.exitCode, 1);
    for (const char* bad : {"absent.png: ", "bad.png: ", "short.ppm: ", ".: ", "good.pnm: another"})
        EXPECT_TRUE(Contains(run.errors, std::string("gif89: ") + bad)) << bad << '\n'
                                                                        << run.errors;
    EXPECT_EQ(folder.Names(), (Names{"bad.png", "good.gif", "good.pnm", "good.ppm", "short.ppm"}));
}

TEST(CommandLine, RefusesWrongUsageWithCodeTwo) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("a.ppm", kPicture);
    const Names cases[] = {{},
                           {"--unknown", input},
                           {"-x", input},
                           {"-o"},
                           {"-o", "x.gif", "-O", "out", input},
                           {"-o", "x.gif", input, input},
                           {"--mode", "sepia", input},
                           {"--quiet=yes", input}};
    for (const Names& arguments : cases) {
        const ProgramRun run = RunProgram("gif89", arguments, {folder.Path(), {}});
        const std::string last = arguments.empty() ? "nothing" : arguments.front();
        EXPECT_EQ(run.exitCode, 2) << last;
        EXPECT_TRUE(run.errors.starts_with("gif89: ")) << last << ": " << run.errors;
        EXPECT_EQ(run.output, "") << last;
    }
    EXPECT_EQ(folder.Names(), Names{"a.ppm"});
    EXPECT_EQ(RunProgram("gif89", {"--help"}).exitCode, 0);
    EXPECT_TRUE(RunProgram("gif89", {"--version"}).output.starts_with("gif89 "));
}

TEST(CommandLine, KeepsTheOldFileWhenTheDiskRefuses) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("noise.ppm", NoisePicture(300));
    folder.Write("noise.gif", "old");
    const ProgramRun cut = RunProgram("gif89", {"-f", input}, {{}, {}, 20000});
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_TRUE(Contains(cut.errors, "the disk is full")) << cut.errors;
    EXPECT_EQ(folder.Read("noise.gif"), "old");
    EXPECT_EQ(folder.Names(), (Names{"noise.gif", "noise.ppm"}));

    EXPECT_EQ(RunProgram("gif89", {"-O", folder.Path("absent"), input}).exitCode, 1);
    EXPECT_EQ(RunProgram("gif89", {"-f", "-o", "/dev/full", input}).exitCode, 1);
    EXPECT_EQ(RunProgram("gif89", {"-f", "-o", "/dev/null", input}).exitCode, 0);
    EXPECT_EQ(folder.Names(), (Names{"noise.gif", "noise.ppm"}));
}

TEST(CommandLine, NamesAsLongAsNamesCanBeKeepTheirSuffix) {
    const TemporaryFolder folder;
    const std::string longest(251, 'n');
    RunProgram("gif89", {folder.Write(longest + ".ppm", kPicture)});
    EXPECT_NO_THROW(Decode(folder.Read(longest + ".gif")));
    // 255 bytes without an extension, of which some must give way; the cut splits no character.
    std::string accents = "xx";
    while (accents.size() < 254) accents += "\xC3\xA9";
    accents.resize(254);
    RunProgram("gif89", {folder.Write(accents, kPicture)});
    EXPECT_NO_THROW(Decode(folder.Read(accents.substr(0, 250) + ".gif")));
}

// Grey levels 0, 128 and 255 beside each other, on two rows.
const std::string kGrey("P5 3 2 255\n\x00\x80\xFF\xFF\x80\x00", 17);

TEST(CommandLine, KeepsAnIndexedPicturesIndicesAndTable) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("grey.pgm", kGrey);
    ASSERT_EQ(RunProgram("gif89", {"-q", "--no-interlace", "--comment", "by hand", input}).exitCode,
              0);
    const DecodedGif gif = Decode(folder.Read("grey.gif"));
    EXPECT_FALSE(gif.interlaced);
    EXPECT_EQ(gif.comment, "by hand");
    EXPECT_EQ(gif.transparentIndex, -1);
    const std::vector<int> expected = {0, 128, 255, 255, 128, 0};
    EXPECT_EQ(std::vector<int>(gif.indices.get(), gif.indices.get() + 6), expected);
    for (int i = 0; i < 256; ++i) EXPECT_EQ(TableEntry(gif.table, i).green, i);
}

TEST(CommandLine, MakesIndexedPicturesTransparentAsAsked) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("grey.pgm", kGrey);
    const std::string mask =
        folder.Write("mask.pgm", std::string("P5 3 2 255\n\xFF\x7F\x80\x00\xFF\xFF", 17));
    const struct {
        Names choices;
        std::string hidden; // a letter for each pixel: x hidden, . shown
    } cases[] = {{{"--transparent", "128"}, ".x..x."},
                 {{"--transparent", "#000000,255"}, "x.xx.x"},
                 {{"--channel", "cut=" + mask, "--alpha", "cut"}, ".x.x.."},
                 {{"--channel", "cut=" + mask, "--alpha", "1", "--invert"}, "x.x.xx"},
                 {{"--channel", "Transparency=" + mask}, ".x.x.."},
                 {{"--channel", "Transparency=" + mask, "--opaque"}, "......"}};
    for (const auto& c : cases) {
        Names arguments = {"-qf", "--matte", "1,2,3", input};
        if (c.hidden == "......") arguments = {"-qf", input};
        arguments.insert(arguments.end(), c.choices.begin(), c.choices.end());
        const ProgramRun run = RunProgram("gif89", arguments);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const DecodedGif gif = Decode(folder.Read("grey.gif"));
        std::string hidden;
        for (int i = 0; i < 6; ++i) {
            const int index = gif.indices[static_cast<std::size_t>(i)];
            hidden += index == gif.transparentIndex ? 'x' : '.';
            if (hidden.back() == '.') {
                EXPECT_EQ(TableEntry(gif.table, index).red,
                          static_cast<std::uint8_t>(
                              kGrey[kGrey.size() - 6 + static_cast<std::size_t>(i)]));
            }
        }
        EXPECT_EQ(hidden, c.hidden) << c.choices.back();
        if (gif.transparentIndex >= 0) {
            EXPECT_EQ(TableEntry(gif.table, gif.transparentIndex).blue, 3);
        }
    }
}

TEST(CommandLine, RefusesWhatTheDialogsWouldNotAllow) {
    const TemporaryFolder folder;
    folder.Write("grey.pgm", kGrey);
    folder.Write("rgb.ppm", kPicture);
    folder.Write("noise.ppm", NoisePicture(40));
    folder.Write("bad.pal", "RIFF, or what else");
    const struct {
        Names arguments;
        int code;
        std::string reason;
    } cases[] = {
        {{"--transparent", "256", "grey.pgm"}, 2, "no entry 256; its entries are 0 to 255"},
        {{"--transparent", "#123456", "grey.pgm"}, 2, "has the colour #123456"},
        {{"--transparent", "red", "grey.pgm"}, 2, "is no entry"},
        {{"--alpha", "cut", "grey.pgm"}, 2, "no channel \"cut\""},
        {{"--invert", "grey.pgm"}, 2, "--invert needs a channel"},
        {{"--matte", "1,2,3", "grey.pgm"}, 2, "needs transparency"},
        {{"--matte", "1,2", "grey.pgm"}, 2, "is no colour"},
        {{"-n", "16", "grey.pgm"}, 2, "need --mode rgb"},
        {{"--alpha", "a", "--opaque", "grey.pgm"}, 2, "exclude each other"},
        {{"--mode", "indexed", "rgb.ppm"}, 2, "has no palette"},
        {{"--transparent", "1", "rgb.ppm"}, 2, "are for indexed pictures"},
        {{"-p", "exact", "noise.ppm"}, 2, "too many colours"},
        {{"-p", "exact", "-n", "4", "rgb.ppm"}, 2, "leave out -n"},
        {{"-n", "1", "noise.ppm"}, 2, "expected 2 to 256"},
        {{"--resize", "noise.ppm"}, 2, "--resize needs a palette"},
        {{"-p", "absent.pal", "rgb.ppm"}, 1, "absent.pal cannot be opened"},
        {{"-p", "bad.pal", "rgb.ppm"}, 1, "palette"}};
    const Names before = folder.Names();
    for (const auto& c : cases) {
        const ProgramRun run = RunProgram("gif89", c.arguments, {folder.Path(), {}});
        EXPECT_EQ(run.exitCode, c.code) << c.reason << ": " << run.errors;
        EXPECT_TRUE(Contains(run.errors, c.reason)) << run.errors;
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        EXPECT_EQ(folder.Names(), before) << c.reason;
    }
}

TEST(CommandLine, ReducesToThePaletteAskedFor) {
    const TemporaryFolder folder;
    const std::string input = folder.Write("noise.ppm", NoisePicture(40));
    std::string table;
    for (int i = 0; i < 256; ++i) table += {static_cast<char>(i), static_cast<char>(255 - i), '\7'};
    const std::string file = folder.Write("own.zct", table);
    const struct {
        Names choices;
        int entries; // of the written table
        PackedColor second;
    } cases[] = {{{"-p", "adaptive", "-n", "16"}, 16, 0},
                 {{"-n", "8"}, 8, 0},
                 {{"-p", "fixed"}, 256, 0xFFFFCC},
                 {{"-p", file}, 256, 0x01FE07},
                 {{"-p", file, "-n", "4", "--resize"}, 4, 0}};
    for (const auto& c : cases) {
        Names arguments = {"-qf", input};
        arguments.insert(arguments.end(), c.choices.begin(), c.choices.end());
        const ProgramRun run = RunProgram("gif89", arguments);
        ASSERT_EQ(run.exitCode, 0) << run.errors;
        const DecodedGif gif = Decode(folder.Read("noise.gif"));
        EXPECT_EQ(gif.colors, c.entries) << c.choices.back();
        const PackedColor second = PackColor(TableEntry(gif.table, 1));
        if (c.second != 0) {
            EXPECT_EQ(second, c.second) << c.choices.back();
        }
        if (c.choices.back() == "--resize") {
            EXPECT_EQ(second & 0xFF, 7U) << "a colour of the file";
        }
    }
}

} // namespace
