#include "screenparts/TextDraft.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/journal.h"
#include "frame/services.h"

#include <QCryptographicHash>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QSet>

using namespace Qt::StringLiterals;

namespace {

constexpr int BetweenMs = 10000;
/// What the closing waits for a copy that is being written.
constexpr int EndPatienceMs = 1000;

/// Of the present text, and of one that waits to be asked for.
enum class Copy { Present, Kept };

/// Another user's in the same folder is left alone.
QString PathOf(const QString& name, Copy copy)
{
    const QString ending = copy == Copy::Kept ? u".kept.json"_s : u".json"_s;
    const QString base = UseService<Desktop>().ProgramFolder() + u"\\TextDraft-"_s + name;
    QString path = base + ending;
    for (int other = 2; other < 10 && !Files().ForeignOwner(path).isEmpty(); ++other)
        path = base + u'-' + QString::number(other) + ending;
    return path;
}

/// Their present texts are this run's own: let go, or about to be written.
QSet<QString>& NamesOfThisRun()
{
    static QSet<QString> names;
    return names;
}

QByteArray ToText(const QJsonObject& content)
{
    return QJsonDocument(content).toJson(QJsonDocument::Compact);
}

/// On the writing thread.
void Replace(const std::optional<TextDraft::Draft>& before, const std::optional<TextDraft::Draft>& draft)
{
    journal::NotingFaults([&] {
        if (draft)
            Files().WritePrivateFile(PathOf(draft->name, Copy::Present), ToText(draft->content));
        if (before && (!draft || draft->name != before->name))
            DeleteFile(PathOf(before->name, Copy::Present));
    });
}

} // namespace

TextDraft::TextDraft(Unsaved unsaved, QObject* parent) : QObject(parent), m_unsaved(std::move(unsaved))
{
    connect(&m_timer, &QTimer::timeout, this, GuardedSlot([this] { Check(); }));
    connect(qApp, &QGuiApplication::focusObjectChanged, this, GuardedSlot([this] { Check(); }));
    m_timer.start(BetweenMs);
}

void TextDraft::Check()
{
    if (!m_timer.isActive())
        return;
    std::optional<Draft> draft = m_unsaved();
    if (draft == m_written)
        return;
    if (draft)
        NoteName(draft->name);
    m_thread.Post([before = std::exchange(m_written, draft), draft] { Replace(before, draft); });
}

void TextDraft::NoteName(const QString& name)
{
    NamesOfThisRun().insert(name);
    m_names.insert(name);
}

void TextDraft::End()
{
    const bool stays = UseService<Desktop>().EndIsRequested();
    if (stays)
        Check();
    m_timer.stop();
    const std::optional<Draft> left = stays ? m_written : std::nullopt;
    if (left)
        m_names.remove(left->name);
    m_thread.End(EndPatienceMs, [names = m_names, left] {
        Replace(std::nullopt, left);
        for (const QString& name : names)
            journal::NotingFaults([&] { DeleteFile(PathOf(name, Copy::Present)); });
    });
}

void TextDraft::TakeUp(const Draft& draft)
{
    journal::NotingFaults(
        [&] { Files().RenameFile(PathOf(draft.name, Copy::Kept), PathOf(draft.name, Copy::Present)); });
    m_written = draft;
    NoteName(draft.name);
}

QString TextDraft::NameOf(const QStringList& words)
{
    const QByteArray joined = words.join(QChar(u'\0')).toUtf8();
    return QString::fromLatin1(QCryptographicHash::hash(joined, QCryptographicHash::Sha1).toHex());
}

void TextDraft::Keep(const Draft& draft)
{
    Files().WritePrivateFile(PathOf(draft.name, Copy::Kept), ToText(draft.content));
}

std::optional<QJsonObject> TextDraft::Find(const QString& name)
{
    QJsonObject found;
    journal::NotingFaults([&] {
        const QString kept = PathOf(name, Copy::Kept);
        const QString present = PathOf(name, Copy::Present);
        if (!NamesOfThisRun().contains(name) && FileExists(present))
            Files().RenameFile(present, kept);
        if (FileExists(kept))
            found = QJsonDocument::fromJson(Files().ReadFile(kept)).object();
    });
    return found.isEmpty() ? std::nullopt : std::optional(found);
}

void TextDraft::Remove(const QString& name)
{
    journal::NotingFaults([&] { DeleteFile(PathOf(name, Copy::Kept)); });
}
