#include "ReadPnm.h"

#include "Problem.h"
#include "ScaleSample.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cstring>
#include <optional>
#include <span>
#include <string_view>

namespace gif89 {

namespace {

constexpr std::size_t kLongestLine = 4096; // in the header of a PAM
constexpr long long kLargestNumber = 1'000'000'000;

struct Header {
    const char* format = "";
    long long columns = 0, rows = 0;
    int depth = 0; // samples of a pixel: grey, grey and alpha, RGB, RGB and alpha
    int maximum = 0;
};

struct TupleType {
    std::string_view name;
    int depth;
};
constexpr TupleType kTupleTypes[] = {
    {"BLACKANDWHITE", 1},       {"GRAYSCALE", 1},       {"RGB", 3},
    {"BLACKANDWHITE_ALPHA", 2}, {"GRAYSCALE_ALPHA", 2}, {"RGB_ALPHA", 4}};

bool IsSpace(int character) {
    return character == ' ' || (character >= '\t' && character <= '\r');
}

Problem HeaderProblem(const char* format, const std::string& what) {
    return Problem("is a damaged " + std::string(format) + " picture: " + what);
}

void SkipRemark(InputFile& input) {
    int character = 0;
    do character = input.ReadByte();
    while (character != '\n' && character != '\r' && character >= 0);
}

// Reads a number of a PGM or PPM header and the blank or the remark that ends it.
long long ReadNumber(InputFile& input, const char* format, const char* name) {
    int character = input.ReadByte();
    while (IsSpace(character) || character == '#') {
        if (character == '#') SkipRemark(input);
        character = input.ReadByte();
    }
    long long number = -1;
    for (; character >= '0' && character <= '9'; character = input.ReadByte())
        number = std::min(std::max(number, 0LL) * 10 + (character - '0'), kLargestNumber);
    if (character == '#') SkipRemark(input);
    if (number < 0 || !(IsSpace(character) || character == '#'))
        throw HeaderProblem(format, "its header has no " + std::string(name));
    return number;
}

int CheckMaximum(const char* format, long long maximum) {
    if (maximum < 1 || maximum > 65535)
        throw HeaderProblem(format, "its largest sample value is " + std::to_string(maximum) +
                                        ", not 1 to 65535");
    return static_cast<int>(maximum);
}

Header ReadPgmOrPpmHeader(InputFile& input, const char* format, int depth) {
    Header header = {.format = format, .depth = depth};
    header.columns = ReadNumber(input, format, "width");
    header.rows = ReadNumber(input, format, "height");
    header.maximum = CheckMaximum(format, ReadNumber(input, format, "largest sample value"));
    return header;
}

std::string ReadLine(InputFile& input) {
    std::string line;
    for (int character = input.ReadByte(); character != '\n'; character = input.ReadByte()) {
        if (character < 0) throw HeaderProblem("PAM", "its header has no ENDHDR");
        if (line.size() == kLongestLine) throw HeaderProblem("PAM", "a header line is too long");
        line += static_cast<char>(character);
    }
    return line;
}

std::string_view TakeWord(std::string_view& line) {
    const auto skip = [&line](bool spaces) {
        std::size_t count = 0;
        while (count < line.size() && IsSpace(line[count]) == spaces) ++count;
        const std::string_view skipped = line.substr(0, count);
        line.remove_prefix(count);
        return skipped;
    };
    skip(true);
    const std::string_view word = skip(false);
    skip(true);
    return word;
}

void CheckTupleType(const std::string& name, long long depth) {
    const auto* const found =
        std::find_if(std::begin(kTupleTypes), std::end(kTupleTypes),
                     [&name](const TupleType& type) { return type.name == name; });
    if (found == std::end(kTupleTypes))
        throw Problem("is a PAM picture of type \"" + name +
                      "\"; BLACKANDWHITE, GRAYSCALE or RGB is expected, alone or with _ALPHA");
    if (found->depth != depth)
        throw HeaderProblem("PAM", "type " + name + " has a depth of " +
                                       std::to_string(found->depth) + ", not " +
                                       std::to_string(depth));
}

Header ReadPamHeader(InputFile& input) {
    struct Field {
        const char* name;
        long long value = -1;
    } fields[] = {{"WIDTH"}, {"HEIGHT"}, {"DEPTH"}, {"MAXVAL"}};
    std::string type;
    for (;;) {
        const std::string line = ReadLine(input);
        std::string_view rest = line;
        const std::string_view word = TakeWord(rest);
        if (word == "ENDHDR") break;
        if (word.empty() || word[0] == '#') continue;
        if (word == "TUPLTYPE") { // several such lines make one name of several words
            if (!type.empty()) type += ' ';
            type += TakeWord(rest);
            continue;
        }
        auto* const field = std::find_if(std::begin(fields), std::end(fields),
                                         [word](const Field& each) { return each.name == word; });
        const std::string_view number = TakeWord(rest);
        if (field == std::end(fields) || !rest.empty() || number.empty() || number.size() > 9 ||
            number.find_first_not_of("0123456789") != std::string_view::npos)
            throw HeaderProblem("PAM", "the header line \"" + line + "\" is not understood");
        std::from_chars(number.data(), number.data() + number.size(), field->value);
    }
    for (const Field& field : fields)
        if (field.value < 0)
            throw HeaderProblem("PAM", "its header has no " + std::string(field.name));

    const long long depth = fields[2].value;
    if (!type.empty()) CheckTupleType(type, depth);
    if (depth < 1 || depth > 4)
        throw Problem("is a PAM picture of depth " + std::to_string(depth) + ", not 1 to 4");
    return {"PAM", fields[0].value, fields[1].value, static_cast<int>(depth),
            CheckMaximum("PAM", fields[3].value)};
}

Header ReadHeader(InputFile& input) {
    input.ReadByte(); // 'P'
    switch (input.ReadByte()) {
    case '5':
        return ReadPgmOrPpmHeader(input, "PGM", 1);
    case '6':
        return ReadPgmOrPpmHeader(input, "PPM", 3);
    default:
        return ReadPamHeader(input);
    }
}

Picture MakeTarget(const Header& header) {
    static constexpr Picture::Kind kKinds[] = {Picture::Kind::indexed, Picture::Kind::rgbAlpha,
                                               Picture::Kind::rgb, Picture::Kind::rgbAlpha};
    Picture picture = MakePicture(kKinds[header.depth - 1], header.rows, header.columns);
    picture.notes.format = header.format;
    picture.notes.bits = static_cast<int>(std::bit_width(static_cast<unsigned>(header.maximum)));
    if (header.depth == 1) SetGreyRamp(picture, std::min(header.maximum, 255) + 1);
    return picture;
}

// The byte for each value of a sample. Where the table has an entry for each level, it is the value
// itself.
std::vector<std::uint8_t> MakeLevels(const Header& header) {
    const auto maximum = static_cast<unsigned>(header.maximum);
    const bool isIndex = header.depth == 1 && maximum <= 255;
    std::vector<std::uint8_t> levels(maximum + 1);
    for (unsigned value = 0; value <= maximum; ++value)
        levels[value] = isIndex ? static_cast<std::uint8_t>(value) : ScaleSample(value, maximum);
    return levels;
}

class PixelReader {
  public:
    PixelReader(InputFile& file, const Header& fileHeader)
        : input(file), header(fileHeader), levels(MakeLevels(header)),
          samples(static_cast<std::size_t>(header.columns * header.depth)),
          rowBytes(samples * (header.maximum > 255 ? 2 : 1)) {}

