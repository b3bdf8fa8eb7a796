#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "identifiers/dicom_uids.h"
#include "platform/dicom/DcmtkKit.h"
#include "platform/dicom/register_dicom.h"
#include "platform/files/LocalFiles.h"
#include "support/PacsPeer.h"
#include "support/PacsServer.h"
#include "support/PictureFiles.h"
#include "support/ScriptedDesktop.h"

#include <QTimeZone>

#include <sys/resource.h>
#include <thread>

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

/// As a camera's that was held upright.
QByteArray Turned(QByteArray jpeg)
{
    constexpr char Segment[] = "\xFF\xE1\0\x22"
                               "Exif\0\0MM\0*\0\0\0\x08\0\x01\x01\x12\0\x03\0\0\0\x01\0\x06\0\0\0\0\0\0";
    return jpeg.insert(2, QByteArray(Segment, sizeof Segment - 1));
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
        const QByteArray object = Made(content, picture);
        const auto element = [this](const char* tag) { return PacsServer::Element(ObjectPath(), tag); };
        QCOMPARE(element("0010,0010"), shown);
        QCOMPARE(element("0010,0040"), picture.sex);
        QCOMPARE(element("0010,0020"), picture.chart);
        QCOMPARE(element("0008,0018"), InstanceUid(picture, content));
        const QImage decoded = QImage::fromData(content);
        QCOMPARE(element("0028,0010") + u' ' + element("0028,0011"),
                 u"%1 %2"_s.arg(decoded.height()).arg(decoded.width()));
        QVERIFY(object.contains(FromFirstTable(content)));
        QVERIFY(!object.contains("Exif"));
    }

    /// What a visit consists of beside the endoscope's pictures, as a server finally has it.
    void EachKindOfObjectHoldsTheStandard_data()
    {
        Columns<QString, QStringList>("kind", "elements");
        QTest::newRow("ultrasound") << u"US"_s
                                    << QStringList{u"0008,0016=1.2.840.10008.5.1.4.1.1.6.1"_s, u"0008,0201=-0330"_s};
        QTest::newRow("microscope") << u"GM"_s << QStringList{u"0008,0016=1.2.840.10008.5.1.4.1.1.77.1.2"_s};
        QTest::newRow("camera") << u"XC"_s << QStringList{u"0018,0015=SKIN"_s, u"0020,0060=L"_s, u"0008,0030=101112"_s};
        QTest::newRow("marked up") << u"marked"_s
                                   << QStringList{u"0008,0008=DERIVED\\SECONDARY"_s, u"0020,0013=1007"_s,
                                                  u"0028,0301=YES"_s, u"0008,1155=1.2.3"_s};
        QTest::newRow("ordered") << u"ordered"_s
                                 << QStringList{u"0008,0050=A-1"_s, u"0008,0090=박^의뢰"_s, u"0032,1060=위내시경"_s,
                                                u"0040,1001=P-1"_s, u"0008,0100=E7611"_s};
        QTest::newRow("report") << u"report"_s
                                << QStringList{u"0008,0060=DOC"_s, u"0042,0015=9"_s, u"0042,0010=결과지"_s,
                                               u"0008,1155=1.2.3"_s};
        QTest::newRow("movie") << u"movie"_s
                               << QStringList{u"0008,0060=ES"_s, u"0028,0008=18"_s, u"0018,1063=55.555556"_s};
        QTest::newRow("rejection") << u"rejection"_s
                                   << QStringList{u"0008,0060=KO"_s, u"0008,0100=113001"_s, u"0008,1155=1.2.3"_s};
    }

    void EachKindOfObjectHoldsTheStandard()
    {
        QFETCH(QString, kind);
        QFETCH(QStringList, elements);
        DicomPicture facts = Gildong();
        facts.study.time = u"101112"_s;
        if (kind == u"US"_s)
            facts.takenAt.setTimeZone(QTimeZone(-210 * 60));
        facts.study.kind.modality = ModalityOf(kind).value_or(DicomModality::Endoscopy);
        if (kind == u"ordered"_s)
            facts.study.kind.bodyPart = u"STOMACH"_s;
        if (kind == u"XC"_s)
            facts.study.kind = {DicomModality::Photography, u"SKIN"_s, u"L"_s};
        const DicomReference other{ClassUidOf(DicomModality::Endoscopy), u"1.2.3"_s};
        if (kind == u"marked"_s) {
            facts.original = other;
            facts.instance = 1007;
        }
        if (kind == u"ordered"_s)
            facts.study.order = {u"A-1"_s,      u"P-1"_s, u"위내시경"_s, u"E7611"_s,  u"99HIS"_s,
                                 u"위내시경"_s, u"S-1"_s, u"내시경실"_s, u"박^의뢰"_s};
        PacsServer server;
        server.Start();
        QCOMPARE(m_kit->Open(Place(server.Port()), {}).kind, DicomOutcome::Accepted);
        DicomOutcome outcome;
        const QByteArray movie("an odd movie\n");
        if (kind == u"report"_s) {
            outcome = m_kit->StoreReport(
                "%PDF-1.4\n", {u"결과지"_s, facts.takenAt, {ClassUidOf(DicomSeries::Reports), u"1.2.3"_s}}, facts, {});
        } else if (kind == u"movie"_s) {
            QTemporaryDir folder;
            Files().WriteWholeFile(folder.path() + u"\\m.mp4"_s, movie);
            outcome = m_kit->StoreMovie(folder.path() + u"\\m.mp4"_s,
                                        {640, 480, 18, 1000 / 18.0, facts.takenAt, true, 1, "m"}, facts, {});
        } else if (kind == u"rejection"_s) {
            outcome = m_kit->StoreRejection({other}, facts.takenAt, facts, {});
        } else {
            outcome = m_kit->Store(Jpeg({64, 48}), facts, {});
        }
        QVERIFY2(outcome.kind == DicomOutcome::Accepted, qPrintable(outcome.reason));
        const QString object = server.Objects().value(0);
        const QString verdict = PacsServer::Run(u"dciodvfy"_s, {object});
        QVERIFY2(!verdict.contains(u"Error"_s), qPrintable(verdict));
        QCOMPARE(outcome.stored.uid, PacsServer::Element(object, "0008,0018"));
        QCOMPARE(outcome.stored.classUid, PacsServer::Element(object, "0008,0016"));
        for (const QString& element : elements)
            QCOMPARE(PacsServer::Element(object, qPrintable(element.section(u'=', 0, 0))), element.section(u'=', 1));
        QFile file(object);
        QVERIFY(file.open(QIODevice::ReadOnly));
        QCOMPARE(file.readAll().contains(movie + '\0'), kind == u"movie"_s);
    }

    /// Whatever a server can read, it gets the picture, upright, and in the file's own coding if it takes that.
    void PicturesGoAsTheServerTakesThem_data()
    {
        Columns<QString, QByteArray, QString>("option", "content", "found");
        const QByteArray colour = Jpeg({64, 48});
        const QByteArray grey = Jpeg({33, 21}, QImage::Format_Grayscale8);
        const QByteArray odd = Jpeg({51, 33});
        QTest::newRow("JPEG") << u"+xa"_s << colour << u"YBR_FULL_422 64x48"_s;
        QTest::newRow("JPEG, turned in blocks") << u"+xa"_s << Turned(colour) << u"YBR_FULL_422 48x64"_s;
        QTest::newRow("JPEG, turned and coded anew") << u"+xa"_s << Turned(odd) << u"YBR_FULL 33x51"_s;
        QTest::newRow("explicit") << u"+x="_s << colour << u"RGB 64x48"_s;
        QTest::newRow("explicit, grey, odd") << u"+x="_s << grey << u"MONOCHROME2 33x21"_s;
        QTest::newRow("explicit, turned") << u"+x="_s << Turned(odd) << u"RGB 33x51"_s;
        QTest::newRow("implicit") << u"+xi"_s << colour << u"RGB 64x48"_s;
    }

    void PicturesGoAsTheServerTakesThem()
    {
        QFETCH3(QString, option, QByteArray, content, QString, found);
        PacsServer server;
        server.Start({option});
        DicomAbilities abilities;
        QCOMPARE(m_kit->Abilities(Place(server.Port()), abilities, {}).kind, DicomOutcome::Accepted);
        for (const DicomAbilities::Kind& kind : abilities.kinds.first(4))
            QVERIFY(kind.uncompressed && kind.asItIs == (option == u"+xa"_s));
        QCOMPARE(m_kit->Open(Place(server.Port()), {}).kind, DicomOutcome::Accepted);
        const DicomOutcome outcome = m_kit->Store(content, Gildong(), {});
        QVERIFY2(outcome.kind == DicomOutcome::Accepted, qPrintable(outcome.reason));
        const QString object = server.Objects().value(0);
        const auto element = [&](const char* tag) { return PacsServer::Element(object, tag); };
        QCOMPARE(element("0028,0004") + u' ' + element("0028,0011") + u'x' + element("0028,0010"), found);
        QCOMPARE(element("0028,2110") + element("0028,2114"), u"01ISO_10918_1"_s);
        // The tool, as the classes' own tables, knows no colours that aren't coarser.
        const QStringList faults = PacsServer::Run(u"dciodvfy"_s, {object}).split(u'\n').filter(u"Error"_s);
        QVERIFY2(faults.filter(u"Photometric"_s).size() == faults.size(), qPrintable(faults.join(u'\n')));
        QVERIFY(faults.isEmpty() || found.startsWith(u"YBR_FULL "));
        // dcmtk's own decoder sees what the station's sees.
        const QString shown = m_folder.filePath(u"shown.ppm"_s);
        PacsServer::Run(option == u"+xa"_s ? u"dcmj2pnm"_s : u"dcm2pnm"_s, {object, shown});
        QBuffer buffer(&content);
        QImageReader reader(&buffer);
        reader.setAutoTransform(true);
        const QImage wanted = reader.read().convertToFormat(QImage::Format_RGB32);
        const QImage seen = QImage(shown).convertToFormat(QImage::Format_RGB32);
        QCOMPARE(seen.size(), wanted.size());
        for (const QPoint at : {QPoint(3, 3), QPoint(20, 12), QPoint(wanted.width() - 4, wanted.height() - 4)})
            QVERIFY(qAbs(qGray(seen.pixel(at)) - qGray(wanted.pixel(at))) < 12);
    }

    /// An encrypted connection is made with the right server, or none: never one that others could read.
    void EncryptedOrNotAtAll_data()
    {
        Columns<QString, QString, QString>("server", "station", "reason");
        QTest::newRow("trusted") << u"host -ic"_s << u"ca"_s << QString();
        QTest::newRow("other authority") << u"host -ic"_s << u"other"_s << u"인증서"_s;
        QTest::newRow("certificate of another host") << u"elsewhere -ic"_s << u"ca"_s << u"another host"_s;
        QTest::newRow("server isn't encrypted") << QString() << u"ca"_s << u"no answer in TLS"_s;
        QTest::newRow("both know each other") << u"host +cf ca.pem"_s << u"ca host"_s << QString();
        QTest::newRow("station's certificate is missing") << u"host +cf ca.pem"_s << u"ca"_s << u"인증서"_s;
        QTest::newRow("no such file") << u"host -ic"_s << u"nothing"_s << u"nothing.pem"_s;
        QTest::newRow("key of another") << u"host -ic"_s << u"ca host elsewhere"_s << u"elsewhere.key"_s;
    }

    void EncryptedOrNotAtAll()
    {
        QFETCH3(QString, server, QString, station, QString, reason);
        QTemporaryDir folder;
        QProcess making;
        making.setWorkingDirectory(folder.path());
        making.start(u"sh"_s,
                     {u"-ec"_s, u"for ca in ca other; do openssl req -x509 -newkey rsa:2048 -nodes -keyout "
                                "$ca.key -out $ca.pem -days 2 -subj /CN=$ca; done; "
                                "for name in host:IP:127.0.0.1 elsewhere:DNS:pacs.example; do n=${name%%:*}; "
                                "openssl req -newkey rsa:2048 -nodes -keyout $n.key -out $n.csr -subj /CN=$n; "
                                "echo subjectAltName=${name#*:} > $n.ext; openssl x509 -req -in $n.csr -CA "
                                "ca.pem -CAkey ca.key -CAcreateserial -days 2 -extfile $n.ext -out $n.pem; done"_s});
        QVERIFY2(making.waitForFinished() && making.exitCode() == 0, making.readAllStandardError());
        const auto file = [&](const QString& name) { return folder.filePath(name); };
        QStringList options{u"+xa"_s};
        const QStringList words = server.split(u' ', Qt::SkipEmptyParts);
        if (!words.isEmpty())
            options << u"+tls"_s << file(words[0] + u".key"_s) << file(words[0] + u".pem"_s) << words[1];
        if (words.size() > 2)
            options << file(words[2]);
        PacsServer pacs;
        pacs.Start(options);
        DicomPeer place = Place(pacs.Port());
        const QStringList own = station.split(u' ');
        place.tls = {file(own[0] + u".pem"_s), own.size() > 1 ? file(own[1] + u".pem"_s) : QString(),
                     own.size() > 1 ? file(own.last() + u".key"_s) : QString()};
        DcmtkKit kit({5, 5, 5});
        DicomOutcome outcome = kit.Open(place, {});
        if (outcome.kind == DicomOutcome::Accepted)
            outcome = kit.Store(Jpeg({640, 480}), Gildong(), {});
        QVERIFY2(outcome.reason.contains(reason), qPrintable(outcome.reason));
        QCOMPARE(outcome.kind, reason.isEmpty() ? DicomOutcome::Accepted : DicomOutcome::Away);
        QCOMPARE(pacs.Objects().size(), reason.isEmpty() ? 1 : 0);
    }

    /// A server of the clinic's shows the names as they are, in the character set and the parts that it wants.
    void TextsStandInTheWantedSet_data()
    {
        Columns<QString, QByteArray, bool>("name", "stored", "isUnicode");
        const QByteArray hong = "\x1B$)C\xC8\xAB";
        QTest::newRow("홍길동") << u"홍길동"_s << "==" + hong + "^\x1B$)C\xB1\xE6\xB5\xBF" << false;
        QTest::newRow("제갈공명") << u"제갈공명"_s << QByteArray("==\x1B$)C\xC1\xA6\xB0\xA5^\x1B$)C\xB0\xF8\xB8\xED")
                                  << false;
        QTest::newRow("선우") << u"선우"_s << QByteArray("==\x1B$)C\xBC\xB1^\x1B$)C\xBF\xEC") << false;
        QTest::newRow("홍A") << u"홍A"_s << "==" + hong + "A" << false;
        QTest::newRow("JOHN DOE") << u"JOHN VAN DOE"_s << QByteArray("JOHN^VAN DOE") << false;
        QTest::newRow("a syllable outside the set") << u"홍똠"_s << u"홍^똠"_s.toUtf8() << true;
        QTest::newRow("a letter outside the set") << u"José 王"_s << u"José^王"_s.toUtf8() << true;
    }

    void TextsStandInTheWantedSet()
    {
        QFETCH3(QString, name, QByteArray, stored, bool, isUnicode);
        DicomPicture picture = Gildong();
        picture.patientName = name;
        picture.hasNameParts = true;
        picture.characters = DicomCharacters::Korean;
        picture.identity.patientId = u"K-1234"_s;
        picture.identity.issuer = u"31100001"_s;
        const QByteArray object = Made(Jpeg({64, 48}), picture);
        const auto inObject = [](const QByteArray& tagAndType, QByteArray value) {
            value += value.size() % 2 == 0 ? "" : " ";
            return tagAndType + static_cast<char>(value.size()) + '\0' + value;
        };
        QVERIFY2(object.contains(inObject(QByteArray("\x10\0\x10\0PN", 6), stored)), object.mid(700, 400));
        QVERIFY(
            object.contains(inObject(QByteArray("\x08\0\x05\0CS", 6), isUnicode ? "ISO_IR 192" : "\\ISO 2022 IR 149")));
        QCOMPARE(m_isOtherSet, isUnicode);
        QCOMPARE(PacsServer::Element(ObjectPath(), "0010,0020") + PacsServer::Element(ObjectPath(), "0010,0021"),
                 u"K-123431100001"_s);
    }

    /// No viewer would show these: they mustn't leave as objects.
    void OtherContentIsSetAside()
    {
        PictureFiles files;
        const QByteArray whole = Jpeg({64, 48});
        const QByteArray progressive = files.Made(u"convert colours.png -interlace JPEG p.jpg"_s, u"p.jpg"_s);
        const QByteArray cmyk = files.Made(u"convert colours.png -colorspace CMYK c.jpg"_s, u"c.jpg"_s);
        const QByteArray cut = Jpeg({640, 480});
        for (const QByteArray& content :
             {progressive, cmyk, whole.left(200), cut.left(9000), cut.left(9000) + "\xFF\xD9", QByteArray(),
              PictureFiles::Blank({8, 8}, "bmp")}) {
            QByteArray object;
            const DicomOutcome outcome = m_kit->MakeObject(content, Gildong(), DicomKit::Coding::Jpeg, object, {});
            QCOMPARE(outcome.kind, DicomOutcome::Refused);
            QVERIFY(outcome.reason.contains(u".!!"_s) && object.isEmpty());
        }
    }

    /// One study for a visit, another one where anything of it differs; a marked-up picture is a new instance.
    void IdentifiersTellVisitsApart()
    {
        const DicomPicture one = Gildong();
        // What servers have already stays under its identifiers.
        QCOMPARE(StudyUid(one), u"2.25.324719073763858612446445210390333800829"_s);
        QSet<QString> studies{StudyUid(one)};
        QSet<QString> instances{InstanceUid(one, "a"), InstanceUid(one, "b")};
        const auto add = [&](const DicomPicture& other) {
            studies << StudyUid(other);
            instances << InstanceUid(other, "a");
        };
        for (QString DicomPicture::*field : {&DicomPicture::chart, &DicomPicture::ymd, &DicomPicture::section}) {
            DicomPicture other = one;
            other.*field += u'1';
            add(other);
        }
        DicomPicture elsewhere = one;
        elsewhere.identity.institution += u'1';
        add(elsewhere);
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

    /// What the server says of an object decides whether it is sent again, and when.
    void EachStatusHasItsMeaning()
    {
        using enum DicomOutcome::Kind;
        const QList<std::pair<QString, DicomOutcome::Kind>> meanings{
            {u"0000"_s, Accepted},    {u"B006"_s, Accepted},    {u"0107"_s, Accepted},    {u"0116"_s, Accepted},
            {u"0111"_s, Accepted},    {u"A700"_s, Passing},     {u"A7FF"_s, Passing},     {u"0110"_s, Passing},
            {u"0213"_s, Passing},     {u"0122"_s, KindRefused}, {u"0118"_s, KindRefused}, {u"0211"_s, KindRefused},
            {u"0124"_s, PeerRefused}, {u"A900"_s, Refused},     {u"C001"_s, Refused},     {u"0117"_s, Refused},
            {u"0120"_s, Refused}};
        QStringList statuses;
        for (const auto& [status, kind] : meanings)
            statuses << status;
        PacsPeer peer;
        peer.Start({u"--statuses"_s, statuses.join(u','), u"--comment"_s, u"full\x1B[31m\n"_s + QString(40, u'x')});
        QCOMPARE(m_kit->Open(Place(peer.Port()), {}).kind, Accepted);
        for (const auto& [status, kind] : meanings) {
            const DicomOutcome outcome = m_kit->Store(Jpeg({64, 48}), Gildong(), {});
            QVERIFY2(outcome.kind == kind, qPrintable(status + outcome.reason));
            QCOMPARE(outcome.status, status.toInt(nullptr, 16));
            QCOMPARE(outcome.reason.contains(u"(%1 full [31m xxx"_s.arg(status)), kind != Accepted);
            QVERIFY(outcome.reason.size() <= 160);
        }
        QCOMPARE(m_kit->Store(Jpeg({64, 48}), Gildong(), {}).kind, Accepted);
        QCOMPARE(peer.Objects().size(), statuses.size() + 1);
        QCOMPARE(peer.Objects().last().patientId, Gildong().chart);
    }

    /// A server at fault costs time and memory within limits, and the picture stays to be sent.
    void FaultsOfTheServerAreTold_data()
    {
        Columns<QString, QList<int>, QString>("options", "kinds", "reason");
        using enum DicomOutcome::Kind;
        QTest::newRow("nobody") << u"none"_s << QList<int>{Away} << u"연결할 수 없습니다"_s;
        QTest::newRow("no such title") << u"--reject called"_s << QList<int>{PeerRefused} << u"CalledAet을 알지"_s;
        QTest::newRow("unknown caller") << u"--reject calling"_s << QList<int>{PeerRefused} << u"CallingAet을 알지"_s;
        QTest::newRow("rejects") << u"--reject permanent"_s << QList<int>{PeerRefused} << u"거부"_s;
        QTest::newRow("is busy") << u"--reject transient"_s << QList<int>{Passing} << u"지금은"_s;
        QTest::newRow("takes no JPEG") << u"--refuse store"_s << QList<int>{Accepted, KindRefused}
                                       << u"받지 않습니다"_s;
        QTest::newRow("breaks off") << u"--cut 1"_s << QList<int>{Accepted, Broken, Away} << u"연결되어 있지"_s;
        QTest::newRow("takes without a word") << u"--unanswered 1"_s << QList<int>{Accepted, Broken} << u"끊겼습니다"_s;
        QTest::newRow("silent from the start") << u"--silent connect"_s << QList<int>{Away} << u"응답하지 않습니다"_s;
        QTest::newRow("silent on the association")
            << u"--silent association"_s << QList<int>{Away} << u"응답하지 않습니다"_s;
        QTest::newRow("silent on an object")
            << u"--silent 2"_s << QList<int>{Accepted, Accepted, Broken} << u"응답하지 않습니다"_s;
        QTest::newRow("babbles") << u"--babble association"_s << QList<int>{Away} << u"연결할 수 없습니다"_s;
        QTest::newRow("a giant answer") << u"--babble giant"_s << QList<int>{Away} << u"연결할 수 없습니다"_s;
        QTest::newRow("babbles on an object") << u"--babble store"_s << QList<int>{Accepted, Broken} << u"끊겼습니다"_s;
        QTest::newRow("a giant part") << u"--babble giant-store"_s << QList<int>{Accepted, Broken} << u"끊겼습니다"_s;
#if !defined(__SANITIZE_ADDRESS__) && !defined(__SANITIZE_THREAD__) // Their own maps know no limit of memory.
        QTest::newRow("an endless part") << u"--babble fragments"_s << QList<int>{Accepted, Broken} << u"끊겼습니다"_s;
#endif
    }

    void FaultsOfTheServerAreTold()
    {
        QFETCH3(QString, options, QList<int>, kinds, QString, reason);
        PacsPeer peer;
        peer.Start(options.split(u' '));
        if (options == u"none"_s)
            peer.Stop();
        {
            DcmtkKit kit({2, 2, 2});
            DicomOutcome outcome = kit.Open(Place(peer.Port()), {});
            QList<int> found{outcome.kind};
            while (found.size() < kinds.size()) {
                outcome = kit.Store(Jpeg({640, 480}), Gildong(), {});
                found << outcome.kind;
            }
            QVERIFY2(found == kinds, qPrintable(outcome.reason));
            QVERIFY2(outcome.reason.contains(reason), qPrintable(outcome.reason));
        }
        rusage used = {};
        getrusage(RUSAGE_CHILDREN, &used);
        QVERIFY2(used.ru_maxrss < 400 * 1024, qPrintable(QString::number(used.ru_maxrss)));
    }

    /// The next picture isn't blamed for a server that has closed an idle connection.
    void AServerThatHasLeftIsAway()
    {
        PacsPeer peer;
        for (int each = 0; each < 2; ++each) {
            peer.Start();
            QCOMPARE(m_kit->Open(Place(peer.Port()), {}).kind, DicomOutcome::Accepted);
            peer.Stop();
            QCOMPARE(m_kit->Store(Jpeg({64, 48}), Gildong(), {}).kind, DicomOutcome::Away);
        }
    }

    /// The station ends while a server is silent.
    void AStopEndsTheWait()
    {
        PacsPeer peer;
        peer.Start({u"--silent"_s, u"1"_s});
        QCOMPARE(m_kit->Open(Place(peer.Port()), {}).kind, DicomOutcome::Accepted);
        std::stop_source source;
        std::jthread stopping([&source] { source.request_stop(); });
        QCOMPARE(m_kit->Store(Jpeg({64, 48}), Gildong(), source.get_token()).kind, DicomOutcome::Away);
    }

    /// What the server has is asked for before anything is sent again or under another identity.
    void TheServerIsAskedForWhatItHas_data()
    {
        Columns<bool, DicomCharacters>("isDcmtk", "characters");
        QTest::newRow("dcmqrscp") << true << DicomCharacters::Unicode;
        QTest::newRow("peer") << false << DicomCharacters::Unicode;
        QTest::newRow("peer, in Korean") << false << DicomCharacters::Korean;
    }

    void TheServerIsAskedForWhatItHas()
    {
        QFETCH(bool, isDcmtk);
        QFETCH(DicomCharacters, characters);
        PacsPeer peer;
        PacsServer server;
        if (isDcmtk)
            server.StartWithQuota(30'000'000);
        else
            peer.Start();
        const DicomPeer place = Place(isDcmtk ? server.Port() : peer.Port());
        QCOMPARE(m_kit->Open(place, {}).kind, DicomOutcome::Accepted);
        DicomPicture picture = Gildong();
        picture.characters = characters;
        picture.hasNameParts = characters == DicomCharacters::Korean;
        QStringList uids;
        for (picture.number = 1; picture.number < 3; ++picture.number) {
            QCOMPARE(m_kit->Store(Jpeg({64, 48}), picture, {}).kind, DicomOutcome::Accepted);
            uids << InstanceUid(picture, Jpeg({64, 48}));
        }
        QList<DicomFoundStudy> studies;
        QCOMPARE(m_kit->FindStudies({u"1.2.3"_s, StudyUid(picture)}, studies, {}).kind, DicomOutcome::Accepted);
        QCOMPARE(studies.size(), 1);
        QCOMPARE(studies[0].uid + studies[0].patientId + studies[0].patientName,
                 StudyUid(picture) + u"00001234홍길동"_s);
        QList<DicomFound> found;
        QCOMPARE(m_kit->FindPictures(StudyUid(picture), SeriesUid(picture), found, {}).kind, DicomOutcome::Accepted);
        QCOMPARE(found.size(), 2);
        for (const DicomFound& each : found)
            QCOMPARE(each.uid, uids.value(each.number - 1));
        QCOMPARE(m_kit->Echo(place, {}).kind, DicomOutcome::Accepted);
        QCOMPARE(m_kit->FindPictures(u"1.2.3"_s, u"1.2"_s, found, {}).kind, DicomOutcome::Accepted);
        QVERIFY(found.isEmpty());
    }

    void AQuestionMayBeRefused()
    {
        for (const auto& [options, kind] : {std::pair(u"--refuse find"_s, DicomOutcome::KindRefused),
                                            std::pair(u"--find-status 0122"_s, DicomOutcome::KindRefused),
                                            std::pair(u"--find-status A700"_s, DicomOutcome::Passing),
                                            std::pair(u"--babble matches"_s, DicomOutcome::Away)}) {
            PacsPeer peer;
            peer.Start(options.split(u' '));
            QCOMPARE(m_kit->Open(Place(peer.Port()), {}).kind, DicomOutcome::Accepted);
            QCOMPARE(m_kit->Store(Jpeg({64, 48}), Gildong(), {}).kind, DicomOutcome::Accepted);
            QList<DicomFoundStudy> studies;
            const DicomOutcome outcome = m_kit->FindStudies({StudyUid(Gildong())}, studies, {});
            QVERIFY2(outcome.kind == kind, qPrintable(options + outcome.reason));
        }
    }

    /// A viewer that opens the disc finds what lies on it, and nothing else.
    void ADirectoryTellsWhatIsThere_data()
    {
        Columns<DicomKit::Coding>("coding");
        QTest::newRow("JPEG") << DicomKit::Coding::Jpeg;
        QTest::newRow("uncompressed") << DicomKit::Coding::Uncompressed;
    }

    void ADirectoryTellsWhatIsThere()
    {
        QFETCH(DicomKit::Coding, coding);
        QTemporaryDir disc;
        const QString folder = disc.path() + u'\\';
        MakeFolder(folder + u"DICOM"_s);
        for (const int number : {1, 2}) {
            DicomPicture picture = Gildong();
            picture.number = number;
            picture.study.time = u"101112"_s;
            Files().WriteWholeFile(folder + u"DICOM\\0000000%1"_s.arg(number), Made(Jpeg({64, 48}), picture, coding));
        }
        const auto listed = [&] {
            const DicomOutcome outcome =
                m_kit->MakeDirectory(folder, {coding == DicomKit::Coding::Uncompressed, u"나래 Clinic no. 1"_s}, {});
            const QString dump = PacsServer::Run(u"dcmdump"_s, {u"-Un"_s, disc.filePath(u"DICOMDIR"_s)});
            return outcome.reason + QString::number(dump.count(u"[DICOM\\0000000"_s)) +
                   (dump.contains(u"홍길동"_s) && dump.contains(u"TM [101112]"_s) && dump.contains(u"[CLINIC_NO_1]"_s)
                        ? u"홍"_s
                        : u""_s);
        };
        QCOMPARE(listed(), u"2홍"_s);
        DeleteFile(folder + u"DICOM\\00000001"_s);
        QCOMPARE(listed(), u"1홍"_s);
        DeleteFile(folder + u"DICOM\\00000002"_s);
        QCOMPARE(listed(), u"0"_s);
        QVERIFY(!FileExists(folder + u"DICOMDIR"_s));
    }

private:
    static DicomPeer Place(int port)
    {
        return {u"127.0.0.1"_s, port, u"ANY-SCP"_s, u"TEST"_s};
    }

    QString ObjectPath() const
    {
        return m_folder.filePath(u"object.dcm"_s);
    }

    /// An object that the standard's own checker finds nothing wrong with; also under `ObjectPath`.
    QByteArray Made(const QByteArray& content, const DicomPicture& picture,
                    DicomKit::Coding coding = DicomKit::Coding::Jpeg)
    {
        QByteArray object;
        const DicomOutcome outcome = m_kit->MakeObject(content, picture, coding, object, {});
        m_isOtherSet = outcome.isOtherSet;
        QFile file(ObjectPath());
        if (!file.open(QIODevice::WriteOnly) || file.write(object) != object.size())
            qFatal("no object");
        file.close();
        const QString verdict = PacsServer::Run(u"dciodvfy"_s, {ObjectPath()});
        if (!verdict.contains(u"VLEndoscopicImage"_s) || verdict.contains(u"Error"_s))
            QTest::qFail(qPrintable(outcome.reason + verdict), __FILE__, __LINE__);
        return object;
    }

    QTemporaryDir m_folder;
    bool m_isOtherSet = false;
    std::unique_ptr<DicomKit> m_kit;
};

QTEST_MAIN(DicomKitTest)
#include "DicomKitTest.moc"
