#include "sender/Sender.h"

#include "contracts/dicom_uids.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/journal.h"
#include "pacs/queue_rows.h"
#include "pacs/SenderQueue.h"
#include "records/acts.h"
#include "records/picture_facts.h"
#include "records/study_identity.h"
#include "text/text_routines.h"

#include <QPointer>

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int ReadAhead = 2;
/// A picture waits longer for itself than the server's first pauses last, so that others have their turn.
constexpr int FirstOwnPauseMs = 4000;
constexpr int MostDoublings = 7;
/// What needs another setup isn't looked at again before that.
constexpr int SetupPauseMs = 60 * 60 * 1000;
constexpr int MostHeldAsked = 50;

QString PictureText(const PacsEntry& entry)
{
    return u"차트 %1 캡쳐 %2번(%3, %4)"_s.arg(Trim(entry.chart), NumberText(entry.number),
                                              LayIntoMask(entry.ymd, u"0000-00-00"), entry.etc);
}

void RecordSent(const PacsEntry& entry, const QString& uid)
{
    acts::Act act{acts::Kind::Sent, entry.chart, entry.ymd, entry.etc, entry.number};
    act.picture = entry.id;
    act.detail = act.key = uid;
    acts::Record(act);
}

int Doubled(int firstMs, int times)
{
    return std::min(firstMs << std::min(times, MostDoublings), Sender::LongestPauseMs);
}

QString VisitKey(const PacsEntry& entry)
{
    return entry.chart + u'\x1f' + entry.ymd + u'\x1f' + entry.etc;
}

/// The one of the studies that is of that very patient.
std::optional<DicomIdentity> OwnAmong(const QList<DicomFoundStudy>& found, DicomPicture facts,
                                      const QList<DicomIdentity>& former)
{
    const auto isSameName = [&facts](const QString& name) {
        return QString(name).remove(u' ') == QString(facts.patientName).remove(u' ');
    };
    for (const DicomIdentity& identity : former) {
        facts.identity = identity;
        const QString uid = StudyUid(facts);
        for (const DicomFoundStudy& study : found) {
            if (study.uid == uid && Trim(study.patientId) == Trim(identity.patientId) && isSameName(study.patientName))
                return identity;
        }
    }
    return std::nullopt;
}

} // namespace

template <class Work, class Then>
void Sender::OnLink(Work work, Then then)
{
    m_isSending = true;
    m_linkSince.start();
    m_link.Post([self = QPointer(this), kit = m_kit, batch = m_batch, work = std::move(work), then = std::move(then)] {
        QString fault;
        std::invoke_result_t<Work, DicomKit&> result;
        try {
            if (*kit == nullptr)
                *kit = CreateObject<DicomKit>(QString::fromUtf16(DicomKitName));
            result = work(**kit);
        } catch (const PlatformError& error) {
            fault = error.Text();
        }
        PostToScreen([self, batch, then, result, fault] {
            if (!self || self->m_batch != batch)
                return;
            self->m_isSending = false;
            self->Guard([&] {
                if (fault.isEmpty()) {
                    then(result);
                    return;
                }
                self->Pause(fault);
                self->EndBatch();
            });
        });
    });
}

bool Sender::AskHeld()
{
    if (std::exchange(m_hasAskedHeld, true))
        return false;
    const auto items = std::make_shared<Items>();
    for (const Ledger::VisitToAsk& visit : m_ledger.HeldVisits(MostHeldAsked)) {
        Item item;
        item.entry.chart = visit.chart;
        item.entry.ymd = visit.ymd;
        item.entry.etc = visit.etc;
        item.entry.imageExt = visit.imageExt;
        item.entry.doctor = visit.doctor;
        item.visit = item.entry.VisitBelow(m_setup.CaptureRoot);
        item.facts.chart = visit.chart;
        item.facts.ymd = visit.ymd;
        item.facts.section = visit.etc;
        items->append(item);
    }
    if (items->isEmpty())
        return false;
    m_isBusy = true;
    ++m_batch;
    // What has been sent by anybody has an identity that is kept.
    const auto ask = [items] {
        for (Item& item : *items) {
            const std::optional<DicomIdentity> identity = KeptIdentity(item.visit);
            item.hasIdentity = identity.has_value();
            item.facts.identity = identity.value_or(DicomIdentity());
        }
        items->removeIf([](const Item& item) { return !item.hasIdentity; });
    };
    Ask(ask, [this, items] { TakeHeld(*items); });
    return true;
}

void Sender::TakeHeld(const Items& items)
{
    if (items.isEmpty()) {
        EndBatch();
        return;
    }
    const auto find = [peer = m_peer, items, stop = m_stop.get_token()](DicomKit& kit) {
        Items stored;
        if (kit.Open(peer, stop).kind != DicomOutcome::Accepted)
            return stored;
        for (const Item& item : items) {
            QList<DicomFoundStudy> found;
            kit.FindStudies({StudyUid(item.facts)}, found, stop);
            if (!found.isEmpty())
                stored.append(item);
        }
        return stored;
    };
    OnLink(find, [this](const Items& stored) {
        for (const Item& item : stored)
            m_ledger.Release(
                {item.entry.chart, item.entry.ymd, item.entry.etc, item.entry.doctor, item.entry.imageExt});
        EndBatch();
    });
}

