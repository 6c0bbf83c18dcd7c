// A mount namespace with an empty /var/tmp, or turns on a lock where that is refused.
#include "tests/support/private_var_tmp.h"

#include <cstdio>
#include <fcntl.h>
#include <sched.h>
#include <string>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

namespace
{

void write_file(const char *path, const std::string &text)
{
    const int fd = open(path, O_WRONLY | O_CLOEXEC);
    if (fd >= 0) {
        (void)!write(fd, text.data(), text.size());
        close(fd);
    }
}

// Root needs no user namespace; anyone else becomes root of one.
bool enter_namespaces()
{
    if (unshare(CLONE_NEWNS) == 0) {
        return true;
    }
    const std::string uid = std::to_string(getuid());
    const std::string gid = std::to_string(getgid());
    if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) {
        return false;
    }
    write_file("/proc/self/setgroups", "deny");
    write_file("/proc/self/uid_map", "0 " + uid + " 1");
    write_file("/proc/self/gid_map", "0 " + gid + " 1");
    return true;
}

bool mount_private_var_tmp()
{
    return enter_namespaces() && mount("none", "/", "none", MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("tmpfs", "/var/tmp", "tmpfs", 0, "mode=1777") == 0;
}

// Where namespaces are refused the tests take turns; the lock lives as long as the process.
void take_turns()
{
    const int lock = open("/var/tmp/ruklog-tests.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
    if (lock >= 0) {
        flock(lock, LOCK_EX);
    }
}

bool var_tmp_is_private = false;

} // namespace

namespace ruk_test
{

bool has_private_var_tmp()
{
    return var_tmp_is_private;
}

void enter_private_var_tmp()
{
    var_tmp_is_private = mount_private_var_tmp();
    if (!var_tmp_is_private) {
        fputs("No private /var/tmp here (namespaces are refused): taking turns on a lock.\n",
              stderr);
        take_turns();
    }
}

} // namespace ruk_test
