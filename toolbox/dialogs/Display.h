// A real display for the dialogs. It lies in a library of its own, which is loaded only when a
// window is wanted, so that programs without windows start without a toolkit.
#pragma once

class EventSource;
class StandardFileResponder;

/// What a display does for a program; both parts live to the end of the process.
struct DisplayParts {
    EventSource* events = nullptr;          ///< for SetEventSource
    StandardFileResponder* files = nullptr; ///< for SetStandardFileResponder
};

/// The library's file name and the name of its one function.
constexpr char kDisplayLibrary[] = "toolbox_qt.so";
constexpr char kOpenDisplaySymbol[] = "GIF89OpenDisplay";

/// Opens the display and sets both parts; the first call, which decides for good, must come from
/// the main thread. Null when that went well, else a sentence for the user that says why no window
/// can be had, valid to the end of the process, with the parts untouched.
///
/// The environment's QT_QPA_PLATFORM is followed. A display without a screen ("offscreen") is
/// taken only when it is asked for there.
extern "C" __attribute__((visibility("default"))) const char* GIF89OpenDisplay(DisplayParts* parts);

using OpenDisplayProc = decltype(GIF89OpenDisplay);
