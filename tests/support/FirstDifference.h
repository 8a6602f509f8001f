// Says where two sequences part, for those too long to be printed whole.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

/// Empty when both are equal, else the first place where they differ and what stands there.
template <class Sequence> std::string FirstDifference(const Sequence& got, const Sequence& want) {
    const auto [gotAt, wantAt] = std::mismatch(got.begin(), got.end(), want.begin(), want.end());
    if (gotAt == got.end() && wantAt == want.end()) return "";
    const auto show = [](auto at, auto end) {
        return at == end ? std::string("the end") : testing::PrintToString(*at);
    };
    return "at " + std::to_string(gotAt - got.begin()) + ": got " + show(gotAt, got.end()) +
           ", want " + show(wantAt, want.end());
}
