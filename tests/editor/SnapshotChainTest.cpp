#include "editor/SnapshotChain.h"

#include <QRandomGenerator>
#include <QTest>

#include <array>

using namespace Qt::StringLiterals;

namespace {
/// Canvas and holders with numbers for pictures: 0 is the opened one, each stroke paints the next number.
class Desk
{
public:
    SnapshotChain chain;
    int canvas = 0;
    int strokes = 0;
    std::array<int, SnapshotChain::Holders + 1> holders;

    Desk()
    {
        holders.fill(-1);
        holders[1] = 0;
    }

    void Step(QChar step)
    {
        if (step == u's') {
            holders[At(chain.Press())] = canvas;
            canvas = ++strokes;
            holders[At(chain.HolderIndex())] = canvas;
        } else if (step == u't') { // a text entry that is left again
            holders[At(chain.Press())] = canvas;
            chain.TakeBackPress();
        } else if (const auto holder = step == u'u' ? chain.Undo() : chain.Redo()) {
            canvas = holders[At(*holder)];
        }
    }

    static size_t At(int holder) { return static_cast<size_t>(holder); }
};
} // namespace

class SnapshotChainTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void Sequences_data()
    {
        QTest::addColumn<QString>("steps");
        QTest::addColumn<int>("shown");
        QTest::addColumn<bool>("undo");
        QTest::addColumn<bool>("redo");
        QTest::newRow("opened") << u""_s << 0 << false << false;
        QTest::newRow("a stroke") << u"s"_s << 1 << true << false;
        QTest::newRow("undone") << u"su"_s << 0 << false << true;
        QTest::newRow("and back") << u"sur"_s << 1 << true << true;
        QTest::newRow("redo without a step") << u"surr"_s << 1 << true << true;
        QTest::newRow("four strokes are undone") << u"ssssuuuu"_s << 0 << false << true;
        QTest::newRow("redo ends at the fifth holder") << u"ssssuuuurrrr"_s << 4 << true << false;
        QTest::newRow("a stroke cuts off what lay above") << u"ssuusr"_s << 3 << true << true;
        QTest::newRow("redo stays enabled through strokes") << u"suss"_s << 3 << true << true;
        QTest::newRow("the fifth stroke turns the chain") << u"sssss"_s << 5 << true << false;
        QTest::newRow("nothing before the turn") << u"sssssu"_s << 5 << false << false;
        QTest::newRow("the old holders lie above the turn") << u"sssssrr"_s << 2 << true << false;
        QTest::newRow("the chain starts again") << u"sssssssuu"_s << 5 << false << true;
        QTest::newRow("a text left at once") << u"t"_s << 0 << false << false;
        QTest::newRow("a text left after strokes") << u"sst"_s << 2 << true << false;
        QTest::newRow("then undo goes one stroke back") << u"sstu"_s << 1 << true << true;
        QTest::newRow("a text left keeps redo") << u"ssutr"_s << 2 << true << true;
        QTest::newRow("a text left at the turn") << u"sssstu"_s << 3 << true << true;
    }

    void Sequences()
    {
        QFETCH(QString, steps);
        Desk desk;
        for (const QChar step : steps)
            desk.Step(step);
        QTEST(desk.canvas, "shown");
        QTEST(desk.chain.UndoEnabled(), "undo");
        QTEST(desk.chain.RedoEnabled(), "redo");
    }

    /// What is shown is what the present holder holds, and never an empty one.
    void AnySequenceShowsAStoredPicture()
    {
        QRandomGenerator random(3);
        Desk desk;
        for (int step = 0; step < 10000; ++step) {
            desk.Step(u"ssuurt"[random.bounded(6)]);
            QVERIFY(desk.canvas >= 0);
            QCOMPARE(desk.holders[Desk::At(desk.chain.HolderIndex())], desk.canvas);
        }
    }
};

QTEST_APPLESS_MAIN(SnapshotChainTest)
#include "SnapshotChainTest.moc"
