#pragma once

#include <QToolBar>

#include <functional>

class QToolButton;

/// A toolbar of commands: buttons with a picture and, at some of them, a drop-down list of further ones. Nothing on it
/// is ever disabled. All buttons are equally wide, so that each keeps its place.
class CommandBar : public QToolBar
{
    Q_OBJECT

public:
    /// Runs as a command of the operator, see `GuardedSlot`. Without a run it does nothing.
    struct Entry
    {
        QString caption;
        std::function<void()> run;
    };
    struct Button
    {
        QString caption;
        QString imageKey;
        std::function<void()> run;
        QList<Entry> entries;
    };

    CommandBar(const QList<Button>& buttons, QWidget* parent);

protected:
    void resizeEvent(QResizeEvent* event) override;

private:
    QList<QToolButton*> m_buttons;
};
