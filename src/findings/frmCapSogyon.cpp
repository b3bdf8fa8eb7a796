#include "findings/frmCapSogyon.h"

#include "contracts/components.h"
#include "contracts/desktop.h"
#include "contracts/files.h"
#include "contracts/findings_popups.h"
#include "contracts/guard.h"
#include "contracts/ImagXpress.h"
#include "contracts/pictures.h"
#include "contracts/twips.h"
#include "findings/findings_print.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "findings/FindingsBox.h"
#include "findings/frmSoFind.h"
#include "findings/UpDownArrows.h"
#include "launch/context/VisitContext.h"
#include "records/tables.h"
#include "records/text/date_routines.h"
#include "records/text/text_routines.h"

#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {
enum Button : int { ButtonFind, ButtonSave, ButtonDelete, ButtonPrint, ButtonExit, ButtonCancel };

const QString SaveQuestion = u"저장하시겠습니까?"_s;

/// Shows the beginning of a text that is longer than its box.
void ShowText(QLineEdit& box, const QString& text)
{
    box.setText(text);
    box.setCursorPosition(0);
}
} // namespace

frmCapSogyon::frmCapSogyon() : StationForm(QString::fromUtf16(FormName))
{
    BuildControls();
    ConnectControls();
}

void frmCapSogyon::ConnectControls()
{
    for (size_t index = 0; index < m_cmdSogyon.size(); ++index) {
        connect(m_cmdSogyon[index], &QPushButton::clicked, this,
                CommandSlot([this, index](bool) { RunButton(static_cast<int>(index)); }));
    }
    connect(m_cmbJinchal, &QComboBox::activated, this, CommandSlot([this](int) { ChooseDoctor(); }));
    connect(m_udPYY, &UpDownArrows::UpClick, this, CommandSlot([this] { StepPrintYear(1); }));
    connect(m_udPYY, &UpDownArrows::DownClick, this, CommandSlot([this] { StepPrintYear(-1); }));
    connect(m_cmdQry, &QPushButton::clicked, this, CommandSlot([this](bool) { ShowEarlierFindings(); }));
    connect(m_cmdSoFind, &QPushButton::clicked, this, CommandSlot([this](bool) { ChooseOpinion(); }));
}

