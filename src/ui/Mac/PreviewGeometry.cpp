#include "PreviewGeometry.h"

#include <algorithm>

static_assert((-1 >> 1) == -1, "halvings here are arithmetic shifts");

namespace {

constexpr std::int32_t kMaxEnlarge = 16;
constexpr int kFrame = 1; // the view lies inside the image box's frame
constexpr int kMaxCoordinate = 32767;

/// One direction of a rectangle; `end` lies outside.
struct Span {
    int first;
    int end;
    int Length() const { return end - first; }
};

std::int16_t Narrow(int value) {
    return static_cast<std::int16_t>(value);
}

/// The visible part of `imageLength` pixels of which `visible` fit in the view.
Span FindVisible(int centre, int visible, int imageLength) {
    const int before = (visible + 1) >> 1;
    const int after = visible >> 1;
    const int first = centre - before;
    const int padEnd = first < 0 ? before - centre : 0;
    const int overEnd = std::max(centre + after - imageLength, 0);
    return {std::max(0, first - overEnd), std::min(imageLength, centre + after + padEnd)};
}

/// Where `drawn` pixels lie in the view.
Span PlaceInView(Span view, int drawn) {
    const int space = view.Length() - drawn;
    const int offset = space > 0 ? space >> 1 : 0;
    return {view.first + offset, view.first + offset + drawn};
}

struct Direction {
    Span source;
    Span destination;
};

Direction CalculateDirection(Span view, int centre, int imageLength, std::int32_t shrink,
                             std::int32_t enlarge) {
    // Deliberate: one step more than the view holds, so that a part of a step at its end is not
    // left empty. Drawing cuts off what runs over.
    const int visible = Narrow((view.Length() + enlarge) * shrink / enlarge);
    const Span source = FindVisible(centre, visible, imageLength);
    return {source, PlaceInView(view, source.Length() * enlarge / shrink)};
}

/// How far the visible part moves in the image. `first` is its first pixel.
int DragDistance(int start, int current, int first, int imageLength, std::int32_t enlarge,
                 std::int32_t shrink) {
    const int distance = Narrow((start - current) * shrink / enlarge);
    // The far end is fitted with the view; here only the near corner stays in the image.
    return std::clamp(first + distance, 0, imageLength) - first;
}

/// The middle, as far as a Point can hold it. Deliberate: halves round down while FindVisible puts
/// the larger half before the centre, so that a part of odd length moves one pixel towards the
/// origin each time its own centre is asked for.
std::int16_t Middle(int first, int end) {
    return Narrow(std::min((first + end) >> 1, kMaxCoordinate));
}

} // namespace

bool StepZoom(ZoomFactors* zoom, zoomDirection direction, bool doubleStep) {
    const bool goesIn = direction == zoomIn;
    std::int32_t& falling = goesIn ? zoom->shrink : zoom->enlarge;
    std::int32_t& rising = goesIn ? zoom->enlarge : zoom->shrink;
    const std::int32_t limit = goesIn ? kMaxEnlarge : zoom->maxShrink;

    if (falling >= 2) {
        falling = doubleStep ? falling >> 1 : falling - 1;
        return true;
    }
    if (rising >= limit) return false;
    rising = doubleStep ? std::min(2 * rising, limit) : rising + 1;
    return true;
}

bool ZoomToMode(ZoomFactors* zoom, short mode) {
    const std::int32_t shrink = mode == kZoomToActualPixels ? 1 : zoom->maxShrink;
    if (zoom->shrink == shrink && zoom->enlarge == 1) return false;
    zoom->shrink = shrink;
    zoom->enlarge = 1;
    return true;
}

void CalculateViewRects(Rect* srcRect, Rect* dstRect, const Rect* viewRect, std::int32_t shrink,
                        std::int32_t enlarge, const Point* imageSize, const Point* centre) {
    const Point middle = centre != nullptr ? *centre
                                           : Point{Middle(srcRect->top, srcRect->bottom),
                                                   Middle(srcRect->left, srcRect->right)};
    const Direction across = CalculateDirection({viewRect->left + kFrame, viewRect->right - kFrame},
                                                middle.h, imageSize->h, shrink, enlarge);
    const Direction down = CalculateDirection({viewRect->top + kFrame, viewRect->bottom - kFrame},
                                              middle.v, imageSize->v, shrink, enlarge);
    *srcRect = {Narrow(down.source.first), Narrow(across.source.first), Narrow(down.source.end),
                Narrow(across.source.end)};
    *dstRect = {Narrow(down.destination.first), Narrow(across.destination.first),
                Narrow(down.destination.end), Narrow(across.destination.end)};
}

void HandTrackMouse(Point current, Point start, Rect& srcRect, const Rect& viewRect, Rect& dstRect,
                    const Point& imageSize, std::int32_t enlarge, std::int32_t shrink) {
    const int down = DragDistance(start.v, current.v, srcRect.top, imageSize.v, enlarge, shrink);
    const int across = DragDistance(start.h, current.h, srcRect.left, imageSize.h, enlarge, shrink);
    // The centre is taken before the moved rectangle is cut to 16 bits: in the largest images its
    // far corner would wrap and throw the view to the opposite edge.
    const Point centre = {Middle(srcRect.top + down, srcRect.bottom + down),
                          Middle(srcRect.left + across, srcRect.right + across)};
    CalculateViewRects(&srcRect, &dstRect, &viewRect, shrink, enlarge, &imageSize, &centre);
}
