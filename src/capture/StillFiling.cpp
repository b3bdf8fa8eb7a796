#include "capture/StillFiling.h"

#include "capture/capture_folders.h"
#include "capture/NumberClaim.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/services.h"
#include "records/capture_index.h"
#include "text/text_routines.h"
#include "visit/Visit.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// Picture numbers are 16-bit.
constexpr int LargestNumber = std::numeric_limits<qint16>::max();

/// The largest number among the picture files, for the time in which the database can't be asked.
int LargestNumberOnDisk(const Visit& visit)
{
    int largest = 0;
    const QStringList names = Files().FilesStartingWith(visit.SectionFolder(), visit.PicturePrefix());
    for (const QString& name : names)
        largest = qMax(largest, visit.PictureNumber(name));
    return largest;
}

} // namespace

StillFiling::Placed StillFiling::PlaceFile(const Visit& visit, const QByteArray& picture, QString& fault) const
{
    const auto largestTaken = [&] {
        if (fault.isEmpty()) {
            try {
                return NextCaptureNo(visit);
            } catch (const PlatformError& error) {
                fault = error.Text();
            }
        }
        return LargestNumberOnDisk(visit);
    };

    // A section outside this client's list has no folder of its own yet.
    EnsureFolderOfYear(visit.captureDir, visit.SectionFolder());
    for (int number = largestTaken() + 1; number <= LargestNumber; ++number) {
        auto claim = NumberClaim::Take(visit, number);
        if (claim == nullptr)
            continue;
        // Another station may have filed this number and released it before the claim was ours.
        const int largest = largestTaken();
        if (largest >= number) {
            number = largest;
            continue;
        }
        const QString path = visit.PicturePath(number);
        if (FileExists(path))
            continue;
        try {
            if (Files().WriteNewFile(path, picture))
                return {number, std::move(claim), {}};
        } catch (const StoredWithFault& error) {
            return {number, std::move(claim), error.Text()};
        }
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

StillFiling::Filed StillFiling::File(const Visit& visit, const QByteArray& picture)
{
    Filed filed;
    try {
        filed.tidings = WritePending();
    } catch (const DatabaseAway& error) {
        filed.rowsFault = error.Text();
    }
    m_pending.ClaimsIn({visit.captureDir, visit.etc});
    const Placed placed = PlaceFile(visit, picture, filed.rowsFault);
    filed.number = placed.number;
    if (!placed.fault.isEmpty())
        filed.tidings << placed.fault;

    PendingRows::Entry entry{visit, placed.number, {}, false};
    Note note;
    try {
        note = m_note(visit, filed.rowsFault.isEmpty());
        if (note.typed)
            entry.note = note.text;
        if (filed.rowsFault.isEmpty())
            SaveCaptureRows(visit, placed.number, note.text);
    } catch (const DatabaseAway& error) {
        filed.rowsFault = error.Text();
    } catch (const PlatformError& error) {
        filed.rowsFault = error.Text();
        entry.refused = true;
    }
    if (filed.rowsFault.isEmpty()) {
        m_safe({visit, placed.number, note, false});
        return filed;
    }
    placed.claim->Keep();
    if (const QString fault = m_pending.Add(entry); !fault.isEmpty())
        filed.tidings << fault;
    return filed;
}

QStringList StillFiling::WritePending()
{
    return m_pending.WriteAll([this](const PendingRows::Entry& entry) { return WriteRows(entry); });
}

PendingRows::Outcome StillFiling::WriteRows(const PendingRows::Entry& entry)
{
    const Visit& visit = entry.visit;
    if (!FileExists(visit.PicturePath(entry.number))) {
        // Without its folder there is no share to tell what became of the picture.
        if (!FolderExists(visit.SectionFolder()))
            return PendingRows::Outcome::Later;
        NumberClaim::Release(visit, entry.number);
        return PendingRows::Outcome::Gone;
    }
    Note note = m_note(visit, true);
    // What was typed when the rows failed must not be lost, nor what others have stored since.
    if (!note.typed && !Trim(entry.note).isEmpty() && !note.text.contains(Trim(entry.note))) {
        const QString lineEnd = note.text.contains(u"\r\n"_s) ? u"\r\n"_s : u"\n"_s;
        note.text = Trim(note.text).isEmpty() ? entry.note : note.text + lineEnd + entry.note;
    }
    SaveCaptureRows(visit, entry.number, note.text);
    NumberClaim::Release(visit, entry.number);
    m_safe({visit, entry.number, note, true});
    return PendingRows::Outcome::Written;
}

void StillFiling::Forget(const Visit& visit, int number)
{
    m_pending.Remove(visit, number);
    NumberClaim::Release(visit, number);
}
