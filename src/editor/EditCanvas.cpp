#include "editor/EditCanvas.h"

#include "editor/TextEntryBox.h"
#include "frame/colours.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {
constexpr int LeftButton = 1;
constexpr int NaturalLevel = 5;
/// Two factors no further apart than that look the same.
constexpr double SameFactor = 1e-3;
/// Factor of each zoom level, from 1 on.
constexpr std::array<float, 9> Factors{0.2F, 0.4F, 0.6F, 0.8F, 1.0F, 1.25F, 1.5F, 1.75F, 2.0F};
static_assert(Factors.size() == EditCanvas::LastZoomLevel);
/// Frame that every zoom step gives the canvas.
constexpr float ZoomFrameWidth = 640;
constexpr float ZoomFrameHeight = 480;

QPointF PixelsFromTwips(float x, float y)
{
    return QPointF(x, y) / TwipsPerPixel;
}

void Draw(DrawingTool tool, ImagXpress& target, QPointF from, QPointF to, int colour, Pen pen)
{
    DrawFigure(tool, target, float(from.x()), float(from.y()), float(to.x()), float(to.y()), colour, pen);
}

/// The way in which a picture passes from one image control to another; the target shows it fitted.
void CopyPicture(const ImagXpress& source, ImagXpress& target)
{
    target.setPicture(source.Picture());
    target.ZoomToFit(2);
    target.Refresh();
}

ImagXpress* MakeImage(QWidget* parent, const QString& name, const QString& accessibleName, const QRect& place)
{
    return Named(&PlaceControl<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, parent), name, accessibleName, place);
}
} // namespace

EditCanvas::EditCanvas(QWidget& form) : QObject(&form)
{
    m_imgMain = MakeImage(&form, u"imgMain"_s, u"이미지"_s, RectFromTwips(0, 855, 10800, 7200));
    // A press of the left button takes the focus itself: the others leave a text where it is being typed.
    m_imgMain->setFocusPolicy(Qt::NoFocus);
    for (int holder = 1; holder <= SnapshotChain::Holders; ++holder) {
        ImagXpress* image =
            MakeImage(&form, u"imgImage(%1)"_s.arg(holder), QString(), RectFromTwips(0, 855, 9600, 7200));
        image->hide();
        image->KeepAside();
        m_imgImage[static_cast<size_t>(holder - 1)] = image;
    }
    m_txtText = Named(new TextEntryBox(m_imgMain), u"txtText"_s, u"글씨입력"_s);

    connect(m_imgMain, &ImagXpress::MouseDown, this,
            GuardedSlot([this](int button, int, float x, float y) { OnPress(button, x, y); }));
    connect(m_imgMain, &ImagXpress::MouseMove, this, GuardedSlot([this](int, int, float x, float y) { OnMove(x, y); }));
    connect(m_imgMain, &ImagXpress::MouseUp, this,
            GuardedSlot([this](int button, int, float x, float y) { OnRelease(button, x, y); }));
    connect(m_imgMain, &ImagXpress::ZoomTurned, this, GuardedSlot([this](int notches, QPointF place) {
                if (m_isDrawing || m_textOpen)
                    return;
                for (int notch = 0; notch < qAbs(notches); ++notch)
                    Zoom(notches > 0 ? 1 : -1, place);
            }));
    connect(m_txtText, &TextEntryBox::Entered, this, GuardedSlot([this] { OnTextEntered(); }));
    connect(m_txtText, &TextEntryBox::FocusLost, this, GuardedSlot([this] { LeaveTextEntry(); }));

    for (ImagXpress* holder : m_imgImage) {
        holder->setPicture(LoadPicture(QString()));
        holder->Refresh();
    }
    m_txtText->hide();
}

void EditCanvas::Show(const QImage& picture)
{
    m_imgMain->setPicture(picture);
    m_imgMain->Refresh();
    KeepStep();
    Q_EMIT ViewChanged();
}

void EditCanvas::ShowInstead(const QImage& picture)
{
    CopyPicture(*m_imgMain, imgImage(m_chain.Press()));
    Show(picture);
    Q_EMIT ChainChanged();
}

void EditCanvas::KeepStep()
{
    CopyPicture(*m_imgMain, imgImage(m_chain.HolderIndex()));
}

void EditCanvas::ShowLastStep()
{
    ShowHolder(m_chain.HolderIndex());
}

void EditCanvas::ShowHolder(int holder)
{
    // An empty picture never takes the place of one.
    if (imgImage(holder).IsEmpty())
        return;
    // Large ones need not be there twice while the next is put together.
    m_imgMain->setPicture(QImage());
    CopyPicture(imgImage(holder), *m_imgMain);
    m_isFitted = true;
    Q_EMIT ViewChanged();
}

void EditCanvas::Undo()
{
    if (const auto holder = m_chain.Undo())
        ShowHolder(*holder);
    Q_EMIT ChainChanged();
}

void EditCanvas::Redo()
{
    if (const auto holder = m_chain.Redo())
        ShowHolder(*holder);
    Q_EMIT ChainChanged();
}

