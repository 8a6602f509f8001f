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

void SetRequest(ExportRecord& record, const Rect& area) {
    record.requestRect.top = area.top;
    record.requestRect.left = area.left;
    record.requestRect.bottom = area.bottom;
    record.requestRect.right = area.right;
}

DeliveredArea TakeAnswer(const ExportRecord& record) {
    const auto& rect = record.requestRect;
    return {{rect.top, rect.left, rect.bottom, rect.right},
            record.returnedRowBytes,
            record.returnedData.Get()};
}

bool IsInside(const Rect& inner, const Rect& outer) {
    return inner.top >= outer.top && inner.left >= outer.left && inner.bottom <= outer.bottom &&
           inner.right <= outer.right && inner.left <= inner.right;
}

bool HasItsRows(const DeliveredArea& delivered, int pixelBytes) {
    const Rect& area = delivered.area;
    if (area.top >= area.bottom || area.left == area.right) return true;
    return delivered.data && delivered.rowBytes >= (area.right - area.left) * pixelBytes;
}

} // namespace

short RequestArea(ExportRecord& record, const Rect& area, int pixelBytes,
                  DeliveredArea* delivered) {
    SetRequest(record, area);
    AdvanceProc* const advance = record.advanceProc.Get();
    if (!advance) return paramErr;
    if (const short code = advance()) return code;
    *delivered = TakeAnswer(record);
    const bool canBeUsed = IsInside(delivered->area, area) && HasItsRows(*delivered, pixelBytes);
    return canBeUsed ? noErr : paramErr;
}

short IterateArea(ExportRecord* record, const Rect* area, short loPlane, short hiPlane,
                  TileProc proc, std::intptr_t refCon) {
    const Rect whole =
        area != nullptr ? *area : Rect{0, 0, record->imageRows, record->imageColumns};
    if (whole.top >= whole.bottom || whole.left >= whole.right) return noErr;
    // One plane would make the bytes of a row 0, and there is no band height to divide them into.
    if (loPlane >= hiPlane) return paramErr;

    // Unsigned, because with a band height of 0 at row 0 `next - 1` must wrap around, so that the
    // whole area is asked for. The sum of a row and a band height always fits.
    const std::uint32_t rowsPerBand = RowsPerBand(*record, whole, loPlane, hiPlane);
    const auto end = static_cast<std::uint32_t>(whole.bottom);
    for (auto top = static_cast<std::uint32_t>(whole.top);;) {
        const std::uint32_t next = top + rowsPerBand;
        // Deliberate: the band ends one row before the next one begins, so row `next - 1` is not
        // asked for unless the area ends first. Hosts give a budget that needs only one band.
        const std::uint32_t bottom = std::min(end, next - 1);
        const Rect band = {static_cast<std::int16_t>(top), whole.left,
                           static_cast<std::int16_t>(bottom), whole.right};
        record->requestFirstPlane = loPlane;
        record->requestLastPlane = hiPlane;
        DeliveredArea delivered;
        if (const short code = RequestArea(*record, band, hiPlane - loPlane + 1, &delivered))
            return code;
        if (const short code = proc(&delivered.area, delivered.rowBytes, delivered.data, refCon))
            return code;
        if (next >= end) return noErr;
        top = next;
    }
}