void Sender::AskFacts(const QList<PacsEntry>& entries)
{
    const auto items = std::make_shared<Items>();
    QSet<QString> wereSent;
    const QString today = QDate::currentDate().toString(u"yyyyMMdd"_s);
    for (const PacsEntry& entry : entries) {
        items->append(Item{entry, entry.VisitBelow(m_setup.CaptureRoot), {}});
        if (entry.ymd < today || m_ledger.WasSent(entry))
            wereSent.insert(VisitKey(entry));
    }
    const auto ask = [items, wereSent, pacs = m_setup.Pacs, places = m_places] {
        QHash<QString, Item> known;
        for (Item& item : *items) {
            const QString key = VisitKey(item.entry) + u'\x1f' + item.entry.doctor;
            if (!known.contains(key)) {
                item.facts = PictureFacts(item.visit, item.entry.doctor, pacs, places);
                std::optional<DicomIdentity> identity = KeptIdentity(item.visit);
                const std::optional<DicomIdentity> fresh = NewIdentity(item.visit, pacs, places);
                if (!identity && wereSent.contains(VisitKey(item.entry)))
                    item.former = FormerIdentities(item.visit, pacs, places);
                else if (!identity && fresh)
                    identity = KeepIdentity(item.visit, *fresh);
                item.hasIdentity = identity.has_value();
                item.facts.identity = identity.value_or(fresh.value_or(DicomIdentity()));
                known.insert(key, item);
                continue;
            }
            const Item& same = known[key];
            item.facts = same.facts;
            item.hasIdentity = same.hasIdentity;
            item.former = same.former;
        }
    };
    Ask(ask, [this, items] { TakeFacts(*items); });
}

void Sender::TakeFacts(const Items& items)
{
    m_items.clear();
    QList<PacsEntry> begun;
    for (const Item& item : items) {
        if (item.hasIdentity || !item.former.isEmpty()) {
            m_items.append(item);
            begun.append(item.entry);
        } else {
            WaitForSetup(item.entry);
        }
    }
    m_nextRead = 0;
    m_ready.clear();
    if (m_items.isEmpty()) {
        m_isBusy = false;
        Step();
        return;
    }
    m_ledger.Begin(begun);
    Open();
}

void Sender::Open()
{
    struct Opened
    {
        DicomOutcome outcome;
        QHash<QString, DicomIdentity> found; ///< By the visit.
    };
    Items doubtful;
    for (const Item& item : std::as_const(m_items)) {
        const auto isSame = [&item](const Item& other) { return VisitKey(other.entry) == VisitKey(item.entry); };
        if (!item.hasIdentity && std::ranges::none_of(doubtful, isSame))
            doubtful.append(item);
    }
    const auto open = [peer = m_peer, doubtful, stop = m_stop.get_token(), known = m_known](DicomKit& kit) {
        known->clear();
        Opened opened{kit.Open(peer, stop), {}};
        for (const Item& item : doubtful) {
            if (opened.outcome.kind != DicomOutcome::Accepted)
                break;
            QStringList uids;
            DicomPicture facts = item.facts;
            for (const DicomIdentity& identity : item.former) {
                facts.identity = identity;
                uids << StudyUid(facts);
            }
            QList<DicomFoundStudy> studies;
            const DicomOutcome found = kit.FindStudies(uids, studies, stop);
            if (found.kind == DicomOutcome::Away || found.kind == DicomOutcome::Cut)
                opened.outcome = found;
            if (const auto own = OwnAmong(studies, item.facts, item.former))
                opened.found.insert(VisitKey(item.entry), *own);
        }
        return opened;
    };
    OnLink(open, [this](const Opened& opened) { TakeOpened(opened.outcome, opened.found); });
}

void Sender::TakeOpened(const DicomOutcome& outcome, const QHash<QString, DicomIdentity>& found)
{
    if (outcome.kind != DicomOutcome::Accepted) {
        Pause(outcome.reason, outcome.kind == DicomOutcome::PeerRefused || outcome.kind == DicomOutcome::KindRefused);
        EndBatch();
        return;
    }
    for (Item& item : m_items) {
        if (item.hasIdentity)
            continue;
        if (const auto own = found.find(VisitKey(item.entry)); own != found.end())
            item.facts.identity = *own;
        // Nothing is to go under what two clinics may have.
        else if (item.facts.identity == DicomIdentity())
            WaitForSetup(item.entry);
    }
    m_items.removeIf([](const Item& item) { return !item.hasIdentity && item.facts.identity == DicomIdentity(); });
    KeepIdentities();
}

