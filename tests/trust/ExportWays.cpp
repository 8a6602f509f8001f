#include "ExportWays.h"

#include "ExportHost.h"
#include "FileManager.h"
#include "MemoryManager.h"
#include "ModuleResources.h"
#include "PixelSurface.h"
#include "RandomPictures.h"
#include "SavePicture.h"
#include "ScriptedHost.h"

#include <gtest/gtest.h>

#include <deque>
#include <map>

namespace gif89 {
namespace {

constexpr std::uint32_t kSeed = 7;
constexpr int kIndexedColors = 16;
constexpr RGBColor kMatte = {0x1111, 0x8080, 0xFFFF};

std::string RiffPalette(int colors) {
    std::string file("RIFF\0\0\0\0PAL data\0\0\0\0\0\3", 22);
    file += {static_cast<char>(colors), '\0'};
    for (int i = 0; i < colors; ++i)
        file += {static_cast<char>(i * 30), static_cast<char>(200 - i * 20), '\x55', '\0'};
    return file;
}

/// Uses every kind of item, and the preview through its tools. Leaves out what a dialog does not
/// offer any more, and cancels what it complains about.
class User {
  public:
    User(const Order& order, const std::string& paletteFile, std::string outputFile)
        : output(std::move(outputFile)) {
        Add(kIndexedDialog,
            {PressItem(10), PressItem(3), PressItem(9), Drag({{100, 100}, {90, 95}, {80, 85}})});
        if (order.channel)
            Add(kIndexedDialog, {ChooseEntry(kIndexedChannelItem, 2), PressItem(kIndexedSwatchItem),
                                 PickColor(kMatte)});
        if (order.paletteFile) Add(kRGBDialog, {PressItem(kRGBLoadItem), PickFile(paletteFile)});
        Add(kRGBDialog,
            {SetText(kRGBCountItem, order.colors), PressItem(kRGBResizeItem),
             PressItem(kRGBColorBoxItem), PickColor(kMatte), PressItem(kRGBPreviewItem)});
        Add(kRGBPreviewDialog, {PressItem(7), PressItem(2), PressItem(6)});
        script.DrawOn(&surface);
    }

    ScriptSource script{[this](DialogPtr dialog) { return Next(dialog); }};

  private:
    void Add(short dialog, const std::vector<Act>& more) {
        acts[dialog].insert(acts[dialog].end(), more.begin(), more.end());
    }

    Act Next(DialogPtr dialog) {
        if (!dialog) return PickFile(output);
        std::deque<Act>& left = acts[dialog->resourceID];
        const bool complained = !script.Alerts().empty();
        while (!left.empty() && !complained) {
            const Act act = left.front();
            left.pop_front();
            if (act.kind != Act::Kind::pressItem || !dialog->Item(act.item)->IsDisabled())
                return act;
            if (!left.empty() && left.front().kind == Act::Kind::pickColor) left.pop_front();
        }
        return PressItem(complained ? kCancelItem : kRGBPreviewDoneItem);
    }

