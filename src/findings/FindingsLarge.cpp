#include "findings/FindingsLarge.h"

#include "contracts/ImagXpress.h"
#include "findings/findings_record.h"
#include "frame/guard.h"
#include "frame/LensButton.h"
#include "frame/twips.h"
#include "records/acts.h"
#include "screenparts/LargePicture.h"
#include "text/text_routines.h"

#include <QEvent>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
/// Below the patient, beside the buttons.
constexpr QRect Room = RectFromTwips(0, 1290, 8535, 6180);
} // namespace

FindingsLarge::FindingsLarge(QWidget& form, const std::array<ImagXpress*, 6>& slots)
    : m_slots(slots), m_view(new LargePicture(form, Room))
{
    for (size_t slot = 0; slot < m_slots.size(); ++slot) {
        m_lenses[slot] = new LensButton(&form, *m_slots[slot]);
        connect(m_lenses[slot], &LensButton::clicked, this, GuardedSlot([this, slot](bool) { Open(slot); }));
        for (QObject* watched : {static_cast<QObject*>(m_slots[slot]), static_cast<QObject*>(m_lenses[slot])})
            watched->installEventFilter(this);
    }
    m_view->setPathOf([this](const Visit&, const ShownPicture& picture) {
        const auto found = std::ranges::find(m_shown, picture.number, &std::pair<int, QString>::first);
        return LargeImages::Source{found != m_shown.end() ? found->second : QString()};
    });
    connect(m_view, &LargePicture::PictureShown, this,
            [](const Visit& visit, int number) { acts::Record(acts::Kind::LookedAt, visit, number, u"크게 보기"_s); });
}

void FindingsLarge::TakeShown(const FindingsRecordFields& record, const QList<int>& numbers)
{
    m_view->Close();
    m_visit = Visit{record.Chart, record.Yuhyung, Trim(record.Ymd), record.Etc, {}, {}};
    m_shown.clear();
    for (const int number : numbers) {
        const auto at = std::ranges::find(record.PicNo, number) - record.PicNo.begin();
        m_shown.append({number, record.PicPath[static_cast<size_t>(at)]});
    }
}

void FindingsLarge::Close()
{
    m_view->Close();
}

void FindingsLarge::Open(size_t slot)
{
    const auto at = static_cast<qsizetype>(slot);
    if (!m_visit || at >= m_shown.size() || m_slots[slot]->Picture().isNull())
        return;
    QList<ShownPicture> pages;
    for (const auto& [number, path] : std::as_const(m_shown))
        pages.append({{}, number});
    m_view->Open(*m_visit, pages[at], pages);
}

bool FindingsLarge::eventFilter(QObject* watched, QEvent* event)
{
    for (size_t slot = 0; slot < m_slots.size(); ++slot) {
        if (watched != m_slots[slot] && watched != m_lenses[slot])
            continue;
        LensButton& lens = *m_lenses[slot];
        if (event->type() == QEvent::Enter && watched == m_slots[slot] && !m_slots[slot]->Picture().isNull())
            lens.PlaceIn(m_slots[slot]->geometry());
        // From the picture to its lens it isn't left.
        else if (event->type() == QEvent::Leave &&
                 !m_slots[slot]->geometry().contains(lens.parentWidget()->mapFromGlobal(QCursor::pos())))
            lens.hide();
    }
    return QObject::eventFilter(watched, event);
}
