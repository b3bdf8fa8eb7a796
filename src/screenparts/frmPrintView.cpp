#include "screenparts/frmPrintView.h"

#include "contracts/printing.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "screenparts/PrintedPage.h"

#include <QBoxLayout>
#include <QKeyEvent>
#include <QPushButton>
#include <QScopeGuard>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
/// Of the screen's free area, so that the screens below can still be told.
constexpr double ScreenShare = 0.9;
constexpr double WidthToHeight = 0.85;
constexpr int EdgePixels = 8;
} // namespace

frmPrintView::frmPrintView() : StationForm(QString::fromUtf16(FormName))
{
    setWindowTitle(u"출력 미리보기"_s);
    BuildControls();
    const QWidget* owner = OwnerWindow();
    const QSize room = (owner != nullptr ? owner : this)->screen()->availableSize() * ScreenShare;
    resize(qMin(room.width(), qRound(room.height() * WidthToHeight)), room.height());
}

void frmPrintView::BuildControls()
{
    auto* rows = new QVBoxLayout(this);
    rows->setContentsMargins(EdgePixels, EdgePixels, EdgePixels, EdgePixels);
    auto* buttons = new QHBoxLayout;
    rows->addLayout(buttons);
    const auto add = [&](const QString& name, const QString& caption, auto run) {
        auto* button = Named(new QPushButton(caption, this), name, caption);
        button->setAutoDefault(false);
        connect(button, &QPushButton::clicked, this, GuardedSlot([run] { run(); }));
        buttons->addWidget(button);
        return button;
    };
    m_back = add(u"printViewBack"_s, u"이전"_s, [this] { TurnTo(m_number - 1); });
    m_position = Named(new PlainLabel(this), u"printViewPosition"_s, u"페이지번호"_s);
    buttons->addWidget(m_position);
    m_on = add(u"printViewOn"_s, u"다음"_s, [this] { TurnTo(m_number + 1); });
    buttons->addSpacing(2 * EdgePixels);
    const auto addZoom = [&](const QString& name, const QString& caption, Zoom zoom) {
        auto* button = Named(new QToolButton(this), name, caption);
        button->setText(caption);
        button->setCheckable(true);
        connect(button, &QToolButton::clicked, this, GuardedSlot([this, zoom] { ZoomTo(zoom); }));
        buttons->addWidget(button);
        return button;
    };
    m_wholePage = addZoom(u"printViewPage"_s, u"전체"_s, Zoom::Page);
    m_pageWidth = addZoom(u"printViewWidth"_s, u"너비"_s, Zoom::Width);
    buttons->addStretch();
    m_print = add(u"printViewPrint"_s, u"출력"_s, [this] { Answer(true); });
    add(u"printViewCancel"_s, u"취소"_s, [this] { Answer(false); });

    m_room = Named(new QScrollArea(this), u"printViewRoom"_s, u"출력할 페이지"_s);
    m_room->setAlignment(Qt::AlignCenter);
    m_room->setBackgroundRole(QPalette::Mid);
    m_sheet = Named(new PlainLabel(m_room), u"printViewSheet"_s, u"출력할 페이지"_s);
    m_room->setWidget(m_sheet);
    rows->addWidget(m_room, 1);
}

bool frmPrintView::Agrees(const PrintedPages& pages)
{
    m_pages = &pages;
    const auto end = qScopeGuard([this] {
        m_pages = nullptr;
        Printer().KillDoc();
        Unload();
    });
    TurnTo(1);
    ZoomTo(Zoom::Page);
    m_print->setFocus();
    ShowModal();
    return m_agrees;
}

void frmPrintView::Form_Unload()
{
    m_pages = nullptr;
}

void frmPrintView::Answer(bool agrees)
{
    m_agrees = agrees;
    Unload();
}

void frmPrintView::TurnTo(int number)
{
    if (m_pages == nullptr || number < 1 || number > m_pages->count)
        return;
    Printer().KillDoc();
    m_isDrawn = false;
    {
        const BusyPointer busy;
        m_pages->draw(number);
    }
    if (IsUnloaded())
        return;
    m_isDrawn = true;
    m_number = number;
    m_back->setEnabled(number > 1);
    m_on->setEnabled(number < m_pages->count);
    m_position->setText(u"%1 / %2"_s.arg(number).arg(m_pages->count));
    ShowSheet();
    m_room->verticalScrollBar()->setValue(0);
}

void frmPrintView::ZoomTo(Zoom zoom)
{
    m_zoom = zoom;
    m_wholePage->setChecked(zoom == Zoom::Page);
    m_pageWidth->setChecked(zoom == Zoom::Width);
    ShowSheet();
}

void frmPrintView::ShowSheet()
{
    if (!m_isDrawn || IsUnloaded())
        return;
    constexpr double A4 = 297.0 / 210;
    const QSize room = m_room->maximumViewportSize() - QSize(2 * EdgePixels, 2 * EdgePixels);
    const int bar = m_room->verticalScrollBar()->sizeHint().width();
    const int width = m_zoom == Zoom::Width ? room.width() - bar : qMin(room.width(), qRound(room.height() / A4));
    const double ratio = devicePixelRatioF();
    QImage sheet = Printer().Picture(qRound(qMax(width, 1) * ratio));
    sheet.setDevicePixelRatio(ratio);
    m_sheet->setPixmap(QPixmap::fromImage(sheet));
    m_sheet->resize(m_sheet->sizeHint());
}

void frmPrintView::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_PageUp:
        Guarded([this] { TurnTo(m_number - 1); });
        break;
    case Qt::Key_PageDown:
        Guarded([this] { TurnTo(m_number + 1); });
        break;
    case Qt::Key_Escape:
        Guarded([this] { Answer(false); });
        break;
    default:
        StationForm::keyPressEvent(event);
    }
}

void frmPrintView::resizeEvent(QResizeEvent* event)
{
    StationForm::resizeEvent(event);
    ShowSheet();
}
