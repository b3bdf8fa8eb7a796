#include "contracts/ImageList.h"
#include "contracts/ImagXpress.h"
#include "findings/FindingsBox.h"
#include "findings/frmCapSogyon.h"
#include "findings/UpDownArrows.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/twips.h"
#include "screenparts/ValueCombo.h"

#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

using namespace Qt::StringLiterals;

namespace {

/// Blue for what is typed and looked up, orange for the print date, as on the clinic's other forms; on white, where
/// both can be read.
constexpr char16_t Colours[] =
    u"#frmCapSogyon > QLineEdit, #frmCapSogyon > QTextEdit, #frmCapSogyon > QComboBox, "
    "#frmCapSogyon > QComboBox QLineEdit, #frmCapSogyon > QComboBox QAbstractItemView "
    "{ color: #0000ff; background: #ffffff; }"
    "#frmCapSogyon > QLineEdit { padding: 0px; }"
    "#frmCapSogyon > QComboBox { padding: 0px 1px; }"
    "#frmCapSogyon > QComboBox::drop-down { background: #333c44; }"
    "#frmCapSogyon > #txtPyy, #frmCapSogyon > #cmbPmm, #frmCapSogyon > #cmbPmm *, #frmCapSogyon > #cmbPdd, "
    "#frmCapSogyon > #cmbPdd * { color: #a64100; background: #ffffff; }"
    "#frmCapSogyon > QPushButton { padding: 2px; }";

QLabel* MakeLabel(QWidget* parent, const QString& text, const QRect& place)
{
    auto* label = new PlainLabel(text, parent);
    label->setGeometry(place);
    return label;
}

struct BoxPlace
{
    const char16_t* name;
    const char16_t* label;
    int labelLeft;
    int left;
    int top;
    int width;
};

QLineEdit* MakeBox(QWidget* parent, const BoxPlace& place)
{
    const QString label = QString::fromUtf16(place.label);
    QLabel* shown =
        MakeLabel(parent, label, RectFromTwips(place.labelLeft, place.top, place.left - place.labelLeft, 240));
    auto* box = Named(new QLineEdit(parent), QString::fromUtf16(place.name), label,
                      RectFromTwips(place.left, place.top, place.width, 240));
    box->setReadOnly(true);
    shown->setBuddy(box);
    return box;
}

/// A list whose text can be one that it doesn't hold.
QComboBox* MakeList(QWidget* parent, const QString& name, const QString& label, const QRect& place)
{
    return Named(new ValueCombo(name, parent), name, label, place);
}

constexpr int SlotLeft[] = {120, 1560};
constexpr int SlotTop[] = {1560, 3000, 4440};

} // namespace

void frmCapSogyon::BuildControls()
{
    setWindowTitle(u"캡쳐소견"_s);
    setFixedSize(PixelsFromTwips(9330), PixelsFromTwips(7470));
    setStyleSheet(QString::fromUtf16(Colours));
    // The two long texts come first in the order of the Tab key.
    BuildBoxes();
    BuildHeader();
    BuildPictures();
    BuildButtons();
}

void frmCapSogyon::BuildBoxes()
{
    auto* lblSoFind = MakeLabel(this, u"소견내용"_s, RectFromTwips(3120, 1305, 810, 255));
    lblSoFind->setObjectName(u"lblSoFind"_s);
    m_txtSogyon = Named(new FindingsBox(this), u"txtSogyon"_s, u"소견내용"_s, RectFromTwips(3120, 1560, 5415, 4215));
    lblSoFind->setBuddy(m_txtSogyon);
    m_txtSogyon->setInputMethodHints(Qt::ImhMultiLine | Qt::ImhPreferLatin);
    QLabel* remark = MakeLabel(this, u"비     고"_s, RectFromTwips(3120, 5850, 1200, 255));
    m_txtBigo = Named(new FindingsBox(this), u"txtBigo"_s, u"비     고"_s, RectFromTwips(3120, 6120, 5415, 1335));
    remark->setBuddy(m_txtBigo);
    m_txtBigo->setInputMethodHints(Qt::ImhMultiLine);
}