    void Read(Picture& picture) {
        const auto rows = static_cast<std::size_t>(picture.rows);
        if (header.maximum == 255 && header.depth != 2) // the file has our layout
            return ReadRows(picture.pixels.get(), rows, 0);
        row.resize(rowBytes);
        for (std::size_t y = 0; y < rows; ++y) {
            ReadRows(row.data(), 1, rows - y - 1);
            PlaceRow(picture.pixels.get() + picture.RowBytes() * y, static_cast<int>(y));
        }
        picture.notes.rounded = rounded;
    }

  private:
    void ReadRows(std::uint8_t* bytes, std::size_t rows, std::size_t rowsAfter) {
        const std::size_t got = input.Read(bytes, rows * rowBytes);
        if (got == rows * rowBytes) return;
        throw HeaderProblem(header.format, "its pixels end " +
                                               std::to_string((rows + rowsAfter) * rowBytes - got) +
                                               " bytes too early");
    }

    void PlaceRow(std::uint8_t* place, int y) {
        const bool wide = header.maximum > 255;
        const auto maximum = static_cast<unsigned>(header.maximum);
        const std::uint8_t* next = row.data();
        for (std::size_t n = 0; n < samples; ++n) {
            unsigned value = *next++;
            if (wide) value = value << 8 | *next++;
            if (value >= levels.size())
                throw HeaderProblem(header.format, "a sample in row " + std::to_string(y) + " is " +
                                                       std::to_string(value) +
                                                       ", above the largest value of " +
                                                       std::to_string(header.maximum));
            if (wide && levels[value] * maximum != value * 255) rounded = true;
            const bool isGreyOfTwo = header.depth == 2 && n % 2 == 0;
            for (int copies = isGreyOfTwo ? 3 : 1; copies > 0; --copies) *place++ = levels[value];
        }
    }

    InputFile& input;
    const Header& header;
    const std::vector<std::uint8_t> levels;
    const std::size_t samples, rowBytes; // of one row
    std::vector<std::uint8_t> row;
    bool rounded = false;
};

bool IsPnmNext(InputFile& input) {
    const std::span<const std::uint8_t> start = input.Peek();
    return start.size() > 2 && start[0] == 'P' && start[1] >= '5' && start[1] <= '7' &&
           (IsSpace(start[2]) || start[2] == '#');
}

void SkipBytes(InputFile& input, const char* format, std::uint64_t count) {
    while (count > 0) {
        std::uint8_t skipped[65536];
        const std::size_t some = std::min<std::uint64_t>(count, sizeof skipped);
        if (input.Read(skipped, some) < some)
            throw HeaderProblem(format, "its pixels end too early");
        count -= some;
    }
}

// A stream may hold several pictures. Bytes behind them that do not begin a picture are ignored.
void CountFurther(InputFile& input, InputNotes& notes) {
    try {
        while (IsPnmNext(input)) {
            ++notes.pictures;
            const Header header = ReadHeader(input);
            const std::uint64_t rowBytes = static_cast<std::uint64_t>(header.columns) *
                                           static_cast<std::uint64_t>(header.depth) *
                                           (header.maximum > 255 ? 2 : 1);
            SkipBytes(input, header.format, rowBytes * static_cast<std::uint64_t>(header.rows));
        }
    } catch (const InputProblem&) {
        throw;
    } catch (const Problem& problem) {
        NoteDamage(notes, std::string("a further picture ") + problem.what());
    }
}

} // namespace

Picture ReadPnm(InputFile& input) {
    const Header header = ReadHeader(input);
    Picture picture = MakeTarget(header);
    PixelReader(input, header).Read(picture);
    DropOpaqueAlpha(picture);
    CountFurther(input, picture.notes);
    return picture;
}

} // namespace gif89
