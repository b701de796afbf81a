// SPDX-License-Identifier: MIT
// One function tells of all exceptions, those from before main among them.
#include "common/program.h"

#include "common/failure.h"
#include "common/streams.h"

#include <cerrno> // for the program's name
#include <csignal>
#include <exception>
#include <new>

#include <fcntl.h>
#include <unistd.h>

namespace tool {

// A file that is opened while a standard stream is closed would take its place, and be read or
// written as that stream. A place held the wrong way round fails as a closed one does.
static void HoldStandardStreams() {
    for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO})
        if (fcntl(descriptor, F_GETFD) < 0)
            open("/dev/null", descriptor == STDIN_FILENO ? O_WRONLY : O_RDONLY);
}

constexpr char kShortMemory[] = "not enough memory";

// Tells of the exception that is being handled, and returns the exit code.
static int TellOfException(const char *name) {
    try {
        throw;
    } catch (const Failure &failure) {
        Say(name, failure.what());
        return failure.exitCode;
    } catch (const std::bad_alloc &) {
        Say(name, kShortMemory);
    } catch (const std::exception &error) {
        Say(name, error.what());
    } catch (...) {
        Say(name, "stopped for a reason that it can't name");
    }
    return kBadData;
}

// For exceptions that nothing catches: from constructors of static objects, which run before main,
// and where memory is too short to hold the exception itself. Comes before those constructors;
// lower numbers belong to the compiler.
[[gnu::constructor(101)]] static void HandleEarlyExceptions() {
    std::set_terminate([] {
        if (!std::current_exception())
            StopForMemory();
        _exit(TellOfException(program_invocation_short_name));
    });
}

void StopForMemory() {
    Say(program_invocation_short_name, kShortMemory);
    _exit(kBadData);
}

int RunProgram(const char *name, int argc, char **argv, int (*run)(int argc, char **argv)) {
    HoldStandardStreams();
    std::signal(SIGXFSZ, SIG_IGN); // a file that gets too large is told like any other failure
    try {
        return run(argc, argv);
    } catch (...) {
        return TellOfException(name);
    }
}

} // namespace tool
