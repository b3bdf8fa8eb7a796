#pragma once

#include <cstddef>
#include <string>
#include <sys/types.h>
#include <vector>

/// A program of the system that decodes a picture, as a child of this process and under its limits. Run rather than
/// linked, where its licence would bind the program that links it.
class OutsideDecoder
{
public:
    /// The program gets what the standard input holds from `offset` on. The first argument is its path.
    explicit OutsideDecoder(std::vector<std::string> arguments, std::size_t offset = 0);
    /// Ends the program if it still runs.
    ~OutsideDecoder();
    OutsideDecoder(const OutsideDecoder&) = delete;
    OutsideDecoder& operator=(const OutsideDecoder&) = delete;

    /// Fills `target` from what the program writes. False when it ends before that.
    bool Read(void* target, std::size_t bytes);

private:
    pid_t m_process = -1;
    int m_output = -1;
};
