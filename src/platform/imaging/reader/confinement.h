#pragma once

#include <sys/types.h>

/// Shuts a process in, for good. What is refused fails with EPERM, or EACCES for a file.
namespace confinement {

/// For decoding in this process, all its threads and those to come: it computes, reads and writes what is open, and
/// takes memory. It opens no file and no socket, runs no program and makes no code. It may end `program`, its child.
/// Does what the kernel can; false when that failed.
bool ShutIn(pid_t program = -1);

/// For the program that this process, which has one thread, is about to become by fexecve on the descriptor `program`.
/// It may read the system's libraries and the file behind `input`, and no other; no sockets, no other program. False
/// where the kernel can't do both kinds of confinement.
bool ShutInProgram(int program, int input);

} // namespace confinement
