#pragma once

#include <QLineEdit>

/// The box into which a text is typed where it will stand on the picture. It is at least as large as its text.
class TextEntryBox : public QLineEdit
{
    Q_OBJECT

public:
    explicit TextEntryBox(QWidget* parent);

    /// The font in points of the picture, as it will be drawn.
    const QFont& TextFont() const { return m_textFont; }
    void setTextFont(const QFont& font) { m_textFont = font; }

    /// Opens the box, empty, over that part of its parent. `pointPixels` is the shown size of one point of
    /// the font.
    void Open(const QRect& place, qreal pointPixels, const QColor& colour);
    /// Hides the box and empties it.
    void Close();

Q_SIGNALS:
    /// Enter; what an input method was still composing is part of the text.
    void Entered();
    /// The focus went elsewhere, in whatever way.
    void FocusLost();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;

private:
    void GrowWithText();

    QFont m_textFont;
    QSize m_leastSize;
};
