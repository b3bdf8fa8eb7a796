#include "cdexport/file_origins.h"
#include "cdexport/frmCapCDAdd.h"
#include "cdexport/frmCapCDWrite.h"
#include "contracts/cd.h"
#include "platform/dicom/register_dicom.h"
#include "records/patient_lookup.h"
#include "support/CaptureScreen.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

using namespace Qt::StringLiterals;

namespace {

/// A writer that only keeps its state.
struct WriterState
{
    bool equipped = true;
    int made = 0;
};
WriterState writer;
QString stagingFolder;

class KeptBurner final : public XPBurn
{
public:
    KeptBurner() { ++writer.made; }
    bool Equipped() override { return writer.equipped; }
    QString burnArea() override { return stagingFolder; }
    bool isburning() const override { return false; }
    void Startburn() override {}
};

class ListedDrives final : public FileSystemObject
{
public:
    static inline QList<DriveEntry> drives;
    QList<DriveEntry> Drives() const override { return drives; }
};

const QString NotReady = u"CD저장 준비가 되어있지 않습니다.!!"_s;

} // namespace

class CdExportTest : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init()
    {
        m_data = std::make_unique<QTemporaryDir>();
        qputenv("XDG_DATA_HOME", m_data->path().toUtf8());
        m_box = std::make_unique<StationInABox>();
        UseService<BurnerOptions>().UseImage(m_data->path() + u"/cd.iso"_s);
        stagingFolder = CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s)->burnArea();
        writer = {};
        ListedDrives::drives = {{3, u"/dev/sda"_s}, {4, u"/dev/sr1"_s}, {4, u"/dev/sr0"_s}};
    }
    void cleanup() { m_box.reset(); }

    void WithoutADriveTheScreenStaysAway()
    {
        KeepWriter();
        ListedDrives::drives = {{3, u"/dev/sda"_s}};
        OpenByMenu();
        QCOMPARE(m_box->Desk().shown, QStringList{u"CD드라이브가 없습니다.!!"_s});
        QCOMPARE(FindForm(u"frmCapCDWrite"_s), nullptr);
        QCOMPARE(writer.made, 0);

        ListedDrives::drives.append({4, u"/dev/sr0"_s});
        frmCapCDWrite& screen = *OpenByMenu();
        QCOMPARE(screen.findChild<QComboBox*>(u"cmbCDList"_s)->currentText(), u"/dev/sr0"_s);
        QCOMPARE(screen.findChild<QLabel*>(u"lblStagingArea"_s)->text(), stagingFolder);
        screen.showMinimized();
        QCOMPARE(OpenByMenu(), &screen);
        QVERIFY(!screen.isMinimized());
    }

    void OneFileByTheDialog_data()
    {
        Columns<bool, QString, bool, QString, int>("cancelled", "name", "equipped", "said", "staged");
        QTest::newRow("cancelled") << true << QString() << true << QString() << 0;
        QTest::newRow("no name") << false << u" "_s << true << u"선택된 파일이 없습니다.!!"_s << 0;
        QTest::newRow("not there") << false << u"x.jpg"_s << false << u"선택된 파일이 없습니다.!!"_s << 0;
        QTest::newRow("no writer") << false << u"있음.jpg"_s << false << NotReady << 0;
        QTest::newRow("chosen") << false << u"있음.jpg"_s << true << QString() << 1;
    }

    void OneFileByTheDialog()
    {
        QFETCH5(bool, cancelled, QString, name, bool, equipped, QString, said, int, staged);
        KeepWriter();
        WriteWholeFile(m_box->Root() + u"있음.jpg"_s, QByteArray(1536, 'x'));
        frmCapCDWrite& screen = *OpenByMenu();
        writer.equipped = equipped;
        if (!cancelled)
            m_box->Desk().files = {name.trimmed().isEmpty() ? name : m_box->Root() + name};
        PressIn(screen, u"cmdFind"_s);
        QCOMPARE(m_box->Desk().shown, said.isEmpty() ? QStringList{} : QStringList{said});
        QCOMPARE(screen.sprCDDrive().DataRowCnt(), staged);
        QCOMPARE(CellText(screen.sprCDDrive(), 2, 1), staged > 0 ? u"2"_s : QString());
        QCOMPARE(CellText(screen.sprCDDrive(), 3, 1), staged > 0 ? u"JPG 파일"_s : QString());
    }

    void ThinningOut()
    {
        MakeFolder(stagingFolder + u"폴더"_s);
        WriteWholeFile(stagingFolder + u"폴더/안.jpg"_s, "inside");
        WriteWholeFile(stagingFolder + u"a.jpg"_s, "a");
        WriteWholeFile(stagingFolder + u" b.jpg"_s, "b");
        WriteWholeFile(m_box->Root() + u"kept.jpg"_s, "kept");
        QVERIFY(QFile::link(NativePath(m_box->Root()), stagingFolder + u"link"_s));
        frmCapCDWrite& screen = *OpenByMenu();
        fpSpread& list = screen.sprCDDrive();
        QCOMPARE(list.DataRowCnt(), 4);
        QCOMPARE(CellText(list, 1, 1) + CellText(list, 2, 1) + CellText(list, 3, 1), u"폴더파일 폴더"_s);

        list.SetActiveCell(3, 1);
        PressIn(screen, u"cmdDelFile"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"폴더와 그 안의 파일을 모두 삭제하시겠습니까?"_s});
        QCOMPARE(list.DataRowCnt(), 4);
        m_box->Desk().answers = {true};
        PressIn(screen, u"cmdDelFile"_s);
        QCOMPARE(Staged(), (QStringList{u" b.jpg"_s, u"a.jpg"_s, u"link"_s}));
        for (const QStringList& left : {QStringList{u"a.jpg"_s, u"link"_s}, QStringList{u"link"_s}, QStringList{}}) {
            QTest::keyClick(list.findChild<QTableView*>(), Qt::Key_Delete);
            QCOMPARE(Staged(), left);
            QCOMPARE(list.DataRowCnt(), left.size());
        }
        QTest::keyClick(list.findChild<QTableView*>(), Qt::Key_Delete);
        QCOMPARE(m_box->Desk().shown.size(), 2);
        QVERIFY(FileExists(m_box->Root() + u"kept.jpg"_s));
    }

    void PicturesOfTwoVisits()
    {
        for (int number = 1; number <= 103; ++number)
            m_box->AddPicture(u"20250301"_s, Stomach, number, u"지난해"_s);
        m_box->AddPicture(u"20261101"_s, Stomach, 1, u"위"_s);
        m_box->AddPicture(u"20261101"_s, Colon, 1, u"장"_s);
        WriteWholeFile(m_box->PicturePath(u"20261101"_s, Colon, 1), StationInABox::Jpeg({64, 64}, Qt::blue));
        DeleteFile(m_box->PicturePath(u"20250301"_s, Stomach, 2));
        frmCapCDWrite& screen = *OpenByMenu();

        InAdd(screen, [&](frmCapCDAdd& add) {
            QCOMPARE(add.sprCapList().DataRowCnt(), 3);
            QCOMPARE(CellText(add.sprCapList(), 1, 3), u"20250301"_s);
            PressIn(add, u"cmdAddFile"_s);
            QCOMPARE(m_box->Desk().shown, QStringList{u"추가할 자료가 없습니다.!!"_s});
            Q_EMIT add.sprCapList().DblClick(3, 3);
            Q_EMIT add.sprCapList().DblClick(1, 4); // An empty row changes nothing.
            fpSpread& pictures = add.sprImageList();
            QCOMPARE(pictures.DataRowCnt(), 21); // 102 pictures, five to a row.
            QVERIFY(CellText(pictures, 2, 1).endsWith(u"\\2025\\위내시경\\0000123420250301003.jpg"_s));
            pictures.setCol(2);
            QVERIFY(!pictures.TypePictPicture().isNull());
            Click(pictures, 1, 1);
            Click(pictures, 3, 2, Qt::ControlModifier);
            Click(pictures, 5, 3, Qt::ControlModifier);
            // Gone since it was listed: left out without a word.
            DeleteFile(m_box->PicturePath(u"20250301"_s, Stomach, 16));
            PressIn(add, u"cmdAddFile"_s);
            QVERIFY(add.IsUnloaded());
            QCOMPARE(add.findChild<QProgressBar*>(u"barCount"_s)->value(), 100);
        });
        QCOMPARE(Staged(), (QStringList{u"0000123420250301001.jpg"_s, u"0000123420250301009.jpg"_s}));
        QCOMPARE(screen.sprCDDrive().DataRowCnt(), 2);

        for (const int visit : {1, 2, 1}) {
            InAdd(screen, [&](frmCapCDAdd& add) {
                Q_EMIT add.sprCapList().DblClick(1, visit);
                QCOMPARE(add.sprImageList().DataRowCnt(), 1);
                Click(add.sprImageList(), 1, 1);
                PressIn(add, u"cmdAddFile"_s);
            });
        }
        QCOMPARE(Staged().mid(2), (QStringList{u"0000123420261101001 (2).jpg"_s, u"0000123420261101001.jpg"_s}));
        QCOMPARE(m_box->Desk().shown.size(), 1);
    }

    /// Another clinic's viewer opens the disc by its directory: it lists the pictures that are there, and no others.
    void PicturesHaveObjectsBesideThem()
    {
        RegisterDicom();
        ClientSetup.BurnerDicom = ClientSetup.BurnerDicomPlain = true;
        ClientSetup.Pacs.Institution = u"나래의원"_s;
        for (const int number : {1, 2, 3})
            m_box->AddPicture(u"20250301"_s, Stomach, number, u"지난해"_s);
        WriteWholeFile(m_box->PicturePath(u"20250301"_s, Stomach, 3), "no picture");
        frmCapCDWrite& screen = *OpenByMenu();
        InAdd(screen, [&](frmCapCDAdd& add) {
            Q_EMIT add.sprCapList().DblClick(1, 1);
            Click(add.sprImageList(), 1, 1);
            Click(add.sprImageList(), 2, 1, Qt::ControlModifier);
            Click(add.sprImageList(), 3, 1, Qt::ControlModifier);
            PressIn(add, u"cmdAddFile"_s);
        });
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY2(m_box->Desk().shown.first().startsWith(u"그림 1장은 DICOM으로"_s),
                 qPrintable(m_box->Desk().shown.first()));
        QCOMPARE(QDir(stagingFolder + u"DICOM"_s).entryList(QDir::Files).size(), 2);
        QCOMPARE(screen.sprCDDrive().DataRowCnt(), 4);
        const auto remove = [&](int row) {
            screen.sprCDDrive().SetActiveCell(1, row);
            PressIn(screen, u"cmdDelFile"_s);
        };
        remove(2);
        QCOMPARE(QDir(stagingFolder + u"DICOM"_s).entryList(QDir::Files).size(), 1);
        PressIn(screen, u"cmdStart"_s);
        QProcess extraction;
        extraction.start(u"xorriso"_s, {u"-osirrox"_s, u"on"_s, u"-indev"_s, m_data->path() + u"/cd.iso"_s,
                                        u"-extract"_s, u"/"_s, m_data->path() + u"/disc"_s});
        QVERIFY(extraction.waitForFinished());
        QProcess dump;
        dump.start(u"dcmdump"_s, {u"-Un"_s, m_data->path() + u"/disc/DICOMDIR"_s});
        QVERIFY(dump.waitForFinished());
        const QString directory = QString::fromUtf8(dump.readAllStandardOutput());
        QCOMPARE(directory.count(u"[DICOM\\CS"_s), 1);
        for (const QString& told : {u"홍길동"_s, u"(0004,1512) UI [1.2.840.10008.1.2.1]"_s, u"[CAPTURE_STATION]"_s})
            QVERIFY2(directory.contains(told), qPrintable(told + directory));
        const QString time = m_box->Value(u"SELECT st_time AS v FROM ca_study"_s);
        QVERIFY(time.size() == 6 && directory.contains(u"TM ["_s + time));
        QVERIFY(QFileInfo::exists(m_data->path() + u"/disc/IHE_PDI/V0001.HTM"_s));
        QVERIFY(Files().ReadFile(m_data->path() + u"/disc/README.TXT"_s).contains(u"나래의원"_s.toUtf8()));
        QCOMPARE(m_box->Value(u"SELECT uid_institution AS v FROM ca_uid"_s), u"나래의원"_s);
        QCOMPARE(QDir(m_data->path() + u"/disc/DICOM"_s).entryList(QDir::Files).size(), 1);
    }

    /// At home the patient finds his pictures by visit, and nobody else's name.
    void PagesShowThePictures()
    {
        ClientSetup.BurnerIndex = ClientSetup.BurnerIndexNotes = true;
        m_box->AddPicture(u"20250301"_s, Stomach, 1, u"<b>용종</b> & \"3\""_s);
        WriteWholeFile(stagingFolder + u"0000999920250301001.jpg"_s, StationInABox::Jpeg({64, 64}, Qt::blue));
        file_origins::Record(stagingFolder, {}, stagingFolder + u"0000999920250301001.jpg"_s,
                             {u"00009999"_s, u"20250301"_s, Stomach, 1});
        WriteWholeFile(stagingFolder + u"<i> #1.txt"_s, "free");
        WriteWholeFile(stagingFolder + u"index.htm"_s, "somebody's");
        PatientRecord.Chart = VisitContext.Chart;
        PatientRecord.Suname = u"홍길동"_s;
        frmCapCDWrite& screen = *OpenByMenu();
        InAdd(screen, [&](frmCapCDAdd& add) {
            Q_EMIT add.sprCapList().DblClick(1, 1);
            Click(add.sprImageList(), 1, 1);
            PressIn(add, u"cmdAddFile"_s);
        });
        const QStringList staged = Staged();
        PressIn(screen, u"cmdStart"_s);
        QCOMPARE(Staged(), staged);
        QCOMPARE(QDir(stagingFolder + u".."_s).entryList(QDir::Dirs | QDir::NoDotAndDotDot), QStringList{u"cd"_s});
        const QString disc = m_data->path() + u"/disc"_s;
        QProcess::execute(u"xorriso"_s, {u"-report_about"_s, u"SORRY"_s, u"-osirrox"_s, u"on"_s, u"-indev"_s,
                                         m_data->path() + u"/cd.iso"_s, u"-extract"_s, u"/"_s, disc});
        QString pages;
        int links = 0;
        for (const QString& page : {u"INDEX2.HTM"_s, u"INDEX/V0001.HTM"_s, u"INDEX/V0002.HTM"_s}) {
            const QString text = QString::fromUtf8(Files().ReadFile(disc + u'/' + page));
            static const QRegularExpression link(u"(?:href|src)=\"([^\"]*)\""_s);
            for (const QRegularExpressionMatch& match : link.globalMatch(text)) {
                const QString target = QUrl::fromPercentEncoding(match.captured(1).toUtf8());
                QVERIFY2(QFileInfo::exists(QFileInfo(disc + u'/' + page).path() + u'/' + target), qPrintable(target));
                ++links;
            }
            pages += text;
        }
        QCOMPARE(links, 8); // Two pages, two free files, and of each picture itself and a small one.
        QCOMPARE(pages.count(u"홍길동"_s), 2);
        QVERIFY(pages.contains(u"<h2>차트번호 00009999</h2>"_s));
        QVERIFY(pages.contains(u"참고사항: &lt;b&gt;용종&lt;/b&gt; &amp; &quot;3&quot;</p>"_s) &&
                !pages.contains(u"<i>"_s));
        QVERIFY(QFileInfo(disc + u"/README.TXT"_s).size() > 0);
    }

    void MoviesOfThisPatient()
    {
        const QString folder = MovieFolder(VisitContext.CaptureDir);
        MakeFolder(folder);
        const QList<std::pair<QString, int>> movies{{u"0000123420260101001.avi"_s, 512},
                                                    {u"0000123420260101002.avi"_s, 1536},
                                                    {u"0000123420261124001.avi"_s, 2560},
                                                    {u"0000123420261124002.avi"_s, 2561}};
        for (const auto& [name, bytes] : movies)
            WriteWholeFile(folder + name, QByteArray(bytes, 'm'));
        WriteWholeFile(folder + u"0000999920261124001.avi"_s, "another patient's");
        frmCapCDWrite& screen = *OpenByMenu();
        const auto inMovies = [&](const std::function<void(frmCapCDAdd&)>& work) {
            InAdd(screen, [&](frmCapCDAdd& add) {
                add.tabCapCD().setCurrentIndex(1);
                work(add);
            });
        };
        inMovies([&](frmCapCDAdd& add) {
            fpSpread& list = add.sprMovieList();
            QCOMPARE(list.MaxRows(), 4);
            QStringList sizes;
            for (int row = 1; row <= 4; ++row)
                sizes << CellText(list, 2, row);
            QCOMPARE(sizes, (QStringList{u"0"_s, u"2"_s, u"2"_s, u"3"_s}));
            QCOMPARE(CellText(list, 5, 1), folder + movies[0].first);
            Click(list, 1, 2);
            Click(list, 3, 4, Qt::ShiftModifier);
            QCOMPARE(list.SelectionCount(), 3);
            DeleteFile(folder + movies[2].first);
            PressIn(add, u"cmdAddFile"_s);
        });
        QCOMPARE(Staged(), (QStringList{movies[1].first, movies[3].first}));
        QCOMPARE(m_box->Desk().shown.size(), 1);
        QVERIFY(m_box->Desk().shown[0].contains(movies[2].first));

        VisitContext.Chart = u"1234    "_s; // Too short to match eight characters.
        inMovies([](frmCapCDAdd& add) { QCOMPARE(add.sprMovieList().DataRowCnt(), 0); });
    }

    /// The writer's own window has emptied the folder.
    void TheListFollowsTheFolder()
    {
        WriteWholeFile(stagingFolder + u"a.jpg"_s, "a");
        frmCapCDWrite& screen = *OpenByMenu();
        QCOMPARE(screen.sprCDDrive().DataRowCnt(), 1);
        DeleteFile(stagingFolder + u"a.jpg"_s);
        QEvent activated(QEvent::WindowActivate);
        QCoreApplication::sendEvent(&screen, &activated);
        QCOMPARE(screen.sprCDDrive().DataRowCnt(), 0);
    }

    void TheScreenWritesADiscAndGoesOn()
    {
        WriteWholeFile(stagingFolder + u"a.jpg"_s, QByteArray(3000000, 'a'));
        frmCapCDWrite& screen = *OpenByMenu();
        QCOMPARE(screen.findChild<QComboBox*>(u"cmbCDList"_s)->currentText(), m_data->path() + u"/cd.iso"_s);
        QTimer::singleShot(0, &screen, [&] {
            PressIn(screen, u"cmdStart"_s);
            screen.Unload();
        });
        PressIn(screen, u"cmdStart"_s);
        QCOMPARE(m_box->Desk().shown, QStringList{u"CD저장 장치를 사용중입니다.!!"_s});
        QVERIFY(QFileInfo(m_data->path() + u"/cd.iso"_s).size() > 3000000);
        QVERIFY(FindForm(u"frmCapture"_s) != nullptr);
    }

    /// Closing the station in the middle neither spoils the disc nor leaves the operator without a word.
    void AClosingStationFinishesTheDisc()
    {
        WriteWholeFile(stagingFolder + u"a.jpg"_s, QByteArray(3000000, 'a'));
        OpenByMenu();
        const auto burner = CreateObject<XPBurn>(u"BaydenBurn.XPBurn"_s);
        burner->Startburn();
        QVERIFY(burner->isburning());
        FindForm(u"frmCapture"_s)->Unload();
        QVERIFY(!burner->isburning());
        QVERIFY(m_box->Desk().shown.last().startsWith(u"CD저장이 완료되었습니다."_s));
        QVERIFY(QFileInfo(m_data->path() + u"/cd.iso"_s).size() > 3000000);
    }

