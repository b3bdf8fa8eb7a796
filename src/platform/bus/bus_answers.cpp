#include "platform/bus/bus_answers.h"

#include <QScopeGuard>
#include <QStringList>

#include <cstddef>
#include <cstring>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {
/// A socket of that name, which begins with a NUL where it is no file, takes a connection and answers.
bool SocketAnswers(const QByteArray& name, int patienceMs)
{
    sockaddr_un address = {};
    address.sun_family = AF_UNIX;
    if (name.isEmpty() || static_cast<std::size_t>(name.size()) >= sizeof(address.sun_path))
        return false;
    std::memcpy(address.sun_path, name.constData(), static_cast<std::size_t>(name.size()));
    const int file = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (file < 0)
        return false;
    const auto close = qScopeGuard([file] { ::close(file); });
    const auto size = static_cast<socklen_t>(offsetof(sockaddr_un, sun_path) + static_cast<std::size_t>(name.size()));
    constexpr char Hello[] = "\0AUTH\r\n";
    pollfd answer{file, POLLIN, 0};
    return connect(file, reinterpret_cast<const sockaddr*>(&address), size) == 0 &&
           send(file, Hello, sizeof(Hello) - 1, MSG_NOSIGNAL) == ssize_t(sizeof(Hello) - 1) &&
           poll(&answer, 1, patienceMs) == 1 && (answer.revents & POLLIN) != 0;
}
} // namespace

bool BusAnswers(const QString& address, int patienceMs)
{
    for (const QString& each : address.split(u';', Qt::SkipEmptyParts)) {
        if (!each.startsWith(u"unix:"_s))
            continue;
        for (const QString& part : each.sliced(each.indexOf(u':') + 1).split(u',')) {
            const QByteArray value = QByteArray::fromPercentEncoding(part.sliced(part.indexOf(u'=') + 1).toUtf8());
            if (part.startsWith(u"abstract="_s) && SocketAnswers('\0' + value, patienceMs))
                return true;
            if (part.startsWith(u"path="_s) && SocketAnswers(value, patienceMs))
                return true;
        }
    }
    return false;
}

QString SystemBusAddress()
{
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS", u"unix:path=/run/dbus/system_bus_socket"_s);
}
