#include "FileAccess.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <optional>
#include <vector>

#include "Command.h"

namespace tarvex_cli {
namespace {

// Temporary files, removed when the tool exits however a command ends.
class TemporaryFiles {
public:
    ~TemporaryFiles() {
        for (const std::string &path : paths_) std::remove(path.c_str());
    }

    std::string create() {
        std::string pattern = (std::filesystem::temp_directory_path() / "tarvex-XXXXXX").string();
        const int descriptor = mkstemp(pattern.data());
        if (descriptor < 0) throw CliError("cannot create a temporary file: " + std::string(std::strerror(errno)));
        close(descriptor);
        paths_.push_back(pattern);
        return pattern;
    }

private:
    std::vector<std::string> paths_;
};

TemporaryFiles &temporaryFiles() {
    static TemporaryFiles files;
    return files;
}

void copyStream(std::FILE *from, std::FILE *to, const std::string &fromName, const std::string &toName) {
    char buffer[65536];
    std::size_t got;
    while ((got = std::fread(buffer, 1, sizeof buffer, from)) > 0)
        if (std::fwrite(buffer, 1, got, to) != got)
            throw CliError("cannot write " + toName + ": " + std::strerror(errno));
    if (std::ferror(from)) throw CliError("cannot read " + fromName + ": " + std::strerror(errno));
}

std::optional<std::string> &copyOfStandardInput() {
    static std::optional<std::string> copy;
    return copy;
}

std::string standardInputCopy() {
    std::optional<std::string> &copy = copyOfStandardInput();
    if (copy) return *copy;
    const std::string path = temporaryFiles().create();
    std::FILE *file = std::fopen(path.c_str(), "wb");
    if (file == nullptr) throw CliError("cannot write " + path + ": " + std::strerror(errno));
    copyStream(stdin, file, "standard input", path);
    if (std::fclose(file) != 0) throw CliError("cannot write " + path + ": " + std::strerror(errno));
    copy = path;
    return path;
}

}  // namespace

void checkReadable(const std::string &path) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw CliError(path + ": is a directory");
    const int descriptor = open(path.c_str(), O_RDONLY);
    if (descriptor < 0) throw CliError("cannot open " + path + ": " + std::strerror(errno));
    close(descriptor);
}

std::string readablePath(const std::string &path) {
    if (isStandardStream(path)) return standardInputCopy();
    checkReadable(path);
    return path;
}

std::string namingStandardInput(std::string message) {
    const std::optional<std::string> &copy = copyOfStandardInput();
    if (!copy) return message;
    for (std::size_t at; (at = message.find(*copy)) != std::string::npos;)
        message.replace(at, copy->size(), "standard input");
    return message;
}

void writeOutput(const std::string &path, const std::function<void(const std::string &)> &write) {
    if (!isStandardStream(path)) return write(path);
    const std::string temporary = temporaryFiles().create();
    write(temporary);
    std::FILE *file = std::fopen(temporary.c_str(), "rb");
    if (file == nullptr) throw CliError("cannot read " + temporary + ": " + std::strerror(errno));
    try {
        copyStream(file, stdout, temporary, "standard output");
    } catch (...) {
        std::fclose(file);
        throw;
    }
    std::fclose(file);
    if (std::fflush(stdout) != 0) throw CliError("cannot write standard output: " + std::string(std::strerror(errno)));
}

}  // namespace tarvex_cli
