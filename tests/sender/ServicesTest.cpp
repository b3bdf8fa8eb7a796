#include "contracts/LocalDatabase.h"
#include "filing/DeletionJob.h"
#include "filing/PictureRecord.h"
#include "pacs/PacsHandover.h"
#include "support/CaptureScreen.h"
#include "support/EditorInABox.h"
#include "support/PacsPeer.h"
#include "support/PacsServer.h"
#include "support/SenderInABox.h"

using namespace Qt::StringLiterals;
using namespace capture_screen;
using service_rows::WorklistState;

namespace {

constexpr int LongMs = 60'000;

/// Only a visit of this day can't have been sent by an earlier release.
QString ThisDay()
{
    return QDate::currentDate().toString(u"yyyyMMdd"_s);
}

Visit VisitOfThisDay()
{
    return VisitOf(QString::fromUtf16(StationInABox::Chart), u"01"_s, ThisDay(), Stomach);
}

std::unique_ptr<LocalDatabase> Local()
{
    return UseService<LocalDatabases>().Open(SenderQueue::Path());
}

/// An entry of a worklist, as dump2dcm reads it.
struct Entry
{
    QByteArray accession;
    QByteArray code;
    QByteArray patient = "A-00001234";
    QByteArray modality = "ES";
    QByteArray text = "위내시경";
};

} // namespace

