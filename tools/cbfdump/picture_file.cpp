// SPDX-License-Identifier: MIT
#include "cbfdump/picture_file.h"

#include "common/failure.h"
#include "common/output_file.h"
#include "common/streams.h"

#include <csignal>

#include <fcntl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace cbfdump {

namespace {

[[noreturn]] void BecomeFfmpeg(int input, int output) {
    sigset_t none; // not even those that the output file holds back
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    dup2(input, STDIN_FILENO);
    dup2(output, STDOUT_FILENO);
    execlp("ffmpeg", "ffmpeg", "-v", "error", "-f", "image2pipe", "-c:v", "pgm", "-i", "-", "-f",
           "image2pipe", "-c:v", "png", "-", static_cast<char *>(nullptr));
    _exit(127);
}

// The child's exit status.
int RunFfmpeg(const std::string &pgm, int output) {
    int ends[2];
    if (pipe2(ends, O_CLOEXEC) != 0)
        throw tool::SystemFailure("ffmpeg");
    const auto before = std::signal(SIGPIPE, SIG_IGN); // a child that fails tells by its status
    const pid_t child = fork();
    if (child == 0)
        BecomeFfmpeg(ends[0], output);
    close(ends[0]);
    const bool written = child > 0 && tool::WriteFully(ends[1], pgm.data(), pgm.size());
    close(ends[1]);
    int status = -1;
    if (child > 0)
        waitpid(child, &status, 0);
    std::signal(SIGPIPE, before);
    return WIFEXITED(status) && (written || status != 0) ? WEXITSTATUS(status) : -1;
}

void WritePng(const std::string &pgm, const std::string &path) {
    tool::OutputFile file(path);
    const int status = RunFfmpeg(pgm, file.FileDescriptor());
    if (status == 127)
        throw tool::Failure(tool::kBadData,
                            path + ": a PNG needs the ffmpeg program; FILE.pgm is written without");
    if (status != 0)
        throw tool::Failure(tool::kBadData, path + ": ffmpeg could not write it");
    file.Publish();
}

} // namespace

void WritePicture(const Picture &picture, const std::string &path) {
    const std::string pgm = "P5\n" + std::to_string(picture.width) + " " +
                            std::to_string(picture.height) + "\n255\n" +
                            std::string(picture.luma.begin(), picture.luma.end());
    const size_t dot = path.rfind('.');
    if (dot == std::string::npos || path.substr(dot) != ".pgm")
        return WritePng(pgm, path);
    tool::OutputFile file(path);
    file.Write(pgm.data(), pgm.size());
    file.Publish();
}

} // namespace cbfdump
