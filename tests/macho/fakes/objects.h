// Reference-counted objects of the fake frameworks. All are kept until forget(), so that an object
// that is released too often or used afterwards is reported by name instead of causing a crash.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace macho::fake {

enum class Kind { Image, Provider, Data, Number, Dictionary, Queue, Stream, Surface, Constant };

struct Object {
    Kind kind;
    int number; // per kind, from 1
    int references = 1;
    bool immortal = false;
    // Used by some kinds only.
    Object *owner = nullptr; // an image's provider lives as long as the image
    std::vector<std::uint8_t> bytes;
    std::vector<std::pair<const void *, const void *>> entries;
    double value = 0;
    int locks = 0;
};

// Callable from any thread.
class Objects {
public:
    Object *make(Kind kind);

    // Returns null and notes a problem if `pointer` is not a living object of this kind. `call`
    // names the call in the problem.
    Object *use(const std::string &call, Kind kind, const void *pointer);
    // The same for an object of any kind.
    Object *use(const std::string &call, const void *pointer);

    void release(const std::string &call, const void *pointer);

    void note(const std::string &problem);
    // The problems, in order.
    std::vector<std::string> problems() const;
    // The names of objects that still have references, such as "image 2", in order of creation.
    std::vector<std::string> alive() const;
    void forget();

private:
    mutable std::recursive_mutex mutex;
    std::vector<std::unique_ptr<Object>> all;
    std::vector<std::string> noted;
};

// For example "image 2"; "null" for null.
std::string nameOf(const Object *object);

} // namespace macho::fake
