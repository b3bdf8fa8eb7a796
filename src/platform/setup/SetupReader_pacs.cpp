#include "contracts/files.h"
#include "identifiers/dicom_uids.h"
#include "platform/setup/SetupReader.h"

#include <QRegularExpression>

using namespace Qt::StringLiterals;

QString SetupReader::ApplicationTitle(const QString& section, const QString& key, const QString& title,
                                      const QString& otherwise)
{
    // Blanks around it don't count; a backslash separates values.
    static const QRegularExpression allowed(
        uR"(\A[\x21-\x2C\x2E-\x5B\x5D-\x7E]([\x20-\x5B\x5D-\x7E]{0,14}[\x21-\x5B\x5D-\x7E])?\z)"_s);
    if (title.isEmpty())
        return otherwise;
    if (!allowed.match(title).hasMatch())
        m_setup.problems.append(
            u"[%1] %2은(는) 영문자와 숫자 16자까지입니다. (%3)"_s.arg(section, key, title.left(60)));
    return title;
}

/// What a server is told, and a disc as well.
void SetupReader::ReadIdentity()
{
    constexpr qsizetype longestInstitution = 64;
    const QString section = u"Pacs"_s;
    PacsSetupRecord& pacs = m_setup.client.Pacs;
    pacs.Institution = Text(section, u"Institution"_s);
    if (pacs.Institution.size() > longestInstitution)
        m_setup.problems.append(
            u"[Pacs] Institution은 %1자까지입니다. (%2자)"_s.arg(longestInstitution).arg(pacs.Institution.size()));
    pacs.UidRoot = Text(section, u"UidRoot"_s);
    if (!pacs.UidRoot.isEmpty() && !IsUidRoot(pacs.UidRoot))
        m_setup.problems.append(
            u"[Pacs] UidRoot는 1.2.410.200000처럼 숫자와 점으로 24자까지입니다. (%1)"_s.arg(pacs.UidRoot.left(60)));
    static const QRegularExpression prefix(uR"(\A[A-Za-z0-9._-]{0,8}\z)"_s);
    pacs.PatientIdPrefix = Text(section, u"PatientIdPrefix"_s);
    if (!prefix.match(pacs.PatientIdPrefix).hasMatch())
        m_setup.problems.append(
            u"[Pacs] PatientIdPrefix는 영문자, 숫자, - . _ 8자까지입니다. (%1)"_s.arg(pacs.PatientIdPrefix.left(60)));
    const QString unicode = u"ISO_IR 192"_s;
    const QString korean = uR"(\ISO 2022 IR 149)"_s;
    const QString characters = Text(section, u"CharacterSet"_s);
    pacs.Characters = characters == korean ? DicomCharacters::Korean : DicomCharacters::Unicode;
    if (!characters.isEmpty() && characters != unicode && characters != korean)
        m_setup.problems.append(
            u"[Pacs] CharacterSet은 %1나 %2입니다. (%3)"_s.arg(unicode, korean, characters.left(60)));
    pacs.HasNameParts = Switch(section, u"NameParts"_s);
}

void SetupReader::ReadPacs()
{
    const QString section = u"Pacs"_s;
    PacsSetupRecord& pacs = m_setup.client.Pacs;
    ReadIdentity();
    ReadKinds();
    ReadTls();
    ReadObjects();
    ReadWorklist();
    pacs.SendsAtClosing = Switch(section, u"AtClosing"_s);
    const DicomPeer server = ReadPeer(section);
    pacs.Host = server.host;
    pacs.Port = server.port;
    pacs.CalledAet = server.calledAet;
    pacs.CallingAet = server.callingAet;
    const QString send = Text(section, u"Send"_s).toLower();
    if (pacs.Host.isEmpty())
        return;
    pacs.SendsEachStill = send == u"still";
    if (!send.isEmpty() && send != u"still" && send != u"save")
        m_setup.problems.append(u"[Pacs] Send는 save나 still입니다. (%1)"_s.arg(send.left(60)));
}

void SetupReader::CheckHost(const QString& section, const QString& host)
{
    // It becomes a word of a command.
    static const QRegularExpression allowed(uR"(\A[A-Za-z0-9:][A-Za-z0-9.:_-]*\z)"_s);
    if (!allowed.match(host).hasMatch())
        m_setup.problems.append(u"[%1] Host는 서버의 이름이나 주소입니다. (%2)"_s.arg(section, host.left(60)));
}