/// The real sender with the hospital's other servers, each in the ways that it may behave.
class ServicesTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<EditorInABox>();
        m_peer = std::make_unique<PacsPeer>();
        m_peer->Start();
        m_sender = std::make_unique<SenderInABox>(*m_box, m_peer->Port());
    }
    void cleanup()
    {
        m_pacs.reset();
        m_sender.reset();
        m_box.reset();
        m_peer.reset();
    }

    /// The one order that fits is taken, of several the one that the operator chooses; nobody else's, and no other
    /// section's; and what stands in it can't be anything but a text.
    void AnOrderIsTaken_data()
    {
        Columns<QList<Entry>, QString, QString>("entries", "choose", "taken");
        const QString none;
        QTest::newRow("none") << QList<Entry>{} << none << none;
        QTest::newRow("of another patient") << QList<Entry>{{"A1", "C1", "A-00001235"}} << none << none;
        QTest::newRow("by its modality") << QList<Entry>{{"A1", "C1"}, {"A2", "C2", "A-00001234", "US"}} << none
                                         << u"A1"_s;
        QTest::newRow("by its code") << QList<Entry>{{"A1", "COLON"}, {"A2", "STOMACH", "A-00001234", "OT"}} << none
                                     << u"A2"_s;
        QTest::newRow("chosen") << QList<Entry>{{"A1", "C1", "A-00001234", "ES", "위<b>'x"}, {"A2", "C2"}} << u"A2"_s
                                << u"A2"_s;
    }

    void AnOrderIsTaken()
    {
        QFETCH3(QList<Entry>, entries, QString, choose, QString, taken);
        PacsServer worklist;
        WriteEntries(worklist, entries);
        Start("[Worklist]\nHost=127.0.0.1\nCalledAet=WL\nCode.STOMACH=위내시경\nCode.COLON=대장내시경\nPort=" +
              QByteArray::number(worklist.Port()) + '\n');
        QList<service_rows::Offer> offers;
        connect(m_pacs.get(), &PacsHandover::WorklistChanged, this,
                [&offers](const QString&, const QList<service_rows::Offer>& offered) { offers = offered; });
        m_pacs->VisitIsShown(VisitOfThisDay());
        if (!choose.isEmpty()) {
            QTRY_COMPARE_WITH_TIMEOUT(offers.size(), 2, LongMs);
            const auto chosen = std::ranges::find_if(
                offers, [&choose](const service_rows::Offer& offer) { return offer.text.contains(choose); });
            QVERIFY(chosen != offers.end());
            m_pacs->Choose(chosen->key);
        }
        const WorklistState wanted = taken.isEmpty() ? WorklistState::Nothing : WorklistState::Taken;
        const auto isSettled = [&] {
            const auto found = SenderQueue().WorklistOf(VisitOfThisDay());
            return found && found->state == wanted;
        };
        QTRY_VERIFY_WITH_TIMEOUT(isSettled(), LongMs);
        QCOMPARE(m_box->Value(u"SELECT MAX( st_accession ) AS v FROM ca_study"_s), taken);
        QCOMPARE(m_box->Value(u"SELECT MAX( uid_study ) AS v FROM ca_uid"_s),
                 taken.isEmpty() ? QString() : u"1.2.3.4."_s + taken.last(1));
        QCOMPARE(m_box->Value(u"SELECT MAX( st_referring ) AS v FROM ca_study"_s),
                 taken.isEmpty() ? QString() : u"김^의사"_s);
    }

    /// What is begun is told once, and what was done as well, whoever dies meanwhile and whatever the server thinks.
    void AStepIsToldOnce_data()
    {
        Columns<QStringList, bool, bool, QStringList>("options", "isLeft", "isDeleted", "told");
        const QString all = u"set COMPLETED 2"_s;
        const QString begun = u"create IN PROGRESS 0"_s;
        const QStringList usual{begun, all};
        QTest::newRow("closed") << QStringList{} << false << false << usual;
        QTest::newRow("the station dies") << QStringList{} << true << false << usual;
        QTest::newRow("nothing is left") << QStringList{} << false << true
                                         << QStringList{begun, u"set DISCONTINUED 0"_s};
        QTest::newRow("known already") << QStringList{u"--step-statuses"_s, u"0111,0110"_s, u"--comment"_s,
                                                      u"may no longer be updated"_s}
                                       << false << false << usual;
        QTest::newRow("refused") << QStringList{u"--step-statuses"_s, u"0106"_s} << false << false
                                 << QStringList{begun};
    }

    void AStepIsToldOnce()
    {
        QFETCH4(QStringList, options, bool, isLeft, bool, isDeleted, QStringList, told);
        m_peer->Start(options);
        Start("[Mpps]\nHost=127.0.0.1\nPort=" + QByteArray::number(m_peer->Port()) + '\n');
        HandOver(2);
        if (told.size() > 1)
            QTRY_COMPARE_WITH_TIMEOUT(Steps().size(), 1, LongMs);
        if (isDeleted) {
            DeletionJob job;
            job.visit = VisitOfThisDay();
            job.items = {DeletionJob::Item{1}, DeletionJob::Item{2}};
            m_pacs->Outlet()->Withdraw(job);
        } else {
            m_pacs->VisitIsStored(VisitOfThisDay());
            QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), 2, LongMs);
        }
        // Nobody sends any more when the screen closes.
        if (options.isEmpty())
            QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded(), LongMs);
        if (isLeft) {
            m_sender->Kill();
            // The mark of a process that has never been.
            Local()->Run({u"UPDATE step SET mark = mark || '0'"_s});
            m_sender->Start();
        } else {
            m_pacs->End();
        }
        QTRY_COMPARE_WITH_TIMEOUT(Steps(), told, LongMs);
        QTRY_VERIFY_WITH_TIMEOUT(m_sender->HasEnded(), LongMs);
        QCOMPARE(Steps(), told);
        const auto found = SenderQueue::In(m_box->Desk().ProgramFolder() + u'\\');
        QCOMPARE(found[0].steps.size(), told.size() > 1 ? 0 : 1);
    }

    /// The server answers for what it has, on whichever connection; what it hasn't goes once more, and is told then.
    void TheServerAnswersForPictures_data()
    {
        Columns<QStringList, int, int, int>("options", "stored", "committed", "failed");
        QTest::newRow("on the same connection") << QStringList{u"same"_s} << 2 << 2 << 0;
        QTest::newRow("on another one") << QStringList{u"other"_s} << 2 << 2 << 0;
        QTest::newRow("not at first") << QStringList{u"same"_s, u"--commit-failed"_s, u"1"_s} << 4 << 2 << 0;
        QTest::newRow("never") << QStringList{u"other"_s, u"--commit-failed"_s, u"9"_s} << 4 << 0 << 2;
        QTest::newRow("says nothing") << QStringList{u"never"_s} << 2 << 0 << 0;
    }

    void TheServerAnswersForPictures()
    {
        QFETCH4(QStringList, options, int, stored, int, committed, int, failed);
        const PacsServer free;
        const QString port = QString::number(free.Port());
        m_peer->Start(QStringList{u"--commit-port"_s, port, u"--commit"_s} + options);
        Start("CommitPort=" + port.toLatin1() + '\n');
        HandOver(2);
        m_pacs->VisitIsStored(VisitOfThisDay());
        const auto count = [](const QString& state) {
            return Local()
                ->Rows(u"SELECT COUNT( * ) FROM picture WHERE state = '%1'"_s.arg(state))
                .value(0)
                .value(0)
                .toInt();
        };
        QTRY_COMPARE_WITH_TIMEOUT(m_peer->Objects().size(), stored, LongMs);
        QTRY_COMPARE_WITH_TIMEOUT(count(u"committed"_s), committed, LongMs);
        QTRY_COMPARE_WITH_TIMEOUT(SenderQueue().Look().uncommitted, failed, LongMs);
        for (const QStringList& line : m_peer->Told())
            QVERIFY2(line[0] != u"report" || line[1] == u"0", qPrintable(line.join(u' ')));
        QCOMPARE(count(u"sent"_s), 2 - committed);
    }

