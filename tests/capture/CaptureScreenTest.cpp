#include "capture/frmCapture.h"
#include "contracts/fpSpread.h"
#include "contracts/StatusPanels.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "screenparts/NoteBox.h"
#include "screenparts/picture_grid.h"
#include "support/StationInABox.h"
#include "visit/device_settings.h"
#include "visit/VisitContext.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {

const QString Stomach = u"위내시경"_s;
const QString Colon = u"대장내시경"_s;
const QString Day = u"20261124"_s;

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
        frmCapture& screen = Open();
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

    void SectionsOfTheClient_data()
    {
        QTest::addColumn<QString>("list");
        QTest::addColumn<QStringList>("entries");
        QTest::newRow("empty pieces are no sections") << u",위내시경,,대장내시경,"_s << QStringList{Stomach, Colon};
        QTest::newRow("one alone hides the list") << u"위내시경"_s << QStringList{Stomach};
        QTest::newRow("none") << u" , "_s << QStringList{};
        QTest::newRow("one that leaves the root") << u"위내시경,..\\x"_s << QStringList{};
    }

    void SectionsOfTheClient()
    {
        QFETCH(QString, list);
        QFETCH(QStringList, entries);
        ClientSetup.EtcList = list;
        frmCapture& screen = Open();
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

    void ASectionOutsideTheListWorksAllTheSame()
    {
        VisitContext.Etc = u"기관지경"_s;
        frmCapture& screen = Open();
        QCOMPARE(screen.cmbEtc().currentText(), u"기관지경"_s);
        Press(u"연결"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Names(u"2026"_s, u"기관지경"_s), QStringList{u"0000123420261124001.jpg"_s});
        m_box->Desk().answers = {true};
        Press(u"삭제"_s);
        QCOMPARE(m_box->Names(u"2026"_s, u"기관지경Log"_s), QStringList{u"0000123420261124001.jpg"_s});
    }

    void ConnectWithoutADeviceEndsTheProgram()
    {
        frmCapture& screen = Open();
        FakeVideoCap::Last()->devices.clear();
        Press(u"연결"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"캡쳐 장치를 찾을수 없습니다.!!"_s});
        QVERIFY(screen.IsUnloaded());
        QVERIFY(m_box->Desk().ended);
    }

    void TheDeviceTakesTheStoredSettings()
    {
        DeviceSettings = {};
        Open();
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

    void TheStartFollowsADialogThatFails_data()
    {
        QTest::addColumn<bool>("hasDevice");
        QTest::addColumn<QString>("said");
        QTest::newRow("no device") << false << u"캡쳐 장치를 찾을수 없습니다.!!"_s;
        QTest::newRow("the dialog alone fails") << true << u"장치를 열 수 없습니다.!!"_s;
    }

    void TheStartFollowsADialogThatFails()
    {
        QFETCH(bool, hasDevice);
        QFETCH(QString, said);
        Open();
        FakeVideoCap& video = *FakeVideoCap::Last();
        if (!hasDevice)
            video.devices.clear();
        video.dialogFault = u"장치를 열 수 없습니다.!!"_s;
        Choose(u"기타설정1"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{said});
        QCOMPARE(video.live, hasDevice);
    }

    void FiftyStillsAndNoMore()
    {
        frmCapture& screen = Open();
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
        QVERIFY(m_box->Desk().shown.isEmpty());
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
    }

    void NumbersGoOnAfterTheHighest()
    {
        for (const int number : {1, 2, 60})
            m_box->AddPicture(Day, Stomach, number);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 61), "an orphan that must not be overwritten");
        frmCapture& screen = Open();
        Press(u"연결"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(CellText(screen.sprCap(1), 4, 2), u"062"_s);
        QCOMPARE(Files().ReadFile(m_box->PicturePath(Day, Stomach, 61)).left(9), QByteArray("an orphan"));
    }

    void WithoutAPictureNothingIsFiled_data()
    {
        QTest::addColumn<bool>("connected");
        QTest::addColumn<int>("failingStep");
        QTest::addColumn<QString>("message");
        QTest::newRow("idle") << false << 0 << u"캡쳐할 영상이 없습니다.!!"_s;
        QTest::newRow("the claim can't be made") << true << 1 << u"디스크가 가득 찼습니다.!!"_s;
        QTest::newRow("the file can't be written") << true << 2 << u"디스크가 가득 찼습니다.!!"_s;
    }

    void WithoutAPictureNothingIsFiled()
    {
        QFETCH(bool, connected);
        QFETCH(int, failingStep);
        QFETCH(QString, message);
        frmCapture& screen = Open();
        if (connected)
            Press(u"연결"_s);
        m_box->FaultyFiles().FailAt(failingStep);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{message});
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
        frmCapture& screen = Open();
        Press(u"연결"_s);
        screen.txtCapChamgo().setPlainText(u"용종"_s);
        screen.txtCapChamgo().document()->setModified(true);
        m_box->Run(u"ALTER TABLE cap RENAME TO cap_gone;"_s);
        Press(u"캡쳐"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QVERIFY(m_box->Desk().shown.first().startsWith(u"그림파일은 저장하였으나"_s));
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 2);
        QCOMPARE(CellText(screen.sprCap(1), 2, 2), u"002"_s);

        m_box->Run(u"ALTER TABLE cap_gone RENAME TO cap;"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"3"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"용종"_s);
        QCOMPARE(CellText(screen.sprCap(1), 3, 2), u"003"_s);
    }

    void RowsThatFailUntilTheEndAreWrittenAtTheNextStart()
    {
        {
            Open();
            Press(u"연결"_s);
            m_box->Run(u"ALTER TABLE cap RENAME TO cap_gone;"_s);
            Press(u"캡쳐"_s);
            Press(u"종료"_s);
            QVERIFY(m_box->Desk().shown.last().contains(u"다음 실행시"_s));
            QVERIFY(m_box->Desk().ended);
        }
        m_box->Run(u"ALTER TABLE cap_gone RENAME TO cap;"_s);
        frmCapture& screen = Open();
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT cap_no AS v FROM cap"_s), u"1"_s);
        QCOMPARE(CellText(screen.sprCap(1), 1, 2), u"001"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_etc AS v FROM ca"_s), Stomach);
    }

    void AStillDuringAFillKeepsItsFrameAndItsSection()
    {
        for (int number = 1; number <= 15; ++number)
            m_box->AddPicture(Day, Colon, number, u"대장 소견"_s);
        frmCapture& screen = Open();
        Press(u"연결"_s);
        int pressed = 0;
        QTimer::singleShot(0, this, [&] {
            Press(u"캡쳐"_s);
            pressed = FakeVideoCap::Last()->frames;
            FakeVideoCap::Last()->frames = 40;
            // A kill in this moment would cost nothing but the thumbnail.
            QCOMPARE(m_box->Names(u"2026"_s, Colon).size(), 16);
            QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"16"_s);
            QVERIFY(CellText(screen.sprCap(1), 1, 8).isEmpty());
        });
        ChooseSection(Colon);
        QTRY_COMPARE(CellText(screen.sprCap(1), 1, 8), u"016"_s);
        QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Colon, 16)), pressed);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca"_s), u"대장 소견"_s);
    }

    void ClosingDuringAFillFilesWhatWasPressed()
    {
        for (int number = 1; number <= 30; ++number)
            m_box->AddPicture(Day, Colon, number);
        frmCapture& screen = Open();
        Press(u"연결"_s);
        QTimer::singleShot(0, this, [&] {
            Press(u"캡쳐"_s);
            screen.close();
        });
        ChooseSection(Colon);
        QVERIFY(m_box->Desk().ended);
        QCOMPARE(m_box->Names(u"2026"_s, Colon).size(), 31);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"31"_s);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void SectionsHavePicturesAndNotesOfTheirOwn()
    {
        m_box->AddPicture(Day, Colon, 1, u"대장 소견"_s);
        frmCapture& screen = Open();
        Press(u"연결"_s);
        Press(u"캡쳐"_s);
        ChooseSection(Colon);
        QCOMPARE(VisitContext.Etc, Colon);
        QCOMPARE(screen.txtCapChamgo().toPlainText(), u"대장 소견"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach), QStringList{u"0000123420261124001.jpg"_s});
        QCOMPARE(m_box->Names(u"2026"_s, Colon).size(), 2);
    }

    void TheListOfSectionsGoesByTheSectionItShows()
    {
        ClientSetup.EtcList = u"위내시경,대장내시경,기관지경"_s;
        VisitContext.Etc = Colon;
        frmCapture& screen = Open();
        QVERIFY(QTest::qWaitForWindowActive(&screen));
        screen.txtCapChamgo().setPlainText(u"용종"_s);
        screen.cmbEtc().setFocus();
        QTest::keyClick(&screen.cmbEtc(), Qt::Key_Return);
        screen.txtCapChamgo().setFocus();
        QCOMPARE(screen.txtCapChamgo().toPlainText(), u"용종"_s);

        QTest::mousePress(screen.cmbEtc().lineEdit(), Qt::LeftButton);
        QTest::mouseRelease(screen.cmbEtc().view()->window(), Qt::LeftButton, {}, {10, -10});
        QVERIFY(screen.cmbEtc().view()->isVisible());
        QCOMPARE(screen.cmbEtc().view()->currentIndex().data().toString(), Colon);
        screen.cmbEtc().hidePopup();
        QTest::keyClick(&screen.cmbEtc(), Qt::Key_Down);
        QCOMPARE(VisitContext.Etc, u"기관지경"_s);
    }

    void HistoryLines()
    {
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"정상"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 2);
        frmCapture& screen = Open();
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
        QTest::addColumn<bool>("belowTheList");
        QTest::addColumn<QString>("shown");
        QTest::newRow("a tick in an empty row") << false << u"001 002 003 004 005 006 007 008"_s;
        QTest::newRow("a double click below the list") << true << QString();
    }

    void AClickDuringAFillOfTheHistory()
    {
        QFETCH(bool, belowTheList);
        for (int number = 1; number <= 8; ++number)
            m_box->AddPicture(u"20250301"_s, Colon, number, u"정상"_s);
        frmCapture& screen = Open();
        fpSpread& pictures = screen.sprCap(2);
        QTimer::singleShot(0, this, [&] {
            if (belowTheList) {
                DoubleClick(3, 1, 400);
                return;
            }
            pictures.setRow(9);
            pictures.setCol(1);
            pictures.setValue(u"1"_s);
        });
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

    void ContextMenuOnFilledPicturesOnly_data()
    {
        QTest::addColumn<int>("element");
        QTest::addColumn<int>("column");
        QTest::addColumn<int>("row");
        QTest::addColumn<bool>("opens");
        QTest::newRow("picture of the visit") << 1 << 1 << 1 << true;
        QTest::newRow("its number") << 1 << 1 << 2 << false;
        QTest::newRow("empty place") << 1 << 2 << 1 << false;
        QTest::newRow("picture of the history") << 2 << 2 << 1 << true;
        QTest::newRow("tick box") << 2 << 1 << 1 << false;
        QTest::newRow("list of visits") << 3 << 1 << 1 << false;
        QTest::newRow("beyond the grid") << 1 << 1 << 21 << false;
    }

    void ContextMenuOnFilledPicturesOnly()
    {
        QFETCH(int, element);
        QFETCH(int, column);
        QFETCH(int, row);
        QFETCH(bool, opens);
        m_box->AddPicture(Day, Stomach, 1, u""_s);
        frmCapture& screen = Open();
        DoubleClick(3, 1, 1);
        Q_EMIT screen.sprCap(element).RightClick(0, column, row, 150, 150);
        auto* menu = screen.findChild<QMenu*>(u"팝업메뉴"_s);
        QCOMPARE(menu->isVisible(), opens);
        if (opens)
            QCOMPARE(menu->findChild<QAction*>(u"소견서입력"_s)->isEnabled(), element == 2);
        menu->hide();
    }

private:
    frmCapture& Open()
    {
        frmCapture& screen = Form<frmCapture>();
        screen.Show();
        if (!screen.IsUnloaded())
            Guarded([&] { screen.ShowStored(); });
        m_screen = &screen;
        return screen;
    }

    void Press(const QString& caption) { m_screen->findChild<QToolButton*>(caption)->click(); }

    void Choose(const QString& entry)
    {
        for (QAction* action : m_screen->findChildren<QAction*>(entry)) {
            if (qobject_cast<QMenu*>(action->parent())->objectName() != u"팝업메뉴"_s)
                action->trigger();
        }
    }

    void ChooseSection(const QString& section)
    {
        QComboBox& list = m_screen->cmbEtc();
        list.setCurrentIndex(list.findText(section));
        Q_EMIT list.activated(list.currentIndex());
    }

    void DoubleClick(int element, int column, int row) { Q_EMIT m_screen->sprCap(element).DblClick(column, row); }

    std::unique_ptr<StationInABox> m_box;
    frmCapture* m_screen = nullptr;
};

QTEST_MAIN(CaptureScreenTest)
#include "CaptureScreenTest.moc"
