#pragma once

#include "contracts/dicom.h"

/// Texts as objects hold them.
namespace dicomtext {

inline constexpr qsizetype LongestLong = 64;  ///< Of a long string, and of a name's component group.
inline constexpr qsizetype LongestShort = 16; ///< Of a short string.

/// A text for an element of at most `longest` characters: what separates values or lines becomes a blank.
QString Harmless(const QString& text, qsizetype longest);
/// A name: what separates the parts of a name becomes a blank too. `hasParts`: family and given name stand with `^`
/// between them; a name that can't be split stays one part.
QString HarmlessName(const QString& name, bool hasParts);

/// Brings harmless texts into an object's character set.
class Coder
{
public:
    explicit Coder(DicomCharacters characters) : m_characters(characters) {}

    QByteArray Text(const QString& text);
    /// In the Korean set a name with such letters stands in the third group, which is that of how it is written here.
    QByteArray Name(const QString& name);
    /// False behind a text with a letter that isn't in the set: a "?" stands for it.
    bool IsWhole() const { return m_isWhole; }

private:
    QByteArray Korean(const QString& text, bool isName);

    DicomCharacters m_characters;
    bool m_isWhole = true;
};

/// What an object of a server has for a name, without the separators of its parts: that in Hangul, where it has one.
/// `characters` is the object's own character set.
QString NameOf(const QByteArray& value, const QByteArray& characters);
/// The same with the separators of its parts, as an object has it.
QString PersonOf(const QByteArray& value, const QByteArray& characters);
/// Any other text of a server, as one plain line.
QString TextOf(const QByteArray& value, const QByteArray& characters, qsizetype longest = LongestLong);

} // namespace dicomtext
