// Loaded with LD_PRELOAD by tests: read() and pread() of the file named in MAVROLEN_FAIL_READ fail
// with an I/O error, and those of the file named in MAVROLEN_SHORT_READ end at once, as a file
// cut while being read does. Every other read goes to the system.
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <dlfcn.h>
#include <unistd.h>

namespace {

bool isFile(int fd, const char *variable) {
    const char *target = std::getenv(variable);
    if (!target || !*target) {
        return false;
    }
    char link[64];
    char path[4096];
    std::snprintf(link, sizeof link, "/proc/self/fd/%d", fd);
    const ssize_t n = ::readlink(link, path, sizeof path - 1);
    if (n <= 0) {
        return false;
    }
    path[n] = '\0';
    return std::strcmp(path, target) == 0;
}

// -1 when the read fails, 0 when it ends at once, 1 when it goes to the system.
int planned(int fd) {
    if (isFile(fd, "MAVROLEN_FAIL_READ")) {
        errno = EIO;
        return -1;
    }
    return isFile(fd, "MAVROLEN_SHORT_READ") ? 0 : 1;
}

} // namespace

extern "C" ssize_t read(int fd, void *buffer, size_t count) {
    using Read = ssize_t (*)(int, void *, size_t);
    static const Read real = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
    const int plan = planned(fd);
    return plan < 1 ? plan : real(fd, buffer, count);
}

extern "C" ssize_t pread(int fd, void *buffer, size_t count, off_t offset) {
    using Read = ssize_t (*)(int, void *, size_t, off_t);
    static const Read real = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "pread"));
    const int plan = planned(fd);
    return plan < 1 ? plan : real(fd, buffer, count, offset);
}
