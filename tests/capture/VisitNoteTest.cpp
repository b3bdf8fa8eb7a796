#include "support/CaptureScreen.h"

using namespace Qt::StringLiterals;

namespace {
const QString StoredNoteQuery = u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20261124' AND ca_etc = '위내시경'"_s;
} // namespace

/// The note box serves the visit and the lines of its history; nothing typed may reach the wrong row or be lost.
class VisitNoteTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        m_box->AddPicture(Day, Stomach, 1, u"처음"_s);
        m_box->AddPicture(u"20250301"_s, u"대장내시경"_s, 1, u"옛 소견"_s);
        OpenScreen();
        Press(u"연결"_s);
    }
    void cleanup() { m_box.reset(); }

    void WhatIsStored_data()
    {
        Columns<QString, QString>("typed", "stored");
        QTest::newRow("apostrophe and backslash are cleaned") << u"a'b\\c"_s << u"a b/c"_s;
        QTest::newRow("blanks around it move to the end") << u"  염증 "_s << u"염증   "_s;
        QTest::newRow("several lines") << u"한 줄\n두 줄"_s << u"한 줄\n두 줄"_s;
        QTest::newRow("emptied") << QString() << QString();
        QTest::newRow("10 kB of Korean") << QString(5000, u'가') << QString(5000, u'가');
    }

    void WhatIsStored()
    {
        QFETCH(QString, typed);
        Type(typed);
        Press(u"캡쳐"_s);
        QTEST(m_box->Value(StoredNoteQuery), "stored");
        QCOMPARE(Box().toPlainText(), typed);
    }

    void LinesKeepTheirEnds()
    {
        m_box->Run(u"UPDATE ca SET ca_chamgo = 'a' || char(13, 10) || 'b' WHERE ca_ymd = '20261124';"_s);
        Press(u"취소"_s);
        Box().append(u"c"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"a\r\nb\r\nc"_s);
    }

    /// Some systems write a syllable as its letters, which would stand side by side; what nobody touched stays as it
    /// is.
    void HangulIsComposed()
    {
        const QString apart = u"\u1112\u1161\u11AB"_s;
        OtherStationStores(apart);
        Press(u"취소"_s);
        QCOMPARE(Box().toPlainText(), u"한"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), apart);

        QGuiApplication::clipboard()->setText(u" 줄\n"_s + apart);
        Box().moveCursor(QTextCursor::End);
        Box().paste();
        QTest::keyClick(&Box(), Qt::Key_Return, Qt::ControlModifier);
        QTest::keyClicks(&Box(), u"x"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"한 줄\n한\nx"_s);
        for (int line = 1; line < 3; ++line) {
            const QTextBlock block = Box().document()->findBlockByNumber(line);
            const auto top = [this](const QTextBlock& of) {
                return Box().document()->documentLayout()->blockBoundingRect(of).top();
            };
            QCOMPARE(top(block) - top(block.previous()), 15.0);
        }
        Box().undo();
        QVERIFY(Box().IsTouched());
    }

    void LinesOutOfSightAreTold()
    {
        auto* mark = Box().findChild<QLabel*>(u"furtherLines"_s);
        QVERIFY(!mark->isVisible());
        Type(u"한 줄\n<img src=x>\n셋"_s);
        QVERIFY(mark->isVisible());
        QCOMPARE(mark->text(), u"3줄"_s);
        QVERIFY(mark->toolTip().contains(u"한 줄\n&lt;img src=x&gt;\n셋"_s));
        Type(u"한 줄"_s);
        QVERIFY(!mark->isVisible());
    }

    /// A column of the clinic's may be shorter than the note.
    void ANoteThatIsCutIsSaidToBe()
    {
        m_box->Run(u"CREATE TRIGGER cut1 AFTER UPDATE ON ca WHEN length(NEW.ca_chamgo) > 255 BEGIN "
                   "UPDATE ca SET ca_chamgo = substr(NEW.ca_chamgo, 1, 255); END;"
                   "CREATE TRIGGER cut2 AFTER INSERT ON ca WHEN length(NEW.ca_chamgo) > 255 BEGIN "
                   "UPDATE ca SET ca_chamgo = substr(NEW.ca_chamgo, 1, 255); END;"_s);
        Type(QString(400, u'가'));
        Press(u"캡쳐"_s);
        QVERIFY(m_box->Desk().shown.isEmpty());
        Press(u"저장"_s);
        QCOMPARE(m_box->Desk().shown,
                 QStringList{u"캡쳐이미지를 저장하였습니다.\r\n참고사항이 길어 400자 중 255자만 저장되었습니다.!!"_s});
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery).size(), 255);
        QCOMPARE(Box().toPlainText(), QString(400, u'가'));
    }

    void WaitingForANoteSaysNothing()
    {
        for (int number = 2; number <= 9; ++number)
            m_box->AddPicture(Day, Stomach, number);
        QString said = u"not asked"_s;
        QTimer::singleShot(0, this, [&] { said = Box().placeholderText(); });
        Press(u"취소"_s);
        QCOMPARE(said, QString());
        m_box->Run(u"ALTER TABLE ca RENAME TO ca_gone;"_s);
        Press(u"취소"_s);
        QCOMPARE(Box().placeholderText(), u"참고사항을 읽지 못했습니다.!!"_s);
    }

    void TheMarkGoesWhereTheSetupSays()
    {
        ClientSetup.CheckTable = u"1"_s;
        m_box->Run(u"INSERT INTO yk (yk_chart, yk_jinchal, yk_ykymd, yk_sayugubun, yk_check) VALUES"
                   "('00001234','11','20261124','6','0'), ('00001234','11','20261124','1','0');"_s);
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT yk_check AS v FROM yk WHERE yk_sayugubun = '6'"_s), u"1"_s);
        QCOMPARE(m_box->Value(u"SELECT yk_check AS v FROM yk WHERE yk_sayugubun = '1'"_s), u"0"_s);
        QCOMPARE(m_box->Value(u"SELECT endo_check AS v FROM endo"_s), u"0"_s);
    }

    void AnUntouchedBoxDoesNotOverwriteAnotherStation()
    {
        OtherStationStores(u"다른 방에서"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"다른 방에서"_s);
        QCOMPARE(Box().toPlainText(), u"다른 방에서"_s);

        Type(u"이 방에서"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"이 방에서"_s);
        OtherStationStores(u"다시 다른 방"_s);
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"다시 다른 방"_s);
    }

    /// The note has been changed elsewhere since it was read.
    void AnotherStationsNoteIsKept_data()
    {
        Columns<QString, QString, QString, QString>("theirs", "command", "stored", "told");
        const QString joined = u"다른 곳에서 참고사항을 고쳤습니다.!! 쓴 글을 그 뒤에 붙여 함께 저장하였습니다.!!"_s;
        QTest::newRow("a still") << u"그쪽 글"_s << u"캡쳐"_s << u"그쪽 글\n이쪽 글"_s << joined;
        QTest::newRow("stored") << u"그쪽 글"_s << u"저장"_s << u"그쪽 글\n이쪽 글"_s
                                << u"캡쳐이미지를 저장하였습니다.\r\n"_s + joined;
        QTest::newRow("no room for both")
            << QString(250, u'가') << u"캡쳐"_s << QString(250, u'가')
            << u"다른 곳에서 참고사항을 고쳤습니다.!! 함께 저장할 자리가 없어 그쪽 글이 남았고, "
               "쓴 글은 화면에 있습니다.!!"_s;
        QTest::newRow("it says the same") << u"이쪽 글 그리고"_s << u"캡쳐"_s << u"이쪽 글 그리고"_s << QString();
    }

    void AnotherStationsNoteIsKept()
    {
        QFETCH4(QString, theirs, QString, command, QString, stored, QString, told);
        m_box->Run(u"CREATE TRIGGER cut AFTER UPDATE ON ca WHEN length(NEW.ca_chamgo) > 252 BEGIN "
                   "UPDATE ca SET ca_chamgo = substr(NEW.ca_chamgo, 1, 252); END;"_s);
        Type(u"이쪽 글"_s);
        OtherStationStores(theirs);
        Press(command);
        QTRY_COMPARE(m_box->Value(StoredNoteQuery), stored);
        QCOMPARE(m_box->Desk().shown, told.isEmpty() ? QStringList() : QStringList{told});
        const bool isInBoxAlone = stored == theirs && !told.isEmpty();
        QCOMPARE(Box().toPlainText(), isInBoxAlone ? u"이쪽 글"_s : stored);
        QCOMPARE(Box().IsTouched(), isInBoxAlone);
        // Told once, and no text twice.
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), stored);
        QVERIFY(m_box->Desk().shown.size() <= 1);
    }

    void AHistoryNoteNeverReachesTheVisit()
    {
        Type(u"쓰던 글"_s);
        DoubleClick(3, 1, 2);
        QCOMPARE(Box().toPlainText(), u"옛 소견"_s);
        QVERIFY(Box().isReadOnly() && Box().IsHistoryNote());
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"쓰던 글"_s);
        QCOMPARE(Box().toPlainText(), u"쓰던 글"_s);
        QVERIFY(!Box().isReadOnly());

        DoubleClick(3, 1, 2);
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"쓰던 글"_s);
        QCOMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20250301'"_s), u"옛 소견"_s);
    }

    void TheVisitsOwnLineLeavesTheBox()
    {
        Type(u"쓰던 글"_s);
        DoubleClick(3, 1, 2);
        DoubleClick(3, 1, 1);
        QCOMPARE(Box().toPlainText(), u"쓰던 글"_s);
        QVERIFY(!Box().isReadOnly() && Box().IsTouched());
    }

    void ANoteThatWasNotReadIsNotOverwritten()
    {
        m_box->Run(u"ALTER TABLE ca RENAME TO ca_gone;"_s);
        Press(u"취소"_s);
        QVERIFY(Box().isReadOnly());
        m_box->Run(u"ALTER TABLE ca_gone RENAME TO ca;"_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"처음"_s);
        QCOMPARE(Box().toPlainText(), u"처음"_s);
        QVERIFY(!Box().isReadOnly());
    }

    void ANoteWithoutARowWaitsForTheFirstPicture()
    {
        m_box->Run(u"DELETE FROM ca; DELETE FROM cap;"_s);
        Type(u"먼저 쓴 글"_s);
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), QString());
        QCOMPARE(m_box->Desk().shown.last(), u"캡쳐이미지를 저장하였습니다."_s);
        Press(u"캡쳐"_s);
        QCOMPARE(m_box->Value(StoredNoteQuery), u"먼저 쓴 글"_s);
    }

    /// A note of a run that was killed is offered once it isn't what is stored.
    void ANoteThatWasNotStoredComesBack_data()
    {
        Columns<bool, bool>("isKilled", "isStored");
        QTest::newRow("let go") << false << false;
        QTest::newRow("killed") << true << false;
        QTest::newRow("killed, but stored") << true << true;
    }

    void ANoteThatWasNotStoredComesBack()
    {
        QFETCH2(bool, isKilled, bool, isStored);
        const QDir folder(m_box->Desk().ProgramFolder());
        const auto drafts = [&folder] { return folder.entryList({u"TextDraft-*"_s}); };
        Type(u"쓰던 글"_s);
        opened->sprCap(1).setFocus();
        Box().setFocus();
        QTRY_COMPARE(drafts().size(), 1);
        const QString left = folder.filePath(QString(drafts().first()).replace(u".json"_s, u".kept.json"_s));
        QVERIFY(!isKilled || QFile::copy(folder.filePath(drafts().first()), left));
        if (isStored)
            Press(u"저장"_s);
        opened->Unload();
        QCOMPARE(drafts().size(), isKilled ? 1 : 0);
        m_box->Desk().shown.clear();
        OpenScreen();
        const bool isOffered = isKilled && !isStored;
        auto* offer = opened->findChild<QPushButton*>(u"noticeOffer"_s);
        QCOMPARE(offer->isVisible(), isOffered);
        if (isOffered) {
            QCOMPARE(opened->findChild<QLabel*>(u"noticeText"_s)->text(), u"저장하지 않은 참고사항이 있습니다."_s);
            offer->click();
            QVERIFY(!offer->isVisible());
            Press(u"연결"_s);
            Press(u"캡쳐"_s);
        }
        QCOMPARE(m_box->Value(StoredNoteQuery), isKilled ? u"쓰던 글"_s : u"처음"_s);
        QCOMPARE(m_box->Desk().shown, QStringList());
        opened->Unload();
        QCOMPARE(drafts(), QStringList());
    }

private:
    NoteBox& Box() { return opened->txtCapChamgo(); }

    void Type(const QString& text)
    {
        Box().setPlainText(text);
        Box().document()->setModified(true);
    }

    void OtherStationStores(const QString& note)
    {
        m_box->Run(u"UPDATE ca SET ca_chamgo = '%1' WHERE ca_ymd = '20261124';"_s.arg(note));
    }

    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(VisitNoteTest)
#include "VisitNoteTest.moc"
