#pragma once

#include "contracts/files.h"
#include "records/picture_sums.h"
#include "visit/Visit.h"

#include <QStringList>

#include <functional>
#include <map>
#include <optional>
#include <vector>

/// The files of one year as they were listed, against the rows as they come in. A hundred thousand names take some ten
/// megabytes; of the rows nothing is kept.
class ArchiveYear
{
public:
    /// Lists the year's folders. Throws PlatformError when its own can't be read.
    explicit ArchiveYear(const QString& year);

    /// What lies in a folder of the year.
    struct Folder
    {
        QString path;
        FolderNames names{};
        QString fault{}; ///< Why it can't be read; empty when it was.
    };
    /// A section's folder; the names of its files stand below instead, sorted.
    struct Section : Folder
    {
        QString name;
        QStringList pictures{};
        std::vector<bool> hasRow{};                          ///< Of each picture.
        std::vector<std::optional<PictureDigest>> digests{}; ///< That they had when they were written, if it is known.
        QStringList claims{};
        QStringList others{}; ///< Neither: half-written files, and whatever else lies there.
    };

    enum class Found {
        File,
        NoFile,
        NoFolder, ///< Its section has none.
        Unread,   ///< Its section's folder can't be read.
    };
    /// A row of this year: finds its file.
    Found Match(const PictureKey& row);
    /// The same for a sum.
    Found Match(const PictureKey& picture, const PictureDigest& digest);

    bool IsThere() const { return m_isThere; }
    const QString& Year() const { return m_year; }
    const QString& Path() const { return m_path; }
    /// What lies in the year's own folder. A link that leads to a folder stands among `folders` and among `others`.
    const FolderNames& Names() const { return m_names; }
    const std::vector<Section>& Sections() const { return m_sections; }
    const std::vector<Folder>& LogFolders() const { return m_logs; }
    /// Its path is empty when there is none.
    const Folder& Movies() const { return m_movies; }
    qsizetype PictureCount() const;
    /// Nothing at all lies in the folders.
    bool IsEmpty() const;

    /// Visit and number that a picture's or a claim's name in the section stands for; number 0 for any other name.
    static std::pair<Visit, int> PictureOf(const QString& name, const QString& section, const QString& yearFolder);

private:
    /// Calls `tell` with the section and the picture's place in it.
    Found Find(const PictureKey& picture, const std::function<void(Section&, size_t)>& tell);

    QString m_year;
    QString m_path;
    bool m_isThere = false;
    FolderNames m_names;
    std::vector<Section> m_sections;
    std::map<QString, size_t> m_places; ///< Of the sections, by name.
    std::vector<Folder> m_logs;
    Folder m_movies;
};