void Sender::KeepIdentities()
{
    const auto items = std::make_shared<Items>(m_items);
    const auto keep = [items] {
        for (Item& item : *items) {
            if (!std::exchange(item.hasIdentity, true))
                item.facts.identity = KeepIdentity(item.visit, item.facts.identity);
        }
    };
    const auto goOn = [this] {
        if (m_items.isEmpty())
            EndBatch();
        else
            ReadNext();
    };
    if (std::ranges::all_of(m_items, &Item::hasIdentity)) {
        goOn();
        return;
    }
    Ask(keep, [this, items, goOn] {
        m_items = *items;
        goOn();
    });
}

void Sender::ReadNext()
{
    if (m_isReading || m_isEnding || m_nextRead >= m_items.size() || m_ready.size() >= ReadAhead)
        return;
    const qsizetype at = m_nextRead++;
    m_isReading = true;
    m_readingSince.start();
    const auto read = [self = QPointer(this), batch = m_batch, at, visit = m_items[at].visit,
                       number = m_items[at].entry.number] {
        const PacsContent content = ReadPacsContent(visit, number);
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
        if (m_stop.stop_requested() || !m_ledger.IsStill(item.entry))
            continue;
        if (item.content.kind == PacsContent::Gone) {
            m_ledger.Gone(item.entry);
            continue;
        }
        if (item.content.kind == PacsContent::Other) {
            TakeAnswer(item, {{DicomOutcome::Refused, item.content.reason}});
            continue;
        }
        if (item.content.kind == PacsContent::Away) {
            WaitForFile(item.entry, item.content.reason);
            continue;
        }
        DicomPicture facts = item.facts;
        facts.number = item.entry.number;
        facts.takenAt = item.content.takenAt;
        const auto send = [facts, item, known = m_known, stop = m_stop.get_token()](DicomKit& kit) {
            const QString uid = InstanceUid(facts, item.content.bytes);
            if (uid == item.entry.uid)
                return Answer{{DicomOutcome::Accepted}, uid};
            if (item.entry.isDoubtful) {
                const QString study = StudyUid(facts);
                if (!known->contains(study)) {
                    QList<DicomFound> found;
                    kit.FindPictures(study, SeriesUid(facts), found, stop);
                    for (const DicomFound& each : std::as_const(found))
                        (*known)[study].insert(each.uid);
                    (*known)[study];
                }
                if ((*known)[study].contains(uid))
                    return Answer{{DicomOutcome::Accepted}, uid};
            }
            return Answer{kit.Store(item.content.bytes, facts, stop), uid};
        };
        OnLink(send, [this, item](const Answer& answer) {
            TakeAnswer(item, answer);
            ReadNext();
            SendNext();
        });
        ReadNext();
        return;
    }
    const bool isDone = m_nextRead >= m_items.size() && !m_isReading && m_ready.empty();
    if (m_isBusy && (isDone || m_isEnding))
        EndBatch();
    else
        ReadNext();
}

void Sender::TakeAnswer(const Item& item, const Answer& answer)
{
    const DicomOutcome& outcome = answer.outcome;
    const PacsEntry& entry = item.entry;
    switch (outcome.kind) {
    case DicomOutcome::Accepted:
        m_ledger.Sent(entry, answer.uid);
        RecordSent(entry, answer.uid);
        m_ledger.Tell(QString::fromUtf16(queue_rows::SentNow), QString::number(++m_sent));
        if (outcome.isOtherSet)
            journal::Note(Journal::Information,
                          u"%1: KS X 1001에 없는 글자가 있어 유니코드(ISO_IR 192)로 보냄"_s.arg(PictureText(entry)));
        break;
    case DicomOutcome::Refused:
        m_ledger.SetAside(entry, outcome.reason);
        journal::NoteFault(u"PACS 거부, %1: %2"_s.arg(PictureText(entry), outcome.reason));
        break;
    case DicomOutcome::KindRefused:
    case DicomOutcome::PeerRefused:
        Pause(outcome.reason, true);
        m_isEnding = true;
        return;
    case DicomOutcome::Passing:
    case DicomOutcome::Cut:
        m_ledger.Later(entry, outcome.reason, Doubled(FirstOwnPauseMs, entry.tries), outcome.kind == DicomOutcome::Cut);
        [[fallthrough]];
    case DicomOutcome::Away:
        Pause(outcome.reason);
        m_isEnding = true;
        return;
    }
    m_pauseMs = 0;
    SetAway({});
}

void Sender::WaitForSetup(const PacsEntry& entry)
{
    m_ledger.Later(entry, QString::fromUtf16(NoIdentityText), SetupPauseMs, false);
    SetAway(QString::fromUtf16(NoIdentityText));
}

void Sender::WaitForFile(const PacsEntry& entry, const QString& reason)
{
    m_ledger.Later(entry, reason, Doubled(FirstOwnPauseMs, entry.tries), false);
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
