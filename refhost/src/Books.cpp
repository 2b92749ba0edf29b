#include "Books.h"

#include "Objects.h"
#include "refhost/refhost.h"

namespace refhost {

Tallies &tallies() {
    static Tallies books;
    return books;
}

}  // namespace refhost

extern "C" RhCounters rh_counters(void) {
    const refhost::Tallies &books = refhost::tallies();
    RhCounters counters{};
    counters.liveImages = refhost::liveImageCount();
    counters.liveRawArrays = refhost::liveRawArrayCount();
    counters.liveTensors = refhost::liveTensorCount();
    counters.stringsIssued = books.stringsIssued;
    counters.stringsReleased = books.stringsReleased;
    counters.badReleases = books.badReleases;
    counters.badHandles = books.badHandles;
    counters.messages = books.messages;
    return counters;
}
