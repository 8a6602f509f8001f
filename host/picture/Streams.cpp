#include "Streams.h"

#include "Descriptor.h"
#include "Problem.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

namespace gif89 {
namespace {

// Makes a call until it does not ask to be made again, as it does on a stream that is set not to
// wait.
template <class Call> ssize_t Waiting(int descriptor, short event, Call call) {
    for (;;) {
        const ssize_t result = Uninterrupted(call);
        if (result >= 0 || (errno != EAGAIN && errno != EWOULDBLOCK)) return result;
        pollfd ready = {descriptor, event, 0};
        if (Uninterrupted([&ready] { return poll(&ready, 1, -1); }) < 0) return -1;
    }
}

} // namespace

void OccupyStandardStreams() {
    for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
        if (fcntl(stream, F_GETFD) >= 0) continue;
        // Opened like this, anything can be had without a right to it and is neither read nor
        // written. The lowest free number is this stream's.
        static_cast<void>(open("/", O_PATH));
    }
}

ssize_t ReadSome(int descriptor, void* bytes, std::size_t count) {
    return Waiting(descriptor, POLLIN, [=] { return read(descriptor, bytes, count); });
}

bool WriteAll(int descriptor, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = Waiting(
            descriptor, POLLOUT, [=] { return write(descriptor, bytes.data(), bytes.size()); });
        if (written < 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return true;
}

void WriteToStandardOutput(const std::string& text) {
    if (!WriteAll(STDOUT_FILENO, text))
        throw Problem("standard output cannot be written: " + SystemReason());
}

bool IsStream(const std::string& path) {
    struct stat status;
    return stat(path.c_str(), &status) == 0 && !S_ISREG(status.st_mode) && !S_ISDIR(status.st_mode);
}

} // namespace gif89
