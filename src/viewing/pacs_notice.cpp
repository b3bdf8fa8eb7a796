#include "viewing/pacs_notice.h"

#include "contracts/desktop.h"
#include "frame/components.h"
#include "frame/services.h"
#include "pacs/PacsHandover.h"
#include "screenparts/NoticeStrip.h"

using namespace Qt::StringLiterals;

namespace {
/// The message about what is left closes by itself.
constexpr int ClosingPatienceMs = 10'000;
} // namespace

void ShowPacsOn(NoticeStrip& strip, PacsHandover& pacs)
{
    const auto show = [&strip, &pacs](const QString& text, bool maySend, bool isRefused) {
        const NoticeStrip::Offer send{u"지금 보내기"_s, [&pacs] { pacs.SendNow(); }};
        strip.setNotice(isRefused ? NoticeStrip::PacsRefused : NoticeStrip::Pacs, text,
                        maySend ? send : NoticeStrip::Offer());
        strip.setNotice(isRefused ? NoticeStrip::Pacs : NoticeStrip::PacsRefused, QString());
    };
    QObject::connect(&pacs, &PacsHandover::NoticeChanged, &strip, show);
    const auto showWorklist = [&strip, &pacs](const QString& text, const QList<service_rows::Offer>& offers) {
        QList<NoticeStrip::Choice> choices;
        for (const service_rows::Offer& offer : offers)
            choices.append({offer.text, {u"선택"_s, [&pacs, key = offer.key] { pacs.Choose(key); }}});
        if (choices.isEmpty())
            strip.setNotice(NoticeStrip::Worklist, text, {u"닫기"_s, [&pacs] { pacs.DismissWorklist(); }});
        else
            strip.setChoices(NoticeStrip::Worklist, text, choices);
    };
    QObject::connect(&pacs, &PacsHandover::WorklistChanged, &strip, showWorklist);
}

void EndPacs(PacsHandover* pacs)
{
    if (pacs == nullptr)
        return;
    const BusyPointer busy;
    const QString left = pacs->End();
    if (!left.isEmpty() && !UseService<Desktop>().EndIsRequested())
        ShowInformation(left, ClosingPatienceMs);
}
