// How a script answers what is asked beside its dialogs: files, colours, alerts.
#include "FileManager.h"
#include "ScriptSource.h"

namespace {

CInfoPBRec InfoOf(FSSpec& file) {
    CInfoPBRec info;
    info.ioNamePtr = file.name;
    info.ioVRefNum = file.vRefNum;
    info.ioDirID = file.parID;
    return info;
}

} // namespace

Act ScriptSource::NextAnswer(const char* question, Act::Kind pick, Act::Kind cancel) {
    if (Failed()) return FailScript(failure);
    Act act = NextAct(DialogInFront());
    if (act.kind == Act::Kind::fail)
        Fail(act.text);
    else if (act.kind != pick && act.kind != cancel)
        Fail("The script cannot " + DescribeAct(act) + " while a " + question +
             " dialog is open, expected an answer to it.");
    return act;
}

bool ScriptSource::PickColor(Point, const std::string&, const RGBColor&, RGBColor* picked) {
    const Act act = NextAnswer("colour", Act::Kind::pickColor, Act::Kind::cancelColor);
    if (Failed() || act.kind != Act::Kind::pickColor) return false;
    *picked = act.color;
    return true;
}

void ScriptSource::Alert(AlertKind, const std::string& sentence) {
    alerts.push_back(sentence);
}

void ScriptSource::PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) {
    const Act act = NextAnswer("save", Act::Kind::pickFile, Act::Kind::cancelFile);
    if (Failed() || act.kind != Act::Kind::pickFile) return;
    if (PathToFSSpec(act.text, &reply->sfFile) != noErr)
        return Fail("The script cannot save to " + act.text + ": there is no such folder.");
    FSSpec file = reply->sfFile;
    CInfoPBRec info = InfoOf(file);
    reply->sfReplacing = PBGetCatInfoSync(&info) == noErr;
    reply->sfGood = 1;
}

void ScriptSource::GetFile(FileFilterProc filter, StandardFileReply* reply) {
    const Act act = NextAnswer("file", Act::Kind::pickFile, Act::Kind::cancelFile);
    if (Failed() || act.kind != Act::Kind::pickFile) return;
    OSErr error = PathToFSSpec(act.text, &reply->sfFile);
    FSSpec file = reply->sfFile;
    CInfoPBRec info = InfoOf(file);
    if (error == noErr) error = PBGetCatInfoSync(&info);
    if (error != noErr || (info.ioFlAttrib & kIsDirectory) != 0)
        return Fail("The script cannot open " + act.text + ": there is no such file.");
    if (filter && filter(&info))
        return Fail("The script cannot open " + act.text + ": the dialog does not offer it.");
    reply->sfType = info.fdType;
    reply->sfGood = 1;
}
