// Loaded with LD_PRELOAD by tests: read() of the file named in MAVROLEN_FAIL_READ fails with an
// I/O error, and read() of the file named in MAVROLEN_SHORT_READ ends at once, as a file cut
// while being read does. Every other read goes to the system.
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

} // namespace

extern "C" ssize_t read(int fd, void *buffer, size_t count) {
    using Read = ssize_t (*)(int, void *, size_t);
    static const Read real = reinterpret_cast<Read>(dlsym(RTLD_NEXT, "read"));
    if (isFile(fd, "MAVROLEN_FAIL_READ")) {
        errno = EIO;
        return -1;
    }
    if (isFile(fd, "MAVROLEN_SHORT_READ")) {
        return 0;
    }
    return real(fd, buffer, count);
}
