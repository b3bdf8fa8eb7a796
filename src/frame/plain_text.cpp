#include "frame/plain_text.h"

using namespace Qt::StringLiterals;

namespace {
constexpr qsizetype LongestToolTip = 2000;
} // namespace

QString ToolTipText(const QString& text)
{
    if (text.isEmpty())
        return {};
    return u"<div style=\"white-space: pre-wrap\">"_s + text.left(LongestToolTip).toHtmlEscaped() + u"</div>"_s;
}

QString CaptionText(const QString& text)
{
    return QString(text).replace(u'&', u"&&"_s);
}
