#include "screenparts/NoticeList.h"

#include "contracts/desktop.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScrollArea>

using namespace Qt::StringLiterals;

namespace {
constexpr int LeastWidth = 420;  ///< In pixels, above a strip that is narrower.
constexpr int MostLetters = 400; ///< What a reason of any length shows of itself.

QString Shortened(const QString& text)
{
    return text.size() <= MostLetters ? text : text.left(MostLetters) + u"…"_s;
}

QPushButton* AddButton(QWidget* row, const QString& caption, const QString& name)
{
    auto* button = new QPushButton(CaptionText(caption), row);
    Named(button, name, caption);
    button->setFocusPolicy(Qt::NoFocus);
    row->layout()->addWidget(button);
    return button;
}
} // namespace

NoticeList::NoticeList(NoticeStrip& strip)
    : QWidget(strip.parentWidget()), m_strip(strip), m_area(new QScrollArea(this))
{
    Named(this, u"noticeList"_s, u"알림 목록"_s);
    setAttribute(Qt::WA_StyledBackground);
    setFocusPolicy(Qt::NoFocus);
    m_area->setFocusPolicy(Qt::NoFocus);
    m_area->setFrameShape(QFrame::NoFrame);
    m_area->setWidgetResizable(true);
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    auto* layout = new QHBoxLayout(this);
    layout->setContentsMargins(1, 1, 1, 1);
    layout->addWidget(m_area);
    setFont(strip.font());
    connect(&strip, &NoticeStrip::Changed, this, &NoticeList::Fill);
    connect(&strip, &QObject::destroyed, this, &QObject::deleteLater);
    qApp->installEventFilter(this);
    Fill();
}

QWidget* NoticeList::NewRow(const QString& shown, const NoticeStrip::Offer& offer)
{
    auto* row = new QWidget;
    row->setObjectName(u"noticeRow"_s);
    row->setAttribute(Qt::WA_StyledBackground);
    auto* layout = new QHBoxLayout(row);
    layout->setContentsMargins(8, 4, 4, 4);
    auto* text = new PlainLabel(ComposedText(Shortened(shown)), row);
    text->setAccessibleName(text->text());
    text->setWordWrap(true);
    layout->addWidget(text, 1);
    // It may take its own notice, and this row, away.
    if (!offer.caption.isEmpty())
        connect(AddButton(row, offer.caption, u"listOffer"_s), &QPushButton::clicked, &m_strip,
                GuardedSlot([run = offer.run, list = QPointer(this)] {
                    if (list)
                        list->deleteLater();
                    if (run)
                        run();
                }));
    return row;
}

QWidget* NoticeList::RowOf(const NoticeStrip::Choice& choice)
{
    QWidget* row = NewRow(choice.text, choice.offer);
    row->layout()->setContentsMargins(24, 4, 4, 4);
    return row;
}

QWidget* NoticeList::RowOf(NoticeStrip::Kind kind, const NoticeStrip::Notice& notice)
{
    // What can be chosen has lines of its own, each with its button.
    QWidget* row = NewRow(notice.text, notice.choices.isEmpty() ? notice.offer : NoticeStrip::Offer());
    row->setProperty("fault", NoticeStrip::IsFault(kind));
    if (m_strip.MayCancel(kind)) {
        QPushButton* cancel = AddButton(row, u"취소"_s, u"listCancel"_s);
        cancel->setProperty(ServedWhileWaiting, true);
        connect(cancel, &QPushButton::clicked, &m_strip, &NoticeStrip::Cancelled);
    }
    return row;
}

void NoticeList::Fill()
{
    const auto notices = m_strip.Notices();
    if (notices.isEmpty()) {
        hide();
        deleteLater();
        return;
    }
    auto* rows = new QWidget;
    rows->setObjectName(u"noticeRows"_s);
    auto* layout = new QVBoxLayout(rows);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(1);
    for (const auto& [kind, notice] : notices) {
        layout->addWidget(RowOf(kind, notice));
        for (const NoticeStrip::Choice& choice : notice.choices)
            layout->addWidget(RowOf(choice));
    }
    // A button of the old ones may be what brought this about.
    if (QWidget* before = m_area->takeWidget()) {
        before->hide();
        before->deleteLater();
    }
    m_area->setWidget(rows);
    Place();
}

void NoticeList::Place()
{
    const QRect strip = m_strip.geometry();
    const int room = parentWidget()->width();
    const int width = qMin(room, qMax(LeastWidth, strip.width()));
    const int needed = m_area->widget()->layout()->heightForWidth(width - 2) + 2;
    const int height = qMin(needed, qMax(strip.top(), 0));
    setGeometry(qBound(0, strip.left(), room - width), strip.top() - height, width, height);
    raise();
}

bool NoticeList::eventFilter(QObject* watched, QEvent* event)
{
    switch (event->type()) {
    case QEvent::MouseButtonPress: {
        auto* widget = qobject_cast<QWidget*>(watched);
        // The strip's own click closes it as well.
        if (widget != nullptr && widget != this && !isAncestorOf(widget) && widget != &m_strip &&
            !m_strip.isAncestorOf(widget)) {
            hide();
            deleteLater();
        }
        break;
    }
    case QEvent::KeyPress:
        if (watched->isWidgetType() && static_cast<QKeyEvent*>(event)->matches(QKeySequence::Cancel) && isVisible()) {
            hide();
            deleteLater();
            return true;
        }
        break;
    case QEvent::Move:
    case QEvent::Resize:
        if (watched == &m_strip && isVisible())
            Place();
        break;
    default:
        break;
    }
    return false;
}
