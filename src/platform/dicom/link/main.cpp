#include "platform/dicom/link/Association.h"
#include "platform/dicom/link/PictureObject.h"
#include "platform/dicom/link/ReportListener.h"
#include "platform/dicom/link/ServiceAssociation.h"

#include <QCborValue>
#include <QtEndian>

#include <dcmtk/oflog/oflog.h>

#include <cerrno>
#include <csignal>
#include <new>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <unistd.h>

using namespace dicomlink;

namespace {

/// Most memory of its own: a picture is held several times on its way. In bytes.
#if defined(__SANITIZE_ADDRESS__) || defined(__SANITIZE_THREAD__)
constexpr rlim_t DataLimit = RLIM_INFINITY; // The sanitizer's own maps are far larger.
#else
constexpr rlim_t DataLimit = 320 << 20;
#endif

bool Limit(__rlimit_resource resource, rlim_t most)
{
    const rlimit limit = {most, most};
    return setrlimit(resource, &limit) == 0;
}

bool ConfineProcess()
{
    constexpr unsigned Last = ~0U;
    // No core is left, no other program looks in, no file is written, nothing is gained by starting another program.
    return prctl(PR_SET_PDEATHSIG, SIGKILL) == 0 && close_range(STDERR_FILENO + 1, Last, 0) == 0 &&
           prctl(PR_SET_DUMPABLE, 0, 0, 0, 0) == 0 && prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
           Limit(RLIMIT_DATA, DataLimit) && Limit(RLIMIT_CORE, 0) && Limit(RLIMIT_FSIZE, 0) &&
           std::signal(SIGPIPE, SIG_IGN) != SIG_ERR;
}

bool Read(char* target, qint64 bytes)
{
    while (bytes > 0) {
        const ssize_t got = read(STDIN_FILENO, target, static_cast<size_t>(bytes));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            return false;
        target += got;
        bytes -= got;
    }
    return true;
}

bool Write(const char* data, qint64 bytes)
{
    while (bytes > 0) {
        const ssize_t written = write(STDOUT_FILENO, data, static_cast<size_t>(bytes));
        if (written < 0 && errno == EINTR)
            continue;
        if (written <= 0)
            return false;
        data += written;
        bytes -= written;
    }
    return true;
}

/// False at the end of the requests, and for what is none.
bool ReadRequest(QCborMap& request)
{
    quint32 told = 0;
    if (!Read(reinterpret_cast<char*>(&told), sizeof told))
        return false;
    const quint32 length = qFromLittleEndian(told);
    if (length > MostMessage)
        return false;
    QByteArray bytes(length, Qt::Uninitialized);
    if (!Read(bytes.data(), bytes.size()))
        return false;
    QCborParserError error;
    const QCborValue value = QCborValue::fromCbor(bytes, &error);
    request = value.toMap();
    return error.error == QCborError::NoError && value.isMap();
}

bool WriteAnswer(const QCborMap& answer)
{
    const QByteArray bytes = answer.toCborValue().toCbor();
    const quint32 length = qToLittleEndian(static_cast<quint32>(bytes.size()));
    return Write(reinterpret_cast<const char*>(&length), sizeof length) && Write(bytes.constData(), bytes.size());
}

LinkAnswer Echo(const QCborMap& request)
{
    Association own;
    LinkAnswer answer = own.Open(request, Association::Purpose::Echo);
    return answer.fault == Fault::None ? own.Echo() : answer;
}

LinkAnswer Abilities(const QCborMap& request)
{
    Association own;
    return own.Open(request, Association::Purpose::Objects);
}

LinkAnswer Asked(Association& association, ReportListener& listener, const QCborMap& request, QCborMap& map)
{
    switch (static_cast<Request>(request.value(RequestKey).toInteger(-1))) {
    case Request::Open:
        return association.Open(request, Association::Purpose::Objects);
    case Request::Store:
        return association.Store(request);
    case Request::Find:
        return association.Find(request);
    case Request::Echo:
        return Echo(request);
    case Request::Make:
        map[ObjectKey] = pictureobject::FileContent(request);
        return {};
    case Request::Abilities:
        return Abilities(request);
    case Request::Close:
        association.Close();
        return {Fault::None};
    case Request::Reach:
    case Request::Scheduled:
    case Request::Create:
    case Request::Set:
    case Request::Commit:
        return ServiceAssociation().Ask(request, map);
    case Request::Listen:
        return listener.Listen(request);
    case Request::Report:
        return listener.Next(request, map);
    }
    return {};
}

} // namespace

/// Standard input are requests, standard output their answers, as link_messages.h tells.
int main()
try {
    if (!ConfineProcess())
        return 2;
    OFLog::configure(OFLogger::OFF_LOG_LEVEL);
    Association association;
    ReportListener listener;
    QCborMap request;
    while (ReadRequest(request)) {
        QCborMap map;
        const LinkAnswer answer = Asked(association, listener, request, map);
        request.clear();
        map[FaultKey] = static_cast<int>(answer.fault);
        map[StatusKey] = answer.status;
        map[CommentKey] = answer.comment;
        map[SilentKey] = answer.isSilent;
        map[MatchesKey] = answer.matches;
        map[TakenKey] = answer.taken;
        if (!WriteAnswer(map))
            break;
    }
    return 0;
} catch (const std::bad_alloc&) {
    return 1;
}
