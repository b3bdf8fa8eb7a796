#include "sender/Sender.h"

#include "filing/originals.h"
#include "identifiers/dicom_uids.h"
#include "pacs/parts.h"
#include "records/study_identity.h"
#include "sender/Sender_link.h"
#include "text/text_routines.h"

#include <algorithm>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr int MostHeldAsked = 50;

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

bool Sender::AskHeld()
{
    m_wantsHeld = m_mayBeHeld = false;
    const auto items = std::make_shared<Items>();
    for (const Ledger::VisitToAsk& visit : m_ledger.HeldVisits(MostHeldAsked)) {
        Item item;
        item.entry.chart = visit.chart;
        item.entry.ymd = visit.ymd;
        item.entry.etc = visit.etc;
        item.entry.imageExt = visit.imageExt;
        item.entry.doctor = visit.doctor;
        item.visit = item.entry.VisitBelow(m_setup.CaptureRoot);
        item.known.facts.chart = visit.chart;
        item.known.facts.ymd = visit.ymd;
        item.known.facts.section = visit.etc;
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
            item.known.hasIdentity = identity.has_value();
            item.known.facts.identity = identity.value_or(DicomIdentity());
        }
        items->removeIf([](const Item& item) { return !item.known.hasIdentity; });
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
            kit.FindStudies({StudyUid(item.known.facts)}, found, stop);
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
    for (const PacsEntry& entry : entries) {
        const bool isPicture = parts::IsOfPicture(entry.part);
        VisitTold told{entry.doctor, m_ledger.FirstTakenAt(entry), isPicture ? entry.number : 0,
                       m_ledger.MayHaveBeenSent(entry), !parts::IsRejection(entry.part)};
        if (!isPicture && !told.firstTakenAt.isValid())
            told.firstTakenAt = entry.takenAt;
        items->append(Item{entry, entry.VisitBelow(m_setup.CaptureRoot), told});
    }
    const auto ask = [items, pacs = m_setup.Pacs, places = m_places] {
        QHash<QString, VisitFacts> known;
        for (Item& item : *items) {
            const QString key = VisitKey(item.entry) + u'\x1f' + item.entry.doctor + QString::number(item.told.isNew);
            if (!known.contains(key))
                known.insert(key, FactsOf(item.visit, item.told, pacs, places));
            item.known = known[key];
            if (parts::IsOfPicture(item.entry.part) || parts::IsRejection(item.entry.part))
                item.identities = originals::KnownIdentities(item.visit, item.entry.number);
        }
    };
    Ask(ask, [this, items] { TakeFacts(*items); });
}

void Sender::TakeFacts(const Items& items)
{
    m_items.clear();
    QList<PacsEntry> begun;
    for (const Item& item : items) {
        if (item.known.hasIdentity || !item.known.former.isEmpty()) {
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
        if (!item.known.hasIdentity && std::ranges::none_of(doubtful, isSame))
            doubtful.append(item);
    }
    const auto open = [peer = m_peer, doubtful, stop = m_stop.get_token(), known = m_known](DicomKit& kit) {
        known->clear();
        Opened opened{kit.Open(peer, stop), {}};
        for (const Item& item : doubtful) {
            if (opened.outcome.kind != DicomOutcome::Accepted)
                break;
            QStringList uids;
            DicomPicture facts = item.known.facts;
            for (const DicomIdentity& identity : item.known.former) {
                facts.identity = identity;
                uids << StudyUid(facts);
            }
            QList<DicomFoundStudy> studies;
            const DicomOutcome found = kit.FindStudies(uids, studies, stop);
            if (found.kind == DicomOutcome::Away || found.kind == DicomOutcome::Broken)
                opened.outcome = found;
            if (const auto own = OwnAmong(studies, item.known.facts, item.known.former))
                opened.found.insert(VisitKey(item.entry), *own);
        }
        return opened;
    };
    OnLink(open, [this, retries = m_retries](const Opened& opened) {
        if (opened.outcome.kind != DicomOutcome::Accepted && retries != m_retries)
            EndBatch();
        else
            TakeOpened(opened.outcome, opened.found);
    });
}

void Sender::TakeOpened(const DicomOutcome& outcome, const QHash<QString, DicomIdentity>& found)
{
    if (outcome.kind != DicomOutcome::Accepted) {
        Pause(outcome.reason, outcome.kind == DicomOutcome::PeerRefused || outcome.kind == DicomOutcome::KindRefused);
        EndBatch();
        return;
    }
    for (Item& item : m_items) {
        if (item.known.hasIdentity)
            continue;
        if (const auto own = found.find(VisitKey(item.entry)); own != found.end())
            item.known.facts.identity = *own;
        // Nothing is to go under what two clinics may have.
        else if (item.known.facts.identity == DicomIdentity())
            WaitForSetup(item.entry);
    }
    m_items.removeIf(
        [](const Item& item) { return !item.known.hasIdentity && item.known.facts.identity == DicomIdentity(); });
    KeepIdentities(found);
}

void Sender::KeepIdentities(const QHash<QString, DicomIdentity>& found)
{
    const auto items = std::make_shared<Items>(m_items);
    const auto keep = [items, found, pacs = m_setup.Pacs] {
        for (Item& item : *items) {
            if (!item.known.hasIdentity)
                KeepFound(item.known, item.visit, item.told, found.contains(VisitKey(item.entry)), pacs);
        }
    };
    const auto goOn = [this] {
        if (m_items.isEmpty())
            EndBatch();
        else
            ReadNext();
    };
    if (std::ranges::all_of(m_items, [](const Item& item) { return item.known.hasIdentity; })) {
        goOn();
        return;
    }
    Ask(keep, [this, items, goOn] {
        m_items = *items;
        goOn();
    });
}
