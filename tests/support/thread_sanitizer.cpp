// The toolkit starts a process by cloning itself with its memory shared. The sanitizer takes that for a fork, and looks
// at nothing of the test any more from there on: it is passed by.

#include <cstdarg>
#include <sched.h>

extern "C" int __clone(int (*work)(void*), void* stack, int flags, void* argument, ...);

extern "C" int clone(int (*work)(void*), void* stack, int flags, void* argument, ...) noexcept
{
    va_list more;
    va_start(more, argument);
    auto* parent = va_arg(more, pid_t*);
    auto* storage = va_arg(more, void*);
    auto* child = va_arg(more, pid_t*);
    va_end(more);
    return __clone(work, stack, flags, argument, parent, storage, child);
}
