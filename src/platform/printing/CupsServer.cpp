#include "platform/printing/CupsServer.h"

#include "contracts/PlatformError.h"

#include <QStringList>

#include <cups/cups.h>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

constexpr int ConnectMs = 3000;
constexpr double AnswerSeconds = 3;
constexpr qsizetype MostLetters = 120; ///< That a printer's own message shows of itself.
constexpr char DocumentName[] = "capture-station";
constexpr char PdfType[] = "application/pdf";
constexpr char16_t SilentText[] = u"인쇄 서버(CUPS)가 응답하지 않습니다.!!";

struct Close
{
    void operator()(http_t* http) const { httpClose(http); }
    void operator()(ipp_t* answer) const { ippDelete(answer); }
    void operator()(cups_dest_t* printer) const { cupsFreeDests(1, printer); }
};
template <class T>
using Owned = std::unique_ptr<T, Close>;

Owned<http_t> Connect()
{
    // The library would ask for a password at the terminal that the station was started from.
    cupsSetPasswordCB2([](const char*, http_t*, const char*, const char*, void*) -> const char* { return nullptr; },
                       nullptr);
    Owned<http_t> http(
        httpConnect2(cupsServer(), ippPort(), nullptr, AF_UNSPEC, cupsEncryption(), 1, ConnectMs, nullptr));
    if (!http)
        throw PlatformError(QString::fromUtf16(SilentText));
    httpSetTimeout(
        http.get(), AnswerSeconds, [](http_t*, void*) { return 0; }, nullptr);
    return http;
}

/// What the server's last answer means for a sheet that goes to that printer.
QString RefusalText(const QString& printer)
{
    switch (cupsLastError()) {
    case IPP_STATUS_ERROR_NOT_ACCEPTING_JOBS:
        return u"프린터 %1이(가) 인쇄를 받지 않습니다.!!"_s.arg(printer);
    case IPP_STATUS_ERROR_NOT_FOUND:
        return u"프린터 %1을(를) 찾을 수 없습니다.!!"_s.arg(printer);
    case IPP_STATUS_ERROR_TIMEOUT:
    case IPP_STATUS_ERROR_SERVICE_UNAVAILABLE:
        return QString::fromUtf16(SilentText);
    default:
        return u"프린터 %1이(가) 인쇄를 받지 않습니다.!! (%2)"_s.arg(
            printer, QString::fromUtf8(cupsLastErrorString()).left(MostLetters));
    }
}

Owned<cups_dest_t> FindPrinter(http_t* http, const QString& name)
{
    const QByteArray wanted = name.toUtf8();
    Owned<cups_dest_t> printer(cupsGetNamedDest(http, name.isEmpty() ? nullptr : wanted.constData(), nullptr));
    if (printer)
        return printer;
    // The library calls a printer unknown when nobody answers.
    if (httpError(http) != 0)
        throw PlatformError(QString::fromUtf16(SilentText));
    throw PlatformError(name.isEmpty() ? u"프린터가 없습니다. 프린터를 확인하세요.!!"_s
                                       : u"프린터 %1을(를) 찾을 수 없습니다.!!"_s.arg(name));
}

/// The printer's attributes, or the job's where one is told; null when there is none such.
Owned<ipp_t> Ask(http_t* http, const SentSheet& sheet, ipp_op_t operation)
{
    char address[HTTP_MAX_URI] = {};
    httpAssembleURIf(HTTP_URI_CODING_ALL, address, sizeof address, "ipp", nullptr, "localhost", 0, "/printers/%s",
                     sheet.printer.toUtf8().constData());
    ipp_t* request = ippNewRequest(operation);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_URI, "printer-uri", nullptr, address);
    if (operation == IPP_OP_GET_JOB_ATTRIBUTES)
        ippAddInteger(request, IPP_TAG_OPERATION, IPP_TAG_INTEGER, "job-id", sheet.job);
    ippAddString(request, IPP_TAG_OPERATION, IPP_TAG_NAME, "requesting-user-name", nullptr, cupsUser());
    Owned<ipp_t> answer(cupsDoRequest(http, request, "/"));
    if (cupsLastError() == IPP_STATUS_ERROR_NOT_FOUND)
        return nullptr;
    if (!answer || cupsLastError() > IPP_STATUS_OK_CONFLICTING)
        throw PlatformError(QString::fromUtf16(SilentText));
    return answer;
}

int Number(ipp_t* answer, const char* name)
{
    ipp_attribute_t* attribute = ippFindAttribute(answer, name, IPP_TAG_ENUM);
    return attribute == nullptr ? 0 : ippGetInteger(attribute, 0);
}

QStringList Texts(ipp_t* answer, const char* name)
{
    QStringList texts;
    ipp_attribute_t* attribute = ippFindAttribute(answer, name, IPP_TAG_ZERO);
    for (int at = 0; attribute != nullptr && at < ippGetCount(attribute); ++at)
        texts << QString::fromUtf8(ippGetString(attribute, at, nullptr));
    return texts;
}

