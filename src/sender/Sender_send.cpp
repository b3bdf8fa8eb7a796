#include "frame/journal.h"
#include "identifiers/dicom_uids.h"
#include "pacs/handed_files.h"
#include "pacs/parts.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/acts.h"
#include "sender/pauses.h"
#include "sender/Sender_link.h"
#include "text/text_routines.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int ReadAhead = 2;
/// A deleted picture that isn't found by then was never here.
constexpr int MostSearches = 6;

QString EntryText(const PacsEntry& entry)
{
    const QString of = u"차트 %1 %2(%3, %4)"_s;
    QString what = u"캡쳐 %1번"_s.arg(NumberText(entry.number));
    if (parts::IsReport(entry.part))
        what = u"소견서 "_s + parts::ValueOf(entry.part);
    else if (parts::IsMovie(entry.part))
        what = u"동영상 "_s + parts::ValueOf(entry.part);
    else if (parts::IsRejection(entry.part))
        what += u"의 삭제 알림"_s;
    else if (!entry.part.isEmpty())
        what += u"의 원래 그림"_s;
    return of.arg(Trim(entry.chart), what, LayIntoMask(entry.ymd, u"0000-00-00"), entry.etc);
}

acts::Kind ActOf(const PacsEntry& entry)
{
    if (parts::IsReport(entry.part))
        return acts::Kind::ReportSent;
    if (parts::IsMovie(entry.part))
        return acts::Kind::MovieSent;
    return parts::IsRejection(entry.part) ? acts::Kind::Rejected : acts::Kind::Sent;
}

void RecordSent(const PacsEntry& entry, const QString& uid)
{
    acts::Act act{ActOf(entry), entry.chart, entry.ymd, entry.etc, entry.number};
    act.picture = parts::IsOfPicture(entry.part) ? entry.id : QString();
    // Of a rejection what is rejected.
    act.detail = parts::IsRejection(entry.part) ? parts::ValueOf(entry.part) : uid;
    act.key = uid;
    acts::Record(act);
}

} // namespace

void Sender::ReadNext()
{
    if (m_isReading || m_isEnding || m_nextRead >= m_items.size() || m_ready.size() >= ReadAhead)
        return;
    const qsizetype at = m_nextRead++;
    m_isReading = true;
    m_readingSince.start();
    const auto read = [self = QPointer(this), batch = m_batch, at, visit = m_items[at].visit, entry = m_items[at].entry,
                       identities = m_items[at].identities, kit = m_looker, stop = m_stop.get_token()] {
        PacsContent content = ReadPacsContent(entry, visit, identities);
        // While the one before is on its way.
        if (content.kind == PacsContent::Read && parts::IsOfPicture(entry.part))
            content.look = kit->Look(content.bytes, stop);
        PostToScreen([self, batch, at, content] {
            if (!self)
                return;
            self->m_isReading = false;
            self->Guard([&] {
                if (self->m_batch == batch && self->m_isBusy)
                    self->TakeContent(at, content);
                else
                    self->Step();
            });
        });
    };
    m_reader.Post(read);
}

void Sender::TakeContent(qsizetype at, const PacsContent& content)
{
    m_items[at].content = content;
    m_ready.push_back(at);
    ReadNext();
    SendNext();
}

void Sender::SendNext()
{
    if (m_isSending)
        return;
    while (!m_ready.empty() && !m_isEnding) {
        const Item item = m_items[m_ready.front()];
        m_items[m_ready.front()].content = {};
        m_ready.pop_front();
        // What was withdrawn a moment ago doesn't go.
        TakeLines();
        if (m_isEnding)
            break;
        if (m_stop.stop_requested() || !m_ledger.IsStill(item.entry))
            continue;
        if (!TakeReading(item))
            continue;
        Send(item);
        ReadNext();
        return;
    }
    const bool isDone = m_nextRead >= m_items.size() && !m_isReading && m_ready.empty();
    if (m_isBusy && (isDone || m_isEnding))
        EndBatch();
    else
        ReadNext();
}

bool Sender::TakeReading(const Item& item)
{
    const PacsEntry& entry = item.entry;
    switch (item.content.kind) {
    case PacsContent::Read:
        return true;
    case PacsContent::Gone:
        if (parts::IsSearch(entry.part) && entry.tries < MostSearches)
            WaitForDeletion(entry);
        else if (parts::IsRejection(entry.part) && !parts::IsSearch(entry.part))
            return true;
        else
            m_ledger.Gone(entry);
        RemoveFiles(entry);
        return false;
    case PacsContent::Raw:
        m_ledger.MovieIsReady(entry, {});
        m_ledger.Later(entry, {}, 0, false);
        return false;
    case PacsContent::Other:
        TakeAnswer(item, {.outcome = {DicomOutcome::Refused, item.content.reason}});
        return false;
    case PacsContent::Away:
        WaitForFile(entry, item.content.reason);
        return false;
    }
    return false;
}

