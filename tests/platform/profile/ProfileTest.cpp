#include "platform/files/LocalFiles.h"
#include "platform/profile/IniFile.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/profile/windows949.h"
#include "support/testing.h"

using namespace Qt::StringLiterals;

class ProfileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { RegisterFiles(); }

    void init()
    {
        m_folder = std::make_unique<QTemporaryDir>();
        QVERIFY(QDir(m_folder->path()).mkdir(u"설정"_s));
    }

    void reads_data()
    {
        Columns<QByteArray, QString>("content", "expected");
        QTest::newRow("plain") << QByteArray("[Capture Setting]\r\nSizes=3\r\n") << u"3"_s;
        QTest::newRow("names in other letters") << QByteArray("[CAPTURE setting]\nsIZES=3") << u"3"_s;
        QTest::newRow("blanks around") << QByteArray("  [ Capture Setting ] \n \t Sizes \t=   3  \r\n") << u"3"_s;
        QTest::newRow("one quote") << QByteArray("[Capture Setting]\nSizes=\"3") << u"\"3"_s;
        QTest::newRow("no key") << QByteArray("[Capture Setting]\nSize=3\n") << u"0"_s;
        QTest::newRow("another section's")
            << QByteArray("Sizes=1\n[Other]\nSizes=3\n[Capture Setting]\n[More]\nSizes=2") << u"0"_s;
        QTest::newRow("the first counts")
            << QByteArray("[Capture Setting]\nSizes=3\nSizes=4\n[Capture Setting]\nSizes=5") << u"3"_s;
        QTest::newRow("section never closed") << QByteArray("[Capture Setting\nSizes=3") << u"3"_s;
        QTest::newRow("mark of UTF-8") << QByteArray("\xEF\xBB\xBF[Capture Setting]\nSizes=3") << u"3"_s;
        QTest::newRow("Korean of the code page")
            << QByteArray("[Capture Setting]\nSizes=\xB5\xB8\xBF\xF2\xC3\xBC \\ \x8C\x63") << u"돋움체 \\ 똠"_s;
    }

    void reads()
    {
        QFETCH2(QByteArray, content, QString, expected);
        QCOMPARE(Read(u"Capture Setting"_s, u"Sizes"_s), u"0"_s);
        Put(content);
        QCOMPARE(Read(u"Capture Setting"_s, u"Sizes"_s), expected);
    }

    void cutsToTheBuffer_data()
    {
        Columns<QString, int, QString>("value", "size", "expected");
        QTest::newRow("ten digits") << u"1234567890"_s << 10 << u"123456789"_s;
        QTest::newRow("fits") << u"돋움체"_s << 7 << u"돋움체"_s;
        QTest::newRow("half a syllable") << u"돋움체"_s << 6 << u"돋움"_s;
        QTest::newRow("end mark alone") << u"1"_s << 1 << u""_s;
    }

    void cutsToTheBuffer()
    {
        QFETCH3(QString, value, int, size, QString, expected);
        QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, value, Path()));
        QCOMPARE(Read(u"S"_s, u"K"_s, size), expected);
        QCOMPARE(m_profile.GetPrivateProfileString(u"S"_s, u"missing"_s, value, size, Path()), expected);
    }

    void writes_data()
    {
        Columns<QByteArray, QByteArray>("before", "after");
        QTest::newRow("changes the key where it stands")
            << QByteArray("; note\n[A]\nx=1\n[S]\n k = 1\nl=2\n") << QByteArray("; note\n[A]\nx=1\n[S]\n k =7\nl=2\n");
        QTest::newRow("adds a key at the section's end")
            << QByteArray("[s]\r\nl=2\r\n\r\n[A]\r\n") << QByteArray("[s]\r\nl=2\r\nK=7\r\n\r\n[A]\r\n");
        QTest::newRow("adds a section") << QByteArray("[A]\nk=1") << QByteArray("[A]\nk=1\n[S]\nK=7\n");
        QTest::newRow("changes the first of equal keys")
            << QByteArray("[S]\nk=1\nK=2\n") << QByteArray("[S]\nk=7\nK=2\n");
    }

    void writes()
    {
        QFETCH2(QByteArray, before, QByteArray, after);
        Put(before);
        QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
        QCOMPARE(Content(), after);
    }

    /// Bytes that are no text of the code page are another program's, and stay.
    void leavesOtherBytesAlone()
    {
        constexpr char bytes[] = "[\xFF\xFE]\n\x80\x81=\xFF \n\xEC\x9C\x84=\xED\x99\x94\x00z\n";
        const QByteArray odd(bytes, sizeof bytes - 1);
        Put(odd);
        QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
        QVERIFY(Content().startsWith(odd));
    }

    void failsQuietly()
    {
        QVERIFY(QDir(m_folder->path()).rmdir(u"설정"_s));
        QVERIFY(!m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
        QCOMPARE(Read(u"S"_s, u"K"_s), u"0"_s);
    }

private:
    QString Path() const { return m_folder->filePath(u"설정"_s).replace(u'/', u'\\') + u"\\CapSet.ini"_s; }
    void Put(const QByteArray& content)
    {
        QFile file(m_folder->filePath(u"설정/CapSet.ini"_s));
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write(content);
    }

    QByteArray Content() const
    {
        QFile file(m_folder->filePath(u"설정/CapSet.ini"_s));
        return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
    }

    QString Read(const QString& section, const QString& key, int size = 100) const
    {
        return m_profile.GetPrivateProfileString(section, key, u"0"_s, size, Path());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    PrivateProfile m_profile;
};

QTEST_GUILESS_MAIN(ProfileTest)
#include "ProfileTest.moc"
