#include "frame/own_program.h"

#include <QCoreApplication>
#include <QDir>
#include <QFileInfo>

using namespace Qt::StringLiterals;

QString OwnProgram(const QString& name)
{
    QDir folder(QCoreApplication::applicationDirPath());
    for (int level = 0; level < 4; ++level) {
        QString program = folder.filePath(u"libexec/"_s + name);
        if (QFileInfo(program).isExecutable())
            return program;
        if (!folder.cdUp())
            break;
    }
    return {};
}
