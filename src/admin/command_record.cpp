#include "admin/command_record.h"

#include "records/acts.h"

void RecordCommand(const QString& detail)
{
    acts::Act act{acts::Kind::Administered};
    act.detail = detail;
    acts::Record(act);
}
