#include "FileCheck.h"

#include "CountColors.h"
#include "Problem.h"

#include <sys/stat.h>

namespace gif89 {
namespace {

constexpr std::int64_t kWorthAThread = 1 << 16; // pixels; about a millisecond of work

std::size_t FileSize(int descriptor) {
    struct stat status = {};
    if (fstat(descriptor, &status) != 0)
        throw OutputProblem("the finished file cannot be read back: " + SystemReason());
    return static_cast<std::size_t>(status.st_size);
}

} // namespace

FileCheck::Sink::Sink(const Picture& original, bool keepIndices) : comparison(original) {
    if (keepIndices) collector.emplace();
}

void FileCheck::Sink::Begin(const GifHead& head, std::size_t dataOffset, int rootSize) {
    comparison.Begin(head, dataOffset, rootSize); // refuses wrong sizes
    if (collector) collector->Begin(head, dataOffset, rootSize);
}

void FileCheck::Sink::Take(int row, int column, std::span<const std::uint8_t> indices) {
    comparison.Take(row, column, indices);
    if (collector) collector->Take(row, column, indices);
}

FileCheck::FileCheck(const Picture& originalPicture, const Picture& exportedPicture,
                     bool keepIndices)
    : original(originalPicture), exported(exportedPicture), sink(originalPicture, keepIndices) {}

FileCheck::~FileCheck() {
    if (followed) followed->Abandon(); // then the future waits for its thread
}

void FileCheck::Begin(int descriptor) {
    file = descriptor;
    followed.emplace(descriptor);
    const bool isLarge = std::int64_t{original.rows} * original.columns >= kWorthAThread;
    // Also deferred when the system cannot start a thread.
    const auto policy =
        isLarge ? std::launch::async | std::launch::deferred : std::launch::deferred;
    colors = std::async(policy, [this] {
        const std::int64_t count = CountColors(original);
        ScanGif(*followed, sink);
        return count;
    });
}

// An error in the written file is reported as one of the output, not of the picture.
std::int64_t FileCheck::WaitForColors() {
    try {
        return colors.get();
    } catch (const OutputProblem&) {
        throw;
    } catch (const Problem& problem) {
        throw OutputProblem(std::string("the finished file was not stored as it was written: ") +
                            problem.what());
    }
}

CheckedGif FileCheck::Finish(PaletteKind palette) {
    followed->Complete();
    const std::int64_t sourceColors = WaitForColors();
    const GifHead& head = sink.comparison.Head();
    if (head.comment && *head.comment != exported.comment)
        throw OutputProblem("the finished file has another comment than the picture");
    CheckedGif checked;
    if (sink.collector) checked.gif = std::move(sink.collector->gif);
    checked.report = sink.comparison.Report(exported, sourceColors, FileSize(file), palette);
    return checked;
}

} // namespace gif89
