#include "support/FailingFiles.h"

#include "contracts/PlatformError.h"
#include "frame/components.h"

using namespace Qt::StringLiterals;

FailingFiles& FailingFiles::InstallOver()
{
    auto real = InstallService<FileStore>(nullptr);
    auto failing = std::make_unique<FailingFiles>(std::move(real));
    FailingFiles& files = *failing;
    InstallService<FileStore>(std::move(failing));
    return files;
}

void FailingFiles::FailAt(int countdown, bool lasting)
{
    m_countdown = countdown;
    m_lasting = lasting;
}

void FailingFiles::Step()
{
    if (m_countdown == 0 || --m_countdown > 0)
        return;
    if (m_lasting)
        m_countdown = 1;
    throw PlatformError(u"디스크가 가득 찼습니다.!!"_s);
}

void FailingFiles::MakeFolder(const QString& path)
{
    Step();
    m_real->MakeFolder(path);
}

void FailingFiles::MakeOneFolder(const QString& path)
{
    Step();
    m_real->MakeOneFolder(path);
}

void FailingFiles::WriteWholeFile(const QString& path, const QByteArray& content)
{
    Step();
    m_real->WriteWholeFile(path, content);
}

void FailingFiles::WritePrivateFile(const QString& path, const QByteArray& content)
{
    m_real->WritePrivateFile(path, content);
}

bool FailingFiles::WriteNewFile(const QString& path, const QByteArray& content)
{
    Step();
    return m_real->WriteNewFile(path, content);
}

bool FailingFiles::CreateExclusively(const QString& path, const QByteArray& content)
{
    Step();
    return m_real->CreateExclusively(path, content);
}

void FailingFiles::RenameFile(const QString& from, const QString& to)
{
    Step();
    m_real->RenameFile(from, to);
}

void FailingFiles::DeleteFile(const QString& path)
{
    m_real->DeleteFile(path);
}

void FailingFiles::MakePrivateFolder(const QString& path)
{
    Step();
    m_real->MakePrivateFolder(path);
}

CopyOutcome FailingFiles::CopyToNewFile(const QString& from, const QString& to, const CopyProgress& progress)
{
    Step();
    return m_real->CopyToNewFile(from, to, progress);
}
