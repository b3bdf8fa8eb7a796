#include "platform/setup/SetupFile.h"

#include "contracts/files.h"
#include "platform/setup/SetupReader.h"

#include <QDir>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

QString NameOf(const QString& section, const QString& key)
{
    return u"[%1] %2"_s.arg(section, key).toCaseFolded();
}

} // namespace

QString SetupReader::Text(const QString& section, const QString& key)
{
    m_asked << NameOf(section, {}) << NameOf(section, key);
    QString value = m_ini.Value(section, key).value_or(QString());
    if (value.contains(QChar::ReplacementCharacter))
        m_setup.problems.append(
            u"[%1] %2의 글자를 읽을 수 없습니다. UTF-8이나 windows-949로 저장하세요."_s.arg(section, key));
    return value;
}

bool SetupReader::Switch(const QString& section, const QString& key)
{
    const QString value = Text(section, key);
    if (!value.isEmpty() && value != u"0" && value != u"1")
        m_setup.problems.append(u"[%1] %2은(는) 0이나 1입니다. (%3)"_s.arg(section, key, value.left(60)));
    return value == u"1";
}

QString SetupReader::Needed(const QString& section, const QString& key)
{
    QString value = Text(section, key);
    if (value.isEmpty())
        m_setup.problems.append(u"[%1] %2 항목이 없습니다."_s.arg(section, key));
    return value;
}

QString SetupReader::Absolute(const QString& path) const
{
    if (path.isEmpty() || QDir::isAbsolutePath(NativePath(path)))
        return path;
    return m_folder + u'/' + path;
}

bool IsPort(const QString& text)
{
    bool isNumber = false;
    const int port = text.toInt(&isNumber);
    return isNumber && port >= 1 && port <= 65535;
}

void SetupReader::ReadDatabase()
{
    const QString section = u"Database"_s;
    DatabaseSettings& database = m_setup.database;
    database.driver = Needed(section, u"Driver"_s);
    database.host = Text(section, u"Host"_s);
    database.socket = Text(section, u"Socket"_s);
    database.name = Needed(section, u"Name"_s);
    database.user = Text(section, u"User"_s);
    database.password = Text(section, u"Password"_s);
    m_setup.passwordFile = NativePath(Absolute(Text(section, u"PasswordFile"_s)));
    if (database.driver.compare(u"QSQLITE", Qt::CaseInsensitive) == 0)
        database.name = NativePath(Absolute(database.name));

    const QString port = Text(section, u"Port"_s);
    database.port = port.toInt();
    if (!port.isEmpty() && !IsPort(port))
        m_setup.problems.append(u"[Database] Port는 1부터 65535까지의 숫자입니다. (%1)"_s.arg(port));
    database.certificateAuthority = NativePath(Absolute(Text(section, u"SslCa"_s)));
    const QString verifies = Text(section, u"SslVerify"_s);
    database.verifiesServerName = verifies != u"0";
    if (!verifies.isEmpty() && verifies != u"0" && verifies != u"1")
        m_setup.problems.append(u"[Database] SslVerify는 0이나 1입니다. (%1)"_s.arg(verifies.left(60)));
    if (!verifies.isEmpty() && database.certificateAuthority.isEmpty())
        m_setup.problems.append(u"[Database] SslVerify를 쓰려면 SslCa가 있어야 합니다."_s);
    if (database.certificateAuthority.contains(u';'))
        m_setup.problems.append(u"[Database] SslCa에 쌍반점(;)을 쓸 수 없습니다."_s);
    // The client library would take options in the place of a name.
    if (database.host.contains(u';') || database.host.contains(u'='))
        m_setup.problems.append(u"[Database] Host는 서버의 이름입니다. (%1)"_s.arg(database.host.left(60)));
    for (const QString& host : database.host.split(u',')) {
        const qsizetype colon = host.lastIndexOf(u':');
        if (colon >= 0 && !IsPort(host.sliced(colon + 1)))
            m_setup.problems.append(
                u"[Database] Host의 포트는 1부터 65535까지의 숫자입니다. (%1)"_s.arg(host.trimmed()));
    }
}