void frmCapSogyon::BuildHeader()
{
    m_txtYeonNo = MakeBox(this, {u"txtYeonNo", u"연  번 호", 120, 960, 120, 1335});
    m_txtYeonNo->setReadOnly(false);
    m_txtYeonNo->setMaxLength(11);
    m_txtSuname = MakeBox(this, {u"txtSuname", u"수진자명", 2370, 3120, 120, 975});
    m_txtJumin = MakeBox(this, {u"txtJumin", u"주민번호", 4380, 5160, 120, 1575});
    m_txtNai = MakeBox(this, {u"txtNai", u"나 이", 7020, 7560, 120, 735});
    m_txtSex = MakeBox(this, {u"txtSex", u"성 별", 8385, 8880, 120, 375});
    m_txtMyonheo = MakeBox(this, {u"txtMyonheo", u"면허번호", 120, 960, 480, 735});
    m_txtDoctor = MakeBox(this, {u"txtDoctor", u"의사성명", 2370, 3120, 480, 975});
    m_txtYoyangno = MakeBox(this, {u"txtYoyangno", u"요양기호", 4380, 5160, 480, 975});
    m_txtHospital = MakeBox(this, {u"txtHospital", u"병원명칭", 6330, 7080, 480, 2175});

    QLabel* doctor = MakeLabel(this, u"담당의사"_s, RectFromTwips(120, 840, 840, 285));
    m_cmbJinchal = MakeList(this, u"cmbJinchal"_s, u"담당의사"_s, RectFromTwips(960, 840, 1215, 285));
    doctor->setBuddy(m_cmbJinchal);
    m_cmbJinchal->lineEdit()->setReadOnly(true);
    m_txtCaymd = MakeBox(this, {u"txtCaymd", u"캡쳐일자", 2370, 3120, 840, 1935});
    m_txtPyy = MakeBox(this, {u"txtPyy", u"출력일자", 5220, 6000, 840, 510});
    m_udPYY = Named(new UpDownArrows(this), u"udPYY"_s, u"출력년도"_s, RectFromTwips(6555, 840, 240, 270));
    MakeLabel(this, u"년"_s, RectFromTwips(6825, 840, 210, 285));
    m_cmbPmm = MakeList(this, u"cmbPmm"_s, u"출력월"_s, RectFromTwips(7035, 840, 615, 285));
    MakeLabel(this, u"월"_s, RectFromTwips(7665, 840, 210, 285));
    m_cmbPdd = MakeList(this, u"cmbPdd"_s, u"출력일"_s, RectFromTwips(7875, 840, 615, 285));
    MakeLabel(this, u"일"_s, RectFromTwips(8505, 840, 240, 285));
    m_cmbPmm->setValidator(new QIntValidator(1, 12, m_cmbPmm));
    m_cmbPdd->setValidator(new QIntValidator(1, 31, m_cmbPdd));
}

void frmCapSogyon::BuildPictures()
{
    MakeLabel(this, u"Findings"_s, RectFromTwips(120, 1305, 1500, 255));
    for (int slot = 0; slot < 6; ++slot) {
        const int left = SlotLeft[slot % 2];
        const int top = SlotTop[slot / 2];
        const QString number = QString::number(slot + 1);
        const auto at = static_cast<size_t>(slot);
        m_imgSogyon[at] =
            Named(&PlaceControl<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, this), u"imgSogyon(%1)"_s.arg(number),
                  u"소견그림 %1"_s.arg(number), RectFromTwips(left, top, 1335, 1095));
        m_imgSogyon[at]->setFocusPolicy(Qt::NoFocus);
        m_lblSogyon[at] = Named(new PlainLabel(this), u"lblSogyon(%1)"_s.arg(number), u"그림번호 %1"_s.arg(number),
                                RectFromTwips(left, top + 1140, 1335, 255));
        m_lblSogyon[at]->setAlignment(Qt::AlignCenter);
    }
}

void frmCapSogyon::BuildButtons()
{
    struct Command
    {
        int index;
        const char16_t* caption;
        int left;
        int top;
        void (frmCapSogyon::*run)();
    };
    for (const Command& command : {Command{0, u"조회", 8565, 1545, &frmCapSogyon::OpenFromList},
                                   {1, u"저장", 8565, 2160, &frmCapSogyon::SaveAndClear},
                                   {3, u"출력", 8560, 2775, &frmCapSogyon::PrintAndClear},
                                   {2, u"삭제", 8560, 3390, &frmCapSogyon::DeleteAndClear},
                                   {5, u"취소", 8560, 4005, &frmCapSogyon::SogyonClear},
                                   {4, u"종료", 8560, 4620, &frmCapSogyon::Close}}) {
        const QString caption = QString::fromUtf16(command.caption);
        auto* button = Named(new QPushButton(caption, this), u"cmdSogyon(%1)"_s.arg(command.index), caption,
                             RectFromTwips(command.left, command.top, 735, 615));
        connect(button, &QPushButton::clicked, this, GuardedSlot([this, run = command.run](bool) { Run(run); }));
    }
    const QIcon find = UseService<ImageList>().Picture(u"Find"_s);
    m_cmdSoFind =
        Named(new QPushButton(find, {}, this), u"cmdSoFind"_s, u"소견문구 찾기"_s, RectFromTwips(3960, 1320, 495, 255));
    m_cmdQry =
        Named(new QPushButton(find, {}, this), u"cmdQry"_s, u"과거소견 찾기"_s, RectFromTwips(7800, 5520, 495, 255));
    for (QPushButton* button : {m_cmdSoFind, m_cmdQry})
        button->setToolTip(button->accessibleName());
}
