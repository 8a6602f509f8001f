#include "RGBSession.h"

#include "GetRGBParameters.h"
#include "HostDialogs.h"
#include "IterateArea.h"
#include "WriteGIF89.h"

#include <gtest/gtest.h>

RGBContext::RGBContext(int pictureRows, int pictureColumns, int picturePlanes,
                       std::vector<std::uint8_t> picturePixels)
    : ScriptedHost(pictureRows, pictureColumns, picturePlanes, std::move(picturePixels)) {
    context.exportRecord = &record;
    context.TakeShape();
    context.SizeBuffers(context.bufferSize);
    EXPECT_EQ(context.AllocateBuffers(), noErr);
    ExactStart(&context.exactInfo);
    if (IterateArea(&record, nullptr, 0, 2, AsTileProc<ExactCount>, TileRefCon(&context.exactInfo)))
        context.exactInfo.count = -1;
    context.transparentColor = {0, 193, 193, 193};
}

short RGBContext::Ask(Steps steps) {
    const ScriptedUser user(std::move(steps));
    const short code = GetRGB24Parameters(context, &exact, &supplied);
    alerts = user.Alerts();
    return code;
}

std::string RGBContext::Write() {
    const TemporaryFolder folder;
    context.SetupPalette(exact, supplied);
    context.MakeGIFBuffer();
    FSSpec file;
    EXPECT_EQ(PathToFSSpec(folder.Write("core.gif", ""), &file), noErr);
    const Point size = {record.imageRows, record.imageColumns};
    EXPECT_EQ(WriteGIF89(&file, &size, context.gifBuffer, context.gifRowBytes, context.interlaced,
                         context.transIndex, &context.palette,
                         static_cast<short>(context.numColors), nullptr),
              noErr);
    return folder.Read("core.gif");
}

std::string ExportWith(int rows, int columns, int planes, std::vector<std::uint8_t> pixels,
                       Steps steps) {
    ScriptedHost host(rows, columns, planes, std::move(pixels));
    ScriptedUser user(std::move(steps));
    EXPECT_EQ(user.Export(&host.record), noErr);
    return user.Output();
}

std::string SwatchFile(const RGBLookUpTable& table, int colors, int space) {
    std::string file;
    const auto put = [&](int word) {
        file += static_cast<char>(word >> 8);
        file += static_cast<char>(word);
    };
    put(1);
    put(colors);
    for (int i = 0; i < colors; ++i)
        for (const int word :
             {space, table.red[i] * 257, table.green[i] * 257, table.blue[i] * 257, 0})
            put(word);
    return file;
}

std::string TextOf(DialogPtr dialog, short item) {
    return dialog->Item(item)->text;
}

std::string ChosenText(DialogPtr dialog, short item) {
    const auto entry = static_cast<std::size_t>(GetPopUpMenuValue(dialog, item));
    const auto& entries = (*dialog->Item(item)->menu)->entries;
    return entry >= 1 && entry <= entries.size() ? entries[entry - 1].text : "none";
}
