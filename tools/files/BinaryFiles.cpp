#include "BinaryFiles.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>
#include <memory>

#include "Command.h"
#include "NumberText.h"

namespace tarvex_cli {
namespace {

struct FileCloser {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
using File = std::unique_ptr<std::FILE, FileCloser>;

CliError fileError(const std::string &what, const std::string &path) {
    return CliError("cannot " + what + " " + path + ": " + std::strerror(errno));
}

}  // namespace

std::vector<std::byte> readFileBytes(const std::string &path, std::size_t most) {
    File file(std::fopen(path.c_str(), "rb"));
    if (!file) throw fileError("open", path);
    std::vector<std::byte> bytes;
    std::byte buffer[65536];
    std::size_t got;
    while (bytes.size() < most &&
           (got = std::fread(buffer, 1, std::min(sizeof buffer, most - bytes.size()), file.get())) > 0)
        bytes.insert(bytes.end(), buffer, buffer + got);
    if (std::ferror(file.get())) throw fileError("read", path);
    return bytes;
}

std::string heldBytes(std::size_t got, std::size_t needed) {
    return std::string("holds ") + (got > needed ? "more than " : "") +
           countOf(static_cast<long long>(std::min(got, needed)), "byte");
}

void writeFileBytes(const std::string &path, const void *data, std::size_t size) {
    File file(std::fopen(path.c_str(), "wb"));
    if (!file) throw fileError("create", path);
    if (size > 0 && std::fwrite(data, 1, size, file.get()) != size) throw fileError("write", path);
    // fclose flushes: its failure is a failed write too.
    if (std::fclose(file.release()) != 0) throw fileError("write", path);
}

}  // namespace tarvex_cli
