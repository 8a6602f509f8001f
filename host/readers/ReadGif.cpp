#include "ReadGif.h"

#include "CommentText.h"
#include "Frame.h"
#include "MetadataAllowance.h"
#include "Problem.h"

#include <algorithm>
#include <bit>
#include <exception>
#include <gif_lib.h>
#include <new>
#include <span>
#include <utility>

namespace gif89 {

namespace {

/// The file is damaged. If the damage is behind the first picture, it is only a warning.
class DamageProblem : public Problem {
  public:
    explicit DamageProblem(const std::string& theDamage)
        : Problem("is a damaged GIF picture: " + theDamage), damage(theDamage) {}
    const std::string& Damage() const { return damage; }

  private:
    std::string damage;
};

/// Reads one file.
class GifReader {
  public:
    explicit GifReader(InputFile& file);
    ~GifReader() { DGifCloseFile(gif, nullptr); }
    GifReader(const GifReader&) = delete;
    GifReader& operator=(const GifReader&) = delete;

    Picture Read();

  private:
    static int OnRead(GifFileType* gif, GifByteType* bytes, int count);
    int Fetch(std::uint8_t* bytes, std::size_t count) noexcept;
    void Check(int status) const;
    [[noreturn]] void Fail(int error) const;

    void ReadRecords();
    void ReadExtension();
    void ReadControl(std::span<const std::uint8_t> block);
    void ReadFirstPicture();
    void SetTable();
    void ReadRows();
    void SkipPicture();
    void CheckIndices();
    void Finish();
    Plane Indices() const { return {picture.pixels.get(), picture.rows, picture.columns, 1}; }
    bool IsFilled() const { return frame.Covers(picture.rows, picture.columns); }

    InputFile& input;
    GifFileType* gif = nullptr;
    std::exception_ptr inputProblem; // thrown by the file; must not pass through giflib's frames

