#include "Pictures.h"

#include "DiffuseColor.h"
#include "InverseMap.h"

namespace {

constexpr std::uint32_t kSeed = 89;

BenchPicture MakeBenchPicture(const char* name, PictureKind kind) {
    BenchPicture picture;
    picture.name = std::string(name) + "_1920x1080";
    picture.kind = kind;
    picture.rgb = RandomPixels(kind, kBenchRows, kBenchColumns, 3, kSeed);
    picture.rgba = RandomPixels(kind, kBenchRows, kBenchColumns, 4, kSeed);

    picture.histogram.resize(32768);
    CalcHistogram3DNoTransparency(&kBenchArea, kBenchColumns * 3, picture.rgb.data(),
                                  CellsOf(picture.histogram));
    std::vector<std::uint32_t> spent = picture.histogram; // the cut clears two cells
    MakeAdaptivePalette(&picture.palette, 256, CellsOf(spent));

    picture.inverse.resize(32768);
    std::vector<std::uint8_t> distance(32768);
    BuildInverse(&picture.palette, picture.inverse.data(), distance.data(), 256);

    picture.indices.resize(std::size_t{kBenchRows} * kBenchColumns);
    std::vector<std::int16_t> errors((kBenchColumns + 2) * 6);
    DiffuseColorNoTransparency(picture.rgb.data(), picture.indices.data(), kBenchRows,
                               kBenchColumns, 0, kBenchColumns * 3, kBenchColumns, &picture.palette,
                               picture.inverse.data(), errors.data());
    return picture;
}

} // namespace

const std::vector<BenchPicture>& BenchPictures() {
    static const std::vector<BenchPicture> pictures = [] {
        std::vector<BenchPicture> made;
        made.push_back(MakeBenchPicture("photo", PictureKind::photo));
        made.push_back(MakeBenchPicture("flat", PictureKind::flat));
        made.push_back(MakeBenchPicture("few_colors", PictureKind::fewColors));
        made.push_back(MakeBenchPicture("noise", PictureKind::noise));
        return made;
    }();
    return pictures;
}
