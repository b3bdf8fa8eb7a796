#include "findings/FindingsSheet.h"

#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
#include "findings/findings_record.h"
#include "findings/FindingsBox.h"
#include "findings/UpDownArrows.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "screenparts/fill_routines.h"
#include "screenparts/ValueCombo.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QIntValidator>
#include <QLabel>
#include <QLineEdit>

using namespace Qt::StringLiterals;

namespace {

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

/// Shows the beginning of a text that is longer than its box.
void ShowText(QLineEdit& box, const QString& text)
{
    box.setText(ComposedText(text));
    box.setCursorPosition(0);
}

/// A text that only shows otherwise than it is written stays as it is.
void TakeShown(QString& field, const QLineEdit& box)
{
    const QString shown = Trim(box.text());
    if (shown != ComposedText(field))
        field = shown;
}

constexpr int SlotLeft[] = {120, 1560};
constexpr int SlotTop[] = {1560, 3000, 4440};

} // namespace

FindingsSheet::FindingsSheet(QWidget& form) : QObject(&form), m_form(form)
{
    // The two long texts come first in the order of the Tab key.
    BuildBoxes();
    BuildHeader();
    BuildPictures();
}

void FindingsSheet::BuildBoxes()
{
    auto* lblSoFind = MakeLabel(&m_form, u"소견내용"_s, RectFromTwips(3120, 1305, 810, 255));
    lblSoFind->setObjectName(u"lblSoFind"_s);
    m_txtSogyon = Named(new FindingsBox(&m_form), u"txtSogyon"_s, u"소견내용"_s, RectFromTwips(3120, 1560, 5415, 4215));
    lblSoFind->setBuddy(m_txtSogyon);
    m_txtSogyon->setInputMethodHints(Qt::ImhMultiLine | Qt::ImhPreferLatin);
    QLabel* remark = MakeLabel(&m_form, u"비     고"_s, RectFromTwips(3120, 5850, 1200, 255));
    m_txtBigo = Named(new FindingsBox(&m_form), u"txtBigo"_s, u"비     고"_s, RectFromTwips(3120, 6120, 5415, 1335));
    remark->setBuddy(m_txtBigo);
    m_txtBigo->setInputMethodHints(Qt::ImhMultiLine);
}

void FindingsSheet::BuildHeader()
{
    m_txtYeonNo = MakeBox(&m_form, {u"txtYeonNo", u"연  번 호", 120, 960, 120, 1335});
    m_txtYeonNo->setReadOnly(false);
    m_txtYeonNo->setMaxLength(11);
    m_txtSuname = MakeBox(&m_form, {u"txtSuname", u"수진자명", 2370, 3120, 120, 975});
    m_txtJumin = MakeBox(&m_form, {u"txtJumin", u"주민번호", 4380, 5160, 120, 1575});
    m_txtNai = MakeBox(&m_form, {u"txtNai", u"나 이", 7020, 7560, 120, 735});
    m_txtSex = MakeBox(&m_form, {u"txtSex", u"성 별", 8385, 8880, 120, 375});
    m_txtMyonheo = MakeBox(&m_form, {u"txtMyonheo", u"면허번호", 120, 960, 480, 735});
    m_txtDoctor = MakeBox(&m_form, {u"txtDoctor", u"의사성명", 2370, 3120, 480, 975});
    m_txtYoyangno = MakeBox(&m_form, {u"txtYoyangno", u"요양기호", 4380, 5160, 480, 975});
    m_txtHospital = MakeBox(&m_form, {u"txtHospital", u"병원명칭", 6330, 7080, 480, 2175});

    QLabel* doctor = MakeLabel(&m_form, u"담당의사"_s, RectFromTwips(120, 840, 840, 285));
    m_cmbJinchal = MakeList(&m_form, u"cmbJinchal"_s, u"담당의사"_s, RectFromTwips(960, 840, 1215, 285));
    doctor->setBuddy(m_cmbJinchal);
    m_cmbJinchal->lineEdit()->setReadOnly(true);
    connect(m_cmbJinchal, &QComboBox::activated, this,
            GuardedSlot([this](int) { Q_EMIT DoctorIsChosen(m_cmbJinchal->currentText(), m_doctorChoice); }));
    m_txtCaymd = MakeBox(&m_form, {u"txtCaymd", u"캡쳐일자", 2370, 3120, 840, 1935});
    m_txtPyy = MakeBox(&m_form, {u"txtPyy", u"출력일자", 5220, 6000, 840, 510});
    auto* udPYY = Named(new UpDownArrows(&m_form), u"udPYY"_s, u"출력년도"_s, RectFromTwips(6555, 840, 240, 270));
    connect(udPYY, &UpDownArrows::UpClick, this, GuardedSlot([this] { StepPrintYear(1); }));
    connect(udPYY, &UpDownArrows::DownClick, this, GuardedSlot([this] { StepPrintYear(-1); }));
    MakeLabel(&m_form, u"년"_s, RectFromTwips(6825, 840, 210, 285));
    m_cmbPmm = MakeList(&m_form, u"cmbPmm"_s, u"출력월"_s, RectFromTwips(7035, 840, 615, 285));
    MakeLabel(&m_form, u"월"_s, RectFromTwips(7665, 840, 210, 285));
    m_cmbPdd = MakeList(&m_form, u"cmbPdd"_s, u"출력일"_s, RectFromTwips(7875, 840, 615, 285));
    MakeLabel(&m_form, u"일"_s, RectFromTwips(8505, 840, 240, 285));
    m_cmbPmm->setValidator(new QIntValidator(1, 12, m_cmbPmm));
    m_cmbPdd->setValidator(new QIntValidator(1, 31, m_cmbPdd));
}