DicomPeer SetupReader::ReadPeer(const QString& section)
{
    DicomPeer peer;
    peer.host = Text(section, u"Host"_s);
    const QString port = Text(section, u"Port"_s);
    const QString called = Text(section, u"CalledAet"_s);
    const QString calling = Text(section, u"CallingAet"_s);
    if (peer.host.isEmpty())
        return {};
    CheckHost(section, peer.host);
    if (!port.isEmpty())
        peer.port = port.toInt();
    if (!port.isEmpty() && !IsPort(port))
        m_setup.problems.append(u"[%1] Port는 1부터 65535까지의 숫자입니다. (%2)"_s.arg(section, port.left(60)));
    peer.calledAet = ApplicationTitle(section, u"CalledAet"_s, called, u"ANY-SCP"_s);
    peer.callingAet = ApplicationTitle(section, u"CallingAet"_s, calling, u"CAPTURE"_s);
    peer.tls = m_setup.client.Pacs.Tls;
    return peer;
}

void SetupReader::ReadKinds()
{
    const QString section = u"Pacs"_s;
    const QString prefix = u"Section."_s;
    static const QRegularExpression bodyPart(u"\\A[A-Z0-9_ ]{0,16}\\z"_s);
    for (const QString& key : m_ini.Keys(section)) {
        if (!key.startsWith(prefix, Qt::CaseInsensitive))
            continue;
        const QString value = Text(section, key);
        const QStringList parts = value.split(u',');
        const std::optional<DicomModality> modality = ModalityOf(parts[0].trimmed().toUpper());
        const DicomPictureKind kind{modality.value_or(DicomModality::Endoscopy), parts.value(1).trimmed().toUpper(),
                                    parts.value(2).trimmed().toUpper()};
        const bool isSide = kind.laterality.isEmpty() || kind.laterality == u"R" || kind.laterality == u"L";
        if (!modality || parts.size() > 3 || !bodyPart.match(kind.bodyPart).hasMatch() || !isSide)
            m_setup.problems.append(
                u"[Pacs] %1은(는) ES, US, GM, XC 가운데 하나이고, 그 뒤에 부위(영문)와 좌우(R, L)를 적습니다. (%2)"_s
                    .arg(key.left(60), value.left(60)));
        m_setup.client.Pacs.Kinds[key.sliced(prefix.size()).trimmed()] = kind;
    }
}

void SetupReader::ReadTls()
{
    const QString section = u"Pacs"_s;
    DicomTls& tls = m_setup.client.Pacs.Tls;
    tls.authority = NativePath(Absolute(Text(section, u"TlsCa"_s)));
    tls.certificate = NativePath(Absolute(Text(section, u"TlsCertificate"_s)));
    tls.key = NativePath(Absolute(Text(section, u"TlsKey"_s)));
    if (tls.authority.isEmpty() && !(tls.certificate.isEmpty() && tls.key.isEmpty()))
        m_setup.problems.append(u"[Pacs] TlsCertificate와 TlsKey를 쓰려면 TlsCa가 있어야 합니다."_s);
    if (tls.certificate.isEmpty() != tls.key.isEmpty())
        m_setup.problems.append(u"[Pacs] TlsCertificate와 TlsKey는 함께 적습니다."_s);
}

/// What goes beside the pictures, and what is said of them.
void SetupReader::ReadObjects()
{
    const QString section = u"Pacs"_s;
    PacsSetupRecord& pacs = m_setup.client.Pacs;
    pacs.BurnedIn = Text(section, u"BurnedIn"_s).toUpper();
    if (!pacs.BurnedIn.isEmpty() && pacs.BurnedIn != u"YES" && pacs.BurnedIn != u"NO")
        m_setup.problems.append(u"[Pacs] BurnedIn은 YES나 NO입니다. (%1)"_s.arg(pacs.BurnedIn.left(60)));
    const QString port = Text(section, u"CommitPort"_s);
    pacs.CommitPort = port.toInt();
    if (!port.isEmpty() && !IsPort(port))
        m_setup.problems.append(u"[Pacs] CommitPort는 1부터 65535까지의 숫자입니다. (%1)"_s.arg(port.left(60)));
    pacs.SendsReports = Switch(section, u"Report"_s);
    pacs.SendsMovies = Switch(section, u"Movies"_s);
    pacs.MovieSound = Switch(section, u"MovieSound"_s);
    pacs.Rejects = Switch(section, u"Reject"_s);
}

void SetupReader::ReadWorklist()
{
    const QString section = u"Worklist"_s;
    const QString prefix = u"Code."_s;
    PacsSetupRecord& pacs = m_setup.client.Pacs;
    pacs.Worklist = ReadPeer(section);
    pacs.Steps = ReadPeer(u"Mpps"_s);
    for (const QString& key : m_ini.Keys(section)) {
        if (key.startsWith(prefix, Qt::CaseInsensitive))
            pacs.WorklistCodes[key.sliced(prefix.size()).trimmed()] = Text(section, key);
    }
}
