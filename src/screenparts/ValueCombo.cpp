#include "screenparts/ValueCombo.h"

#include "frame/plain_text.h"
#include "text/text_routines.h"

#include <QAbstractItemView>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMouseEvent>
#include <QSignalBlocker>
#include <QStyleOption>

namespace {
/// What a line of text keeps free at its ends, in pixels.
constexpr int CutMargin = 8;
} // namespace

ValueCombo::ValueCombo(const QString& name, QWidget* parent) : QComboBox(parent)
{
    // Before the line of text is made: rules of a style sheet that go by the name are looked up then, and kept.
    setObjectName(name);
    setEditable(true);
    setInsertPolicy(QComboBox::NoInsert);
    lineEdit()->installEventFilter(this);
    // What can't be typed is read from its beginning, and whole in the tooltip. A text that is set moves the cursor to
    // its end, also when it stands there already.
    connect(lineEdit(), &QLineEdit::cursorPositionChanged, this, [this] {
        if (!lineEdit()->isReadOnly())
            return;
        lineEdit()->home(false);
        const bool isCut = lineEdit()->fontMetrics().horizontalAdvance(currentText()) > lineEdit()->width() - CutMargin;
        setToolTip(isCut ? ToolTipText(currentText()) : QString());
    });
}

/// The entry of the value that is shown, -1 when it has none. A number may be typed without its leading zeros.
int ValueCombo::EntryOfValue() const
{
    const QString value = Trim(currentText());
    const auto isValue = [&value](const QString& entry) {
        return entry == value ||
               (IsNumericText(entry) && IsNumericText(value) && WholeNumber(entry) == WholeNumber(value));
    };
    for (int entry = 0; entry < count(); ++entry) {
        if (isValue(Trim(itemText(entry))))
            return entry;
    }
    return -1;
}

/// A value that was set or typed leaves the current entry where it was; from there the keys would step, and the list
/// would take the value for a choice that nobody made.
void ValueCombo::FollowValue()
{
    const int entry = EntryOfValue();
    if (entry == currentIndex())
        return;
    const QString value = currentText();
    const QSignalBlocker blocker(this);
    setCurrentIndex(entry);
    if (currentText() != value)
        setEditText(value);
}

void ValueCombo::showPopup()
{
    FollowValue();
    QComboBox::showPopup();
    // A second click on the value closes the list, and must not open it again.
    if (lineEdit()->isReadOnly())
        view()->window()->setAttribute(Qt::WA_NoMouseReplay);
}

bool ValueCombo::eventFilter(QObject* watched, QEvent* event)
{
    if (watched != lineEdit() || event->type() != QEvent::MouseButtonPress || !lineEdit()->isReadOnly() ||
        static_cast<QMouseEvent*>(event)->button() != Qt::LeftButton)
        return QComboBox::eventFilter(watched, event);
    // Like a press on the arrow, after which the list stays open when the button is released.
    QStyleOptionComboBox option;
    initStyleOption(&option);
    const QPoint arrow = style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxArrow, this).center();
    QMouseEvent press(QEvent::MouseButtonPress, arrow, mapToGlobal(arrow), Qt::LeftButton, Qt::LeftButton,
                      Qt::NoModifier);
    setFocus(Qt::MouseFocusReason);
    mousePressEvent(&press);
    return true;
}

void ValueCombo::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
    case Qt::Key_PageUp:
    case Qt::Key_PageDown:
        FollowValue();
        break;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        // It would choose the value that stands there anew.
        event->ignore();
        return;
    default:
        break;
    }
    QComboBox::keyPressEvent(event);
}

void ValueCombo::focusOutEvent(QFocusEvent* event)
{
    FollowValue();
    QComboBox::focusOutEvent(event);
}
