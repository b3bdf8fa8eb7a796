#pragma once

#include "visit/Visit.h"

#include <QString>

#include <optional>

/// The picture as it was before the first mark was made on it: kept once, by the picture's identity, in its section's
/// Log folder under a name that begins otherwise than any deleted picture's. It stays there when the picture is deleted
/// and comes back with it. All throw PlatformError, and are for where statements and files may be waited for.
namespace originals {

/// What the names begin with; chart and date follow.
inline constexpr char16_t Prefix[] = u"original-";

/// An original by its file's name.
struct Name
{
    QString chart;
    QString ymd;
    QString picture; ///< Identity.
    QString imageExt;
};
/// Nothing for the name of any other file.
std::optional<Name> Read(const QString& fileName);

QString PathFor(const Visit& visit, const QString& picture);
/// Of the picture that has the number now; empty when none is kept.
QString PathOf(const Visit& visit, int number);
/// The same in two steps. Identities that the table has of it: statements alone, nothing without that table.
QStringList KnownIdentities(const Visit& visit, int number);
/// Files alone.
QString PathOf(const Visit& visit, int number, const QStringList& identities);
/// An original that was kept under an identity of its own, since the table could tell none, belongs to the one that the
/// table has.
void Adopt(const Visit& visit, int number);

} // namespace originals

/// Keeps the original of one picture while the editor is open on it.
class OriginalKeeper
{
public:
    OriginalKeeper(const Visit& visit, int number) : m_visit(visit), m_number(number) {}

    /// Before the file is overwritten: the original is there, whole, or PlatformError is thrown and the file is to be
    /// left alone. A picture without an identity gets one.
    void Keep();
    /// The file has been written: it bears the identity itself where the table doesn't tell it.
    void NoteWritten() const;

private:
    const Visit m_visit;
    const int m_number;
    QString m_ownIdentity; ///< That the table doesn't have.
};
