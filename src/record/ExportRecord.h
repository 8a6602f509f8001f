// The record that host and module share, byte for byte. docs/host.md tells a host what to put into
// it and when.
#pragma once

#include "AddressTable.h"
#include "HostServices.h"

#include <cstddef>
#include <type_traits>

/// Image modes that can be exported.
enum : std::int16_t { kIndexedColorMode = 2, kRGBColorMode = 3 };

/// Selectors of the module's entry.
enum : std::int16_t {
    kSelectorAbout = 0,
    kSelectorStart = 1,
    kSelectorContinue = 2,
    kSelectorFinish = 3,
    kSelectorPrepare = 4,
};

/// Codes of the entry beside the Toolbox's own.
enum : OSErr {
    kDialogNotMade = -1,        ///< the options dialog cannot be made
    kHostLacksHandles = 1,      ///< no handle services; the user has been told
    kUnknownSelector = -30200,  ///< not one of the selectors above
    kModeNotExported = -30201,  ///< an image mode other than the two above
    kExportAtWork = -30202,     ///< a selector sent from inside a procedure that the module called
    kServiceNotOffered = -30900 ///< a host service answers that it does not serve this
};

/// Signature and keys with which the module asks the host's property services.
constexpr OSType kModuleSignature = FourCC("Q7IM");
constexpr OSType kChannelNameProperty = FourCC("nmch"); ///< index k: name of channel k
constexpr OSType kCommentProperty = FourCC("cmnt");     ///< index 0: the document's comment

/// Performs the request in `requestRect`, `requestFirstPlane` and `requestLastPlane`: fills
/// `returnedData` and `returnedRowBytes`, or answers an error, -128 when the user cancelled.
using AdvanceProc = OSErr();

/// The host's event procedure: serves one event meant for another window than the dialog's.
using HostEventProc = void(const void* event);

/// The host's colour services: 0 a colour was chosen, kServiceNotOffered to use the Toolbox's
/// picker, anything else no colour.
using ColorServicesProc = OSErr(void* info);

/// All integers big-endian, all addresses keys of the address table, alignment 1. Bytes not named
/// here belong to the host.
struct ExportRecord {
    std::uint8_t hostBytes0[12];
    BigInt32
        memoryBudget; ///< bytes the export may use; after prepare, the most one request delivers
    BigInt16 imageMode;
    BigInt16 imageRows;    ///< 1..32767
    BigInt16 imageColumns; ///< 1..32767
    std::uint8_t hostBytes22[2];
    BigInt16 planeCount; ///< planes the document has, transparency and further channels included
    std::uint8_t hostBytes26[10];
    std::uint8_t hostRedTable[256]; ///< colour table of an indexed image
    std::uint8_t hostGreenTable[256];
    std::uint8_t hostBlueTable[256];
    struct {
        BigInt16 top, left, bottom, right;
    } requestRect; ///< what the module asks for; empty when it wants no more
    BigInt16 requestFirstPlane;
    BigInt16 requestLastPlane;              ///< inclusive
    AddressSlot<std::uint8_t> returnedData; ///< the planes asked for, interleaved
    BigInt32 returnedRowBytes;
    std::uint8_t documentName[256]; ///< length-prefixed
    std::uint8_t hostBytes1080[80];
    AddressSlot<HostEventProc> eventProc;
    std::uint8_t hostBytes1164[4];
    AddressSlot<HostHandleProcs> handleProcs;
    AddressSlot<ColorServicesProc> colorServicesProc; ///< null when not offered
    std::uint8_t hostBytes1176[4];
    AddressSlot<AdvanceProc> advanceProc;
    std::uint8_t hostBytes1184[2];
    BigInt16 hasTransparency; ///< nonzero: plane 3 of an RGB image is its opacity, 0..255
    std::uint8_t hostBytes1188[20];
    AddressSlot<HostPropertyProcs> propertyProcs; ///< null when not offered
};

static_assert(offsetof(ExportRecord, memoryBudget) == 12);
static_assert(offsetof(ExportRecord, imageMode) == 16);
static_assert(offsetof(ExportRecord, imageRows) == 18);
static_assert(offsetof(ExportRecord, imageColumns) == 20);
static_assert(offsetof(ExportRecord, planeCount) == 24);
static_assert(offsetof(ExportRecord, hostRedTable) == 36);
static_assert(offsetof(ExportRecord, hostGreenTable) == 292);
static_assert(offsetof(ExportRecord, hostBlueTable) == 548);
static_assert(offsetof(ExportRecord, requestRect) == 804);
static_assert(offsetof(ExportRecord, requestFirstPlane) == 812);
static_assert(offsetof(ExportRecord, requestLastPlane) == 814);
static_assert(offsetof(ExportRecord, returnedData) == 816);
static_assert(offsetof(ExportRecord, returnedRowBytes) == 820);
static_assert(offsetof(ExportRecord, documentName) == 824);
static_assert(offsetof(ExportRecord, eventProc) == 1160);
static_assert(offsetof(ExportRecord, handleProcs) == 1168);
static_assert(offsetof(ExportRecord, colorServicesProc) == 1172);
static_assert(offsetof(ExportRecord, advanceProc) == 1180);
static_assert(offsetof(ExportRecord, hasTransparency) == 1186);
static_assert(offsetof(ExportRecord, propertyProcs) == 1208);
static_assert(sizeof(ExportRecord) == 1212 && alignof(ExportRecord) == 1);
static_assert(std::is_trivially_copyable_v<ExportRecord> &&
              std::is_standard_layout_v<ExportRecord>);
