// Walks the picture in horizontal bands that the host delivers one at a time.
#pragma once

#include "ExportRecord.h"

/// Looks at one delivered band.
///
/// @param band     the rows and columns delivered; may have no rows
/// @param rowBytes bytes from one row of `data` to the next, at least what a row needs
/// @param data     first byte of the band's top-left pixel; the requested planes are interleaved.
///                 Null only for a band without rows.
///                 Belongs to the host and stays valid until the next request
/// @param refCon   what the caller of IterateArea passed
/// @return 0 to go on; anything else ends the walk and becomes its result
using TileProc = short (*)(const Rect* band, std::int32_t rowBytes, void* data,
                           std::intptr_t refCon);

/// What the host has delivered of an area that was asked for.
struct DeliveredArea {
    Rect area = {};               ///< inside what was asked for; may have no rows or columns
    std::int32_t rowBytes = 0;    ///< from one row to the next, at least what a row needs
    std::uint8_t* data = nullptr; ///< the host's, until the next request; null only without rows
};

/// Has the host deliver an area of the planes that the record asks for.
///
/// The host may change the whole record while it answers. The answer is used only when the area
/// lies inside the one that was asked for and the data hold its rows.
///
/// @param pixelBytes bytes of a pixel, one for each plane asked for
/// @return 0, the host's answer, or paramErr for an answer that is refused or without `advanceProc`
short RequestArea(ExportRecord& record, const Rect& area, int pixelBytes, DeliveredArea* delivered);

/// Asks the host for `area` band by band and hands each band to `proc`.
///
/// @param record  `memoryBudget`, `imageRows`, `imageColumns` and `advanceProc` are read, the
///                request fields are written, and the returned fields are read after each request
/// @param area    top, left, bottom, right, with bottom and right outside; null is the whole
///                picture. No rows or no columns: 0 without a request
/// @param loPlane first plane asked for, counted from 0
/// @param hiPlane last plane asked for, above loPlane; otherwise paramErr without a request
/// @return 0 when the walk reached the end, else the first nonzero answer of host or procedure,
///         unchanged; paramErr for a delivery that RequestArea refuses
///
/// A band covers memoryBudget / (columns x (hiPlane - loPlane)) - 1 rows. The next one begins one
/// row further down, so that the row between two bands is never asked for. With a budget below one
/// row the same request is repeated until the host or the procedure answers something else than 0.
short IterateArea(ExportRecord* record, const Rect* area, short loPlane, short hiPlane,
                  TileProc proc, std::intptr_t refCon);

/// The reference value that AsTileProc turns back into `reference`.
inline std::intptr_t TileRefCon(const void* reference) {
    return reinterpret_cast<std::intptr_t>(reference);
}

/// Calls a band procedure that takes typed data and a typed reference.
template <class Reference>
short CallTypedTile(short (*procedure)(const Rect*, std::int32_t, const std::uint8_t*, Reference*),
                    const Rect* band, std::int32_t rowBytes, void* data, std::intptr_t refCon) {
    return procedure(band, rowBytes, static_cast<const std::uint8_t*>(data),
                     reinterpret_cast<Reference*>(refCon));
}

/// A TileProc that calls `Procedure` with a typed reference: pass AsTileProc<ExactCount> together
/// with TileRefCon(&info). `info` must have the type that the procedure takes.
template <auto Procedure>
short AsTileProc(const Rect* band, std::int32_t rowBytes, void* data, std::intptr_t refCon) {
    return CallTypedTile(Procedure, band, rowBytes, data, refCon);
}
