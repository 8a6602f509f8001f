// Zoom steps, the view against a brute-force search and a plain twin, and drags.
#include "PreviewGeometry.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <ostream>
#include <random>
#include <string>

// Found by the test macros beside the types.
static void PrintTo(const Rect& rect, std::ostream* out) {
    *out << "(top " << rect.top << ", left " << rect.left << ", bottom " << rect.bottom
         << ", right " << rect.right << ")";
}

namespace {

std::string Scale(const ZoomFactors& zoom) {
    return std::to_string(zoom.enlarge) + ":" + std::to_string(zoom.shrink);
}

TEST(ZoomStep, ShrinksBackToOneBeforeItEnlargesAndStopsAtTheEnds) {
    const struct {
        ZoomFactors from;
        zoomDirection direction;
        bool doubleStep;
        const char* to; ///< null: nothing happens
    } cases[] = {
        {{1, 2, 8}, zoomIn, false, "1:1"},    {{1, 1, 8}, zoomIn, false, "2:1"},
        {{2, 1, 8}, zoomOut, false, "1:1"},   {{1, 1, 8}, zoomOut, false, "1:2"},
        {{15, 1, 8}, zoomIn, false, "16:1"},  {{1, 7, 8}, zoomOut, false, "1:8"},
        {{1, 5, 8}, zoomIn, true, "1:2"},     {{10, 1, 8}, zoomIn, true, "16:1"},
        {{7, 1, 8}, zoomOut, true, "3:1"},    {{1, 5, 8}, zoomOut, true, "1:8"},
        {{1, 3, 8}, zoomOut, true, "1:6"},    {{3, 1, 8}, zoomIn, true, "6:1"},
        {{16, 1, 8}, zoomIn, false, nullptr}, {{16, 1, 8}, zoomIn, true, nullptr},
        {{1, 8, 8}, zoomOut, false, nullptr}, {{1, 8, 8}, zoomOut, true, nullptr},
        {{1, 1, 1}, zoomOut, false, nullptr}, {{1, 1, 8}, zoomDirection{7}, false, "1:2"},
    };
    for (const auto& c : cases) {
        ZoomFactors zoom = c.from;
        EXPECT_EQ(StepZoom(&zoom, c.direction, c.doubleStep), c.to != nullptr)
            << Scale(c.from) << " direction " << c.direction << " double " << c.doubleStep;
        EXPECT_EQ(Scale(zoom), c.to != nullptr ? c.to : Scale(c.from))
            << Scale(c.from) << " direction " << c.direction << " double " << c.doubleStep;
    }
}

TEST(ZoomMode, GoesToActualPixelsOrToTheWholeImage) {
    const struct {
        ZoomFactors from;
        short mode;
        const char* to; ///< null: nothing happens
    } cases[] = {
        {{4, 1, 6}, kZoomToActualPixels, "1:1"},
        {{1, 1, 6}, kZoomToActualPixels, nullptr},
        {{4, 1, 6}, kZoomToFit, "1:6"},
        {{1, 6, 6}, kZoomToFit, nullptr},
    };
    for (const auto& c : cases) {
        ZoomFactors zoom = c.from;
        EXPECT_EQ(ZoomToMode(&zoom, c.mode), c.to != nullptr)
            << Scale(c.from) << " mode " << c.mode;
        EXPECT_EQ(Scale(zoom), c.to != nullptr ? c.to : Scale(c.from)) << "mode " << c.mode;
    }
}

/// One direction of a view: what is asked for and what came out.
struct Axis {
    int viewFirst, viewLength, imageLength, centre, enlarge, shrink;
    int first = 0, end = 0, drawnFirst = 0, drawnEnd = 0;
};

std::ostream& operator<<(std::ostream& out, const Axis& a) {
    return out << "view " << a.viewFirst << "+" << a.viewLength << " image " << a.imageLength
               << " centre " << a.centre << " scale " << a.enlarge << ":" << a.shrink << " gave "
               << a.first << ".." << a.end << " drawn at " << a.drawnFirst << ".." << a.drawnEnd;
}

/// The view as an interval of known length that is clamped to the image.
void ExpectPlainView(const Axis& a) {
    const int visible = (a.viewLength + a.enlarge) * a.shrink / a.enlarge;
    const int length = std::min(visible, a.imageLength);
    const int first = std::clamp(a.centre - (visible + 1) / 2, 0, a.imageLength - length);
    ASSERT_EQ(a.first, first) << a;
    ASSERT_EQ(a.end, first + length) << a;
    const int drawn = length * a.enlarge / a.shrink;
    ASSERT_EQ(a.drawnFirst, a.viewFirst + std::max(0, a.viewLength - drawn) / 2) << a;
}

Axis PickAxis(std::mt19937& random, int enlarge, int shrink) {
    Axis a = {};
    a.enlarge = enlarge;
    a.shrink = shrink;
    a.viewFirst = static_cast<int>(random() % 300) - 50;
    a.viewLength = 1 + static_cast<int>(random() % (random() % 2 ? 12 : 1000));
    // Up to three times what the view holds, and around each.
    const int held = a.viewLength * shrink / enlarge * static_cast<int>(random() % 4);
    a.imageLength = std::clamp(held - 20 + static_cast<int>(random() % 41), 1, 32767);
    a.centre = static_cast<int>(random() % 40000) % (a.imageLength + 200) - 100;
    a.centre = std::min(a.centre, 32767);
    return a;
}

std::int16_t Short(int value) {
    return static_cast<std::int16_t>(value);
}

TEST(ViewRects, HoldForEveryKindOfImageViewScaleAndCentre) {
    constexpr unsigned kSeed = 1987;
    SCOPED_TRACE("seed " + std::to_string(kSeed));
    std::mt19937 random(kSeed);
    for (int round = 0; round < 200000 && !testing::Test::HasFatalFailure(); ++round) {
        const int factor = 1 + static_cast<int>(random() % 16);
        const bool enlarges = random() % 2 != 0;
        Axis across = PickAxis(random, enlarges ? factor : 1, enlarges ? 1 : factor);
        Axis down = PickAxis(random, across.enlarge, across.shrink);

        const Rect box = {Short(down.viewFirst - 1), Short(across.viewFirst - 1),
                          Short(down.viewFirst + down.viewLength + 1),
                          Short(across.viewFirst + across.viewLength + 1)};
        const Point size = {Short(down.imageLength), Short(across.imageLength)};
        const Point centre = {Short(down.centre), Short(across.centre)};
        Rect source, drawn;
        CalculateViewRects(&source, &drawn, &box, across.shrink, across.enlarge, &size, &centre);
        across.first = source.left, across.end = source.right;
        across.drawnFirst = drawn.left, across.drawnEnd = drawn.right;
        down.first = source.top, down.end = source.bottom;
        down.drawnFirst = drawn.top, down.drawnEnd = drawn.bottom;
        ExpectPlainView(across);
        ExpectPlainView(down);
    }
}

// 2049 steps of 16 are 32784, which is -32752 in 16 bits: the visible part turns inside out.
TEST(ViewRects, CutTheVisibleLengthTo16Bits) {
    const Rect box = {0, 0, 2050, 2050};
    const Point size = {32767, 32767}, centre = {16383, 16383};
    Rect source, drawn;
    CalculateViewRects(&source, &drawn, &box, 16, 1, &size, &centre);
    EXPECT_EQ(source, (Rect{32759, 32759, 7, 7}));
}

struct DragScene {
    Point size;
    Rect box, source;
    std::int32_t enlarge, shrink;
};

constexpr DragScene kPlain = {{300, 400}, {0, 0, 101, 101}, {50, 60, 150, 160}, 1, 1};
constexpr DragScene kEnlarged = {{300, 400}, {0, 0, 102, 102}, {50, 60, 76, 86}, 4, 1};
constexpr DragScene kShrunk = {{1000, 1000}, {0, 0, 101, 101}, {100, 200, 400, 500}, 1, 3};
constexpr DragScene kSmall = {{40, 60}, {0, 0, 101, 101}, {0, 0, 40, 60}, 1, 1};
/// A visible part left over from another scale.
constexpr DragScene kStale = {{300, 400}, {0, 0, 101, 101}, {50, 60, 250, 260}, 1, 1};
constexpr DragScene kLargest = {
    {32767, 32767}, {0, 0, 201, 201}, {29000, 29000, 32200, 32200}, 1, 16};

TEST(Drag, MovesTheImageWithTheHandAndStopsAtItsEdges) {
    const struct {
        const char* name;
        const DragScene& scene;
        Point moved; ///< from press to release
        Rect want;
    } cases[] = {
        {"nowhere", kPlain, {0, 0}, {50, 60, 150, 160}},
        {"down and right", kPlain, {10, 20}, {40, 40, 140, 140}},
        {"up and left", kPlain, {-10, -20}, {60, 80, 160, 180}},
        {"past the top left", kPlain, {1000, 1000}, {0, 0, 100, 100}},
        {"past the bottom right", kPlain, {-1000, -1000}, {200, 300, 300, 400}},
        // Less than a pixel of the image does not count, either way.
        {"less than a pixel", kEnlarged, {3, -3}, {50, 60, 76, 86}},
        {"a pixel and a bit", kEnlarged, {-5, 7}, {51, 59, 77, 85}},
        {"three for one", kShrunk, {1, -2}, {97, 206, 397, 506}},
        {"all in view", kSmall, {-7, 9}, {0, 0, 40, 60}},
        // The corner stops first, then the middle counts.
        {"larger than the view", kStale, {1000, 1000}, {50, 50, 150, 150}},
        // The moved rectangle itself would pass the end of 16 bits.
        {"past the last pixel", kLargest, {-200, -200}, {29567, 29567, 32767, 32767}},
        // 2048 x 16 is 32768, which is negative in 16 bits.
        {"too far", kLargest, {-2048, -2047}, {0, 29567, 3200, 32767}},
    };
    for (const auto& c : cases) {
        const DragScene& scene = c.scene;
        const Point start = {-70, 500};
        const Point current = {Short(start.v + c.moved.v), Short(start.h + c.moved.h)};
        Rect source = scene.source, drawn;
        HandTrackMouse(current, start, source, scene.box, drawn, scene.size, scene.enlarge,
                       scene.shrink);
        EXPECT_EQ(source, c.want) << c.name;
        const bool isSmall = &scene == &kSmall;
        EXPECT_EQ(drawn.top, isSmall ? 30 : 1) << c.name;
        EXPECT_EQ(drawn.left, isSmall ? 20 : 1) << c.name;
    }
}

} // namespace
