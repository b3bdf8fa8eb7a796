#include "platform/printing/PagePrinter.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "platform/printing/PrintQueue.h"

#include <QBuffer>
#include <QFontDatabase>
#include <QHash>
#include <QPainter>
#include <QPdfWriter>

using namespace Qt::StringLiterals;

namespace {

constexpr int TwipsPerInch = 1440;
constexpr int TwipsPerPoint = 20;
constexpr int DotsPerInch = 600;
constexpr int LastFileNumber = 999999;

QString FileName(int number)
{
    return u"Page%1.pdf"_s.arg(number, 6, 10, QLatin1Char('0'));
}

int LastNumberIn(const QString& folder)
{
    int last = 0;
    for (const QString& name : Files().FilesStartingWith(folder, u"Page"_s))
        last = qMax(last, QStringView(name).mid(4, 6).toInt());
    return last;
}

/// A4 where the page fits on it, else a sheet of the page's own size.
QPageLayout SheetLayout(qreal widthTwips, qreal heightTwips)
{
    QPageSize sheet(QPageSize::A4);
    const QSizeF points(widthTwips / TwipsPerPoint, heightTwips / TwipsPerPoint);
    const QSizeF a4 = sheet.size(QPageSize::Point);
    if (points.width() > a4.width() || points.height() > a4.height())
        sheet = QPageSize(points, QPageSize::Point, QString(), QPageSize::ExactMatch);
    QPageLayout layout(sheet, QPageLayout::Portrait, QMarginsF());
    layout.setMode(QPageLayout::FullPageMode);
    return layout;
}

/// `size` is that of the page, in twips; `dotsPerInch` are pixels of the painter's device.
void Paint(QPainter& painter, const QPageLayout& layout, qreal dotsPerInch,
           const std::vector<PagePrinter::Drawing>& drawings, const QSizeF& size)
{
    painter.save();
    painter.setRenderHints(QPainter::Antialiasing | QPainter::SmoothPixmapTransform);
    const qreal scale = dotsPerInch / TwipsPerInch;
    painter.scale(scale, scale);
    const QSizeF sheet = layout.fullRect(QPageLayout::Point).size() * TwipsPerPoint;
    painter.translate((sheet.width() - size.width()) / 2, (sheet.height() - size.height()) / 2);
    for (const PagePrinter::Drawing& drawing : drawings) {
        painter.save();
        drawing(painter);
        painter.restore();
    }
    painter.restore();
}

/// Any thread.
QByteArray PdfOfSheets(const std::vector<std::vector<PagePrinter::Drawing>>& sheets, const QSizeF& size)
{
    QByteArray content;
    QBuffer buffer(&content);
    buffer.open(QIODevice::WriteOnly);
    QPdfWriter writer(&buffer);
    writer.setResolution(DotsPerInch);
    writer.setTitle(u"capture-station"_s);
    const QPageLayout layout = SheetLayout(size.width(), size.height());
    writer.setPageLayout(layout);
    QPainter painter;
    bool isWhole = painter.begin(&writer);
    for (std::size_t sheet = 0; isWhole && sheet < sheets.size(); ++sheet) {
        isWhole = sheet == 0 || writer.newPage();
        Paint(painter, layout, DotsPerInch, sheets[sheet], size);
    }
    if (!isWhole || !painter.end())
        throw PlatformError(u"인쇄할 페이지를 만들지 못하였습니다.!!"_s);
    return content;
}

} // namespace

PagePrinter::PagePrinter(std::shared_ptr<PrintTarget> target, PrintQueue& queue)
    : m_target(std::move(target)), m_queue(queue)
{
    m_font.setHintingPreference(QFont::PreferNoHinting);
    setFontSize(10);
}

void PagePrinter::setFontName(const QString& name)
{
    // The fonts that stand in on the screen are drawn for it: their bold syllables are lighter than their bold Latin
    // letters. (The blanks of NanumGothic can't be copied out of a PDF file.)
    static const QHash<QString, QString> standIns{
        {u"돋움"_s, u"NanumBarunGothic"_s}, {u"굴림"_s, u"NanumBarunGothic"_s}, {u"바탕"_s, u"NanumMyeongjo"_s}};
    const QString standIn = QFontDatabase::hasFamily(name) ? QString() : standIns.value(name);
    m_font.setFamily(standIn.isEmpty() ? name : standIn);
}

void PagePrinter::setFontSize(int points)
{
    m_font.setPixelSize(points * TwipsPerPoint);
}

void PagePrinter::EndDoc()
{
    const std::vector<Drawing> drawings = std::exchange(m_drawings, {});
    if (!m_target->file.isEmpty())
        PrintToFile(drawings);
    else if (m_target->folder.isEmpty())
        m_queue.Send(m_target->printer, PdfOf(drawings));
    else
        PrintToFolder(drawings);
}

QByteArray PagePrinter::PdfOf(const std::vector<Drawing>& drawings) const
{
    return PdfOfSheets({drawings}, {m_width, m_height});
}

std::function<QByteArray()> PagePrinter::TakeDocument()
{
    return [sheets = std::exchange(m_kept, {}), size = QSizeF(m_width, m_height)] { return PdfOfSheets(sheets, size); };
}

QImage PagePrinter::Picture(int width) const
{
    const QPageLayout layout = SheetLayout(m_width, m_height);
    const QSizeF inches = layout.fullRect(QPageLayout::Inch).size();
    const qreal dotsPerInch = width / inches.width();
    QImage picture(width, qRound(inches.height() * dotsPerInch), QImage::Format_RGB32);
    picture.fill(Qt::white);
    QPainter painter;
    if (painter.begin(&picture))
        Paint(painter, layout, dotsPerInch, m_drawings, {m_width, m_height});
    return picture;
}

void PagePrinter::PrintToFile(const std::vector<Drawing>& drawings) const
{
    const QByteArray content = PdfOf(drawings);
    const QString& file = m_target->file;
    if (m_target->filePages == 0) {
        WriteWholeFile(file, content);
        m_target->filePages = 1;
        return;
    }
    const QString ending = file.endsWith(u".pdf"_s, Qt::CaseInsensitive) ? file.last(4) : QString();
    const QString stem = file.chopped(ending.size()) + u'-';
    while (m_target->filePages < LastFileNumber) {
        if (Files().WriteNewFile(stem + QString::number(++m_target->filePages) + ending, content))
            return;
    }
    throw PlatformError(u"인쇄 폴더에 파일이 너무 많습니다.!!"_s);
}

void PagePrinter::PrintToFolder(const std::vector<Drawing>& drawings) const
{
    const QByteArray content = PdfOf(drawings);
    const QString folder = m_target->folder + u'\\';
    MakeFolder(folder);
    // Other stations may print into the same folder.
    for (int number = LastNumberIn(folder) + 1; number <= LastFileNumber; ++number) {
        if (Files().WriteNewFile(folder + FileName(number), content))
            return;
    }
    throw PlatformError(u"인쇄 폴더에 파일이 너무 많습니다.!!"_s);
}
