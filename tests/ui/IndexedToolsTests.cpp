// The tools of the indexed dialog: clicks and drags in the preview under every key, cursors, and
// which pixel the eyedropper takes.
#include "IndexedSession.h"

#include "IndexedPreview.h"
#include "PreviewTools.h"

namespace {

constexpr unsigned kSeed = 777;
constexpr short kHand = kIndexedHandItem, kZoom = kIndexedZoomItem, kDropper = kIndexedDropperItem;

/// Scale, marks and tool in words.
std::string Describe(const IndexedDialogGlobals& g) {
    const char* const tools[] = {"hand", "eyedropper", "zoom in", "zoom out", "plus", "minus"};
    std::string text = std::to_string(g.enlarge) + ":" + std::to_string(g.shrink);
    for (int i = 0; i < 256; ++i)
        if (g.transMap[i] != 0) text += " marks " + std::to_string(i);
    return text + ", " + tools[g.currentTool];
}

/// Leads to 3:1 with a pause behind, so that no later press is the second of a double click.
std::vector<Act> ZoomTo3(Point where) {
    return {PressItem(kZoom), PressAt(where), PressAt(where), Idle(60)};
}

TEST(IndexedTools, DoWhatTheHeldKeysSay) {
    OpenResources resources;
    IndexedPicture picture = MakePicture(500, 600, {4}, 8, 1, kSeed);
    const Point middle = InPreview(150, 200);
    const short command = kKeyCommand, option = kKeyOption, shift = kKeyShift, space = kKeySpace;
    const struct {
        short tool;
        bool otherSide; ///< zoom out, minus
        std::vector<short> keys;
        const char* want;
        short cursor;
    } cases[] = {
        {kHand, false, {}, "3:1, hand", 2001},
        {kHand, false, {shift}, "3:1, hand", 2001},
        {kHand, false, {command}, "4:1, zoom in", 2002},
        {kHand, false, {option}, "2:1, zoom out", 2003},
        {kHand, false, {option, command}, "2:1, zoom out", 2003},
        {kZoom, false, {}, "4:1, zoom in", 2002},
        {kZoom, false, {option}, "2:1, zoom out", 2003},
        {kZoom, true, {}, "2:1, zoom out", 2003},
        {kZoom, true, {command}, "4:1, zoom in", 2002},
        {kZoom, true, {option, command}, "2:1, zoom out", 2003},
        {kZoom, false, {space}, "3:1, hand", 2001},
        {kDropper, false, {}, "3:1 marks 4, plus", 2004},
        {kDropper, false, {option}, "3:1 marks 4, plus", 2004},
        {kDropper, false, {command}, "3:1, minus", 2005},
        {kDropper, true, {}, "3:1, minus", 2005},
        {kDropper, true, {shift}, "3:1 marks 4, plus", 2004},
        {kDropper, false, {shift, command}, "3:1 marks 4, plus", 2004},
        {kDropper, false, {space}, "3:1, hand", 2001},
        {kDropper, true, {space, command}, "4:1, zoom in", 2002},
        {kDropper, false, {space, option}, "2:1, zoom out", 2003},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(testing::Message() << "item " << c.tool << (c.otherSide ? ", other side" : "")
                                        << ", keys " << testing::PrintToString(c.keys));
        IndexedSession session(picture);
        std::vector<Act> click = {PressAt(middle), Idle(1)};
        const std::vector<Act> choose =
            Holding(c.otherSide ? std::vector<short>{option} : std::vector<short>{},
                    {PressItem(c.tool), Idle(60)});
        std::vector<Act> acts = Acts({ZoomTo3(middle), choose});
        for (const short key : c.keys) acts.push_back(HoldKey(key));
        acts.insert(acts.end(), click.begin(), click.end());
        std::string got;
        Cursor shown = {};
        bool released = false;
        EXPECT_EQ(session.Play(
                      acts,
                      [&](DialogPtr dialog) -> std::optional<Act> {
                          if (released) return std::nullopt;
                          released = true;
                          got = Describe(*GlobalsOf(dialog));
                          shown = *static_cast<ScriptSource*>(CurrentEventSource())->ShownCursor();
                          return std::nullopt;
                      }),
                  "0");
        EXPECT_EQ(got, c.want);
        EXPECT_EQ(shown, **GetCursor(c.cursor));
    }
}

TEST(IndexedTools, ShowTheirCursorOverTheColourTableToo) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(50, 60, IndicesUpTo(4), 8, 1, kSeed);
    const Act over = MoveMouse(Cell(3));
    const Act channel = ChooseEntry(kIndexedChannelItem, 2);
    const struct {
        std::vector<Act> acts;
        short cursor; ///< 0: the arrow
    } cases[] = {
        {{over, Idle(1)}, 2004},
        {{HoldKey(kKeyCommand), over, Idle(1)}, 2005},
        {{PressItem(kHand), over, Idle(1)}, 0},
        {{PressItem(kHand), HoldKey(kKeyShift), over, Idle(1)}, 2004},
        {{PressItem(kHand), HoldKey(kKeyCommand), over, Idle(1)}, 2005},
        {{channel, HoldKey(kKeyShift), over, Idle(1)}, 0},
    };
    for (const auto& c : cases) {
        IndexedSession session(picture);
        const Cursor* shown = nullptr;
        const Act past = MoveMouse(InPreview(150, 200)); // another cursor on the way
        EXPECT_EQ(session.Play(
                      Acts({{past}, c.acts}),
                      [&](DialogPtr) {
                          shown = static_cast<ScriptSource*>(CurrentEventSource())->ShownCursor();
                          return std::nullopt;
                      }),
                  "0");
        const Cursor* const want = c.cursor != 0 ? *GetCursor(c.cursor) : nullptr;
        EXPECT_EQ(shown, want) << "cursor " << c.cursor << ", case " << (&c - cases);
    }
}

