// Exports of indexed pictures through the dialog that a script operates, and what they should come
// to, worked out the plain way.
#pragma once

#include "DriverRun.h"
#include "GiflibDecode.h"
#include "IndexedDialog.h"
#include "PixelSurface.h"
#include "ScriptSource.h"

#include <memory>
#include <optional>
#include <random>
#include <set>
#include <string>
#include <vector>

struct IndexedPicture {
    int rows = 0, columns = 0;
    ByteVector indices;
    RGBLookUpTable table = {};
    std::vector<ByteVector> channels = {};

    int At(int row, int column) const {
        return indices[static_cast<std::size_t>(row * columns + column)];
    }
};

/// Random pixels of the given indices, all of which occur, in a table of distinct colours, and
/// channels of random bytes, many of them next to the threshold.
IndexedPicture MakePicture(int rows, int columns, std::vector<int> indices, int tableColors,
                           int channels, unsigned seed);
std::vector<int> IndicesUpTo(int count);

/// The packed colour of an entry.
PackedColor ColorOf(const IndexedPicture& picture, int index);

/// What a user chose.
struct Choice {
    std::set<int> marks = {};
    int channel = 0; ///< 0 for none
    bool inverted = false;
    RGBtuple matte = {0, 192, 192, 192};
};

bool IsHidden(const IndexedPicture& picture, const Choice& choice, int row, int column);

/// What the file must hold.
GiflibPicture ExportPlainly(const IndexedPicture& picture, const Choice& choice);
/// Empty when both hold the same.
std::string Difference(const GiflibPicture& got, const GiflibPicture& want);

/// One export of a picture whose dialog a script operates. Every channel is delivered with another
/// row stride than the indices.
class IndexedSession {
  public:
    explicit IndexedSession(const IndexedPicture& picture);

    /// Plays the acts and then the decisions; a decision without an act presses OK. The answer is
    /// the code of the export or, when the script failed, its reason.
    std::string Play(std::vector<Act> acts,
                     std::function<std::optional<Act>(DialogPtr)> decide = {});
    /// The file that was written.
    GiflibPicture File() const;

    DriverRun run;
    PixelSurface surface{504, 652};
    std::vector<std::string> channelNames; ///< of channels 1 and up; an empty one has none
    std::string comment;
    const Cursor* cursor = nullptr; ///< shown when the dialog closed
    std::vector<std::string> alerts;

  private:
    static OSErr GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value);

    HostPropertyProcs properties;
    AddressKey propertyKey;
};

/// Where an item of the indexed dialog lies.
Rect IndexedItemRect(short item);
/// The middle of a cell of the colour table.
Point Cell(int index);
/// A point of the preview, from the item's top left corner.
Point InPreview(int v, int h);
/// A press while keys are held.
std::vector<Act> Holding(std::vector<short> keys, std::vector<Act> acts);
/// The lists one after the other.
std::vector<Act> Acts(std::initializer_list<std::vector<Act>> lists);
