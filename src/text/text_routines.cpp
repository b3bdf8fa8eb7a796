#include "text/text_routines.h"

#include <QRegularExpression>

#include <algorithm>
#include <limits>

using namespace Qt::StringLiterals;

namespace {

struct Number
{
    bool negative = false;
    QString whole;
    QString fraction;
};

/// False when the text is no number.
bool ReadNumber(const QString& text, Number& number)
{
    QString digits = Trim(text);
    if (digits.startsWith(u'-') || digits.startsWith(u'+')) {
        number.negative = digits.startsWith(u'-');
        digits.remove(0, 1);
    }
    const qsizetype point = digits.indexOf(u'.');
    number.whole = point < 0 ? digits : digits.left(point);
    number.fraction = point < 0 ? QString() : digits.mid(point + 1);
    const auto onlyDigits = [](const QString& part) {
        for (const QChar character : part) {
            if (character < u'0' || character > u'9')
                return false;
        }
        return true;
    };
    return !(number.whole.isEmpty() && number.fraction.isEmpty()) && onlyDigits(number.whole) &&
           onlyDigits(number.fraction);
}

void AddOne(QString& digits)
{
    for (qsizetype at = digits.size() - 1; at >= 0; --at) {
        if (digits[at] != u'9') {
            digits[at] = QChar(digits[at].unicode() + 1);
            return;
        }
        digits[at] = u'0';
    }
    digits.prepend(u'1');
}

} // namespace

QString Trim(const QString& text)
{
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text[first] == u' ')
        ++first;
    while (last > first && text[last - 1] == u' ')
        --last;
    return text.mid(first, last - first);
}

QString CleanText(const QString& text, int count)
{
    QString result;
    result.reserve(count);
    for (int at = 0; at < count; ++at) {
        const QChar character = at < text.size() ? text[at] : QChar(u' ');
        if (character == QChar(u'\0') || character == u'\'')
            result.append(u' ');
        else if (character == u'\\')
            result.append(u'/');
        else
            result.append(character);
    }
    return result;
}

bool IsNumericText(const QString& text)
{
    Number number;
    return ReadNumber(text, number);
}

QString WholeNumberText(const QString& text)
{
    Number number;
    if (!ReadNumber(text, number))
        return {};
    QString whole = number.whole.isEmpty() ? u"0"_s : number.whole;
    qsizetype zeros = 0;
    while (zeros < whole.size() - 1 && whole[zeros] == u'0')
        ++zeros;
    whole.remove(0, zeros);
    const QString half = number.fraction.leftJustified(1, u'0');
    const bool aboveHalf = half[0] > u'5' || (half[0] == u'5' && half.mid(1).contains(QRegularExpression(u"[1-9]"_s)));
    const bool exactlyHalf = half[0] == u'5' && !aboveHalf;
    const bool odd = (whole.back().unicode() - u'0') % 2 == 1;
    if (aboveHalf || (exactlyHalf && odd))
        AddOne(whole);
    return number.negative && whole != u"0"_s ? u'-' + whole : whole;
}

int WholeNumber(const QString& text)
{
    const QString whole = WholeNumberText(text);
    if (whole.isEmpty())
        return 0;
    bool fits = false;
    const int value = whole.toInt(&fits);
    if (fits)
        return value;
    return whole.startsWith(u'-') ? std::numeric_limits<int>::min() : std::numeric_limits<int>::max();
}

QString LayIntoMask(const QString& text, QStringView mask)
{
    const QString whole = WholeNumberText(text);
    if (whole.isEmpty())
        return text;
    const bool negative = whole.startsWith(u'-');
    QStringView digits = QStringView(whole).mid(negative ? 1 : 0);

    // Built from its end, where the last digit meets the last place.
    QString result;
    result.reserve(mask.size() + whole.size());
    const qsizetype firstPlace = mask.indexOf(u'0');
    for (qsizetype at = mask.size() - 1; at >= 0; --at) {
        if (mask[at] != u'0') {
            result.append(mask[at]);
            continue;
        }
        result.append(digits.isEmpty() ? QChar(u'0') : digits.back());
        digits.chop(qMin<qsizetype>(1, digits.size()));
        if (at != firstPlace)
            continue;
        for (; !digits.isEmpty(); digits.chop(1))
            result.append(digits.back());
        if (negative)
            result.append(u'-');
    }
    std::reverse(result.begin(), result.end());
    return result;
}

QString NumberText(int number)
{
    return LayIntoMask(QString::number(number), u"000");
}

bool MayBeStoredAs(const QString& kept, const QString& given)
{
    const QList<uint> keptCharacters = kept.toUcs4();
    const QList<uint> givenCharacters = given.toUcs4();
    return keptCharacters.size() <= givenCharacters.size() &&
           std::equal(keptCharacters.begin(), keptCharacters.end(), givenCharacters.begin(),
                      [](uint one, uint other) { return one == other || one == u'?'; });
}
