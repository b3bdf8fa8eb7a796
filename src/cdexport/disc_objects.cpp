#include "cdexport/disc_objects.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "filing/originals.h"
#include "frame/components.h"
#include "frame/file_calls.h"
#include "frame/services.h"
#include "identifiers/dicom_uids.h"
#include "records/doctor_lookup.h"
#include "records/kept_study.h"
#include "records/picture_facts.h"
#include "records/study_identity.h"
#include "session/VisitContext.h"
#include "text/text_routines.h"

#include <QCryptographicHash>
#include <QFileInfo>
#include <QRegularExpression>

using namespace Qt::StringLiterals;

namespace {

const QString ObjectFolder = u"DICOM"_s;
const QString Directory = u"DICOMDIR"_s;

/// A medium's names have eight capital letters and digits. The first two tell ours from what else may lie there.
QString ObjectName(const QString& staged)
{
    constexpr qsizetype Digits = 6;
    constexpr int Letters = 36;
    quint64 hash = 0;
    for (const char byte : QCryptographicHash::hash(staged.toUtf8(), QCryptographicHash::Sha256).first(8))
        hash = hash << 8 | static_cast<unsigned char>(byte);
    QString name;
    for (; name.size() < Digits; hash /= Letters)
        name += QString::number(hash % Letters, Letters).toUpper();
    return u"CS"_s + name;
}

bool IsOurs(const QString& name)
{
    static const QRegularExpression ours(u"^CS[0-9A-Z]{6}$"_s);
    return ours.match(name).hasMatch();
}

/// Name under which the picture lies in the staging folder: it gets a number beside another of its name. Empty when it
/// isn't there.
QString StagedName(const QString& area, const QString& picture)
{
    const QString stem = QFileInfo(NativePath(picture)).completeBaseName();
    for (const QString& name : Files().FilesStartingWith(area, stem)) {
        if (Files().SameContent(picture, area + name))
            return name;
    }
    return {};
}

QString TimeOf(const QDateTime& at)
{
    return at.toLocalTime().toString(u"HHmmss"_s);
}

/// A marked-up picture is told from its original, as a server is told of it.
void TakeOriginal(const Visit& visit, const QStringList& identities, const QByteArray& content, DicomPicture& facts)
{
    const QString path = originals::PathOf(visit, facts.number, identities);
    const QByteArray original = path.isEmpty() ? QByteArray() : Files().ReadArchivedFile(path);
    if (original.isEmpty() || original == content)
        return;
    facts.original = {ClassUidOf(facts.study.kind.modality), InstanceUid(facts, original)};
    facts.instance = InstanceOfMarking(facts.number, 1);
}

/// On a thread of its own: reads, makes, writes.
QString MakeStaged(const QString& area, const QString& path, const Visit& visit, const QStringList& identities,
                   DicomPicture facts, DicomKit::Coding coding)
{
    const QString name = StagedName(area, path);
    if (name.isEmpty())
        return {};
    const auto kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
    facts.takenAt = Files().LastModified(path).toLocalTime();
    // A directory doesn't do without one.
    if (facts.study.time.isEmpty())
        facts.study.time = TimeOf(facts.takenAt);
    const QByteArray content = Files().ReadArchivedFile(path);
    TakeOriginal(visit, identities, content, facts);
    QByteArray object;
    const DicomOutcome outcome = kit->MakeObject(content, facts, coding, object, {});
    if (outcome.kind != DicomOutcome::Accepted)
        return outcome.reason;
    const QString folder = area + ObjectFolder + u'\\';
    MakeFolder(folder);
    Files().WriteWholeFile(folder + ObjectName(name), object);
    return {};
}

void RemoveLoneThere(const QString& area)
{
    const QString folder = area + ObjectFolder + u'\\';
    if (!FolderExists(folder))
        return;
    QStringList wanted;
    for (const FolderEntry& entry : Files().Entries(area))
        wanted << ObjectName(entry.Name);
    bool isEmpty = true;
    for (const FolderEntry& entry : Files().Entries(folder)) {
        if (IsOurs(entry.Name) && !wanted.contains(entry.Name))
            Files().DeleteEntry(folder, entry.Name);
        else
            isEmpty = false;
    }
    if (!isEmpty)
        return;
    Files().DeleteEntry(area, ObjectFolder);
    DeleteFile(area + Directory);
}

/// What the visit is known under elsewhere. Where the setup names neither institution nor root, it isn't kept: the
/// place of business of whoever examined stands for them.
DicomIdentity IdentityOf(const Visit& visit, const QString& doctor)
{
    if (const std::optional<DicomIdentity> kept = KeptIdentity(visit))
        return *kept;
    if (const std::optional<DicomIdentity> made = NewIdentity(visit, ClientSetup.Pacs, SaupTable))
        return KeepIdentity(visit, *made);
    DicomIdentity identity = FormerIdentities(visit, ClientSetup.Pacs, SaupTable).first();
    const std::optional<DoctorRow> row = Trim(doctor).isEmpty() ? std::nullopt : LookupDoctor(doctor, visit.ymd);
    if (row && IsNumericText(row->Saup)) {
        if (const auto place = SaupTable.find(WholeNumber(row->Saup)); place != SaupTable.end())
            identity.institution = place->second.Yoyangno.trimmed();
    }
    return identity;
}

/// A directory has room for Latin letters and digits alone: the number of the clinic stands for a name without them.
QString ClinicName()
{
    static const QRegularExpression latin(u"[A-Za-z0-9]"_s);
    if (ClientSetup.Pacs.Institution.contains(latin) || SaupTable.empty())
        return ClientSetup.Pacs.Institution;
    const auto& place = SaupTable.begin()->second;
    return place.Hospital.contains(latin) ? place.Hospital : place.Yoyangno;
}

} // namespace

