#include "admin/check.h"

#include "admin/exit_codes.h"

#include <QString>
#include <QTextStream>

int CheckStation(QTextStream& out)
{
    out << QStringLiteral("이 명령은 아직 없습니다.!!\n");
    return CantWork;
}
