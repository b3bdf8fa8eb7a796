#pragma once

#include <QTextEdit>

/// A box for the report's long texts. It gives back what it was given, line ends and all, as long as nothing was typed,
/// and tells its lines as it shows them.
class FindingsBox : public QTextEdit
{
    Q_OBJECT

public:
    explicit FindingsBox(QWidget* parent);

    /// The text; new line ends are as those of the text that was set, CR LF where it had none.
    QString Text() const;
    void setText(const QString& text);

    /// The lines as they are wrapped to the box's width.
    QStringList ShownLines() const;

private:
    QString RawText() const;
    void KeepLinesApart();

    QString m_given;
    QString m_givenRaw;
};

/// The lines of a box from element 1; element 0 is empty. A box without text gives that one alone.
void SplitTextLines(const FindingsBox& box, QStringList& lines);
