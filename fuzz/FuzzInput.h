// Takes a fuzzer's bytes apart into choices. Any bytes will do: at their end everything reads as 0.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <string>

class FuzzInput {
  public:
    FuzzInput(const std::uint8_t* bytes, std::size_t count) : rest(bytes, count) {}

    bool IsEmpty() const { return rest.empty(); }
    std::span<const std::uint8_t> Rest() const { return rest; }

    std::uint8_t Byte() {
        const std::span<const std::uint8_t> taken = Take(1);
        return taken.empty() ? std::uint8_t{0} : taken[0];
    }
    bool Flag() { return (Byte() & 1) != 0; }
    /// A number from `least` to `most`; one byte where that is enough, else two.
    int Number(int least, int most) {
        const int values = most - least + 1;
        int number = Byte();
        if (values > 256) number = number << 8 | Byte();
        return least + number % values;
    }
    /// A length byte, then as many bytes, if there are.
    std::string Text() {
        const std::span<const std::uint8_t> bytes = Take(Byte());
        return std::string(bytes.begin(), bytes.end());
    }
    /// At most `count` bytes.
    std::span<const std::uint8_t> Take(std::size_t count) {
        const auto taken = rest.first(std::min(count, rest.size()));
        rest = rest.subspan(taken.size());
        return taken;
    }

  private:
    std::span<const std::uint8_t> rest;
};
