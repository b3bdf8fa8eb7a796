#pragma once

#include "contracts/PlatformError.h"

#include <QString>

#include <functional>

/// Whether the capture root is the folder in which this clinic's pictures lie, and not the disk under a mount point, an
/// empty one, or another clinic's. A small file in it tells it from all others; the station remembers that of the root
/// that it has used, and so does the database where the administrator has made the table `caproot`. In a root that is
/// refused nothing is made, nothing is deleted for the lack of its file, and pictures wait on this machine's disk.
namespace capture_root {

/// Name of the mark in the root. It holds an identity.
inline constexpr char16_t MarkName[] = u".capture-root";

/// What would be done in a root that is refused.
class Refused : public FilesAway
{
public:
    using FilesAway::FilesAway;
};

/// From here on that root is watched, as far as the station itself remembers it. Asks neither share nor
/// database: for a start, before anything is brought to the root.
void Watch(const QString& root);
/// The same, and judges it. One that nobody knows yet gets its mark, unless the database has pictures and none of them
/// lies there, or the machine's own list says that something is to be mounted there and nothing is. Throws FilesAway
/// when the share doesn't answer: then what is remembered counts. A database that doesn't answer is no hindrance.
void Judge(const QString& root);
/// Throws Refused for a folder in the root while that is refused, or as soon as it is another than before. One that is
/// the right one again is taken. For a thread that may wait for the share.
void Check(const QString& folder);
/// Nothing stands under the path, which lies in that year folder, and its root is there and the right one, before and
/// after: one that goes in between takes no picture for gone. Throws FilesAway otherwise.
bool IsGone(const QString& yearFolder, const QString& path);
/// Why the root is refused, for the operator; empty when it isn't.
QString Refusal();
/// The operator says that it is the right one: its mark is the remembered one from here on, made where there is none.
/// Throws PlatformError.
void Accept();
/// Hears, on the screen's thread, that it is refused now, or isn't any more. One at a time.
void setListener(std::function<void()> listener);

/// Identity in the mark of a root; empty when there is none. Throws PlatformError when it can't be read.
QString MarkOf(const QString& root);
/// What the database remembers; empty without the table or a row. Throws PlatformError.
QString StoredMark();
/// The database remembers that one. The table is made where it isn't there. Throws PlatformError.
void StoreMark(const QString& mark);

} // namespace capture_root
