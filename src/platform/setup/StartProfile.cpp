#include "platform/setup/StartProfile.h"

#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/services.h"
#include "platform/setup/register_setup.h"
#include "platform/setup/setup_steps.h"

#include <QFileInfo>

using namespace Qt::StringLiterals;
using namespace setup_steps;

namespace {
/// Tables without which no visit can be worked on. The station makes the others itself.
const QStringList& NeededTables()
{
    static const QStringList tables{u"ca"_s, u"cap"_s,    u"wj"_s, u"bh"_s, u"jh"_s,
                                    u"pt"_s, u"doctor"_s, u"so"_s, u"yk"_s};
    return tables;
}

void Note(const QString& text)
{
    qWarning("capture-station: %s", qUtf8Printable(text));
}

bool OthersMayRead(const QString& path)
{
    return QFileInfo(NativePath(path)).permissions().testFlag(QFileDevice::ReadOther);
}

void NoteOpenPassword(const SetupFile& file, const QString& path)
{
    const QString holder = PasswordHolder(file, path);
    if (!holder.isEmpty() && OthersMayRead(holder))
        Note(u"암호가 든 파일을 다른 사용자도 읽을 수 있습니다: %1"_s.arg(NativePath(holder)));
}

ConnectionPointer OpenClinic(const SetupFile& file)
{
    ConnectionPointer connection = OpenConnection(file.database);
    const QString database = connection->DefaultDatabase();
    const std::unique_ptr<AdoRecordset> tables = connection->Execute(u" SHOW TABLES FROM "_s + database + u" "_s);
    QStringList missing = NeededTables();
    for (; !tables->Eof(); tables->MoveNext())
        missing.removeIf([&](const QString& table) {
            return table.compare(tables->Fields(u"tables_in_"_s + database).toString(), Qt::CaseInsensitive) == 0;
        });
    if (!missing.isEmpty())
        throw PlatformError(u"데이터베이스에 필요한 테이블이 없습니다.!! (%1)"_s.arg(missing.join(u", "_s)));
    return connection;
}

/// Runs a step of the start; what it can't do joins the problems.
template <class Step>
void Attempt(QStringList& problems, Step&& step)
{
    try {
        step();
    } catch (const PlatformError& error) {
        problems.append(error.Text());
    }
}
} // namespace

bool StartProfile::SetupRead(ClientSetupRecord& setup, SaupRecords& places, bool openConnection,
                             ConnectionPointer& connection)
{
    const QStringList candidates = Candidates(UseService<Desktop>().ProgramFolder());
    const QString path = FindSetupFile(candidates);
    if (path.isEmpty()) {
        ShowInformation(u"설정 파일이 없습니다.!!\n\n%1"_s.arg(NativePath(candidates.join(u'\n'))));
        return false;
    }

    SetupFile file;
    QStringList problems;
    ConnectionPointer opened;
    Attempt(problems, [&] { file = ReadSetupFile(ReadSmallFile(path), QFileInfo(path).absolutePath()); });
    problems.append(file.problems);
    if (problems.isEmpty()) {
        Attempt(problems, [&] {
            try {
                CheckCaptureRoot(file, m_missingRoot);
            } catch (const FilesAway&) {
                if (m_missingRoot == MissingRoot::IsTold)
                    throw PlatformError(
                        u"캡쳐 폴더의 공유가 응답하지 않습니다.!! (%1)"_s.arg(NativePath(file.client.CaptureRoot)));
                // An examination goes on without it.
                ShowInformation(
                    u"캡쳐 폴더의 공유가 응답하지 않습니다.!! (%1)\r\n"
                    "응답할 때까지 그림은 이 컴퓨터에 보관합니다."_s.arg(NativePath(file.client.CaptureRoot)));
            }
        });
        Attempt(problems, [&] {
            ReadPassword(file);
            if (openConnection)
                opened = OpenClinic(file);
        });
    }
    for (const QString& note : file.notes)
        Note(note);
    NoteOpenPassword(file, path);
    if (!problems.isEmpty()) {
        ShowInformation(u"설정을 확인하세요.!! (%1)\n\n%2"_s.arg(path, problems.join(u'\n')));
        return false;
    }
    setup = file.client;
    places = file.places;
    if (openConnection)
        connection = opened;
    return true;
}

QString ScreenScaleOfSetup(const QString& programFolder)
{
    try {
        const QString path = FindSetupFile(Candidates(programFolder));
        return path.isEmpty() ? QString() : ReadSetupFile(ReadSmallFile(path), {}).screenScale;
    } catch (const PlatformError&) {
        return {};
    }
}

void RegisterSetup(MissingRoot missingRoot)
{
    RegisterComponent<clsStartProfile>(u"prjStartProfile.clsStartProfile"_s,
                                       [missingRoot] { return std::make_unique<StartProfile>(missingRoot); });
}
