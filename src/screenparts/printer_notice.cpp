#include "screenparts/printer_notice.h"

#include "contracts/printing.h"
#include "frame/components.h"
#include "frame/forms.h"
#include "screenparts/NoticeStrip.h"

using namespace Qt::StringLiterals;

namespace {

QString Shown(const NoticeStrip& strip)
{
    for (const auto& [kind, notice] : strip.Notices()) {
        if (kind == NoticeStrip::Printer)
            return notice.text;
    }
    return {};
}

/// It comes again and again, so that a form that was opened meanwhile tells it as well.
void Present(const QString& trouble)
{
    const NoticeStrip::Offer close{u"닫기"_s, [] { UseService<PrinterJobs>().Dismiss(); }};
    for (const StationForm* form : LoadedForms()) {
        auto* strip = form->findChild<NoticeStrip*>(u"notices"_s);
        if (strip != nullptr && Shown(*strip) != trouble)
            strip->setNotice(NoticeStrip::Printer, trouble, close);
    }
}

} // namespace

void ShowPrinterOnForms()
{
    UseService<PrinterJobs>().setPresenter(Present);
}
