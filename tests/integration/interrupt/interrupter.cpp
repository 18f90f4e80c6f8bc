// SPDX-License-Identifier: MIT
// A library that is loaded before all others. It counts every call that changes the file system below one
// folder, in all processes that share a counter, and interrupts one of them: the call fails, or the whole
// process group is killed before it. The environment says how:
//   INTERRUPT_BELOW    the folder; without it nothing is done at all
//   INTERRUPT_COUNTER  a file of eight zero bytes, which becomes the counter
//   INTERRUPT_AT       the number of the call, from 1; "all" for each of them
//   INTERRUPT_WITH     "kill", or the errno that the call fails with
//   INTERRUPT_ONLY     a shell pattern; only calls whose line fits are counted
//   INTERRUPT_LOG      a file that gets a line for each call that is counted: its kind, a blank and the path,
//   and
//                      for two paths " > " and the other one
#include <cerrno>
#include <climits>
#include <csignal>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <type_traits>

#include <dlfcn.h>
#include <fcntl.h>
#include <fnmatch.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <sys/uio.h>
#include <unistd.h>
#include <utime.h>

namespace
{

/// Set up before main, and never torn down: threads may still run when the program ends.
struct Orders
{
    Orders()
    {
        if (const char* const folder = std::getenv("INTERRUPT_BELOW"))
            below = std::string(folder) + '/';
        if (const char* const file = std::getenv("INTERRUPT_COUNTER")) {
            const auto descriptor = static_cast<int>(::syscall(SYS_openat, AT_FDCWD, file, O_RDWR));
            void* const shared =
                ::mmap(nullptr, sizeof(long), PROT_READ | PROT_WRITE, MAP_SHARED, descriptor, 0);
            if (shared == MAP_FAILED)
                std::abort();
            counter = static_cast<long*>(shared);
        }
        if (const char* const number = std::getenv("INTERRUPT_AT")) {
            all = std::strcmp(number, "all") == 0;
            at = all ? 0 : std::atol(number);
        }
        if (const char* const how = std::getenv("INTERRUPT_WITH")) {
            kill = std::strcmp(how, "kill") == 0;
            error = kill ? 0 : std::atoi(how);
        }
        if (const char* const pattern = std::getenv("INTERRUPT_ONLY"))
            only = pattern;
        if (const char* const file = std::getenv("INTERRUPT_LOG"))
            log = static_cast<int>(
                ::syscall(SYS_openat, AT_FDCWD, file, O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC, 0666));
    }

    std::string below;
    std::string only;
    long* counter = nullptr;
    long at = 0;
    bool all = false;
    bool kill = false;
    int error = 0;
    int log = -1;
};

const Orders& orders()
{
    static const auto* const theOnes = new Orders;
    return *theOnes;
}

/// Before the program does anything of its own.
[[gnu::constructor]] void takeOrders()
{
    orders();
}

std::string linkTarget(const std::string& link)
{
    char target[PATH_MAX];
    const auto length = ::readlink(link.c_str(), target, sizeof target);
    return length < 0 ? std::string() : std::string(target, static_cast<std::size_t>(length));
}

/// Where a descriptor leads; what is no file has no path.
std::string at(int descriptor)
{
    return linkTarget("/proc/self/fd/" + std::to_string(descriptor));
}

std::string at(int folder, const char* path)
{
    if (!path || path[0] == '/')
        return path ? path : "";
    return (folder == AT_FDCWD ? linkTarget("/proc/self/cwd") : at(folder)) + '/' + path;
}

bool isBelow(const std::string& path)
{
    return !orders().below.empty() && path.compare(0, orders().below.size(), orders().below) == 0;
}

/// Counts the call. Whether it is to fail; errno then says how.
bool isInterrupted(const char* kind, const std::string& path, const std::string& other = {})
{
    const Orders& now = orders();
    if (!isBelow(path) && !isBelow(other))
        return false;
    const std::string line = std::string(kind) + ' ' + path + (other.empty() ? "" : " > " + other);
    // Listing changes nothing: it is counted on request only.
    if (now.only.empty() ? std::strcmp(kind, "list") == 0
                         : ::fnmatch(now.only.c_str(), line.c_str(), FNM_NOESCAPE) != 0)
        return false;
    const long number = now.counter ? __atomic_add_fetch(now.counter, 1, __ATOMIC_SEQ_CST) : 0;
    if (now.log >= 0)
        ::syscall(SYS_write, now.log, (line + '\n').data(), line.size() + 1);
    if (!now.all && number != now.at)
        return false;
    if (now.kill) {
        ::kill(0, SIGKILL);
        for (;;)
            ::pause();
    }
    errno = now.error;
    return true;
}

bool isOpenInterrupted(int folder, const char* path, int flags)
{
    if ((flags & (O_WRONLY | O_RDWR | O_CREAT | O_TRUNC)) != 0)
        return isInterrupted("open", at(folder, path));
    return (flags & O_DIRECTORY) != 0 && isInterrupted("list", at(folder, path));
}

bool writes(const char* mode)
{
    return std::strpbrk(mode, "wa+") != nullptr;
}

template <typename Result>
constexpr Result failure()
{
    if constexpr (std::is_pointer_v<Result>)
        return nullptr;
    else
        return -1;
}

} // namespace