void FindingsSheet::BuildPictures()
{
    MakeLabel(&m_form, u"Findings"_s, RectFromTwips(120, 1305, 1500, 255));
    for (int slot = 0; slot < 6; ++slot) {
        const int left = SlotLeft[slot % 2];
        const int top = SlotTop[slot / 2];
        const QString number = QString::number(slot + 1);
        const auto at = static_cast<size_t>(slot);
        m_imgSogyon[at] =
            Named(&PlaceControl<ImagXpress>(u"IMAGXPR6LibCtl.ImagXpress"_s, &m_form), u"imgSogyon(%1)"_s.arg(number),
                  u"소견그림 %1"_s.arg(number), RectFromTwips(left, top, 1335, 1095));
        m_imgSogyon[at]->setFocusPolicy(Qt::NoFocus);
        m_lblSogyon[at] = Named(new PlainLabel(&m_form), u"lblSogyon(%1)"_s.arg(number), u"그림번호 %1"_s.arg(number),
                                RectFromTwips(left, top + 1140, 1335, 255));
        m_lblSogyon[at]->setAlignment(Qt::AlignCenter);
    }
}

void FindingsSheet::FillLists(const QStringList& doctors)
{
    m_cmbJinchal->clear();
    m_cmbJinchal->addItems(doctors);
    const QString today = TextFromDate(UseService<Desktop>().Today());
    m_txtPyy->setText(today.left(4));
    m_cmbPmm->clear();
    for (int month = 1; month <= 12; ++month)
        m_cmbPmm->addItem(LayIntoMask(QString::number(month), u"00"));
    m_cmbPmm->setEditText(today.mid(4, 2));
    FillDayCombo(m_txtPyy->text(), m_cmbPmm->currentText(), today.mid(6, 2), *m_cmbPdd);
}

void FindingsSheet::Clear()
{
    for (size_t slot = 0; slot < m_imgSogyon.size(); ++slot) {
        m_imgSogyon[slot]->setSourceFile(QString());
        m_imgSogyon[slot]->Refresh();
        m_lblSogyon[slot]->clear();
    }
    ShowDoctorChoice(QString());
    for (QLineEdit* box : {m_txtYeonNo, m_txtDoctor, m_txtHospital, m_txtYoyangno, m_txtNai, m_txtSex, m_txtSuname,
                           m_txtMyonheo, m_txtJumin, m_txtCaymd})
        box->clear();
    ShowTexts(QString(), QString());
    m_blank = true;
}

