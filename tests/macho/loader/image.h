// A loaded dylib.
#pragma once

#include "tests/macho/loader/exportTrie.h"
#include "tests/macho/loader/frameSection.h"
#include "tests/macho/loader/imports.h"
#include "tests/macho/loader/mapping.h"
#include "tests/macho/loader/threadLocals.h"

#include <atomic>
#include <cstdint>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

namespace macho {

// Loading and unloading are for one thread at a time, while no other looks images up. An image that
// is still loaded when the process exits runs its at-exit entries then and stays mapped.
class Image {
public:
    // Maps the file, fills its pointers in and runs its initialisers. Throws a LoadError that names
    // the file and what is wrong: with the file, or the imports that are missing.
    Image(const std::string &path, const Imports &imports);

    // Runs the at-exit entries and the unload checks, and unmaps the image.
    ~Image();

    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    // Of an exported symbol without its leading underscore; null when there is none.
    void *symbol(const std::string &name) const;
    template <class Function> Function *function(const std::string &name) const {
        return reinterpret_cast<Function *>(symbol(name));
    }

    const std::string &installName() const { return file.installName; }
    bool contains(const void *address) const { return mapping->contains(address); }
    std::size_t unwindableFunctions() const { return frames->functionCount(); }

    // The loaded image whose header is here, or null. Any thread.
    static Image *withHeader(const void *header);
    // The loaded image that holds this address, or null. Any thread.
    static Image *around(const void *address);

    // To be called with `argument` at unload or exit, the last one first. Any thread.
    void atExit(void (*entry)(void *), void *argument);
    void runAtExitEntries();

private:
    struct AtExitEntry {
        void (*call)(void *);
        void *argument;
    };

    void *exported(const std::string &symbol) const; // with its underscore
    void load(const Imports &imports);
    void bindAll(const Imports &imports);
    void findInitialisers();
    void initialise() noexcept;

    std::vector<std::uint8_t> bytes; // of the file
    ImageFile file;
    std::optional<Mapping> mapping;
    std::map<std::string, std::uint64_t> exports;
    std::vector<void *> initialisers;
    std::optional<ThreadLocals> threadLocals;
    std::optional<FrameSection> frames;
    std::mutex atExitMutex; // guards atExitEntries
    std::vector<AtExitEntry> atExitEntries;
    std::vector<std::function<void(const Image &)>> unloadChecks;
    std::atomic<Image *> older{nullptr}; // in the list of loaded images
};

} // namespace macho
