#pragma once

#include <QString>

#include <cstdio>

/// What the programs say on a terminal, or in a file or journal that somebody looks at on one. All of it passes here:
/// names of files, lists of other users and servers' texts may hold what a terminal takes for a command.

/// A text on one line: line ends and tabs become blanks, and a mark (U+FFFD) stands for each control character,
/// direction mark and broken half of a character. Blanks stay.
QString TerminalText(const QString& text);

/// A program's standard output or error, in UTF-8.
class TerminalOutput
{
public:
    explicit TerminalOutput(std::FILE* file) : m_file(file) {}

    /// A piece of a line; only a line end at its own end is one.
    TerminalOutput& operator<<(const QString& piece);
    TerminalOutput& operator<<(char16_t piece) { return *this << QString(QChar(piece)); }
    TerminalOutput& operator<<(qint64 number) { return *this << QString::number(number); }
    /// Lines of the program's own, such as its help.
    void PutLines(const QString& lines);
    /// Begins the present line again with that text.
    void Overwrite(const QString& text);
    /// A piece of a JSON document, in UTF-8, as it stands; what isn't shown becomes its escape.
    void PutJson(const QByteArray& json);
    void Flush();
    /// Writes what is left and closes the file, at which a share may tell of a fault: the last call. Gives what has
    /// kept any of the output from being written, since the first piece; empty when all of it was.
    QString Close();

private:
    void Put(const QString& text);
    void Note(bool isDone);

    std::FILE* const m_file;
    int m_error = 0; ///< `errno` of the first fault.
};

/// A message on standard error. Its further lines are indented, so that none looks like one of another message.
void TellOnError(const QString& text);
