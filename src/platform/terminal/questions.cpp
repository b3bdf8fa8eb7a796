#include "platform/terminal/register_terminal.h"

#include <QByteArray>

#include <cstdio>
#include <termios.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

bool IsTerminal()
{
    return isatty(STDIN_FILENO) == 1 && isatty(STDERR_FILENO) == 1;
}

QString Answer(const QString& question)
{
    std::fprintf(stderr, "%s ", qUtf8Printable(question));
    return ReadInputLine().value_or(QString());
}

} // namespace

std::optional<QString> ReadInputLine()
{
    QByteArray line;
    int letter = std::getchar();
    if (letter == EOF)
        return std::nullopt;
    for (; letter != EOF && letter != '\n'; letter = std::getchar())
        line += static_cast<char>(letter);
    return QString::fromUtf8(line);
}

std::optional<bool> AskOnTerminal(const QString& question)
{
    if (!IsTerminal())
        return std::nullopt;
    const QString answer = Answer(question + u" [y/N]"_s).trimmed().toLower();
    return answer == u"y" || answer == u"yes" || answer == u"예" || answer == u"네";
}

QString AskSecretOnTerminal(const QString& question)
{
    termios before = {};
    if (!IsTerminal() || tcgetattr(STDIN_FILENO, &before) != 0)
        return {};
    termios silent = before;
    silent.c_lflag &= ~static_cast<tcflag_t>(ECHO);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &silent);
    QString answer = Answer(question);
    tcsetattr(STDIN_FILENO, TCSAFLUSH, &before);
    std::fputc('\n', stderr);
    return answer;
}