void SetupReader::ReadClient()
{
    constexpr int MostMomentSeconds = 10;
    const QString section = u"Client"_s;
    m_setup.client.CommPort = Text(section, u"CommPort"_s);
    m_setup.client.ImageFormat = Text(section, u"ImageFormat"_s);
    m_setup.client.CheckTable = Text(section, u"CheckTable"_s);
    m_setup.client.PrintPreview = Switch(section, u"PrintPreview"_s);
    m_setup.client.ShutterSound = Text(section, u"ShutterSound"_s) != u"0";
    if (const QString seconds = Text(section, u"MomentsBefore"_s); !seconds.isEmpty()) {
        bool isNumber = false;
        const int value = seconds.toInt(&isNumber);
        if (isNumber && value >= 0 && value <= MostMomentSeconds)
            m_setup.client.MomentsBefore = value;
        else
            m_setup.problems.append(u"[Client] MomentsBefore는 0부터 %1까지의 초입니다. (%2)"_s.arg(
                QString::number(MostMomentSeconds), seconds.left(60)));
    }
    m_setup.client.LaunchEncoding = Text(section, u"LaunchEncoding"_s).toLower();
    const QStringList encodings{QString(), u"utf-8"_s, u"windows-949"_s};
    if (!encodings.contains(m_setup.client.LaunchEncoding))
        m_setup.problems.append(u"[Client] LaunchEncoding은 utf-8이나 windows-949입니다. (%1)"_s.arg(
            m_setup.client.LaunchEncoding.left(60)));
    m_setup.needsCaptureMount = Text(section, u"CaptureMount"_s) == u"1";
    ReadSections(Text(section, u"EtcList"_s));
    ReadCaptureRoot(Needed(section, u"CaptureRoot"_s));
}

void SetupReader::ReadSections(const QString& list)
{
    QStringList names;
    for (const QString& piece : list.split(u',')) {
        const QString name = piece.trimmed();
        if (name.isEmpty())
            continue;
        // The name becomes the name of a folder below the root.
        if (!IsPathPart(name) || !FitsSectionColumn(name))
            m_setup.problems.append(
                u"[Client] EtcList의 \"%1\"은(는) 검사 이름으로 쓸 수 없습니다."_s.arg(name.left(60)));
        if (names.contains(name, Qt::CaseInsensitive))
            m_setup.oddities.append(
                {u"[Client] EtcList에 \"%1\"이(가) 두 번 있습니다"_s.arg(name.left(60)), u"하나를 지우십시오"_s});
        names.append(name);
    }
    if (names.isEmpty())
        m_setup.oddities.append({u"[Client] EtcList가 비어 있어 캡쳐화면이 열리지 않습니다"_s,
                                 u"EtcList=위내시경,대장내시경처럼 검사 종류를 적으십시오"_s});
    m_setup.client.EtcList = names.join(u',');
}

void SetupReader::ReadCaptureRoot(QString root)
{
    if (root.isEmpty())
        return;
    static const QRegularExpression drive(uR"(^[A-Za-z]:)"_s);
    if (drive.match(root).hasMatch() && !QDir::isAbsolutePath(root)) {
        m_setup.problems.append(u"[Client] CaptureRoot에 드라이브 문자를 쓸 수 없습니다. (%1)"_s.arg(root));
        return;
    }
    root = Absolute(root);
    if (!root.endsWith(u'/') && !root.endsWith(u'\\')) {
        root += u'\\';
        m_setup.notes.append(u"[Client] CaptureRoot 끝에 구분 기호가 없어 붙였습니다: %1"_s.arg(root));
    }
    m_setup.client.CaptureRoot = root;
}

