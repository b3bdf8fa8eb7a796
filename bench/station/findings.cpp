#include "figures.h"

#include "contracts/fpSpread.h"
#include "contracts/ImagXpress.h"
#include "contracts/printing.h"
#include "findings/findings_print.h"
#include "findings/findings_record.h"
#include "findings/frmSoFind.h"
#include "frame/components.h"
#include "screenparts/PrintedPage.h"
#include "support/StationInABox.h"

#include <QApplication>
#include <QDir>
#include <QKeyEvent>
#include <QLineEdit>
#include <QProcess>
#include <QTemporaryDir>

using namespace Qt::StringLiterals;

namespace {

constexpr int Reports = 100000;
constexpr int PrintedPages = 5;
constexpr int LongReportLines = 10000;
constexpr int ListLimitMs = 20000;

void AddReports(StationInABox& box)
{
    QString rows = u"BEGIN;"_s;
    for (int report = 0; report < Reports; ++report) {
        rows += report % 500 == 0
                    ? u"INSERT INTO caso (caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, "
                      "caso_ymd, caso_sogyon) VALUES "_s
                    : u","_s;
        rows += u"('%1%2','%3','01','환자%4','800101-%5','%1%6','위 전정부에 발적과 경미한 미란이 관찰됨.')"_s
                    .arg(2017 + report / 10000)
                    .arg(report % 10000 + 1, 6, 10, QChar(u'0'))
                    .arg(report * 7919 % 100000, 8, 10, QChar(u'0'))
                    .arg(report * 31 % 5000)
                    .arg(1000000 + report)
                    .arg(101 + report % 1100, 4, 10, QChar(u'0'));
        if (report % 500 == 499)
            rows += u";"_s;
    }
    box.Run(rows + u"COMMIT;"_s);
}

/// What the same statement takes in the database's own client.
double ClientMs(StationInABox& box, const QString& driver, const QString& statement)
{
    QProcess client;
    client.setStandardOutputFile(QProcess::nullDevice());
    const DatabaseSettings& settings = box.Database().Settings();
    const double begun = NowMs();
    if (driver == u"QSQLITE"_s)
        client.start(u"sqlite3"_s, {settings.name, statement});
    else
        client.start(u"mariadb"_s, {u"--no-defaults"_s, u"--user=root"_s, u"--socket="_s + settings.socket, u"-N"_s,
                                    u"-B"_s, u"-e"_s, statement, settings.name});
    client.waitForFinished();
    return NowMs() - begun;
}

void BenchList(const QString& driver)
{
    StationInABox box(driver);
    AddReports(box);
    const double before = ResidentMb();
    Heartbeat heart;
    const double begun = NowMs();
    auto& list = Form<frmSoFind>();
    Painted painted(list.sprSo());
    list.FillAll();
    list.Show();
    ServeUntil([&] { return painted.seen; }, ListLimitMs);
    const double shown = NowMs() - begun;
    heart.Forget();
    ServeUntil([&] { return !list.IsFilling(); }, ListLimitMs);
    const double filled = NowMs() - begun;
    const QString select =
        u"SELECT caso_yeonno, caso_chart, caso_yuhyung, caso_suname, caso_jumin, caso_ymd FROM caso "_s;
    const QString name = driver.mid(1).toLower();
    PrintFigure(u"list of 100,000 reports, "_s + name, u"%1 ms"_s.arg(filled, 0, 'f', 0),
                u"statement alone in the client %1 ms (limit 1500)"_s.arg(
                    ClientMs(box, driver, select + u"ORDER BY caso_yeonno DESC"_s), 0, 'f', 0));
    PrintLimited(u"  first screenful"_s, shown, u"ms"_s, 100);
    PrintFigure(u"  longest wait for an event once rows come"_s, u"%1 ms"_s.arg(heart.LongestMs(), 0, 'f', 0));
    PrintFigure(u"  memory of the list"_s, u"%1 MB"_s.arg(ResidentMb() - before, 0, 'f', 0));

    const auto search = [&](int x, const QString& value) {
        Q_EMIT list.sprSo().RightClick(0, 1, 0, x, 100);
        QLineEdit* box = nullptr;
        for (QLineEdit* candidate : list.findChildren<QLineEdit*>()) {
            if (candidate->isVisible())
                box = candidate;
        }
        box->setText(value);
        QKeyEvent enter(QEvent::KeyPress, Qt::Key_Return, Qt::NoModifier);
        painted.seen = false;
        const double pressed = NowMs();
        QApplication::sendEvent(box, &enter);
        ServeUntil([&] { return painted.seen; }, ListLimitMs);
        const double first = NowMs() - pressed;
        ServeUntil([&] { return !list.IsFilling(); }, ListLimitMs);
        return u"%1 ms, first %2 ms"_s.arg(NowMs() - pressed, 0, 'f', 0).arg(first, 0, 'f', 0);
    };
    // Some rows of each key, and all of them.
    const QList<std::tuple<QString, int, QString>> searches = {{u"caso_yeonno"_s, 700, u"2026"_s},
                                                               {u"caso_chart"_s, 2100, u"00095000"_s},
                                                               {u"caso_yuhyung"_s, 3300, u"01"_s},
                                                               {u"caso_suname"_s, 3600, u"환자4900"_s},
                                                               {u"caso_jumin"_s, 4700, u"800101-109"_s},
                                                               {u"caso_ymd"_s, 6500, u"20261"_s},
                                                               {u"caso_yeonno"_s, 700, u"2"_s},
                                                               {u"caso_chart"_s, 2100, u"00000000"_s},
                                                               {u"caso_suname"_s, 3600, u"환자"_s},
                                                               {u"caso_jumin"_s, 4700, u"8"_s},
                                                               {u"caso_ymd"_s, 6500, u"2"_s}};
    for (const auto& [column, x, value] : searches) {
        const QString took = search(x, value);
        PrintFigure(
            u"  search by %1, %2 rows"_s.arg(column).arg(list.sprSo().DataRowCnt()), took,
            u"%1 ms in the client (limit 200 more)"_s.arg(
                ClientMs(box, driver, select + u"WHERE %1 >= '%2' ORDER BY %1 ASC"_s.arg(column, value)), 0, 'f', 0));
    }
    if (driver == u"QMARIADB"_s) {
        box.Run(u"ALTER TABLE caso DROP KEY caso_visit, DROP KEY caso_list_chart, DROP KEY caso_list_yuhyung, "
                "DROP KEY caso_list_suname, DROP KEY caso_list_jumin, DROP KEY caso_list_ymd;"_s);
        for (const auto& [column, x, value] : searches.mid(searches.size() - 5))
            PrintFigure(u"  search by %1 without the keys"_s.arg(column), search(x, value));
    }
    list.Unload();
}

void BenchPage()
{
    StationInABox box;
    QTemporaryDir folder;
    UseService<PrinterOptions>().UseFolder(folder.path());
    std::array<std::unique_ptr<ImagXpress>, 6> controls;
    std::array<ImagXpress*, 6> pictures = {};
    for (size_t slot = 0; slot < 6; ++slot) {
        controls[slot] = CreateObject<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s);
        controls[slot]->setPicture(QImage::fromData(StationInABox::Jpeg({1920, 1080}, Qt::darkRed)));
        pictures[slot] = controls[slot].get();
    }
    ClearFindingsRecord(FindingsRecord);
    FindingsRecord.SogyonLines =
        QStringList{QString()} + QStringList(25, u"위 전정부에 발적과 경미한 미란이 관찰됨."_s);
    QWidget owner;
    QList<double> times;
    for (int page = 0; page < PrintedPages; ++page) {
        const double begun = NowMs();
        PrintFindingsPages(PagesOf(FindingsRecord, pictures), owner);
        times << NowMs() - begun;
    }
    PrintFigure(u"page with six 1080p pictures to PDF"_s, u"%1 ms"_s.arg(Median(times), 0, 'f', 0));
    FindingsRecord.SogyonLines = QStringList{QString()} + QStringList(LongReportLines, u"경미한 미란이 관찰됨."_s);
    const qsizetype before = QDir(folder.path()).count();
    const double begun = NowMs();
    PrintFindingsPages(PagesOf(FindingsRecord, pictures), owner);
    PrintFigure(u"report of 10,000 lines, %1 pages"_s.arg(QDir(folder.path()).count() - before),
                u"%1 s"_s.arg((NowMs() - begun) / 1000, 0, 'f', 1));
}

} // namespace

int BenchFindings()
{
    BenchList(u"QSQLITE"_s);
    BenchList(u"QMARIADB"_s);
    BenchPage();
    return 0;
}