void FindingsSheet::Show(const FindingsRecordFields& record, const Surroundings& surroundings)
{
    Clear();
    ShowNumber(record);
    m_txtCaymd->setText(LayIntoMask(record.Ymd, u"0000년 00월 00일"));
    m_txtPyy->setText(record.Balymd.left(4));
    m_cmbPmm->setEditText(record.Balymd.mid(4, 2));
    m_cmbPdd->setEditText(record.Balymd.mid(6, 2));
    ShowTexts(record.Sogyon, record.Bigo);
    size_t place = 0;
    for (const auto& [picture, number] : surroundings.pictures) {
        m_imgSogyon[place]->setPicture(picture);
        m_imgSogyon[place]->ZoomToFit(2);
        m_imgSogyon[place]->Refresh();
        m_lblSogyon[place]->setText(QString::number(number));
        ++place;
    }
    ShowText(*m_txtSuname, record.Suname);
    ShowText(*m_txtJumin, record.Jumin);
    ShowText(*m_txtNai, record.Nai);
    ShowText(*m_txtSex, record.Sex);
    ShowDoctor(record);
    const QString& name = surroundings.doctorListName;
    ShowDoctorChoice(name.isNull() ? record.Jinchal : record.Jinchal + u' ' + name);
    setOwn();
}

void FindingsSheet::ShowNumber(const FindingsRecordFields& record)
{
    m_txtYeonNo->setText(LayIntoMask(record.Yeonno, u"0000-000000"));
}

void FindingsSheet::ShowDoctor(const FindingsRecordFields& record)
{
    ShowText(*m_txtMyonheo, record.Myonheo);
    ShowText(*m_txtDoctor, record.Doctor);
    ShowText(*m_txtYoyangno, record.Yoyangno);
    ShowText(*m_txtHospital, record.Hospital);
}

void FindingsSheet::ShowDoctorChoice(const QString& entry)
{
    m_cmbJinchal->setCurrentIndex(m_cmbJinchal->findText(entry));
    m_cmbJinchal->setEditText(entry);
    m_doctorChoice = entry;
}

void FindingsSheet::ShowTexts(const QString& findings, const QString& remark)
{
    m_txtSogyon->setText(findings);
    m_txtBigo->setText(remark);
}

void FindingsSheet::setFocus()
{
    m_txtSogyon->setFocus();
}

void FindingsSheet::Take(FindingsRecordFields& record) const
{
    record.Balymd = LayIntoMask(m_txtPyy->text(), u"0000") + LayIntoMask(m_cmbPmm->currentText(), u"00") +
                    LayIntoMask(m_cmbPdd->currentText(), u"00");
    record.Jinchal = m_cmbJinchal->currentText().left(2);
    TakeShown(record.Doctor, *m_txtDoctor);
    TakeShown(record.Myonheo, *m_txtMyonheo);
    record.Sogyon = Findings();
    record.Bigo = Remark();
    TakeShown(record.Yoyangno, *m_txtYoyangno);
    TakeShown(record.Hospital, *m_txtHospital);
}

QString FindingsSheet::Findings() const
{
    return m_txtSogyon->Text();
}

QString FindingsSheet::Remark() const
{
    return m_txtBigo->Text();
}

void FindingsSheet::TakeLines(FindingsRecordFields& record) const
{
    record.SogyonLines = SplitTextLines(*m_txtSogyon);
    record.BigoLines = SplitTextLines(*m_txtBigo);
}

void FindingsSheet::Append(const QString& text)
{
    // As typed at the end, so that it can be undone like typing.
    QTextCursor cursor(m_txtSogyon->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
    m_txtSogyon->setTextCursor(cursor);
}

bool FindingsSheet::HasOtherText(const FindingsRecordFields& record) const
{
    const bool isEmpty = Trim(Findings()).isEmpty() && Trim(Remark()).isEmpty();
    return !isEmpty && (Findings() != record.Sogyon || Remark() != record.Bigo);
}

void FindingsSheet::StepPrintYear(int years)
{
    if (Trim(m_txtPyy->text()).isEmpty()) {
        ShowInformation(u"출력년도를 확인하세요.!!"_s);
        m_txtPyy->setFocus();
        return;
    }
    const int year = WholeNumber(m_txtPyy->text()) + years;
    if (Trim(m_cmbPmm->currentText()).isEmpty()) {
        ShowInformation(u"출력월를 확인하세요.!!"_s);
        m_cmbPmm->setFocus();
        return;
    }
    if (Trim(m_cmbPdd->currentText()).isEmpty()) {
        ShowInformation(u"출력일를 확인하세요.!!"_s);
        m_cmbPdd->setFocus();
        return;
    }
    m_txtPyy->setText(LayIntoMask(QString::number(year), u"0000"));
}