void SetupReader::ReadPlaces()
{
    static const QRegularExpression numbered(uR"(^Saup\.(\d+)$)"_s, QRegularExpression::CaseInsensitiveOption);
    for (const QString& section : m_ini.Sections()) {
        const QRegularExpressionMatch match = numbered.match(section);
        bool isNumber = false;
        const int number = match.captured(1).toInt(&isNumber);
        if (isNumber)
            m_setup.places[number] = {Text(section, u"Yoyangno"_s), Text(section, u"Hospital"_s)};
        else if (section.startsWith(u"Saup"_s, Qt::CaseInsensitive))
            m_setup.notes.append(u"[%1]은(는) 읽지 않았습니다. [Saup.1]처럼 번호를 적으세요."_s.arg(section));
    }
}

void SetupReader::ReadDevices()
{
    ClientSetupRecord& client = m_setup.client;
    client.TestPicture = Text(u"Video"_s, u"TestPicture"_s) == u"1";
    m_asked << NameOf(u"SerialPort"_s, {});
    for (const QString& port : m_ini.Keys(u"SerialPort"_s)) {
        bool isNumber = false;
        const int number = port.toInt(&isNumber);
        if (!isNumber)
            continue;
        const QString device = Text(u"SerialPort"_s, port);
        if (!device.isEmpty())
            client.SerialPorts.insert(QString::number(number), device);
    }
    client.PrinterFolder = Absolute(Text(u"Printer"_s, u"Folder"_s));
    const QStringList scales{QString(), u"1"_s, u"1.25"_s, u"1.5"_s, u"1.75"_s, u"2"_s, u"fit"_s};
    m_setup.screenScale = Text(u"Screen"_s, u"Scale"_s).toLower();
    if (!scales.contains(m_setup.screenScale))
        m_setup.problems.append(
            u"[Screen] Scale은 1, 1.25, 1.5, 1.75, 2, fit 가운데 하나입니다. (%1)"_s.arg(m_setup.screenScale.left(60)));
    client.BurnerImage = Absolute(Text(u"Burner"_s, u"Image"_s));
    client.BurnerDicomPlain = Text(u"Burner"_s, u"Dicom"_s) == u"2";
    client.BurnerDicom = client.BurnerDicomPlain || Text(u"Burner"_s, u"Dicom"_s) == u"1";
    client.BurnerIndex = Text(u"Burner"_s, u"Index"_s) == u"1";
    client.BurnerIndexNotes = Text(u"Burner"_s, u"IndexNotes"_s) == u"1";
    client.BurnerUsb = Text(u"Burner"_s, u"Usb"_s) == u"1";
}

void SetupReader::NoteUnread()
{
    constexpr qsizetype most = 20;
    QList<SetupFile::Oddity>& oddities = m_setup.oddities;
    for (const QString& section : m_ini.Sections()) {
        if (!m_asked.contains(NameOf(section, {}))) {
            // Those like [Saup] have a note.
            if (!section.startsWith(u"Saup"_s, Qt::CaseInsensitive))
                oddities.append({u"[%1]은(는) 모르는 구역입니다"_s.arg(section.left(60)), u"이름을 고치십시오"_s});
            continue;
        }
        for (const QString& key : m_ini.Keys(section)) {
            if (!key.startsWith(u'#') && !m_asked.contains(NameOf(section, key)))
                oddities.append(
                    {u"[%1] %2은(는) 모르는 키입니다"_s.arg(section, key.left(60)), u"키의 이름을 고치십시오"_s});
        }
    }
    for (const QString& unread : m_ini.Unread())
        oddities.append(
            {u"읽지 않는 줄이거나, 두 번 있어 첫째만 읽습니다: %1"_s.arg(unread.left(60)), u"고치거나 지우십시오"_s});
    if (oddities.size() > most) {
        const qsizetype more = oddities.size() - most;
        oddities.resize(most);
        oddities.append({u"그 밖에 %1건"_s.arg(more), u"설정 파일을 다시 만드십시오"_s});
    }
}

SetupFile ReadSetupFile(const QByteArray& content, const QString& folder)
{
    return SetupReader(content, folder).Read();
}
