#pragma once

#include "admin/ArchiveYear.h"
#include "admin/PictureSurvey.h"
#include "records/picture_sums.h"

#include <QSet>

#include <functional>

class ArchiveFindings;

/// The pictures of one year against what they were when they were written, as the table of the sums has it. A picture
/// without a sum is no finding.
class SumCheck
{
public:
    SumCheck(ArchiveYear& year, ArchiveFindings& findings) : m_year(year), m_findings(findings) {}

    /// Reads the year's sums. Calls `between` now and then.
    void Read(const std::function<void()>& between);
    /// Told of already: it is another's finding, and nobody trusts it.
    void IsDamaged(const QString& path) { m_damaged.insert(path); }
    /// Behind `Read`, once all is read.
    void Compare(const PictureSurvey& survey);
    /// Takes the sums of pictures that have none, and that nothing is known to be wrong with, on trust. Gives how many.
    int Learn(const PictureSurvey& survey);
    /// How many have none.
    int Without() const;

private:
    /// A file that holds something else.
    struct Difference
    {
        QString path;
        Visit visit;
        int number = 0;
        PictureDigest written{};
        PictureDigest found{};
    };

    void LookForMissing(const QList<StoredSum>& sums);
    void TellMissing();
    void TellDifferences(const QList<Difference>& differences);
    /// It is one still: neither has been marked up meanwhile, nor deleted.
    bool StillDiffers(Difference& difference) const;
    void CompareDeleted();
    void CompareDeleted(const StoredSum& sum);
    bool HasBeenTold(const ArchiveYear::Section& section, qsizetype at) const;

    ArchiveYear& m_year;
    ArchiveFindings& m_findings;
    QSet<QString> m_damaged;    ///< Paths.
    QList<StoredSum> m_missing; ///< Neither a file nor a row.
    bool m_hasDeleted = false;
};
