#pragma once

#include <QPlainTextEdit>

/// The box into which a text is typed where it will stand on the picture. It is at least as large as its text; where
/// that would reach beyond what is seen of the picture, the box moves in, and where it is too long for a line there, it
/// is wrapped.
class TextEntryBox : public QPlainTextEdit
{
    Q_OBJECT

public:
    explicit TextEntryBox(QWidget* parent);

    /// The font in points of the picture, as it will be drawn.
    const QFont& TextFont() const { return m_textFont; }
    void setTextFont(const QFont& font) { m_textFont = font; }

    /// Opens the box, empty, over that part of its parent, of which `room` shows the picture. `pointPixels` is the
    /// shown size of one point of the font.
    void Open(const QRect& place, const QRect& room, qreal pointPixels, const QColor& colour);
    /// Hides the box and empties it.
    void Close();

    /// What has been typed.
    QString text() const { return toPlainText(); }
    /// The same with what an input method is still composing, its Hangul composed.
    QString Text() const;
    /// Where it was opened, however far it has moved since.
    QPoint Corner() const { return m_place.topLeft(); }

Q_SIGNALS:
    /// Enter; what an input method was still composing is part of the text.
    void Entered();
    /// The focus went elsewhere, in whatever way.
    void FocusLost();

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void inputMethodEvent(QInputMethodEvent* event) override;
    void focusOutEvent(QFocusEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    void GrowWithText();

    QFont m_textFont;
    QFont m_shownFont; ///< In pixels of the view.
    QRect m_place;
    QRect m_room;
};
