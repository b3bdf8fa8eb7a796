#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

/// Thrown where the kernel can't confine a program.
struct Unconfinable
{
};

/// A program of the system that decodes a picture, as a child of this process, under its limits and shut in before it
/// starts. Run rather than linked, where its licence would bind the program that links it.
class OutsideDecoder
{
public:
    /// The program gets what the standard input holds from `offset` on. The first argument is its path. To be called
    /// while the process has one thread.
    explicit OutsideDecoder(std::vector<std::string> arguments, std::size_t offset = 0);
    /// Ends the program if it still runs.
    ~OutsideDecoder();
    OutsideDecoder(const OutsideDecoder&) = delete;
    OutsideDecoder& operator=(const OutsideDecoder&) = delete;

    /// Fills `target` from what the program writes. False when it ends before that.
    bool Read(void* target, std::size_t bytes);
    /// -1 when the program couldn't be started.
    pid_t Process() const { return m_process; }

private:
    pid_t m_process = -1;
    int m_output = -1;
};
