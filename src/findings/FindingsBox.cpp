#include "findings/FindingsBox.h"

#include "text/text_routines.h"

#include <QAbstractTextDocumentLayout>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextLayout>

using namespace Qt::StringLiterals;

namespace {
/// 9.75 points at 96 dots an inch. In pixels, so that the wrapping doesn't depend on the screen's resolution.
constexpr int FontPixels = 13;
/// The font itself leaves nothing between two lines.
constexpr int LinePixels = 15;
} // namespace

FindingsBox::FindingsBox(QWidget* parent) : QTextEdit(parent)
{
    QFont boxFont(u"돋움체"_s);
    boxFont.setPixelSize(FontPixels);
    boxFont.setBold(true);
    // Letters as wide at every scale of the screen.
    boxFont.setHintingPreference(QFont::PreferNoHinting);
    setFont(boxFont);
    setAcceptRichText(false);
    setTabChangesFocus(true);
    setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    setWordWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    KeepLinesApart();
}

void FindingsBox::KeepLinesApart()
{
    QTextBlockFormat apart;
    apart.setLineHeight(LinePixels, QTextBlockFormat::FixedHeight);
    // Not a step that could be taken back.
    setUndoRedoEnabled(false);
    QTextCursor all(document());
    all.select(QTextCursor::Document);
    all.mergeBlockFormat(apart);
    setUndoRedoEnabled(true);
    document()->setModified(false);
}

QString FindingsBox::RawText() const
{
    QString text = document()->toRawText();
    return text.replace(QChar::ParagraphSeparator, u'\n').replace(QChar::LineSeparator, u'\n');
}

QString FindingsBox::Text() const
{
    QString text = RawText();
    if (text == m_givenRaw)
        return m_given;
    const bool bareLineFeeds = m_given.contains(u'\n') && !m_given.contains(u"\r\n"_s);
    return bareLineFeeds ? text : text.replace(u'\n', u"\r\n"_s);
}

void FindingsBox::setText(const QString& text)
{
    setPlainText(text);
    KeepLinesApart();
    m_given = text;
    m_givenRaw = RawText();
}

QStringList FindingsBox::ShownLines() const
{
    QStringList lines;
    for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
        // Lays the block out when it hasn't been in view yet.
        document()->documentLayout()->blockBoundingRect(block);
        const QTextLayout* layout = block.layout();
        if (layout->lineCount() == 0)
            lines << block.text();
        for (int line = 0; line < layout->lineCount(); ++line)
            lines << block.text().mid(layout->lineAt(line).textStart(), layout->lineAt(line).textLength());
    }
    return lines;
}

void SplitTextLines(const FindingsBox& box, QStringList& lines)
{
    lines = QStringList{QString()};
    if (!Trim(box.Text()).isEmpty())
        lines += box.ShownLines();
}
