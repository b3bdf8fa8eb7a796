#include "findings/findings_popups.h"
#include "findings/FindingsBox.h"
#include "findings/frmCapSogyon.h"
#include "frame/composition.h"
#include "screenparts/LargePicture.h"
#include "support/CaptureScreen.h"
#include "support/HangulDesktop.h"

using namespace Qt::StringLiterals;

/// The last syllable of a Korean word, with a real input method: it is stored once, in the box that it was typed into,
/// and what is typed next is there.
class InputMethodTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<StationInABox>();
        RegisterFindingsPopups();
        m_box->AddPicture(Day, Stomach, 1, u"처음"_s);
        m_box->AddPicture(u"20250301"_s, Colon, 1, u"옛 소견"_s);
        OpenScreen();
        Press(u"연결"_s);
        // The input method takes a moment to be there for the first box.
        QVERIFY(HangulDesktop::ChooseHangul(*opened));
    }
    void cleanup() { m_box.reset(); }

    void ASyllableIsStoredOnce_data()
    {
        Columns<QString, QString, QString>("command", "stored", "shown");
        QTest::newRow("still") << u"캡쳐"_s << u"용종"_s << u"용종가"_s;
        QTest::newRow("note stored") << u"저장"_s << u"용종"_s << u"용종가"_s;
        QTest::newRow("read anew") << u"취소"_s << u"처음"_s << u"처음가"_s;
        QTest::newRow("foot") << u"foot"_s << u"용종"_s << u"용종가"_s;
        QTest::newRow("another section") << u"section"_s << u"처음"_s << u"가"_s;
        QTest::newRow("history line") << u"line"_s << u"처음"_s << u"처음가"_s;
        QTest::newRow("picture large") << u"large"_s << u"처음"_s << u"용종가"_s;
        QTest::newRow("click into the box") << u"box"_s << u"처음"_s << u"용종가"_s;
    }

    void ASyllableIsStoredOnce()
    {
        QFETCH3(QString, command, QString, stored, QString, shown);
        NoteBox& note = opened->txtCapChamgo();
        Compose(note);
        if (command == u"foot"_s)
            Guarded([] { opened->SetCaptureValues([](const std::exception_ptr&) {}); });
        else if (command == u"section"_s)
            ChooseSection(Colon);
        else if (command == u"line"_s)
            DoubleClick(3, 1, 2);
        else if (command == u"box"_s)
            HangulDesktop::Click(note, {200, 10});
        else if (command == u"large"_s)
            HangulDesktop::Click(opened->sprCap(1), opened->sprCap(1).CellRect(1, 1).bottomRight() - QPoint(14, 14));
        else
            HangulDesktop::Click(*opened->findChild<QToolButton*>(command));
        if (command == u"large"_s) {
            QTRY_VERIFY(opened->findChild<LargePicture*>()->IsOpen());
            QCOMPARE(CompositionIn(&note), u"종"_s);
        }
        AwaitStills();
        QTRY_COMPARE(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20261124'"_s), stored);
        if (command == u"line"_s) {
            QCOMPARE(note.toPlainText(), u"옛 소견"_s);
            Press(u"취소"_s);
        }
        // What the input method hands over late comes before the next key's syllable.
        HangulDesktop::Click(note, {300, 10});
        HangulDesktop::Type(u"End r k"_s);
        QTRY_COMPARE(note.Text(), shown);
    }

    void AReportHoldsItOnce()
    {
        Choose(u"소견서입력"_s);
        frmCapSogyon& screen = Form<frmCapSogyon>();
        auto& findings = *screen.findChild<FindingsBox*>(u"txtSogyon"_s);
        auto& remark = *screen.findChild<FindingsBox*>(u"txtBigo"_s);
        QVERIFY(HangulDesktop::ChooseHangul(screen));
        Compose(findings);
        HangulDesktop::Click(remark);
        HangulDesktop::Type(u"r k"_s);
        QTRY_COMPARE(remark.Text(), u"가"_s);
        QCOMPARE(findings.Text(), u"용종"_s);
        m_box->Desk().answers = {true};
        HangulDesktop::Click(*screen.findChild<QWidget*>(u"cmdSogyon(1)"_s));
        QTRY_COMPARE(m_box->Value(u"SELECT caso_sogyon AS v FROM caso"_s), u"용종"_s);
        QCOMPARE(m_box->Value(u"SELECT caso_bigo AS v FROM caso"_s), u"가"_s);
        HangulDesktop::Click(findings);
        HangulDesktop::Type(u"s k"_s);
        QTRY_COMPARE(findings.Text(), u"나"_s);
        QCOMPARE(remark.Text(), QString());
    }

private:
    /// "용종", the last syllable still being composed.
    static void Compose(LongTextBox& box)
    {
        HangulDesktop::Click(box);
        QTRY_VERIFY(box.hasFocus());
        box.selectAll();
        HangulDesktop::Type(u"d y d w h d"_s);
        QTRY_COMPARE(box.Text(), u"용종"_s);
        QCOMPARE(CompositionIn(&box), u"종"_s);
    }

    std::unique_ptr<StationInABox> m_box;
};

int main(int argc, char** argv)
{
    const HangulDesktop desktop;
    QApplication application(argc, argv);
    InputMethodTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "InputMethodTest.moc"