struct Reason
{
    const char16_t* keyword;
    const char16_t* text;
};
/// Reasons that keep a sheet back, whatever weight the printer gives them.
constexpr Reason Reasons[] = {
    {u"media-empty", u"프린터 %1에 용지가 없습니다.!!"},
    {u"media-needed", u"프린터 %1에 용지가 없습니다.!!"},
    {u"media-jam", u"프린터 %1에 용지가 걸렸습니다.!!"},
    {u"door-open", u"프린터 %1의 덮개가 열려 있습니다.!!"},
    {u"cover-open", u"프린터 %1의 덮개가 열려 있습니다.!!"},
    {u"interlock-open", u"프린터 %1의 덮개가 열려 있습니다.!!"},
    {u"toner-empty", u"프린터 %1에 토너나 잉크가 없습니다.!!"},
    {u"marker-supply-empty", u"프린터 %1에 토너나 잉크가 없습니다.!!"},
    {u"offline", u"프린터 %1이(가) 꺼져 있거나 연결되지 않았습니다.!!"},
    {u"shutdown", u"프린터 %1이(가) 꺼져 있거나 연결되지 않았습니다.!!"},
    {u"timed-out", u"프린터 %1이(가) 꺼져 있거나 연결되지 않았습니다.!!"},
};

QString TroubleOfPrinter(ipp_t* printer, const QString& name)
{
    const QStringList told = Texts(printer, "printer-state-reasons");
    for (const Reason& reason : Reasons) {
        const auto means = [&reason](const QString& word) {
            const QString keyword = QString::fromUtf16(reason.keyword);
            return word == keyword || word == keyword + u"-warning"_s || word == keyword + u"-error"_s;
        };
        if (std::ranges::any_of(told, means))
            return QString::fromUtf16(reason.text).arg(name);
    }
    if (Number(printer, "printer-state") != IPP_PSTATE_STOPPED)
        return {};
    const QString message = Texts(printer, "printer-state-message").value(0).left(MostLetters);
    return u"프린터 %1이(가) 멈추어 있습니다.!!"_s.arg(name) +
           (message.isEmpty() ? QString() : u" (%1)"_s.arg(message));
}

} // namespace

SentSheet CupsServer::Send(const QString& printer, const QByteArray& pdf)
{
    const Owned<http_t> http = Connect();
    const Owned<cups_dest_t> found = FindPrinter(http.get(), printer);
    const QString name = QString::fromUtf8(found->name);
    // The sheet is A4, whatever the printer usually takes.
    found->num_options = cupsAddOption("media", "A4", found->num_options, &found->options);
    const int job = cupsCreateJob(http.get(), found->name, DocumentName, found->num_options, found->options);
    if (job == 0)
        throw PlatformError(RefusalText(name));
    const bool isWhole =
        cupsStartDocument(http.get(), found->name, job, DocumentName, PdfType, 1) == HTTP_STATUS_CONTINUE &&
        cupsWriteRequestData(http.get(), pdf.constData(), static_cast<size_t>(pdf.size())) == HTTP_STATUS_CONTINUE &&
        cupsFinishDocument(http.get(), found->name) <= IPP_STATUS_OK_CONFLICTING;
    if (!isWhole) {
        const QString text = RefusalText(name);
        // It is sent again: what has come of it must not be printed as well.
        cupsCancelJob2(CUPS_HTTP_DEFAULT, found->name, job, 0);
        throw PlatformError(text);
    }
    return {name, job};
}

SheetState CupsServer::Look(const SentSheet& sheet)
{
    const Owned<http_t> http = Connect();
    const Owned<ipp_t> job = Ask(http.get(), sheet, IPP_OP_GET_JOB_ATTRIBUTES);
    if (!job)
        return {.isThrough = true};
    switch (Number(job.get(), "job-state")) {
    case IPP_JSTATE_COMPLETED:
    case IPP_JSTATE_CANCELED:
        return {.isThrough = true};
    case IPP_JSTATE_ABORTED:
        return {.isThrough = true,
                .isLost = true,
                .trouble = u"프린터 %1이(가) 출력을 끝내지 못하였습니다. 다시 출력하세요.!!"_s.arg(sheet.printer)};
    case IPP_JSTATE_HELD:
        return {.trouble = u"프린터 %1에서 출력이 보류되어 있습니다.!!"_s.arg(sheet.printer)};
    default:
        break;
    }
    const Owned<ipp_t> printer = Ask(http.get(), sheet, IPP_OP_GET_PRINTER_ATTRIBUTES);
    return {.trouble = printer ? TroubleOfPrinter(printer.get(), sheet.printer) : QString()};
}