/// A function of the C library under its own name, which is interrupted when the condition holds.
#define WRAP(result, name, parameters, arguments, interrupted)                                               \
    extern "C" __attribute__((visibility("default"))) result wrapped_##name parameters __asm__(#name);       \
    result wrapped_##name parameters                                                                         \
    {                                                                                                        \
        static const auto real = reinterpret_cast<result(*) parameters>(::dlsym(RTLD_NEXT, #name));          \
        return interrupted ? failure<result>() : real arguments;                                             \
    }

// The variants for large files have the same parameters here.
#define WRAP_64(result, name, parameters, arguments, interrupted)                                            \
    WRAP(result, name, parameters, arguments, interrupted)                                                   \
    WRAP(result, name##64, parameters, arguments, interrupted)

// The mode is passed on whether it was given or not; registers hold whatever they hold.
WRAP_64(int, open, (const char* path, int flags, mode_t mode), (path, flags, mode),
        isOpenInterrupted(AT_FDCWD, path, flags))
WRAP_64(int, openat, (int folder, const char* path, int flags, mode_t mode), (folder, path, flags, mode),
        isOpenInterrupted(folder, path, flags))
WRAP(int, __open_2, (const char* path, int flags), (path, flags), isOpenInterrupted(AT_FDCWD, path, flags))
WRAP(int, __open64_2, (const char* path, int flags), (path, flags), isOpenInterrupted(AT_FDCWD, path, flags))
WRAP(int, __openat_2, (int folder, const char* path, int flags), (folder, path, flags),
     isOpenInterrupted(folder, path, flags))
WRAP(int, __openat64_2, (int folder, const char* path, int flags), (folder, path, flags),
     isOpenInterrupted(folder, path, flags))
WRAP_64(int, creat, (const char* path, mode_t mode), (path, mode), isInterrupted("open", at(AT_FDCWD, path)))
WRAP_64(FILE*, fopen, (const char* path, const char* mode), (path, mode),
        writes(mode) && isInterrupted("open", at(AT_FDCWD, path)))
WRAP_64(int, mkstemp, (char* path), (path), isInterrupted("open", at(AT_FDCWD, path)))
WRAP_64(int, mkostemp, (char* path, int flags), (path, flags), isInterrupted("open", at(AT_FDCWD, path)))
WRAP(char*, mkdtemp, (char* path), (path), isInterrupted("mkdir", at(AT_FDCWD, path)))

WRAP(ssize_t, write, (int file, const void* data, size_t size), (file, data, size),
     isInterrupted("write", at(file)))
WRAP_64(ssize_t, pwrite, (int file, const void* data, size_t size, off_t offset), (file, data, size, offset),
        isInterrupted("write", at(file)))
WRAP(ssize_t, writev, (int file, const iovec* parts, int count), (file, parts, count),
     isInterrupted("write", at(file)))
WRAP_64(ssize_t, pwritev, (int file, const iovec* parts, int count, off_t offset),
        (file, parts, count, offset), isInterrupted("write", at(file)))
WRAP_64(ssize_t, sendfile, (int to, int from, off_t* offset, size_t size), (to, from, offset, size),
        isInterrupted("write", at(to)))
WRAP(ssize_t, copy_file_range, (int from, off_t* offset, int to, off_t* start, size_t size, unsigned flags),
     (from, offset, to, start, size, flags), isInterrupted("write", at(to)))
WRAP_64(int, fallocate, (int file, int mode, off_t offset, off_t size), (file, mode, offset, size),
        isInterrupted("truncate", at(file)))
WRAP_64(int, ftruncate, (int file, off_t size), (file, size), isInterrupted("truncate", at(file)))
WRAP_64(int, truncate, (const char* path, off_t size), (path, size),
        isInterrupted("truncate", at(AT_FDCWD, path)))
WRAP(int, fsync, (int file), (file), isInterrupted("sync", at(file)))
WRAP(int, fdatasync, (int file), (file), isInterrupted("sync", at(file)))
WRAP(int, syncfs, (int file), (file), isInterrupted("syncfs", at(file)))

WRAP(int, rename, (const char* from, const char* to), (from, to),
     isInterrupted("rename", at(AT_FDCWD, from), at(AT_FDCWD, to)))
WRAP(int, renameat, (int folder, const char* from, int other, const char* to), (folder, from, other, to),
     isInterrupted("rename", at(folder, from), at(other, to)))
WRAP(int, renameat2, (int folder, const char* from, int other, const char* to, unsigned flags),
     (folder, from, other, to, flags), isInterrupted("rename", at(folder, from), at(other, to)))
WRAP(int, link, (const char* from, const char* to), (from, to),
     isInterrupted("link", at(AT_FDCWD, from), at(AT_FDCWD, to)))
WRAP(int, linkat, (int folder, const char* from, int other, const char* to, int flags),
     (folder, from, other, to, flags), isInterrupted("link", at(folder, from), at(other, to)))
WRAP(int, symlink, (const char* target, const char* path), (target, path),
     isInterrupted("symlink", at(AT_FDCWD, path)))
WRAP(int, symlinkat, (const char* target, int folder, const char* path), (target, folder, path),
     isInterrupted("symlink", at(folder, path)))

WRAP(int, unlink, (const char* path), (path), isInterrupted("remove", at(AT_FDCWD, path)))
WRAP(int, unlinkat, (int folder, const char* path, int flags), (folder, path, flags),
     isInterrupted("remove", at(folder, path)))
WRAP(int, rmdir, (const char* path), (path), isInterrupted("remove", at(AT_FDCWD, path)))
WRAP(int, remove, (const char* path), (path), isInterrupted("remove", at(AT_FDCWD, path)))
WRAP(int, mkdir, (const char* path, mode_t mode), (path, mode), isInterrupted("mkdir", at(AT_FDCWD, path)))
WRAP(int, mkdirat, (int folder, const char* path, mode_t mode), (folder, path, mode),
     isInterrupted("mkdir", at(folder, path)))
WRAP(int, mknod, (const char* path, mode_t mode, dev_t device), (path, mode, device),
     isInterrupted("mknod", at(AT_FDCWD, path)))
WRAP(int, mknodat, (int folder, const char* path, mode_t mode, dev_t device), (folder, path, mode, device),
     isInterrupted("mknod", at(folder, path)))
WRAP(int, mkfifo, (const char* path, mode_t mode), (path, mode), isInterrupted("mknod", at(AT_FDCWD, path)))

WRAP(int, chmod, (const char* path, mode_t mode), (path, mode), isInterrupted("chmod", at(AT_FDCWD, path)))
WRAP(int, lchmod, (const char* path, mode_t mode), (path, mode), isInterrupted("lchmod", at(AT_FDCWD, path)))
WRAP(int, fchmod, (int file, mode_t mode), (file, mode), isInterrupted("chmod", at(file)))
WRAP(int, fchmodat, (int folder, const char* path, mode_t mode, int flags), (folder, path, mode, flags),
     isInterrupted("chmod", at(folder, path)))
WRAP(int, chown, (const char* path, uid_t user, gid_t group), (path, user, group),
     isInterrupted("chown", at(AT_FDCWD, path)))
WRAP(int, lchown, (const char* path, uid_t user, gid_t group), (path, user, group),
     isInterrupted("chown", at(AT_FDCWD, path)))
WRAP(int, fchown, (int file, uid_t user, gid_t group), (file, user, group), isInterrupted("chown", at(file)))
WRAP(int, fchownat, (int folder, const char* path, uid_t user, gid_t group, int flags),
     (folder, path, user, group, flags), isInterrupted("chown", at(folder, path)))
WRAP(int, utime, (const char* path, const utimbuf* times), (path, times),
     isInterrupted("times", at(AT_FDCWD, path)))
WRAP(int, utimes, (const char* path, const timeval* times), (path, times),
     isInterrupted("times", at(AT_FDCWD, path)))
WRAP(int, lutimes, (const char* path, const timeval* times), (path, times),
     isInterrupted("times", at(AT_FDCWD, path)))
WRAP(int, futimes, (int file, const timeval* times), (file, times), isInterrupted("times", at(file)))
WRAP(int, futimens, (int file, const timespec* times), (file, times), isInterrupted("times", at(file)))
WRAP(int, utimensat, (int folder, const char* path, const timespec* times, int flags),
     (folder, path, times, flags), isInterrupted("times", at(folder, path)))