void frmCapSogyon::Form_Load()
{
    move(PixelsFromTwips(5700), PixelsFromTwips(1035));
    m_cmbJinchal->clear();
    const QStringList doctors = DoctorEntries();
    m_cmbJinchal->addItems(doctors);
    if (!doctors.isEmpty())
        m_cmbJinchal->setEditText(doctors.first());
    FillDateLists();
    EnsureTable(Connection, QString(), u"caso"_s, true);
    if (!LoadFindingsByVisit())
        StartNewReport();
    m_txtSogyon->setFocus();
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

void frmCapSogyon::StartNewReport()
{
    FindingsRecord.Yeonno = NextFindingsNumber(FindingsRecord.Ymd.left(4));
    FindingsRecord.Balymd = TextFromDate(UseService<Desktop>().Today());
    ShowFindings();
}

bool frmCapSogyon::LoadFindingsByVisit()
{
    const bool found = ReadFindingsOfVisit();
    if (found)
        ShowFindings();
    return found;
}

void frmCapSogyon::SogyonClear()
{
    for (size_t slot = 0; slot < m_imgSogyon.size(); ++slot) {
        m_imgSogyon[slot]->setSourceFile(QString());
        m_imgSogyon[slot]->Refresh();
        m_lblSogyon[slot]->clear();
    }
    m_cmbJinchal->setEditText(QString());
    for (QLineEdit* box : {m_txtYeonNo, m_txtDoctor, m_txtHospital, m_txtYoyangno, m_txtNai, m_txtSex, m_txtSuname,
                           m_txtMyonheo, m_txtJumin, m_txtCaymd})
        box->clear();
    m_txtSogyon->setText(QString());
    m_txtBigo->setText(QString());
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
    SogyonClear();
    m_txtYeonNo->setText(LayIntoMask(FindingsRecord.Yeonno, u"0000-000000"));
    m_txtCaymd->setText(LayIntoMask(FindingsRecord.Ymd, u"0000년 00월 00일"));
    m_txtPyy->setText(FindingsRecord.Balymd.left(4));
    m_cmbPmm->setEditText(FindingsRecord.Balymd.mid(4, 2));
    m_cmbPdd->setEditText(FindingsRecord.Balymd.mid(6, 2));
    m_txtSogyon->setText(FindingsRecord.Sogyon);
    m_txtBigo->setText(FindingsRecord.Bigo);
    ShowPictures();
    ShowText(*m_txtSuname, FindingsRecord.Suname);
    ShowText(*m_txtJumin, FindingsRecord.Jumin);
    ShowText(*m_txtNai, FindingsRecord.Nai);
    ShowText(*m_txtSex, FindingsRecord.Sex);
    ShowText(*m_txtHospital, FindingsRecord.Hospital);
    ShowText(*m_txtYoyangno, FindingsRecord.Yoyangno);
    ShowText(*m_txtDoctor, FindingsRecord.Doctor);
    ShowText(*m_txtMyonheo, FindingsRecord.Myonheo);
    LookupDoctor();
    const QString name = DoctorListName();
    m_cmbJinchal->setEditText(name.isNull() ? FindingsRecord.Jinchal : FindingsRecord.Jinchal + u' ' + name);
}

void frmCapSogyon::ShowPictures()
{
    size_t place = 0;
    for (size_t slot = 0; slot < FindingsRecord.PicPath.size(); ++slot) {
        const QString path = FindingsRecord.PicPath[slot];
        if (Trim(path).isEmpty() || !PictureExists(path))
            continue;
        m_imgSogyon[place]->setPicture(LoadPicture(path));
        m_imgSogyon[place]->ZoomToFit(2);
        m_imgSogyon[place]->Refresh();
        m_lblSogyon[place]->setText(QString::number(FindingsRecord.PicNo[slot]));
        ++place;
    }
}

void frmCapSogyon::LookupDoctor()
{
    if (!ReadDoctor())
        return;
    ShowText(*m_txtMyonheo, FindingsRecord.Myonheo);
    ShowText(*m_txtDoctor, FindingsRecord.Doctor);
    ShowText(*m_txtYoyangno, FindingsRecord.Yoyangno);
    ShowText(*m_txtHospital, FindingsRecord.Hospital);
}

void frmCapSogyon::ChooseDoctor()
{
    FindingsRecordRollback rollback;
    FindingsRecord.Jinchal = m_cmbJinchal->currentText().left(2);
    LookupDoctor();
    rollback.Keep();
}

void frmCapSogyon::RunButton(int index)
{
    // A fill and a print serve events: nothing else may change the record meanwhile.
    if (m_listing || m_printing)
        return;
    switch (index) {
    case ButtonFind:
        FillFindingsList();
        if (!IsUnloaded())
            ShowFindings();
        break;
    case ButtonSave:
        if (AskYesNo(SaveQuestion)) {
            SaveFindings();
            SogyonClear();
        }
        break;
    case ButtonDelete:
        DeleteFindings();
        SogyonClear();
        break;
    case ButtonPrint:
        PrintFindings();
        SogyonClear();
        break;
    case ButtonExit:
        Close();
        break;
    case ButtonCancel:
        SogyonClear();
        break;
    default:
        break;
    }
}

void frmCapSogyon::TakeInput()
{
    FindingsRecord.Balymd = LayIntoMask(m_txtPyy->text(), u"0000") + LayIntoMask(m_cmbPmm->currentText(), u"00") +
                            LayIntoMask(m_cmbPdd->currentText(), u"00");
    FindingsRecord.Jinchal = m_cmbJinchal->currentText().left(2);
    FindingsRecord.Doctor = Trim(m_txtDoctor->text());
    FindingsRecord.Myonheo = Trim(m_txtMyonheo->text());
    FindingsRecord.Sogyon = m_txtSogyon->Text();
    FindingsRecord.Bigo = m_txtBigo->Text();
    FindingsRecord.Yoyangno = Trim(m_txtYoyangno->text());
    FindingsRecord.Hospital = Trim(m_txtHospital->text());
}

bool frmCapSogyon::SaveFindings()
{
    FindingsRecordRollback rollback;
    TakeInput();
    if (Trim(FindingsRecord.Sogyon).isEmpty()) {
        rollback.Keep();
        ShowInformation(u"저장할 소견 내용이 없습니다.!!"_s);
        return false;
    }
    const bool renumbered = StoreFindings();
    rollback.Keep();
    if (renumbered) {
        m_txtYeonNo->setText(LayIntoMask(FindingsRecord.Yeonno, u"0000-000000"));
        ShowInformation(u"다른 곳에서 같은 번호를 사용하여 새 번호로 저장합니다.!!"_s);
    }
    return true;
}

void frmCapSogyon::DeleteFindings()
{
    if (Trim(FindingsRecord.Yeonno).isEmpty())
        return;
    if (AskYesNo(u"삭제하시겠습니까?"_s))
        RemoveFindings();
}

void frmCapSogyon::Close()
{
    if (!Trim(m_txtSogyon->Text()).isEmpty() && AskYesNo(SaveQuestion))
        SaveFindings();
    Unload();
}

void frmCapSogyon::PrintFindings()
{
    if (!AskYesNo(u"출력하시겠습니까?"_s))
        return;
    if (Trim(FindingsRecord.Chart).isEmpty()) {
        ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
        return;
    }
    if (!SaveFindings())
        return;
    SplitTextLines(*m_txtSogyon, FindingsRecord.SogyonLines);
    SplitTextLines(*m_txtBigo, FindingsRecord.BigoLines);
    m_printing = true;
    const auto end = qScopeGuard([this] { m_printing = false; });
    // The report is stored by now: a printer that refuses costs nothing but the paper.
    Guarded([this] { PrintFindingsPages(m_imgSogyon, *this); });
}

void frmCapSogyon::FillFindingsList()
{
    m_listing = true;
    const auto end = qScopeGuard([this] { m_listing = false; });
    frmSoFind& list = Form<frmSoFind>();
    try {
        if (list.FillAll() && !IsUnloaded()) {
            list.move(geometry().center() - list.rect().center());
            list.ShowModal();
        }
    } catch (...) {
        list.Unload();
        throw;
    }
    list.Unload();
}

void frmCapSogyon::StepPrintYear(int years)
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

void frmCapSogyon::ShowEarlierFindings()
{
    const QString text = Trim(m_txtSogyon->Text());
    if (text.isEmpty())
        return;
    const auto picker = CreateObject<clsChartPicker>(u"prjChartPicker.clsChartPicker"_s);
    picker->setkleft(3330);
    picker->setktop(3330);
    picker->Soapp(ClientSetup, Connection, text, 3);
}

void frmCapSogyon::ChooseOpinion()
{
    QString chosen;
    const auto pad = CreateObject<clsOpinionPad>(u"prjOpinionPad.clsOpinionPad"_s);
    pad->setJnleft(3690);
    pad->setJntop(4275);
    pad->Sosearch(ClientSetup, Connection, u"4"_s, chosen);
    if (!Trim(chosen).isEmpty())
        AppendOpinionText(chosen);
}

void frmCapSogyon::AppendOpinionText(const QString& code)
{
    const QString text = OpinionText(code.mid(2));
    if (text.isNull())
        return;
    // As typed at the end, so that it can be undone like typing.
    QTextCursor cursor(m_txtSogyon->document());
    cursor.movePosition(QTextCursor::End);
    cursor.insertText(text);
    m_txtSogyon->setTextCursor(cursor);
}
