#include "platform/imaging/reader/confinement.h"

#include "platform/imaging/kernel_confinement.h"

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <initializer_list>
#include <memory>

#include <dlfcn.h>
#include <fcntl.h>
#include <linux/landlock.h>
#include <sched.h>
#include <seccomp.h>
#include <sys/auxv.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <unistd.h>

namespace {

/// An open descriptor of its own.
class Descriptor
{
public:
    explicit Descriptor(long number) : m_number(static_cast<int>(number)) {}
    ~Descriptor()
    {
        if (IsOpen())
            close(m_number);
    }
    Descriptor(const Descriptor&) = delete;
    Descriptor& operator=(const Descriptor&) = delete;

    bool IsOpen() const { return m_number >= 0; }
    int Number() const { return m_number; }

private:
    int m_number;
};

/// Landlock's rules: no access to any file but what is let through.
class FileRules
{
public:
    FileRules() : m_rules(Create()) {}

    /// False when the rule can't be; the file then stays shut.
    bool Let(std::uint64_t access, int fileOrFolder)
    {
        landlock_path_beneath_attr rule = {};
        rule.allowed_access = access;
        rule.parent_fd = fileOrFolder;
        return syscall(SYS_landlock_add_rule, m_rules.Number(), LANDLOCK_RULE_PATH_BENEATH, &rule, 0) == 0;
    }
    bool Let(std::uint64_t access, const char* path)
    {
        const Descriptor file(open(path, O_PATH | O_CLOEXEC));
        return file.IsOpen() && Let(access, file.Number());
    }
    /// Of this thread, those that it starts, and child processes.
    bool Enforce() const { return m_rules.IsOpen() && syscall(SYS_landlock_restrict_self, m_rules.Number(), 0) == 0; }

private:
    static long Create()
    {
        // The rights of the first version, then that to link across folders and that to cut a file.
        constexpr int FirstRights = 13;
        const int rights = FirstRights + std::min(kernelconfinement::LandlockVersion(), 3) - 1;
        landlock_ruleset_attr handled = {};
        handled.handled_access_fs = (std::uint64_t{1} << rights) - 1;
        return syscall(SYS_landlock_create_ruleset, &handled, sizeof handled, 0);
    }

    Descriptor m_rules;
};

/// Seccomp's rules: no call to the kernel but those that are let through.
class CallRules
{
public:
    using Conditions = std::initializer_list<scmp_arg_cmp>;

    CallRules() : m_rules(seccomp_init(SCMP_ACT_ERRNO(EPERM)), &seccomp_release)
    {
        constexpr std::uint32_t AllThreads = 1;
        m_isWhole = m_rules != nullptr && seccomp_attr_set(m_rules.get(), SCMP_FLTATR_CTL_TSYNC, AllThreads) == 0 &&
                    seccomp_attr_set(m_rules.get(), SCMP_FLTATR_ACT_BADARCH, SCMP_ACT_KILL_PROCESS) == 0;
        // The C library then takes the older call, whose flags can be looked at.
        Add(SCMP_ACT_ERRNO(ENOSYS), SCMP_SYS(clone3), {});
    }

    void Let(std::initializer_list<int> calls)
    {
        for (const int call : calls)
            Let(call, {});
    }
    /// When all conditions hold.
    void Let(int call, Conditions conditions) { Add(SCMP_ACT_ALLOW, call, conditions); }

    bool Enforce() const { return m_isWhole && seccomp_load(m_rules.get()) == 0; }

private:
    void Add(std::uint32_t action, int call, Conditions conditions)
    {
        m_isWhole =
            m_isWhole && seccomp_rule_add_array(m_rules.get(), action, call, static_cast<unsigned>(conditions.size()),
                                                conditions.begin()) == 0;
    }

    std::unique_ptr<void, decltype(&seccomp_release)> m_rules;
    bool m_isWhole = false;
};

scmp_arg_cmp Is(unsigned argument, std::uint64_t value)
{
    return {argument, SCMP_CMP_EQ, value, 0};
}

/// The bits of the mask stand as in `bits`.
scmp_arg_cmp Masked(unsigned argument, std::uint64_t mask, std::uint64_t bits)
{
    return {argument, SCMP_CMP_MASKED_EQ, mask, bits};
}

/// Memory, threads, time, and what is open already.
void LetCompute(CallRules& rules)
{
    rules.Let({SCMP_SYS(read), SCMP_SYS(readv), SCMP_SYS(pread64), SCMP_SYS(write), SCMP_SYS(writev), SCMP_SYS(close),
               SCMP_SYS(lseek), SCMP_SYS(fstat)});
    rules.Let({SCMP_SYS(brk), SCMP_SYS(munmap), SCMP_SYS(mremap), SCMP_SYS(madvise)});
    rules.Let({SCMP_SYS(futex), SCMP_SYS(set_robust_list), SCMP_SYS(rseq), SCMP_SYS(sched_getaffinity),
               SCMP_SYS(sched_yield), SCMP_SYS(getpid), SCMP_SYS(gettid), SCMP_SYS(exit), SCMP_SYS(exit_group)});
    rules.Let({SCMP_SYS(rt_sigaction), SCMP_SYS(rt_sigprocmask), SCMP_SYS(rt_sigreturn), SCMP_SYS(sigaltstack),
               SCMP_SYS(restart_syscall)});
    rules.Let({SCMP_SYS(clock_gettime), SCMP_SYS(clock_getres), SCMP_SYS(clock_nanosleep), SCMP_SYS(nanosleep),
               SCMP_SYS(gettimeofday), SCMP_SYS(getrandom), SCMP_SYS(sysinfo)});
    rules.Let(SCMP_SYS(clone), {Masked(0, CLONE_THREAD, CLONE_THREAD)});
    rules.Let(SCMP_SYS(prctl), {Is(0, PR_SET_NAME)});
    rules.Let(SCMP_SYS(fcntl), {Is(1, F_GETFL)});
    rules.Let(SCMP_SYS(fcntl), {Is(1, F_GETFD)});
    constexpr std::uint64_t NoNewLimit = 0;
    rules.Let(SCMP_SYS(prlimit64), {Is(2, NoNewLimit)});
}

bool LoseNoMore()
{
    return prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0;
}

} // namespace

