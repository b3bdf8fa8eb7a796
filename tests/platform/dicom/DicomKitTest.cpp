#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/LocalFiles.h"
#include "support/PacsServer.h"
#include "support/PictureFiles.h"
#include "support/ScriptedDesktop.h"

using namespace Qt::StringLiterals;

namespace {

QByteArray Jpeg(QSize size, QImage::Format format = QImage::Format_RGB32, int quality = 90)
{
    QImage picture(size, format);
    picture.fill(Qt::white);
    QPainter painter;
    if (format == QImage::Format_RGB32) {
        painter.begin(&picture);
        for (int line = 0; line < size.height(); line += 7)
            painter.fillRect(0, line, line, 5, QColor::fromHsv(line % 360, 200, 200));
        painter.end();
    }
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    if (!picture.save(&buffer, "JPEG", quality))
        qFatal("no picture");
    return jpeg;
}

/// With a camera's and a program's segments behind the mark of the start.
QByteArray WithSegments(QByteArray jpeg)
{
    return jpeg.insert(2, QByteArray("\xFF\xE1\0\x0D"
                                     "Exif\0\0place"
                                     "\xFF\xFE\0\x06"
                                     "name",
                                     23));
}

QByteArray FromFirstTable(const QByteArray& jpeg)
{
    return jpeg.sliced(jpeg.indexOf("\xFF\xDB"));
}

DicomPicture Gildong()
{
    DicomPicture picture;
    picture.chart = u"00001234"_s;
    picture.patientName = u"홍길동"_s;
    picture.birthDate = u"19800101"_s;
    picture.sex = u"M"_s;
    picture.ymd = u"20261124"_s;
    picture.section = u"위내시경"_s;
    picture.takenAt = QDateTime(QDate(2026, 11, 24), QTime(10, 11, 12));
    picture.doctor = u"김의사"_s;
    picture.institution = u"한국의원"_s;
    picture.identity.institution = u"31100001"_s;
    picture.number = 7;
    return picture;
}

} // namespace

class DicomKitTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        ScriptedDesktop::Install();
        RegisterFiles();
        RegisterDicom();
        m_kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
    }
    void cleanup() { m_kit.reset(); }

    /// Another system must find every object whole by the standard, and the coded picture byte for byte.
    void ObjectsHoldTheStandard_data()
    {
        Columns<QByteArray, QString, QString>("content", "name", "shown");
        const QByteArray colour = Jpeg({640, 480});
        QTest::newRow("colour") << colour << u"홍길동"_s << u"홍길동"_s;
        QTest::newRow("fine colours, odd size")
            << Jpeg({641, 479}, QImage::Format_RGB32, 100) << u"홍길동"_s << u"홍길동"_s;
        QTest::newRow("grey") << Jpeg({320, 201}, QImage::Format_Grayscale8) << u"홍길동"_s << u"홍길동"_s;
        QTest::newRow("segments of a camera") << WithSegments(colour) << u"홍길동"_s << u"홍길동"_s;
        QTest::newRow("separators in the name")
            << colour << u" 홍^길\\동=[1]\n(0010,0040) CS [F]"_s << u"홍 길 동 [1] (0010,0040) CS [F]"_s;
        QTest::newRow("a long name") << colour << QString(9000, u'H') << QString(64, u'H');
        QTest::newRow("no name") << colour << QString() << QString();
    }

    void ObjectsHoldTheStandard()
    {
        QFETCH3(QByteArray, content, QString, name, QString, shown);
        DicomPicture picture = Gildong();
        picture.patientName = name;
        if (name.isEmpty())
            picture.birthDate = picture.sex = picture.doctor = picture.institution = QString();
        const QString path = m_kit->WorkFolder() + u"1.dcm"_s;
        const DicomOutcome outcome = m_kit->MakeObject(content, picture, path, {});
        QVERIFY2(outcome.kind == DicomOutcome::Accepted, qPrintable(outcome.reason));
        const QString verdict = PacsServer::Run(u"dciodvfy"_s, {NativePath(path)});
        QVERIFY2(verdict.contains(u"VLEndoscopicImage"_s) && !verdict.contains(u"Error"_s), qPrintable(verdict));
        const auto element = [&path](const char* tag) { return PacsServer::Element(NativePath(path), tag); };
        QCOMPARE(element("0010,0010"), shown);
        QCOMPARE(element("0010,0040"), picture.sex);
        QCOMPARE(element("0010,0020"), picture.chart);
        QCOMPARE(element("0008,0018"), InstanceUid(picture, content));
        const QImage decoded = QImage::fromData(content);
        QCOMPARE(element("0028,0010") + u' ' + element("0028,0011"),
                 u"%1 %2"_s.arg(decoded.height()).arg(decoded.width()));
        const QByteArray object = Files().ReadFile(path);
        QVERIFY(object.contains(FromFirstTable(content)));
        QVERIFY(!object.contains("Exif"));
        // Nothing of the patient stays behind but in the object.
        QCOMPARE(Files().Entries(m_kit->WorkFolder()).size(), 1);
        QCOMPARE(QFileInfo(NativePath(m_kit->WorkFolder())).permissions() & (QFile::ReadGroup | QFile::ReadOther),
                 QFile::Permissions());
    }

    /// No viewer would show these: they mustn't leave as objects.
    void OtherContentIsSetAside()
    {
        PictureFiles files;
        const QByteArray whole = Jpeg({64, 48});
        const QByteArray progressive = files.Made(u"convert colours.png -interlace JPEG p.jpg"_s, u"p.jpg"_s);
        const QByteArray cmyk = files.Made(u"convert colours.png -colorspace CMYK c.jpg"_s, u"c.jpg"_s);
        for (const QByteArray& content :
             {progressive, cmyk, whole.left(200), QByteArray(), PictureFiles::Blank({8, 8}, "bmp")}) {
            const DicomOutcome outcome = m_kit->MakeObject(content, Gildong(), m_kit->WorkFolder() + u"1.dcm"_s, {});
            QCOMPARE(outcome.kind, DicomOutcome::Refused);
            QVERIFY(outcome.reason.contains(u".!!"_s));
        }
    }

    /// One study for a visit, another one where anything of it differs; a marked-up picture is a new instance.
    void IdentifiersTellVisitsApart()
    {
        const DicomPicture one = Gildong();
        QSet<QString> studies{StudyUid(one)};
        QSet<QString> instances{InstanceUid(one, "a"), InstanceUid(one, "b")};
        DicomPicture elsewhere = one;
        elsewhere.identity.institution += u'1';
        QList<DicomPicture> others{elsewhere};
        for (QString DicomPicture::*field : {&DicomPicture::chart, &DicomPicture::ymd, &DicomPicture::section}) {
            others << one;
            others.last().*field += u'1';
        }
        for (const DicomPicture& other : others) {
            studies << StudyUid(other);
            instances << InstanceUid(other, "a");
        }
        QCOMPARE(studies.size(), 5);
        QCOMPARE(instances.size(), 6);
        DicomPicture rooted = one;
        rooted.identity.uidRoot = u"1.2.410.200000.1234567.9"_s;
        for (const QString& uid : {StudyUid(rooted), InstanceUid(rooted, "a"), SeriesUid(one)}) {
            QVERIFY(uid.size() <= 64);
            QVERIFY(
                QRegularExpression(uR"(^(2\.25|1\.2\.410\.200000\.1234567\.9)\.[1-9]\d+$)"_s).match(uid).hasMatch());
        }
    }

    /// What became of each object, by a server of every kind.
    void EachObjectHasItsAnswer_data()
    {
        Columns<QString, QList<int>, QString>("server", "kinds", "reason");
        using enum DicomOutcome::Kind;
        const QList<int> allAway{Away, Away};
        QTest::newRow("takes them") << u"+xa"_s << QList<int>{Accepted, Accepted} << QString();
        QTest::newRow("nobody") << u"none"_s << allAway << u"연결할 수 없습니다"_s;
        QTest::newRow("lets nobody in") << u"--refuse"_s << allAway << u"연결을 거부"_s;
        QTest::newRow("takes no JPEG") << u"+xi"_s << QList<int>{Refused, Refused} << u"받지 않습니다"_s;
        QTest::newRow("breaks off") << u"--abort-during +xa"_s << QList<int>{Cut, Away} << u"끊겼습니다"_s;
        QTest::newRow("refuses the first") << u"quota"_s << QList<int>{Refused, Accepted} << u"OutOfResources"_s;
    }

    void EachObjectHasItsAnswer()
    {
        QFETCH3(QString, server, QList<int>, kinds, QString, reason);
        PacsServer pacs;
        if (server == u"quota"_s)
            pacs.StartWithQuota(30'000);
        else if (server != u"none"_s)
            pacs.Start(server.split(u' '));
        QStringList paths;
        for (const QSize size : {QSize(1280, 960), QSize(64, 48)}) {
            paths << m_kit->WorkFolder() + QString::number(paths.size()) + u".dcm"_s;
            QCOMPARE(m_kit->MakeObject(Jpeg(size), Gildong(), paths.last(), {}).kind, DicomOutcome::Accepted);
        }
        QList<int> found;
        const DicomPeer peer{u"127.0.0.1"_s, pacs.Port(), u"ANY-SCP"_s, u"TEST"_s};
        const QList<DicomOutcome> outcomes = m_kit->Send(peer, paths, {});
        for (const DicomOutcome& outcome : outcomes)
            found << outcome.kind;
        QCOMPARE(found, kinds);
        QVERIFY2(outcomes[0].reason.contains(reason), qPrintable(outcomes[0].reason));
        QCOMPARE(m_kit->Echo(peer, {}).kind == DicomOutcome::Accepted, server != u"none"_s && server != u"--refuse"_s);
    }

    /// A viewer that opens the disc finds what lies on it, and nothing else.
    void ADirectoryTellsWhatIsThere()
    {
        QTemporaryDir disc;
        const QString folder = disc.path() + u'\\';
        MakeFolder(folder + u"DICOM"_s);
        for (const int number : {1, 2}) {
            DicomPicture picture = Gildong();
            picture.number = number;
            const QString made = m_kit->WorkFolder() + u"x.dcm"_s;
            QCOMPARE(m_kit->MakeObject(Jpeg({64, 48}), picture, made, {}).kind, DicomOutcome::Accepted);
            QCOMPARE(Files().CopyToNewFile(made, folder + u"DICOM\\0000000%1"_s.arg(number), {}), CopyOutcome::Copied);
        }
        const auto listed = [&] {
            const DicomOutcome outcome = m_kit->MakeDirectory(folder, {});
            const QString dump = PacsServer::Run(u"dcmdump"_s, {u"-Un"_s, disc.filePath(u"DICOMDIR"_s)});
            return outcome.reason + QString::number(dump.count(u"[DICOM\\0000000"_s)) +
                   (dump.contains(u"홍길동"_s) ? u"홍"_s : u""_s);
        };
        QCOMPARE(listed(), u"2홍"_s);
        DeleteFile(folder + u"DICOM\\00000001"_s);
        QCOMPARE(listed(), u"1홍"_s);
        DeleteFile(folder + u"DICOM\\00000002"_s);
        QCOMPARE(listed(), u"0"_s);
        QVERIFY(!FileExists(folder + u"DICOMDIR"_s));
    }

private:
    std::unique_ptr<DicomKit> m_kit;
};

QTEST_MAIN(DicomKitTest)
#include "DicomKitTest.moc"
