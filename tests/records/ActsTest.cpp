#include "capture/frmCapture.h"
#include "platform/sql/register_sql.h"
#include "records/ActJournal.h"
#include "screenparts/LargePicture.h"
#include "support/CaptureScreen.h"
#include "support/EditorInABox.h"

#include <csignal>

using namespace Qt::StringLiterals;
using namespace capture_screen;

namespace {

constexpr int LongMs = 30'000;
const QString Kinds = u"SELECT GROUP_CONCAT( log_kind || '/' || log_number || '/' || log_refused, ' ' ) AS v FROM "
                      "( SELECT * FROM ca_log ORDER BY log_no )"_s;

void Keep()
{
    InstallService<ActJournal>(nullptr);
    InstallService<ActJournal>(std::make_unique<ActJournal>(ActSource{u"test"_s, u"here"_s, u"root (kim)"_s}));
}

/// A process whose acts find no database, until it is killed.
int RunWithoutDatabase(const QString& folder)
{
    ScriptedDesktop::Install().folder = folder;
    RegisterFiles();
    RegisterSql();
    Keep();
    for (int number = 1; number <= 5; ++number)
        acts::Record(acts::Kind::DraggedOut, Visit{u"00001234"_s, {}, Day, Stomach, {}, {}}, number);
    std::puts("ready");
    std::fflush(stdout);
    return QApplication::exec();
}

} // namespace

/// The record of access and change: what was done stands there, in order, each act once.
class ActsTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<EditorInABox>();
        Keep();
    }
    void cleanup()
    {
        InstallService<ActJournal>(nullptr);
        m_box.reset();
    }

    void ADrivenVisitStandsThereOnce()
    {
        m_box->AddPicture(u"20250301"_s, Stomach, 1, u"앞의 글"_s);
        OpenWithOneStill();
        Press(u"캡쳐"_s);
        Type(u"새 글"_s);
        Press(u"저장"_s);
        QTRY_COMPARE_WITH_TIMEOUT(m_box->Value(u"SELECT ca_chamgo AS v FROM ca WHERE ca_ymd = '20261124'"_s).trimmed(),
                                  u"새 글"_s, LongMs);
        Type(u"고친 글"_s);
        Press(u"저장"_s);
        QTRY_COMPARE_WITH_TIMEOUT(m_box->Value(u"SELECT COUNT(*) AS v FROM ca_log"_s), u"4"_s, LongMs);
        QCOMPARE(m_box->Value(u"SELECT log_before AS v FROM ca_log ORDER BY log_no DESC LIMIT 1"_s).trimmed(),
                 u"새 글"_s);
        ShowLine(u"20250301"_s);
        // Large, twice, and one that is before the operator anyway.
        for (const auto& [element, column] : {std::pair(2, 2), {2, 2}, {1, 1}}) {
            QSignalSpy shown(opened->findChild<LargePicture*>(), &LargePicture::PictureShown);
            Q_EMIT opened->sprCap(element).LensClicked(column, 1);
            QTRY_VERIFY(shown.size() == 1 || !opened->findChild<QLabel*>(u"largeCaption(1)"_s)->text().isEmpty());
        }
        m_box->OnceOpen([](frmImgEdit&) {
            EditorInABox::Tool(3);
            EditorInABox::Drag({100, 100}, {540, 380});
            EditorInABox::Click(u"cmdISave"_s);
            EditorInABox::Click(u"cmdIExit"_s);
        });
        DoubleClick(2, 2, 1);
        m_box->Desk().answers = {true};
        ChooseOver(1, 2, 1, u"그림지우기"_s);
        const QString expected =
            u"filed/1/0 filed/2/0 note-stored/0/0 note-stored/0/0 history-opened/0/0 looked-at/1/0 looked-at/1/0 "
            "marked-up/1/0 deleted/2/0"_s;
        QTRY_COMPARE_WITH_TIMEOUT(m_box->Value(Kinds), expected, LongMs);
        QCOMPARE(m_box->Value(u"SELECT DISTINCT log_user || log_chart AS v FROM ca_log"_s), u"root (kim)00001234"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT( DISTINCT log_seq ) AS v FROM ca_log"_s), u"9"_s);
    }

    /// An outage keeps them here, a death hands them to the next, and none comes twice.
    void NoneIsLostAndNoneDoubled()
    {
        InstallService<ActJournal>(nullptr);
        QProcess dying;
        dying.start(QCoreApplication::applicationFilePath(), {u"acts"_s, m_box->Desk().ProgramFolder()});
        QVERIFY(dying.waitForReadyRead(LongMs));
        const QDir folder(m_box->Desk().ProgramFolder());
        QTRY_COMPARE_WITH_TIMEOUT(folder.entryList({u"Acts-*.journal"_s}).size(), 1, LongMs);
        QTest::qWait(300); // They are written behind the call.
        dying.kill();
        dying.waitForFinished();
        for (int start = 0; start < 2; ++start) {
            Keep();
            acts::Act last{acts::Kind::Administered};
            last.key = u"the program's last word"_s;
            acts::Record(last);
            UseService<ActJournal>().End(LongMs);
            QCOMPARE(m_box->Value(u"SELECT GROUP_CONCAT( log_number ) AS v FROM "
                                  "( SELECT * FROM ca_log ORDER BY log_number )"_s),
                     u"0,1,2,3,4,5"_s);
        }
        QCOMPARE(folder.entryList({u"Acts-*"_s}), QStringList());
    }

    void WithoutTheTableTheStationWorks()
    {
        m_box->Run(u"DROP TABLE ca_log"_s);
        OpenWithOneStill();
        Press(u"저장"_s);
        QCOMPARE(m_box->Value(u"SELECT COUNT(*) AS v FROM cap"_s), u"1"_s);
        UseService<ActJournal>().End(LongMs);
        QCOMPARE(QDir(m_box->Desk().ProgramFolder()).entryList({u"Acts-*"_s}), QStringList());
    }

private:
    static void Type(const QString& text)
    {
        opened->txtCapChamgo().setPlainText(text);
        opened->txtCapChamgo().document()->setModified(true);
    }

    std::unique_ptr<EditorInABox> m_box;
};

int main(int argc, char* argv[])
{
    QApplication application(argc, argv);
    const QStringList arguments = QApplication::arguments();
    if (arguments.value(1) == u"acts"_s)
        return RunWithoutDatabase(arguments[2]);
    ActsTest test;
    return QTest::qExec(&test, argc, argv);
}

#include "ActsTest.moc"
