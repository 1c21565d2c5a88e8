// Preloaded into the test programs of a build that runs under qemu-user (the arm64 build). qemu
// 7.2 refuses clone() with CLONE_PIDFD, while the kernel below it answers the waitid(P_PIDFD)
// probe by which Qt's forkfd decides to use that clone: every QProcess then "crashes" before it
// runs. Answering the probe with ENOSYS, as a kernel without pidfds would, makes Qt start
// processes the classic way. Nothing else is changed.

#include <cerrno>
#include <cstdarg>

#include <dlfcn.h>
#include <sys/syscall.h>

namespace {
constexpr long waitForPidfd = 3; // P_PIDFD
}

extern "C" __attribute__((visibility("default"))) long syscall(long number, ...)
{
    va_list list;
    va_start(list, number);
    long arguments[6];
    for (long& argument : arguments)
        argument = va_arg(list, long);
    va_end(list);
    if (number == SYS_waitid && arguments[0] == waitForPidfd) {
        errno = ENOSYS;
        return -1;
    }
    using Syscall = long (*)(long, ...);
    static const auto real = reinterpret_cast<Syscall>(dlsym(RTLD_NEXT, "syscall"));
    return real(number, arguments[0], arguments[1], arguments[2], arguments[3], arguments[4],
                arguments[5]);
}
