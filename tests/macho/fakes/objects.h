// Reference-counted objects that the frameworks hand out, all of them kept until the recording is
// forgotten: so an object that was released once too often, or used after its end, can be named
// instead of crashing.
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
    int number; // counted by kind, from 1 on
    int references = 1;
    bool immortal = false;
    // What some kinds hold.
    Object *owner = nullptr; // an image's provider lives as long as the image
    std::vector<std::uint8_t> bytes;
    std::vector<std::pair<const void *, const void *>> entries;
    double value = 0;
    int locks = 0;
};

// Any thread.
class Objects {
public:
    Object *make(Kind kind);

    // Null, with a problem noted down, when `pointer` is no living object of this kind. `call` is
    // what the problem says.
    Object *use(const std::string &call, Kind kind, const void *pointer);
    // The same for an object of any kind.
    Object *use(const std::string &call, const void *pointer);

    void release(const std::string &call, const void *pointer);

    void note(const std::string &problem);
    // What was done wrong, in order.
    std::vector<std::string> problems() const;
    // "image 2" for each object with references left, in the order in which they were made.
    std::vector<std::string> alive() const;
    void forget();

private:
    mutable std::recursive_mutex mutex;
    std::vector<std::unique_ptr<Object>> all;
    std::vector<std::string> noted;
};

// "image 2"; "null" for null.
std::string nameOf(const Object *object);

} // namespace macho::fake
