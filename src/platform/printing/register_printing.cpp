#include "platform/printing/register_printing.h"

#include "frame/components.h"
#include "platform/printing/CupsServer.h"
#include "platform/printing/PageCanvas.h"
#include "platform/printing/PagePrinter.h"
#include "platform/printing/PrintQueue.h"

using namespace Qt::StringLiterals;

namespace {

class PageDestination : public PrinterOptions
{
public:
    PageDestination(std::shared_ptr<PrintTarget> target, PrintQueue& queue)
        : m_target(std::move(target)), m_queue(queue)
    {
    }

    void UseFolder(const QString& folder) override { m_target->folder = folder; }
    void UsePrinter(const QString& name) override
    {
        m_target->printer = name;
        m_target->file.clear();
        m_queue.Redirect(name);
    }
    void UseFile(const QString& path) override
    {
        m_target->file = path;
        m_target->filePages = 0;
    }

private:
    std::shared_ptr<PrintTarget> m_target;
    PrintQueue& m_queue;
};

} // namespace

void RegisterPrinting()
{
    const auto target = std::make_shared<PrintTarget>();
    auto queue = std::make_unique<PrintQueue>(std::make_unique<CupsServer>());
    InstallService<PrinterObject>(std::make_unique<PagePrinter>(target, *queue));
    InstallService<PrinterOptions>(std::make_unique<PageDestination>(target, *queue));
    InstallService<PrinterJobs>(std::move(queue));
    RegisterComponent<clsPageCanvas>(u"prjPageCanvas.clsPageCanvas"_s, [] { return std::make_unique<PageCanvas>(); });
}
