// Argument strings handed to plug-ins, and the messages they post.

#include <cstdlib>
#include <cstring>
#include <string>
#include <unordered_set>

#include "Books.h"
#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {
namespace {

std::unordered_set<const char *> &issued() {
    static std::unordered_set<const char *> strings;
    return strings;
}

std::string &lastMessage() {
    static std::string text;
    return text;
}

}  // namespace

char *issueString(const char *text) {
    const std::size_t size = std::strlen(text) + 1;
    char *copy = static_cast<char *>(std::malloc(size));
    if (copy == nullptr) return nullptr;
    std::memcpy(copy, text, size);
    issued().insert(copy);
    ++tallies().stringsIssued;
    return copy;
}

// A pointer the host does not know is never freed: a plug-in that releases a
// string twice must show up in the books, not corrupt the heap.
void releaseString(char *text) {
    if (issued().erase(text) == 0) {
        ++tallies().badReleases;
        return;
    }
    std::free(text);
    ++tallies().stringsReleased;
}

void postMessage(const char *text) {
    ++tallies().messages;
    lastMessage() = text != nullptr ? text : "";
}

}  // namespace refhost

extern "C" {

long rh_strings_outstanding(void) { return static_cast<long>(refhost::issued().size()); }

const char *rh_last_message(void) { return refhost::lastMessage().c_str(); }

}  // extern "C"
