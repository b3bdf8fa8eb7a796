#pragma once

#include <QJsonObject>
#include <QString>

class TerminalOutput;

/// What a command finds: lines for a reader, or the same facts as one JSON document for a program. Nothing is kept of
/// an item once it is out, so that a list of any length needs no memory.
///
/// The document is an object with `command`, `items` (an array of objects, one for each line), what the command adds up
/// (`Total`), `error` where it broke off, and `exitStatus`. Its keys and its fixed words are English and stay; texts
/// for a reader are Korean. Dates of visits are `yyyymmdd`, times ISO 8601.
class Report
{
public:
    enum class Form { Text, Json };

    /// Lines.
    explicit Report(TerminalOutput& out) : Report(out, Form::Text, {}) {}
    Report(TerminalOutput& out, Form form, const QString& command) : m_out(out), m_form(form), m_command(command) {}
    Report(const Report&) = delete;
    Report& operator=(const Report&) = delete;

    bool IsJson() const { return m_form == Form::Json; }
    /// The output of a command that has lines alone.
    TerminalOutput& Lines() { return m_out; }

    /// One thing that was found: its line, without the line's end, and its facts.
    void Item(const QString& line, const QJsonObject& facts);
    /// What stands below all items; no line where that is empty.
    void Total(const QString& line, const QJsonObject& facts = {});
    /// The command can't go on. A reader finds the text on standard error.
    void Fail(const QString& text);
    /// Completes the document. A command that was used wrongly has none.
    void End(int exitCode);
    void Flush();

private:
    void Begin();

    TerminalOutput& m_out;
    const Form m_form;
    const QString m_command;
    QJsonObject m_totals;
    bool m_hasBegun = false;
    bool m_hasItems = false;
};
