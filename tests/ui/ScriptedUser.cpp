#include "ScriptedUser.h"

#include "FileManager.h"
#include "GetIndexedParameters.h"
#include "GetRGBParameters.h"
#include "ResourceManager.h"
#include "RunSelector.h"

#include <gtest/gtest.h>

Steps operator+(Steps first, const Steps& second) {
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

Steps Holding(const std::vector<short>& keys, const Steps& steps) {
    Steps all;
    for (const short key : keys) all.push_back(HoldKey(key));
    all = all + steps;
    for (const short key : keys) all.push_back(ReleaseKey(key));
    return all;
}

ScriptedUser::ScriptedUser(Steps theSteps)
    : ScriptSource([this](DialogPtr dialog) { return NextAct(dialog); }),
      steps(std::move(theSteps)), outerSource(SetEventSource(this)),
      outerResponder(SetStandardFileResponder(this)), resources(OpenResFile(MODULE_RESOURCES)) {
    EXPECT_GT(resources, 0);
}

ScriptedUser::~ScriptedUser() {
    EXPECT_EQ(Failure(), "");
    EXPECT_EQ(taken, steps.size()) << "not every step was taken";
    SetEventSource(outerSource);
    SetStandardFileResponder(outerResponder);
    CloseResFile(resources);
}

Act ScriptedUser::NextAct(DialogPtr dialog) {
    while (taken < steps.size()) {
        const UserStep& step = steps[taken++];
        if (const Act* const act = std::get_if<Act>(&step)) return *act;
        std::get<Look>(step)(dialog);
    }
    constexpr int kMostEndings = 4;
    return ++endings <= kMostEndings ? PressItem(1) : FailScript("The dialogs do not end.");
}

short ScriptedUser::Export(ExportRecord* record) {
    static constexpr OptionsDialogs kDialogs = {GetRGB24Parameters, GetIndexedParameters};
    std::intptr_t data = 0;
    short result = noErr;
    for (const short selector : {kSelectorPrepare, kSelectorStart, kSelectorFinish})
        if (result == noErr) RunSelector(selector, record, &data, &result, kDialogs);
    return result;
}

void ScriptedUser::PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) {
    EXPECT_EQ(PathToFSSpec(folder.Path("out.gif"), &reply->sfFile), noErr);
    reply->sfGood = 1;
}

bool ScriptedUser::PickColor(Point where, const std::string& prompt, const RGBColor& start,
                             RGBColor* picked) {
    EXPECT_EQ(prompt, "Choose the colour of transparent pixels:");
    return ScriptSource::PickColor(where, prompt, start, picked);
}
