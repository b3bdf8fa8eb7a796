#include "filing/NumberClaim.h"
#include "support/CaptureScreen.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
const QString Numbers = u"SELECT GROUP_CONCAT(cap_no) AS v FROM cap WHERE cap_ymd = '%1' AND cap_etc = '%2'"_s;
} // namespace

class CaptureDeletionTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number, u"소견"_s);
        m_box->AddPicture(Day, Colon, 1, u"대장"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"옛 소견"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 2);
        OpenScreen();
        MakeFolder(m_box->Root() + u"2025\\대장내시경Log"_s);
    }
    void cleanup()
    {
        m_box->FaultyFiles().Recover(); // Or the end waits for what can't be written.
        m_box.reset();
    }

    void NoMeansNo_data()
    {
        Columns<QString, QString>("command", "question");
        QTest::newRow("button") << u"삭제"_s << u"2026년 11월 24일, 위내시경 캡쳐자료를 삭제하시겠습니까?"_s;
        QTest::newRow("one") << u"그림지우기"_s << u"해당 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s;
        QTest::newRow("all") << u"전체지우기"_s << u"전체 캡쳐자료가 지워집니다. 그래도 계속하시겠습니까?"_s;
    }

    void NoMeansNo()
    {
        QFETCH(QString, command);
        OpenMenu(1, 2, 1);
        Run(command);
        QTEST(m_box->Desk().shown.value(0), "question");
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 3);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,2,3"_s);
    }

    void OnePictureOfTheVisit()
    {
        m_box->Desk().answers = {true};
        OpenMenu(1, 2, 1);
        Run(u"그림지우기"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach),
                 (QStringList{u"0000123420261124001.jpg"_s, u"0000123420261124003.jpg"_s}));
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s), QStringList{u"0000123420261124002.jpg"_s});
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,3"_s);
        QCOMPARE(CellText(opened->sprCap(1), 2, 2), u"003"_s);
        FakeVideoCap::Last()->live = true;
        Run(u"캡쳐"_s);
        QCOMPARE(CellText(opened->sprCap(1), 3, 2), u"004"_s);
    }

    void TheLastPictureTakesTheNoteWithIt()
    {
        m_box->Desk().answers = {true, true};
        ShowLine(u"20250301"_s);
        OpenMenu(2, 4, 1);
        Run(u"그림지우기"_s);
        QCOMPARE(m_box->Value(Numbers.arg(u"20250301"_s, Colon)), u"1"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20250301'"_s), u"옛 소견"_s);
        OpenMenu(2, 2, 1);
        Run(u"그림지우기"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca WHERE ca_ymd = '20250301'"_s), u"0"_s);
        QCOMPARE(opened->sprCap(2).DataRowCnt(), 0);
        QCOMPARE(opened->sprCap(1).DataRowCnt(), 2);
        QCOMPARE(m_box->Names(u"2025"_s, u"대장내시경Log"_s).size(), 2);
    }

    void ANoteOutlivesTheLastPictureInItsBox()
    {
        m_box->Desk().answers = {true};
        ShowLine(u"20250301"_s);
        m_box->Run(u"DELETE FROM cap WHERE cap_no > 1 AND cap_etc = '위내시경';"_s);
        OpenMenu(1, 1, 1);
        Run(u"그림지우기"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca WHERE ca_etc = '위내시경'"_s), u"0"_s);
        FakeVideoCap::Last()->live = true;
        Run(u"캡쳐"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_etc = '위내시경'"_s), u"소견"_s);
        QCOMPARE(opened->txtCapChamgo().toPlainText(), u"소견"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20250301'"_s), u"옛 소견"_s);
    }

    void AllOfTheVisit()
    {
        m_box->Desk().answers = {true};
        Run(u"삭제"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach), QStringList());
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s).size(), 3);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca WHERE ca_ymd = '20261124'"_s), u"1"_s);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Colon)), u"1"_s);
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"0"_s);
        QCOMPARE(opened->sprCap(1).DataRowCnt(), 0);
        QCOMPARE(opened->txtCapChamgo().toPlainText(), QString());
    }

    void AllOfAHistoryLineLeavesTodaysMark()
    {
        m_box->Run(u"UPDATE endo SET endo_check = '1';"_s);
        m_box->Desk().answers = {true};
        ShowLine(u"20250301"_s);
        OpenMenu(2, 2, 1);
        Run(u"전체지우기"_s);
        QCOMPARE(m_box->Names(u"2025"_s, Colon), QStringList());
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"1"_s);
        QCOMPARE(opened->sprCap(1).DataRowCnt(), 2);
        QCOMPARE(opened->findChild<QLabel*>(u"lblHisYmd"_s)->text(), u"2025-03-01"_s);
        QCOMPARE(opened->txtCapChamgo().toPlainText(), u"소견"_s);
    }

    void AFullLogFolderKeepsFilesWithTheirRows_data()
    {
        Columns<QString, int, int, QString>("command", "failing", "moved", "rows");
        QTest::newRow("one picture") << u"그림지우기"_s << 1 << 0 << u"1,2,3"_s;
        QTest::newRow("the visit, at its first picture") << u"삭제"_s << 1 << 0 << u"1,2,3"_s;
        QTest::newRow("the visit, in the middle") << u"삭제"_s << 3 << 2 << u"3"_s;
        QTest::newRow("the sweep at closing") << u"종료"_s << 1 << 0 << u"1,2,3"_s;
    }

    void AFullLogFolderKeepsFilesWithTheirRows()
    {
        QFETCH3(QString, command, int, failing, int, moved);
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 4), "orphan");
        m_box->Desk().answers = {true};
        OpenMenu(1, 2, 1);
        m_box->FaultyFiles().FailAt(failing, true);
        Run(command);
        QVERIFY(m_box->Desk().shown.last().endsWith(
            u"지운 그림 폴더로 옮기지 못했습니다.!!\r\n디스크가 가득 찼습니다.!!"_s));
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s).size(), moved);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 4 - moved);
        QTEST(m_box->Value(Numbers.arg(Day, Stomach)), "rows");
        QCOMPARE(m_box->Desk().pointer, PointerNormal);
        QCOMPARE(m_box->Desk().ended, command == u"종료"_s);
    }

    void AFaultOfTheDiskKeepsThePictureWithItsRow_data()
    {
        Columns<int, QString>("fault", "said");
        QTest::newRow("it can't be read") << int(FailingFiles::Reads) << u"디스크가 가득 찼습니다.!!"_s;
        QTest::newRow("it can't be deleted") << int(FailingFiles::Deletes) << u"디스크가 가득 찼습니다.!!"_s;
        QTest::newRow("its copy is another") << -1 << u"그림파일을 옮기지 못했습니다.!!"_s;
    }

    void AFaultOfTheDiskKeepsThePictureWithItsRow()
    {
        QFETCH2(int, fault, QString, said);
        m_box->Desk().answers = {true};
        OpenMenu(1, 2, 1);
        m_box->FaultyFiles().spoilsWrites = fault < 0;
        if (fault >= 0)
            m_box->FaultyFiles().FailAt(1, true, FailingFiles::Kind(fault));
        Run(u"그림지우기"_s);
        QVERIFY2(m_box->Desk().shown.last().contains(said), qPrintable(m_box->Desk().shown.last()));
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 3);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,2,3"_s);
    }

    void TheServerTakesTheSameStatements()
    {
        m_box.reset();
        m_box = std::make_unique<StationInABox>(u"QMARIADB"_s);
        for (const int number : {1, 2, 3})
            m_box->AddPicture(Day, Stomach, number, u"소견"_s);
        OpenScreen().txtCapChamgo().setPlainText(u"it's \\ 용종"_s);
        opened->txtCapChamgo().document()->setModified(true);
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT CONCAT(endo_check, ca_chamgo) AS v FROM endo, ca"_s), u"1it s / 용종"_s);
        m_box->Desk().answers = {true, true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,3"_s);
        Press(u"삭제"_s);
        QCOMPARE(m_box->Value(u"SELECT CONCAT(COUNT(*), endo_check) AS v FROM cap RIGHT JOIN endo ON 1 = 0"_s),
                 u"10"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM ca"_s), u"0"_s);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach), QStringList());
    }

    void AnotherStationDeletesTheSame_data()
    {
        Columns<QString, QString>("command", "left");
        QTest::newRow("one picture") << u"그림지우기"_s << u"1,3"_s;
        QTest::newRow("the visit") << u"삭제"_s << QString();
    }

    void AnotherStationDeletesTheSame()
    {
        QFETCH2(QString, command, QString, left);
        m_box->Desk().answers = {true};
        OpenMenu(1, 2, 1);
        m_box->Desk().whileShown = [this] {
            DeleteFile(m_box->PicturePath(Day, Stomach, 2));
            m_box->Run(u"DELETE FROM cap WHERE cap_etc = '위내시경' AND cap_no = 2;"_s);
        };
        Run(command);
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), left);
        QCOMPARE(CellText(opened->sprCap(1), 2, 2), left.isEmpty() ? QString() : u"003"_s);
    }

    void WhatIsAskedAboutIsFramed_data()
    {
        Columns<int, QString, bool, QString>("grid", "command", "answer", "framed");
        QTest::newRow("one of the visit") << 1 << u"그림지우기"_s << false << u"002"_s;
        QTest::newRow("one of the visit, deleted") << 1 << u"그림지우기"_s << true << u"002"_s;
        QTest::newRow("one of the history") << 2 << u"그림지우기"_s << true << u"001"_s;
        QTest::newRow("all of the history") << 2 << u"전체지우기"_s << false << u"001 002"_s;
        QTest::newRow("all of the visit") << 1 << u"전체지우기"_s << false << u"001 002 003 004"_s;
        QTest::newRow("by the button") << 1 << u"삭제"_s << false << u"001 002 003 004"_s;
    }

    void WhatIsAskedAboutIsFramed()
    {
        QFETCH4(int, grid, QString, command, bool, answer, QString, framed);
        FakeVideoCap::Last()->live = true;
        ShowLine(u"20250301"_s);
        const bool byButton = command == u"삭제"_s;
        if (!byButton) {
            OpenMenu(grid, 2, 1);
            QCOMPARE(Framed(grid), grid == 1 ? u"002"_s : u"001"_s);
        }
        // A still that arrives under the question, and a fill that moves the pictures up, leave the frames where they
        // belong.
        QString under;
        m_box->Desk().answers = {answer};
        m_box->Desk().whileShown = [&] {
            m_box->Desk().whileShown = {};
            opened->findChild<QMenu*>(u"팝업메뉴"_s)->hide();
            Press(u"캡쳐"_s);
            DeleteFile(m_box->PicturePath(Day, Stomach, 1));
            opened->ShowStored();
            if (grid == 2)
                ShowLine(u"20250301"_s);
            QCoreApplication::processEvents();
            under = Framed(grid);
        };
        Run(command);
        QCOMPARE(under, grid == 1 ? QString(framed).remove(u"001 "_s) : framed);
        QCOMPARE(Framed(1) + Framed(2), QString());
        const bool isGone = answer && command == u"그림지우기"_s;
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), isGone && grid == 1 ? u"1,3,4"_s : u"1,2,3,4"_s);
        QCOMPARE(m_box->Value(Numbers.arg(u"20250301"_s, Colon)), isGone && grid == 2 ? u"2"_s : u"1,2"_s);
        // Without a choice it goes with the menu.
        OpenMenu(1, 1, 1);
        QVERIFY(!Framed(1).isEmpty());
        opened->findChild<QMenu*>(u"팝업메뉴"_s)->hide();
        QTRY_COMPARE(Framed(1), QString());
    }

    void TheMenuFollowsItsPicture()
    {
        m_box->Desk().answers = {true};
        OpenMenu(1, 2, 1);
        DeleteFile(m_box->PicturePath(Day, Stomach, 1));
        opened->ShowStored();
        Run(u"그림지우기"_s);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,3"_s);
    }

    void TheCellMayHaveChangedBehindTheQuestion()
    {
        m_box->Desk().answers = {true};
        OpenMenu(1, 1, 1);
        m_box->Desk().whileShown = [this] {
            m_box->Desk().whileShown = {};
            DeleteFile(m_box->PicturePath(Day, Stomach, 1));
            opened->ShowStored();
        };
        Run(u"그림지우기"_s);
        QCOMPARE(CellText(opened->sprCap(1), 1, 2), u"002"_s);
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,2,3"_s);
    }

    void TheSweepMovesOrphansOnly()
    {
        const auto put = [this](int number) { WriteWholeFile(m_box->PicturePath(Day, Stomach, number), "orphan"); };
        for (const int number : {5, 6, 76})
            put(number);
        const auto claim = NumberClaim::Take(CurrentVisit(), 6, u"x"_s);
        const timespec longAgo[2] = {{1700000000, 0}, {1700000000, 0}};
        const QString path = m_box->PicturePath(Day, Stomach, 6).chopped(4);
        QCOMPARE(utimensat(AT_FDCWD, QFile::encodeName(NativePath(path)), longAgo, 0), 0);
        opened->Unload();
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s), QStringList{u"0000123420261124005.jpg"_s});
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).filter(u".jpg"_s).size(), 5);
    }

    void TheSweepWaitsForRowsOnTheirWay()
    {
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 4), "of another station");
        QTimer::singleShot(300, this, [this] { m_box->AddPicture(Day, Stomach, 4); });
        opened->Unload();
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s), QStringList());
    }

    /// Under a picture's name may stand what leads elsewhere, or keeps its reader waiting.
    void WhatIsNoPictureIsLeftAlone_data()
    {
        QTest::addColumn<bool>("pipe");
        QTest::newRow("link") << false;
        QTest::newRow("pipe") << true;
    }

    void WhatIsNoPictureIsLeftAlone()
    {
        QFETCH(bool, pipe);
        const QByteArray path = QFile::encodeName(NativePath(m_box->PicturePath(Day, Stomach, 2)));
        const QString secret = m_box->Root() + u"secret.jpg"_s;
        WriteWholeFile(secret, StationInABox::Jpeg({64, 48}, Qt::red));
        unlink(path.constData());
        const QByteArray target = QFile::encodeName(NativePath(secret));
        QCOMPARE(pipe ? mkfifo(path.constData(), 0666) : symlink(target.constData(), path.constData()), 0);
        Guarded([] { opened->ShowStored(); });
        QCOMPARE(CellText(opened->sprCap(1), 2, 2), u"003"_s);
        m_box->Desk().answers = {true};
        Run(u"삭제"_s);
        QVERIFY2(m_box->Desk().shown.last().contains(u"0000123420261124002.jpg"_s),
                 qPrintable(m_box->Desk().shown.last()));
        QCOMPARE(m_box->Value(Numbers.arg(Day, Stomach)), u"1,2,3"_s);
        m_box->Run(u"DELETE FROM cap WHERE cap_no = 2 AND cap_etc = '위내시경';"_s);
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(u"0000123420261124002\\.jpg"_s));
        opened->Unload();
        QCOMPARE(m_box->Names(u"2026"_s, u"위내시경Log"_s), QStringList());
        QCOMPARE(Files().KindOf(m_box->PicturePath(Day, Stomach, 2)), FileKind::Other);
    }

    void ASweepThatCannotAskMovesNothing()
    {
        WriteWholeFile(m_box->PicturePath(Day, Stomach, 4), "orphan");
        m_box->Run(u"ALTER TABLE cap RENAME TO cap_gone;"_s);
        opened->Unload();
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 4);
        QVERIFY(m_box->Desk().ended);
    }

private:
    /// By a button of the toolbar, or else over the picture that the menu was opened on.
    static void Run(const QString& command)
    {
        if (opened->findChild<QToolButton*>(command) != nullptr)
            Press(command);
        else
            Choose(command, u"팝업메뉴"_s);
        opened->findChild<QMenu*>(u"팝업메뉴"_s)->hide();
    }
    /// Numbers of the framed pictures of a grid.
    static QString Framed(int element)
    {
        fpSpread& grid = opened->sprCap(element);
        QStringList numbers;
        for (int row = 1; row < grid.DataRowCnt(); row += 2) {
            for (const int column : PictureColumns(element)) {
                const QString number = CellText(grid, column, row + 1);
                grid.setRow(row);
                if (grid.TypePictMeant())
                    numbers << number;
            }
        }
        return numbers.join(u' ');
    }
    static void OpenMenu(int element, int column, int row)
    {
        Q_EMIT opened->sprCap(element).RightClick(0, column, row, 150, 150);
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(CaptureDeletionTest)
#include "CaptureDeletionTest.moc"
