#include "tests/macho/fakes/objects.h"

#include <algorithm>

namespace macho::fake {

namespace {

const char *wordFor(Kind kind) {
    constexpr const char *words[] = {"image", "provider", "data",    "number",  "dictionary",
                                     "queue", "stream",   "surface", "constant"};
    return words[static_cast<int>(kind)];
}

} // namespace

std::string nameOf(const Object *object) {
    return object == nullptr ? "null"
                             : wordFor(object->kind) + (" " + std::to_string(object->number));
}

Object *Objects::make(Kind kind) {
    const std::lock_guard lock(mutex);
    const auto before = std::count_if(all.begin(), all.end(),
                                      [kind](const auto &object) { return object->kind == kind; });
    all.push_back(std::make_unique<Object>());
    all.back()->kind = kind;
    all.back()->number = static_cast<int>(before) + 1;
    return all.back().get();
}

Object *Objects::use(const std::string &call, const void *pointer) {
    const std::lock_guard lock(mutex);
    const auto found = std::find_if(
        all.begin(), all.end(), [pointer](const auto &object) { return object.get() == pointer; });
    if (found == all.end()) {
        note(call + (pointer == nullptr ? " of null" : " of what is no object"));
        return nullptr;
    }
    Object *object = found->get();
    if (object->references <= 0 || (object->owner != nullptr && object->owner->references <= 0)) {
        note(call + " of " + nameOf(object) + ", which is released already");
        return nullptr;
    }
    return object;
}

Object *Objects::use(const std::string &call, Kind kind, const void *pointer) {
    Object *object = use(call, pointer);
    if (object != nullptr && object->kind != kind) {
        note(call + " of " + nameOf(object) + ", which is no " + wordFor(kind));
        return nullptr;
    }
    return object;
}

void Objects::release(const std::string &call, const void *pointer) {
    const std::lock_guard lock(mutex);
    Object *object = use(call, pointer);
    if (object == nullptr || object->immortal)
        return;
    if (object->owner != nullptr)
        note(call + " of " + nameOf(object) + ", which belongs to " + nameOf(object->owner));
    else
        --object->references;
}

void Objects::note(const std::string &problem) {
    const std::lock_guard lock(mutex);
    noted.push_back(problem);
}

std::vector<std::string> Objects::problems() const {
    const std::lock_guard lock(mutex);
    return noted;
}

std::vector<std::string> Objects::alive() const {
    const std::lock_guard lock(mutex);
    std::vector<std::string> names;
    for (const auto &object : all)
        if (object->references > 0 && !object->immortal && object->owner == nullptr)
            names.push_back(nameOf(object.get()));
    return names;
}

void Objects::forget() {
    const std::lock_guard lock(mutex);
    std::erase_if(all, [](const auto &object) { return !object->immortal; });
    noted.clear();
}

} // namespace macho::fake