// Deliberate: the click is measured from the corner of the box also where the picture lies in the
// middle of it.
TEST(IndexedTools, ZoomAboutAPointMeasuredFromTheCornerOfTheBox) {
    OpenResources resources;
    const Act click = PressAt(InPreview(150, 200));
    // 402 / 2 columns and 302 / 2 rows about (150, 200); then 403 / 3 and 303 / 3 about
    // (74 + 150 / 2, 99 + 200 / 2).
    const Rect wanted[] = {{74, 99, 225, 300}, {98, 132, 199, 266}};
    IndexedSession session(MakePicture(290, 300, {1}, 4, 0, kSeed));
    std::size_t clicks = 0;
    EXPECT_EQ(session.Play({PressItem(kZoom), click},
                           [&](DialogPtr dialog) -> std::optional<Act> {
                               EXPECT_EQ(GlobalsOf(dialog)->srcRect, wanted[clicks])
                                   << "click " << clicks;
                               if (++clicks == std::size(wanted)) return std::nullopt;
                               return click;
                           }),
              "0");
}

TEST(IndexedTools, OpenLargePicturesInTheMiddleOfWhatTheSmallestScaleShows) {
    OpenResources resources;
    const struct {
        int rows, columns;
        std::int32_t maxShrink;
        Rect source;
    } cases[] = {
        {20, 30, 1, {0, 0, 20, 30}},         {302, 402, 1, {0, 0, 301, 401}},
        {303, 403, 2, {0, 0, 301, 401}},     {20, 7000, 16, {0, 3015, 20, 3416}},
        {5000, 20, 16, {2265, 0, 2566, 20}},
    };
    for (const auto& c : cases) {
        IndexedSession session(MakePicture(c.rows, c.columns, {1}, 4, 0, kSeed));
        EXPECT_EQ(session.Play({},
                               [&](DialogPtr dialog) {
                                   const IndexedDialogGlobals& g = *GlobalsOf(dialog);
                                   EXPECT_EQ(g.maxShrink, c.maxShrink) << c.columns;
                                   EXPECT_EQ(g.srcRect, c.source)
                                       << c.columns << ": " << g.srcRect.top << " "
                                       << g.srcRect.left << " " << g.srcRect.bottom << " "
                                       << g.srcRect.right;
                                   return std::nullopt;
                               }),
                  "0");
    }
}

TEST(IndexedTools, DragThePictureWithTheHandAsFarAsItReaches) {
    OpenResources resources;
    const IndexedPicture picture = MakePicture(500, 600, IndicesUpTo(200), 200, 0, kSeed);
    const Point from = InPreview(150, 200);
    const auto away = [&](int v, int h) {
        return Point{static_cast<std::int16_t>(from.v + v), static_cast<std::int16_t>(from.h + h)};
    };
    const struct {
        const char* name;
        std::vector<Point> path;
        int v, h; ///< the way of the view; far ones end at the picture's edge
    } cases[] = {
        {"there and on", {from, away(-10, 4), away(30, -60)}, -10, 20},
        {"back to the start", {from, away(-40, 70), from}, 0, 0},
        {"to the top left", {from, away(30, 40), {2000, 2000}}, -500, -600},
        {"to the bottom right", {from, {-2000, -2000}}, 500, 600},
    };
    for (const auto& c : cases) {
        IndexedSession session(picture);
        Rect before, after;
        int asked = 0;
        EXPECT_EQ(session.Play(Acts({ZoomTo3(from), {PressItem(kHand)}}),
                               [&](DialogPtr dialog) -> std::optional<Act> {
                                   const IndexedDialogGlobals& g = *GlobalsOf(dialog);
                                   (asked++ == 0 ? before : after) = g.srcRect;
                                   if (asked == 1) return Drag(c.path);
                                   return std::nullopt;
                               }),
                  "0");
        const int height = after.bottom - after.top, width = after.right - after.left;
        const int top = std::clamp(before.top + c.v, 0, 500 - height);
        const int left = std::clamp(before.left + c.h, 0, 600 - width);
        // Parts of odd length lie half a pixel beside their middle.
        EXPECT_LE(std::abs(after.top - top), 1) << c.name;
        EXPECT_LE(std::abs(after.left - left), 1) << c.name;
    }
}

