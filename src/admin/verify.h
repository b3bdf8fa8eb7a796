#pragma once

class QString;
class QTextStream;

/// `verify [YEAR]`: the archive against the tables, of one year or of all. Tells of rows without a file, files without
/// a row, pictures that can't be read, movies without an index, and what processes have left; changes nothing. With
/// `decodes` each picture is decoded, else its content is read and looked at from both ends. Gives an `ExitCode`.
int VerifyArchive(const QString& year, bool decodes, QTextStream& out);