int EditCanvas::NextLevel(int step) const
{
    if (!m_isFitted) {
        const int level = m_zoomLevel + step;
        return level < 1 || level > LastZoomLevel ? 0 : level;
    }
    const double shown = m_imgMain->ViewScale();
    const auto first = std::ranges::find_if(Factors, [shown](double factor) { return factor > shown + SameFactor; });
    const auto behind = std::ranges::find_if(Factors, [shown](double factor) { return factor >= shown - SameFactor; });
    if (step < 0) // The one before is the first that isn't smaller than the view.
        return static_cast<int>(behind - Factors.begin());
    return first == Factors.end() ? 0 : static_cast<int>(first - Factors.begin()) + 1;
}

void EditCanvas::Zoom(int step, std::optional<QPointF> place)
{
    const int level = NextLevel(step);
    if (level == 0)
        return;
    m_zoomLevel = level;
    m_isFitted = false;
    m_imgMain->setFrameWidth(ZoomFrameWidth);
    m_imgMain->setFrameHeight(ZoomFrameHeight);
    const float factor = Factors[static_cast<size_t>(level - 1)];
    if (place)
        m_imgMain->ScaleAround(factor, *place);
    else
        m_imgMain->ScaleBy(factor);
    m_imgMain->Refresh();
    ShowPointer();
    Q_EMIT ViewChanged();
}

void EditCanvas::Fit()
{
    m_zoomLevel = NaturalLevel;
    m_isFitted = true;
    m_imgMain->ZoomToFit(2);
    m_imgMain->Refresh();
    ShowPointer();
    Q_EMIT ViewChanged();
}

bool EditCanvas::setTool(DrawingTool tool)
{
    if (m_isDrawing)
        return false;
    m_tool = tool;
    ShowPointer();
    return true;
}

void EditCanvas::ShowPointer()
{
    if (m_zoomLevel != NaturalLevel)
        m_imgMain->setPointerStyle(PointerHand);
    else
        m_imgMain->setPointerStyle(m_tool == ToolText ? PointerText : PointerCross);
}

void EditCanvas::OnPress(int button, float x, float y)
{
    if (button != LeftButton)
        return;
    m_imgMain->setFocus(Qt::MouseFocusReason);
    // A release that went to another window.
    if (m_isDrawing)
        FinishStroke();
    LeaveTextEntry();
    if (m_zoomLevel != NaturalLevel) {
        ShowInformation(u"확대나 축소시에는 이미지를 편집할수 없습니다.!!"_s);
        return;
    }
    if (m_imgMain->Picture().isNull())
        return;
    m_isDrawing = true;
    m_isFirstMove = true;
    m_start = PixelsFromTwips(x, y);
    m_end = m_start;
    CopyPicture(*m_imgMain, imgImage(m_chain.Press()));
    Q_EMIT ChainChanged();
}

void EditCanvas::OnMove(float x, float y)
{
    if (!m_isDrawing)
        return;
    if (m_tool == ToolFree) {
        m_end = PixelsFromTwips(x, y);
        DrawFreeLine(*m_imgMain, float(m_start.x()), float(m_start.y()), float(m_end.x()), float(m_end.y()), m_colour);
        m_start = m_end;
    } else {
        if (!m_isFirstMove)
            Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenBand);
        m_end = PixelsFromTwips(x, y);
        Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenBand);
    }
    m_isFirstMove = false;
}

void EditCanvas::OnRelease(int button, float x, float y)
{
    if (button != LeftButton || !m_isDrawing)
        return;
    // The band ends where the last move left it, the figure where the button was released.
    if (!m_isFirstMove)
        Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenBand);
    m_isFirstMove = true;
    m_end = PixelsFromTwips(x, y);
    FinishStroke();
}

void EditCanvas::FinishStroke()
{
    if (!m_isFirstMove)
        Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenBand);
    m_isDrawing = false;
    if (m_tool == ToolText) {
        OpenTextBox();
        return;
    }
    Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenFinal);
    KeepStep();
}

void EditCanvas::OpenTextBox()
{
    m_textPoint = {qMin(m_start.x(), m_end.x()), qMin(m_start.y(), m_end.y())};
    const QPointF corner = m_imgMain->ViewFromPicture(m_textPoint);
    const QPointF extent = (m_end - m_start) * m_imgMain->ViewScale();
    const QRect place(corner.toPoint(), QSize(qRound(qAbs(extent.x())), qRound(qAbs(extent.y()))));
    m_textOpen = true;
    m_txtText->Open(place, m_imgMain->ShownPart(), m_imgMain->PointSize() * m_imgMain->ViewScale(),
                    QColor(ColourOf(m_colour)));
}

void EditCanvas::OnTextEntered()
{
    if (!m_textOpen)
        return;
    m_textOpen = false;
    const QString text = Trim(m_txtText->Text());
    QPointF point = m_textPoint;
    // The picture was scrolled meanwhile: the text stands where its box is seen.
    if (m_imgMain->ViewFromPicture(point).toPoint() != m_txtText->Corner())
        point = m_imgMain->PictureFromView(m_txtText->Corner());
    m_imgMain->setFocus();
    m_txtText->Close();
    if (!text.isEmpty())
        DrawFontText(*m_imgMain, float(point.x()), float(point.y()), text, m_colour, m_txtText->TextFont());
    KeepStep();
}

void EditCanvas::LeaveTextEntry()
{
    if (!m_textOpen)
        return;
    m_textOpen = false;
    m_txtText->Close();
    m_chain.TakeBackPress();
    Q_EMIT ChainChanged();
}
