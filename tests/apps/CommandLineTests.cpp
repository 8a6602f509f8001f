// The command line as its users meet it: files, streams, exit codes, sentences.
#include "DecodeGif.h"
#include "RunProgram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <csignal>
#include <cstdlib>
#include <random>
#include <sstream>

using gif89::DecodedGif;
using gif89::DecodeGif;

namespace {

using Names = std::vector<std::string>;

DecodedGif Decode(const std::string& bytes) {
    return DecodeGif({reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size()});
}

std::vector<int> IndicesOf(const DecodedGif& gif, int count) {
    return {gif.indices.get(), gif.indices.get() + count};
}

// Three pixels beside each other.
const std::string kPicture = "P6 3 1 255\n\x0A\x14\x1E\xFF\xFF\xFF\xC8\x64\x32";

std::string NoisePicture(int side) {
    std::string picture = "P6 " + std::to_string(side) + ' ' + std::to_string(side) + " 255\n";
    std::mt19937 random(7);
    for (int i = 0; i < side * side * 3; ++i) picture += static_cast<char>(random());
    return picture;
}

Names Join(Names first, const Names& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

bool Contains(const std::string& text, const std::string& part) {
    return text.find(part) != std::string::npos;
}

class CommandLine : public testing::Test {
  protected:
    /// Runs the program in the folder.
    ProgramRun Run(const Names& arguments) {
        return RunProgram("gif89", arguments, {folder.Path(), {}});
    }
    /// Runs it and decodes the file it should have written.
    DecodedGif Convert(const Names& arguments, const std::string& written) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exitCode, 0) << run.errors;
        return Decode(folder.Read(written));
    }
    TemporaryFolder folder;
};

TEST_F(CommandLine, WritesTheGifBesideItsInputUnderItsName) {
    const ProgramRun run = RunProgram("gif89", {folder.Write("photo.v2.ppm", kPicture)});
    EXPECT_EQ(run.exitCode, 0) << run.errors;
    EXPECT_EQ(run.output, "");
    EXPECT_TRUE(Contains(run.errors, "photo.v2.gif")) << run.errors;
    EXPECT_EQ(folder.Names(), (Names{"photo.v2.gif", "photo.v2.ppm"}));

    // Few colours are kept as they are, in the order in which they appear.
    EXPECT_EQ(IndicesOf(Decode(folder.Read("photo.v2.gif")), 3), (std::vector<int>{0, 1, 2}));
}

TEST_F(CommandLine, WritesWhereTheOptionsSay) {
    const std::string input = folder.Write("a.ppm", kPicture);
    std::filesystem::create_directory(folder.Path("out"));
    const std::string strange = "-odd\nname \xFF";
    const std::pair<Names, std::string> cases[] = {
        {{"-q", "--output=equal.gif", input}, "equal.gif"},
        {{"-qO", "out", input}, "out/a.gif"},
        {{"-qo", strange, "--", "a.ppm"}, strange},
        {{"-qo", "-", input}, ""}, // to standard output
        {{"-q", "-"}, ""},
        {{"-qo", "piped.gif", "-"}, "piped.gif"},
        {{"-qO", "out", "-"}, "out/stdin.gif"}};
    std::string first;
    for (const auto& [arguments, written] : cases) {
        const ProgramRun run = RunProgram("gif89", arguments, {folder.Path(), input});
        EXPECT_EQ(run.exitCode, 0) << written << ": " << run.errors;
        EXPECT_EQ(run.errors, "") << written;
        const std::string bytes = written.empty() ? run.output : folder.Read(written);
        ASSERT_NO_THROW(Decode(bytes)) << written;
        if (first.empty()) first = bytes;
        EXPECT_EQ(bytes, first) << written;
    }
}

