#pragma once

#include "admin/ArchiveYear.h"
#include "records/picture_sums.h"

#include <QHash>

class ArchiveFindings;

/// The movies of one year: whether they can be played, and whether they hold what came to the share, as the table of
/// the sums has it.
class MovieCheck
{
public:
    MovieCheck(const ArchiveYear& year, ArchiveFindings& findings) : m_year(year), m_findings(findings) {}

    /// By its name; one that is being written is none yet.
    static bool IsMovie(const QString& name);
    /// Throws PlatformError when the database doesn't answer.
    void Check(bool learns);
    int Without() const { return m_without; } ///< How many have no sum.
    int Learned() const { return m_learned; }

private:
    void CheckMovie(const QString& name, bool learns);
    /// A movie that is replaced or deleted at this moment is no finding.
    bool StillDiffers(const QString& path, const StoredSum& sum, const PictureSum& found) const;
    void Learn(const QString& name);

    const ArchiveYear& m_year;
    ArchiveFindings& m_findings;
    QHash<QString, StoredSum> m_sums; ///< By path; what is left behind all files has none.
    int m_without = 0;
    int m_learned = 0;
};