    std::string output;
    std::map<short, std::deque<Act>> acts;
    PixelSurface surface{504, 652};
};

// Of an indexed picture the first plane holds indices.
std::vector<std::uint8_t> MakePixels(const Order& order, int planes) {
    auto pixels = RandomPixels(PictureKind::noise, order.rows, order.columns, planes, kSeed);
    if (order.indexed)
        for (std::size_t i = 0; i < pixels.size(); i += static_cast<std::size_t>(planes))
            pixels[i] %= kIndexedColors;
    return pixels;
}

Picture MakePictureOf(const Order& order) {
    const auto kind = order.indexed ? Picture::Kind::indexed : Picture::Kind::rgbAlpha;
    Picture picture = MakePicture(kind, order.rows, order.columns);
    const auto pixels = MakePixels(order, order.indexed ? 1 : 4);
    std::copy(pixels.begin(), pixels.end(), picture.pixels.get());
    if (order.indexed) {
        const auto mask = RandomPixels(PictureKind::noise, order.rows, order.columns, 1, kSeed + 1);
        std::copy(mask.begin(), mask.end(), AddChannel(picture, "a channel"));
    }
    picture.table = RandomTable(kIndexedColors, kSeed);
    picture.colors = kIndexedColors;
    if (order.comment) picture.comment = "hello";
    return picture;
}

OwnHost* asked = nullptr; // for properties
bool hasComment = true;

// The same text for the comment and the channel's name.
OSErr GetProperty(OSType, OSType key, std::int32_t, Handle* value) {
    *value = nullptr;
    if (++asked->properties == asked->failingProperty) return ioErr;
    if (key == kCommentProperty && !hasComment) return noErr;
    *value = NewHandle(5);
    if (!*value) return memFullErr;
    std::copy_n("hello", 5, **value);
    return noErr;
}

} // namespace

Ending ExportWay::Run(const Order& order) {
    TakeCloseError(); // what the export before may have left
    const TemporaryFolder folder;
    if (hasOldFile) folder.Write("picture.gif", "old");
    User user(order, palettes.Write("some.pal", RiffPalette(8)), folder.Path("picture.gif"));
    std::string said = Export(order, user.script, folder);
    EXPECT_EQ(user.script.Failure(), "");
    if (said == "cancelled" && !user.script.Alerts().empty()) said = user.script.Alerts()[0];

    std::vector<std::string> names = folder.Names();
    // The module proposes a name with a suffix, and the suffix is a text that may be missing.
    const bool lacksSuffix = said == "done" && std::erase(names, "picture") == 1;
    if (lacksSuffix) said = "done without a suffix";
    const std::string file = folder.Read("picture.gif");
    if (keepsOldFile && said != "done") {
        EXPECT_EQ(file, hasOldFile ? "old" : "") << said;
        EXPECT_EQ(names.size(), hasOldFile) << said << testing::PrintToString(names);
    } else if (!names.empty()) {
        EXPECT_EQ(names, std::vector<std::string>{"picture.gif"}) << said;
    }
    return {said, said == "done" ? file : ""};
}

std::string Saving::Export(const Order& order, ScriptSource& user, const TemporaryFolder& folder) {
    try {
        SavePicture(module, MakePictureOf(order), "picture",
                    {folder.Path(), {}, -1, Existing::replace}, {&user, &user});
    } catch (const std::exception& problem) { // a Problem, or std::bad_alloc
        return problem.what();
    }
    return "done";
}

std::string OwnHost::Export(const Order& order, ScriptSource& user, const TemporaryFolder&) {
    const int planes = order.indexed ? 2 : 4;
    ScriptedHost host(order.rows, order.columns, planes, MakePixels(order, planes));
    HostPropertyProcs procs;
    procs.getProperty = GetProperty;
    asked = this;
    properties = 0;
    hasComment = order.comment;
    const AddressKey key(&procs);
    host.record.propertyProcs.Set(key);
    if (order.indexed) {
        host.record.imageMode = kIndexedColorMode;
        const RGBLookUpTable table = RandomTable(kIndexedColors, kSeed);
        std::copy_n(table.red, 256, host.record.hostRedTable);
        std::copy_n(table.green, 256, host.record.hostGreenTable);
        std::copy_n(table.blue, 256, host.record.hostBlueTable);
    }
    host.failAt = failingRequest;
    host.failCode = -1234;

    const Answering answering(user);
    std::intptr_t data = 0;
    short code = noErr;
    for (const short selector :
         {kSelectorPrepare, kSelectorStart, kSelectorContinue, kSelectorFinish})
        if (code == noErr) module.Call(selector, &host.record, &data, &code);
    EXPECT_EQ(data, 0);
    requests = static_cast<int>(host.requests.size());
    const OSErr closing = TakeCloseError();
    if (code == noErr) code = closing;
    std::string said = code == noErr ? "done" : DescribeCode(code);
    if (host.record.requestRect.bottom != 0) said += ", request left";
    return said;
}

} // namespace gif89