void Sender::Send(const Item& item)
{
    m_isSendingMovie = parts::IsMovie(item.entry.part);
    const sending::Task task{item.entry, item.known.facts, item.content, m_ledger.SiblingsOf(item.entry),
                             m_setup.Pacs.MovieSound};
    const auto send = [task, known = m_known, stop = m_stop.get_token()](DicomKit& kit) {
        return sending::Send(kit, task, *known, stop);
    };
    OnLink(send, [this, item, retries = m_retries](const sending::Answer& answer) {
        const DicomOutcome::Kind kind = answer.outcome.kind;
        const bool isToWait = kind != DicomOutcome::Accepted && kind != DicomOutcome::Refused;
        if (isToWait && retries != m_retries)
            m_ledger.Later(item.entry, answer.outcome.reason, 0, kind == DicomOutcome::Broken);
        else
            TakeAnswer(item, answer);
        ReadNext();
        SendNext();
    });
}

void Sender::TakeSent(const Item& item, const sending::Answer& answer)
{
    const PacsEntry& entry = item.entry;
    if (!answer.kept.isEmpty())
        m_ledger.DropRejection(entry, answer.kept);
    if (parts::IsSearch(entry.part)) {
        m_ledger.TakeFound(entry, answer.found);
        return;
    }
    Ledger::Stored stored = answer.stored;
    if (!entry.takenAt.isValid())
        stored.takenAt = item.content.takenAt;
    m_ledger.Sent(entry, stored);
    RecordSent(entry, answer.stored.object.uid);
    m_ledger.Tell(QString::fromUtf16(queue_rows::SentNow), QString::number(++m_sent));
    if (answer.outcome.isOtherSet)
        journal::Note(Journal::Information,
                      u"%1: KS X 1001에 없는 글자가 있어 유니코드(ISO_IR 192)로 보냄"_s.arg(EntryText(entry)));
    RemoveFiles(entry);
}

void Sender::TakeAnswer(const Item& item, const sending::Answer& answer)
{
    const DicomOutcome& outcome = answer.outcome;
    const PacsEntry& entry = item.entry;
    if (answer.wantsOriginal) {
        m_ledger.PutBehindOriginal(entry);
        return;
    }
    if (answer.isStillThere) {
        WaitForDeletion(entry);
        return;
    }
    switch (outcome.kind) {
    case DicomOutcome::Accepted:
        TakeSent(item, answer);
        break;
    case DicomOutcome::Refused:
        m_ledger.SetAside(entry, outcome.reason);
        journal::NoteFault(u"PACS 거부, %1: %2"_s.arg(EntryText(entry), outcome.reason));
        break;
    case DicomOutcome::KindRefused:
        // Objects of other kinds go all the same.
        if (parts::IsOfPicture(entry.part)) {
            m_ledger.Later(entry, outcome.reason, pauses::Long(), false);
            SetAway(outcome.reason);
            return;
        }
        m_ledger.SetAside(entry, outcome.reason);
        journal::NoteFault(u"PACS 거부, %1: %2"_s.arg(EntryText(entry), outcome.reason));
        return;
    case DicomOutcome::PeerRefused:
        Pause(outcome.reason, true);
        m_isEnding = true;
        return;
    case DicomOutcome::Passing:
    case DicomOutcome::Broken:
        m_ledger.Later(entry, outcome.reason, pauses::Own(entry.tries), outcome.kind == DicomOutcome::Broken);
        [[fallthrough]];
    case DicomOutcome::Away:
        Pause(outcome.reason);
        m_isEnding = true;
        return;
    }
    m_pauseMs = 0;
    SetAway({});
}

void Sender::WaitForDeletion(const PacsEntry& entry)
{
    m_ledger.Later(entry, u"그림이 아직 지워지지 않았습니다."_s, pauses::Own(entry.tries), false);
}

void Sender::RemoveFiles(const PacsEntry& entry)
{
    if (parts::IsReport(entry.part) || parts::IsMovie(entry.part))
        m_reader.Post([id = entry.id] { handed_files::Remove(id); });
}

void Sender::WaitForSetup(const PacsEntry& entry)
{
    m_ledger.Later(entry, QString::fromUtf16(NoIdentityText), pauses::Long(), false);
    SetAway(QString::fromUtf16(NoIdentityText));
}

void Sender::WaitForFile(const PacsEntry& entry, const QString& reason)
{
    m_ledger.Later(entry, reason, pauses::Own(entry.tries), false);
    SetAway(reason);
}

void Sender::EndBatch()
{
    // A step that the link is still at has gone by then, or its answer is nobody's.
    ++m_batch;
    m_isBusy = m_isSending = false;
    m_items.clear();
    m_ready.clear();
    m_ledger.PutBack(false);
    m_link.Post([kit = m_kit] {
        if (*kit != nullptr)
            (*kit)->Close();
    });
    Step();
}
