#include "tests/macho/loader/image.h"
#include "tests/macho/loader/fixups.h"

#include <atomic>
#include <cstdlib>
#include <fstream>
#include <iterator>

namespace macho {

namespace {

// Signal handlers look images up, and may interrupt a thread that does: so there is no lock.
constinit std::atomic<Image *> newestImage{nullptr};

std::vector<std::uint8_t> contentOf(const std::string &path) {
    std::ifstream stream(path, std::ios::binary);
    if (!stream)
        throw LoadError("the file cannot be opened");
    return {std::istreambuf_iterator<char>(stream), std::istreambuf_iterator<char>()};
}

std::string fileNameOf(const std::string &path) {
    return path.substr(path.find_last_of('/') + 1);
}

} // namespace

Image::Image(const std::string &path, const Imports &imports) {
    try {
        bytes = contentOf(path);
        file = readImageFile(bytes);
        mapping.emplace(file, fileNameOf(path));
        load(imports);
    } catch (const LoadError &error) {
        throw LoadError(path + ": " + error.what());
    }
    unloadChecks = imports.unloadChecks;
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
    if (newestImage == this) {
        newestImage = older.load();
        return;
    }
    for (Image *image = newestImage; image != nullptr; image = image->older)
        if (image->older == this)
            image->older = older.load();
}

void Image::load(const Imports &imports) {
    exports = exportsOf(file);
    for (const std::uint64_t address : rebasesOf(file))
        mapping->store(address, mapping->load<std::uint64_t>(address) +
                                    reinterpret_cast<std::uintptr_t>(mapping->start()));
    bindAll(imports);
    threadLocals.emplace(file, *mapping);
    frames.emplace(file, *mapping);
    findInitialisers();
    mapping->protect(file);
}

void Image::bindAll(const Imports &imports) {
    std::string missing;
    for (const Bind &bind : bindsOf(file)) {
        const void *target = nullptr;
        for (const std::string &library : bind.libraries)
            if (target == nullptr)
                target =
                    library.empty() ? exported(bind.symbol) : imports.find(library, bind.symbol);
        if (target == nullptr && !bind.mayBeMissing)
            missing += "\n  " + bind.symbol + " from " +
                       (bind.libraries.front().empty() ? "anywhere" : bind.libraries.front());
        const auto value = reinterpret_cast<std::uintptr_t>(target);
        mapping->store<std::uint64_t>(
            bind.address, target == nullptr ? 0 : value + static_cast<std::uint64_t>(bind.addend));
    }
    if (!missing.empty())
        throw LoadError("nothing here stands for these imports:" + missing);
}

void Image::findInitialisers() {
    for (const Section &section : file.sectionsOfType(sectionInitialisers))
        for (std::uint64_t at = 0; at + sizeof(void *) <= section.size; at += sizeof(void *))
            initialisers.push_back(mapping->load<void *>(section.address + at));
    for (const Section &section : file.sectionsOfType(sectionInitialiserOffsets))
        for (std::uint64_t at = 0; at + sizeof(std::uint32_t) <= section.size;
             at += sizeof(std::uint32_t))
            initialisers.push_back(
                mapping->at<void>(mapping->load<std::uint32_t>(section.address + at)));
    for (const void *initialiser : initialisers)
        if (!contains(initialiser))
            throw LoadError("an initialiser lies outside the image");
}

// As the system's loader does it, each with a program's arguments: here there are none.
void Image::initialise() noexcept {
    using Initialiser = void (*)(int, const char **, const char **, const char **);
    const char *nothing[] = {nullptr};
    for (void *initialiser : initialisers)
        reinterpret_cast<Initialiser>(initialiser)(0, nothing, nothing, nothing);
}

void *Image::symbol(const std::string &name) const {
    return exported("_" + name);
}

void *Image::exported(const std::string &symbol) const {
    const auto found = exports.find(symbol);
    return found == exports.end() ? nullptr : mapping->at<void>(found->second);
}

Image *Image::withHeader(const void *header) {
    Image *image = around(header);
    return image != nullptr && image->mapping->start() == header ? image : nullptr;
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
