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
    bool isburning() const override { return m_writer->IsBurning(); }
    void Startburn() override { m_writer->StartBurn(); }

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
