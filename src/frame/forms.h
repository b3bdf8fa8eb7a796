#pragma once

#include <QList>
#include <QPointer>
#include <QWidget>

/// A screen of the station. It has one instance at a time, reached through `Form<T>()`: made and loaded at first
/// touch, gone at unload.
///
/// A derived form has a static `FormName` and builds its controls in the constructor; what its load does stands in
/// `Form_Load`, so that it runs on a complete object.
class StationForm : public QWidget
{
    Q_OBJECT

public:
    explicit StationForm(const QString& name);
    ~StationForm() override;

    /// Shows the form modeless, in its normal size when it was minimised. A form that its own load has closed again
    /// stays away.
    void Show();
    /// Shows it in front of the others, with the keyboard. A box that opens before the desktop has come to it is the
    /// form's already.
    void BringUp();
    /// Shows the form over the one that is in use, which owns it, blocks the other forms, and returns when it has been
    /// unloaded or hidden.
    void ShowModal();
    /// Moves the form, with its frame, to that place in the free area of the first screen.
    void MoveTo(QPoint place);
    /// Runs `Form_Unload` and takes the form out of the collection. The object itself goes when no guarded handler runs
    /// any more, since the one that pumped the closing event may still be at work on it. A first screen ends the
    /// program.
    void Unload();
    bool IsUnloaded() const { return m_unloaded; }
    /// Runs `Form_Unload` alone: there is no display any more on which anything could go.
    void UnloadUnseen();

protected:
    virtual void Form_Load() {}
    virtual void Form_Unload() {}
    /// True for a first screen: the program ends with it, whatever its unload meets.
    virtual bool EndsProgram() const { return false; }
    void closeEvent(QCloseEvent* event) override;
    void changeEvent(QEvent* event) override;

Q_SIGNALS:
    void Unloaded();

private:
    template <class T>
    friend T& Form();

    /// Puts the form into the collection and runs `Form_Load`. A form whose load fails is taken out again before the
    /// fault goes on; it ends no program, since the operator hasn't read the message yet.
    void Load();
    void TakeOut();
    /// In the middle over its owner, as far as the free area of the owner's screen lets it.
    void StandOver(QWidget& owner);

    bool m_unloaded = false;
};

/// The collection of loaded forms, in the order of loading.
const QList<StationForm*>& LoadedForms();
/// The loaded form of that exact name, or null.
StationForm* FindForm(const QString& name);

/// True when a form of that name is loaded; blanks around it don't count, case does.
bool IsFormLoaded(const QString& name);

/// A window's place, moved as little as it takes to stand wholly in that room; where it is larger, its corner does.
QRect MovedInside(QRect place, const QRect& room);

/// The form that was loaded last and can be seen; null without one.
StationForm* LastSeenForm();
/// The window that a box or a modal form belongs to: the active one, else the form that is seen. Null without one.
QWidget* OwnerWindow();

/// Unloads all forms, the one loaded last first.
void UnloadForms();

/// The one instance of a form; touching it loads it. The reference is good until the form is unloaded and control
/// has gone back to the event loop. A fault of the load is the caller's, and leaves no form behind.
template <class T>
T& Form()
{
    if (StationForm* loaded = FindForm(QString::fromUtf16(T::FormName)))
        return *static_cast<T*>(loaded);
    T* form = new T;
    static_cast<StationForm*>(form)->Load();
    return *form;
}
