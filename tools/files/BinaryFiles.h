#pragma once

#include <cstddef>
#include <limits>
#include <string>
#include <vector>

namespace tarvex_cli {

// Whole-file reads and writes; failures are CliErrors naming the file and
// the system's reason. A read stops after `most` bytes, so that a file that
// never ends (a device, a pipe) cannot take all memory; callers that must
// tell a longer file ask for one byte more than they take.
std::vector<std::byte> readFileBytes(const std::string &path,
                                     std::size_t most = std::numeric_limits<std::size_t>::max());
// What a file that must hold `needed` bytes holds, as "holds N bytes", or
// "holds more than N bytes" when a read of needed + 1 bytes filled up.
std::string heldBytes(std::size_t got, std::size_t needed);
void writeFileBytes(const std::string &path, const void *data, std::size_t size);
inline void writeTextFile(const std::string &path, const std::string &text) {
    writeFileBytes(path, text.data(), text.size());
}

}  // namespace tarvex_cli
