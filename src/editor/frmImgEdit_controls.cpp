#include "editor/frmImgEdit.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/plain_text.h"
#include "frame/twips.h"

#include <QFrame>
#include <QLabel>
#include <QToolButton>

using namespace Qt::StringLiterals;

// A resource of a static library is named from outside of any namespace.
static void LoadEditorPictures()
{
    Q_INIT_RESOURCE(editor_pictures);
}

namespace {
constexpr int ButtonTop = 45;
constexpr int ButtonHeight = 405;
constexpr int IconPixels = 20;

/// A button of the strip. A picture of that name stands on it, unless it is empty.
QToolButton* MakeButton(QWidget* strip, const QString& name, const QString& tip, const QString& picture, int left,
                        int width)
{
    QToolButton* button = Named(new QToolButton(strip), name, tip, RectFromTwips(left, ButtonTop, width, ButtonHeight));
    button->setToolTip(tip);
    button->setFocusPolicy(Qt::StrongFocus);
    button->setIconSize({IconPixels, IconPixels});
    if (!picture.isEmpty())
        button->setIcon(QIcon(u":/editor/pictures/%1.svg"_s.arg(picture)));
    return button;
}
} // namespace

void frmImgEdit::BuildControls()
{
    LoadEditorPictures();
    setWindowTitle(QString::fromUtf16(Caption));
    // The title tells the scale as well.
    setAccessibleName(QString::fromUtf16(Caption));
    setFixedSize(PixelsFromTwips(10815), PixelsFromTwips(8070));

    auto* lbl =
        Named(new PlainLabel(u"이미지편집"_s, this), u"lbl"_s, u"이미지편집"_s, RectFromTwips(90, 0, 1350, 330));
    QFont banner = lbl->font();
    banner.setBold(true);
    lbl->setFont(banner);
    m_lblFilePath = Named(new PlainLabel(this), u"lblFilePath"_s, u"그림파일"_s, RectFromTwips(1500, 0, 9225, 330));
    m_lblFilePath->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto* fraTool = Named(new QFrame(this), u"fraTool"_s, u"편집 도구"_s, RectFromTwips(0, 345, 10815, 495));
    BuildTools(fraTool);
}

void frmImgEdit::BuildTools(QWidget* strip)
{
    struct Tool
    {
        QString tip;
        QString picture;
    };
    const std::array<Tool, Tools> tools{{{u"그리기"_s, u"free"_s},
                                         {u"글씨입력"_s, u"text"_s},
                                         {u"원그리기"_s, u"circle"_s},
                                         {u"사각형그리기"_s, u"box"_s},
                                         {u"선그리기"_s, u"line"_s},
                                         {u"점선그리기"_s, u"dotted"_s}}};
    constexpr int Width = 570;
    constexpr int Step = 615;
    for (int at = 0; at < Tools; ++at) {
        const Tool& tool = tools[static_cast<size_t>(at)];
        m_cmdDMode[static_cast<size_t>(at)] =
            MakeButton(strip, u"cmdDMode(%1)"_s.arg(at), tool.tip, tool.picture, 45 + at * Step, Width);
    }
    m_cmdColor = MakeButton(strip, u"cmdColor"_s, u"색깔지정"_s, QString(), 3870, Width);
    m_cmdFont = MakeButton(strip, u"cmdFont"_s, u"글씨체선택"_s, u"font"_s, 4485, Width);
    m_cmdZoomIn = MakeButton(strip, u"cmdZoomIn"_s, u"축소"_s, u"smaller"_s, 5145, Width);
    m_cmdZoomOut = MakeButton(strip, u"cmdZoomOut"_s, u"확대"_s, u"larger"_s, 5760, Width);
    m_cmdUnDo = MakeButton(strip, u"cmdUnDo"_s, u"실행취소"_s, u"undo"_s, 6420, Width);
    m_cmdReDo = MakeButton(strip, u"cmdReDo"_s, u"다시실행"_s, u"redo"_s, 7035, Width);
    m_cmdFit = MakeButton(strip, u"cmdFit"_s, u"맞춤"_s, QString(), 7680, 630);
    m_cmdFit->setText(u"맞춤"_s);
    m_cmdISave = MakeButton(strip, u"cmdISave"_s, u"저장"_s, u"save"_s, 8340, 1170);
    m_cmdIExit = MakeButton(strip, u"cmdIExit"_s, u"종료"_s, u"exit"_s, 9555, 1170);
    for (QToolButton* button : {m_cmdISave, m_cmdIExit}) {
        button->setText(button->accessibleName());
        button->setToolTip(QString());
        button->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
    }
}
