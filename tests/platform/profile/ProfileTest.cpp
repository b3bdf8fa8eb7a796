#include "platform/files/LocalFiles.h"
#include "platform/profile/IniFile.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/profile/windows949.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QTest>

using namespace Qt::StringLiterals;

class ProfileTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();

    void reads_data();
    void reads();
    void cutsToTheBuffer_data();
    void cutsToTheBuffer();
    void writes_data();
    void writes();
    void leavesOtherBytesAlone();
    void makesTheFile();
    void failsQuietly();
    void writtenValuesReadBack_data();
    void writtenValuesReadBack();

private:
    QString Path() const { return m_folder->filePath(u"설정"_s).replace(u'/', u'\\') + u"\\CapSet.ini"_s; }
    void Put(const QByteArray& content);
    QByteArray Content() const;
    QString Read(const QString& section, const QString& key, int size = 100) const
    {
        return m_profile.GetPrivateProfileString(section, key, u"0"_s, size, Path());
    }

    std::unique_ptr<QTemporaryDir> m_folder;
    PrivateProfile m_profile;
};

void ProfileTest::initTestCase()
{
    RegisterFiles();
}

void ProfileTest::init()
{
    m_folder = std::make_unique<QTemporaryDir>();
    QVERIFY(QDir(m_folder->path()).mkdir(u"설정"_s));
}

void ProfileTest::Put(const QByteArray& content)
{
    QFile file(m_folder->filePath(u"설정/CapSet.ini"_s));
    QVERIFY(file.open(QIODevice::WriteOnly));
    file.write(content);
}

QByteArray ProfileTest::Content() const
{
    QFile file(m_folder->filePath(u"설정/CapSet.ini"_s));
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void ProfileTest::reads_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("expected");
    QTest::newRow("plain") << QByteArray("[Capture Setting]\r\nSizes=3\r\n") << u"3"_s;
    QTest::newRow("names in other letters") << QByteArray("[CAPTURE setting]\nsIZES=3") << u"3"_s;
    QTest::newRow("blanks around") << QByteArray("  [ Capture Setting ] \n \t Sizes \t=   3  \r\n") << u"3"_s;
    QTest::newRow("quotes") << QByteArray("[Capture Setting]\nSizes=\" 3 \"") << u" 3 "_s;
    QTest::newRow("one quote") << QByteArray("[Capture Setting]\nSizes=\"3") << u"\"3"_s;
    QTest::newRow("equals signs") << QByteArray("[Capture Setting]\nSizes==3=") << u"=3="_s;
    QTest::newRow("no value") << QByteArray("[Capture Setting]\nSizes=\n") << u""_s;
    QTest::newRow("no key") << QByteArray("[Capture Setting]\nSize=3\n") << u"0"_s;
    QTest::newRow("another section's") << QByteArray("Sizes=1\n[Other]\nSizes=3\n[Capture Setting]\n[More]\nSizes=2")
                                       << u"0"_s;
    QTest::newRow("the first counts") << QByteArray("[Capture Setting]\nSizes=3\nSizes=4\n[Capture Setting]\nSizes=5")
                                      << u"3"_s;
    QTest::newRow("comment") << QByteArray("[Capture Setting]\n;Sizes=1\nSizes=3\n") << u"3"_s;
    QTest::newRow("line without a sign") << QByteArray("[Capture Setting]\nSizes\n=9\nSizes=3") << u"3"_s;
    QTest::newRow("section never closed") << QByteArray("[Capture Setting\nSizes=3") << u"3"_s;
    QTest::newRow("mark of UTF-8") << QByteArray("\xEF\xBB\xBF[Capture Setting]\nSizes=3") << u"3"_s;
    QTest::newRow("Korean of the code page")
        << QByteArray("[Capture Setting]\nSizes=\xB5\xB8\xBF\xF2\xC3\xBC \\ \x8C\x63") << u"돋움체 \\ 똠"_s;
    QTest::newRow("empty file") << QByteArray() << u"0"_s;
}

void ProfileTest::reads()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, expected);
    QCOMPARE(Read(u"Capture Setting"_s, u"Sizes"_s), u"0"_s);
    Put(content);
    QCOMPARE(Read(u"Capture Setting"_s, u"Sizes"_s), expected);
}

