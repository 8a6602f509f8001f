// A small dialog written with Toolbox calls alone, as a module's dialogs are, and a session that
// uses all of it. Whoever operates the session, a script or a display, the log must be the same.
#pragma once

#include "DialogManager.h"
#include "ScriptSource.h"

#include <string>
#include <vector>

/// Items of the dialog.
enum : short {
    kTestOK = 1,
    kTestCancel = 2,    ///< while option is held: puts everything back
    kTestAutomatic = 3, ///< disables the number, until that is pressed or typed at
    kTestColours = 4,   ///< a pop-up: Two, Four, a line, Eight (disabled), Sixteen
    kTestNumber = 5,    ///< an edit text, 2 to 256
    kTestScale = 6,     ///< shows the zoom
    kTestCanvas = 7,    ///< dragged with the hand or space, zoomed by clicks; option zooms out
    kTestCells = 8,     ///< 32 x 4 cells, painted by dragging
    kTestHand = 9,      ///< the tools
    kTestZoom = 10,
    kTestLabel = 11,    ///< selects the number
    kTestStayOpen = 12, ///< at first on: OK reports the number and does not close
    kTestGroup = 13,    ///< an outline around others
    kTestUnavailable = 14,
};
constexpr short kTestDialog = 9000, kTestAlert = 9002, kTestCursor = 9000;

/// What happened, a line each: "hit 3", "dragged 12 -7", "painted 4", "number 57", "cancelled".
using TestDialogLog = std::vector<std::string>;

/// Opens the dialog's resources for as long as it lives.
class TestDialogResources {
  public:
    TestDialogResources();
    TestDialogResources(const TestDialogResources&) = delete;
    TestDialogResources& operator=(const TestDialogResources&) = delete;
    ~TestDialogResources();

  private:
    std::int16_t file;
};

/// Runs the dialog until OK or Cancel ends it; needs its resources open.
TestDialogLog RunTestDialog();

/// Where things lie, local to the dialog.
Point CanvasPoint(short h, short v);
Point CellPoint(short column, short row);

/// Uses every item and ends with Cancel, and the log it must leave.
std::vector<Act> TestSession();
TestDialogLog TestSessionLog();
