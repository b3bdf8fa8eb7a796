#include "findings/ReportSending.h"

#include "contracts/files.h"
#include "contracts/ImagXpress.h"
#include "contracts/printing.h"
#include "findings/findings_print.h"
#include "findings/findings_record.h"
#include "frame/services.h"
#include "pacs/handed_files.h"
#include "pacs/parts.h"
#include "pacs/SenderQueue.h"
#include "screenparts/PrintedPage.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QCryptographicHash>

using namespace Qt::StringLiterals;

namespace {

constexpr int EndPatienceMs = 10'000;
/// Of a resident number what stays readable: birth and sex.
constexpr qsizetype ReadableDigits = 7;

bool IsWanted()
{
    return !ClientSetup.Pacs.Host.isEmpty() && ClientSetup.Pacs.SendsReports;
}

QString Masked(QString jumin)
{
    qsizetype digits = 0;
    for (QChar& letter : jumin) {
        if (letter.isDigit() && ++digits > ReadableDigits)
            letter = u'*';
    }
    return jumin;
}

PacsLine LineOf(PacsLine::Kind kind, const FindingsRecordFields& record)
{
    PacsLine line{kind, {}, record.Chart, record.Ymd.trimmed(), record.Etc};
    line.imageExt = VisitContext.ImageExt;
    line.doctor = record.Jinchal;
    line.part = parts::ReportOf(record.Yeonno);
    line.takenAt = QDateTime::currentDateTime();
    return line;
}

/// All that stands on the pages. A blank behind the age or a name isn't seen there.
QString DigestOf(const FindingsRecordFields& record, const QList<QImage>& pictures)
{
    QCryptographicHash hash(QCryptographicHash::Sha256);
    const auto add = [&hash](const QString& text) { hash.addData((text + u'\x1f').toUtf8()); };
    for (const QString& field :
         {record.Yeonno, record.Chart, record.Yuhyung, record.Etc, record.Suname, record.Jumin, record.Sex, record.Nai,
          record.Ymd, record.Balymd, record.Doctor, record.Myonheo, record.Yoyangno, record.Hospital})
        add(Trim(field));
    for (const QString& line : record.SogyonLines + record.BigoLines)
        add(line);
    for (const QImage& picture : pictures) {
        hash.addData(QByteArray::number(picture.width()) + 'x' + QByteArray::number(picture.height()));
        hash.addData(QByteArrayView(picture.constBits(), picture.sizeInBytes()));
    }
    return QString::fromLatin1(hash.result().toHex().left(32));
}

} // namespace

void ReportSending::Send(const FindingsRecordFields& record, const std::array<ImagXpress*, 6>& pictures)
{
    if (!IsWanted())
        return;
    FindingsRecordFields shown = record;
    shown.Jumin = Masked(shown.Jumin);
    // A report that was opened again has neither: it is the same document all the same.
    shown.Phone.clear();
    shown.Address.clear();
    const PrintedPages pages = PagesOf(shown, pictures);
    for (int number = 1; number <= pages.count; ++number) {
        pages.draw(number);
        Printer().KeepSheet();
    }
    QList<QImage> images;
    for (const ImagXpress* picture : pictures)
        images.append(picture->Picture());
    PacsLine line = LineOf(PacsLine::Send, record);
    line.goes = true;
    line.text = record.Etc + u" 소견서"_s;
    m_work.Post([line, shown, images, document = Printer().TakeDocument()]() mutable {
        line.id = DigestOf(shown, images);
        Files().WritePrivateFile(handed_files::ReportPath(line.id), document());
        SenderQueue().Add({line});
    });
}

void ReportSending::Withdraw(const FindingsRecordFields& record)
{
    if (!IsWanted())
        return;
    PacsLine line = LineOf(PacsLine::Withdrawn, record);
    line.goes = ClientSetup.Pacs.Rejects;
    m_work.Post([line] { SenderQueue().Add({line}); });
}

void ReportSending::End()
{
    m_work.AwaitIdle(EndPatienceMs);
    m_work.End();
}
