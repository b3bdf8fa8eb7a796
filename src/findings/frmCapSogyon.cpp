#include "findings/frmCapSogyon.h"

#include "contracts/findings_popups.h"
#include "contracts/ImageList.h"
#include "contracts/pictures.h"
#include "findings/findings_doctors.h"
#include "findings/findings_print.h"
#include "findings/findings_rows.h"
#include "findings/frmSoFind.h"
#include "frame/components.h"
#include "frame/controls.h"
#include "frame/guard.h"
#include "frame/services.h"
#include "frame/twips.h"
#include "frame/waiting.h"
#include "records/acts.h"
#include "records/doctor_lookup.h"
#include "records/Statement.h"
#include "records/tables.h"
#include "screenparts/frmPrintView.h"
#include "screenparts/NoticeStrip.h"
#include "screenparts/PrintedPage.h"
#include "session/VisitContext.h"
#include "text/date_routines.h"
#include "text/text_routines.h"

#include <QPushButton>
#include <QScopeGuard>

using namespace Qt::StringLiterals;

namespace {

constexpr int NoticeTwips = 390;
const QString SaveQuestion = u"저장하시겠습니까?"_s;

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

FindingsSheet::Surroundings ReadSurroundings(const FindingsRecordFields& record)
{
    FindingsSheet::Surroundings read{DoctorListName(record.Jinchal, record.Ymd)};
    for (size_t slot = 0; slot < record.PicPath.size(); ++slot) {
        const QString path = record.PicPath[slot];
        if (!Trim(path).isEmpty() && PictureExists(path))
            read.pictures.emplace_back(Pictures().LoadToPrint(path, PrintedPictureSize()), record.PicNo[slot]);
    }
    return read;
}

} // namespace

frmCapSogyon::frmCapSogyon() : StationForm(QString::fromUtf16(FormName))
{
    setWindowTitle(u"캡쳐소견"_s);
    setFixedSize(PixelsFromTwips(9330), PixelsFromTwips(7470));
    setStyleSheet(QString::fromUtf16(Colours));
    BuildButtons();
    BuildNotices();
    connect(&m_sheet, &FindingsSheet::DoctorIsChosen, this, &frmCapSogyon::ChooseDoctor);
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
                                   {5, u"취소", 8560, 4005, &frmCapSogyon::Clear},
                                   {4, u"종료", 8560, 4620, &frmCapSogyon::Close}}) {
        const QString caption = QString::fromUtf16(command.caption);
        auto* button = Named(new QPushButton(caption, this), u"cmdSogyon(%1)"_s.arg(command.index), caption,
                             RectFromTwips(command.left, command.top, 735, 615));
        connect(button, &QPushButton::clicked, this, GuardedSlot([this, run = command.run](bool) { Run(run); }));
    }
    const QIcon find = UseService<ImageList>().Picture(u"Find"_s);
    const auto makeFind = [&](const QString& name, const QString& tip, const QRect& place,
                              void (frmCapSogyon::*command)()) {
        auto* button = Named(new QPushButton(find, {}, this), name, tip, place);
        button->setToolTip(tip);
        connect(button, &QPushButton::clicked, this, GuardedSlot([this, command](bool) { (this->*command)(); }));
    };
    makeFind(u"cmdSoFind"_s, u"소견문구 찾기"_s, RectFromTwips(3960, 1320, 495, 255), &frmCapSogyon::ChooseOpinion);
    makeFind(u"cmdQry"_s, u"과거소견 찾기"_s, RectFromTwips(7800, 5520, 495, 255), &frmCapSogyon::ShowEarlierFindings);
}

void frmCapSogyon::BuildNotices()
{
    constexpr int height = PixelsFromTwips(NoticeTwips);
    auto* notices = Named(new NoticeStrip(this), u"notices"_s, u"알림"_s, QRect(0, this->height(), width(), height));
    connect(notices, &NoticeStrip::Cancelled, this, [] { waiting::Cancel(); });
    // It covers none of the texts: the screen grows by it.
    connect(notices, &NoticeStrip::Shown, this,
            [this, notices](bool shown) { setFixedHeight(notices->y() + (shown ? height : 0)); });
}

