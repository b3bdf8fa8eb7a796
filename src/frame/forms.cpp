#include "frame/forms.h"

#include "frame/guard.h"
#include "frame/services.h"
#include "text/text_routines.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>
#include <QScreen>
#include <QWindow>

#include <algorithm>
#include <utility>

namespace {
QList<StationForm*>& Collection()
{
    static QList<StationForm*> collection;
    return collection;
}

/// Was brought to the front, and isn't the active window yet.
QPointer<StationForm>& BroughtUp()
{
    static QPointer<StationForm> form;
    return form;
}
} // namespace

StationForm::StationForm(const QString& name)
{
    setObjectName(name);
    setAttribute(Qt::WA_DeleteOnClose, false);
}

StationForm::~StationForm()
{
    Collection().removeOne(this);
}

void StationForm::Show()
{
    if (m_unloaded)
        return;
    if (isMinimized())
        showNormal();
    else
        show();
    raise();
}

void StationForm::MoveTo(QPoint place)
{
    const QPoint at = QGuiApplication::primaryScreen()->availableGeometry().topLeft() + place;
    move(at);
    // A window that was made at this very place has none of its own for the window manager.
    if (windowHandle() != nullptr)
        windowHandle()->setFramePosition(at);
}

void StationForm::StandOver(QWidget& owner)
{
    // Other windows are nobody's, whatever they are told.
    setWindowFlags(Qt::Dialog);
    winId();
    windowHandle()->setTransientParent(owner.window()->windowHandle());
    QRect place = rect();
    place.moveCenter(owner.frameGeometry().center());
    const QPoint at = MovedInside(place, owner.screen()->availableGeometry()).topLeft();
    move(at);
    windowHandle()->setFramePosition(at);
}

void StationForm::ShowModal()
{
    if (m_unloaded)
        return;
    setWindowModality(Qt::ApplicationModal);
    if (QWidget* owner = OwnerWindow(); owner != nullptr && owner != this)
        StandOver(*owner);
    QEventLoop loop;
    connect(this, &StationForm::Unloaded, &loop, &QEventLoop::quit);
    show();
    loop.exec();
}

void StationForm::Load()
{
    Collection().append(this);
    try {
        Form_Load();
    } catch (...) {
        TakeOut();
        throw;
    }
}

void StationForm::Unload()
{
    if (m_unloaded)
        return;
    TakeOut();
    if (EndsProgram())
        EndProgram();
}

void StationForm::TakeOut()
{
    if (m_unloaded)
        return;
    m_unloaded = true;
    Guarded([this] { Form_Unload(); });
    Collection().removeOne(this);
    hide();
    Q_EMIT Unloaded();
    later::Post(this, later::Handler, [this] { deleteLater(); });
}

void StationForm::UnloadUnseen()
{
    if (!std::exchange(m_unloaded, true))
        Guarded([this] { Form_Unload(); });
}

void StationForm::BringUp()
{
    Show();
    if (m_unloaded)
        return;
    if (!isActiveWindow())
        BroughtUp() = this;
    activateWindow();
}

void StationForm::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        BroughtUp() = nullptr;
    QWidget::changeEvent(event);
}

void StationForm::closeEvent(QCloseEvent* event)
{
    event->accept();
    Unload();
}

const QList<StationForm*>& LoadedForms()
{
    return Collection();
}

StationForm* FindForm(const QString& name)
{
    for (StationForm* form : Collection()) {
        if (form->objectName() == name)
            return form;
    }
    return nullptr;
}

bool IsFormLoaded(const QString& name)
{
    const QString wanted = Trim(name);
    return std::ranges::any_of(Collection(),
                               [&](const StationForm* form) { return Trim(form->objectName()) == wanted; });
}

QRect MovedInside(QRect place, const QRect& room)
{
    place.moveRight(qMin(place.right(), room.right()));
    place.moveBottom(qMin(place.bottom(), room.bottom()));
    place.moveLeft(qMax(place.left(), room.left()));
    place.moveTop(qMax(place.top(), room.top()));
    return place;
}

StationForm* LastSeenForm()
{
    const QList<StationForm*>& loaded = Collection();
    const auto seen = std::find_if(loaded.rbegin(), loaded.rend(),
                                   [](const StationForm* form) { return form->isVisible() && !form->isMinimized(); });
    return seen == loaded.rend() ? nullptr : *seen;
}

QWidget* OwnerWindow()
{
    QWidget* active = QApplication::activeWindow();
    // A box or a list that is open keeps what follows it.
    const bool isForm = active == nullptr || qobject_cast<StationForm*>(active) != nullptr;
    if (isForm && BroughtUp() != nullptr && BroughtUp()->isVisible())
        return BroughtUp();
    return active != nullptr ? active : LastSeenForm();
}

void UnloadForms()
{
    const QList<StationForm*> loaded = Collection();
    for (qsizetype at = loaded.size() - 1; at >= 0; --at)
        loaded[at]->Unload();
}
