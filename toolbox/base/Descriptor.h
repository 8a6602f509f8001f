// A file descriptor of the system with an owner, and calls that signals may interrupt.
#pragma once

#include <cerrno>
#include <utility>

#include <unistd.h>

/// Owns a descriptor and closes it; -1 owns nothing.
class Descriptor {
  public:
    explicit Descriptor(int owned = -1) : descriptor(owned) {}
    Descriptor(Descriptor&& other) noexcept : descriptor(other.Release()) {}
    Descriptor& operator=(Descriptor&& other) noexcept {
        std::swap(descriptor, other.descriptor);
        return *this;
    }
    ~Descriptor() {
        if (descriptor >= 0) close(descriptor);
    }

    bool IsOpen() const { return descriptor >= 0; }
    int Get() const { return descriptor; }
    int Release() { return std::exchange(descriptor, -1); }

  private:
    int descriptor;
};

/// Makes a system call again as long as signals interrupt it.
template <class Call> auto Uninterrupted(Call call) {
    auto result = call();
    while (result == -1 && errno == EINTR) result = call();
    return result;
}
