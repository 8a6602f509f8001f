#include "IndexedSession.h"

#include "FirstDifference.h"
#include "MemoryManager.h"
#include "ModuleResources.h"
#include "RandomPictures.h"

#include <algorithm>
#include <map>
#include <numeric>

namespace {

constexpr int kIndexPadding = 3, kChannelPadding = 5;
constexpr const char* kComment = "Beside the sea";

int Distance(RGBtuple a, RGBtuple b) {
    const int red = a.red - b.red, green = a.green - b.green, blue = a.blue - b.blue;
    return red * red + green * green + blue * blue;
}

int NearestOther(const RGBLookUpTable& table, int index) {
    int nearest = -1, smallest = 0;
    for (int i = 0; i < 256; ++i) {
        const int distance = Distance(TableEntry(table, i), TableEntry(table, index));
        if (i == index || (nearest >= 0 && distance >= smallest)) continue;
        nearest = i;
        smallest = distance;
    }
    return nearest;
}

/// The index that hidden pixels get, and the one that its visible pixels get.
struct GivenUp {
    int index, replacement;
};

GivenUp FindIndexForHidden(const IndexedPicture& picture, const Choice& choice) {
    std::map<int, int> visible;
    for (int y = 0; y < picture.rows; ++y)
        for (int x = 0; x < picture.columns; ++x)
            if (!IsHidden(picture, choice, y, x)) ++visible[picture.At(y, x)];
    for (int i = 0; i < 256; ++i)
        if (visible[i] == 0) return {i, i};
    int rarest = 2;
    for (int i = 3; i < 256; ++i)
        if (visible[i] < visible[rarest]) rarest = i;
    return {rarest, NearestOther(picture.table, rarest)};
}

int ColorsInUse(const IndexedPicture& picture) {
    int highest = *std::max_element(picture.indices.begin(), picture.indices.end());
    for (int i = 255; i > highest; --i)
        if (picture.ColorOf(i) != 0) highest = i;
    return highest + 1;
}

ByteVector Interleave(const IndexedPicture& picture) {
    ByteVector bytes;
    for (std::size_t i = 0; i < picture.indices.size(); ++i) {
        bytes.push_back(picture.indices[i]);
        for (const ByteVector& channel : picture.channels) bytes.push_back(channel[i]);
    }
    return bytes;
}

IndexedSession* currentSession = nullptr;

} // namespace

std::vector<int> IndicesUpTo(int count) {
    std::vector<int> indices(static_cast<std::size_t>(count));
    std::iota(indices.begin(), indices.end(), 0);
    return indices;
}

IndexedPicture MakePicture(int rows, int columns, std::vector<int> indices, int tableColors,
                           int channels, unsigned seed) {
    std::mt19937 random(seed);
    IndexedPicture picture = {rows, columns, {}, {}, {}};
    const std::size_t pixels = static_cast<std::size_t>(rows) * static_cast<std::size_t>(columns);
    for (std::size_t i = 0; i < pixels; ++i)
        picture.indices.push_back(
            static_cast<std::uint8_t>(indices[i < indices.size() ? i : random() % indices.size()]));
    std::shuffle(picture.indices.begin(), picture.indices.end(), random);
    std::set<PackedColor> taken = {0, 0xFFFFFF, 0xC0C0C0, PixelSurface::kBackground};
    for (int i = 0; i < tableColors;) {
        const PackedColor color = random() & 0xFFFFFF;
        if (taken.insert(color).second) SetTableEntry(picture.table, i++, UnpackColor(color));
    }
    constexpr std::uint8_t kMasks[] = {0, 127, 128, 255};
    for (int channel = 0; channel < channels; ++channel) {
        ByteVector& bytes = picture.channels.emplace_back(pixels);
        for (std::uint8_t& byte : bytes) byte = kMasks[random() % 4];
    }
    return picture;
}

bool IsHidden(const IndexedPicture& picture, const Choice& choice, int row, int column) {
    if (choice.channel == 0) return choice.marks.count(picture.At(row, column)) != 0;
    const ByteVector& mask = picture.channels[static_cast<std::size_t>(choice.channel) - 1];
    const bool isLow = mask[static_cast<std::size_t>(row * picture.columns + column)] <= 127;
    return isLow != choice.inverted;
}