void frmCapSogyon::Form_Load()
{
    OpenRecord();
}

void frmCapSogyon::Form_Unload()
{
    m_large.Close();
    m_draft.End();
    m_sending.End();
}

void frmCapSogyon::OpenRecord()
{
    const QStringList doctors = DoctorEntries(m_record.Ymd);
    QString tableFault;
    EnsureTable(Connection, QString(), u"caso"_s, true, &tableFault);
    const bool hasTable = tableFault.isEmpty();
    if (!hasTable || !ReadFindingsOfVisit(m_record))
        StartNewReport(hasTable);
    ShowRecord(doctors);
    MoveTo({PixelsFromTwips(5700), PixelsFromTwips(1035)});
    m_sheet.setFocus();
    if (!hasTable)
        ShowInformation(u"소견서를 저장할 caso 테이블이 없고 만들지도 못했습니다.!!\r\n%1"_s.arg(tableFault));
}

void frmCapSogyon::StartNewReport(bool hasTable)
{
    const QString year = m_record.Ymd.left(4);
    m_record.Yeonno = hasTable ? NextFindingsNumber(year) : FirstFindingsNumber(year);
    m_record.Balymd = TextFromDate(UseService<Desktop>().Today());
}

void frmCapSogyon::ShowRecord(const std::optional<QStringList>& doctors)
{
    const std::optional<DoctorRow> doctor = LookupDoctor(m_record.Jinchal, m_record.Ymd);
    const FindingsSheet::Surroundings surroundings = ReadSurroundings(m_record);
    if (doctors)
        m_sheet.FillLists(*doctors);
    if (doctor)
        TakeDoctor(m_record, *doctor);
    m_sheet.Show(m_record, surroundings);
    QList<int> numbers;
    for (const auto& [picture, number] : surroundings.pictures)
        numbers << number;
    m_large.TakeShown(m_record, numbers);
    m_draft.NoteShown();
}

void frmCapSogyon::ChooseDoctor(const QString& entry, const QString& before)
{
    // A choice without its licence would be stored with that of the doctor before.
    auto goBack = qScopeGuard([&] { m_sheet.ShowDoctorChoice(before); });
    const std::optional<DoctorRow> doctor = LookupDoctor(entry.left(2), m_record.Ymd);
    goBack.dismiss();
    m_record.Jinchal = entry.left(2);
    m_sheet.ShowDoctorChoice(entry);
    if (!doctor)
        return;
    TakeDoctor(m_record, *doctor);
    m_sheet.ShowDoctor(m_record);
}

void frmCapSogyon::Run(void (frmCapSogyon::*command)())
{
    // A fill and a print serve events: nothing else may change the record meanwhile.
    if (!IsBusy())
        (this->*command)();
}

void frmCapSogyon::Clear()
{
    m_large.Close();
    m_sheet.Clear();
}

void frmCapSogyon::SaveAndClear()
{
    if (AskYesNo(SaveQuestion) && StoreText())
        Clear();
}

void frmCapSogyon::DeleteAndClear()
{
    if (!Trim(m_record.Yeonno).isEmpty() && AskYesNo(u"삭제하시겠습니까?"_s))
        DeleteFindings();
    Clear();
}

void frmCapSogyon::PrintAndClear()
{
    if (PrintFindings() != Printed::NotStored)
        Clear();
}

void frmCapSogyon::DeleteFindings()
{
    const FindingsRecordFields deleted = m_record;
    RemoveFindings(m_record);
    m_sending.Withdraw(deleted);
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
    return !m_sheet.IsBlank() || !m_record.Stored ||
           AskYesNo(u"화면이 비어 있습니다. %1번 %2님의 소견서를 이 내용으로 바꾸시겠습니까?"_s.arg(m_record.Yeonno,
                                                                                                    m_record.Suname));
}

