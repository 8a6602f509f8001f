#include "ScriptSource.h"

#include <utility>

namespace {

Act MakeAct(Act::Kind kind) {
    Act act;
    act.kind = kind;
    return act;
}
Act MakeItemAct(Act::Kind kind, short item) {
    Act act = MakeAct(kind);
    act.item = item;
    return act;
}
Act MakePointAct(Act::Kind kind, std::vector<Point> points) {
    Act act = MakeAct(kind);
    act.points = std::move(points);
    return act;
}
Act MakeTextAct(Act::Kind kind, const std::string& text) {
    Act act = MakeAct(kind);
    act.text = text;
    return act;
}
Act MakeKeyAct(Act::Kind kind, short key) {
    Act act = MakeAct(kind);
    act.key = key;
    return act;
}

} // namespace

Act PressItem(short item) {
    return MakeItemAct(Act::Kind::pressItem, item);
}
Act PressAt(Point local) {
    return MakePointAct(Act::Kind::pressAt, {local});
}
Act Drag(std::vector<Point> points) {
    return MakePointAct(Act::Kind::drag, std::move(points));
}
Act MoveMouse(Point local) {
    return MakePointAct(Act::Kind::moveTo, {local});
}
Act TypeText(const std::string& text) {
    return MakeTextAct(Act::Kind::type, text);
}
Act SetText(short item, const std::string& text) {
    Act act = MakeItemAct(Act::Kind::setText, item);
    act.text = text;
    return act;
}
Act HoldKey(short key) {
    return MakeKeyAct(Act::Kind::holdKey, key);
}
Act ReleaseKey(short key) {
    return MakeKeyAct(Act::Kind::releaseKey, key);
}
Act PressKey(short key) {
    return MakeKeyAct(Act::Kind::pressKey, key);
}
Act ChooseEntry(short item, short entry) {
    Act act = MakeItemAct(Act::Kind::chooseEntry, item);
    act.entry = entry;
    return act;
}
Act ChooseEntry(short item, const std::string& text) {
    Act act = MakeItemAct(Act::Kind::chooseEntry, item);
    act.text = text;
    return act;
}
Act Idle(int ticks) {
    Act act = MakeAct(Act::Kind::idle);
    act.ticks = ticks;
    return act;
}
Act PickFile(const std::string& path) {
    return MakeTextAct(Act::Kind::pickFile, path);
}
Act CancelFile() {
    return MakeAct(Act::Kind::cancelFile);
}
Act PickColor(RGBColor color) {
    Act act = MakeAct(Act::Kind::pickColor);
    act.color = color;
    return act;
}
Act CancelColor() {
    return MakeAct(Act::Kind::cancelColor);
}
Act FailScript(const std::string& reason) {
    return MakeTextAct(Act::Kind::fail, reason);
}

std::string DescribeAct(const Act& act) {
    const std::string key = "key " + std::to_string(act.key);
    const std::string item = "item " + std::to_string(act.item);
    const std::string entry =
        act.entry != 0 ? "entry " + std::to_string(act.entry) : "\"" + act.text + "\"";
    switch (act.kind) {
    case Act::Kind::pressItem:
        return "press " + item;
    case Act::Kind::pressAt:
        return "press at a point";
    case Act::Kind::drag:
        return "drag";
    case Act::Kind::moveTo:
        return "move the mouse";
    case Act::Kind::type:
        return "type \"" + act.text + "\"";
    case Act::Kind::setText:
        return "set the text of " + item;
    case Act::Kind::holdKey:
        return "hold " + key;
    case Act::Kind::releaseKey:
        return "release " + key;
    case Act::Kind::pressKey:
        return "press " + key;
    case Act::Kind::chooseEntry:
        return "choose " + entry + " in " + item;
    case Act::Kind::idle:
        return "wait";
    case Act::Kind::pickFile:
        return "pick the file " + act.text;
    case Act::Kind::cancelFile:
        return "cancel a file dialog";
    case Act::Kind::pickColor:
        return "pick a colour";
    case Act::Kind::cancelColor:
        return "cancel a colour dialog";
    case Act::Kind::fail:
        return "fail";
    }
    return {};
}
