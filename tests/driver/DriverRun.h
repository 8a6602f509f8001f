// Runs the module's selectors in process, with a scripted host and a user who saves into a folder.
#pragma once

#include "GIF89RGBExport.h"
#include "ResourceManager.h"
#include "RunSelector.h"
#include "ScriptedHost.h"
#include "StandardFile.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>

/// A user of the RGB options who takes the picture's own colours where they fit, else an adaptive
/// palette as large as there can be, laid over light grey.
inline short TakeBestPalette(GIF89RGBExport& context, unsigned char* exact,
                             unsigned char* supplied) {
    const std::int32_t own = context.exactInfo.count;
    const std::int32_t most = context.exportRecord->hasTransparency ? 255 : 256;
    *exact = own >= 0 && own <= most;
    *supplied = 0;
    context.numColors = *exact ? own : most;
    context.interlaced = 1;
    context.transparentColor = {0, 192, 192, 192};
    return noErr;
}

/// Answers the save dialog with `out.gif` in a folder of its own, or cancels it.
class SavingUser final : public StandardFileResponder {
  public:
    SavingUser() : outer(SetStandardFileResponder(this)) {}
    ~SavingUser() override { SetStandardFileResponder(outer); }

    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override {
        ++asked;
        lastPrompt.assign(prompt + 1, prompt + 1 + prompt[0]);
        proposed.assign(defaultName + 1, defaultName + 1 + defaultName[0]);
        reply->sfGood = !cancels;
        reply->sfReplacing = replaces;
        EXPECT_EQ(PathToFSSpec(OutputPath(), &reply->sfFile), noErr);
    }
    void GetFile(FileFilterProc, StandardFileReply*) override {}

    std::string OutputPath() const { return folder.Path("out.gif"); }
    std::string Output() const { return folder.Read("out.gif"); }

    TemporaryFolder folder;
    bool cancels = false;
    bool replaces = false;
    int asked = 0;
    std::string lastPrompt, proposed;

  private:
    StandardFileResponder* outer;
};

/// The module's resources, open as long as this object lives.
class OpenResources {
  public:
    OpenResources() : refNum(OpenResFile(MODULE_RESOURCES)) { EXPECT_GT(refNum, 0); }
    OpenResources(const OpenResources&) = delete;
    OpenResources& operator=(const OpenResources&) = delete;
    ~OpenResources() { CloseResFile(refNum); }

  private:
    std::int16_t refNum;
};

/// One export: a host, a user, and the two words of the entry.
struct DriverRun {
    DriverRun(int rows, int columns, int planes, std::vector<std::uint8_t> pixels)
        : host(rows, columns, planes, std::move(pixels)) {}

    /// Calls a selector; the result word, which starts as kUntouched.
    short Call(short selector) {
        result = kUntouched;
        static constexpr OptionsDialogs kDialogs = {TakeBestPalette, nullptr};
        RunSelector(selector, &host.record, &data, &result, kDialogs);
        return result;
    }
    /// Prepare and start, and finish when start went well; the first code that is not 0.
    short Export() {
        for (const short selector : {kSelectorPrepare, kSelectorStart})
            if (Call(selector) != noErr) return result;
        Call(kSelectorFinish);
        return noErr;
    }

    static constexpr short kUntouched = 12345;
    OpenResources resources;
    SavingUser user;
    ScriptedHost host;
    std::intptr_t data = 0;
    short result = kUntouched;
};
