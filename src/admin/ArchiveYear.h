#pragma once

#include "records/capture_index.h"
#include "visit/Visit.h"

#include <QStringList>

#include <map>
#include <vector>

/// The files of one year as they were listed, against the rows as they come in. A hundred thousand names take some ten
/// megabytes; of the rows nothing is kept but those that have no file.
class ArchiveYear
{
public:
    /// Lists the year's folders. Throws PlatformError for one that can't be read.
    explicit ArchiveYear(const QString& year);

    /// A row of this year: finds its file.
    void Match(const PictureKey& row);

    /// A section's folder and the names in it, sorted.
    struct Section
    {
        QString path;
        QString name;
        QStringList pictures;
        std::vector<bool> hasRow; ///< Of each picture.
        QStringList claims;
        QStringList others; ///< Neither: half-written files, and whatever else lies there.
    };
    const std::vector<Section>& Sections() const { return m_sections; }
    const QString& Year() const { return m_year; }
    const QString& Folder() const { return m_folder; }
    const QList<PictureKey>& RowsWithoutFile() const { return m_withoutFile; }
    qsizetype PictureCount() const;

    /// Visit and number that a picture's or a claim's name in the section stands for; number 0 for any other name.
    static std::pair<Visit, int> PictureOf(const QString& name, const QString& section, const QString& yearFolder);

private:
    QString m_year;
    QString m_folder;
    std::vector<Section> m_sections;
    std::map<QString, size_t> m_places; ///< Of the sections, by name.
    QList<PictureKey> m_withoutFile;
};
