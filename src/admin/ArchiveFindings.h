#pragma once

#include <QJsonObject>
#include <QString>

#include <map>

class Report;

/// A kind of what the check of the archive finds.
struct FindingKind
{
    QString word;
    QString key; ///< Of the document.
    bool isFault = true;
};

namespace findings {

extern const FindingKind Damaged;
extern const FindingKind Changed;
extern const FindingKind Swapped;
extern const FindingKind DeletedChanged;
extern const FindingKind NoPicture;
extern const FindingKind NoFile;
extern const FindingKind NoRow;
extern const FindingKind NoVisitRow;
extern const FindingKind NoIndex;
extern const FindingKind NotAFile;
extern const FindingKind FolderLink;
extern const FindingKind Unreadable;
extern const FindingKind BrokenName;
extern const FindingKind Nothing;
extern const FindingKind Leftover;
extern const FindingKind BeingWritten;
extern const FindingKind UnknownFile;

} // namespace findings

/// What the check of the archive has to say, and how much of it is wrong. Of many findings of a kind in a year the
/// first are told, unless all have to be, and the others counted.
class ArchiveFindings
{
public:
    ArchiveFindings(Report& report, bool tellsAll) : m_report(report), m_tellsAll(tellsAll) {}

    /// A finding that is no file's.
    void Tell(const FindingKind& kind, const QString& what, const QString& detail, QJsonObject facts);
    /// One on a file or folder, by the station's path.
    void TellPath(const FindingKind& kind, const QString& path, const QString& detail = {}, QJsonObject facts = {});
    /// The next of the kind will be told.
    bool IsTold(const FindingKind& kind) const;
    /// Tells how many were only counted.
    void EndYear(const QString& year);
    int FaultCount() const { return m_faults; }

private:
    Report& m_report;
    const bool m_tellsAll;
    std::map<const FindingKind*, int> m_counts; ///< Of the present year.
    int m_faults = 0;
};
