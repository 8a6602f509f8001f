#include "RefusalText.h"

#include <cstdio>

namespace gif89 {
namespace {

std::string ColorText(RGBtuple color) {
    char text[8];
    std::snprintf(text, sizeof text, "#%02x%02x%02x", color.red, color.green, color.blue);
    return text;
}

} // namespace

std::string TextOf(const Refusal& refusal) {
    std::string names;
    for (const std::string& name : refusal.names) names += (names.empty() ? "" : ", ") + name;
    switch (refusal.kind) {
    case Refusal::Kind::noTable:
        return "has too many colours for a colour table, which holds 256 (255 beside "
               "transparency), or opacities between all and none";
    case Refusal::Kind::keepsTable:
        return "an indexed picture keeps its own palette; --palette, --colors and --resize need "
               "--mode rgb";
    case Refusal::Kind::noEntry:
        return "the picture has no entry " + std::to_string(refusal.number) +
               "; its entries are 0 to " + std::to_string(refusal.entries - 1);
    case Refusal::Kind::noColor:
        return "no entry of the picture has the colour " + ColorText(refusal.color);
    case Refusal::Kind::noChannel:
        return "the picture has no channel \"" + refusal.name + "\"; it has " +
               (names.empty() ? "none" : names);
    case Refusal::Kind::nothingToInvert:
        return "there is no channel to invert; --invert needs a channel, named with --alpha";
    case Refusal::Kind::entriesNeedTable:
        return "transparent entries and channels are for indexed pictures";
    case Refusal::Kind::channelsNeedTable:
        return "--channel is for indexed pictures";
    case Refusal::Kind::exactIsCounted:
        return "an exact palette has the picture's own number of colours; leave out -n";
    case Refusal::Kind::tooManyForExact:
        return "the picture has too many colours for an exact palette";
    case Refusal::Kind::nothingToCut:
        return "only a fixed or loaded palette can be cut; --resize needs a palette, named with -p";
    case Refusal::Kind::notTheModules:
        return "the palettes best, web and grey, and --keep-color, are not for --mode rgb or "
               "--window";
    case Refusal::Kind::tooManyKept:
        return "--keep-color names more colours than there may be entries";
    }
    return {};
}

const char* AdviceOn(ProblemKind kind) {
    switch (kind) {
    case ProblemKind::fileExists:
        return "; -f replaces it";
    case ProblemKind::fileIsInput:
        return "; name another file with -o or -O";
    default:
        return "";
    }
}

} // namespace gif89
