#include "platform/files/process_mark.h"

#include "platform/files/posix_files.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringList>
#include <QSysInfo>

#include <fcntl.h>
#include <sys/stat.h>
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

QString& BootFolder()
{
    static QString folder;
    return folder;
}

bool IsRemembered(const QString& boot)
{
    return !BootFolder().isEmpty() && !boot.isEmpty() && QFile::exists(BootFolder() + u'/' + boot);
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
    if (!IsOfThisMachine(mark))
        return Holder::Elsewhere;
    const QStringList parts = mark.split(u'.');
    if (parts[1] != Boot())
        return IsRemembered(parts[1]) ? Holder::Dead : Holder::Elsewhere;
    return StartOf(parts[2]) == parts[3] ? Holder::Living : Holder::Dead;
}

bool process_mark::IsOfThisMachine(const QString& mark)
{
    const QStringList parts = mark.split(u'.');
    return parts.size() == 4 && parts[0] == Own().section(u'.', 0, 0) && parts[2].toLongLong() > 0 &&
           !parts[3].isEmpty();
}

void process_mark::KeepBoots(const QString& folder, const std::function<QStringList()>& known)
{
    BootFolder() = folder;
    QStringList boots{Boot()};
    if (!QFileInfo::exists(folder)) {
        for (const QString& mark : known()) {
            if (IsOfThisMachine(mark))
                boots << mark.section(u'.', 1, 1);
        }
        QDir().mkpath(folder);
        // Every user's station adds to the machine's record.
        struct stat above = {};
        if (stat(QFile::encodeName(QFileInfo(folder).path()).constData(), &above) == 0) [[maybe_unused]]
            const int refused = chmod(QFile::encodeName(folder).constData(), above.st_mode & 03777);
    }
    for (const QString& boot : boots) {
        // Another user may have put a link or a pipe there.
        const posix_files::Descriptor made(QFile::encodeName(folder + u'/' + boot),
                                           O_WRONLY | O_CREAT | O_NOFOLLOW | O_NONBLOCK);
    }
}
