#pragma once

/// What the running kernel offers to confine a process that decodes a picture. Safe to call from any thread.
namespace kernelconfinement {

/// Landlock keeps a process away from files. Its version, from 1 on; 0 where the kernel lacks it, was started without
/// it, or a container withholds it.
int LandlockVersion();
/// Seccomp keeps a process from calls to the kernel.
bool HasSeccomp();
/// Both: what a program of the system takes to be run on a picture from outside.
bool CanConfinePrograms();

} // namespace kernelconfinement
