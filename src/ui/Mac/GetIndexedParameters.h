// The options of an indexed export, asked for in a dialog.
#pragma once

class GIF89IndexedExport;

/// Asks for the options; sets the option members and `transIndex` and rewrites `gifBuffer` and
/// `palette` as they demand. 0, -1 when the dialog cannot be had, -108 without memory, or -128 when
/// the user cancelled.
short GetIndexedParameters(GIF89IndexedExport& context);
