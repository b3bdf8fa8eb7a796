#include "admin/command_record.h"

#include "frame/journal.h"

using namespace Qt::StringLiterals;

void RecordCommand(const QString& detail)
{
    journal::Note(Journal::Information, u"관리 명령: "_s + detail);
}