private:
    void Start(const QByteArray& setup)
    {
        m_sender->WriteSetup(m_peer->Port(), "PatientIdPrefix=A-\nInstitution=31100001\n" + setup);
        m_pacs = PacsHandover::ForSetup(ClientSetup, SaupTable, Launched());
    }

    void HandOver(int count)
    {
        for (int number = 1; number <= count; ++number) {
            m_box->AddPicture(ThisDay(), Stomach, number, number == 1 ? u""_s : QString());
            m_pacs->Outlet()->HandOver(
                PictureRecord{u"picture%1"_s.arg(number), VisitOfThisDay(), PictureState::OnShare, number});
        }
    }

    /// What the peer was told of steps: what, the step's own status, and of how many objects.
    QStringList Steps() const
    {
        QStringList lines;
        for (const QStringList& line : m_peer->Told())
            lines << line[0] + u' ' + line.value(2) + u' ' + line.value(4);
        return lines;
    }

    static void WriteEntries(PacsServer& server, const QList<Entry>& entries)
    {
        QStringList dumps;
        for (const Entry& entry : entries) {
            const QByteArray code =
                "(0008,0100) SH [" + entry.code + "]\n(0008,0102) SH [99H]\n(0008,0104) LO [" + entry.text + "]\n";
            dumps << QString::fromUtf8(
                "(0008,0005) CS [ISO_IR 192]\n(0008,0050) SH [" + entry.accession +
                "]\n(0008,0090) PN [김^의사]\n(0010,0010) PN [홍길동]\n(0010,0020) LO [" + entry.patient +
                "]\n(0020,000d) UI [1.2.3.4." + entry.accession.last(1) + "]\n(0032,1060) LO [" + entry.text +
                "]\n(0032,1064) SQ\n(fffe,e000) -\n" + code +
                "(fffe,e00d) -\n(fffe,e0dd) -\n(0040,0100) SQ\n(fffe,e000) -\n" + "(0008,0060) CS [" + entry.modality +
                "]\n(0040,0001) AE [WL]\n(0040,0002) DA [" + ThisDay().toLatin1() +
                "]\n(0040,0003) TM [1030]\n(0040,0007) LO [x]\n(0040,0009) SH [S" + entry.accession +
                "]\n(fffe,e00d) -\n(fffe,e0dd) -\n(0040,1001) SH [R" + entry.accession + "]\n");
        }
        server.StartWorklist(dumps);
    }

    std::unique_ptr<EditorInABox> m_box;
    std::unique_ptr<PacsPeer> m_peer;
    std::unique_ptr<SenderInABox> m_sender;
    std::unique_ptr<PacsHandover> m_pacs;
};

QTEST_MAIN(ServicesTest)
#include "ServicesTest.moc"
