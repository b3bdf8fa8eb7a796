#include "filing/ProcessList.h"

#include "contracts/PlatformError.h"
#include "filing/capture_folders.h"
#include "frame/journal.h"
#include "frame/services.h"

using namespace Qt::StringLiterals;

namespace {

constexpr char16_t ListEnding[] = u".json";
constexpr char16_t LockEnding[] = u".lock";
constexpr char16_t BrokenEnding[] = u".broken";

/// Throws PlatformError when it can't be read.
QJsonDocument ReadDocument(const QString& path)
{
    QJsonParseError error = {};
    QJsonDocument document = QJsonDocument::fromJson(ReadListFile(path), &error);
    if (error.error != QJsonParseError::NoError)
        throw PlatformError(error.errorString());
    return document;
}

/// False when it can't be read: it is put aside then.
bool ReadList(const QString& path, bool isOwn, const ProcessList::Reader& read)
{
    try {
        read(ReadDocument(path), isOwn);
        return true;
    } catch (const PlatformError& error) {
        journal::NoteFault(u"%1: %2"_s.arg(error.Text(), path));
        journal::NotingFaults([&path] { Files().RenameFile(path, path + QString::fromUtf16(BrokenEnding)); });
        return false;
    }
}

} // namespace

QList<ProcessList::Found> ProcessList::In(const QString& folder, const QString& name)
{
    QList<Found> lists;
    const QString prefix = name + u'-';
    for (const QString& file : Files().FilesStartingWith(folder, name)) {
        const bool isBroken = file.endsWith(QStringView(BrokenEnding));
        if (!isBroken && !file.endsWith(QStringView(ListEnding)))
            continue;
        Found list{folder + file, Holder::Dead, Files().ForeignOwner(folder + file), false, {}};
        if (!isBroken && file.startsWith(prefix))
            list.holder = Files().HolderOf(file.sliced(prefix.size()).chopped(QStringView(ListEnding).size()));
        try {
            list.document = ReadDocument(list.path);
            list.isReadable = true;
        } catch (const PlatformError& error) {
            qWarning("%s: %s", qPrintable(NativePath(list.path)), error.what());
        }
        lists.append(list);
    }
    return lists;
}

ProcessList::ProcessList(QString name) : m_name(std::move(name))
{
    journal::NotingFaults([this] { m_lock = Files().Lock(PathOf(Files().ProcessMark(), LockEnding)); });
}

QString ProcessList::PathOf(const QString& mark, QStringView ending) const
{
    return LocalFolder() + m_name + u'-' + mark + ending.toString();
}

QString ProcessList::CommonPath() const
{
    return LocalFolder() + m_name + QString::fromUtf16(ListEnding);
}

QString ProcessList::Path() const
{
    return PathOf(Files().ProcessMark(), ListEnding);
}

void ProcessList::Write(const QString& path, const QByteArray& content)
{
    try {
        Files().WritePrivateFile(path, content);
    } catch (const StoredWithFault& error) {
        journal::NoteFault(error.Text());
    }
}

bool ProcessList::TakeOver(const Reader& read)
{
    if (FileExists(Path()))
        ReadList(Path(), true, read);
    const QString prefix = m_name + u'-';
    for (const QString& file : Files().FilesStartingWith(LocalFolder(), prefix)) {
        const bool isList = file.endsWith(QStringView(ListEnding));
        if (!isList && !file.endsWith(QStringView(LockEnding)))
            continue;
        const QString mark = file.sliced(prefix.size()).chopped(QStringView(ListEnding).size());
        const Holder holder = Files().HolderOf(mark);
        if (holder == Holder::Self || holder == Holder::Elsewhere)
            continue;
        const QString owner = Files().ForeignOwner(LocalFolder() + file);
        if (owner.isEmpty() && TakeOverList(mark, read))
            m_taken << mark;
        else if (isList && !owner.isEmpty() && holder == Holder::Dead && !m_foreignOwners.contains(owner))
            m_foreignOwners << owner;
    }
    // The one list of all stations of an earlier release.
    if (const QString common = CommonPath(); FileExists(common)) {
        m_hasCommon = true;
        ReadList(common, false, read);
    }
    return m_hasCommon || !m_taken.isEmpty();
}

bool ProcessList::TakeOverList(const QString& mark, const Reader& read)
{
    bool taken = false;
    journal::NotingFaults([&] {
        auto lock = Files().Lock(PathOf(mark, LockEnding));
        if (lock == nullptr)
            return;
        const QString list = PathOf(mark, ListEnding);
        taken = !FileExists(list) || ReadList(list, false, read);
        m_foreignLocks.push_back(std::move(lock));
    });
    return taken;
}

void ProcessList::RemoveTaken()
{
    for (const QString& mark : m_taken) {
        DeleteFile(PathOf(mark, ListEnding));
        DeleteFile(PathOf(mark, LockEnding));
    }
    if (m_hasCommon)
        DeleteFile(CommonPath());
    m_hasCommon = false;
    m_taken.clear();
    m_foreignLocks.clear();
}

void ProcessList::End(const std::optional<QByteArray>& content)
{
    if (HasEnded())
        return;
    journal::NotingFaults([&] {
        if (content)
            Write(Path(), *content);
        else
            DeleteFile(Path());
        DeleteFile(PathOf(Files().ProcessMark(), LockEnding));
    });
    m_lock.reset();
}
