#pragma once

#include <QString>

#include <optional>

/// Installs the desktop of a program without a screen, and tells on standard error of waits that last.
void RegisterTerminal();

/// True when somebody may be looking at what goes to standard error.
bool IsErrorTerminal();

/// The next line of standard input, without its end; nothing behind the last.
std::optional<QString> ReadInputLine();
/// A question for whoever sits at the terminal; nothing when standard input or error is none.
std::optional<bool> AskOnTerminal(const QString& question);
/// The same for a word that isn't shown while it is typed; empty when nobody sits there.
QString AskSecretOnTerminal(const QString& question);
