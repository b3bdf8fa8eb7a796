#pragma once

#include <QComboBox>

/// A list that may show a value beside its entries. Whatever put the value there, keys step from it, the list opens at
/// it, and leaving the list chooses nothing. Where nothing can be typed a click on the value opens the list.
class ValueCombo : public QComboBox
{
    Q_OBJECT

public:
    /// `name` becomes the object's name.
    ValueCombo(const QString& name, QWidget* parent);

    void showPopup() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    int EntryOfValue() const;
    void FollowValue();
};
