#include "platform/imaging/kernel_confinement.h"

#include <algorithm>
#include <cstdint>

#include <linux/landlock.h>
#include <linux/seccomp.h>
#include <sys/syscall.h>
#include <unistd.h>

int kernelconfinement::LandlockVersion()
{
    const long version = syscall(SYS_landlock_create_ruleset, nullptr, 0, LANDLOCK_CREATE_RULESET_VERSION);
    return static_cast<int>(std::max(version, 0L));
}

bool kernelconfinement::HasSeccomp()
{
    const std::uint32_t action = SECCOMP_RET_ERRNO;
    return syscall(SYS_seccomp, SECCOMP_GET_ACTION_AVAIL, 0, &action) == 0;
}

bool kernelconfinement::CanConfinePrograms()
{
    return LandlockVersion() > 0 && HasSeccomp();
}