    Frame frame; // of the first picture
    int transparentIndex = -1;
    int background = -1; // index of the pixels around the frame; -1 when the table has none
    int pictures = 0;
    bool isFirstRead = false;
    Picture picture;
    MetadataAllowance allowance;
    std::string comment;
};

GifReader::GifReader(InputFile& file) : input(file) {
    int error = 0;
    gif = DGifOpen(this, OnRead, &error);
    if (!gif) Fail(error);
}

int GifReader::OnRead(GifFileType* gif, GifByteType* bytes, int count) {
    return static_cast<GifReader*>(gif->UserData)->Fetch(bytes, static_cast<std::size_t>(count));
}

// When the file ends within the first picture, giflib gets an empty block, which ends the data. If
// pixels are missing, it complains itself.
int GifReader::Fetch(std::uint8_t* bytes, std::size_t count) noexcept {
    try {
        const std::size_t got = input.Read(bytes, count);
        if (got == 0 && count == 1 && pictures == 1 && !isFirstRead) {
            *bytes = 0;
            return 1;
        }
        return static_cast<int>(got);
    } catch (...) {
        inputProblem = std::current_exception();
        return 0;
    }
}

void GifReader::Check(int status) const {
    if (status != GIF_OK) Fail(gif->Error);
}

void GifReader::Fail(int error) const {
    if (inputProblem) std::rethrow_exception(inputProblem);
    if (error == D_GIF_ERR_NOT_ENOUGH_MEM) throw std::bad_alloc();
    // The codes with which the library reports a read that got fewer bytes than it asked for.
    constexpr int kEarlyEnds[] = {D_GIF_ERR_READ_FAILED, D_GIF_ERR_NO_SCRN_DSCR};
    if (std::find(std::begin(kEarlyEnds), std::end(kEarlyEnds), error) != std::end(kEarlyEnds))
        throw DamageProblem(isFirstRead ? "its end is missing"
                                        : "the file ends before the picture does");
    const char* const text = GifErrorString(error);
    throw DamageProblem(text ? text : "its pixels are not stored as a GIF's");
}

Picture GifReader::Read() {
    try {
        ReadRecords();
    } catch (const DamageProblem& problem) {
        if (!isFirstRead) throw;
        NoteDamage(picture.notes, problem.Damage());
    }
    if (pictures == 0) throw DamageProblem("there is no picture in it");
    Finish();
    picture.comment = std::move(comment);
    picture.notes.format = "GIF";
    picture.notes.bits =
        static_cast<int>(std::bit_width(static_cast<unsigned>(picture.colors - 1)));
    picture.notes.pictures = pictures;
    return std::move(picture);
}

void GifReader::ReadRecords() {
    for (GifRecordType record = UNDEFINED_RECORD_TYPE; record != TERMINATE_RECORD_TYPE;) {
        Check(DGifGetRecordType(gif, &record));
        if (record == EXTENSION_RECORD_TYPE) ReadExtension();
        if (record != IMAGE_DESC_RECORD_TYPE) continue;
        Check(DGifGetImageHeader(gif));
        if (++pictures == 1)
            ReadFirstPicture();
        else
            SkipPicture();
    }
}

void GifReader::ReadExtension() {
    int label = 0;
    GifByteType* block = nullptr; // its length, then its bytes
    Check(DGifGetExtension(gif, &label, &block));
    if (label == GRAPHICS_EXT_FUNC_CODE && pictures == 0 && block)
        ReadControl({block + 1, block[0]});
    const bool isComment = label == COMMENT_EXT_FUNC_CODE && comment.empty();
    std::string text;
    while (block) {
        if (isComment) {
            allowance.Take(block[0]);
            text.append(block + 1, block + 1 + block[0]);
        }
        Check(DGifGetExtensionNext(gif, &block));
    }
    if (isComment) comment = CommentText(text);
}

void GifReader::ReadControl(std::span<const std::uint8_t> block) {
    GraphicsControlBlock control;
    if (DGifExtensionToGCB(block.size(), block.data(), &control) != GIF_OK)
        throw DamageProblem("its graphic control has " + std::to_string(block.size()) +
                            " bytes, not 4");
    transparentIndex = control.TransparentColor; // -1 for none
}

void GifReader::ReadFirstPicture() {
    const GifImageDesc& image = gif->Image;
    frame = {.left = image.Left, .top = image.Top, .columns = image.Width, .rows = image.Height};
    if (frame.columns < 1 || frame.rows < 1) throw DamageProblem("its first picture has no pixels");
    picture = MakePicture(Picture::Kind::indexed, std::max(gif->SHeight, frame.top + frame.rows),
                          std::max(gif->SWidth, frame.left + frame.columns));
    SetTable();
    ReadRows();
    CheckIndices();
    isFirstRead = true;
}

void GifReader::SetTable() {
    const ColorMapObject* const own = gif->Image.ColorMap;
    const ColorMapObject* const table = own ? own : gif->SColorMap;
    if (!table) throw DamageProblem("its first picture has no colour table");
    picture.colors = table->ColorCount;
    for (int index = 0; index < picture.colors; ++index) {
        const GifColorType color = table->Colors[index];
        SetTableEntry(picture.table, index, {0, color.Red, color.Green, color.Blue});
    }
    // The background is an entry of the file's table.
    if (!own && gif->SBackGroundColor < picture.colors) background = gif->SBackGroundColor;
}

void GifReader::ReadRows() {
    constexpr int kFirstRow[] = {0, 4, 2, 1}, kRowStep[] = {8, 8, 4, 2};
    const bool interlaced = gif->Image.Interlace;
    for (int pass = 0; pass < (interlaced ? 4 : 1); ++pass)
        for (int row = kFirstRow[pass]; row < frame.rows; row += interlaced ? kRowStep[pass] : 1)
            Check(DGifGetLine(gif, Indices().At(frame.top + row, frame.left), frame.columns));
}

// Skips the data blocks of a further picture, which shows whether the file goes on.
void GifReader::SkipPicture() {
    int codeSize = 0;
    GifByteType* block = nullptr;
    Check(DGifGetCode(gif, &codeSize, &block));
    while (block) Check(DGifGetCodeNext(gif, &block));
}

void GifReader::CheckIndices() {
    bool found[256] = {};
    for (int row = 0; row < frame.rows; ++row) {
        const std::uint8_t* const first = Indices().At(frame.top + row, frame.left);
        for (int column = 0; column < frame.columns; ++column) found[first[column]] = true;
    }
    for (int index = picture.colors; index < 256; ++index)
        if (found[index] && index != transparentIndex)
            throw DamageProblem("a pixel has colour " + std::to_string(index) + " of a table of " +
                                std::to_string(picture.colors));
    // A transparent index needs no colour and may be past the end of the table.
    if (transparentIndex >= picture.colors && (found[transparentIndex] || !IsFilled()))
        picture.colors = transparentIndex + 1;
}

// Done after the first picture has been read, so that a small damaged file does not cost the memory
// of a large screen.
void GifReader::Finish() {
    const int filler = transparentIndex >= 0 ? transparentIndex : std::max(background, 0);
    FillAround(Indices(), frame, static_cast<std::uint8_t>(filler));
    const bool hideAround = !IsFilled() && transparentIndex < 0 && background < 0;
    if (transparentIndex < 0 && !hideAround) return;

    const std::uint8_t* const indices = picture.pixels.get();
    std::uint8_t* const opacities = AddChannel(picture, kTransparencyChannel);
    std::transform(indices, indices + picture.PixelBytes(), opacities, [this](std::uint8_t index) {
        return index == transparentIndex ? std::uint8_t{0} : std::uint8_t{255};
    });
    if (hideAround) FillAround({opacities, picture.rows, picture.columns, 1}, frame, 0);
    DropOpaqueAlpha(picture);
}

} // namespace

Picture ReadGif(InputFile& input) {
    return GifReader(input).Read();
}

} // namespace gif89
