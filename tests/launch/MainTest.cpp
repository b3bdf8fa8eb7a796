#include "launch/Main.h"
#include "capture/frmCapture.h"
#include "contracts/cd.h"
#include "contracts/setup_components.h"
#include "frame/plain_text.h"
#include "screenparts/NoteBox.h"
#include "screenparts/NoticeStrip.h"
#include "support/StationInABox.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "viewing/CapShow.h"

using namespace Qt::StringLiterals;

namespace {

/// A setup component that delivers what the test has prepared.
class PreparedProfile : public clsStartProfile
{
public:
    static inline int calls = 0;
    static inline bool answer = true;
    static inline ClientSetupRecord prepared;
    static inline ConnectionPointer connection;

    bool SetupRead(ClientSetupRecord& setup, SaupRecords&, bool openConnection, ConnectionPointer& handed) override
    {
        ++calls;
        setup = prepared;
        if (openConnection)
            handed = connection;
        return answer;
    }
};

/// An account that may not make tables.
class RefusingKeeper : public clsTableKeeper
{
public:
    void tablecreate(ConnectionPointer&, const QString&, const QString&) override
    {
        throw PlatformError(u"CREATE command denied"_s);
    }
};

const QString Workstation = u"A01 00001234011120261124위내시경"_s;

} // namespace

class MainTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        PreparedProfile::calls = 0;
        PreparedProfile::answer = true;
        PreparedProfile::prepared = ClientSetup;
        PreparedProfile::connection = Connection;
        RegisterComponent<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s,
                                           [] { return std::make_unique<PreparedProfile>(); });
        VisitContext = {};
        VisitContext.ImageExt = u"jpg"_s;
    }
    void cleanup()
    {
        PreparedProfile::connection.reset();
        m_box.reset();
    }

    void Launches_data()
    {
        Columns<QString, int, bool, QString, int>("command", "setupCalls", "opens", "etc", "messages");
        const QString visit = u"00001234011120261124"_s;
        QTest::newRow("empty") << QString() << 0 << false << QString() << 0;
        QTest::newRow("cut inside the chart") << u"A01 0000"_s << 1 << true << u"위내시경"_s << 0;
        QTest::newRow("eight zeros") << u"A01 00000000011120261124위내시경"_s << 1 << false << QString() << 0;
        QTest::newRow("Korean section") << u"A01 "_s + visit + u"대장내시경  "_s << 1 << true << u"대장내시경"_s << 0;
        QTest::newRow("no section takes the first") << u"A01 "_s + visit << 1 << true << u"위내시경"_s << 0;
        QTest::newRow("section that goes up") << u"A01 "_s + visit + u".."_s << 1 << false << QString() << 1;
        QTest::newRow("section with a slash") << u"A01 "_s + visit + u"a/b"_s << 1 << false << QString() << 1;
        QTest::newRow("longer than its column")
            << u"A01 "_s + visit + QString(101, u'a') << 1 << false << QString() << 1;
        QTest::newRow("10,000 characters") << u"A01 "_s + visit + QString(9976, u'가') << 1 << false << QString() << 1;
        QTest::newRow("date that is none") << u"A01 00001234011120269999위내시경"_s << 1 << true << u"위내시경"_s << 0;
    }

    void Launches()
    {
        QFETCH2(QString, command, bool, opens);
        m_box->Desk().command = command;
        Main();
        QTEST(PreparedProfile::calls, "setupCalls");
        QCOMPARE(IsFormLoaded(u"frmCapture"_s), opens);
        QCOMPARE(m_box->Desk().ended, !opens);
        QTEST(int(m_box->Desk().shown.size()), "messages");
        if (opens) {
            QTEST(VisitContext.Etc, "etc");
            QTEST(Form<frmCapture>().cmbEtc().currentText(), "etc");
        } else {
            QVERIFY(!FolderExists(m_box->Root() + u"2026\\위내시경Log"_s));
        }
    }

    void ASectionInEitherEncoding_data()
    {
        Columns<QByteArray, QString, QString, bool, QString>("section", "list", "setup", "legacy", "etc");
        const QByteArray korean = QStringEncoder("windows-949")(u"처치2"_s);
        const QString letters = u"óġ2"_s; // The same bytes in UTF-8.
        QTest::newRow("listed") << korean << u"위내시경, 처치2"_s << QString() << false << u"처치2"_s;
        QTest::newRow("its letters listed") << korean << u"위내시경,óġ2"_s << QString() << true << letters;
        QTest::newRow("neither listed") << korean << u"위내시경"_s << QString() << false << letters;
        QTest::newRow("neither, Korean locale") << korean << u"위내시경"_s << QString() << true << u"처치2"_s;
        QTest::newRow("both, Korean setup") << korean << u"óġ2,처치2"_s << u"windows-949"_s << false << u"처치2"_s;
        QTest::newRow("both, setup against locale") << korean << u"óġ2,처치2"_s << u"utf-8"_s << true << letters;
        QTest::newRow("text in UTF-8 alone") << "위내시경 "_ba << u"초음파"_s << QString() << true << u"위내시경"_s;
        QTest::newRow("text in windows-949 alone") << QByteArray(QStringEncoder("windows-949")(u"초음파"_s))
                                                   << u"위내시경"_s << QString() << false << u"초음파"_s;
    }

    void ASectionInEitherEncoding()
    {
        QFETCH4(QByteArray, section, QString, list, QString, setup, bool, legacy);
        PreparedProfile::prepared.EtcList = list;
        PreparedProfile::prepared.LaunchEncoding = setup;
        m_box->Desk().commandBytes = "A01 00001234011120261124" + section;
        m_box->Desk().isOfLegacyLocale = legacy;
        Main();
        QTEST(VisitContext.Etc, "etc");
        QCOMPARE(VisitContext.Chart + VisitContext.Ymd, u"0000123420261124"_s);
        QVERIFY(m_box->Desk().shown.isEmpty() && IsFormLoaded(u"frmCapture"_s));
    }

    void DatesOfTheLaunch_data()
    {
        Columns<QString, QString, bool, QString>("mode", "ymd", "isValid", "year");
        const QString today = TextFromDate(QDate::currentDate());
        QTest::newRow("today") << u"A"_s << u"20261124"_s << true << u"2026"_s;
        QTest::newRow("in a year") << u"A"_s << u"20271124"_s << true << u"2027"_s;
        QTest::newRow("the first") << u"A"_s << u"19900101"_s << true << u"1990"_s;
        QTest::newRow("today, by a station that has lost its clock") << u"lost"_s << today << true << today.left(4);
        QTest::newRow("before the first") << u"A"_s << u"19891231"_s << false << u"1989"_s;
        QTest::newRow("slipped") << u"A"_s << u"0261126위"_s << false << u"0261"_s;
        QTest::newRow("a thirteenth month") << u"A"_s << u"20261332"_s << false << u"2026"_s;
        QTest::newRow("in decades") << u"A"_s << u"20620101"_s << false << u"2062"_s;
        QTest::newRow("with a sign") << u"A"_s << u"+2026112"_s << false << u"+202"_s;
        QTest::newRow("missing") << u"A"_s << QString() << false << QString();
        QTest::newRow("goes up") << u"A"_s << u"..\\..\\01"_s << false << QString();
        QTest::newRow("goes up, to be viewed") << u"C"_s << u".."_s << false << QString();
        QTest::newRow("with separators, to be viewed") << u"C"_s << u"2026/1/1"_s << false << QString();
        QTest::newRow("slipped, to be viewed") << u"C"_s << u"20261332"_s << false << u"2026"_s;
    }

    void DatesOfTheLaunch()
    {
        QFETCH4(QString, mode, QString, ymd, bool, isValid, QString, year);
        if (mode == u"lost"_s)
            m_box->Desk().today = QDate(2000, 1, 1);
        // The sweep at closing would move it, and a path without a folder would lead to where the program runs.
        WriteWholeFile(m_box->PicturePath(u"20261332"_s, u"위내시경"_s, 1), "orphan");
        QDir::setCurrent(NativePath(m_box->Root()));
        const QStringList before = FoundIn(m_box->Root());
        const bool isViewed = mode == u"C"_s;
        m_box->Desk().command = (isViewed ? u"C01 000012340111"_s : u"A01 000012340111"_s) + ymd;
        if (!ymd.isEmpty())
            m_box->Desk().command += QString(8 - ymd.size(), u' ') + u"위내시경"_s;
        Main();
        QCOMPARE(VisitContext.YmdIsValid, isValid);
        QCOMPARE(VisitContext.CaptureDir, year.isEmpty() ? QString() : m_box->Root() + year + u'\\');
        QVERIFY(IsFormLoaded(isViewed ? u"CapShow"_s : u"frmCapture"_s));
        QVERIFY(!m_box->Desk().ended);
        if (!isViewed) {
            auto& screen = Form<frmCapture>();
            const auto* strip = screen.findChild<NoticeStrip*>();
            QCOMPARE(strip->isVisible(), !isValid);
            QCOMPARE(strip->property("alarm").toBool(), !isValid);
            QCOMPARE(strip->findChild<QLabel*>()->text(), isValid ? QString() : QString::fromUtf16(InvalidDateText));
            QCOMPARE(screen.cmbEtc().count(), 2);
        }
        UnloadForms();
        QVERIFY(m_box->Desk().shown.isEmpty());
        QVERIFY(isValid || FoundIn(m_box->Root()) == before);
    }

    void CapitalCOpensTheViewer()
    {
        m_box->AddPicture(u"20261124"_s, u"위내시경"_s, 1);
        m_box->Desk().command = u"C01 00001234011120261124위내시경"_s;
        Main();
        QVERIFY(IsFormLoaded(u"CapShow"_s) && !IsFormLoaded(u"frmCapture"_s));
        QCOMPARE(Form<CapShow>().sprCap().DataRowCnt(), 2);
        QCOMPARE(FakeVideoCap::Last(), nullptr);
    }

    void FieldsOfTheVisit()
    {
        m_box->AddPicture(u"20261124"_s, u"대장내시경"_s, 3, u"소견"_s);
        m_box->Desk().command = u"AXY1 0001234051120261124 대장내시경 "_s;
        PreparedProfile::prepared.ImageFormat = u" 2 "_s;
        Main();
        QCOMPARE(VisitContext.LaunchCode + u'/' + VisitContext.LaunchFlag, u"XY/1"_s);
        QCOMPARE(VisitContext.Chart, u" 0001234"_s);
        QCOMPARE(VisitContext.Yuhyung + VisitContext.Jinchal + VisitContext.Ymd, u"051120261124"_s);
        QCOMPARE(VisitContext.Etc, u"대장내시경"_s);
        QCOMPARE(VisitContext.ImageExt, u"bmp"_s);
        QCOMPARE(VisitContext.CaptureDir, m_box->Root() + u"2026\\"_s);
    }

    void ASecondInstanceSaysSoAndEnds()
    {
        m_box->Desk().command = u"A01 00001234011120261124"_s;
        m_box->Desk().otherInstance = true;
        Main();
        QCOMPARE(m_box->Desk().shown, QStringList{u"캡쳐화면이나 캡쳐이미지화면이 실행중입니다.!!"_s});
        QCOMPARE(PreparedProfile::calls, 0);
        QVERIFY(m_box->Desk().ended);
    }

    void ARefusedSetupEndsWithoutAWordOfItsOwn()
    {
        m_box->Desk().command = u"A01 00001234011120261124"_s;
        PreparedProfile::answer = false;
        Main();
        QVERIFY(m_box->Desk().shown.isEmpty());
        QVERIFY(m_box->Desk().ended);
        QVERIFY(LoadedForms().isEmpty());
    }

    void AFormWhoseLoadFailsIsGone_data()
    {
        QTest::addColumn<QString>("fault"); // A column that is missing, or a component that can't be made.
        QTest::newRow("CapShow") << u"wj_tel"_s;
        QTest::newRow("frmCapture") << u"wj_tel"_s;
        QTest::newRow("frmCapSet") << u"prjThemeShell.clsThemeShell"_s;
        QTest::newRow("frmImgEdit") << u"IMAGXPR6LibCtl.ImagXpress"_s;
        QTest::newRow("frmCapSogyon") << u"prjTableKeeper.clsTableKeeper"_s;
        QTest::newRow("frmSoFind") << u"FPSpreadADO.fpSpread"_s;
        QTest::newRow("frmCapCDAdd") << u"wj_tel"_s;
        QTest::newRow("frmCapCDWrite") << u"BaydenBurn.XPBurn"_s;
    }

    void AFormWhoseLoadFailsIsGone()
    {
        QFETCH(QString, fault);
        const QString form = QString::fromLatin1(QTest::currentDataTag());
        qputenv("XDG_DATA_HOME", m_box->Root().toUtf8());
        PreparedProfile::prepared.BurnerImage = m_box->Root() + u"cd.iso"_s;
        m_box->AddPicture(u"20261124"_s, u"위내시경"_s, 1, u""_s);
        m_box->Run(u"INSERT INTO caso (caso_yeonno) VALUES ('2025000001');"_s);
        const bool isFirst = form == u"CapShow"_s || form == u"frmCapture"_s;
        m_box->Desk().command = form == u"CapShow"_s ? u"C"_s + Workstation.mid(1) : Workstation;
        if (!isFirst)
            Main();
        if (form == u"frmCapCDAdd"_s)
            Open(u"frmCapCDWrite"_s);
        if (form == u"frmSoFind"_s)
            Open(u"frmCapSogyon"_s);

        const std::any maker = components::Find(fault);
        if (maker.has_value())
            components::Register(fault, {});
        else
            m_box->Run(u"ALTER TABLE wj RENAME COLUMN wj_tel TO gone;"_s);
        QVERIFY(!Open(form));
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(FindForm(form), nullptr);
        QCOMPARE(m_box->Desk().ended, isFirst);
        QCOMPARE(LoadedForms().isEmpty(), isFirst);

        if (maker.has_value())
            components::Register(fault, maker);
        else
            m_box->Run(u"ALTER TABLE wj RENAME COLUMN gone TO wj_tel;"_s);
        QVERIFY(Open(form));
    }

    /// Markup, and the mark of a shortcut, in every text that the database holds.
    void WhatTheDatabaseHoldsShowsAsItStands()
    {
        const QString pipe = m_box->Root() + u"pipe"_s;
        MakeFolder(m_box->Root());
        qputenv("XDG_DATA_HOME", m_box->Root().toUtf8());
        PreparedProfile::prepared.BurnerImage = m_box->Root() + u"cd.iso"_s;
        const QString text = u"<img src=\"%1\"><b>&x"_s.arg(NativePath(pipe));
        const QString section = u"<b>&x<img src=p>"_s;
        m_box->AddPicture(u"20261124"_s, section, 1, u""_s);
        m_box->Run(
            u"INSERT INTO caso (caso_yeonno, caso_chart, caso_ymd) VALUES ('2026000001', '00001234', '20261124');"
            "INSERT INTO doctor (doctor_code, doctor_ymd, doctor_kwamok) VALUES ('11', '20200101', '01');"
            "INSERT INTO so (so_code, so_gubun) VALUES ('1', '4');"_s);
        const QStringList columns = {u"wj_suname"_s,   u"wj_tel"_s,       u"wj_bunji"_s,    u"pt_myung"_s,
                                     u"ca_chamgo"_s,   u"doctor_myung"_s, u"doctor_name"_s, u"doctor_meonheo"_s,
                                     u"so_myung"_s,    u"caso_suname"_s,  u"caso_sogyon"_s, u"caso_bigo"_s,
                                     u"caso_doctor"_s, u"caso_hospital"_s};
        for (const QString& column : columns)
            m_box->Run(u"UPDATE %1 SET %2 = '%3';"_s.arg(column.section(u'_', 0, 0), column, text));

        const QString etc = QString::fromUtf16(u"A01 00001234011120261124") + section;
        for (const QString& first : {etc, u"C"_s + etc.mid(1)}) {
            m_box->Desk().command = first;
            Main();
            QVERIFY(!m_box->Desk().ended);
            if (first == etc) {
                Q_EMIT static_cast<frmCapture*>(FindForm(u"frmCapture"_s))->sprCap(3).DblClick(1, 1);
                for (const QString& form : {u"frmCapCDWrite"_s, u"frmCapCDAdd"_s, u"frmCapSogyon"_s, u"frmSoFind"_s})
                    QVERIFY2(Open(form), qPrintable(form));
            }
            int texts = 0;
            for (const QWidget* window : QApplication::topLevelWidgets()) {
                for (const QLabel* label : window->findChildren<QLabel*>()) {
                    QVERIFY2(label->textFormat() == Qt::PlainText, qPrintable(label->objectName()));
                    texts += label->text() == text || label->text() == section ? 1 : 0;
                }
                for (const QWidget* widget : window->findChildren<QWidget*>())
                    QVERIFY(!widget->toolTip().contains(u"<img"_s));
            }
            QVERIFY(texts >= 3);
            QCOMPARE(QTextDocumentFragment::fromHtml(ToolTipText(text)).toPlainText(), text);
            const QList<StationForm*> forms = LoadedForms();
            for (StationForm* form : forms)
                form->Unload();
            m_box->Desk().ended = false;
        }
    }

    void ATableThatCantBeMade_data()
    {
        Columns<QString, QString, int>("table", "checkTable", "messages");
        QTest::newRow("endo, not used") << u"endo"_s << u"1"_s << 0;
        QTest::newRow("endo") << u"endo"_s << QString() << 1;
        QTest::newRow("caso") << u"caso"_s << QString() << 1;
    }

    void ATableThatCantBeMade()
    {
        QFETCH3(QString, table, int, messages, QString, checkTable);
        RegisterComponent<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s,
                                          [] { return std::make_unique<RefusingKeeper>(); });
        m_box->Run(u"DROP TABLE %1;"_s.arg(table));
        m_box->AddPicture(u"20261124"_s, u"위내시경"_s, 1);
        PreparedProfile::prepared.CheckTable = checkTable;
        m_box->Desk().command = Workstation;
        Main();
        QVERIFY(IsFormLoaded(u"frmCapture"_s) && !m_box->Desk().ended);
        QCOMPARE(m_box->Desk().shown.size(), table == u"caso"_s ? 0 : messages);
        QVERIFY(Open(u"frmCapSogyon"_s));
        QCOMPARE(m_box->Desk().shown.size(), messages);
    }

