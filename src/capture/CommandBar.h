#pragma once

#include <QToolBar>

class QToolButton;

/// A toolbar whose commands are told apart by caption: buttons with a picture and, at some of them, a drop-down list of
/// entries. Nothing on it is ever disabled. All buttons
/// are equally wide, so that each keeps its place.
class CommandBar : public QToolBar
{
    Q_OBJECT

public:
    struct Button
    {
        QString caption;
        QString imageKey;
        QStringList entries;
    };

    CommandBar(const QList<Button>& buttons, QWidget* parent);

protected:
    void resizeEvent(QResizeEvent* event) override;

Q_SIGNALS:
    void ButtonClick(const QString& caption);
    void ButtonMenuClick(const QString& entry);

private:
    QList<QToolButton*> m_buttons;
};
