// The host's books: what it handed out and what came back.
#pragma once

#include <memory>
#include <unordered_map>

namespace refhost {

struct Tallies {
    long stringsIssued = 0;
    long stringsReleased = 0;
    long badReleases = 0;
    long badHandles = 0;
    long messages = 0;
};

Tallies &tallies();

// The live objects of one kind, keyed by the handle given out for them. A
// handle is looked up before it is ever dereferenced, so a handle of another
// kind, a freed one or garbage is only counted, never touched.
template <class Object>
class Registry {
public:
    const void *add(std::unique_ptr<Object> object) {
        const void *handle = object.get();
        live_.emplace(handle, std::move(object));
        return handle;
    }

    Object *find(const void *handle) {
        const auto found = live_.find(handle);
        if (found == live_.end()) {
            ++tallies().badHandles;
            return nullptr;
        }
        return found->second.get();
    }

    void remove(const void *handle) {
        if (handle != nullptr && live_.erase(handle) == 0) ++tallies().badHandles;
    }

    // What `read` makes of the live object, or `neutral` for any other handle.
    template <class Answer, class Read>
    Answer query(const void *handle, Answer neutral, Read read) {
        const Object *object = find(handle);
        return object != nullptr ? read(*object) : neutral;
    }

    bool contains(const void *handle) const { return live_.count(handle) != 0; }
    long size() const { return static_cast<long>(live_.size()); }

private:
    std::unordered_map<const void *, std::unique_ptr<Object>> live_;
};

// The one registry of each kind of object.
template <class Object>
Registry<Object> &registryOf() {
    static Registry<Object> live;
    return live;
}

}  // namespace refhost
