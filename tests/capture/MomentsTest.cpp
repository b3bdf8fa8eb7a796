#include "capture/MomentsPanel.h"
#include "records/ActJournal.h"
#include "support/CaptureScreen.h"

using namespace Qt::StringLiterals;

/// What is kept of the live picture around a press, and presses that wait for a frame.
class MomentsTest : public QObject
{
    Q_OBJECT

private:
    QString MomentsOf(int number) const { return opened->PressMoments().Find(CurrentVisit(), number); }

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        InstallService<ActJournal>(std::make_unique<ActJournal>(ActSource{u"test"_s, u"here"_s, u"kim"_s}));
    }
    void cleanup()
    {
        InstallService<ActJournal>(nullptr);
        m_box.reset();
    }

    void AMomentIsFiledBesideItsStill()
    {
        frmCapture& screen = OpenWithOneStill();
        Moments& moments = screen.PressMoments();
        const QString id = MomentsOf(1);
        QVERIFY(!id.isEmpty());
        MomentsPanel panel(moments);
        panel.ShowMoments(id);
        panel.show();
        QTRY_COMPARE(panel.findChildren<QToolButton*>().size(), 12);
        const auto button = [&](int at) { return panel.findChild<QToolButton*>(u"moment(%1)"_s.arg(at)); };
        QCOMPARE(button(0)->text(), u"-3.0초"_s);
        QCOMPARE(button(8)->text(), u"-0.6초\n가장 선명"_s);
        QSignalSpy chosen(&panel, &MomentsPanel::Chosen);
        button(2)->click();
        button(8)->click();
        QTRY_COMPARE(chosen.size(), 1); // The one that was asked for last.
        QCOMPARE(chosen[0][0].value<QImage>().size(), QSize(320, 240));
        QCOMPARE(chosen[0][1].toString(), u"앞뒤 장면 -0.6초"_s);

        // The operator has gone on to another section: the moment stays with its still.
        ChooseSection(Colon);
        auto* file = panel.findChild<QPushButton*>();
        file->click();
        moments.FileMoment(id, 8);
        QTRY_COMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, 2)), 1009);
        AwaitStills();
        QTRY_COMPARE(button(8)->text(), u"-0.6초\n가장 선명\n저장됨"_s);
        QVERIFY(!file->isEnabled());
        QCOMPARE(FakeVideoCap::FrameNumber(m_box->PicturePath(Day, Stomach, 1)), 1);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 2);
        QTRY_COMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"2"_s);
        QTRY_COMPARE(m_box->Value(u"SELECT log_detail AS v FROM ca_log WHERE log_number = 2"_s),
                     u"001번 그림의 앞뒤 장면, -0.6초"_s);
        QVERIFY(m_box->Desk().shown.isEmpty());
    }

    void TheyGoWithTheirStill()
    {
        frmCapture& screen = OpenWithOneStill();
        Press(u"캡쳐"_s);
        const QString first = MomentsOf(1);
        const QString second = MomentsOf(2);
        QTRY_VERIFY(screen.PressMoments().IsReady(second));
        // The number of a deleted still is given to the next one.
        m_box->Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        QTRY_VERIFY(MomentsOf(2).isEmpty());
        Press(u"캡쳐"_s);
        QVERIFY(!MomentsOf(2).isEmpty() && MomentsOf(2) != second);
        // Another station has deleted the still and taken its number.
        std::optional<bool> isThere;
        screen.PressMoments().Confirm(first, [&](bool answer) { isThere = answer; });
        QTRY_COMPARE(isThere, true);
        m_box->Run(u"UPDATE ca_sum SET sum_id = 'theirs' WHERE sum_no = 1"_s);
        screen.PressMoments().Confirm(first, [&](bool answer) { isThere = answer; });
        QTRY_COMPARE(isThere, false);
        QVERIFY(MomentsOf(1).isEmpty());
    }

    void APressWaitsForItsFrame()
    {
        frmCapture& screen = OpenWithOneStill();
        FakeVideoCap& video = *FakeVideoCap::Last();
        auto& stills = *screen.findChild<QToolButton*>(u"캡쳐"_s);
        video.slow = true;
        stills.click();
        ChooseSection(Colon);
        stills.click();
        // What comes by itself meanwhile is no reason to go before them.
        video.slow = false;
        stills.click();
        QTest::qWait(0);
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 1);
        video.AnswerAwaited(true);
        QTRY_COMPARE(m_box->Names(u"2026"_s, Colon).size(), 2);
        AwaitStills();
        QCOMPARE(m_box->Names(u"2026"_s, Stomach).size(), 2);
        // No frame has come: nothing is taken, and nothing said.
        video.slow = true;
        stills.click();
        video.AnswerAwaited(false);
        QTest::qWait(50);
        AwaitStills();
        QCOMPARE(m_box->Names(u"2026"_s, Colon).size(), 2);
        QVERIFY(m_box->Desk().shown.isEmpty());
        video.live = false;
        stills.click();
        QCOMPARE(m_box->Desk().shown, QStringList(u"캡쳐할 영상이 없습니다.!!"_s));
    }

private:
    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(MomentsTest)
#include "MomentsTest.moc"
