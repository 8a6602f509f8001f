// A user whose every act comes out of a fuzzer's bytes.
#pragma once

#include "FuzzInput.h"
#include "MemoryFile.h"
#include "ScriptSource.h"

/// Does so many acts as there are bytes for, within a limit; then leaves each dialog that is open
/// by its first item, and if that does not do, by its second. Looks at the dialog's state before
/// each act.
class FuzzUser final : public ScriptSource {
  public:
    explicit FuzzUser(const FuzzInput& theInput);

    /// Where the save dialog is answered to save to.
    const MemoryFile& File() const { return file; }
    bool HasSaved() const { return hasSaved; }

    bool PickColor(Point where, const std::string& prompt, const RGBColor& start,
                   RGBColor* picked) override;
    void PutFile(ConstStr255Param prompt, ConstStr255Param defaultName,
                 StandardFileReply* reply) override;
    void GetFile(FileFilterProc filter, StandardFileReply* reply) override;

  private:
    static constexpr int kMostActs = 100;
    enum class Question : std::uint8_t { none, color, file };

    Act NextAct(DialogPtr dialog);
    Act Answer();
    Act TakeAct(DialogPtr dialog);
    Act TakeChoice(DialogPtr dialog);
    Act Leave(DialogPtr dialog);
    Point TakePoint(DialogPtr dialog);
    short TakeItem(DialogPtr dialog);
    short TakeKey();

    FuzzInput input;
    Question question = Question::none; ///< that is open
    int acts = 0;
    bool releasedKeys = false, triedFirst = false;
    MemoryFile file;
    bool hasSaved = false;
};
