#include "support/StationInABox.h"

#include "contracts/ImageList.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "frame/composition.h"
#include "frame/forms.h"
#include "frame/services.h"
#include "platform/desktop/register_desktop.h"
#include "platform/disc/register_disc.h"
#include "platform/grid/register_grid.h"
#include "platform/imagecontrol/register_image_control.h"
#include "platform/imaging/register_imaging.h"
#include "platform/printing/register_printing.h"
#include "platform/profile/PrivateProfile.h"
#include "platform/serial/register_serial.h"
#include "platform/sql/register_sql.h"
#include "records/patient_lookup.h"
#include "records/Statement.h"
#include "session/VisitContext.h"
#include "visit/device_settings.h"

#include <QBuffer>
#include <QDir>
#include <QImage>
#include <QTest>

using namespace Qt::StringLiterals;

namespace {
const QString Patient = uR"(
INSERT INTO wj (wj_chart, wj_suname, wj_jumin, wj_tel, wj_post, wj_bunji, wj_ibdc, wj_wedc)
    VALUES ('00001234', '홍길동', '8001011234567', '02-123-4567', '06236', '12-3번지', '0', '20');
INSERT INTO bh (bh_chart, bh_chymd, bh_yuhyung, bh_saupkiho, bh_jongbl)
    VALUES ('00001234', '20200101', '01', '31100001', '');
INSERT INTO pt (pt_post, pt_myung) VALUES ('06236', '서울 강남구 역삼동');
INSERT INTO endo (endo_ykymd, endo_chart, endo_jinchal, endo_check) VALUES ('20261124', '00001234', '11', '0');
)"_s;
} // namespace

StationInABox::StationInABox(const QString& driver)
{
    FollowComposition();
    RegisterDesktop({});
    m_desktop = &ScriptedDesktop::Install();
    m_files = &FailingFiles::Install();
    RegisterProfile();
    RegisterSql();
    RegisterGrid();
    RegisterImaging();
    RegisterImageControl();
    RegisterPrinting();
    RegisterSerial();
    RegisterDisc();
    FakeVideoCap::Register();

    m_database = std::make_unique<ClinicDatabase>(driver, driver == u"QSQLITE"_s ? nullptr : &Server());
    if (!m_database->Make({u"ca"_s, u"cap"_s, u"ca_uid"_s, u"ca_study"_s, u"ca_log"_s, u"ca_sum"_s, u"caso"_s,
                           u"endo"_s, u"clinic"_s},
                          Patient))
        qFatal("clinic database: %s", qPrintable(m_database->Fault()));
    Connection = OpenConnection(m_database->Settings());
    m_beside = OpenConnection(m_database->Settings());
    if (driver == u"QSQLITE"_s)
        m_beside->Execute(u"PRAGMA synchronous = OFF"_s); // What a test prepares needs to outlive no machine.

    ClientSetup = {};
    ClientSetup.CaptureRoot = Root();
    ClientSetup.EtcList = u"위내시경,대장내시경"_s;
    SaupTable = {};
    DeviceSettings = {};
    PatientRecord = {};
    VisitContext = {};
    VisitContext.Chart = QString::fromUtf16(Chart);
    VisitContext.Yuhyung = u"01"_s;
    VisitContext.Jinchal = u"11"_s;
    VisitContext.Ymd = QString::fromUtf16(Today);
    VisitContext.Etc = u"위내시경"_s;
    VisitContext.ImageExt = u"jpg"_s;
    VisitContext.CaptureDir = YearFolder(Root(), VisitContext.Ymd);
    MakeFolder(SectionFolder(VisitContext.CaptureDir, VisitContext.Etc));
}

StationInABox::~StationInABox()
{
    const QList<StationForm*> forms = LoadedForms();
    for (StationForm* form : forms)
        form->Unload();
    QCoreApplication::sendPostedEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    Connection.reset();
    m_beside.reset();
    if (QTest::currentTestFailed()) {
        m_folder.setAutoRemove(false);
        qInfo("kept: %s", qPrintable(m_folder.path()));
    }
}

PrivateMariaDb& StationInABox::Server()
{
    static PrivateMariaDb server;
    static const bool started = server.Start();
    if (!started)
        qFatal("MariaDB: %s", qPrintable(server.Fault()));
    return server;
}

QString StationInABox::Root() const
{
    return m_folder.path() + u"\\capture\\"_s;
}

QString StationInABox::PicturePath(const QString& ymd, const QString& etc, int number) const
{
    return VisitOf(QString::fromUtf16(Chart), {}, ymd, etc).PicturePath(number);
}

QStringList StationInABox::Names(const QString& year, const QString& etc) const
{
    return QDir(NativePath(Root() + year + u'\\' + etc)).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

QString StationInABox::Value(const QString& statement)
{
    const auto rows = m_beside->Execute(statement);
    if (rows->Eof())
        return {};
    return rows->Fields(u"v"_s).toString();
}

void StationInABox::Run(const QString& statements)
{
    if (!m_database->Run(statements))
        qFatal("clinic database: %s", qPrintable(m_database->Fault()));
}

void StationInABox::AddPicture(const QString& ymd, const QString& etc, int number, const QString& note)
{
    MakeFolder(SectionFolder(YearFolder(Root(), ymd), etc));
    WriteWholeFile(PicturePath(ymd, etc, number), Jpeg({640, 480}, Qt::darkRed));
    const QString chart = QString::fromUtf16(Chart);
    m_beside->Execute(
        u"REPLACE INTO cap VALUES ('%1', '01', '%2', 'A', '%3', %4, '')"_s.arg(chart, ymd, etc).arg(number));
    if (!note.isNull())
        m_beside->Execute(
            u"REPLACE INTO ca VALUES ('%1', '01', '%2', 'A', '%3', '%4', '')"_s.arg(chart, ymd, etc, note));
}

QByteArray StationInABox::Jpeg(QSize size, Qt::GlobalColor colour)
{
    QImage picture(size, QImage::Format_RGB32);
    picture.fill(colour);
    QByteArray jpeg;
    QBuffer buffer(&jpeg);
    buffer.open(QIODevice::WriteOnly);
    picture.save(&buffer, "JPEG", 90);
    return jpeg;
}
