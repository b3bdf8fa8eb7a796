#include "platform/dicom/DcmtkKit.h"

#include "contracts/desktop.h"
#include "contracts/dicom.h"
#include "contracts/dicom_uids.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "frame/services.h"
#include "platform/dicom/dataset_text.h"
#include "platform/dicom/DcmtkRun.h"
#include "platform/dicom/jpeg_frame.h"
#include "platform/dicom/register_dicom.h"
#include "platform/dicom/store_report.h"

#include <QScopeGuard>

#include <atomic>

using namespace Qt::StringLiterals;

namespace {

constexpr int MakingMs = 60000;
/// A large picture on a slow line says nothing on its way.
constexpr int SendingMs = 300000;
/// Seconds: of the connection, of its agreement, of an answer, and of the network's silence.
const QStringList SendingPatience{u"-to"_s, u"10"_s, u"-ta"_s, u"20"_s, u"-td"_s, u"60"_s, u"-ts"_s, u"60"_s};
constexpr int EchoingMs = 30000;
const QStringList EchoingPatience{u"-to"_s, u"5"_s, u"-ta"_s, u"5"_s, u"-td"_s, u"5"_s, u"-ts"_s, u"5"_s};

const QString FolderPrefix = u"Dicom-"_s;
const QString DatasetName = u"dataset.txt"_s;
const QString FrameName = u"frame.jpg"_s;

QString NameOf(const QString& path)
{
    return path.mid(path.lastIndexOf(u'\\') + 1);
}

/// What killed processes of this machine and user left: their folders hold patients' data.
void RemoveLeftFolders(const QString& above)
{
    for (const FolderEntry& entry : Files().Entries(above)) {
        if (!entry.IsFolder || !entry.Name.startsWith(FolderPrefix))
            continue;
        const QString mark = entry.Name.section(u'-', 1, 1);
        if (Files().HolderOf(mark) == Holder::Dead && Files().ForeignOwner(above + entry.Name).isEmpty())
            Files().DeleteEntry(above, entry.Name);
    }
}

DicomOutcome FaultOf(const DcmtkResult& result)
{
    if (!result.fault.isEmpty())
        return {DicomOutcome::Away, result.fault};
    return {DicomOutcome::Away, PeerReason(result.lines)};
}

} // namespace

DcmtkKit::~DcmtkKit()
{
    if (m_folder.isEmpty())
        return;
    journal::NotingFaults(
        [&] { Files().DeleteEntry(UseService<Desktop>().ProgramFolder() + u'\\', NameOf(m_folder.chopped(1))); });
}

QString DcmtkKit::WorkFolder()
{
    if (!m_folder.isEmpty())
        return m_folder;
    static std::atomic<int> made = 0;
    const QString above = UseService<Desktop>().ProgramFolder() + u'\\';
    journal::NotingFaults([&] { RemoveLeftFolders(above); });
    const QString folder = above + FolderPrefix + Files().ProcessMark() + u'-' + QString::number(++made) + u'\\';
    Files().MakePrivateFolder(folder);
    return m_folder = folder;
}

DicomOutcome DcmtkKit::MakeObject(const QByteArray& content, const DicomPicture& picture, const QString& path,
                                  const std::stop_token& stop)
{
    const JpegFrame frame = ReadJpegFrame(content);
    if (!frame.problem.isEmpty())
        return {DicomOutcome::Refused, frame.problem};
    try {
        const QString folder = WorkFolder();
        const auto clean = qScopeGuard([&folder] {
            for (const QString& name : {DatasetName, FrameName}) {
                journal::NotingFaults([&] { DeleteFile(folder + name); });
            }
        });
        Files().WritePrivateFile(folder + FrameName, frame.coded);
        const QByteArray dataset = DatasetText(picture, InstanceUid(picture, content), frame, FrameName);
        Files().WritePrivateFile(folder + DatasetName, dataset);
        const DcmtkResult result = RunDcmtk(u"dump2dcm"_s, {DatasetName, NameOf(path)}, folder, MakingMs, stop);
        if (result.succeeded)
            return {DicomOutcome::Accepted};
        DeleteFile(path);
        if (!result.fault.isEmpty())
            return {DicomOutcome::Away, result.fault};
        // It may quote a line of the data set.
        return {DicomOutcome::Cut, u"DICOM 파일을 만들지 못했습니다.!!"_s};
    } catch (const PlatformError& error) {
        return {DicomOutcome::Away, error.Text()};
    }
}

QList<DicomOutcome> DcmtkKit::Send(const DicomPeer& peer, const QStringList& paths, const std::stop_token& stop)
{
    QString folder;
    try {
        folder = WorkFolder();
    } catch (const PlatformError& error) {
        return QList<DicomOutcome>(paths.size(), {DicomOutcome::Away, error.Text()});
    }
    QStringList names;
    for (const QString& path : paths)
        names << NameOf(path);
    const QStringList arguments =
        QStringList{u"-v"_s, u"-nh"_s, u"-R"_s, u"-xy"_s} + SendingPatience +
        QStringList{u"-aet"_s, peer.callingAet, u"-aec"_s, peer.calledAet, peer.host, QString::number(peer.port)} +
        names;
    const DcmtkResult result = RunDcmtk(u"storescu"_s, arguments, folder, SendingMs, stop);
    QList<DicomOutcome> outcomes = OutcomesOfReport(result.lines, names);
    for (DicomOutcome& outcome : outcomes) {
        if (outcome.MayPassLater() && !result.fault.isEmpty())
            outcome.reason = result.fault;
    }
    return outcomes;
}

DicomOutcome DcmtkKit::Echo(const DicomPeer& peer, const std::stop_token& stop)
{
    const QStringList arguments =
        QStringList{u"-v"_s} + EchoingPatience +
        QStringList{u"-aet"_s, peer.callingAet, u"-aec"_s, peer.calledAet, peer.host, QString::number(peer.port)};
    const DcmtkResult result = RunDcmtk(u"echoscu"_s, arguments, QString(), EchoingMs, stop);
    return result.succeeded ? DicomOutcome{DicomOutcome::Accepted} : FaultOf(result);
}

DicomOutcome DcmtkKit::MakeDirectory(const QString& folder, const std::stop_token& stop)
{
    try {
        DeleteFile(folder + u"DICOMDIR"_s);
        QStringList objects;
        const QString below = folder + u"DICOM\\"_s;
        if (FolderExists(below)) {
            for (const FolderEntry& entry : Files().Entries(below)) {
                if (!entry.IsFolder && !entry.IsLink)
                    objects << u"DICOM/"_s + entry.Name;
            }
        }
        if (objects.isEmpty())
            return {DicomOutcome::Accepted};
        // The profile for compressed pictures; the visits have no time, which a directory can't do without.
        const DcmtkResult result =
            RunDcmtk(u"dcmmkdir"_s, QStringList{u"-Pdv"_s, u"+I"_s} + objects, folder, MakingMs, stop);
        return result.succeeded ? DicomOutcome{DicomOutcome::Accepted} : FaultOf(result);
    } catch (const PlatformError& error) {
        return {DicomOutcome::Away, error.Text()};
    }
}

void RegisterDicom()
{
    RegisterComponent<DicomKit>(QString::fromUtf16(DicomKitName), [] { return std::make_unique<DcmtkKit>(); });
}
