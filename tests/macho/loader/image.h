// A macOS image that the script `convert` has repackaged, loaded into this process.
#pragma once

#include "tests/macho/loader/imports.h"

#include <atomic>
#include <cstddef>
#include <functional>
#include <mutex>
#include <stdexcept>
#include <string>
#include <vector>

namespace macho {

// Says what is wrong with an image that cannot be loaded.
class LoadError : public std::runtime_error {
public:
    using std::runtime_error::runtime_error;
};

// Load and unload images from one thread at a time, while no other thread looks up images. An image
// that is still loaded when the process exits runs its at-exit entries then and stays mapped.
class Image {
public:
    // Loads the repackaged file, binds its imports and runs its initialisers. Throws a LoadError
    // that names the file and the problem, such as the missing imports. A file cannot be loaded
    // again while it is loaded.
    Image(const std::string &path, const Imports &imports);

    // Runs the at-exit entries and the unload checks, and unmaps the image.
    ~Image();

    Image(const Image &) = delete;
    Image &operator=(const Image &) = delete;

    // The address of an exported symbol, without its leading underscore; null if there is none.
    void *symbol(const std::string &name) const;
    template <class Function> Function *function(const std::string &name) const {
        return reinterpret_cast<Function *>(symbol(name));
    }

    bool contains(const void *address) const { return address >= start && address < end; }

    // The loaded image whose header is at this address, or null. Any thread.
    static Image *withHeader(const void *header);
    // The loaded image that holds this address, or null. Any thread.
    static Image *around(const void *address);

    // Registers a call with `argument` at unload or exit, the last one first. Any thread.
    void atExit(void (*entry)(void *), void *argument);
    void runAtExitEntries();

private:
    struct AtExitEntry {
        void (*call)(void *);
        void *argument;
    };

    // One of the tables that `convert` writes.
    template <class Row> const Row *table(const char *name) const;
    void bindAll(const Imports &imports) const;
    void protect();
    void initialise() const noexcept;

    void *library = nullptr; // the dynamic linker's handle
    const std::byte *start = nullptr;
    const std::byte *end = nullptr;
    std::mutex atExitMutex; // guards atExitEntries
    std::vector<AtExitEntry> atExitEntries;
    std::vector<std::function<void(const Image &)>> unloadChecks;
    std::atomic<Image *> older{nullptr}; // in the list of loaded images
};

} // namespace macho
