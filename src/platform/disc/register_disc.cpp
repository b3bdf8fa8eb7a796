#include "platform/disc/register_disc.h"

#include "frame/components.h"
#include "platform/disc/DeskKit.h"
#include "platform/disc/DiscWriter.h"

using namespace Qt::StringLiterals;

namespace {

class XpBurn final : public XPBurn
{
public:
    explicit XpBurn(std::shared_ptr<DiscWriter> writer) : m_writer(std::move(writer)) {}

    bool Equipped() override { return m_writer->Equipped(); }
    QString burnArea() override { return m_writer->BurnArea(); }
    bool isburning() const override { return m_writer->IsBusy(); }
    void Startburn() override { m_writer->StartBurn(); }
    void UseDrive(const QString& path) override { m_writer->UseDrive(path); }
    DiscContent Content() override { return m_writer->Content(); }
    qint64 KnownRoom() override { return m_writer->KnownRoom(); }
    void AddFolder(const QString& folder) override { m_writer->AddFolder(folder); }
    void ShowOver(QWidget& screen) override { m_writer->ShowOver(screen); }
    void Finish() override { m_writer->Finish(); }
    QString Interrupted() override { return m_writer->Interrupted(); }

private:
    std::shared_ptr<DiscWriter> m_writer;
};

class DriveList final : public FileSystemObject
{
public:
    explicit DriveList(std::shared_ptr<DiscWriter> writer) : m_writer(std::move(writer)) {}

    QList<DriveEntry> Drives() const override { return m_writer->Drives(); }

private:
    std::shared_ptr<DiscWriter> m_writer;
};

class WriterOptions final : public BurnerOptions
{
public:
    explicit WriterOptions(std::shared_ptr<DiscWriter> writer) : m_writer(std::move(writer)) {}

    void UseImage(const QString& path) override { m_writer->UseImage(path); }
    void UseSticks(bool use) override { m_writer->UseSticks(use); }

private:
    std::shared_ptr<DiscWriter> m_writer;
};

} // namespace

void RegisterDisc()
{
    const auto writer = std::make_shared<DiscWriter>();
    RegisterComponent<XPBurn>(u"BaydenBurn.XPBurn"_s, [writer] { return std::make_unique<XpBurn>(writer); });
    RegisterComponent<FileSystemObject>(u"Scripting.FileSystemObject"_s,
                                        [writer] { return std::make_unique<DriveList>(writer); });
    RegisterComponent<clsDeskKit>(u"prjDeskKit.clsDeskKit"_s, [] { return std::make_unique<DeskKit>(); });
    InstallService<BurnerOptions>(std::make_unique<WriterOptions>(writer));
}