/// Presses the eyedropper at each point and notes which entries that marks.
class Probe {
  public:
    Probe(IndexedSession& theSession, const IndexedPicture& picture) : session(theSession) {
        for (int i = 0; i < 256; ++i) indexOf[ColorOf(picture, i)] = i;
    }

    std::optional<Act> Next(DialogPtr dialog) {
        if (next == 0) Begin(dialog);
        if (next > 0 && next <= points.size()) Check(dialog);
        if (next >= points.size()) return std::nullopt;
        return PressAt(points[next++]);
    }

    std::mt19937 random{kSeed};
    std::size_t most = 400; ///< points

  private:
    // The colours that are seen before anything is marked tell what each press should mark.
    void Begin(DialogPtr dialog) {
        const IndexedDialogGlobals& g = *GlobalsOf(dialog);
        const Rect box = dialog->Item(kIndexedPreviewItem)->rect;
        for (int v = box.top; v < box.bottom; ++v)
            for (int h = box.left; h < box.right; ++h) {
                const Point point = {static_cast<std::int16_t>(v), static_cast<std::int16_t>(h)};
                const bool isInside = v > box.top && v < box.bottom - 1 && h > box.left &&
                                      h < box.right - 1 && PtInRect(point, &g.dstRect);
                const bool isNear = v >= g.dstRect.top - 2 && v < g.dstRect.bottom + 2 &&
                                    h >= g.dstRect.left - 2 && h < g.dstRect.right + 2;
                if (!isNear || (!isInside && PtInRect(point, &g.dstRect))) continue;
                points.push_back(point);
                wanted[{v, h}] = isInside ? indexOf.at(session.surface.At(v, h)) : -1;
            }
        std::shuffle(points.begin(), points.end(), random);
        points.resize(std::min(points.size(), most));
    }

    void Check(DialogPtr dialog) {
        IndexedDialogGlobals* const g = GlobalsOf(dialog);
        const Point point = points[next - 1];
        std::vector<int> marked;
        for (int i = 0; i < 256; ++i)
            if (std::exchange(g->transMap[i], std::uint8_t{0}) != 0) marked.push_back(i);
        const int want = wanted[{point.v, point.h}];
        EXPECT_EQ(marked, want < 0 ? std::vector<int>{} : std::vector<int>{want})
            << "at " << point.v << ", " << point.h << ", " << g->enlarge << ":" << g->shrink
            << ", seed " << kSeed;
        if (!marked.empty())
            FixupPmTable(g->previewColors, g->transMap, g->palette, g->transparentColor, -1, false);
    }

    IndexedSession& session;
    std::map<PackedColor, int> indexOf;
    std::vector<Point> points;
    std::map<std::pair<int, int>, int> wanted;
    std::size_t next = 0;
};

TEST(IndexedTools, TakeThePixelThatIsSeenUnderTheEyedropper) {
    OpenResources resources;
    const Point middle = InPreview(150, 200);
    const std::vector<Act> dropper = {PressItem(kDropper), Idle(60)};
    const std::vector<Act> drag = {PressItem(kHand), Drag({middle, InPreview(200, 90)}), Idle(60)};
    const auto zoom = [&](int clicks) {
        std::vector<Act> acts = {PressItem(kZoom)};
        acts.insert(acts.end(), static_cast<std::size_t>(clicks), PressAt(middle));
        return acts;
    };
    const auto zoomOut = Holding({kKeyOption}, {PressItem(kZoom), PressAt(middle)});
    const struct {
        const char* scale;
        int rows, columns;
        std::vector<Act> acts;
        std::size_t points;
    } cases[] = {
        {"1:1", 15, 16, {}, 10000},      {"1:1", 500, 600, {}, 80},
        {"3:1", 16, 18, zoom(2), 10000}, {"3:1", 500, 600, Acts({zoom(2), drag}), 80},
        {"16:1", 60, 70, zoom(15), 80},  {"1:2", 900, 1001, zoomOut, 80},
        {"1:2", 3, 805, zoomOut, 2000},
    };
    for (const auto& c : cases) {
        const IndexedPicture picture =
            MakePicture(c.rows, c.columns, IndicesUpTo(240), 240, 0, kSeed);
        IndexedSession session(picture);
        Probe probe(session, picture);
        probe.most = c.points;
        EXPECT_EQ(session.Play(Acts({c.acts, dropper}),
                               [&](DialogPtr dialog) {
                                   const IndexedDialogGlobals& g = *GlobalsOf(dialog);
                                   EXPECT_EQ(std::to_string(g.enlarge) + ":" +
                                                 std::to_string(g.shrink),
                                             c.scale);
                                   return probe.Next(dialog);
                               }),
                  "0");
    }
}

} // namespace
