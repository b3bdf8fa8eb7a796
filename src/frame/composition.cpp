#include "frame/composition.h"

#include <QGuiApplication>
#include <QInputMethod>
#include <QInputMethodEvent>
#include <QPointer>

namespace {

/// Sees every step of a composition on its way to the text box.
class CompositionWatch final : public QObject
{
public:
    using QObject::QObject;

    bool eventFilter(QObject* receiver, QEvent* event) override
    {
        if (event->type() == QEvent::InputMethod) {
            box = receiver;
            composed = static_cast<QInputMethodEvent*>(event)->preeditString();
        }
        return false;
    }

    QPointer<QObject> box;
    QString composed;
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

void CommitComposition()
{
    if (Watch() == nullptr || Watch()->box == nullptr || Watch()->composed.isEmpty())
        return;
    QGuiApplication::inputMethod()->commit();
    // An input method that doesn't answer leaves its composition in the box.
    if (Watch()->box == nullptr || Watch()->composed.isEmpty())
        return;
    QInputMethodEvent event;
    event.setCommitString(Watch()->composed);
    QCoreApplication::sendEvent(Watch()->box, &event);
}

QString CompositionIn(const QObject* box)
{
    return Watch() != nullptr && Watch()->box == box ? Watch()->composed : QString();
}
