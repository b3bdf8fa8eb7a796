#include "cdexport/file_rows.h"

#include "contracts/fpSpread.h"

#include <QLocale>

#include <array>

using namespace Qt::StringLiterals;

namespace {
constexpr int LaidOutRows = 2000;
constexpr std::array<double, 4> Widths = {26, 8, 12, 20};
constexpr double FurtherWidth = 60;
} // namespace

QString KilobytesText(qint64 bytes)
{
    qint64 kilobytes = bytes / 1024;
    const qint64 rest = bytes % 1024;
    if (rest > 512 || (rest == 512 && kilobytes % 2 == 1))
        ++kilobytes;
    return QString::number(kilobytes);
}

QString MegabytesText(qint64 bytes)
{
    constexpr qint64 megabyte = 1024 * 1024;
    return QLocale::c().toString(static_cast<double>(bytes) / megabyte, 'f', bytes < 10 * megabyte ? 1 : 0) + u" MB"_s;
}

void WriteFileRow(fpSpread& list, int row, const FolderEntry& entry)
{
    const QStringList texts{entry.Name, entry.IsFolder ? QString() : KilobytesText(entry.Size), entry.Type,
                            entry.DateLastModified.toString(u"yyyy-MM-dd HH:mm:ss"_s)};
    list.setRow(row);
    for (int column = 1; column <= texts.size(); ++column) {
        list.setCol(column);
        list.setText(texts[column - 1]);
    }
}

void LayOutFileList(fpSpread& list, const QStringList& furtherHeadings)
{
    const QStringList headings = QStringList{u"이름"_s, u"크기"_s, u"종류"_s, u"수정한날짜"_s} + furtherHeadings;
    list.setMaxCols(static_cast<int>(headings.size()));
    list.setMaxRows(LaidOutRows);
    list.setHeadings(headings);
    for (int column = 1; column <= headings.size(); ++column)
        list.setColWidth(column, static_cast<size_t>(column) <= Widths.size() ? Widths[static_cast<size_t>(column - 1)]
                                                                              : FurtherWidth);
}
