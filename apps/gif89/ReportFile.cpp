#include "ReportFile.h"

#include "Problem.h"
#include "Streams.h"

#include <fcntl.h>
#include <unistd.h>

namespace gif89 {

ReportFile::ReportFile(const std::string& thePath, Existing existing) : path(thePath) {
    if (path.empty()) return;
    try {
        if (!IsStream(path)) {
            staged.emplace(path, existing);
            return;
        }
    } catch (const OutputProblem& problem) {
        throw Problem(path + ": " + problem.what());
    }
    stream = Descriptor(open(path.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC));
    if (!stream.IsOpen()) throw Problem(path + ": cannot be opened: " + SystemReason());
}

int ReportFile::OutputDescriptor() const {
    if (staged) return staged->FileDescriptor();
    return stream.IsOpen() ? stream.Get() : STDOUT_FILENO;
}

void ReportFile::Add(const std::string& line) {
    if (firstError == 0 && !WriteAll(OutputDescriptor(), line)) firstError = errno;
}

void ReportFile::Finish(Sync sync) {
    const std::string name = path.empty() ? "standard output" : path;
    if (firstError != 0)
        throw Problem(name + ": the report cannot be written: " + SystemReason(firstError));
    try {
        if (staged) staged->Commit(sync);
    } catch (const OutputProblem& problem) {
        throw Problem(name + ": the report cannot be written: " + problem.what());
    }
}

} // namespace gif89
