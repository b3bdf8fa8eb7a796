#pragma once

#include "frame/WorkThread.h"

#include <QJsonObject>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <functional>
#include <optional>

/// What is typed on a screen and stored nowhere yet outlives the program: a copy for this user alone lies in the
/// program's folder while there is such a text, at most ten seconds behind it. Nobody waits for it to be written.
class TextDraft : public QObject
{
    Q_OBJECT

public:
    /// A text under the name of what it belongs to, as `NameOf` makes it.
    struct Draft
    {
        QString name;
        QJsonObject content;

        bool operator==(const Draft&) const = default;
    };
    /// The text that is stored nowhere at this moment; nothing when there is none.
    using Unsaved = std::function<std::optional<Draft>()>;

    TextDraft(Unsaved unsaved, QObject* parent);

    const std::optional<Draft>& Present() const { return m_written; }
    /// Looks now: a new text is written, and the copy of one that was stored or let go is removed.
    void Check();
    /// The screen closes: its text was let go, unless the system ends the program, when it is there for the next run.
    void End();

    /// What was found is the present text again, and no longer to be found.
    void TakeUp(const Draft& draft);

    /// One name for those words, which can stand in a file's.
    static QString NameOf(const QStringList& words);
    /// A copy that is found under its name until `Remove`, whatever is typed meanwhile. Throws PlatformError.
    static void Keep(const Draft& draft);
    /// What an earlier run, or `Keep`, left under the name; nothing as well when it can't be read.
    static std::optional<QJsonObject> Find(const QString& name);
    static void Remove(const QString& name);

private:
    void NoteName(const QString& name);

    Unsaved m_unsaved;
    std::optional<Draft> m_written;
    /// Whose copies may lie in the folder: the closing drops what still waits to be removed.
    QSet<QString> m_names;
    QTimer m_timer;
    WorkThread m_thread;
};