bool confinement::ShutIn(pid_t program)
{
    if (!LoseNoMore())
        return false;
    // The thread that scales has begun before this, and has the rules for calls alone, which let it open nothing.
    if (kernelconfinement::LandlockVersion() > 0 && !FileRules().Enforce())
        return false;
    const rlimit none = {0, 0};
    if (setrlimit(RLIMIT_NOFILE, &none) != 0)
        return false;
    if (!kernelconfinement::HasSeccomp())
        return true;
    CallRules rules;
    LetCompute(rules);
    rules.Let(SCMP_SYS(mmap), {Masked(2, PROT_EXEC, 0)});
    rules.Let(SCMP_SYS(mprotect), {Masked(2, PROT_EXEC, 0)});
    // Of what is open, not of a path.
    rules.Let(SCMP_SYS(newfstatat), {Masked(3, AT_EMPTY_PATH, AT_EMPTY_PATH)});
    rules.Let(SCMP_SYS(statx), {Masked(2, AT_EMPTY_PATH, AT_EMPTY_PATH)});
    if (program > 0) {
        rules.Let(SCMP_SYS(kill), {Is(0, static_cast<std::uint64_t>(program))});
        rules.Let(SCMP_SYS(wait4), {Is(0, static_cast<std::uint64_t>(program))});
    }
    return rules.Enforce();
}

bool confinement::ShutInProgram(int program, int input)
{
    Dl_info loader = {};
    // NOLINTNEXTLINE(performance-no-int-to-ptr): the kernel tells addresses as numbers.
    const void* base = reinterpret_cast<const void*>(getauxval(AT_BASE));
    if (!kernelconfinement::CanConfinePrograms() || !LoseNoMore() || dladdr(base, &loader) == 0)
        return false;
    constexpr std::uint64_t Execute = LANDLOCK_ACCESS_FS_EXECUTE | LANDLOCK_ACCESS_FS_READ_FILE;
    FileRules files;
    if (!files.Let(Execute, program) || !files.Let(Execute, loader.dli_fname))
        return false;
    // Those of them that there are.
    for (const char* libraries : {"/usr/lib", "/lib", "/lib64", "/usr/local/lib", "/etc/ld.so.cache"})
        files.Let(LANDLOCK_ACCESS_FS_READ_FILE, libraries);
    // By the name of the standard input, where a program reads only what has a name. A pipe needs no rule.
    files.Let(LANDLOCK_ACCESS_FS_READ_FILE, input);

    CallRules calls;
    LetCompute(calls);
    calls.Let({SCMP_SYS(mmap), SCMP_SYS(mprotect), SCMP_SYS(newfstatat), SCMP_SYS(statx), SCMP_SYS(stat),
               SCMP_SYS(lstat), SCMP_SYS(access), SCMP_SYS(faccessat), SCMP_SYS(faccessat2), SCMP_SYS(readlink),
               SCMP_SYS(readlinkat), SCMP_SYS(getcwd), SCMP_SYS(mlock), SCMP_SYS(munlock)});
    // Of what is open already: newer programs take a pipe's end twice.
    calls.Let({SCMP_SYS(dup)});
    calls.Let({SCMP_SYS(arch_prctl), SCMP_SYS(set_tid_address), SCMP_SYS(uname), SCMP_SYS(getuid), SCMP_SYS(geteuid),
               SCMP_SYS(getgid), SCMP_SYS(getegid), SCMP_SYS(poll), SCMP_SYS(ppoll)});
    constexpr std::uint64_t Changing = O_ACCMODE | O_CREAT | O_TRUNC | O_APPEND;
    calls.Let(SCMP_SYS(open), {Masked(1, Changing, O_RDONLY)});
    calls.Let(SCMP_SYS(openat), {Masked(2, Changing, O_RDONLY)});
    // The descriptor is closed by the very call, and the program can't get another by this number that may be executed.
    calls.Let(SCMP_SYS(execveat), {Is(0, static_cast<std::uint64_t>(program)), Is(4, AT_EMPTY_PATH)});
    return files.Enforce() && calls.Enforce();
}
