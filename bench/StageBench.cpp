// Every stage of an export beside its plain twin: `diffuse` is the module's routine,
// `diffuse_plain` the line-by-line version that the tests compare it with. What counts is the ratio
// within one run.
#include "FileTypes.h"
#include "InverseMap.h"
#include "Pictures.h"

#include "Answers.h"
#include "DiffuseColor.h"
#include "ExactPalette.h"
#include "ExportHost.h"
#include "LZW.h"
#include "MemoryManager.h"
#include "Picture.h"
#include "PlainAdaptivePalette.h"
#include "PlainDiffusion.h"
#include "PlainExactColors.h"
#include "PlainGif.h"
#include "PlainInverseMap.h"
#include "PlainLzw.h"
#include "PlainReduce.h"
#include "Reduce.h"
#include "TemporaryFolder.h"
#include "WriteGIF89.h"

#include <benchmark/benchmark.h>

#include <cstring>

namespace {

constexpr PackedColor kTransparent = 0xC0C0C0;
constexpr std::uint8_t kTransparentIndex = 255;
constexpr OSType kCreator = FourCC("test");

using Stage = void (*)(const BenchPicture& picture);

// ---- exact_count

void ExactCountStage(const BenchPicture& picture) {
    ExactInfo info;
    ExactStart(&info);
    benchmark::DoNotOptimize(ExactCount(&kBenchArea, kBenchColumns * 3, picture.rgb.data(), &info));
}
void ExactCountPlain(const BenchPicture& picture) {
    benchmark::DoNotOptimize(PlainExactColors(picture.rgb));
}

// ---- histogram

void HistogramStage(const BenchPicture& picture) {
    static Histogram histogram;
    std::memset(histogram, 0, sizeof histogram);
    CalcHistogram3DNoTransparency(&kBenchArea, kBenchColumns * 3, picture.rgb.data(), histogram);
    benchmark::ClobberMemory();
}
void HistogramPlain(const BenchPicture& picture) {
    benchmark::DoNotOptimize(PlainHistogram(picture.rgb, 3));
}

// ---- adaptive_palette

void AdaptivePaletteStage(const BenchPicture& picture) {
    static Histogram histogram; // the cut clears two of its cells
    std::memcpy(histogram, picture.histogram.data(), sizeof histogram);
    RGBLookUpTable table;
    MakeAdaptivePalette(&table, 256, histogram);
    benchmark::DoNotOptimize(table);
}
void AdaptivePalettePlain(const BenchPicture& picture) {
    benchmark::DoNotOptimize(PlainAdaptivePalette(picture.histogram, 256));
}

// ---- inverse_map

void InverseMapStage(const BenchPicture& picture) {
    static std::uint8_t inverse[32768], distance[32768];
    BuildInverse(&picture.palette, inverse, distance, 256);
    benchmark::ClobberMemory();
}
void InverseMapPlain(const BenchPicture& picture) {
    benchmark::DoNotOptimize(PlainInverseMap(picture.palette, 256));
}

// ---- diffuse, diffuse_alpha

std::vector<std::uint8_t>& Indices() {
    static std::vector<std::uint8_t> indices(std::size_t{kBenchRows} * kBenchColumns);
    return indices;
}
std::int16_t* ClearedErrors() {
    static std::vector<std::int16_t> errors;
    errors.assign((kBenchColumns + 2) * 6, 0);
    return errors.data();
}

void DiffuseStage(const BenchPicture& picture) {
    DiffuseColorNoTransparency(picture.rgb.data(), Indices().data(), kBenchRows, kBenchColumns, 0,
                               kBenchColumns * 3, kBenchColumns, &picture.palette,
                               picture.inverse.data(), ClearedErrors());
    benchmark::ClobberMemory();
}
void DiffusePlain(const BenchPicture& picture) {
    PlainDiffusion diffusion(picture.palette, picture.inverse, kBenchColumns, 3);
    diffusion.Rows(picture.rgb.data(), 0, kBenchRows, Indices().data());
    benchmark::ClobberMemory();
}
void DiffuseAlphaStage(const BenchPicture& picture) {
    DiffuseColorWithTransparency(picture.rgba.data(), Indices().data(), kBenchRows, kBenchColumns,
                                 0, kBenchColumns * 4, kBenchColumns, &picture.palette,
                                 picture.inverse.data(), ClearedErrors(), kTransparent,
                                 kTransparentIndex);
    benchmark::ClobberMemory();
}
void DiffuseAlphaPlain(const BenchPicture& picture) {
    PlainDiffusion diffusion(picture.palette, picture.inverse, kBenchColumns, 4, kTransparent,
                             kTransparentIndex);
    diffusion.Rows(picture.rgba.data(), 0, kBenchRows, Indices().data());
    benchmark::ClobberMemory();
}

// ---- lzw

short DropCode(std::intptr_t refcon, short code, short) {
    *reinterpret_cast<std::int64_t*>(refcon) += code;
    return 0;
}

void LzwStage(const BenchPicture& picture) {
    LZWData lzw;
    InitializeLZWCompressor(&lzw);
    std::int64_t sum = 0;
    LZWCompressStart(&lzw, 8, 1, 0, DropCode, reinterpret_cast<std::intptr_t>(&sum));
    for (int y = 0; y < kBenchRows; ++y)
        LZWCompress(&lzw, kBenchColumns,
                    picture.indices.data() + std::ptrdiff_t{y} * kBenchColumns);
    LZWCompressEnd(&lzw);
    FinalizeLZWCompressor(&lzw);
    benchmark::DoNotOptimize(sum);
}
void LzwPlain(const BenchPicture& picture) {
    std::int64_t sum = 0;
    const auto drop = [](void* context, PlainCode code) {
        *static_cast<std::int64_t*>(context) += code.code;
    };
    PlainLzwCoder coder({8}, drop, &sum);
    coder.Compress(picture.indices);
    coder.End();
    benchmark::DoNotOptimize(sum);
}

// ---- write_gif

const TemporaryFolder& Folder() {
    static const TemporaryFolder folder;
    return folder;
}

void WriteGifStage(const BenchPicture& picture) {
    FSSpec file;
    PathToFSSpec(Folder().Path("bench.gif"), &file);
    FSpDelete(&file);
    FSpCreate(&file, kCreator, kGIFFileType, 0);
    const Point size = {kBenchRows, kBenchColumns};
    WriteGIF89(&file, &size, picture.indices.data(), kBenchColumns, 1, -1, &picture.palette, 256,
               nullptr);
}

void WritePlainFile(const PlainImage& image) {
    const ByteVector bytes = PlainGif(image);
    Folder().Write("bench.gif", std::string(bytes.begin(), bytes.end()));
}
void WriteGifPlain(const BenchPicture& picture) {
    PlainImage image;
    image.rows = kBenchRows;
    image.columns = kBenchColumns;
    image.indices = picture.indices;
    image.interlaced = true;
    image.table = picture.palette;
    WritePlainFile(image);
}

// ---- reduce, reduce_diffuse

gif89::Pixels PixelsOf(const BenchPicture& picture) {
    return {picture.rgb.data(), kBenchRows, kBenchColumns};
}
gif89::Palette PaletteOf(const BenchPicture& picture) {
    gif89::Palette palette;
    for (const PackedColor color : TableColors(picture.palette, 256))
        palette.push_back(gif89::Color::Unpack(color));
    return palette;
}

// All of it; only its mapping has a plain version.
void ReduceStage(const BenchPicture& picture) {
    benchmark::DoNotOptimize(gif89::Reduce(PixelsOf(picture), {}).indices.get());
}
void ReduceDiffuseStage(const BenchPicture& picture) {
    const gif89::Palette palette = PaletteOf(picture);
    gif89::DiffusePixels(PixelsOf(picture), {palette}, 100, Indices().data());
    benchmark::ClobberMemory();
}
void ReduceDiffusePlain(const BenchPicture& picture) {
    const gif89::Palette palette = PaletteOf(picture);
    benchmark::DoNotOptimize(PlainDiffusePixels(PixelsOf(picture), {palette}, 100));
}

// ---- export_rgb

/// Saves as bench.gif, replacing the one before.
class BenchSaver final : public StandardFileResponder {
  public:
    void PutFile(ConstStr255Param, ConstStr255Param, StandardFileReply* reply) override {
        PathToFSSpec(Folder().Path("bench.gif"), &reply->sfFile);
        reply->sfGood = reply->sfReplacing = 1;
    }
    void GetFile(FileFilterProc, StandardFileReply*) override {}
};

void ExportStage(const BenchPicture& picture) {
    static const gif89::ExportModule module(gif89::ExportModule::DefaultPath());
    static BenchSaver saver;
    static std::string prepared;
    static gif89::Picture subject =
        gif89::MakePicture(gif89::Picture::Kind::rgb, kBenchRows, kBenchColumns);
    if (std::exchange(prepared, picture.name) != picture.name)
        std::memcpy(subject.pixels.get(), picture.rgb.data(), picture.rgb.size());
    const gif89::Plan plan;
    gif89::Answers answers(plan);
    gif89::ExportPicture(module, {subject, "bench", saver, answers.User().events});
}
void ExportPlain(const BenchPicture& picture) {
    const auto exact = PlainExactColors(picture.rgb);
    PlainImage image;
    image.rows = kBenchRows;
    image.columns = kBenchColumns;
    image.interlaced = true;
    if (exact.size() <= 256) {
        image.colors = static_cast<int>(exact.size());
        for (int i = 0; i < image.colors; ++i)
            SetTableEntry(image.table, i, UnpackColor(exact[static_cast<std::size_t>(i)]));
    } else {
        image.table = PlainAdaptivePalette(PlainHistogram(picture.rgb, 3), image.colors);
    }
    PlainDiffusion diffusion(image.table, PlainInverseMap(image.table, image.colors), kBenchColumns,
                             3);
    image.indices = diffusion.Rows(picture.rgb.data(), 0, kBenchRows);
    WritePlainFile(image);
}

constexpr struct {
    const char* name;
    Stage stage, plain; ///< plain may be left out
} kStages[] = {
    {"exact_count", ExactCountStage, ExactCountPlain},
    {"histogram", HistogramStage, HistogramPlain},
    {"adaptive_palette", AdaptivePaletteStage, AdaptivePalettePlain},
    {"inverse_map", InverseMapStage, InverseMapPlain},
    {"diffuse", DiffuseStage, DiffusePlain},
    {"diffuse_alpha", DiffuseAlphaStage, DiffuseAlphaPlain},
    {"lzw", LzwStage, LzwPlain},
    {"write_gif", WriteGifStage, WriteGifPlain},
    {"reduce", ReduceStage, nullptr},
    {"reduce_diffuse", ReduceDiffuseStage, ReduceDiffusePlain},
    {"export_rgb", ExportStage, ExportPlain},
};

void Measure(benchmark::State& state, Stage stage, const BenchPicture* picture) {
    for (auto _ : state) stage(*picture);
    state.counters["MP"] = benchmark::Counter(kBenchRows * kBenchColumns / 1e6,
                                              benchmark::Counter::kIsIterationInvariantRate);
}

// The count of a picture with too many colours ends within its first rows and says nothing.
bool MakesSense(const char* stage, PictureKind kind) {
    return std::string(stage) != "exact_count" || kind == PictureKind::flat ||
           kind == PictureKind::fewColors;
}

void RegisterStages() {
    for (const auto& entry : kStages)
        for (const BenchPicture& picture : BenchPictures()) {
            if (!MakesSense(entry.name, picture.kind)) continue;
            const std::string name = entry.name;
            for (const auto& [stageName, stage] :
                 {std::pair{name, entry.stage}, {name + "_plain", entry.plain}}) {
                if (stage == nullptr) continue;
                benchmark::RegisterBenchmark((stageName + "/" + picture.name).c_str(), Measure,
                                             stage, &picture)
                    ->Unit(benchmark::kMillisecond);
            }
        }
}

} // namespace

int main(int argc, char** argv) {
    RegisterStages();
    benchmark::Initialize(&argc, argv);
    if (benchmark::ReportUnrecognizedArguments(argc, argv)) return 1;
    benchmark::RunSpecifiedBenchmarks();
    return 0;
}
