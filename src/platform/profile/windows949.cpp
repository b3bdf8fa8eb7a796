#include "platform/profile/windows949.h"

#include "contracts/PlatformError.h"

#include <QStringDecoder>
#include <QStringEncoder>

using namespace Qt::StringLiterals;

namespace {
// "CP949" names a table that lacks most syllables and has a won sign for the backslash.
constexpr char CodePage[] = "windows-949";

template <class Converter>
Converter Checked()
{
    Converter converter(CodePage, QStringConverter::Flag::Stateless);
    if (!converter.isValid())
        throw PlatformError(u"한글 코드(windows-949)를 쓸 수 없는 환경입니다.!!"_s);
    return converter;
}

QByteArray EncodedCharacter(QStringView character)
{
    if (character.size() == 1 && character.front().unicode() < 0x80)
        return QByteArray(1, static_cast<char>(character.front().unicode()));
    // What stands in for a missing character differs by library, so the way back decides.
    auto encoder = Checked<QStringEncoder>();
    const QByteArray bytes = encoder(character);
    return windows949::Decoded(bytes) == character ? bytes : QByteArray("?");
}
} // namespace

QString windows949::Decoded(const QByteArray& bytes)
{
    auto decoder = Checked<QStringDecoder>();
    QString text = decoder(bytes);
    // The decoder drops half a character at the end of the bytes.
    if (decoder.hasError() && !text.contains(QChar::ReplacementCharacter))
        text.append(QChar::ReplacementCharacter);
    return text;
}

QByteArray windows949::Encoded(const QString& text, qsizetype limit)
{
    QByteArray result;
    for (qsizetype at = 0; at < text.size();) {
        const bool pair = text.at(at).isHighSurrogate() && at + 1 < text.size() && text.at(at + 1).isLowSurrogate();
        const qsizetype units = pair ? 2 : 1;
        const QByteArray bytes = EncodedCharacter(QStringView(text).mid(at, units));
        if (limit >= 0 && result.size() + bytes.size() > limit)
            break;
        result += bytes;
        at += units;
    }
    return result;
}
