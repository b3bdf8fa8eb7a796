#pragma once

#include <QAbstractButton>
#include <QPointer>

/// A small lens over a picture: its click shows the picture large. It takes the keyboard from nobody, and what the
/// mouse does on it besides goes to the widget behind it.
class LensButton : public QAbstractButton
{
    Q_OBJECT

public:
    /// Hidden at first. `behind` is what it lies over.
    LensButton(QWidget* parent, QWidget& behind);

    static constexpr int SidePixels = 22;

    /// Shows it in the lower right corner of that room of the parent; hides it where there is no room for it.
    void PlaceIn(const QRect& room);

protected:
    bool event(QEvent* event) override;
    void paintEvent(QPaintEvent* event) override;

private:
    void PassOn(QEvent& event);

    const QPointer<QWidget> m_behind;
};
