// Which bands are asked for and handed on, and how a walk ends early.
#include "IterateArea.h"

#include "RandomPictures.h"
#include "ScriptedHost.h"

#include <gtest/gtest.h>

#include <optional>
#include <ostream>

void PrintTo(const HostRequest& request, std::ostream* out) {
    const Rect& r = request.rect;
    *out << "[" << r.top << "," << r.left << "," << r.bottom << "," << r.right << " planes "
         << request.firstPlane << "-" << request.lastPlane << "]";
}

namespace {

struct Walk {
    std::vector<Rect> bands;              // as the procedure got them
    std::vector<std::uint8_t> firstBytes; // of every band that has any
    std::int32_t rowBytes = 0;
    int stopAt = 0; // the call, from 1, that answers 1
};

short NoteBand(const Rect* band, std::int32_t rowBytes, const std::uint8_t* data, Walk* walk) {
    walk->bands.push_back(*band);
    walk->rowBytes = rowBytes;
    if (band->top < band->bottom) walk->firstBytes.push_back(data[0]);
    return static_cast<int>(walk->bands.size()) == walk->stopAt;
}

struct Host : ScriptedHost {
    Host(int height, int width, std::int32_t budget)
        : ScriptedHost(height, width, 4, RandomPixels(PictureKind::noise, height, width, 4, 1)) {
        record.memoryBudget = budget;
    }
    short Run(const Rect* area, short lo, short hi, Walk& walk) {
        return IterateArea(&record, area, lo, hi, AsTileProc<NoteBand>, TileRefCon(&walk));
    }
};

TEST(IterateArea, AsksForBandsThatLeaveOutTheRowBetweenThem) {
    constexpr std::int32_t kPlenty = 0x7FFFFFFF;
    const struct {
        const char* name;
        short rows, columns;
        std::int32_t budget;
        std::optional<Rect> area;
        short lo, hi;
        std::vector<std::pair<short, short>> bands; // top, bottom
    } cases[] = {
        {"everything in one band", 10, 100, kPlenty, {}, 0, 2, {{0, 10}}},
        {"an area in one band", 10, 100, kPlenty, Rect{2, 3, 7, 50}, 0, 3, {{2, 7}}},
        {"not quite five rows", 10, 100, 999, {}, 0, 2, {{0, 3}, {4, 7}, {8, 10}}},
        {"four planes", 10, 100, 900, {}, 0, 3, {{0, 2}, {3, 5}, {6, 8}, {9, 10}}},
        {"planes from 1", 10, 100, 400, {}, 1, 2, {{0, 3}, {4, 7}, {8, 10}}},
        {"bands inside an area", 10, 100, 80, Rect{3, 5, 9, 15}, 0, 2, {{3, 6}, {7, 9}}},
        {"no columns", 10, 100, kPlenty, Rect{0, 7, 10, 7}, 0, 2, {}},
        {"a row of 98301 bytes", 2, 32767, 98301, {}, 0, 3, {{0, 0}, {1, 1}}},
        {"the highest", 32767, 1, kPlenty, Rect{32766, 0, 32767, 1}, 0, 1, {{32766, 32767}}},
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        Host host(c.rows, c.columns, c.budget);
        host.extraRowBytes = 5;
        Walk walk;
        EXPECT_EQ(host.Run(c.area ? &*c.area : nullptr, c.lo, c.hi, walk), 0);

        const Rect area = c.area.value_or(Rect{0, 0, c.rows, c.columns});
        const auto picture = RandomPixels(PictureKind::noise, c.rows, c.columns, 4, 1);
        std::vector<HostRequest> wanted;
        std::vector<Rect> bands;
        std::vector<std::uint8_t> firstBytes;
        for (const auto& [top, bottom] : c.bands) {
            bands.push_back({top, area.left, bottom, area.right});
            wanted.push_back({bands.back(), c.lo, c.hi});
            const int first = (top * c.columns + area.left) * 4 + c.lo;
            if (top < bottom) firstBytes.push_back(picture[static_cast<std::size_t>(first)]);
        }
        EXPECT_EQ(host.requests, wanted);
        EXPECT_EQ(walk.firstBytes, firstBytes);
        EXPECT_TRUE(walk.bands == bands);
        EXPECT_EQ(walk.rowBytes,
                  bands.empty() ? 0 : (area.right - area.left) * (c.hi - c.lo + 1) + 5);
    }
}

TEST(IterateArea, RepeatsTheRequestWhenTheBudgetIsBelowOneRow) {
    // From row 0 on the whole area is asked for, elsewhere a band that ends above its top.
    for (const auto& [top, bottom] : {std::pair<short, short>{0, 10}, {5, 4}}) {
        Host host(10, 100, 199);
        host.sameRequestLimit = 5;
        Walk walk;
        const Rect area = {top, 0, 10, 100};
        EXPECT_EQ(host.Run(&area, 0, 2, walk), ScriptedHost::kSameRequestTooOften);
        const HostRequest same = {{top, 0, bottom, 100}, 0, 2};
        EXPECT_EQ(host.requests, std::vector<HostRequest>(6, same)) << "top " << top;
        EXPECT_EQ(walk.bands.size(), 5u);
    }
}

TEST(IterateArea, EndsWithTheFirstAnswerThatIsNotZero) {
    for (const int n : {1, 2, 3})
        for (const bool hostFails : {true, false}) {
            Host host(10, 100, 800);
            Walk walk;
            (hostFails ? host.failAt : walk.stopAt) = n;
            EXPECT_EQ(host.Run(nullptr, 0, 2, walk), hostFails ? short{ioErr} : short{1});
            EXPECT_EQ(static_cast<int>(host.requests.size()), n);
            EXPECT_EQ(static_cast<int>(walk.bands.size()), n - hostFails) << "bands handed on";
        }
}

TEST(IterateArea, RefusesFewerThanTwoPlanesAndAHostThatCannotDeliver) {
    Host host(10, 100, 800);
    Walk walk;
    EXPECT_EQ(host.Run(nullptr, 1, 1, walk), paramErr);
    host.record.advanceProc.Clear();
    EXPECT_EQ(host.Run(nullptr, 0, 2, walk), paramErr);
    EXPECT_TRUE(host.requests.empty());
}

} // namespace
