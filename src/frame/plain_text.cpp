#include "frame/plain_text.h"

using namespace Qt::StringLiterals;

namespace {
constexpr qsizetype LongestToolTip = 2000;
} // namespace

QString ComposedText(const QString& text)
{
    return text.normalized(QString::NormalizationForm_C);
}

QString ToolTipText(const QString& text)
{
    if (text.isEmpty())
        return {};
    QString shown = ComposedText(text.left(LongestToolTip));
    if (text.size() > LongestToolTip)
        shown += u'…';
    return u"<div style=\"white-space: pre-wrap\">"_s + shown.toHtmlEscaped() + u"</div>"_s;
}

QString CaptionText(const QString& text)
{
    return QString(text).replace(u'&', u"&&"_s);
}
