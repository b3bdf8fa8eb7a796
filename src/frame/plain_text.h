#pragma once

#include <QLabel>

/// Texts of the station come from the database, from files and from other programs: what looks like markup, or like the
/// mark of a shortcut, shows as the characters that it is.

/// A label whose text is a text, whatever stands in it.
class PlainLabel : public QLabel
{
public:
    explicit PlainLabel(QWidget* parent = nullptr) : QLabel(parent) { setTextFormat(Qt::PlainText); }
    PlainLabel(const QString& text, QWidget* parent) : PlainLabel(parent) { setText(text); }
};

/// A text with its Hangul in whole syllables (NFC): single letters, as some systems write them, show side by side.
QString ComposedText(const QString& text);

/// What a tooltip has to be given in order to show that text; of a very long one the beginning.
QString ToolTipText(const QString& text);
/// What a menu entry, a tab, a button or a row of a form has to be given in order to show that text.
QString CaptionText(const QString& text);
