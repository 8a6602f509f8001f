// The options of an RGB export, asked for in a dialog.
#pragma once

class GIF89RGBExport;

/// Asks for the options; sets the option members, `numColors`, and which palette to build, as
/// OptionsDialogs::rgb does. -1 when the dialog cannot be had, -128 when the user cancelled.
short GetRGB24Parameters(GIF89RGBExport& context, unsigned char* exact, unsigned char* supplied);
