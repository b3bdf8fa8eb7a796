#pragma once

#include <QString>

/// Blanks at both ends taken off; line ends and tabs stay.
QString Trim(const QString& text);

/// Exactly `count` characters: past the end of the text blanks; NUL and apostrophe become a blank, a backslash becomes
/// a slash, each in its place.
QString CleanText(const QString& text, int count);

/// True for a number as an operator writes one: digits with at most one decimal point and one sign, blanks around it.
bool IsNumericText(const QString& text);

/// The whole number that a numeric text stands for, without leading zeros, however long; a half goes to the even
/// neighbour. Empty for a text that isn't numeric.
QString WholeNumberText(const QString& text);
/// The same as a number, limited to 32 bits; 0 for a text that isn't numeric.
int WholeNumber(const QString& text);

/// Lays a numeric text into a mask of zeros and other characters, from the right: missing digits are zeros, digits too
/// many stand in front of the first place. A text that isn't numeric stays as it is.
QString LayIntoMask(const QString& text, QStringView mask);

/// True when a column that is too short, or can't hold each character, can have made `kept` of `given`: it keeps the
/// beginning, with "?" for what it doesn't know.
bool MayBeStoredAs(const QString& kept, const QString& given);

/// A picture number as it shows: at least three digits.
QString NumberText(int number);