TEST_F(CommandLine, ReplacesAFileOnlyWhenToldTo) {
    folder.Write("a.ppm", kPicture);
    folder.Write("a.gif", "old");
    const ProgramRun kept = Run({"a.ppm"});
    EXPECT_EQ(kept.exitCode, 1);
    EXPECT_TRUE(Contains(kept.errors, "gif89: a.gif: exists already; -f replaces it"))
        << kept.errors;
    EXPECT_EQ(folder.Read("a.gif"), "old");
    EXPECT_NO_THROW(Convert({"-f", "a.ppm"}, "a.gif"));
    // The input is read before the output takes its place, which it does where nothing is lost.
    EXPECT_NO_THROW(Convert({"-f", "-o", "a.ppm", "a.ppm"}, "a.ppm"));
    const std::string deep = "P6 1 1 65535\n123456";
    folder.Write("deep.ppm", deep);
    std::filesystem::create_symlink("deep.ppm", folder.Path("link.ppm"));
    folder.Write("mask.pgm", "P5 3 1 255\nabc");
    const std::pair<Names, const char*> cases[] = {
        {{"-f", "-o", "deep.ppm", "deep.ppm"}, "gif89: deep.ppm: is the picture's own file"},
        {{"-f", "-o", "link.ppm", "deep.ppm"}, "gif89: link.ppm: is the picture's own file"},
        {{"-f", "-o", "mask.pgm", "--channel", "cut=mask.pgm", "a.ppm"}, "mask.pgm: is read by"},
        {{"-f", "a.ppm", "a.gif"}, "gif89: a.gif: is read by this call, too"}};
    for (const auto& [arguments, reason] : cases) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exitCode, 2) << reason;
        EXPECT_TRUE(Contains(run.errors, reason)) << run.errors;
        EXPECT_FALSE(Contains(run.errors, "another input")) << "nothing was written before";
        EXPECT_EQ(folder.Read("deep.ppm"), deep);
    }
}

TEST_F(CommandLine, GoesOnAfterABadInput) {
    folder.Write("good.ppm", kPicture);
    folder.Write("bad.png", "\x89PNG\r\n\x1A\nrubbish");
    folder.Write("short.ppm", kPicture.substr(0, kPicture.size() - 1));
    folder.Write("good.pnm", kPicture); // would be written over good.gif
    const ProgramRun run =
        Run({"-f", "absent.png", "bad.png", "short.ppm", ".", "good.ppm", "good.pnm"});
    EXPECT_EQ(run.exitCode, 1);
    for (const char* bad : {"absent.png: ", "bad.png: ", "short.ppm: ", ".: ", "good.pnm: another"})
        EXPECT_TRUE(Contains(run.errors, std::string("gif89: ") + bad)) << bad << '\n'
                                                                        << run.errors;
    EXPECT_EQ(folder.Names(), (Names{"bad.png", "good.gif", "good.pnm", "good.ppm", "short.ppm"}));
}

TEST_F(CommandLine, KeepsTheOldFileWhenTheDiskRefuses) {
    const std::string input = folder.Write("noise.ppm", NoisePicture(300));
    folder.Write("noise.gif", "old");
    const ProgramRun cut = RunProgram("gif89", {"-f", input}, {{}, {}, 20000});
    EXPECT_EQ(cut.exitCode, 1);
    EXPECT_TRUE(Contains(cut.errors, "noise.gif: cannot be written: File too large")) << cut.errors;
    EXPECT_EQ(folder.Read("noise.gif"), "old");
    EXPECT_EQ(folder.Names(), (Names{"noise.gif", "noise.ppm"}));

    EXPECT_EQ(Run({"-O", "absent", input}).exitCode, 1);
    EXPECT_EQ(Run({"-f", "-o", "/dev/full", input}).exitCode, 1);
    EXPECT_TRUE(Contains(Run({"-f", "-o", "/dev/null", input}).errors, "-> /dev/null: "));
    EXPECT_EQ(folder.Names(), (Names{"noise.gif", "noise.ppm"}));
}

TEST_F(CommandLine, EndedAtAnyPointLeavesTheOldFileOrTheNewAndNothingElse) {
    folder.Write("noise.ppm", NoisePicture(300));
    ASSERT_EQ(Run({"-q", "noise.ppm"}).exitCode, 0);
    const std::string finished = folder.Read("noise.gif");
    int ended = 0, done = 0;
    for (suseconds_t after = 300; done < 3 && after < 900000; after += after / 20) {
        folder.Write("noise.gif", "old");
        const ProgramRun run =
            RunProgram("gif89", {"-qf", "noise.ppm"}, {folder.Path(), {}, RLIM_INFINITY, after});
        const std::string left = folder.Read("noise.gif");
        EXPECT_TRUE(left == finished || (left == "old" && run.exitCode == -SIGALRM)) << after;
        EXPECT_EQ(folder.Names(), (Names{"noise.gif", "noise.ppm"})) << after;
        ++(run.exitCode == 0 ? done : ended);
    }
    EXPECT_GT(ended, 10);
    EXPECT_EQ(done, 3);
}

