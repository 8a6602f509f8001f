#include "StatedColors.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <lcms2.h>
#include <memory>
#include <string>

namespace gif89 {

namespace {

using ProfileUse = InputNotes::ProfileUse;

/// From a sample to light, 0..1: (a sample + b) ^ exponent, and c sample below `start`.
struct Curve {
    double exponent, a = 1, b = 0, c = 0, start = 0;
};
constexpr Curve kStandardCurve = {2.4, 1 / 1.055, 0.055 / 1.055, 1 / 12.92, 0.04045};
constexpr double kTop = 1.09929682680944; // of the curve that television shares
constexpr Curve kTelevisionCurve = {1 / 0.45, 1 / kTop, (kTop - 1) / kTop, 1 / 4.5, 0.0812428583};

constexpr double kX65 = 0.3127, kY65 = 0.3290; // daylight
constexpr Chromaticities kStandardPoints = {kX65, kY65, 0.640, 0.330, 0.300, 0.600, 0.150, 0.060};

struct Primaries {
    int code;
    const char* name;
    Chromaticities points;
};
constexpr Primaries kPrimaries[] = {
    {1, "BT.709", kStandardPoints},
    {5, "BT.601 (625 lines)", {kX65, kY65, 0.640, 0.330, 0.290, 0.600, 0.150, 0.060}},
    {6, "BT.601 (525 lines)", {kX65, kY65, 0.630, 0.340, 0.310, 0.595, 0.155, 0.070}},
    {9, "BT.2020", {kX65, kY65, 0.708, 0.292, 0.170, 0.797, 0.131, 0.046}},
    {11, "DCI P3", {0.314, 0.351, 0.680, 0.320, 0.265, 0.690, 0.150, 0.060}},
    {12, "Display P3", {kX65, kY65, 0.680, 0.320, 0.265, 0.690, 0.150, 0.060}}};

struct Transfer {
    int code;
    const char* name;
    Curve curve;
};
constexpr Transfer kTransfers[] = {{1, "BT.709 curve", kTelevisionCurve},
                                   {4, "gamma 2.2", {2.2}},
                                   {5, "gamma 2.8", {2.8}},
                                   {6, "BT.601 curve", kTelevisionCurve},
                                   {8, "linear", {1}},
                                   {13, "sRGB curve", kStandardCurve},
                                   {14, "BT.2020 curve", kTelevisionCurve},
                                   {15, "BT.2020 curve", kTelevisionCurve}};

template <typename Row, std::size_t count> const Row* Find(const Row (&rows)[count], int code) {
    const Row* const found = std::find_if(std::begin(rows), std::end(rows),
                                          [code](const Row& row) { return row.code == code; });
    return found == std::end(rows) ? nullptr : found;
}

struct ProfileRelease {
    void operator()(void* profile) const { cmsCloseProfile(profile); }
};
using Profile = std::unique_ptr<void, ProfileRelease>;

Profile MakeProfile(const Curve& curve, const Chromaticities& points, SampleKind samples) {
    const double numbers[] = {curve.exponent, curve.a, curve.b, curve.c, curve.start};
    constexpr int kExponentAboveALine = 4; // the library's number for such a curve
    const std::unique_ptr<cmsToneCurve, void (*)(cmsToneCurve*)> tone(
        cmsBuildParametricToneCurve(nullptr, kExponentAboveALine, numbers), cmsFreeToneCurve);
    if (!tone) return nullptr;
    const cmsCIExyY white = {points[0], points[1], 1};
    if (samples == SampleKind::grey) return Profile(cmsCreateGrayProfile(&white, tone.get()));
    const cmsCIExyYTRIPLE primaries = {
        {points[2], points[3], 1}, {points[4], points[5], 1}, {points[6], points[7], 1}};
    cmsToneCurve* const tones[] = {tone.get(), tone.get(), tone.get()};
    return Profile(cmsCreateRGBProfile(&white, &primaries, tones));
}

void SetName(cmsHPROFILE profile, const std::string& name) {
    const std::unique_ptr<cmsMLU, void (*)(cmsMLU*)> text(cmsMLUalloc(nullptr, 1), cmsMLUfree);
    if (text && cmsMLUsetASCII(text.get(), "en", "US", name.c_str()))
        cmsWriteTag(profile, cmsSigProfileDescriptionTag, text.get());
}

// As the bytes that a file would have had.
void PutProfile(InputNotes& notes, const std::string& name, const Curve& curve,
                const Chromaticities& points, SampleKind samples) {
    notes.profileUse = ProfileUse::unusable;
    notes.profileName = name;
    const Profile profile = MakeProfile(curve, points, samples);
    if (!profile) return;
    SetName(profile.get(), name);
    cmsUInt32Number size = 0;
    if (!cmsSaveProfileToMem(profile.get(), nullptr, &size)) return;
    notes.profile.resize(size);
    if (!cmsSaveProfileToMem(profile.get(), notes.profile.data(), &size)) notes.profile.clear();
}

void PutStandard(InputNotes& notes) {
    notes.profileUse = ProfileUse::same;
    notes.profileName = "sRGB";
}

bool AreStandard(const Chromaticities& points) {
    constexpr double kRoundings = 0.001; // of programs that write them
    return std::equal(points.begin(), points.end(), kStandardPoints.begin(),
                      [](double a, double b) { return std::abs(a - b) <= kRoundings; });
}

} // namespace

void StateCodePoints(InputNotes& notes, std::span<const std::uint8_t> points, SampleKind samples) {
    constexpr std::uint8_t kStandardTransfer = 13, kPQ = 16, kHLG = 18, kFullRange = 1;
    notes.profileUse = ProfileUse::unusable;
    notes.profileName = "code points that are not understood";
    if (points.size() != 4 || points[2] != 0 || points[3] != kFullRange) return;
    const Primaries* const primaries = Find(kPrimaries, points[0]);
    const Transfer* const transfer = Find(kTransfers, points[1]);
    if (points[1] == kPQ) notes.profileName = "PQ, brighter than sRGB can be";
    if (points[1] == kHLG) notes.profileName = "HLG, brighter than sRGB can be";
    if (!primaries || !transfer) return;
    if (points[0] == 1 && points[1] == kStandardTransfer) return PutStandard(notes);
    PutProfile(notes, std::string(primaries->name) + ", " + transfer->name, transfer->curve,
               primaries->points, samples);
}

void StateGamma(InputNotes& notes, std::optional<double> gamma,
                const std::optional<Chromaticities>& points, SampleKind samples) {
    constexpr double kMeantForStandard = 1 / 2.2, kRounding = 0.005;
    constexpr double kLeast = 0.1, kMost = 10; // what exponents in use are between
    if (!gamma && !points) return;
    const bool standardPoints = !points || AreStandard(*points);
    if (standardPoints && (!gamma || std::abs(*gamma - kMeantForStandard) <= kRounding))
        return PutStandard(notes);
    char name[40] = "";
    if (gamma) std::snprintf(name, sizeof name, "gamma %.2f", 1 / *gamma);
    std::string whole = name;
    if (!standardPoints) whole += gamma ? " and chromaticities" : "chromaticities";
    notes.profileUse = ProfileUse::unusable;
    notes.profileName = whole;
    if (gamma && (*gamma < kLeast || *gamma > kMost)) return;
    PutProfile(notes, whole, gamma ? Curve{1 / *gamma} : kStandardCurve,
               points.value_or(kStandardPoints), samples);
}

} // namespace gif89
