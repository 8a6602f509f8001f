// Where the picture is saved: asks, replaces what is there, creates the empty file.
#include "FileTypes.h"
#include "GIF89Export.h"

#include "FileManager.h"
#include "ModuleResources.h"
#include "ResourceManager.h"
#include "StandardFile.h"

#include <algorithm>
#include <cstring>

namespace {

// The length to which `text` can be cut so that at most `limit` bytes stay and no UTF-8 character
// is split.
int CutLength(const std::uint8_t* text, int length, int limit) {
    if (length <= limit) return length;
    int cut = limit;
    while (cut > 0 && (text[cut] & 0xC0) == 0x80) --cut;
    return cut;
}

// The document's name followed by the suffix. When both do not fit, the document's name is cut: a
// proposal without its suffix could be the name of the picture that is exported.
void MakeDefaultName(const std::uint8_t* documentName, const std::uint8_t* suffix,
                     std::uint8_t* name) {
    const int stem = CutLength(documentName + 1, documentName[0], 255 - suffix[0]);
    std::memcpy(name + 1, documentName + 1, static_cast<std::size_t>(stem));
    std::memcpy(name + 1 + stem, suffix + 1, suffix[0]);
    name[0] = static_cast<std::uint8_t>(stem + suffix[0]);
}

} // namespace

void GIF89ExportContext::GetOutputFile() {
    Str255 suffix, prompt, defaultName;
    GetIndString(suffix, kSharedStrings, kSuffixString);
    MakeDefaultName(exportRecord->documentName, suffix, defaultName);
    GetIndString(prompt, kSharedStrings, kSavePromptString);

    StandardFileReply reply;
    StandardPutFile(prompt, defaultName, &reply);
    if (!reply.sfGood) {
        error = userCanceledErr;
        return;
    }
    outputFile = reply.sfFile;
    if (reply.sfReplacing) FSpDelete(&outputFile);
    error = FSpCreate(&outputFile, kModuleSignature, kGIFFileType, reply.sfScript);
}