void ProfileTest::cutsToTheBuffer_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("size");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ten digits") << u"1234567890"_s << 10 << u"123456789"_s;
    QTest::newRow("fits") << u"돋움체"_s << 7 << u"돋움체"_s;
    QTest::newRow("half a syllable") << u"돋움체"_s << 6 << u"돋움"_s;
    QTest::newRow("end mark alone") << u"1"_s << 1 << u""_s;
    QTest::newRow("no buffer") << u"1"_s << 0 << u""_s;
}

void ProfileTest::cutsToTheBuffer()
{
    QFETCH(QString, value);
    QFETCH(int, size);
    QFETCH(QString, expected);
    QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, value, Path()));
    QCOMPARE(Read(u"S"_s, u"K"_s, size), expected);
    QCOMPARE(m_profile.GetPrivateProfileString(u"S"_s, u"missing"_s, value, size, Path()), expected);
}

void ProfileTest::writes_data()
{
    QTest::addColumn<QByteArray>("before");
    QTest::addColumn<QByteArray>("after");
    QTest::newRow("changes the key where it stands")
        << QByteArray("; note\n[A]\nx=1\n[S]\n k = 1\nl=2\n") << QByteArray("; note\n[A]\nx=1\n[S]\n k =7\nl=2\n");
    QTest::newRow("adds a key at the section's end")
        << QByteArray("[s]\r\nl=2\r\n\r\n[A]\r\n") << QByteArray("[s]\r\nl=2\r\nK=7\r\n\r\n[A]\r\n");
    QTest::newRow("adds a section") << QByteArray("[A]\nk=1") << QByteArray("[A]\nk=1\n[S]\nK=7\n");
    QTest::newRow("changes the first of equal keys") << QByteArray("[S]\nk=1\nK=2\n") << QByteArray("[S]\nk=7\nK=2\n");
}

void ProfileTest::writes()
{
    QFETCH(QByteArray, before);
    QFETCH(QByteArray, after);
    Put(before);
    QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
    QCOMPARE(Content(), after);
}

/// Bytes that are no text of the code page are another program's, and stay.
void ProfileTest::leavesOtherBytesAlone()
{
    constexpr char bytes[] = "[\xFF\xFE]\n\x80\x81=\xFF \n\xEC\x9C\x84=\xED\x99\x94\x00z\n";
    const QByteArray odd(bytes, sizeof bytes - 1);
    Put(odd);
    QVERIFY(m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
    QVERIFY(Content().startsWith(odd));
}

void ProfileTest::makesTheFile()
{
    for (const QString& key : {u"Devices"_s, u"Sizes"_s, u"Colors"_s, u"sources"_s})
        QVERIFY(m_profile.WritePrivateProfileString(u"Capture Setting"_s, key, u"2"_s, Path()));
    QCOMPARE(Content(), QByteArray("[Capture Setting]\r\nDevices=2\r\nSizes=2\r\nColors=2\r\nsources=2\r\n"));
    QCOMPARE(Read(u"Capture Setting"_s, u"Sources"_s, 10), u"2"_s);
}

void ProfileTest::failsQuietly()
{
    QVERIFY(QDir(m_folder->path()).rmdir(u"설정"_s));
    QVERIFY(!m_profile.WritePrivateProfileString(u"S"_s, u"K"_s, u"7"_s, Path()));
    QCOMPARE(Read(u"S"_s, u"K"_s), u"0"_s);
}

void ProfileTest::writtenValuesReadBack_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("expected");
    QTest::newRow("font") << u"나눔고딕코딩"_s << u"나눔고딕코딩"_s;
    QTest::newRow("rare syllables") << u"펲시 똠방각하 뷁"_s << u"펲시 똠방각하 뷁"_s;
    QTest::newRow("other letters") << u"ⓐ①── Д"_s << u"ⓐ①── Д"_s;
    QTest::newRow("outside the code page") << u"é😀가𠀀ᄀ"_s << u"??가??"_s;
    QTest::newRow("line ends") << u"a\r\n[b]\nc"_s << u"a [b] c"_s;
}

void ProfileTest::writtenValuesReadBack()
{
    QFETCH(QString, value);
    QFETCH(QString, expected);
    QVERIFY(m_profile.WritePrivateProfileString(u"글꼴"_s, u"이름"_s, value, Path()));
    QCOMPARE(Read(u"글꼴"_s, u"이름"_s), expected);
}

QTEST_GUILESS_MAIN(ProfileTest)
#include "ProfileTest.moc"
