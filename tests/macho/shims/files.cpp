#include "tests/macho/shims/descriptors.h"
#include "tests/macho/shims/errors.h"
#include "tests/macho/shims/refuse.h"
#include "tests/macho/shims/system.h"

#include <cstdio>
#include <sys/random.h>
#include <sys/stat.h>
#include <unistd.h>

namespace macho {

namespace {

// Apple's sys/stat.h, with inodes of eight bytes.
struct DarwinStatus {
    std::int32_t device;
    std::uint16_t mode;
    std::uint16_t links;
    std::uint64_t inode;
    std::uint32_t user;
    std::uint32_t group;
    std::int32_t special;
    std::int32_t padding;
    timespec accessed;
    timespec modified;
    timespec changed;
    timespec born;
    std::int64_t size;
    std::int64_t blocks;
    std::int32_t blockSize;
    std::uint32_t flags;
    std::uint32_t generation;
    std::int32_t spare;
    std::int64_t spares[2];
};
static_assert(sizeof(DarwinStatus) == 144 && offsetof(DarwinStatus, size) == 96);

int shimStatus(const char *path, DarwinStatus *status) {
    struct stat host;
    if (stat(path, &host) != 0)
        return withErrno(-1);
    *status = {};
    status->device = static_cast<std::int32_t>(host.st_dev);
    status->mode = static_cast<std::uint16_t>(host.st_mode); // the same bits
    status->links = static_cast<std::uint16_t>(host.st_nlink);
    status->inode = host.st_ino;
    status->user = host.st_uid;
    status->group = host.st_gid;
    status->accessed = host.st_atim;
    status->modified = host.st_mtim;
    status->changed = host.st_ctim;
    status->size = host.st_size;
    status->blocks = host.st_blocks;
    status->blockSize = static_cast<std::int32_t>(host.st_blksize);
    return 0;
}

int shimTimeOfDay(DarwinTime *time, const void *zone) {
    if (zone != nullptr)
        refuse("gettimeofday with a time zone");
    timeval host;
    gettimeofday(&host, nullptr);
    *time = darwinTime(host);
    return 0;
}

} // namespace

// A FILE is opaque, so this system's is handed out.
void addFiles(Imports &imports) {
    imports.add(libSystem, "___stdoutp", &stdout);
    imports.add(libSystem, "___stderrp", &stderr);
    imports.add(libSystem, "_access", forwarded<access>);
    imports.add(libSystem, "_fclose", forwarded<fclose>);
    imports.add(libSystem, "_fflush", forwarded<fflush>);
    imports.add(libSystem, "_fopen", forwarded<fopen>);
    imports.add(libSystem, "_fputc", forwarded<fputc>);
    imports.add(libSystem, "_fputs", forwarded<fputs>);
    imports.add(libSystem, "_fread", forwarded<fread>);
    imports.add(libSystem, "_fseek", forwarded<fseek>);
    imports.add(libSystem, "_fseeko", forwarded<fseeko>);
    imports.add(libSystem, "_ftello", forwarded<ftello>);
    imports.add(libSystem, "_fwrite", forwarded<fwrite>);
    imports.add(libSystem, "_getentropy", forwarded<getentropy>);
    imports.add(libSystem, "_gettimeofday", shimTimeOfDay);
    imports.add(libSystem, "_remove", forwarded<remove>);
    imports.add(libSystem, "_rename", forwarded<rename>);
    imports.add(libSystem, "_stat$INODE64", shimStatus);
    imports.add(libSystem, "_unlink", forwarded<unlink>);
}

} // namespace macho
