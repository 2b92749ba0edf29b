#include "gif_import/DecoderCache.h"

#include <map>
#include <memory>

#ifdef _WIN32
#include <utf8.h>
#endif

namespace GifImport {
namespace {

std::map<std::string, std::unique_ptr<Decoder>> &cache() {
    static std::map<std::string, std::unique_ptr<Decoder>> decoders;
    return decoders;
}

// The kernel's names are UTF-8; only the wide open reaches every name on
// Windows, while elsewhere the bytes are the path.
std::FILE *openForReading(const std::string &fileName) {
#ifdef _WIN32
    std::wstring wide;
    utf8::utf8to16(fileName.begin(), fileName.end(), std::back_inserter(wide));
    return _wfopen(wide.c_str(), L"rb");
#else
    return std::fopen(fileName.c_str(), "rb");
#endif
}

}  // namespace

Decoder *getOrLoad(const std::string &fileName) {
    auto &decoders = cache();
    if (auto found = decoders.find(fileName); found != decoders.end()) return found->second.get();
    FileHandle file(openForReading(fileName));
    if (!file) return nullptr;
    auto decoder = std::make_unique<Decoder>(std::move(file));
    return decoders.insert_or_assign(fileName, std::move(decoder)).first->second.get();
}

bool eraseDecoder(const std::string &fileName) {
    return cache().erase(fileName) != 0;
}

void destroyAllDecoders() {
    auto &decoders = cache();
    while (!decoders.empty()) decoders.erase(decoders.begin());
}

std::size_t cachedDecoderCount() { return cache().size(); }

std::uint64_t bytesHeldByDecoders() {
    std::uint64_t bytes = 0;
    for (const auto &entry : cache()) bytes += entry.second->heldBytes();
    return bytes;
}

bool dropAllSnapshots() {
    bool dropped = false;
    for (const auto &entry : cache()) dropped = entry.second->compositor.dropSnapshots() || dropped;
    return dropped;
}

}  // namespace GifImport