private:
    static void KeepWriter()
    {
        RegisterComponent<XPBurn>(u"BaydenBurn.XPBurn"_s, [] { return std::make_unique<KeptBurner>(); });
        RegisterComponent<FileSystemObject>(u"Scripting.FileSystemObject"_s,
                                            [] { return std::make_unique<ListedDrives>(); });
    }
    static frmCapCDWrite* OpenByMenu()
    {
        OpenScreen();
        Choose(u"CD저장"_s);
        return static_cast<frmCapCDWrite*>(FindForm(u"frmCapCDWrite"_s));
    }
    /// Opens the choice of files by its button and runs `work` on it.
    static void InAdd(frmCapCDWrite& screen, const std::function<void(frmCapCDAdd&)>& work)
    {
        bool worked = false;
        QTimer timer;
        connect(&timer, &QTimer::timeout, &screen, [&] {
            auto* add = static_cast<frmCapCDAdd*>(FindForm(u"frmCapCDAdd"_s));
            if (add == nullptr || !add->isVisible())
                return;
            timer.stop();
            work(*add);
            worked = true;
            add->Unload();
        });
        timer.start(1);
        PressIn(screen, u"cmdAddFile"_s);
        QVERIFY(worked);
    }
    static void PressIn(QWidget& form, const QString& button)
    {
        QTest::mouseClick(form.findChild<QPushButton*>(button), Qt::LeftButton);
    }
    static void Click(fpSpread& grid, int column, int row, Qt::KeyboardModifiers keys = Qt::NoModifier)
    {
        auto* view = grid.findChild<QTableView*>();
        QTest::mouseClick(view->viewport(), Qt::LeftButton, keys,
                          view->visualRect(view->model()->index(row - 1, column - 1)).center());
    }
    static QStringList Staged()
    {
        return QDir(stagingFolder).entryList(QDir::AllEntries | QDir::NoDotAndDotDot, QDir::Name);
    }

    std::unique_ptr<QTemporaryDir> m_data;
    std::unique_ptr<StationInABox> m_box;
};

QTEST_MAIN(CdExportTest)
#include "CdExportTest.moc"
