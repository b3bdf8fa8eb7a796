#include "contracts/findings_popups.h"
#include "findings/findings_print.h"
#include "findings/findings_record.h"
#include "findings/findings_rows.h"
#include "findings/FindingsBox.h"
#include "findings/frmCapSogyon.h"
#include "findings/frmSoFind.h"
#include "frame/components.h"
#include "frame/guard.h"
#include "frame/plain_text.h"
#include "frame/services.h"
#include "text/text_routines.h"
#include "visit/VisitContext.h"

#include <QComboBox>
#include <QLineEdit>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {
const QString SaveQuestion = u"저장하시겠습니까?"_s;

/// A text that only shows otherwise than it is written stays as it is.
void TakeShown(QString& field, const QLineEdit& box)
{
    const QString shown = Trim(box.text());
    if (shown != ComposedText(field))
        field = shown;
}
} // namespace

void frmCapSogyon::Run(void (frmCapSogyon::*command)())
{
    // A fill and a print serve events: nothing else may change the record meanwhile.
    if (!m_listing && !m_printing)
        (this->*command)();
}

void frmCapSogyon::SaveAndClear()
{
    if (AskYesNo(SaveQuestion) && StoreText())
        SogyonClear();
}

void frmCapSogyon::DeleteAndClear()
{
    DeleteFindings();
    SogyonClear();
}

void frmCapSogyon::PrintAndClear()
{
    if (PrintFindings() != Printed::NotStored)
        SogyonClear();
}

void frmCapSogyon::TakeInput()
{
    FindingsRecord.Balymd = LayIntoMask(m_txtPyy->text(), u"0000") + LayIntoMask(m_cmbPmm->currentText(), u"00") +
                            LayIntoMask(m_cmbPdd->currentText(), u"00");
    FindingsRecord.Jinchal = m_cmbJinchal->currentText().left(2);
    TakeShown(FindingsRecord.Doctor, *m_txtDoctor);
    TakeShown(FindingsRecord.Myonheo, *m_txtMyonheo);
    FindingsRecord.Sogyon = m_txtSogyon->Text();
    FindingsRecord.Bigo = m_txtBigo->Text();
    TakeShown(FindingsRecord.Yoyangno, *m_txtYoyangno);
    TakeShown(FindingsRecord.Hospital, *m_txtHospital);
}

bool frmCapSogyon::StoreText()
{
    if (!MayReplaceReport() || SaveFindings() != Saved::Whole)
        return false;
    m_draft.Check();
    return true;
}

bool frmCapSogyon::MayReplaceReport() const
{
    return !m_blank || !FindingsRecord.Stored ||
           AskYesNo(u"화면이 비어 있습니다. %1번 %2님의 소견서를 이 내용으로 바꾸시겠습니까?"_s.arg(
               FindingsRecord.Yeonno, FindingsRecord.Suname));
}

frmCapSogyon::Saved frmCapSogyon::SaveFindings()
{
    FindingsRecordRollback rollback;
    TakeInput();
    if (Trim(FindingsRecord.Sogyon).isEmpty()) {
        rollback.Keep();
        ShowInformation(u"저장할 소견 내용이 없습니다.!!"_s);
        return Saved::No;
    }
    FindingsStored stored = StoreFindings();
    while (stored == FindingsStored::Changed) {
        switch (AskYesNoCancel(u"다른 곳에서 이 소견서를 고쳤습니다. 내 것으로 저장하시겠습니까?"_s)) {
        case Answer::Yes:
            TakePresentRow();
            stored = StoreFindings();
            break;
        case Answer::No:
            ShowTheirs();
            rollback.Keep();
            return Saved::No;
        case Answer::Cancel:
            return Saved::No;
        }
    }
    rollback.Keep();
    m_blank = false;
    m_shownReport = MarkOfRecord();
    if (stored == FindingsStored::Renumbered) {
        m_txtYeonNo->setText(LayIntoMask(FindingsRecord.Yeonno, u"0000-000000"));
        ShowInformation(u"다른 곳에서 같은 번호를 사용하여 새 번호로 저장합니다.!!"_s);
    }
    const QString cut = CutTextsOfFindings();
    if (cut.isEmpty())
        return Saved::Whole;
    ShowInformation(cut);
    return Saved::Cut;
}

void frmCapSogyon::ShowTheirs()
{
    TakePresentRow();
    // Kept behind theirs: whoever takes it up again has seen that.
    TextDraft::Keep(DraftOfBoxes());
    if (FindingsRecord.Stored && ReadFindingsByNumber(FindingsRecord.Yeonno))
        ShowFindings();
    else
        SogyonClear();
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
    const bool hasText = !Trim(m_txtSogyon->Text()).isEmpty();
    if (!hasText || !AskYesNo(SaveQuestion) || StoreText())
        Unload();
}

frmCapSogyon::Printed frmCapSogyon::PrintFindings()
{
    if (!AskYesNo(u"출력하시겠습니까?"_s))
        return Printed::NotWanted;
    if (Trim(FindingsRecord.Chart).isEmpty()) {
        ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
        return Printed::NotWanted;
    }
    const Saved saved = MayReplaceReport() ? SaveFindings() : Saved::No;
    if (saved == Saved::No)
        return Printed::NotStored;
    SplitTextLines(*m_txtSogyon, FindingsRecord.SogyonLines);
    SplitTextLines(*m_txtBigo, FindingsRecord.BigoLines);
    m_printing = true;
    const auto end = qScopeGuard([this] { m_printing = false; });
    // The report is stored by now: a printer that refuses costs nothing but the paper.
    Guarded([this] { PrintFindingsPages(m_imgSogyon, *this); });
    return saved == Saved::Whole ? Printed::Yes : Printed::NotStored;
}

void frmCapSogyon::OpenFromList()
{
    // A report that was chosen, but can't be shown, isn't the one on the screen.
    FindingsRecordRollback rollback;
    FillFindingsList();
    if (!IsUnloaded())
        ShowFindings();
    rollback.Keep();
    OfferDraft();
}

void frmCapSogyon::FillFindingsList()
{
    m_listing = true;
    const auto end = qScopeGuard([this] { m_listing = false; });
    frmSoFind& list = Form<frmSoFind>();
    try {
        if (list.FillAll() && !IsUnloaded())
            list.ShowModal();
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
