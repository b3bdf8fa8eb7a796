#include "platform/printing/register_printing.h"

#include "frame/components.h"
#include "platform/printing/PageCanvas.h"
#include "platform/printing/PagePrinter.h"

using namespace Qt::StringLiterals;

namespace {

class PageDestination : public PrinterOptions
{
public:
    explicit PageDestination(std::shared_ptr<PrintTarget> target) : m_target(std::move(target)) {}

    void UseFolder(const QString& folder) override { m_target->folder = folder; }
    void UsePrinter(const QString& name) override
    {
        m_target->printer = name;
        m_target->file.clear();
    }
    void UseFile(const QString& path) override
    {
        m_target->file = path;
        m_target->filePages = 0;
    }

private:
    std::shared_ptr<PrintTarget> m_target;
};

} // namespace

void RegisterPrinting()
{
    const auto target = std::make_shared<PrintTarget>();
    InstallService<PrinterObject>(std::make_unique<PagePrinter>(target));
    InstallService<PrinterOptions>(std::make_unique<PageDestination>(target));
    RegisterComponent<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s, [] { return std::make_unique<PageCanvas>(); });
}
