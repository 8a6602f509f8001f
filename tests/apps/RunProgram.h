// Runs one of our programs and keeps what it said.
#pragma once

#include "TemporaryFolder.h"

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <string>
#include <vector>

struct ProgramRun {
    int exitCode = -1; ///< negative: ended by that signal
    std::string output;
    std::string errors;
};

struct ProgramSettings {
    std::string folder; ///< working folder; empty keeps ours
    std::string input;  ///< file for standard input; empty is nothing to read
    rlim_t largestFile = RLIM_INFINITY;
    suseconds_t endAfter = 0; ///< microseconds until a signal that it does not catch; 0 is never
};

/// Runs a program of the build tree, which lies beside the tests.
inline ProgramRun RunProgram(const std::string& name, const std::vector<std::string>& arguments,
                             const ProgramSettings& settings = {}) {
    const TemporaryFolder said;
    const std::string program =
        std::filesystem::read_symlink("/proc/self/exe").parent_path() / name;
    const std::string outputPath = said.Path("output"), errorPath = said.Path("errors");
    const pid_t child = fork();
    if (child == 0) {
        const std::string input = settings.input.empty() ? "/dev/null" : settings.input;
        const auto redirect = [](int to, const char* path, int flags) {
            dup2(open(path, flags, 0600), to);
        };
        redirect(STDIN_FILENO, input.c_str(), O_RDONLY);
        redirect(STDOUT_FILENO, outputPath.c_str(), O_WRONLY | O_CREAT);
        redirect(STDERR_FILENO, errorPath.c_str(), O_WRONLY | O_CREAT);
        if (!settings.folder.empty() && chdir(settings.folder.c_str()) != 0) _exit(126);
        const rlimit limit = {settings.largestFile, RLIM_INFINITY};
        if (settings.largestFile != RLIM_INFINITY) setrlimit(RLIMIT_FSIZE, &limit);
        const itimerval timer = {{}, {0, settings.endAfter}};
        setitimer(ITIMER_REAL, &timer, nullptr);
        std::vector<char*> argv = {const_cast<char*>(name.c_str())};
        for (const std::string& argument : arguments)
            argv.push_back(const_cast<char*>(argument.c_str()));
        argv.push_back(nullptr);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
    int status = 0;
    waitpid(child, &status, 0);
    ProgramRun run;
    run.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -WTERMSIG(status);
    run.output = said.Read("output");
    run.errors = said.Read("errors");
    return run;
}