frmCapSogyon::Saved frmCapSogyon::SaveFindings()
{
    FindingsRecordRollback rollback(m_record);
    m_sheet.Take(m_record);
    if (Trim(m_record.Sogyon).isEmpty()) {
        rollback.Keep();
        ShowInformation(u"저장할 소견 내용이 없습니다.!!"_s);
        return Saved::No;
    }
    FindingsStored stored = StoreFindings(m_record);
    while (stored == FindingsStored::Changed) {
        switch (AskYesNoCancel(u"다른 곳에서 이 소견서를 고쳤습니다. 내 것으로 저장하시겠습니까?"_s)) {
        case Answer::Yes:
            TakePresentRow(m_record);
            stored = StoreFindings(m_record);
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
    m_sheet.setOwn();
    m_draft.NoteShown();
    if (stored == FindingsStored::Renumbered) {
        m_sheet.ShowNumber(m_record);
        ShowInformation(u"다른 곳에서 같은 번호를 사용하여 새 번호로 저장합니다.!!"_s);
    }
    // The report is stored: what goes on from here on its way costs nothing of that.
    Guarded([this] {
        FindingsRecordFields sent = m_record;
        m_sheet.TakeLines(sent);
        m_sending.Send(sent, m_sheet.Slots());
    });
    const QString cut = CutTextsOfFindings(m_record);
    if (cut.isEmpty())
        return Saved::Whole;
    ShowInformation(cut);
    return Saved::Shortened;
}

void frmCapSogyon::ShowTheirs()
{
    TakePresentRow(m_record);
    // Kept behind theirs: whoever takes it up again has seen that.
    m_draft.Keep();
    if (m_record.Stored && ReadFindingsByNumber(m_record, m_record.Yeonno))
        ShowRecord();
    else
        Clear();
}

void frmCapSogyon::OfferDraft()
{
    if (IsUnloaded())
        return;
    const std::optional<TextDraft::Draft> draft = m_draft.Wanted();
    if (!draft)
        return;
    if (draft->content.value(u"blank"_s).toBool())
        Clear();
    m_sheet.ShowTexts(draft->content.value(u"findings"_s).toString(), draft->content.value(u"remark"_s).toString());
    // What has been stored since by another station is met at the next save.
    ExpectFindingsTexts(m_record, {draft->content.value(u"storedFindings"_s).toString(),
                                   draft->content.value(u"storedRemark"_s).toString()});
    m_draft.TakeUp(*draft);
}

void frmCapSogyon::Close()
{
    const bool hasText = !Trim(m_sheet.Findings()).isEmpty();
    if (!hasText || !AskYesNo(SaveQuestion) || StoreText())
        Unload();
}

frmCapSogyon::Printed frmCapSogyon::PrintFindings()
{
    if (!AskYesNo(u"출력하시겠습니까?"_s))
        return Printed::NotWanted;
    if (Trim(m_record.Chart).isEmpty()) {
        ShowInformation(u"차트번호가 없습니다.!! 확인하세요.!1"_s);
        return Printed::NotWanted;
    }
    const Saved saved = MayReplaceReport() ? SaveFindings() : Saved::No;
    if (saved == Saved::No)
        return Printed::NotStored;
    m_sheet.TakeLines(m_record);
    m_printing = true;
    const auto end = qScopeGuard([this] { m_printing = false; });
    // The report is stored by now: a printer that refuses costs nothing but the paper.
    Guarded([this] {
        const PrintedPages pages = PagesOf(m_record, m_sheet.Slots());
        if (ClientSetup.PrintPreview && !Form<frmPrintView>().Agrees(pages))
            return;
        PrintFindingsPages(pages, *this);
        acts::Act act{acts::Kind::ReportPrinted, m_record.Chart, Trim(m_record.Ymd), m_record.Etc};
        act.detail = m_record.Yeonno;
        acts::Record(act);
    });
    return saved == Saved::Whole ? Printed::Yes : Printed::NotStored;
}

void frmCapSogyon::OpenFromList()
{
    // A report that was chosen, but can't be shown, isn't the one on the screen.
    FindingsRecordRollback rollback(m_record);
    FillFindingsList();
    if (!IsUnloaded())
        ShowRecord();
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

void frmCapSogyon::ShowEarlierFindings()
{
    const QString text = Trim(m_sheet.Findings());
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
    const QString text = Trim(chosen).isEmpty() ? QString() : OpinionText(chosen.mid(2));
    if (!text.isNull())
        m_sheet.Append(text);
}
