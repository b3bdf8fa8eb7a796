#include "capture/StillFiling.h"

#include "capture/capture_rows.h"
#include "capture/NumberClaim.h"
#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "records/capture_index.h"
#include "records/capture_scheme.h"
#include "records/text/text_routines.h"

#include <limits>

using namespace Qt::StringLiterals;

namespace {

/// Picture numbers are 16-bit.
constexpr int LargestNumber = std::numeric_limits<qint16>::max();

int LargestStoredNumber(const CaptureVisit& visit)
{
    return NextCaptureNo(visit.chart, visit.yuhyung, visit.ymd, visit.captureDir, visit.etc);
}

/// The largest number among the picture files, for the time in which the database can't be asked.
int LargestNumberOnDisk(const CaptureVisit& visit)
{
    int largest = 0;
    const QString folder = SectionFolder(visit.captureDir, visit.etc);
    const QStringList names = Files().FilesStartingWith(folder, visit.chart + visit.ymd);
    for (const QString& name : names)
        largest = qMax(largest, PictureNumber(name, visit.chart, visit.ymd, visit.imageExt));
    return largest;
}

/// A section outside this client's list has no folder of its own yet. The year's folder must be there: if it is not,
/// the share is gone, and a folder made now would lie on the wrong disk.
void EnsureSectionFolder(const CaptureVisit& visit)
{
    const QString folder = SectionFolder(visit.captureDir, visit.etc);
    if (!FolderExists(folder) && FolderExists(visit.captureDir))
        MakeFolder(folder);
}

} // namespace

StillFiling::Placed StillFiling::PlaceFile(const CaptureVisit& visit, const QByteArray& picture, QString& fault) const
{
    const auto largestTaken = [&] {
        if (fault.isEmpty()) {
            try {
                return LargestStoredNumber(visit);
            } catch (const PlatformError& error) {
                fault = error.Text();
            }
        }
        return LargestNumberOnDisk(visit);
    };

    EnsureSectionFolder(visit);
    for (int number = largestTaken() + 1; number <= LargestNumber; ++number) {
        auto claim = NumberClaim::Take(ClaimPath(visit.captureDir, visit.etc, visit.chart, visit.ymd, number));
        if (claim == nullptr)
            continue;
        // Another station may have filed this number and released it before the claim was ours.
        const int largest = largestTaken();
        if (largest >= number) {
            number = largest;
            continue;
        }
        const QString path = VisitPicturePath(visit, number);
        if (!FileExists(path) && Files().WriteNewFile(path, picture))
            return {number, std::move(claim)};
    }
    throw PlatformError(u"캡쳐번호가 너무 커서 저장할 수 없습니다.!!"_s);
}

StillFiling::Filed StillFiling::File(const CaptureVisit& visit, const QByteArray& picture)
{
    QString fault;
    try {
        WritePending();
    } catch (const PlatformError& error) {
        fault = error.Text();
    }
    const Placed placed = PlaceFile(visit, picture, fault);
    PendingRows::Entry entry{visit, placed.number, {}};
    QString stored;
    try {
        const Note note = m_note(visit);
        if (note.typed)
            entry.note = note.text;
        stored = note.text;
        if (fault.isEmpty())
            SaveCaptureRows(visit, placed.number, stored);
    } catch (const PlatformError& error) {
        fault = error.Text();
    }
    if (fault.isEmpty())
        m_safe({visit, placed.number, stored, false});
    else
        m_pending.Add(entry);
    return {placed.number, fault};
}

void StillFiling::WritePending()
{
    m_pending.WriteAll([this](const PendingRows::Entry& entry) { WriteRows(entry); });
}

void StillFiling::WriteRows(const PendingRows::Entry& entry)
{
    const Note note = m_note(entry.visit);
    QString text = note.text;
    // What was typed when the rows failed must not be lost, nor what others have stored since.
    if (!note.typed && !Trim(entry.note).isEmpty() && !text.contains(Trim(entry.note)))
        text = Trim(text).isEmpty() ? entry.note : text + u'\n' + entry.note;
    SaveCaptureRows(entry.visit, entry.number, text);
    m_safe({entry.visit, entry.number, text, true});
}
