// Exports of indexed pictures through the dialog that a script operates, and what they should come
// to, worked out the plain way.
#pragma once

#include "GiflibDecode.h"
#include "IndexedDialog.h"
#include "PixelSurface.h"
#include "ScriptedHost.h"
#include "ScriptedUser.h"

#include <gtest/gtest.h>

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
    PackedColor ColorOf(int index) const { return PackColor(TableEntry(table, index)); }
};

/// Random pixels of the given indices, all of which occur, in a table of distinct colours, and
/// channels of random bytes, many of them next to the threshold.
IndexedPicture MakePicture(int rows, int columns, std::vector<int> indices, int tableColors,
                           int channels, unsigned seed);
std::vector<int> IndicesUpTo(int count);

/// What a user chose.
struct Choice {
    std::set<int> marks = {};
    int channel = 0; ///< 0 for none
    bool inverted = false;
    RGBtuple matte = {0, 192, 192, 192};
    bool interlaced = true, comment = true;
};

bool IsHidden(const IndexedPicture& picture, const Choice& choice, int row, int column);

/// What the file must hold.
GiflibPicture ExportPlainly(const IndexedPicture& picture, const Choice& choice);
/// Empty when both hold the same.
std::string Difference(const GiflibPicture& got, const GiflibPicture& want);

/// One export of a picture whose dialog a script operates. Every channel is delivered with another
/// row stride than the indices.
class IndexedSession : public ScriptedHost {
  public:
    explicit IndexedSession(const IndexedPicture& picture);

    /// Takes the steps and then presses OK; the code of the export.
    template <class User = ScriptedUser> short Play(const Steps& steps) {
        User user(Steps{UseOtherStride()} + steps);
        return Run(user);
    }
    /// The file that was written.
    GiflibPicture File() const;

    PixelSurface surface{504, 652};
    std::vector<std::string> channelNames; ///< of channels 1 and up; an empty one has none
    std::string comment;                   ///< of every picture, until it is changed
    std::string file;                      ///< empty when none was written

  private:
    static OSErr GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value);
    Look UseOtherStride();
    short Run(ScriptedUser& user);

    HostPropertyProcs properties;
    AddressKey propertyKey;
};

/// The middle of a cell of the colour table.
Point Cell(int index);
/// A point of the preview, from the item's top left corner.
Point InPreview(int v, int h);
