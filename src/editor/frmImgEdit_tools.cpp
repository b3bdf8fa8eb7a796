#include "editor/edit_settings.h"
#include "editor/frmImgEdit.h"
#include "editor/TextEntryBox.h"
#include "frame/colours.h"
#include "frame/composition.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "text/text_routines.h"

#include <QColorDialog>
#include <QFontDialog>
#include <QFontInfo>
#include <QGroupBox>
#include <QLineEdit>
#include <QToolButton>

using namespace Qt::StringLiterals;

namespace {
constexpr int LeftButton = 1;
/// Backgrounds of the strip's buttons.
constexpr int ChosenTool = 10081927;
constexpr int OtherTool = 14155241;

QPointF PixelsFromTwips(float x, float y)
{
    return QPointF(x, y) / TwipsPerPixel;
}

void Draw(DrawingTool tool, ImagXpress& target, QPointF from, QPointF to, int colour, Pen pen)
{
    DrawFigure(tool, target, float(from.x()), float(from.y()), float(to.x()), float(to.y()), colour, pen);
}

void GiveBackground(QToolButton& button, int colour)
{
    // Dark letters, as the pictures on the buttons are.
    button.setStyleSheet(u"QToolButton { background: %1; color: #17313A; }"_s.arg(QColor(ColourOf(colour)).name()));
}
} // namespace

void frmImgEdit::OnPress(int button, float x, float y)
{
    if (button != LeftButton)
        return;
    // A release that went to another window.
    if (m_isDrawing)
        FinishStroke();
    LeaveTextEntry();
    if (m_zoomLevel != 5) {
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
    ShowChain();
}

void frmImgEdit::OnMove(float x, float y)
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

void frmImgEdit::OnRelease(int button, float x, float y)
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

void frmImgEdit::FinishStroke()
{
    if (!m_isFirstMove)
        Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenBand);
    m_isDrawing = false;
    if (m_tool == ToolText) {
        OpenTextBox();
        return;
    }
    Draw(m_tool, *m_imgMain, m_start, m_end, m_colour, PenFinal);
    CopyPicture(*m_imgMain, imgImage(m_chain.HolderIndex()));
}

void frmImgEdit::OpenTextBox()
{
    m_textPoint = {qMin(m_start.x(), m_end.x()), qMin(m_start.y(), m_end.y())};
    const QPointF corner = m_imgMain->ViewFromPicture(m_textPoint);
    const QPointF extent = (m_end - m_start) * m_imgMain->ViewScale();
    const QRect place(corner.toPoint(), QSize(qRound(qAbs(extent.x())), qRound(qAbs(extent.y()))));
    m_textOpen = true;
    m_txtText->Open(place, m_imgMain->PointSize() * m_imgMain->ViewScale(), QColor(ColourOf(m_colour)));
}

void frmImgEdit::OnTextEntered()
{
    if (!m_textOpen)
        return;
    m_textOpen = false;
    const QString text = Trim(TextOf(*m_txtText));
    QPointF point = m_textPoint;
    // The picture was scrolled meanwhile: the text stands where its box is seen.
    if (m_imgMain->ViewFromPicture(point).toPoint() != m_txtText->pos())
        point = m_imgMain->PictureFromView(m_txtText->pos());
    m_imgMain->setFocus();
    m_txtText->Close();
    if (!text.isEmpty())
        DrawFontText(*m_imgMain, float(point.x()), float(point.y()), text, m_colour, m_txtText->TextFont());
    CopyPicture(*m_imgMain, imgImage(m_chain.HolderIndex()));
}

void frmImgEdit::LeaveTextEntry()
{
    if (!m_textOpen)
        return;
    m_textOpen = false;
    m_txtText->Close();
    m_chain.TakeBackPress();
    ShowChain();
}

void frmImgEdit::MarkToolButton(int tool)
{
    // A stroke under way stays what it was begun as.
    if (m_isDrawing)
        return;
    m_tool = static_cast<DrawingTool>(tool);
    for (int at = 0; at < Tools; ++at)
        GiveBackground(*m_cmdDMode[static_cast<size_t>(at)], at == tool ? ChosenTool : OtherTool);
    for (QToolButton* button : {m_cmdFont, m_cmdZoomIn, m_cmdZoomOut, m_cmdUnDo, m_cmdReDo, m_cmdISave, m_cmdIExit})
        GiveBackground(*button, OtherTool);
    ShowPointer();
}

void frmImgEdit::setColour(int colour)
{
    m_colour = colour;
    GiveBackground(*m_cmdColor, colour);
}

void frmImgEdit::ChooseColour()
{
    QColorDialog dialog(QColor(ColourOf(m_colour)), this);
    dialog.setObjectName(u"cdlgCap"_s);
    dialog.setWindowTitle(u"글자색 지정..."_s);
    dialog.setOption(QColorDialog::DontUseNativeDialog);
    if (dialog.exec() != QDialog::Accepted)
        return;
    setColour(NumberOf((dialog.currentColor()).rgb()));
    SaveColorSetting(m_colour);
}

void frmImgEdit::ChooseFont()
{
    // The dialog lists what is installed, so it starts from the font that stands in for a Windows name.
    QFont present = m_txtText->TextFont();
    const QString family = present.family();
    const QString standIn = QFontInfo(present).family();
    present.setFamily(standIn);
    QFontDialog dialog(present, this);
    dialog.setObjectName(u"cdlgCap"_s);
    dialog.setWindowTitle(u"글자체 선택..."_s);
    dialog.setOption(QFontDialog::DontUseNativeDialog);
    // The one line of the dialog that stands in a frame of its own.
    for (auto* line : dialog.findChildren<QLineEdit*>()) {
        if (qobject_cast<QGroupBox*>(line->parent()) != nullptr)
            line->setText(u"가나다 AaBb 123"_s);
    }
    if (dialog.exec() != QDialog::Accepted)
        return;
    const QFont chosen = dialog.selectedFont();
    QFont font(chosen.family() == standIn ? family : chosen.family());
    font.setBold(chosen.bold());
    font.setPointSizeF(chosen.pointSizeF());
    font.setItalic(chosen.italic());
    font.setUnderline(chosen.underline());
    font.setStrikeOut(chosen.strikeOut());
    m_txtText->setTextFont(font);
    SaveFontSettings(font);
}
