#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tarvex_cli {

// Whole-file reads and writes; failures are CliErrors naming the file and
// the system's reason.
std::vector<std::byte> readFileBytes(const std::string &path);
void writeFileBytes(const std::string &path, const void *data, std::size_t size);
inline void writeTextFile(const std::string &path, const std::string &text) {
    writeFileBytes(path, text.data(), text.size());
}

}  // namespace tarvex_cli