private:
    /// All that lies in a folder, and in those inside.
    static QStringList FoundIn(const QString& folder)
    {
        QStringList found;
        QDirIterator entries(NativePath(folder), QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                             QDirIterator::Subdirectories);
        while (entries.hasNext())
            found << entries.next();
        found.sort();
        return found;
    }

    /// Opens a form as the operator does, a modal one only to close it again. False when it didn't come up.
    static bool Open(const QString& form)
    {
        bool seen = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &timer, [&] {
            StationForm* open = FindForm(form);
            if (open == nullptr || !open->isModal() || !open->isVisible())
                return;
            seen = true;
            open->Unload();
        });
        timer.start(1);
        auto* capture = static_cast<frmCapture*>(FindForm(u"frmCapture"_s));
        if (form == u"CapShow"_s || form == u"frmCapture"_s) {
            Main();
        } else if (form == u"frmCapSet"_s) {
            FakeVideoCap::Last()->devices = {u"내시경"_s};
            capture->findChild<QAction*>(u"장치설정"_s)->trigger();
        } else if (form == u"frmImgEdit"_s) {
            Q_EMIT capture->sprCap(3).DblClick(1, 1);
            Q_EMIT capture->sprCap(2).DblClick(2, 1);
        } else if (form == u"frmCapSogyon"_s) {
            capture->findChild<QToolButton*>(u"기타"_s)->menu()->actions().first()->trigger();
        } else if (form == u"frmSoFind"_s) {
            FindForm(u"frmCapSogyon"_s)->findChild<QPushButton*>(u"cmdSogyon(0)"_s)->click();
        } else if (form == u"frmCapCDWrite"_s) {
            capture->findChild<QAction*>(u"CD저장"_s)->trigger();
        } else {
            FindForm(u"frmCapCDWrite"_s)->findChild<QPushButton*>(u"cmdAddFile"_s)->click();
        }
        return seen || (FindForm(form) != nullptr && FindForm(form)->isVisible());
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(MainTest)
#include "MainTest.moc"
