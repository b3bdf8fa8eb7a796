#include "support/CaptureScreen.h"
#include "contracts/ShutterSound.h"
#include "contracts/StatusPanels.h"
#include "filing/capture_root.h"
#include "screenparts/NoticeStrip.h"
#include "visit/device_settings.h"

#include <QJsonDocument>
#include <QJsonObject>

using namespace Qt::StringLiterals;

/// The screen as the operator reaches it: through the menu of the capture screen.

namespace {
/// Sounds instead of a loudspeaker.
class HeardSounds final : public ShutterSound
{
public:
    static inline QList<Kind> heard;
    void Play(Kind kind) override { heard << kind; }
};
} // namespace

class CaptureScreenTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init() { m_box = std::make_unique<StationInABox>(); }
    void cleanup() { m_box.reset(); }

    void TheScreenComesUpForTheVisit()
    {
        m_box->AddPicture(Day, Stomach, 1, u"염증"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"정상"_s);
        m_box->Run(u"DROP TABLE endo;"_s);
        frmCapture& screen = OpenScreen();
        QVERIFY(screen.isVisible());
        QCOMPARE(screen.size(), QSize(1016, 700));
        QCOMPARE(screen.sbarCap().Text(3), u"홍길동"_s);
        QCOMPARE(screen.cmbEtc().currentText(), Stomach);
        QCOMPARE(CellText(screen.sprCap(1), 1, 2), u"001"_s);
        QCOMPARE(screen.txtCapChamgo().toPlainText(), u"염증"_s);
        QCOMPARE(CellText(screen.sprCap(3), 1, 2), u"20250301"_s);
        for (const QString& folder : {Stomach, Stomach + u"Log"_s, Colon, Colon + u"Log"_s, u"movie"_s})
            QVERIFY2(FolderExists(m_box->Root() + u"2026\\"_s + folder), qPrintable(folder));
        m_box->Run(u"SELECT * FROM endo;"_s);
    }

    void OnlyTheRightRootIsUsed_data()
    {
        Columns<QString, QString, QString, bool, QString>("mark", "remembered", "stored", "rows", "refusal");
        const QString other = u"앞서 쓰던 것이 아닙니다"_s;
        QTest::newRow("a new clinic") << QString() << QString() << QString() << false << QString();
        QTest::newRow("an archive without a mark") << QString() << QString() << QString() << true << QString();
        QTest::newRow("rows, and no file") << QString() << QString() << QString() << true << u"그림이 캡쳐 폴더에 없"_s;
        QTest::newRow("a mark that nobody knows") << u"one"_s << QString() << QString() << false << QString();
        QTest::newRow("the one of the last start") << u"one"_s << u"one"_s << QString() << false << QString();
        QTest::newRow("another one") << u"one"_s << u"two"_s << QString() << false << other;
        QTest::newRow("the clinic's") << u"one"_s << u"two"_s << u"one"_s << false << QString();
        QTest::newRow("not the clinic's") << u"one"_s << QString() << u"two"_s << false << other;
        QTest::newRow("the share is missing") << QString() << u"one"_s << QString() << false << u"표시가 없습니다"_s;
    }

    void OnlyTheRightRootIsUsed()
    {
        QFETCH2(QString, mark, QString, remembered);
        QFETCH2(QString, stored, bool, rows);
        QFETCH(QString, refusal);
        const QString path = m_box->Root() + QString::fromUtf16(capture_root::MarkName);
        if (!mark.isEmpty())
            WriteWholeFile(path, u"{\"id\": \"%1\"}"_s.arg(mark).toUtf8());
        if (!remembered.isEmpty())
            WriteWholeFile(m_box->Desk().ProgramFolder() + u"\\CaptureRoot.json"_s,
                           QJsonDocument(QJsonObject{{m_box->Root(), remembered}}).toJson());
        if (!stored.isEmpty())
            capture_root::StoreMark(stored);
        if (rows) {
            m_box->AddPicture(u"20250301"_s, Colon, 1, u"정상"_s);
            if (!refusal.isEmpty())
                DeleteFile(m_box->PicturePath(u"20250301"_s, Colon, 1));
        }
        const QStringList before = Files().FilesStartingWith(m_box->Root(), {});
        OpenScreen();
        Press(u"연결"_s);
        opened->findChild<QToolButton*>(u"캡쳐"_s)->click();
        QLabel& strip = *opened->findChild<QLabel*>(u"noticeText"_s);
        if (refusal.isEmpty()) {
            AwaitStills();
            QVERIFY(FileExists(path) && strip.text().isEmpty());
            return;
        }
        QTRY_VERIFY2(strip.text().contains(refusal), qPrintable(strip.text()));
        QTRY_COMPARE(CellText(opened->sprCap(1), 1, 2), u"대기"_s);
        QCOMPARE(Files().FilesStartingWith(m_box->Root(), {}), before);
        QVERIFY(!FolderExists(m_box->Root() + u"2026\\movie"_s));
        // The operator knows better, and what waits is filed.
        m_box->Desk().answers = {true};
        opened->findChild<QPushButton*>(u"noticeOffer"_s)->click();
        QTRY_COMPARE(CellText(opened->sprCap(1), 1, 2), u"001"_s);
        AwaitStills();
        QTRY_VERIFY(strip.text().isEmpty());
        QVERIFY(FileExists(m_box->PicturePath(Day, Stomach, 1)));
        QCOMPARE(stored.isEmpty() ? QString() : capture_root::StoredMark(), stored.isEmpty() ? QString() : mark);
    }

    void SectionsOfTheClient_data()
    {
        Columns<QString, QStringList>("list", "entries");
        QTest::newRow("empty pieces are no sections") << u",위내시경,,대장내시경,"_s << QStringList{Stomach, Colon};
        QTest::newRow("one alone hides the list") << u"위내시경"_s << QStringList{Stomach};
        QTest::newRow("none") << u" , "_s << QStringList{};
        QTest::newRow("one that leaves the root") << u"위내시경,..\\x"_s << QStringList{};
    }

    void SectionsOfTheClient()
    {
        QFETCH2(QString, list, QStringList, entries);
        ClientSetup.EtcList = list;
        frmCapture& screen = OpenScreen();
        QCOMPARE(screen.IsUnloaded(), entries.isEmpty());
        QCOMPARE(m_box->Desk().ended, entries.isEmpty());
        if (entries.isEmpty()) {
            QCOMPARE(m_box->Desk().shown.size(), 1);
            return;
        }
        QStringList shown;
        for (int at = 0; at < screen.cmbEtc().count(); ++at)
            shown << screen.cmbEtc().itemText(at);
        QCOMPARE(shown, entries);
        QCOMPARE(screen.cmbEtc().isVisible(), entries.size() > 1);
    }

    void ConnectWithoutADeviceEndsTheProgram()
    {
        frmCapture& screen = OpenScreen();
        FakeVideoCap::Last()->devices.clear();
        Press(u"연결"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"캡쳐 장치를 찾을수 없습니다.!!"_s});
        QVERIFY(screen.IsUnloaded());
        QVERIFY(m_box->Desk().ended);
    }

    void TheDeviceTakesTheStoredSettings()
    {
        DeviceSettings = {};
        OpenScreen();
        DeviceSettings = {1, 2, 3, 4};
        FakeVideoCap& video = *FakeVideoCap::Last();
        Press(u"연결"_s);
        const QStringList start = {u"Device 1"_s, u"VideoFormat 2"_s, u"VideoInput 4"_s, u"Start"_s};
        QCOMPARE(video.calls, start);
        Choose(u"기타설정1"_s);
        Choose(u"기타설정2"_s);
        Choose(u"연결끊기"_s);
        const QStringList dialogs = QStringList{u"Dialog1"_s} + start + QStringList{u"Dialog2"_s, u"Stop"_s};
        QCOMPARE(video.calls, start + dialogs);
        for (const QString& silent : {u"설정"_s, u"기타"_s})
            Press(silent);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void FiftyStillsAndNoMore()
    {
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        for (int press = 1; press <= 51; ++press)
            Press(u"캡쳐"_s);
        const QStringList names = m_box->Names(u"2026"_s, Stomach);
        QCOMPARE(names.size(), 50);
        QCOMPARE(names.first(), u"0000123420261124001.jpg"_s);
        for (int number = 1; number <= 50; ++number)
            QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, number)), number);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"50"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca"_s), u"1"_s);
        QString path = m_box->PicturePath(Day, Stomach, 50);
        QCOMPARE(m_box->Value(u"SELECT cap_path AS v FROM cap WHERE cap_no = 50"_s), path.replace(u'\\', u'/'));
        QCOMPARE(CellText(screen.sprCap(1), 1, 4), u"006"_s);
        QCOMPARE(CellText(screen.sprCap(1), 5, 20), u"050"_s);
        QCOMPARE(screen.sprCap(1).ActiveRow(), 19);
        const auto* count = screen.findChild<QLabel*>(u"lblCount"_s);
        QVERIFY(count->text() == u"50/50"_s && count->property("full").toBool());
        QVERIFY(m_box->Desk().shown.isEmpty());
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
    }

    void TheShutterIsHeard()
    {
        InstallService<ShutterSound>(std::make_unique<HeardSounds>());
        HeardSounds::heard.clear();
        frmCapture& screen = OpenWithOneStill();
        QCOMPARE(HeardSounds::heard, QList{ShutterSound::Safe});
        // The microphone of a movie would hear it.
        screen.capCapture().setCaptureMode(true);
        Press(u"캡쳐"_s);
        screen.capCapture().setCaptureMode(false);
        ClientSetup.ShutterSound = false;
        Press(u"캡쳐"_s);
        QCOMPARE(HeardSounds::heard.size(), 1);
        ClientSetup.ShutterSound = true;
        m_box->Run(u"ALTER TABLE cap RENAME TO cap_away"_s);
        Press(u"캡쳐"_s);
        QTRY_COMPARE(HeardSounds::heard, (QList{ShutterSound::Safe, ShutterSound::Waiting}));
        InstallService<ShutterSound>(nullptr);
    }

    /// It waits on this machine's disk, and nobody is asked.
    void AShareThatFaultsGetsThePictureLater_data()
    {
        QTest::addColumn<int>("failingStep");
        QTest::newRow("the claim can't be made") << 1;
        QTest::newRow("the file can't be written") << 2;
    }

    void AShareThatFaultsGetsThePictureLater()
    {
        QFETCH(int, failingStep);
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        m_box->FaultyFiles().FailAt(failingStep, true);
        Press(u"캡쳐"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(CellText(screen.sprCap(1), 1, 2) + CellText(screen.sprCap(1), 2, 2), u"대기대기"_s);
        QVERIFY(screen.findChild<QLabel*>(u"noticeText"_s)->text().contains(u"(2장 대기)"_s));
        m_box->FaultyFiles().Recover();
        QTRY_COMPARE(m_box->Value(u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap"_s), u"1,2"_s);
        QTRY_COMPARE(CellText(screen.sprCap(1), 1, 2) + CellText(screen.sprCap(1), 2, 2), u"001002"_s);
        QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, 1)), 1);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void ThePictureFillsTheScreenAndGoesOn()
    {
        frmCapture& screen = OpenWithOneStill();
        QWidget& picture = screen.capCapture();
        auto* strip = screen.findChild<NoticeStrip*>();
        const auto* count = screen.findChild<QLabel*>(u"lblCount"_s);
        const QRect place = picture.geometry();
        const QRect below = strip->geometry();
        QTest::mouseDClick(&picture, Qt::LeftButton);
        QWidget* full = picture.window();
        QVERIFY(full != &screen && full->isVisible());
        QCOMPARE(full->size(), screen.screen()->size());
        QCOMPARE(picture.geometry(), full->rect());
        // In the black bars beside a high picture, else over its edges.
        strip->setNotice(NoticeStrip::Room, u"공간"_s);
        FakeVideoCap::Last()->frameSize = {100, 320};
        QTRY_VERIFY(strip->width() < full->width() / 2);
        QCOMPARE(count->geometry().bottomRight(), full->rect().bottomRight());
        FakeVideoCap::Last()->frameSize = {320, 240};
        QTRY_COMPARE(strip->geometry().bottomRight(), full->rect().bottomRight());
        QCOMPARE(count->window(), full);
        QCOMPARE(count->geometry().bottomRight(), strip->geometry().topRight() - QPoint(0, 1));
        QVERIFY(full->findChild<QLabel*>(u"fullCaptions"_s)->text().contains(u"홍길동"_s));
        Press(u"캡쳐"_s);
        QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, 2)), 2);
        QTRY_VERIFY(full->findChild<QWidget*>(u"lastStill"_s)->isVisible());
        QCOMPARE(full->findChild<QWidget*>(u"lastStill"_s)->accessibleName(), u"그림 002"_s);
        QTRY_COMPARE(FakeVideoCap::Last()->margins.bottom(), strip->height());
        QTest::keyClick(full, Qt::Key_A);
        QCOMPARE(picture.window(), full);
        QTest::keyClick(full, Qt::Key_Escape);
        QCOMPARE(picture.window(), &screen);
        QCOMPARE(picture.geometry(), place);
        QCOMPARE(strip->geometry(), below);
        QVERIFY(strip->isVisible() && !full->isVisible());
        QCOMPARE(count->geometry().bottomRight(), strip->geometry().topRight() - QPoint(0, 1));
        QTest::keyClick(&screen, Qt::Key_Escape);
        QVERIFY(!screen.IsUnloaded());
        QTest::mouseDClick(&picture, Qt::LeftButton);
        QTest::mouseDClick(&picture, Qt::LeftButton);
        QCOMPARE(picture.window(), &screen);
        // One that is closed while it is full leaves nothing behind.
        QTest::mouseDClick(&picture, Qt::LeftButton);
        screen.Unload();
    }

    /// The most urgent first; a wait that can be given up, with its button, before all.
    void TheStripTellsAll()
    {
        frmCapture& screen = OpenWithOneStill();
        auto* strip = screen.findChild<NoticeStrip*>();
        const auto text = [strip](const QString& name) {
            const auto* label = strip->findChild<QLabel*>(name);
            return label->isVisible() ? label->text() : QString();
        };
        int sent = 0;
        strip->setNotice(NoticeStrip::PacsRefused, u"PACS 거부 1건"_s, {u"지금 보내기"_s, [&sent] { ++sent; }});
        strip->setNotice(NoticeStrip::Room, u"공간"_s);
        QVERIFY(!strip->property("fault").toBool());
        strip->setNotice(NoticeStrip::Share, u"<b>폴더</b>"_s.repeated(1000));
        QCOMPARE(text(u"noticeText"_s).left(4) + text(u"noticeFurther"_s), u"<b>폴외 2건"_s);
        QVERIFY(strip->property("fault").toBool() && !strip->findChild<QWidget*>(u"noticeOffer"_s)->isVisible());
        strip->setNotice(NoticeStrip::Waiting, u"기다림"_s);
        auto* cancel = strip->findChild<QWidget*>(u"noticeCancel"_s);
        QVERIFY(!cancel->isVisible());
        strip->setMayCancel(true);
        QVERIFY(cancel->isVisible() && text(u"noticeText"_s) == u"기다림"_s);
        strip->setNotice(NoticeStrip::Waiting, QString());
        QVERIFY(!cancel->isVisible());

        screen.txtCapChamgo().setFocus();
        const auto open = [&] {
            QTest::mouseClick(strip->findChild<QLabel*>(u"noticeText"_s), Qt::LeftButton);
            return screen.findChild<QWidget*>(u"noticeList"_s);
        };
        const QPointer<QWidget> list = open();
        QVERIFY(list != nullptr && list->isVisible() && screen.txtCapChamgo().hasFocus());
        QCOMPARE(list->findChildren<QWidget*>(u"noticeRow"_s).size(), 3);
        QVERIFY(list->height() <= strip->y());
        QTest::keyClick(&screen.txtCapChamgo(), Qt::Key_Escape);
        QTRY_VERIFY(list == nullptr);
        open()->findChild<QPushButton*>(u"listOffer"_s)->click();
        QCOMPARE(sent, 1);
        QTRY_VERIFY(screen.findChild<QWidget*>(u"noticeList"_s) == nullptr);
        open();
        QTest::mouseClick(&screen.capCapture(), Qt::LeftButton);
        QTRY_VERIFY(screen.findChild<QWidget*>(u"noticeList"_s) == nullptr);
    }

    void TheOperatorHearsOfTheRoom()
    {
        m_box->FaultyFiles().freeBytes = 900'000'000;
        frmCapture& screen = OpenWithOneStill();
        auto* strip = screen.findChild<NoticeStrip*>();
        QTRY_VERIFY(strip->isVisible() && strip->findChild<QLabel*>()->text().contains(u"900MB"_s));
        QVERIFY(m_box->Desk().shown.isEmpty());
        m_box->FaultyFiles().freeBytes = 1'000;
        Press(u"캡쳐"_s);
        QVERIFY(m_box->Desk().shown.value(0).contains(u"공간이 없어"_s));
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 1);
        QCOMPARE(screen.findChild<QLabel*>(u"lblCount"_s)->text(), u"1/50"_s);
    }

    void WithoutAPictureNothingIsFiled()
    {
        frmCapture& screen = OpenScreen();
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"캡쳐할 영상이 없습니다.!!"_s});
        const auto* count = screen.findChild<QLabel*>(u"lblCount"_s);
        const auto* light = screen.capCapture().findChild<QWidget*>(u"pressAnswer"_s);
        QVERIFY(light->isVisible() && count->property("refused").toBool());
        QTRY_VERIFY(!light->isVisible() && !count->property("refused").toBool());
        QCOMPARE(m_box->Names(u"2026"_s, Stomach), QStringList());
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"0"_s);
        QCOMPARE(screen.sprCap(1).DataRowCnt(), 0);
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
        FakeVideoCap::Last()->live = true;
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 1);
    }

    void RowsThatFailWaitWithTheirFile()
    {
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        screen.txtCapChamgo().setPlainText(u"용종"_s);
        screen.txtCapChamgo().document()->setModified(true);
        m_box->Run(u"ALTER TABLE cap RENAME TO cap_gone;"_s);
        Press(u"캡쳐"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QVERIFY(m_box->Desk().shown.first().startsWith(u"캡쳐 001번"_s));
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 2);
        QCOMPARE(CellText(screen.sprCap(1), 2, 2), u"002"_s);

        m_box->Run(u"ALTER TABLE cap_gone RENAME TO cap;"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"용종"_s);
        QCOMPARE(CellText(screen.sprCap(1), 3, 2), u"003"_s);
    }

    void AStillDuringAFillKeepsItsFrameAndItsSection()
    {
        for (int number = 1; number <= 15; ++number)
            m_box->AddPicture(Day, Colon, number, u"대장 소견"_s);
        frmCapture& screen = OpenScreen();
        Press(u"연결"_s);
        int pressed = 0;
        QTimer::singleShot(0, this, [&] {
            Press(u"캡쳐"_s);
            pressed = FakeVideoCap::Last()->frames;
            FakeVideoCap::Last()->frames = 40;
            // A kill in this moment would cost nothing but the thumbnail.
            QCOMPARE(m_box->Names(u"2026"_s, Colon).size(), 16);
            QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"16"_s);
            // A box that stands over it holds up neither the fill nor the still behind it.
            QVERIFY(QTest::qWaitFor([&screen] { return CellText(screen.sprCap(1), 1, 8) == u"016"_s; }));
        });
        ChooseSection(Colon);
        QTRY_COMPARE(CellText(screen.sprCap(1), 1, 8), u"016"_s);
        QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Colon, 16)), pressed);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"대장 소견"_s);
    }

    void UnderADateThatIsNoneNothingIsDone_data()
    {
        QTest::addColumn<std::function<void()>>("command");
        const auto row = [](const char* name, const std::function<void()>& command) { QTest::newRow(name) << command; };
        row("still", [] { Press(u"캡쳐"_s); });
        row("save", [] { Press(u"저장"_s); });
        row("delete", [] { Press(u"삭제"_s); });
        row("file", [] { Press(u"파일"_s); });
        row("dropped file", [] { Q_EMIT opened->sprCap(1).FilesDropped({u"/dev/null"_s}); });
        row("movie", [] { Choose(u"동영상저장시작"_s); });
        row("findings", [] { Choose(u"소견서입력"_s); });
        row("editor", [] { DoubleClick(2, 2, 1); });
        for (const QString& entry : {u"그림지우기"_s, u"전체지우기"_s, u"소견서입력"_s})
            QTest::addRow("menu %s", qPrintable(entry)) << std::function([entry] { ChooseOver(2, 2, 1, entry); });
    }

    void UnderADateThatIsNoneNothingIsDone()
    {
        QFETCH(std::function<void()>, command);
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"정상"_s);
        VisitContext.Ymd = u"0261126위"_s;
        VisitContext.CaptureDir = m_box->Root() + u"0261\\"_s;
        VisitContext.YmdIsValid = false;
        OpenScreen();
        Press(u"연결"_s);
        ShowLine(u"20250301"_s);
        m_box->Desk().answers = {true, true};
        m_box->Desk().files = {u"/dev/null"_s, u"/dev/null"_s};
        const auto* strip = opened->findChild<NoticeStrip*>();
        command();
        QCOMPARE(m_box->Desk().shown, QStringList{QString::fromUtf16(InvalidDateText)});
        QVERIFY(!strip->property("flashing").toBool());
        command();
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(strip->property("flashing").toBool() && strip->isVisible());
        QTRY_VERIFY(!strip->property("flashing").toBool());
        QCOMPARE(LoadedForms().size(), 1);
        QVERIFY(!FolderExists(VisitContext.CaptureDir) && !opened->capCapture().CaptureMode());
        QCOMPARE(m_box->Names(u"2025"_s, Colon).size(), 1);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"1"_s);
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"0"_s);
    }

    void AnUnknownChartIsTold_data()
    {
        Columns<QString, bool>("rows", "isTold");
        QTest::newRow("known") << u"SELECT 1;"_s << false;
        QTest::newRow("without insurance") << u"DELETE FROM bh;"_s << false;
        QTest::newRow("unknown") << u"DELETE FROM wj;"_s << true;
    }

    void AnUnknownChartIsTold()
    {
        QFETCH2(QString, rows, bool, isTold);
        m_box->Run(rows);
        const auto* strip = OpenWithOneStill().findChild<NoticeStrip*>();
        QCOMPARE(strip->isVisible(), isTold);
        QCOMPARE(strip->findChild<QLabel*>()->text(),
                 isTold ? u"차트번호 00001234의 환자 정보가 없습니다.!! 확인하세요."_s : QString());
        QVERIFY(!strip->property("alarm").toBool() && m_box->Desk().shown.isEmpty());
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 1);
    }

    void HistoryLines()
    {
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"정상"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 2);
        frmCapture& screen = OpenScreen();
        auto* date = screen.findChild<QLabel*>(u"lblHisYmd"_s);
        auto* section = screen.findChild<QLabel*>(u"lblHisEtc"_s);
        DoubleClick(3, 1, 1);
        QCOMPARE(date->text(), u"2025-03-01"_s);
        QCOMPARE(section->text(), Colon);
        QCOMPARE(CellText(screen.sprCap(2), 4, 2), u"002"_s);
        Press(u"취소"_s);
        QCOMPARE(screen.sprCap(2).DataRowCnt(), 0);
        QCOMPARE(date->text(), u"2025-03-01"_s);
        DoubleClick(3, 1, 400);
        QCOMPARE(date->text() + section->text(), QString());
    }

    void AClickDuringAFillOfTheHistory_data()
    {
        Columns<bool, QString>("belowTheList", "shown");
        QTest::newRow("a tick in an empty row") << false << u"001 002 003 004 005 006 007 008"_s;
        QTest::newRow("a double click below the list") << true << QString();
    }

    void AClickDuringAFillOfTheHistory()
    {
        QFETCH(bool, belowTheList);
        for (int number = 1; number <= 8; ++number)
            m_box->AddPicture(u"20250301"_s, Colon, number, u"정상"_s);
        frmCapture& screen = OpenScreen();
        fpSpread& pictures = screen.sprCap(2);
        m_box->Desk().whilePumped = [&] {
            if (belowTheList) {
                DoubleClick(3, 1, 400);
                return;
            }
            pictures.setRow(9);
            pictures.setCol(1);
            pictures.setValue(u"1"_s);
        };
        DoubleClick(3, 1, 1);
        QStringList numbers;
        for (int row = 2; row <= pictures.DataRowCnt(); row += 2) {
            for (const int column : PictureColumns(2))
                numbers << CellText(pictures, column, row);
        }
        numbers.removeAll(QString());
        QTEST(numbers.join(u' '), "shown");
        QCOMPARE(screen.txtCapChamgo().toPlainText(), belowTheList ? QString() : u"정상"_s);
    }

    void StoredPositionsAreSelected_data()
    {
        Columns<QByteArray, int, int, int, QByteArray>("file", "device", "size", "source", "saved");
        const auto saved = [](int device, int size, int source) {
            return u"Devices=%1 Sizes=%2 Colors=0 sources=%3"_s.arg(device).arg(size).arg(source).toLatin1();
        };
        QTest::newRow("no file") << QByteArray() << 0 << 0 << 0 << saved(0, 0, 0);
        QTest::newRow("second device") << QByteArray("Devices=1\nColors=7\n") << 1 << 0 << 0 << saved(1, 0, 0);
        QTest::newRow("beyond the lists")
            << QByteArray("Devices=2\nSizes=5\nSources=-1\n") << -1 << -1 << -1 << saved(0, 0, 0);
    }

    void StoredPositionsAreSelected()
    {
        QFETCH5(QByteArray, file, int, device, int, size, int, source, QByteArray, saved);
        Store(file);
        InDialog([&](QWidget& dialog) {
            auto& devices = *dialog.findChild<QComboBox*>(u"cmbDevices"_s);
            QCOMPARE(devices.itemText(0), u"00 내시경"_s);
            QCOMPARE(devices.itemText(1), u"01 웹캠"_s);
            QCOMPARE(devices.currentIndex(), device);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbSizes"_s)->currentIndex(), size);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbSources"_s)->currentIndex(), source);
            QCOMPARE(dialog.findChild<QComboBox*>(u"cmbColors"_s)->count(), 0);
            dialog.findChild<QPushButton*>(u"cmdSet"_s)->click();
        });
        QFile settings(SettingsFile());
        QVERIFY(settings.open(QIODevice::ReadOnly));
        const QByteArray content = settings.readAll();
        for (const QByteArray& key : saved.split(' '))
            QVERIFY2(content.toLower().contains(key.toLower()), content.constData());
        QCOMPARE(FakeVideoCap::Last()->calls.last(), u"Start"_s);
        QVERIFY(FakeVideoCap::Last()->calls.contains(u"Device %1"_s.arg(qMax(0, device))));
    }

    void CancelSavesNothingAndStartsTheDevice()
    {
        const QByteArray file = "Devices=1\nSizes=4\n";
        Store(file);
        InDialog([](QWidget& dialog) {
            dialog.findChild<QComboBox*>(u"cmbDevices"_s)->setCurrentIndex(0);
            dialog.findChild<QPushButton*>(u"cmdCancel"_s)->click();
        });
        QCOMPARE(DeviceSettings.Devices, 1);
        QVERIFY(Stored().endsWith(file));
        // The format that the list doesn't have is left out once, and then applied by the start.
        const QStringList calls = {u"Device 1"_s,      u"VideoInput 0"_s, u"Device 1"_s,
                                   u"VideoFormat 4"_s, u"VideoInput 0"_s, u"Start"_s};
        QCOMPARE(FakeVideoCap::Last()->calls, calls);
    }

    void NoDevice()
    {
        OpenScreen();
        FakeVideoCap::Last()->devices.clear();
        Choose(u"장치설정"_s);
        const QStringList texts = {u"캡쳐장치를 찾을수 없습니다.!!"_s, u"캡쳐 장치를 찾을수 없습니다.!!"_s};
        QCOMPARE(m_box->Desk().shown, texts);
        QVERIFY(!opened->IsUnloaded());
        QVERIFY(FindForm(u"frmCapSet"_s) == nullptr);
    }

private:
    std::unique_ptr<StationInABox> m_box;
    /// Opens the screen and does that in it.
    void InDialog(const std::function<void(QWidget&)>& work)
    {
        OpenScreen();
        FakeVideoCap::Last()->devices = {u"내시경"_s, u"웹캠"_s};
        bool done = false;
        QTimer::singleShot(0, this, [&] {
            StationForm* dialog = FindForm(u"frmCapSet"_s);
            QVERIFY(dialog != nullptr);
            work(*dialog);
            if (!dialog->IsUnloaded())
                dialog->Unload();
            done = true;
        });
        Choose(u"장치설정"_s);
        QVERIFY(done);
    }

    QString SettingsFile() const { return m_box->Desk().ProgramFolder() + u"/CapSet.ini"_s; }
    void Store(const QByteArray& keys)
    {
        QFile file(SettingsFile());
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("[Capture Setting]\n" + keys);
    }
    QByteArray Stored() const
    {
        QFile file(SettingsFile());
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }
};

QTEST_MAIN(CaptureScreenTest)
#include "CaptureScreenTest.moc"
