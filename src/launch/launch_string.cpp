#include "launch/launch_string.h"

#include "text/text_routines.h"

LaunchString CutLaunchString(const QString& command)
{
    return {command.mid(0, 1),  command.mid(1, 2),  command.mid(3, 1),  command.mid(4, 8),
            command.mid(12, 2), command.mid(14, 2), command.mid(16, 8), Trim(command.mid(24))};
}
