#pragma once

#include <functional>
#include <string>

namespace tarvex_cli {

// "-" stands for standard input where a file is read and for standard output
// where one is written.
inline bool isStandardStream(const std::string &path) { return path == "-"; }

// Standard output, or a device or pipe such as /dev/null: a stream whose
// name says nothing of the format written to it.
bool isStreamTarget(const std::string &path);

// Throws a CliError that keeps the reason when a file cannot be read:
// "X: is a directory", "cannot open X: No such file or directory", ...
void checkReadable(const std::string &path);

// A path that the readers and the plug-in can open: the file itself once it
// proved readable, or for "-" a temporary copy of standard input, made once
// and removed when the tool exits.
std::string readablePath(const std::string &path);

// `message` with the temporary copy of standard input called "standard
// input": users gave "-", and the copy is gone once the tool exits.
std::string namingStandardInput(std::string message);

// Runs `write` on a temporary file that then takes the place of `path`, or
// for "-" is copied to standard output: the plug-in's writers take file
// names only, and a failed write must not leave a truncated file behind.
// Devices, pipes and symbolic links are written through directly.
void writeOutput(const std::string &path, const std::function<void(const std::string &)> &write);

}  // namespace tarvex_cli
