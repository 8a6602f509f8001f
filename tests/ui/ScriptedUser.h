// A user of the module's dialogs who takes the steps of a script and looks at the dialogs in
// between.
#pragma once

#include "ExportRecord.h"
#include "ScriptSource.h"
#include "TemporaryFolder.h"

#include <functional>
#include <string>
#include <variant>
#include <vector>

/// An act of the user, or something that the test does at that moment.
using Look = std::function<void(DialogPtr dialog)>;
using UserStep = std::variant<Act, Look>;
using Steps = std::vector<UserStep>;

Steps operator+(Steps first, const Steps& second);
/// Steps while keys are held.
Steps Holding(const std::vector<short>& keys, const Steps& steps);

/// Takes steps in windows and file dialogs as long as it lives, and then presses the first button
/// of every dialog. Opens the module's resources and saves into a folder of its own.
class ScriptedUser : public ScriptSource {
  public:
    explicit ScriptedUser(Steps steps);
    ScriptedUser(const ScriptedUser&) = delete;
    ScriptedUser& operator=(const ScriptedUser&) = delete;
    /// Expects that every step was taken.
    ~ScriptedUser() override;

    /// A whole export through the module's entry; its first code that is not 0.
    short Export(ExportRecord* record);
    /// The file that was saved.
    std::string Output() const { return folder.Read("out.gif"); }

    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;

  private:
    Act NextAct(DialogPtr dialog);

    Steps steps;
    std::size_t taken = 0;
    int endings = 0;
    TemporaryFolder folder;
    EventSource* outerSource;
    StandardFileResponder* outerResponder;
    std::int16_t resources;
};
