// The band bounds, and the requests to the host.
#include "IterateArea.h"

#include <algorithm>

namespace {

// Rows from the top of one band to the top of the next. Deliberate: the product counts one plane
// less than is delivered, so that bands come out larger than a strict budget would give.
std::uint32_t RowsPerBand(const ExportRecord& record, const Rect& area, short loPlane,
                          short hiPlane) {
    const std::int64_t bytesPerRow = std::int64_t{area.right - area.left} * (hiPlane - loPlane);
    return static_cast<std::uint32_t>(std::int64_t{record.memoryBudget} / bytesPerRow);
}

void SetRequest(ExportRecord& record, const Rect& band, short loPlane, short hiPlane) {
    record.requestRect.top = band.top;
    record.requestRect.left = band.left;
    record.requestRect.bottom = band.bottom;
    record.requestRect.right = band.right;
    record.requestFirstPlane = loPlane;
    record.requestLastPlane = hiPlane;
}

Rect RequestedBand(const ExportRecord& record) {
    return {record.requestRect.top, record.requestRect.left, record.requestRect.bottom,
            record.requestRect.right};
}

} // namespace

short IterateArea(ExportRecord* record, const Rect* area, short loPlane, short hiPlane,
                  TileProc proc, std::intptr_t refCon) {
    const Rect whole =
        area != nullptr ? *area : Rect{0, 0, record->imageRows, record->imageColumns};
    if (whole.top >= whole.bottom || whole.left >= whole.right) return noErr;
    // One plane would make the bytes of a row 0, and there is no band height to divide them into.
    if (loPlane >= hiPlane) return paramErr;
    AdvanceProc* const advance = record->advanceProc.Get();
    if (advance == nullptr) return paramErr;

    // Unsigned, because a band height of 0 at row 0 must wrap in `next - 1` and so ask for the
    // whole area; sums of a row and a band height always fit.
    const std::uint32_t rowsPerBand = RowsPerBand(*record, whole, loPlane, hiPlane);
    const auto end = static_cast<std::uint32_t>(whole.bottom);
    for (auto top = static_cast<std::uint32_t>(whole.top);;) {
        const std::uint32_t next = top + rowsPerBand;
        // Deliberate: the band ends one row before the next one begins, so row `next - 1` is not
        // asked for unless the area ends first. Hosts give a budget that needs only one band.
        const std::uint32_t bottom = std::min(end, next - 1);
        SetRequest(*record,
                   {static_cast<std::int16_t>(top), whole.left, static_cast<std::int16_t>(bottom),
                    whole.right},
                   loPlane, hiPlane);
        if (const short code = advance()) return code;
        const Rect band = RequestedBand(*record);
        if (const short code =
                proc(&band, record->returnedRowBytes, record->returnedData.Get(), refCon))
            return code;
        if (next >= end) return noErr;
        top = next;
    }
}
