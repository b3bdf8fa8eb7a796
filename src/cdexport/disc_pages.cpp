#include "cdexport/disc_pages.h"

#include "cdexport/file_rows.h"

#include <QUrl>

using namespace Qt::StringLiterals;

namespace {

using disc_pages::Item;
using disc_pages::VisitPage;

const QString Mark(QChar(0xFEFF));
const QString LineEnd = u"\r\n"_s;
constexpr qsizetype LongestNote = 4000;

/// Also of a line break, and of what no page may hold.
QString Escaped(const QString& text)
{
    QString plain;
    for (const QChar sign : text) {
        if (sign == u'\n' || sign >= QChar(u' '))
            plain += sign;
    }
    return plain.toHtmlEscaped().replace(u'\n', u"<br>"_s);
}

QString Link(const QString& path, const QString& inner)
{
    return u"<a href=\"%1\">"_s.arg(QString::fromLatin1(QUrl::toPercentEncoding(path, "/"))) + inner + u"</a>"_s;
}

QString NameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(u'/') + 1);
}

QString DayText(const QString& ymd)
{
    const QDate day = QDate::fromString(ymd, u"yyyyMMdd"_s);
    return day.isValid() ? day.toString(u"yyyy-MM-dd"_s) : ymd;
}

QString PatientText(const VisitPage& visit)
{
    return visit.patient.isEmpty() ? u"차트번호 %1"_s.arg(visit.chart)
                                   : u"%1 (차트번호 %2)"_s.arg(visit.patient, visit.chart);
}

QString TitleOf(const VisitPage& visit)
{
    return DayText(visit.ymd) + u' ' + (visit.section.isEmpty() ? u"동영상"_s : visit.section);
}

QByteArray Page(const QString& title, const QStringList& lines)
{
    QStringList page{u"<!DOCTYPE HTML PUBLIC \"-//W3C//DTD HTML 4.01 Transitional//EN\">"_s,
                     u"<html lang=\"ko\"><head>"_s,
                     u"<meta http-equiv=\"Content-Type\" content=\"text/html; charset=UTF-8\">"_s,
                     u"<title>"_s + Escaped(title) + u"</title>"_s,
                     u"</head><body>"_s,
                     u"<h1>"_s + Escaped(title) + u"</h1>"_s};
    page += lines;
    page << u"</body></html>"_s << QString();
    return (Mark + page.join(LineEnd)).toUtf8();
}

/// A line that leads to the file, from the folder that `above` leads out of.
QString ItemLine(const Item& item, const QString& above)
{
    return Link(above + item.path, Escaped(item.path)) + u" ("_s + MegabytesText(item.bytes) + u')';
}

} // namespace

QByteArray disc_pages::FirstPage(const Disc& disc)
{
    QStringList lines;
    QString chart;
    for (const VisitPage& visit : disc.visits) {
        if (visit.chart != chart || &visit == &disc.visits.first()) {
            if (&visit != &disc.visits.first())
                lines << u"</ul>"_s;
            lines << u"<h2>"_s + Escaped(PatientText(visit)) + u"</h2>"_s << u"<ul>"_s;
            chart = visit.chart;
        }
        lines << u"<li>"_s + Link(disc.folder + u'/' + visit.page, Escaped(TitleOf(visit))) +
                     u" %1개</li>"_s.arg(visit.items.size());
    }
    if (!disc.visits.isEmpty())
        lines << u"</ul>"_s;
    if (!disc.others.isEmpty()) {
        lines << u"<h2>그 밖의 파일</h2>"_s << u"<ul>"_s;
        for (const Item& item : disc.others)
            lines << u"<li>"_s + ItemLine(item, QString()) + u"</li>"_s;
        lines << u"</ul>"_s;
    }
    if (disc.hasObjects)
        lines << u"<p>DICOM 프로그램은 DICOMDIR을 엽니다.</p>"_s;
    lines << u"<p>작성일 %1</p>"_s.arg(disc.day.toString(u"yyyy-MM-dd"_s));
    return Page(u"영상 목록"_s, lines);
}

QByteArray disc_pages::PageOf(const VisitPage& visit)
{
    QStringList lines{u"<p>"_s + Escaped(PatientText(visit)) + u"</p>"_s};
    if (!visit.note.isEmpty())
        lines << u"<p>참고사항: "_s + Escaped(visit.note.left(LongestNote)) + u"</p>"_s;
    for (const Item& item : visit.items) {
        const QString name = Escaped(NameOf(item.path));
        const QString above = u"../"_s;
        if (item.small.isEmpty())
            lines << u"<p>"_s + ItemLine(item, above) + u"</p>"_s;
        else
            lines << u"<p>"_s +
                         Link(above + item.path,
                              u"<img src=\"%1\" alt=\"%2\" border=\"0\"><br>%2"_s.arg(item.small, name)) +
                         u"</p>"_s;
    }
    return Page(TitleOf(visit), lines);
}

QByteArray disc_pages::Readme(const Disc& disc)
{
    qsizetype files = disc.others.size();
    for (const VisitPage& visit : disc.visits)
        files += visit.items.size();
    QStringList lines{disc.firstPage + u"을 인터넷 브라우저로 열면 그림과 동영상을 볼 수 있습니다."_s,
                      u"그림은 날짜와 검사별로 나뉘어 있으며, 작은 그림을 누르면 원본이 열립니다."_s};
    if (disc.hasObjects)
        lines << u"DICOM 프로그램으로는 DICOMDIR을 여십시오."_s;
    if (!disc.clinic.isEmpty())
        lines << u"만든 곳: %1"_s.arg(disc.clinic.simplified()) << u"만든 프로그램: capture-station"_s;
    lines << u"파일 %1개, 작성일 %2"_s.arg(files).arg(disc.day.toString(u"yyyy-MM-dd"_s))
          << u"환자의 의료 영상이 들어 있으니 보관에 주의하십시오."_s << QString();
    return (Mark + lines.join(LineEnd)).toUtf8();
}
