#include "FileAccess.h"

#include <fcntl.h>
#include <sys/stat.h>
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

    // A hidden file in the directory of `path`, so that it can be renamed
    // over `path`; it gets `mode` rather than mkstemp's 0600. Nothing when
    // the directory takes no new file.
    std::optional<std::string> createBeside(const std::string &path, mode_t mode) {
        const std::filesystem::path target(path);
        std::string hidden(".");
        hidden.append(target.filename().string()).append(".tarvex-XXXXXX");
        std::string pattern = (target.parent_path() / hidden).string();
        const int descriptor = mkstemp(pattern.data());
        // A directory that is missing takes no file at all; one that takes no
        // new file may still let an existing one be written.
        if (descriptor < 0 && (errno == ENOENT || errno == ENOTDIR))
            throw CliError("cannot write " + path + ": " + std::strerror(errno));
        if (descriptor < 0) return std::nullopt;
        const bool modeSet = fchmod(descriptor, mode) == 0;
        close(descriptor);
        paths_.push_back(pattern);
        if (!modeSet) throw CliError("cannot write " + path + ": " + std::strerror(errno));
        return pattern;
    }

    // Removes `path` now, or only forgets it once it was renamed away.
    void drop(const std::string &path, bool remove) {
        if (remove) std::remove(path.c_str());
        std::erase(paths_, path);
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

namespace {

// How an output is written: through standard output; straight into a device
// or a pipe, which has no format of its own to go by; straight through
// whatever else already stands there and is not a plain file (a symbolic
// link stays a link); or by replacing a plain file, or creating one.
enum class OutputTarget { StandardOutput, Stream, WrittenThrough, Replaced };

OutputTarget outputTarget(const std::string &path) {
    if (isStandardStream(path)) return OutputTarget::StandardOutput;
    std::error_code error;
    const std::filesystem::file_status followed = std::filesystem::status(path, error);
    if (std::filesystem::is_character_file(followed) || std::filesystem::is_fifo(followed))
        return OutputTarget::Stream;
    const std::filesystem::file_status own = std::filesystem::symlink_status(path, error);
    if (std::filesystem::exists(own) && !std::filesystem::is_regular_file(own)) return OutputTarget::WrittenThrough;
    return OutputTarget::Replaced;
}

}  // namespace

bool isStreamTarget(const std::string &path) {
    const OutputTarget target = outputTarget(path);
    return target == OutputTarget::StandardOutput || target == OutputTarget::Stream;
}

std::string namingStandardInput(std::string message) {
    const std::optional<std::string> &copy = copyOfStandardInput();
    if (!copy) return message;
    for (std::size_t at; (at = message.find(*copy)) != std::string::npos;)
        message.replace(at, copy->size(), "standard input");
    return message;
}

namespace {

// The mode a file written to `path` gets: that of the file it replaces, else
// what creating it would give under the umask.
mode_t modeFor(const std::string &path) {
    struct stat existing {};
    if (stat(path.c_str(), &existing) == 0) return existing.st_mode & 07777;
    const mode_t mask = umask(0);
    umask(mask);
    return 0666 & ~mask;
}

std::string replacedAll(std::string text, const std::string &from, const std::string &to) {
    for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size())
        text.replace(at, from.size(), to);
    return text;
}

// Writes a file beside `path` and renames it over `path` once it is
// complete, so that a write that fails half way (a transparent colour that a
// palette lacks, a full disk) leaves neither a broken file nor an earlier
// one destroyed.
void replaceFile(const std::string &path, const std::function<void(const std::string &)> &write) {
    const std::optional<std::string> beside = temporaryFiles().createBeside(path, modeFor(path));
    // A writable file in a directory that takes no new one is written in place.
    if (!beside) return write(path);
    const std::string &temporary = *beside;
    try {
        write(temporary);
    } catch (const CliError &error) {
        temporaryFiles().drop(temporary, true);
        throw CliError(replacedAll(error.what(), temporary, path), error.exitStatus);
    } catch (...) {
        temporaryFiles().drop(temporary, true);
        throw;
    }
    if (std::rename(temporary.c_str(), path.c_str()) != 0) {
        const std::string reason = std::strerror(errno);
        temporaryFiles().drop(temporary, true);
        throw CliError("cannot write " + path + ": " + reason);
    }
    temporaryFiles().drop(temporary, false);
}

}  // namespace

void writeOutput(const std::string &path, const std::function<void(const std::string &)> &write) {
    std::error_code error;
    if (std::filesystem::is_directory(path, error)) throw CliError("cannot write " + path + ": is a directory");
    switch (outputTarget(path)) {
    case OutputTarget::Stream:
    case OutputTarget::WrittenThrough:
        return write(path);
    case OutputTarget::Replaced:
        return replaceFile(path, write);
    case OutputTarget::StandardOutput:
        break;
    }
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
