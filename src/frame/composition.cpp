#include "frame/composition.h"

#include "frame/plain_text.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QLineEdit>
#include <QPointer>

#include <utility>

namespace {

/// Sees every step of a composition on its way to the text box, and keeps away the echo of one: an input method that
/// was made to end its composition, by a change of focus, a click into the box or its reset, can hand the same syllable
/// over a second time. The operator's next one always begins with a key or with a composition of its own.
class CompositionWatch final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        if (event->type() == QEvent::KeyPress)
            m_echo.clear();
        return event->type() == QEvent::InputMethod && IsEcho(receiver, static_cast<QInputMethodEvent&>(*event));
    }

    QString In(const QObject* box) const { return m_box == box ? m_composed : QString(); }

    void Drop(const QObject* box)
    {
        if (In(box).isEmpty())
            return;
        m_echo = std::exchange(m_composed, QString());
        QGuiApplication::inputMethod()->reset();
    }

private:
    bool IsEcho(QObject* receiver, const QInputMethodEvent& event)
    {
        const QString& committed = event.commitString();
        const QString& composed = event.preeditString();
        if (!composed.isEmpty())
            m_echo.clear();
        else if (!committed.isEmpty() && committed == m_echo) {
            m_echo.clear();
            return true;
        }
        if (!committed.isEmpty())
            m_echo = committed == m_composed && composed.isEmpty() ? committed : QString();
        m_box = receiver;
        m_composed = composed;
        return false;
    }

    QPointer<QObject> m_box;
    QString m_composed;
    QString m_echo; ///< Has been handed over or given up, and may be handed over once more.
};

QPointer<CompositionWatch>& Watch()
{
    static QPointer<CompositionWatch> watch;
    return watch;
}

} // namespace

void FollowComposition()
{
    if (Watch() != nullptr)
        return;
    Watch() = new CompositionWatch(qApp);
    qApp->installEventFilter(Watch());
}

QString CompositionIn(const QObject* box)
{
    return Watch() != nullptr ? Watch()->In(box) : QString();
}

QString TextOf(const QLineEdit& box)
{
    return ComposedText(box.text().insert(box.cursorPosition(), CompositionIn(&box)));
}

void DropComposition(const QObject* box)
{
    if (Watch() != nullptr)
        Watch()->Drop(box);
}
