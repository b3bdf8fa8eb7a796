#pragma once

#include <QByteArray>
#include <QHash>
#include <QList>
#include <QString>
#include <QStringList>

#include <optional>

/// Text of a file of the INI kind: `[section]` lines, then `key=value` lines. Sections and keys are matched without
/// regard to case, the first of equal ones counts, blanks around keys and values and one pair of quotes around a value
/// are no part of them. Lines are kept as the bytes that they are, so that changing one key leaves all others alone.
class IniFile
{
public:
    enum class Encoding { Utf8, Windows949 };

    IniFile(const QByteArray& content, Encoding encoding);
    /// Text that isn't valid UTF-8 is taken as windows-949.
    static Encoding EncodingOf(const QByteArray& content);

    /// Nothing when the section or the key is missing.
    std::optional<QString> Value(const QString& section, const QString& key) const;
    /// Names in the order of the file, each once.
    QStringList Sections() const;
    QStringList Keys(const QString& section) const;
    /// What is there and never read: sections and keys that come a second time, entries above the first section, and
    /// lines that are neither entry nor comment. As `[section]`, `[section] key` or the line.
    QStringList Unread() const;

    /// Sets a key, and adds it, and its section, where missing. Line ends inside the value become blanks.
    void SetValue(const QString& section, const QString& key, const QString& value);
    QByteArray Content() const;

private:
    struct Line
    {
        QByteArray text; ///< Without its line end.
        QString section; ///< Name on a section line.
        QString key;     ///< Empty on a line that is no entry.
        bool isSection = false;
    };

    QString Decoded(const QByteArray& bytes) const;
    QByteArray Encoded(const QString& text) const;
    Line Parsed(const QByteArray& text) const;
    /// Notes where the sections begin: a name is then found at once, however many there are.
    void FindSections();
    /// Position behind the line of the section's name; -1 when there is no such section.
    qsizetype SectionBegin(const QString& section) const;
    qsizetype SectionEnd(qsizetype begin) const;
    qsizetype Find(const QString& section, const QString& key) const;

    Encoding m_encoding;
    QByteArray m_byteOrderMark;
    QByteArray m_lineEnd = "\r\n";
    QList<Line> m_lines;
    QHash<QString, qsizetype> m_begins; ///< By the folded name.
};
