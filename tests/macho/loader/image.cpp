#include "tests/macho/loader/image.h"

#include <cstdint>
#include <cstdlib>
#include <dlfcn.h>
#include <sys/mman.h>

namespace macho {

namespace {

// Rows of the tables that `convert` writes. A row of zeros ends each table.
struct Bind {
    std::uintptr_t *place;
    const char *library;
    const char *symbol; // with its leading underscore
    std::uint64_t addend;
    std::uint64_t isOptional; // bound to null if it is missing
};

using Initialiser = void (*)(int, const char **, const char **, const char **);

struct Segment {
    std::byte *start;
    std::size_t size;
    std::uint64_t protection;
};

// Has no lock, since a signal handler that looks up images may interrupt a thread that does so too.
constinit std::atomic<Image *> newestImage{nullptr};

} // namespace

Image::Image(const std::string &path, const Imports &imports) : unloadChecks(imports.unloadChecks) {
    // Not dlopen(), which may be the tests' replacement and call this constructor.
    const auto open = [&path](int mode) { return dlmopen(LM_ID_BASE, path.c_str(), mode); };
    if (void *loaded = open(RTLD_NOW | RTLD_NOLOAD)) {
        dlclose(loaded);
        throw LoadError(path + ": it is loaded already");
    }
    library = open(RTLD_NOW | RTLD_LOCAL);
    if (library == nullptr)
        throw LoadError(dlerror());
    try {
        bindAll(imports);
        protect();
    } catch (const LoadError &error) {
        dlclose(library);
        throw LoadError(path + ": " + error.what());
    }
    [[maybe_unused]] static const int once = std::atexit([] {
        for (Image *image = newestImage; image != nullptr; image = image->older)
            image->runAtExitEntries();
    });
    older = newestImage.load();
    newestImage = this;
    initialise();
}

Image::~Image() {
    runAtExitEntries();
    for (const auto &check : unloadChecks)
        check(*this);
    if (newestImage == this)
        newestImage = older.load();
    for (Image *image = newestImage; image != nullptr; image = image->older)
        if (image->older == this)
            image->older = older.load();
    dlclose(library);
}

template <class Row> const Row *Image::table(const char *name) const {
    const auto *rows = static_cast<const Row *>(dlsym(library, name));
    if (rows == nullptr)
        throw LoadError(std::string("it has no table ") + name);
    return rows;
}

void Image::bindAll(const Imports &imports) const {
    std::string missing;
    for (const auto *bind = table<Bind>("machoBinds"); bind->place != nullptr; ++bind) {
        const void *target = imports.find(bind->library, bind->symbol);
        if (target == nullptr && bind->isOptional == 0)
            missing += std::string("\n  ") + bind->symbol + " from " + bind->library;
        *bind->place =
            target == nullptr ? 0 : reinterpret_cast<std::uintptr_t>(target) + bind->addend;
    }
    if (!missing.empty())
        throw LoadError("nothing here stands for these imports:" + missing);
}

// Gives each segment its protection on macOS. Until then, all segments are writable.
void Image::protect() {
    const auto *segment = table<Segment>("machoSegments");
    start = segment->start;
    for (; segment->start != nullptr; ++segment) {
        end = segment->start + segment->size;
        if (mprotect(segment->start, segment->size, static_cast<int>(segment->protection)) != 0)
            throw LoadError("its memory cannot be protected");
    }
}

// Passes arguments to each initialiser, as the system's loader does; here the lists are empty.
void Image::initialise() const noexcept {
    const char *nothing[] = {nullptr};
    for (const auto *initialiser = table<Initialiser *>("machoInitialisers");
         *initialiser != nullptr; ++initialiser)
        (**initialiser)(0, nothing, nothing, nothing);
}

void *Image::symbol(const std::string &name) const {
    return dlsym(library, ("_" + name).c_str());
}

Image *Image::withHeader(const void *header) {
    Image *image = around(header);
    return image != nullptr && image->start == header ? image : nullptr;
}

Image *Image::around(const void *address) {
    Image *image = newestImage;
    while (image != nullptr && !image->contains(address))
        image = image->older;
    return image;
}

void Image::atExit(void (*entry)(void *), void *argument) {
    const std::lock_guard lock(atExitMutex);
    atExitEntries.push_back({entry, argument});
}

void Image::runAtExitEntries() {
    for (;;) {
        AtExitEntry entry;
        {
            const std::lock_guard lock(atExitMutex);
            if (atExitEntries.empty())
                return;
            entry = atExitEntries.back();
            atExitEntries.pop_back();
        }
        entry.call(entry.argument);
    }
}

} // namespace macho
