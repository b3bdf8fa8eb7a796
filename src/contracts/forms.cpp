#include "contracts/forms.h"

#include "contracts/desktop.h"
#include "contracts/guard.h"

#include <QApplication>
#include <QCloseEvent>
#include <QEventLoop>

namespace {
QList<StationForm*>& Collection()
{
    static QList<StationForm*> collection;
    return collection;
}

QList<StationForm*>& Unloaded()
{
    static QList<StationForm*> unloaded;
    return unloaded;
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
    ::Unloaded().removeOne(this);
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
    ::Unloaded().append(this);
    Q_EMIT Unloaded();
    QMetaObject::invokeMethod(qApp, &forms::DeleteUnloaded, Qt::QueuedConnection);
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

void UnloadForms()
{
    const QList<StationForm*> loaded = Collection();
    for (auto form = loaded.rbegin(); form != loaded.rend(); ++form)
        (*form)->Unload();
}

void forms::DeleteUnloaded()
{
    if (guard::Depth() > 0)
        return;
    const QList<StationForm*> gone = Unloaded();
    for (StationForm* form : gone)
        form->deleteLater();
    Unloaded().clear();
}
