// SPDX-License-Identifier: MIT
/// Makes pictures with Graphviz' dot.
#include "picture.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <memory>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "input.h"

namespace Corvane::Velk {

namespace {

using TemporaryFile = std::unique_ptr<std::FILE, int (*)(std::FILE*)>;

TemporaryFile makeTemporaryFile()
{
    TemporaryFile file(std::tmpfile(), std::fclose);
    if (!file) {
        throw Failure(std::string("can't make a temporary file: ") + std::strerror(errno));
    }
    return file;
}

std::string contentOf(std::FILE* file)
{
    std::string content;
    std::rewind(file);
    char bytes[4096];
    for (std::size_t size = 0; (size = std::fread(bytes, 1, sizeof bytes, file)) != 0;) {
        content.append(bytes, size);
    }
    return content;
}

/// Runs dot between two temporary files: between two pipes it and this program could wait for each other.
std::string runDot(const std::string& drawing, const std::string& kind)
{
    const TemporaryFile in = makeTemporaryFile();
    const TemporaryFile out = makeTemporaryFile();
    const bool isWritten = std::fwrite(drawing.data(), 1, drawing.size(), in.get()) == drawing.size();
    if (!isWritten || std::fseek(in.get(), 0, SEEK_SET) != 0) { // which writes what is still buffered
        throw Failure(std::string("can't write a temporary file: ") + std::strerror(errno));
    }
    posix_spawn_file_actions_t actions;
    ::posix_spawn_file_actions_init(&actions);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(in.get()), STDIN_FILENO);
    ::posix_spawn_file_actions_adddup2(&actions, ::fileno(out.get()), STDOUT_FILENO);
    std::string program = "dot";
    std::string option = "-T" + kind;
    char* const arguments[] = {program.data(), option.data(), nullptr};
    pid_t process = 0;
    const int error = ::posix_spawnp(&process, "dot", &actions, nullptr, arguments, environ);
    ::posix_spawn_file_actions_destroy(&actions);
    int status = 0;
    while (error == 0 && ::waitpid(process, &status, 0) < 0 && errno == EINTR) {
    }
    constexpr int notFound = 127; // that is all an emulator tells about a program that isn't there
    if (error != 0 || (WIFEXITED(status) && WEXITSTATUS(status) == notFound)) {
        throw Failure(std::string("can't run dot: ") + std::strerror(error != 0 ? error : ENOENT) +
                      "; install Graphviz, or write a file whose name ends with .dot");
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw Failure("dot could not make the picture");
    }
    return contentOf(out.get());
}

} // namespace

void writePicture(const std::string& drawing, const std::string& file)
{
    const std::size_t dot = file.rfind('.');
    const std::string kind = dot != std::string::npos ? file.substr(dot + 1) : "";
    if (kind != "svg" && kind != "png" && kind != "dot") {
        throw Failure(file + ": the name must end with .svg, .png or .dot");
    }
    const std::string content = kind == "dot" ? drawing : runDot(drawing, kind);
    std::ofstream out(file, std::ios::binary);
    if (!(out << content << std::flush)) {
        throw Failure(file + ": " + std::strerror(errno));
    }
}

} // namespace Corvane::Velk