DicomPicture disc_objects::FactsOf(const Visit& visit, const QString& first)
{
    const QString doctor = Launched().DoctorOf(visit);
    DicomPicture facts = PictureFacts(visit, doctor, ClientSetup.Pacs, SaupTable);
    const bool wasSent = KeptIdentity(visit).has_value();
    facts.identity = IdentityOf(visit, doctor);
    const QString time = filecalls::Ask([first] { return TimeOf(Files().LastModified(first)); });
    facts.study = StudyToSend(visit, wasSent, time, ClientSetup.Pacs);
    if (facts.study.time.isEmpty())
        facts.study.time = time;
    return facts;
}

QString disc_objects::Stage(const QString& area, const QString& picture, const Visit& visit, const DicomPicture& facts)
{
    try {
        DicomPicture own = facts;
        own.number = visit.PictureNumber(QFileInfo(NativePath(picture)).fileName());
        const auto coding = ClientSetup.BurnerDicomPlain ? DicomKit::Coding::Uncompressed : DicomKit::Coding::Jpeg;
        const QStringList identities = originals::KnownIdentities(visit, own.number);
        return filecalls::Ask([area, picture, visit, identities, own, coding] {
            return MakeStaged(area, picture, visit, identities, own, coding);
        });
    } catch (const PlatformError& error) {
        return error.Text();
    }
}

void disc_objects::RemoveLone(const QString& area)
{
    filecalls::Ask([area] { RemoveLoneThere(area); });
}

QString disc_objects::ClinicText()
{
    if (!ClientSetup.Pacs.Institution.isEmpty() || SaupTable.empty())
        return ClientSetup.Pacs.Institution;
    return SaupTable.begin()->second.Hospital;
}

QString disc_objects::WriteDirectory(const QString& area)
{
    try {
        RemoveLone(area);
        if (!FolderExists(area + ObjectFolder))
            return {};
        const DicomDisc disc{ClientSetup.BurnerDicomPlain, ClinicName()};
        const DicomOutcome outcome = filecalls::Ask([area, disc] {
            return CreateObject<DicomKit>(QString::fromUtf16(DicomKitName))->MakeDirectory(area, disc, {});
        });
        return outcome.kind == DicomOutcome::Accepted ? QString() : outcome.reason;
    } catch (const PlatformError& error) {
        return error.Text();
    }
}
