#include "platform/imaging/reader/OutsideDecoder.h"

#include "platform/imaging/kernel_confinement.h"
#include "platform/imaging/reader/confinement.h"

#include <cerrno>
#include <csignal>
#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

namespace {

/// In a new process: becomes the program, whose output goes to `output`. Returns when that can't be.
void Become(const std::vector<char*>& words, int output)
{
    constexpr rlimit MostFiles = {16, 16}; // Libraries are closed again as they are loaded.
    char* environment[] = {nullptr};
    const int program = open(words.front(), O_PATH | O_CLOEXEC);
    if (program >= 0 && dup2(output, STDOUT_FILENO) >= 0 && setrlimit(RLIMIT_NOFILE, &MostFiles) == 0 &&
        confinement::ShutInProgram(program, STDIN_FILENO))
        fexecve(program, words.data(), environment);
}

} // namespace

OutsideDecoder::OutsideDecoder(std::vector<std::string> arguments, std::size_t offset)
{
    if (!kernelconfinement::CanConfinePrograms())
        throw Unconfinable();
    std::vector<char*> words;
    words.reserve(arguments.size() + 1);
    for (std::string& argument : arguments)
        words.push_back(argument.data());
    words.push_back(nullptr);
    int ends[2];
    if (lseek(STDIN_FILENO, static_cast<off_t>(offset), SEEK_SET) < 0 || pipe2(ends, O_CLOEXEC) != 0)
        return;
    const pid_t parent = getpid();
    m_process = fork();
    if (m_process == 0) {
        // The parent may have been ended before this.
        if (prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && getppid() == parent)
            Become(words, ends[1]);
        _exit(1);
    }
    close(ends[1]);
    m_output = ends[0];
}

OutsideDecoder::~OutsideDecoder()
{
    if (m_output >= 0)
        close(m_output);
    if (m_process > 0) {
        kill(m_process, SIGKILL);
        waitpid(m_process, nullptr, 0);
    }
}

bool OutsideDecoder::Read(void* target, std::size_t bytes)
{
    auto* at = static_cast<char*>(target);
    while (bytes > 0) {
        const ssize_t got = read(m_output, at, bytes);
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        at += got;
        bytes -= static_cast<std::size_t>(got);
    }
    return true;
}
