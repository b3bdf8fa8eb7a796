#include "platform/imaging/reader/confinement.h"
#include "platform/imaging/reader/OutsideDecoder.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <future>
#include <thread>

#include <csignal>
#include <fcntl.h>
#include <seccomp.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// A line with what came of it: "done", or the name of the error.
void Tell(const char* attempt, bool done)
{
    std::printf("%s %s\n", attempt, done ? "done" : strerrorname_np(errno));
    std::fflush(stdout);
}

void OpenAFile(const char* attempt)
{
    Tell(attempt, open("/etc/passwd", O_RDONLY) >= 0);
}

void TryAll()
{
    OpenAFile("file");
    std::thread(OpenAFile, "file-in-new-thread").join();
    Tell("input-by-name", open("/dev/stdin", O_RDONLY) >= 0);
    Tell("write", open("/tmp", O_TMPFILE | O_WRONLY, 0600) >= 0);
    Tell("socket", socket(AF_INET, SOCK_STREAM, 0) >= 0);
    Tell("local-socket", socket(AF_UNIX, SOCK_STREAM, 0) >= 0);
    Tell("signal", kill(getppid(), 0) == 0);
    Tell("code", mmap(nullptr, 4096, PROT_READ | PROT_EXEC, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0) != MAP_FAILED);
    const pid_t child = fork();
    if (child == 0)
        _exit(0);
    Tell("fork", child > 0 && waitpid(child, nullptr, 0) == child);
    execl("/bin/echo", "echo", "exec done", nullptr);
    Tell("exec", false);
}

/// All threads, that which had begun before, too.
int ShutInAndTry()
{
    std::promise<void> shut;
    std::thread before([&shut] {
        shut.get_future().wait();
        OpenAFile("file-in-old-thread");
    });
    const bool isShut = confinement::ShutIn();
    shut.set_value();
    before.join();
    if (isShut)
        TryAll();
    return isShut ? 0 : 1;
}

/// What this program does as one that the reader has started.
int RunAndRelay(const char* self)
{
    OutsideDecoder program({self, "free"});
    for (char letter = 0; program.Read(&letter, 1);)
        std::putchar(letter);
    return 0;
}

/// The command behind this one's word, as on a kernel without Landlock.
int RunWithoutLandlock(char** command)
{
    const scmp_filter_ctx rules = seccomp_init(SCMP_ACT_ALLOW);
    if (seccomp_rule_add(rules, SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(landlock_create_ruleset), 0) == 0 &&
        seccomp_load(rules) == 0)
        execv(*command, command);
    return 1;
}

} // namespace

/// Tries what a decoder that was taken over would: shut in as the picture reader is ("shut-in"), as a program that the
/// reader runs ("program"), or free.
int main(int argc, char** argv)
{
    if (argc > 2 && std::strcmp(argv[1], "without-landlock") == 0)
        return RunWithoutLandlock(argv + 2);
    if (argc == 2 && std::strcmp(argv[1], "shut-in") == 0)
        return ShutInAndTry();
    if (argc == 2 && std::strcmp(argv[1], "program") == 0)
        return RunAndRelay(argv[0]);
    TryAll();
    return 0;
}
