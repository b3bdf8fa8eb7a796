#include "findings/frmCapSogyon.h"

#include "contracts/desktop.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "findings/findings_doctors.h"
#include "findings/findings_print.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "findings/FindingsBox.h"
#include "findings/UpDownArrows.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "records/tables.h"
#include "screenparts/fill_routines.h"
#include "text/date_routines.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {
/// Shows the beginning of a text that is longer than its box.
void ShowText(QLineEdit& box, const QString& text)
{
    box.setText(ComposedText(text));
    box.setCursorPosition(0);
}
} // namespace

/// What the screen shows of the record that isn't in it.
struct frmCapSogyon::Surroundings
{
    std::optional<FindingsDoctor> doctor;
    QString doctorListName;
    QList<std::pair<QImage, int>> pictures; ///< With their numbers, without those that are gone.
};

frmCapSogyon::frmCapSogyon() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    ConnectControls();
}

void frmCapSogyon::ConnectControls()
{
    connect(m_cmbJinchal, &QComboBox::activated, this, GuardedSlot([this](int) { ChooseDoctor(); }));
    connect(m_udPYY, &UpDownArrows::UpClick, this, GuardedSlot([this] { StepPrintYear(1); }));
    connect(m_udPYY, &UpDownArrows::DownClick, this, GuardedSlot([this] { StepPrintYear(-1); }));
    connect(m_cmdQry, &QPushButton::clicked, this, GuardedSlot([this](bool) { ShowEarlierFindings(); }));
    connect(m_cmdSoFind, &QPushButton::clicked, this, GuardedSlot([this](bool) { ChooseOpinion(); }));
}

void frmCapSogyon::Form_Load()
{
    OpenRecord();
}

void frmCapSogyon::Form_Unload()
{
    m_draft.End();
}

void frmCapSogyon::OpenRecord()
{
    const QStringList doctors = DoctorEntries();
    QString tableFault;
    EnsureTable(Connection, QString(), u"caso"_s, true, &tableFault);
    const bool hasTable = tableFault.isEmpty();
    if (!hasTable || !ReadFindingsOfVisit())
        StartNewReport(hasTable);
    const Surroundings surroundings = ReadSurroundings();

    MoveTo({PixelsFromTwips(5700), PixelsFromTwips(1035)});
    m_cmbJinchal->clear();
    m_cmbJinchal->addItems(doctors);
    FillDateLists();
    ShowRecord(surroundings);
    m_txtSogyon->setFocus();
    if (!hasTable)
        ShowInformation(u"소견서를 저장할 caso 테이블이 없고 만들지도 못했습니다.!!\r\n%1"_s.arg(tableFault));
}

void frmCapSogyon::FillDateLists()
{
    const QString today = TextFromDate(UseService<Desktop>().Today());
    m_txtPyy->setText(today.left(4));
    m_cmbPmm->clear();
    for (int month = 1; month <= 12; ++month)
        m_cmbPmm->addItem(LayIntoMask(QString::number(month), u"00"));
    m_cmbPmm->setEditText(today.mid(4, 2));
    FillDayCombo(m_txtPyy->text(), m_cmbPmm->currentText(), today.mid(6, 2), *m_cmbPdd);
}

void frmCapSogyon::StartNewReport(bool hasTable)
{
    const QString year = FindingsRecord.Ymd.left(4);
    FindingsRecord.Yeonno = hasTable ? NextFindingsNumber(year) : FirstFindingsNumber(year);
    FindingsRecord.Balymd = TextFromDate(UseService<Desktop>().Today());
}

void frmCapSogyon::SogyonClear()
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
    m_txtSogyon->setText(QString());
    m_txtBigo->setText(QString());
    m_blank = true;
}

bool frmCapSogyon::HasUnsavedText() const
{
    const QString findings = m_txtSogyon->Text();
    const QString remark = m_txtBigo->Text();
    if (Trim(findings).isEmpty() && Trim(remark).isEmpty())
        return false;
    return findings != FindingsRecord.Sogyon || remark != FindingsRecord.Bigo;
}

void frmCapSogyon::ShowFindings()
{
    ShowRecord(ReadSurroundings());
}

frmCapSogyon::Surroundings frmCapSogyon::ReadSurroundings()
{
    Surroundings read{ReadDoctor(FindingsRecord.Jinchal), DoctorListName(FindingsRecord.Jinchal), {}};
    for (size_t slot = 0; slot < FindingsRecord.PicPath.size(); ++slot) {
        const QString path = FindingsRecord.PicPath[slot];
        if (!Trim(path).isEmpty() && PictureExists(path))
            read.pictures.emplace_back(Pictures().LoadToPrint(path, PrintedPictureSize()), FindingsRecord.PicNo[slot]);
    }
    return read;
}

void frmCapSogyon::ShowRecord(const Surroundings& surroundings)
{
    SogyonClear();
    m_txtYeonNo->setText(LayIntoMask(FindingsRecord.Yeonno, u"0000-000000"));
    m_txtCaymd->setText(LayIntoMask(FindingsRecord.Ymd, u"0000년 00월 00일"));
    m_txtPyy->setText(FindingsRecord.Balymd.left(4));
    m_cmbPmm->setEditText(FindingsRecord.Balymd.mid(4, 2));
    m_cmbPdd->setEditText(FindingsRecord.Balymd.mid(6, 2));
    m_txtSogyon->setText(FindingsRecord.Sogyon);
    m_txtBigo->setText(FindingsRecord.Bigo);
    size_t place = 0;
    for (const auto& [picture, number] : surroundings.pictures) {
        m_imgSogyon[place]->setPicture(picture);
        m_imgSogyon[place]->ZoomToFit(2);
        m_imgSogyon[place]->Refresh();
        m_lblSogyon[place]->setText(QString::number(number));
        ++place;
    }
    if (surroundings.doctor)
        TakeDoctor(*surroundings.doctor);
    ShowText(*m_txtSuname, FindingsRecord.Suname);
    ShowText(*m_txtJumin, FindingsRecord.Jumin);
    ShowText(*m_txtNai, FindingsRecord.Nai);
    ShowText(*m_txtSex, FindingsRecord.Sex);
    ShowDoctor();
    const QString& name = surroundings.doctorListName;
    ShowDoctorChoice(name.isNull() ? FindingsRecord.Jinchal : FindingsRecord.Jinchal + u' ' + name);
    m_blank = false;
    m_shownReport = MarkOfRecord();
}

void frmCapSogyon::ShowDoctor()
{
    ShowText(*m_txtMyonheo, FindingsRecord.Myonheo);
    ShowText(*m_txtDoctor, FindingsRecord.Doctor);
    ShowText(*m_txtYoyangno, FindingsRecord.Yoyangno);
    ShowText(*m_txtHospital, FindingsRecord.Hospital);
}

void frmCapSogyon::ShowDoctorChoice(const QString& entry)
{
    m_cmbJinchal->setCurrentIndex(m_cmbJinchal->findText(entry));
    m_cmbJinchal->setEditText(entry);
    m_doctorChoice = entry;
}

void frmCapSogyon::ChooseDoctor()
{
    const QString entry = m_cmbJinchal->currentText();
    // A choice without its licence would be stored with that of the doctor before.
    auto goBack = qScopeGuard([this] { ShowDoctorChoice(m_doctorChoice); });
    const std::optional<FindingsDoctor> doctor = ReadDoctor(entry.left(2));
    goBack.dismiss();
    FindingsRecord.Jinchal = entry.left(2);
    m_doctorChoice = entry;
    if (!doctor)
        return;
    TakeDoctor(*doctor);
    ShowDoctor();
}
