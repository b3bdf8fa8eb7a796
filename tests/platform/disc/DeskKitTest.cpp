#include "DiscInABox.h"
#include "frame/controls.h"

using namespace Qt::StringLiterals;

class DeskKitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_box = std::make_unique<DiscInABox>();
        m_kit = CreateObject<clsDeskKit>(u"prjDeskKit.clsDeskKit"_s);
        WriteWholeFile(Source(), "picture");
        QFile source(Source());
        QVERIFY(source.open(QIODevice::ReadWrite));
        QVERIFY(source.setFileTime(QDateTime(QDate(2024, 2, 3), QTime(4, 5, 6)), QFileDevice::FileModificationTime));
    }
    void cleanup() { m_box.reset(); }

    void ATargetThatIsThere_data()
    {
        QTest::addColumn<QStringList>("there"); // Names, each followed by its content.
        QTest::addColumn<QStringList>("after");
        QTest::newRow("nothing") << QStringList{} << QStringList{u"a.b.jpg"_s};
        QTest::newRow("the same") << QStringList{u"a.b.jpg"_s, u"picture"_s} << QStringList{u"a.b.jpg"_s};
        QTest::newRow("another") << QStringList{u"a.b.jpg"_s, u"PICTURE"_s}
                                 << QStringList{u"a.b (2).jpg"_s, u"a.b.jpg"_s};
        QTest::newRow("the same under a number") << QStringList{u"a.b.jpg"_s, u"x"_s, u"a.b (2).jpg"_s, u"picture"_s}
                                                 << QStringList{u"a.b (2).jpg"_s, u"a.b.jpg"_s};
    }

    void ATargetThatIsThere()
    {
        QFETCH2(QStringList, there, QStringList, after);
        for (qsizetype at = 0; at < there.size(); at += 2)
            m_box->Stage(there[at], there[at + 1].toUtf8());
        m_kit->FileCopyDialog(Source(), m_box->staging + u"a.b.jpg"_s);
        QCOMPARE(Staged(), after);
        for (qsizetype at = 0; at < there.size(); at += 2)
            QCOMPARE(Files().ReadFile(m_box->staging + there[at]), there[at + 1].toUtf8());
        const bool wasThere = there.contains(u"picture"_s);
        int copies = 0;
        for (const FolderEntry& entry : Files().Entries(m_box->staging)) {
            if (Files().ReadFile(m_box->staging + entry.Name) == "picture" && !wasThere) {
                ++copies;
                QCOMPARE(entry.DateLastModified, QFileInfo(Source()).lastModified());
            }
        }
        QCOMPARE(copies, wasThere ? 0 : 1);
        QVERIFY(m_box->desk->shown.isEmpty());
    }

    void ACopyThatFailsIsNamed()
    {
        m_kit->FileCopyDialog(Source() + u".gone"_s, m_box->staging + u"x.jpg"_s);
        m_box->files->FailAt(1);
        m_kit->FileCopyDialog(Source(), m_box->staging + u"y.jpg"_s);
        m_kit->FileCopyDialog(Source(), m_box->staging + u"no folder/y.jpg"_s);
        QCOMPARE(m_box->desk->shown.size(), 3);
        QVERIFY(m_box->desk->shown[0].startsWith(u"파일을 복사하지 못했습니다.!! (source.jpg.gone)"_s));
        QVERIFY(m_box->desk->shown[1].contains(u"(source.jpg)"_s) && m_box->desk->shown[1].contains(u"가득"_s));
        QCOMPARE(Staged(), QStringList{});
        m_kit->FileCopyDialog(Source(), m_box->staging + u"y.jpg"_s);
        QCOMPARE(Staged(), QStringList{u"y.jpg"_s});
    }

    void CancelledThereIsNothingOfIt()
    {
        // Longer than any disk copies before the button is found.
        QFile slow(m_box->Images() + u"slow.avi"_s);
        QVERIFY(slow.open(QIODevice::WriteOnly) && slow.resize(64LL << 30));
        QTimer timer;
        connect(&timer, &QTimer::timeout, this, [&] {
            QWidget* window = QApplication::activeModalWidget();
            if (window == nullptr)
                return;
            timer.stop();
            QTest::mouseClick(window->findChild<QPushButton*>(u"cmdCancel"_s), Qt::LeftButton);
        });
        timer.start(10);
        m_kit->FileCopyDialog(slow.fileName(), m_box->staging + u"slow.avi"_s);
        m_kit->FileCopyDialog(Source(), m_box->staging + u"next.jpg"_s);
        QCOMPARE(Staged(), QStringList{});
        QVERIFY(m_box->desk->shown.isEmpty());
    }

private:
    QString Source() const { return m_box->Images() + u"source.jpg"_s; }
    QStringList Staged() const { return QDir(m_box->staging).entryList(QDir::Files | QDir::Hidden, QDir::Name); }

    std::unique_ptr<DiscInABox> m_box;
    std::unique_ptr<clsDeskKit> m_kit;
};

QTEST_MAIN(DeskKitTest)
#include "DeskKitTest.moc"
