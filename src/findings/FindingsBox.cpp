#include "findings/FindingsBox.h"

#include "text/text_routines.h"

using namespace Qt::StringLiterals;

namespace {
/// 9.75 points at 96 dots an inch. In pixels, so that the wrapping doesn't depend on the screen's resolution.
constexpr int FontPixels = 13;
} // namespace

FindingsBox::FindingsBox(QWidget* parent) : LongTextBox(u"\r\n"_s, parent)
{
    QFont boxFont(u"돋움체"_s);
    boxFont.setPixelSize(FontPixels);
    boxFont.setBold(true);
    // Letters as wide at every scale of the screen.
    boxFont.setHintingPreference(QFont::PreferNoHinting);
    setFont(boxFont);
}

QStringList SplitTextLines(const FindingsBox& box)
{
    QStringList lines{QString()};
    if (!Trim(box.Text()).isEmpty())
        lines += box.ShownLines();
    return lines;
}
