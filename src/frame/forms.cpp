#include "frame/forms.h"

#include "frame/guard.h"
#include "frame/services.h"
#include "text/text_routines.h"

#include <QCloseEvent>
#include <QEventLoop>

#include <algorithm>

namespace {
QList<StationForm*>& Collection()
{
    static QList<StationForm*> collection;
    return collection;
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

void StationForm::ShowModal()
{
    if (m_unloaded)
        return;
    setWindowModality(Qt::ApplicationModal);
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
    CommitComposition();
    m_unloaded = true;
    Guarded([this] { Form_Unload(); });
    Collection().removeOne(this);
    hide();
    Q_EMIT Unloaded();
    guard::WhenIdle([form = QPointer(this)] {
        if (form != nullptr)
            form->deleteLater();
    });
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

void UnloadForms()
{
    const QList<StationForm*> loaded = Collection();
    for (qsizetype at = loaded.size() - 1; at >= 0; --at)
        loaded[at]->Unload();
}