TEST_F(CommandLine, ReachesFilesWhosePathIsLongerThanTheSystemTakesAtOnce) {
    const std::string step(200, 'd');
    std::string path = folder.Path();
    const std::string home = std::filesystem::current_path();
    std::filesystem::current_path(path);
    for (int depth = 0; depth < 22; ++depth, path += "/" + step) {
        ASSERT_EQ(mkdir(step.c_str(), 0700), 0);
        ASSERT_EQ(chdir(step.c_str()), 0);
    }
    std::ofstream("a.ppm", std::ios::binary) << kPicture;
    const ProgramRun run = RunProgram("gif89", {path + "/a.ppm"});
    EXPECT_EQ(run.exitCode, 0) << run.errors.substr(0, 200);
    EXPECT_GT(std::filesystem::file_size("a.gif"), 0U);
    std::filesystem::current_path(home);
}

TEST_F(CommandLine, NamesAsLongAsNamesCanBeKeepTheirSuffix) {
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

TEST_F(CommandLine, KeepsAnIndexedPicturesIndicesAndTable) {
    folder.Write("grey.pgm", kGrey);
    const DecodedGif gif =
        Convert({"--no-interlace", "--comment", "by hand", "grey.pgm"}, "grey.gif");
    EXPECT_FALSE(gif.interlaced);
    EXPECT_EQ(gif.comment, "by hand");
    EXPECT_EQ(gif.transparentIndex, -1);
    EXPECT_EQ(IndicesOf(gif, 6), (std::vector<int>{0, 128, 255, 255, 128, 0}));
    EXPECT_EQ(TableEntry(gif.table, 128).green, 128);
}

TEST_F(CommandLine, MakesIndexedPicturesTransparentAsAsked) {
    folder.Write("grey.pgm", kGrey);
    folder.Write("mask.pgm", std::string("P5 3 2 255\n\xFF\x7F\x80\x00\xFF\xFF", 17));
    const std::pair<Names, std::string> cases[] = {
        // a letter for each pixel: x hidden, . shown
        {{"--matte", "1,2,3", "--transparent", "128"}, ".x..x."},
        {{"--matte", "1,2,3", "--transparent", "#000000,255"}, "x.xx.x"},
        {{"--matte", "1,2,3", "--channel", "cut=mask.pgm", "--alpha", "cut"}, ".x.x.."},
        {{"--matte", "1,2,3", "--channel", "cut=mask.pgm", "--alpha", "1", "--invert"}, "x.x.xx"},
        {{"--matte", "1,2,3", "--channel", "Transparency=mask.pgm"}, ".x.x.."},
        {{"--matte", "1,2,3", "--channel", "Transparency=mask.pgm", "--transparent", "255"},
         ".xxx.."},
        {{"--channel", "Transparency=mask.pgm", "--opaque"}, "......"}};
    for (const auto& [choices, wanted] : cases) {
        SCOPED_TRACE(testing::PrintToString(choices));
        const DecodedGif gif = Convert(Join({"-f", "grey.pgm"}, choices), "grey.gif");
        std::string hidden;
        for (const int index : IndicesOf(gif, 6)) {
            hidden += index == gif.transparentIndex ? 'x' : '.';
            const int level = kGrey[kGrey.size() - 7 + hidden.size()] & 0xFF;
            EXPECT_TRUE(hidden.back() == 'x' || TableEntry(gif.table, index).red == level)
                << hidden;
        }
        EXPECT_EQ(hidden, wanted);
        EXPECT_TRUE(wanted == "......" || TableEntry(gif.table, gif.transparentIndex).blue == 3);
    }
}

TEST_F(CommandLine, RefusesWhatMakesNoSenseInOneSentence) {
    folder.Write("grey.pgm", kGrey);
    folder.Write("rgb.ppm", kPicture);
    folder.Write("noise.ppm", NoisePicture(40));
    folder.Write("bad.pal", "RIFF, or what else");
    folder.Write("none.zco", {'\0', '\1', '\0', '\0'});
    folder.Write("none.pal", "RIFF....PAL data......" + std::string(2, '\0'));
    const std::tuple<Names, int, const char*> cases[] = {
        {{}, 2, "no input given"},
        {{""}, 2, "the name of an input is empty"},
        {{"-o"}, 2, "option -o needs a value"},
        {{"rgb.ppm", "--output"}, 2, "option --output needs a value"},
        {{"-o", "", "rgb.ppm"}, 2, "option -o needs a value"},
        {{"-O", "", "rgb.ppm"}, 2, "option -O needs a value"},
        {{"-p", "", "rgb.ppm"}, 2, "option -p needs a value"},
        {{"--alpha", "", "grey.pgm"}, 2, "option --alpha needs a value"},
        {{"--report-file", "", "rgb.ppm"}, 2, "option --report-file needs a value"},
        {{"--quiet=yes", "rgb.ppm"}, 2, "option --quiet=yes takes no value"},
        {{"--o=x", "rgb.ppm"}, 2, "ambiguous; it may be --output, --output-folder or --opaque"},
        {{"-x", "rgb.ppm"}, 2, "option -x is not known"},
        {{"--unknown", "rgb.ppm"}, 2, "option --unknown is not known"},
        {{"-o", "x.gif", "-O", "out", "rgb.ppm"}, 2, "-o and -O exclude each other"},
        {{"-o", "x.gif", "rgb.ppm", "rgb.ppm"}, 2, "-o takes one input"},
        {{"--mode", "sepia", "rgb.ppm"}, 2, "--mode sepia is not known"},
        {{"--report", "json", "-o", "-", "rgb.ppm"}, 2, "name a --report-file"},
        {{"--require", "max-error=256", "rgb.ppm"}, 2, "expected 0 to 255"},
        {{"--require", "beauty", "rgb.ppm"}, 2, "--require beauty is not known"},
        // What the dialogs would not allow.
        {{"--transparent", "256", "grey.pgm"}, 2, "no entry 256; its entries are 0 to 255"},
        {{"--transparent", "#123456", "grey.pgm"}, 2, "has the colour #123456"},
        {{"--transparent", "red", "grey.pgm"}, 2, "is no entry"},
        {{"--alpha", "cut", "grey.pgm"}, 2, "no channel \"cut\""},
        {{"--invert", "grey.pgm"}, 2, "--invert needs a channel"},
        {{"--matte", "1,2", "grey.pgm"}, 2, "is no colour"},
        {{"-n", "2", "--mode", "indexed", "grey.pgm"}, 2, "need --mode rgb"},
        {{"--alpha", "a", "--opaque", "grey.pgm"}, 2, "exclude each other"},
        {{"--mode", "indexed", "noise.ppm"}, 2, "has too many colours"},
        {{"--transparent", "1", "noise.ppm"}, 2, "are for indexed pictures"},
        {{"-p", "exact", "noise.ppm"}, 2, "too many colours"},
        {{"-p", "exact", "-n", "4", "rgb.ppm"}, 2, "leave out -n"},
        {{"-n", "1", "noise.ppm"}, 2, "expected 2 to 256"},
        {{"--resize", "noise.ppm"}, 2, "--resize needs a palette"},
        {{"-o", ".", "rgb.ppm"}, 1, "gif89: .: is a folder"},
        {{"--channel", "cut=rgb.ppm", "grey.pgm"}, 1, "gif89: rgb.ppm: channel cut is 3 x 1"},
        {{"--channel", "cut=absent", "grey.pgm"}, 1, "gif89: absent: cannot be opened"},
        {{"-p", "absent.pal", "rgb.ppm"}, 1, "absent.pal cannot be opened"},
        {{"--mode", "rgb", "-p", "grey.pgm", "rgb.ppm"}, 1, "should end in .zco, .zct or .pal"},
        {{"--print-palette", "gpl", "-o", "x", "rgb.ppm"}, 2, "takes one input and excludes"},
        {{"-p", "web", "--keep-color", "#123456", "noise.ppm"}, 2, "is for the best palette"},
        {{"--print-palette", "png", "rgb.ppm"}, 2, "expected gpl, hex, jasc, act"},
        {{"--mode", "rgb", "-p", "none.zco", "rgb.ppm"}, 1, "none.zco holds no colours"},
        {{"--mode", "rgb", "-p", "none.pal", "rgb.ppm"}, 1, "none.pal holds no colours"},
        {{"-p", "bad.pal", "rgb.ppm"}, 1, "the palette file bad.pal cannot be read as a hex"}};
    const Names before = folder.Names();
    for (const auto& [arguments, code, reason] : cases) {
        const ProgramRun run = Run(arguments);
        EXPECT_EQ(run.exitCode, code) << reason << ": " << run.errors;
        EXPECT_TRUE(run.errors.starts_with("gif89: ") && Contains(run.errors, reason))
            << "want " << reason << ", got " << run.errors;
        EXPECT_EQ(std::count(run.errors.begin(), run.errors.end(), '\n'), 1) << run.errors;
        EXPECT_EQ(run.output, "") << reason;
        EXPECT_EQ(folder.Names(), before) << reason;
    }
    EXPECT_EQ(Run({"--help"}).exitCode, 0);
    EXPECT_TRUE(Run({"--version"}).output.starts_with("gif89 "));
}

TEST_F(CommandLine, ReducesToThePaletteAskedFor) {
    folder.Write("noise.ppm", NoisePicture(40));
    std::string table;
    for (int i = 0; i < 256; ++i) table += {static_cast<char>(i), static_cast<char>(255 - i), '\7'};
    folder.Write("own.zct", table);
    // Entries of the written table, and bits of its first two colours.
    const std::tuple<Names, int, PackedColor, PackedColor, PackedColor> cases[] = {
        {{"-p", "adaptive", "-n", "16"}, 16, 0, 0, 0},
        {{"-n", "8", "--matte", "1,2,3"}, 8, 0, 0, 0},
        {{"--mode", "rgb", "-p", "fixed", "-n", "255"}, 256, 0xFFFFFF, 0x000000, 0xFFFFFF},
        {{"-p", "own.zct"}, 256, 0xFFFFFF, 0x00FF07, 0x01FE07},
        {{"-p", "own.zct", "-n", "4"}, 4, 0xFF, 0x07, 0x07},
        {{"-p", "own.zct", "-n", "4", "--resize"}, 4, 0xFF, 0x07, 0x07}};
    for (const auto& [choices, entries, bits, first, second] : cases) {
        const DecodedGif gif = Convert(Join({"-f", "noise.ppm"}, choices), "noise.gif");
        EXPECT_EQ(gif.colors, entries) << choices.back();
        EXPECT_EQ(PackColor(TableEntry(gif.table, 0)) & bits, first) << choices.back();
        EXPECT_EQ(PackColor(TableEntry(gif.table, 1)) & bits, second) << choices.back();
    }
    // The fixed palette is the module's: file head, screen and 256 entries are the same.
    EXPECT_EQ(Run({"-p", "fixed", "noise.ppm", "-o", "-"}).output.substr(0, 781),
              Run({"-p", "fixed", "--mode", "rgb", "noise.ppm", "-o", "-"}).output.substr(0, 781));
    // The palette that is printed is the one that the picture is exported with.
    folder.Write("eight.gpl", Run({"--print-palette", "gpl", "-n", "8", "noise.ppm"}).output);
    EXPECT_EQ(Run({"-n", "8", "noise.ppm", "-o", "-"}).output,
              Run({"-p", "eight.gpl", "noise.ppm", "-o", "-"}).output);
    // The entry of transparency is one of the 256.
    folder.Write("soft.pam", "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\nabc\x10");
    EXPECT_EQ(Convert({"-n", "256", "--mode", "rgb", "soft.pam"}, "soft.gif").colors, 256);
}

TEST_F(CommandLine, WritesNothingWhereAConditionIsNotMet) {
    folder.Write("noise.ppm", NoisePicture(40));
    folder.Write("few.ppm", kPicture);
    // Half opaque, so that no file can show it as it is.
    folder.Write("soft.pam",
                 "P7\nWIDTH 1\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n\x0A\x14\x1E\x80");
    // Sixteen bits, of which the low ones are lost.
    folder.Write("deep.ppm", std::string("P6 1 1 65535\n\x01\x02\x01\x01\x03\x03", 19));
    const std::tuple<Names, int> cases[] = {
        {{"lossless", "few.ppm"}, 0},        {{"lossless", "noise.ppm"}, 3},
        {{"lossless", "soft.pam"}, 3},       {{"lossless", "deep.ppm"}, 3},
        {{"max-error=255", "noise.ppm"}, 0}, {{"max-error=10", "noise.ppm"}, 3},
        {{"max-error=255", "soft.pam"}, 3},  {{"max-error=0", "few.ppm"}, 0}};
    for (const auto& [arguments, code] : cases) {
        SCOPED_TRACE(testing::PrintToString(arguments));
        folder.Write("out.gif", "old");
        const ProgramRun run =
            Run({"-qf", "-o", "out.gif", "--require", arguments[0], arguments[1]});
        EXPECT_EQ(run.exitCode, code) << run.errors;
        EXPECT_EQ(folder.Read("out.gif") == "old", code != 0);
    }
}

TEST_F(CommandLine, ReportsEachInputOnALineOfItsOwn) {
    folder.Write("few.ppm", kPicture);
    folder.Write("noise.ppm", NoisePicture(40));
    const ProgramRun run = Run({"-q", "--report", "json", "few.ppm", "absent.png", "noise.ppm"});
    EXPECT_EQ(run.exitCode, 1);
    EXPECT_EQ(std::count(run.output.begin(), run.output.end(), '\n'), 3);
    for (const char* part : {R"("input":"few.ppm","output":"few.gif","written":true)",
                             R"("colors_found":3)", R"("lossless":true,"losses":[])",
                             R"("losses":[{"kind":"colors","count":1600}])", R"("path":"indexed")",
                             R"("input":"absent.png","output":null,"written":false,"exit_code":1)",
                             R"("lossless":false)", R"("palette":"best")"})
        EXPECT_TRUE(Contains(run.output, part)) << part << "\n" << run.output;

    // Files of the call give no way to the report, by whatever name, and nothing is done then.
    std::filesystem::create_symlink(".", folder.Path("here"));
    std::filesystem::create_hard_link(folder.Path("few.ppm"), folder.Path("hard.ppm"));
    for (const char* report : {"few.ppm", "here/few.ppm", "hard.ppm", "new.gif", "here/new.gif"}) {
        folder.Write("new.ppm", kPicture);
        const ProgramRun refused = Run({"-f", "--report-file", report, "few.ppm", "new.ppm"});
        EXPECT_EQ(refused.exitCode, 2) << refused.errors;
        EXPECT_EQ(folder.Read("few.ppm"), kPicture);
        EXPECT_FALSE(std::filesystem::exists(folder.Path("new.gif")));
    }
    folder.Write("old.json", "old");
    EXPECT_EQ(Run({"--report-file", "old.json", "new.ppm"}).exitCode, 1);
    EXPECT_EQ(folder.Read("old.json"), "old");
    EXPECT_EQ(Run({"-f", "--report-file", "old.json", "absent.png"}).exitCode, 1);
    EXPECT_TRUE(Contains(folder.Read("old.json"), R"("input":"absent.png")"));

    const ProgramRun apart = Run({"-q", "--report-file", "r.json", "-o", "-", "few.ppm"});
    EXPECT_EQ(apart.exitCode, 0) << apart.errors;
    EXPECT_NO_THROW(Decode(apart.output));
    EXPECT_TRUE(Contains(folder.Read("r.json"), R"("output":null,"written":true)"));
}

TEST_F(CommandLine, WarnsOfALossUnlessToldToBeQuiet) {
    folder.Write("noise.ppm", NoisePicture(40));
    folder.Write("few.ppm", kPicture);
    EXPECT_TRUE(Contains(Run({"-f", "noise.ppm"}).errors,
                         "gif89: noise.ppm: warning: 1,600 colours became "));
    EXPECT_FALSE(Contains(Run({"-f", "few.ppm"}).errors, "warning"));
    EXPECT_FALSE(Contains(Run({"-f", "--comment=x", "--no-comment", "few.ppm"}).errors, "warning"));
    EXPECT_EQ(Run({"-qf", "noise.ppm"}).errors, "");
    EXPECT_TRUE(Contains(Run({"-vf", "few.ppm"}).errors, "lossless:     yes"));
    folder.Write("two.ppm", kPicture + "P6 3 1 255\n"); // the second has no pixels
    EXPECT_TRUE(Contains(Run({"-f", "two.ppm"}).errors, "two.ppm: warning: all pixels were read"));
    EXPECT_TRUE(Contains(Run({"-qf", "--report", "json", "two.ppm"}).output,
                         R"("warnings":["all pixels were read)"));
}

// The help's own examples, run as they stand on pictures of those names.
TEST_F(CommandLine, DoesWhatItsHelpShows) {
    const std::string help = Run({"--help"}).output;
    std::vector<std::string> commands;
    std::istringstream lines(help.substr(help.find("Examples:")));
    for (std::string line; std::getline(lines, line);)
        if (line.starts_with("  gif89 ")) commands.push_back(line.substr(2));
    ASSERT_GE(commands.size(), 5U);
    using namespace std::string_literals;
    const std::string alpha = "P7\nWIDTH 2\nHEIGHT 1\nDEPTH 4\nMAXVAL 255\nENDHDR\n"
                              "\xFF\x00\xFF\xFF\x01\x02\x03\x50"s;
    for (const std::string& command : commands) {
        const TemporaryFolder place; // the names of the pictures matter, the content tells itself
        place.Write("photo.jpg", NoisePicture(40));
        place.Write("sprite.png", "P6 2 1 255\n\xFF\0\xFFZZZ"s);
        place.Write("logo.webp", alpha);
        place.Write("brand.gpl", "GIMP Palette\n9 8 7\n255 255 255\n");
        std::filesystem::create_directories(place.Path("icons"));
        std::filesystem::create_directories(place.Path("web"));
        place.Write("icons/a.png", kPicture);
        const std::string folderOfProgram =
            std::filesystem::read_symlink("/proc/self/exe").parent_path();
        const std::string shell = "cd '" + place.Path() + "' && PATH='" + folderOfProgram +
                                  "':$PATH && { " + command + "; } 2>errors";
        EXPECT_EQ(std::system(shell.c_str()), 0) << command << '\n' << place.Read("errors");
    }
}

TEST_F(CommandLine, FailsWhenStandardOutputTakesNothing) {
    folder.Write("p.ppm", kPicture);
    const std::string path = std::filesystem::read_symlink("/proc/self/exe").parent_path();
    for (const char* command :
         {"gif89 -o - p.ppm >&-", "gif89 --report-file r.json -o - p.ppm >&-",
          "gif89 --report json p.ppm >/dev/full", "gif89 --help >/dev/full", "gif89 --version >&-",
          "gif89 --about >/dev/full", "gif89-desktop --version >/dev/full", "gif89 - <&-"}) {
        const std::string shell = "cd '" + folder.Path() + "' && PATH='" + path + "':$PATH && { " +
                                  command + "; } 2>errors";
        EXPECT_EQ(WEXITSTATUS(std::system(shell.c_str())), 1) << command;
        const std::string errors = folder.Read("errors");
        EXPECT_TRUE(Contains(errors, "Bad file descriptor") ||
                    Contains(errors, "No space left on device"))
            << command << '\n'
            << errors;
    }
}

TEST_F(CommandLine, IsDescribedWholeInEveryText) {
    const std::filesystem::path texts =
        std::filesystem::read_symlink("/proc/self/exe").parent_path().parent_path() / "share";
    std::istringstream words(Run({"--help"}).output);
    Names options;
    for (std::string word; words >> word;)
        if (word.starts_with("--") && word.size() > 2 && words.good())
            options.push_back(word.substr(2, word.find_first_of("=.,'") - 2));
    ASSERT_GE(options.size(), 25U);
    for (const char* path : {"man/man1/gif89.1", "bash-completion/completions/gif89",
                             "zsh/site-functions/_gif89", "fish/vendor_completions.d/gif89.fish"}) {
        std::ifstream file(texts / path);
        std::string text(std::istreambuf_iterator<char>(file), {});
        text.erase(std::remove(text.begin(), text.end(), '\\'), text.end()); // the man macros'
        for (const std::string& option : options)
            EXPECT_TRUE(Contains(text, option)) << path << " lacks --" << option;
    }
}

} // namespace
