#include "ViewGeometry.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>

namespace gif89 {
namespace {

int Below(unsigned limit, std::mt19937& random) {
    return static_cast<int>(random() % limit);
}

TEST(ViewGeometry, FitsTheWholePictureAndEnlargesByWholeNumbers) {
    const struct {
        QSize picture, view;
        double zoom;
    } cases[] = {{{200, 100}, {100, 100}, 0.5}, {{100, 400}, {100, 100}, 0.25},
                 {{30, 20}, {100, 100}, 3},     {{99, 99}, {100, 100}, 1},
                 {{1, 1}, {900, 900}, 64},      {{30000, 2}, {100, 100}, 1.0 / 64}};
    for (const auto& c : cases)
        EXPECT_DOUBLE_EQ(FitZoom(c.picture, c.view), c.zoom) << c.picture.width();
}

TEST(ViewGeometry, KeepsThePointUnderTheMouseWhileZooming) {
    std::mt19937 random(7);
    const QSize view(641, 480);
    for (int i = 0; i < 200; ++i) {
        const ViewFrame frame = {std::exp2(Below(12, random) - 6),
                                 QPointF(Below(900, random), Below(700, random))};
        const QPointF mouse(Below(641, random), Below(480, random));
        const QPointF before = ToPicture(frame, view, mouse);
        const ViewFrame next = ZoomAbout(frame, StepZoom(frame.zoom, i % 2 ? 3 : -2), view, mouse);
        const QPointF moved = ToPicture(next, view, mouse) - before;
        EXPECT_LT(std::hypot(moved.x(), moved.y()), 1e-6) << "case " << i;
    }
}

TEST(ViewGeometry, StepsReturnToWhereTheyCameFrom) {
    for (double zoom = kLeastZoom; zoom < kMostZoom; zoom = StepZoom(zoom, 1)) {
        EXPECT_GT(StepZoom(zoom, 1), zoom);
        EXPECT_DOUBLE_EQ(StepZoom(StepZoom(zoom, 1), -1), zoom);
    }
    EXPECT_EQ(StepZoom(kMostZoom, 1), kMostZoom);
    EXPECT_EQ(StepZoom(0.9, 1), 1); // from between to the next usual one
    EXPECT_EQ(StepZoom(1.1, -1), 1);
}

// Every screen pixel that lies on the picture is drawn, and from the pixel that lies there.
TEST(ViewGeometry, DrawsWhatLiesInTheView) {
    std::mt19937 random(8);
    for (int i = 0; i < 300; ++i) {
        const QSize picture(1 + Below(300, random), 1 + Below(300, random));
        const QSize view(40 + Below(200, random), 40 + Below(200, random));
        const ViewFrame frame = Constrain(
            {std::exp2(Below(8, random) - 3), QPointF(Below(400, random), Below(400, random))},
            picture, view);
        const VisiblePart part = FindVisible(frame, picture, view);
        for (int point = 0; point < 20; ++point) {
            const QPointF place(Below(unsigned(view.width()), random) + 0.5,
                                Below(unsigned(view.height()), random) + 0.5);
            const QPointF there = ToPicture(frame, view, place);
            const double edge = 1 / frame.zoom; // the origin moves by at most half a pixel
            const bool inside =
                QRectF(QPointF(0, 0), picture).adjusted(edge, edge, -edge, -edge).contains(there);
            if (!inside) continue;
            ASSERT_TRUE(part.target.contains(place)) << "case " << i;
            const QPointF drawn =
                (place - part.target.topLeft()) / frame.zoom + QPointF(part.source.topLeft());
            EXPECT_LT(std::abs(drawn.x() - there.x()) * frame.zoom, 0.501) << "case " << i;
            EXPECT_LT(std::abs(drawn.y() - there.y()) * frame.zoom, 0.501) << "case " << i;
        }
        // Panned to a corner, a picture that is larger than the view still fills it.
        if (picture.width() * frame.zoom >= view.width()) {
            EXPECT_LT(part.target.left(), 0.51);
            EXPECT_GT(part.target.right(), view.width() - 0.51);
        }
    }
}

} // namespace
} // namespace gif89
