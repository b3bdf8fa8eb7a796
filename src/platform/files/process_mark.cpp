#include "platform/files/process_mark.h"

#include <QFile>
#include <QStringList>
#include <QSysInfo>

#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Letters and digits of an identity that the system gives, for a file's name.
QString Plain(const QByteArray& identity)
{
    QString plain;
    for (const char character : identity) {
        const bool plainCharacter = (character >= '0' && character <= '9') || (character >= 'a' && character <= 'z') ||
                                    (character >= 'A' && character <= 'Z');
        if (plainCharacter)
            plain += QLatin1Char(character);
        else if (character != '-')
            plain += u'_';
    }
    return plain.left(40);
}

/// A machine that was set up without an identity is known by its name.
QString Machine()
{
    const QByteArray id = QSysInfo::machineUniqueId();
    const QString machine = Plain(id.isEmpty() ? QSysInfo::machineHostName().toUtf8() : id);
    return machine.isEmpty() ? u"machine"_s : machine;
}

QString Boot()
{
    return Plain(QSysInfo::bootUniqueId());
}

/// Start of a process since the machine's boot, in the kernel's ticks; empty when it doesn't live.
QString StartOf(const QString& pid)
{
    QFile file(u"/proc/%1/stat"_s.arg(pid));
    if (!file.open(QIODevice::ReadOnly))
        return {};
    // The program's own name stands in brackets and may hold anything. Behind it: state, then 18 numbers, then the
    // start.
    const QByteArray line = file.readAll();
    const QList<QByteArray> fields = line.mid(line.lastIndexOf(')') + 2).split(' ');
    const bool gone = fields.value(0) == "Z" || fields.value(0) == "X";
    return gone ? QString() : QString::fromLatin1(fields.value(19));
}

} // namespace

const QString& process_mark::Own()
{
    static const QString own = [] {
        const QString pid = QString::number(getpid());
        return QStringList{Machine(), Boot(), pid, StartOf(pid)}.join(u'.');
    }();
    return own;
}

Holder process_mark::HolderOf(const QString& mark)
{
    if (mark == Own())
        return Holder::Self;
    const QStringList parts = mark.split(u'.');
    const QStringList own = Own().split(u'.');
    if (parts.size() != own.size() || parts[0] != own[0] || parts[2].toLongLong() <= 0 || parts[3].isEmpty())
        return Holder::Elsewhere;
    return parts[1] == own[1] && StartOf(parts[2]) == parts[3] ? Holder::Living : Holder::Dead;
}
