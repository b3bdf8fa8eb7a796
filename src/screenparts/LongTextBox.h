#pragma once

#include <QTextEdit>

/// A box for a plain text of several lines. Its lines stand apart, its Hangul is composed, whatever is typed, pasted or
/// set, and Ctrl+Enter makes a line as Enter does. It gives back what it was given, line ends and all, as long as
/// nothing was changed.
class LongTextBox : public QTextEdit
{
    Q_OBJECT

public:
    /// `lineEnd` is what its lines end in when the text that was set has none.
    LongTextBox(const QString& lineEnd, QWidget* parent);

    /// The text, with what is being composed in it.
    QString Text() const;
    /// Another text; what is being composed belonged to the one before, and is given up.
    void setText(const QString& text);
    bool IsComposing() const;
    /// The operator has changed the text since it was set, or is about to.
    bool IsTouched() const { return document()->isModified() || IsComposing(); }

    /// The lines as they are wrapped to the box's width, with what is being composed.
    QStringList ShownLines() const;

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void insertFromMimeData(const QMimeData* source) override;

private:
    QString RawText() const;
    void KeepLinesApart();
    /// The lines that were changed last.
    void Compose();

    QString m_lineEnd;
    QString m_given;
    QString m_givenRaw;
    int m_changedFrom = 0;
    int m_changedTo = -1;
};