GiflibPicture ExportPlainly(const IndexedPicture& picture, const Choice& choice) {
    GiflibPicture file;
    file.rows = picture.rows;
    file.columns = picture.columns;
    file.interlaced = choice.interlaced;
    if (choice.comment) file.comment = kComment;
    file.indices = picture.indices;
    file.table = picture.table;
    int colors = ColorsInUse(picture);
    if (choice.channel != 0 || !choice.marks.empty()) {
        const GivenUp hidden = choice.channel != 0
                                   ? FindIndexForHidden(picture, choice)
                                   : GivenUp{*choice.marks.begin(), *choice.marks.begin()};
        for (int y = 0; y < picture.rows; ++y)
            for (int x = 0; x < picture.columns; ++x) {
                std::uint8_t& pixel =
                    file.indices[static_cast<std::size_t>(y * picture.columns + x)];
                if (IsHidden(picture, choice, y, x))
                    pixel = static_cast<std::uint8_t>(hidden.index);
                else if (pixel == hidden.index)
                    pixel = static_cast<std::uint8_t>(hidden.replacement);
            }
        SetTableEntry(file.table, hidden.index, choice.matte);
        const std::set<int> used(file.indices.begin(), file.indices.end());
        const std::vector<int> order(used.begin(), used.end());
        const auto rank = [&](int index) {
            return static_cast<int>(std::lower_bound(order.begin(), order.end(), index) -
                                    order.begin());
        };
        if (used.count(hidden.index) != 0) file.transparentIndex = rank(hidden.index);
        for (std::uint8_t& pixel : file.indices) pixel = static_cast<std::uint8_t>(rank(pixel));
        RGBLookUpTable compact = {};
        for (const int index : order)
            SetTableEntry(compact, rank(index), TableEntry(file.table, index));
        file.table = compact;
    }
    const int highest = *std::max_element(file.indices.begin(), file.indices.end());
    file.colors = 2;
    while (file.colors < colors) file.colors *= 2;
    if (highest >= file.colors) file.colors *= 2, colors = highest + 1;
    for (int i = std::max(colors, 2); i < 256; ++i) SetTableEntry(file.table, i, {});
    return file;
}

std::string Difference(const GiflibPicture& got, const GiflibPicture& want) {
    const auto summary = [](const GiflibPicture& file) {
        return std::to_string(file.columns) + " x " + std::to_string(file.rows) + ", " +
               std::to_string(file.colors) + " colours, transparent " +
               std::to_string(file.transparentIndex) + (file.interlaced ? ", interlaced" : "") +
               (file.comment ? ", " + *file.comment : "");
    };
    if (summary(got) != summary(want)) return "got " + summary(got) + ", want " + summary(want);
    if (got.indices != want.indices) return "indices " + FirstDifference(got.indices, want.indices);
    for (int i = 0; i < want.colors; ++i)
        if (PackColor(TableEntry(got.table, i)) != PackColor(TableEntry(want.table, i)))
            return "entry " + std::to_string(i);
    return "";
}

IndexedSession::IndexedSession(const IndexedPicture& picture)
    : ScriptedHost(picture.rows, picture.columns, 1 + static_cast<int>(picture.channels.size()),
                   Interleave(picture)),
      comment(kComment), propertyKey(&properties) {
    record.imageMode = kIndexedColorMode;
    record.hasTransparency = 0;
    std::copy_n(picture.table.red, 256, record.hostRedTable);
    std::copy_n(picture.table.green, 256, record.hostGreenTable);
    std::copy_n(picture.table.blue, 256, record.hostBlueTable);
    extraRowBytes = kIndexPadding;
    currentSession = this;
    properties.getProperty = GetProperty;
    record.propertyProcs.Set(propertyKey);
}

Look IndexedSession::UseOtherStride() {
    return [this](DialogPtr) { extraRowBytes = kChannelPadding; };
}

short IndexedSession::Run(ScriptedUser& user) {
    user.DrawOn(&surface);
    const short code = user.Export(&record);
    file = user.Output();
    return code;
}

GiflibPicture IndexedSession::File() const {
    std::string reason;
    const auto decoded = GiflibDecode(
        std::span(reinterpret_cast<const std::uint8_t*>(file.data()), file.size()), &reason);
    EXPECT_TRUE(decoded) << reason;
    return decoded.value_or(GiflibPicture());
}

OSErr IndexedSession::GetProperty(OSType signature, OSType key, std::int32_t index, Handle* value) {
    *value = nullptr;
    std::string text;
    if (signature == FourCC("Q7IM") && key == FourCC("cmnt") && index == 0) {
        text = currentSession->comment;
    } else if (signature == FourCC("Q7IM") && key == FourCC("nmch")) {
        const auto& names = currentSession->channelNames;
        if (index < 1 || static_cast<std::size_t>(index) > names.size()) return paramErr;
        text = names[static_cast<std::size_t>(index) - 1];
    }
    if (text.empty()) return noErr;
    *value = NewHandle(static_cast<Size>(text.size()));
    std::copy(text.begin(), text.end(), **value);
    return noErr;
}

namespace {

Point InItem(short item, int v, int h) {
    const ScriptedUser user({}); // for the resources
    const DialogPtr dialog = GetNewDialog(kIndexedDialog, nullptr, nullptr);
    const Rect rect = dialog->Item(item)->rect;
    DisposeDialog(dialog);
    return {static_cast<std::int16_t>(rect.top + v), static_cast<std::int16_t>(rect.left + h)};
}

} // namespace

Point Cell(int index) {
    return InItem(kIndexedTableItem, index / 32 * 11 + 5, index % 32 * 11 + 5);
}

Point InPreview(int v, int h) {
    return InItem(kIndexedPreviewItem, v, h);
}
