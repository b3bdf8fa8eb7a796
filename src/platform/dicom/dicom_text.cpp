#include "platform/dicom/dicom_text.h"

#include "contracts/PlatformError.h"
#include "platform/profile/windows949.h"

#include <QRegularExpression>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

/// Makes the Korean characters known that follow: until a separator of names, or the end of the value.
constexpr char Escape[] = "\x1B$)C";
constexpr char BackToAscii[] = "\x1B(B";
constexpr char16_t HangulFirst = u'\uAC00';
constexpr char16_t HangulLast = u'\uD7A3';

QString Shortened(const QString& text, qsizetype longest)
{
    QString cut = text.left(longest);
    if (!cut.isEmpty() && cut.back().isHighSurrogate())
        cut.chop(1);
    return cut;
}

QString Replaced(const QString& text, const QRegularExpression& separators, qsizetype longest)
{
    QString plain = text;
    plain.replace(separators, u" "_s);
    return Shortened(plain.simplified(), longest).trimmed();
}

bool IsHangul(QChar letter)
{
    return letter >= HangulFirst && letter <= HangulLast;
}

bool IsAscii(const QString& text)
{
    return std::ranges::all_of(text, [](QChar letter) { return letter.unicode() < 0x80; });
}

/// Letters of the family name at the beginning of one in Hangul.
qsizetype FamilyLetters(const QString& name)
{
    static const QStringList two{u"남궁"_s, u"황보"_s, u"제갈"_s, u"사공"_s, u"선우"_s,
                                 u"서문"_s, u"독고"_s, u"동방"_s, u"망절"_s};
    return name.size() > 2 && two.contains(name.left(2)) ? 2 : 1;
}

/// Both empty where there is no telling.
std::pair<QString, QString> PartsOf(const QString& name)
{
    const qsizetype blank = name.indexOf(u' ');
    if (blank > 0)
        return {name.left(blank), name.mid(blank + 1)};
    if (name.size() < 2 || !std::ranges::all_of(name, IsHangul))
        return {};
    const qsizetype family = FamilyLetters(name);
    return {name.left(family), name.mid(family)};
}

/// Bytes of a character of KS X 1001, or of ASCII; empty for any other. The code page has more syllables than the set.
QByteArray KoreanCharacter(const QString& character)
{
    if (character.size() == 1 && character.front().unicode() < 0x80)
        return character.toLatin1();
    const auto isHigh = [](char byte) { return static_cast<unsigned char>(byte) >= 0xA1; };
    try {
        const QByteArray bytes = windows949::Encoded(character);
        return bytes.size() == 2 && std::ranges::all_of(bytes, isHigh) ? bytes : QByteArray();
    } catch (const PlatformError&) {
        return {}; // Without the code page everything goes in Unicode.
    }
}

QString DecodedKorean(QByteArray value)
{
    try {
        return windows949::Decoded(value.replace(Escape, "").replace(BackToAscii, ""));
    } catch (const PlatformError&) {
        return QString::fromLatin1(value);
    }
}

QString Decoded(const QByteArray& value, const QByteArray& characters)
{
    if (characters.contains("IR 149"))
        return DecodedKorean(value);
    if (characters.contains("IR 100"))
        return QString::fromLatin1(value);
    // Not every server tells.
    const QString text = QString::fromUtf8(value);
    return characters.contains("IR 192") || !text.contains(QChar::ReplacementCharacter) ? text : DecodedKorean(value);
}

/// The group of a name that is in Hangul, else its first.
QString GroupOf(const QByteArray& value, const QByteArray& characters)
{
    const QStringList groups = Decoded(value, characters).split(u'=');
    const auto inHangul =
        std::ranges::find_if(groups, [](const QString& group) { return std::ranges::any_of(group, IsHangul); });
    return inHangul != groups.end() ? *inHangul : groups.first();
}

} // namespace

QString dicomtext::Harmless(const QString& text, qsizetype longest)
{
    static const QRegularExpression separators(uR"([\p{C}\\])"_s);
    return Replaced(text, separators, longest);
}

QString dicomtext::HarmlessName(const QString& name, bool hasParts)
{
    static const QRegularExpression separators(uR"([\p{C}\\^=])"_s);
    const QString plain = Replaced(name, separators, hasParts ? LongestLong - 1 : LongestLong);
    const auto [family, given] = hasParts ? PartsOf(plain) : std::pair<QString, QString>();
    return given.isEmpty() ? plain : family + u'^' + given;
}

QByteArray dicomtext::Coder::Text(const QString& text)
{
    return m_characters == DicomCharacters::Unicode ? text.toUtf8() : Korean(text, false);
}

QByteArray dicomtext::Coder::Name(const QString& name)
{
    if (m_characters == DicomCharacters::Unicode)
        return name.toUtf8();
    return (IsAscii(name) ? QByteArray() : QByteArray("==")) + Korean(name, true);
}

QByteArray dicomtext::Coder::Korean(const QString& text, bool isName)
{
    QByteArray result;
    bool isKnown = false;
    for (qsizetype at = 0; at < text.size();) {
        const qsizetype units = text[at].isHighSurrogate() ? 2 : 1;
        const QByteArray bytes = KoreanCharacter(text.mid(at, units));
        at += units;
        m_isWhole &= !bytes.isEmpty();
        if (bytes.size() == 2 && !std::exchange(isKnown, true))
            result += Escape;
        else if (isName && bytes == "^")
            isKnown = false;
        result += bytes.isEmpty() ? QByteArray("?") : bytes;
    }
    return result;
}

QString dicomtext::NameOf(const QByteArray& value, const QByteArray& characters)
{
    QString name = GroupOf(value, characters);
    static const QRegularExpression inside(u"(?<=[가-힣])\\^+(?=[가-힣])"_s);
    static const QRegularExpression separators(uR"([\p{C}^])"_s);
    return name.remove(inside).replace(separators, u" "_s).simplified();
}

QString dicomtext::PersonOf(const QByteArray& value, const QByteArray& characters)
{
    return Harmless(GroupOf(value, characters), LongestLong);
}

QString dicomtext::TextOf(const QByteArray& value, const QByteArray& characters, qsizetype longest)
{
    return Harmless(Decoded(value, characters), longest);
}
