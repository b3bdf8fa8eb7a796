/// A server for pictures that does what a test wants, on bare sockets and without a DICOM library: what it finds wrong
/// isn't hidden by a fault that both sides share. It takes any object as it is coded, but for pictures without
/// compression, C-FIND and C-ECHO.
///
///     pacs_peer PORT RECORD [OPTION VALUE]...
///
/// Port 0 takes a free one; the port is told on the standard output, once it listens. RECORD is a file that gets a line
/// for each object: SOP instance UID, instance number, patient's number and status in hex, with tabs between. Objects
/// that stand there with a status of success are known from the start.
///
///     --statuses A700,0000   answers of the first C-STOREs; 0000 behind them
///     --comment TEXT         stands with each of them that isn't 0000
///     --known 0111           answer for an instance that is here already
///     --cut N                closes in the middle of the Nth object, counted from 1
///     --unanswered N         takes the Nth object, and closes without an answer
///     --silent WHERE         says nothing more: connect, association, or the number of an object
///     --babble WHERE         association: any bytes, without end, in the place of an answer; giant: the length of 4 GB
///                            before them; store, giant-store: the same at the first object; fragments: an answer there
///                            with elements without end; matches: objects found, without end
///     --reject HOW           permanent, transient, called, calling
///     --refuse KIND          store, find: isn't agreed upon; a class: objects of it; jpeg: pictures without
///     compression
///                            are taken instead
///     --find-status A700     refuses each C-FIND
///
/// It takes performed procedure steps and storage commitment as well, and writes what it was told into RECORD.told: a
/// line with "create" or "set", identifier, status of the step, accession number and how many objects it names; or
/// "action", transaction and how many objects; or "report" and the status of the answer to its report.
///
///     --step-statuses 0110   answers of the first N-CREATEs and N-SETs; 0000 behind them
///     --commit HOW           same: reports on the connection of the question; other: on one of its own, to the port
///                            --commit-port; failing this: never. --commit-failed N: of the first N questions every
///                            object fails
#include <algorithm>
#include <arpa/inet.h>
#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <map>
#include <mutex>
#include <sstream>
#include <string>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace {

using Bytes = std::string;

const Bytes Storage = "1.2.840.10008.5.1.4.1.1."; ///< Begins the classes of objects,
const std::array<Bytes, 4> Pictures{Storage + "77.1.1", Storage + "6.1", Storage + "77.1.2", Storage + "77.1.4"};
const Bytes FindClass = "1.2.840.10008.5.1.4.1.2.2.1";
const Bytes CommitmentClass = "1.2.840.10008.1.20.1";
const Bytes Jpeg = "1.2.840.10008.1.2.4.50";
const Bytes Movie = "1.2.840.10008.1.2.4.102";
const Bytes Explicit = "1.2.840.10008.1.2.1";
const Bytes Implicit = "1.2.840.10008.1.2";

struct Object
{
    std::map<std::uint32_t, Bytes> elements;
    int status = 0;
};

std::map<Bytes, Bytes> options;
std::ofstream record;
std::ofstream told;
std::mutex guard;
std::vector<Object> objects; ///< Those that are here.
std::atomic<int> stores = 0;
std::atomic<int> steps = 0;
std::atomic<int> questions = 0;

Bytes Option(const Bytes& name)
{
    const auto found = options.find("--" + name);
    return found == options.end() ? Bytes() : found->second;
}

Bytes Big(std::uint32_t value, int bytes)
{
    Bytes text;
    for (int at = bytes - 1; at >= 0; --at)
        text += static_cast<char>(value >> 8 * at & 0xFF);
    return text;
}

Bytes Little(std::uint32_t value, int bytes)
{
    Bytes text = Big(value, bytes);
    std::ranges::reverse(text);
    return text;
}

std::uint32_t BigAt(const Bytes& bytes, std::size_t at, std::size_t count)
{
    std::uint32_t value = 0;
    for (std::size_t each = at; each < at + count; ++each)
        value = value << 8 | (each < bytes.size() ? static_cast<unsigned char>(bytes[each]) : 0);
    return value;
}

std::uint32_t LittleAt(const Bytes& bytes, std::size_t at, std::size_t count)
{
    Bytes part = at < bytes.size() ? bytes.substr(at, count) : Bytes();
    part.resize(count);
    std::ranges::reverse(part);
    return BigAt(part, 0, count);
}

std::uint32_t TagAt(const Bytes& bytes, std::size_t at)
{
    return LittleAt(bytes, at, 2) << 16 | LittleAt(bytes, at + 2, 2);
}

Bytes Trimmed(Bytes text)
{
    while (!text.empty() && (text.back() == ' ' || text.back() == '\0'))
        text.pop_back();
    return text;
}

/// The elements before the pixel data.
std::map<std::uint32_t, Bytes> Parsed(const Bytes& set, bool isExplicit)
{
    std::map<std::uint32_t, Bytes> elements;
    for (std::size_t at = 0; at + 8 <= set.size();) {
        const std::uint32_t tag = TagAt(set, at);
        if (tag >= 0x7FE00000)
            break;
        static const std::array<Bytes, 6> Long{"OB", "OW", "OF", "SQ", "UN", "UT"};
        const bool isLong = isExplicit && std::ranges::find(Long, set.substr(at + 4, 2)) != Long.end();
        const std::size_t lengthAt = isLong ? at + 8 : isExplicit ? at + 6 : at + 4;
        const std::size_t lengthBytes = isExplicit && !isLong ? 2 : 4;
        const std::size_t length = LittleAt(set, lengthAt, lengthBytes);
        at = lengthAt + lengthBytes;
        if (at > set.size() || length > set.size() - at)
            break;
        // A command has numbers.
        elements[tag] = tag >> 16 == 0 ? set.substr(at, length) : Trimmed(set.substr(at, length));
        at += length;
    }
    return elements;
}

/// In implicit little endian.
Bytes Element(std::uint32_t tag, Bytes value)
{
    constexpr std::array<std::uint32_t, 6> Identifiers{0x0002, 0x1000, 0x00080018, 0x00081195, 0x0020000D, 0x0020000E};
    if (value.size() % 2 != 0)
        value += std::ranges::find(Identifiers, tag) != Identifiers.end() ? '\0' : ' ';
    return Little(tag >> 16, 2) + Little(tag & 0xFFFF, 2) + Little(static_cast<std::uint32_t>(value.size()), 4) + value;
}

/// The part of a list of statuses that has that number, counted from 0.
int StatusAt(const Bytes& list, int at)
{
    std::istringstream statuses(list);
    Bytes status;
    for (int each = 0; each <= at; ++each) {
        if (!std::getline(statuses, status, ','))
            return 0;
    }
    return static_cast<int>(std::strtol(status.c_str(), nullptr, 16));
}

/// How often an element stands in a set, at any depth.
int CountOf(const Bytes& set, std::uint32_t tag)
{
    const Bytes wanted = Little(tag >> 16, 2) + Little(tag & 0xFFFF, 2);
    int count = 0;
    for (std::size_t at = set.find(wanted); at != Bytes::npos; at = set.find(wanted, at + 4))
        ++count;
    return count;
}

/// The value of the first of them.
Bytes Within(const Bytes& set, std::uint32_t tag)
{
    const std::size_t at = set.find(Little(tag >> 16, 2) + Little(tag & 0xFFFF, 2));
    return at == Bytes::npos ? Bytes() : Trimmed(set.substr(at + 8, LittleAt(set, at + 4, 4)));
}

void Tell(const Bytes& line)
{
    const std::lock_guard lock(guard);
    told << line << std::endl;
}

/// The report on a question whose data set that is: command and data.
std::pair<Bytes, Bytes> ReportOn(const Bytes& question, bool isFailed)
{
    Bytes command = Element(0x0002, CommitmentClass) + Element(0x0100, Little(0x0100, 2)) +
                    Element(0x0110, Little(77, 2)) + Element(0x0800, Little(0, 2)) +
                    Element(0x1000, CommitmentClass + ".1") + Element(0x1002, Little(isFailed ? 2 : 1, 2));
    command = Element(0x0000, Little(static_cast<std::uint32_t>(command.size()), 4)) + command;
    const auto asked = Parsed(question, false);
    Bytes items = asked.count(0x00081199) == 0 ? Bytes() : asked.at(0x00081199);
    // The padding of its last identifier.
    if (items.size() % 2 != 0)
        items += '\0';
    if (isFailed) {
        Bytes failing;
        for (std::size_t at = 0; at + 8 <= items.size(); at += 8 + LittleAt(items, at + 4, 4)) {
            const Bytes item = items.substr(at + 8, LittleAt(items, at + 4, 4)) + Element(0x00081197, Little(0x112, 2));
            failing += items.substr(at, 4) + Little(static_cast<std::uint32_t>(item.size()), 4) + item;
        }
        items = failing;
    }
    return {command, Element(0x00081195, asked.at(0x00081195)) + Element(isFailed ? 0x00081198 : 0x00081199, items)};
}

class Connection
{
public:
    explicit Connection(int socket) : m_socket(socket) {}
    ~Connection() { close(m_socket); }
    Connection(const Connection&) = delete;
    Connection& operator=(const Connection&) = delete;

    /// Brings a report to whoever listens, and waits for his answer.
    void Report(const Bytes& question, bool isFailed)
    {
        const auto item = [](char type, const Bytes& body) {
            return Bytes{type, '\0'} + Big(static_cast<std::uint32_t>(body.size()), 2) + body;
        };
        const Bytes role =
            Big(static_cast<std::uint32_t>(CommitmentClass.size()), 2) + CommitmentClass + Bytes{'\0', 1};
        const Bytes proposed =
            item(0x20, Bytes{1, '\0', '\0', '\0'} + item(0x30, CommitmentClass) + item(0x40, Implicit));
        WriteUnit(1, Bytes{'\0', 1, '\0', '\0'} + Bytes("TEST            PEER            ") + Bytes(32, '\0') +
                         item(0x10, "1.2.840.10008.3.1.1.1") + proposed +
                         item(0x50, item(0x51, Big(16384, 4)) + item(0x52, "1.2.3.4.55") + item(0x54, role)));
        const auto [command, data] = ReportOn(question, isFailed);
        Bytes body;
        if (ReadUnit(body) != 2 || !WritePart(1, 3, command) || !WritePart(1, 2, data) || ReadUnit(body) != 4)
            return Tell("report\tnone");
        TellReport(Parsed(body.substr(6), false));
        WriteUnit(5, Bytes(4, '\0'));
        ReadUnit(body);
    }

    void Serve()
    {
        if (Option("silent") == "connect")
            Silence();
        Bytes body;
        for (int type = ReadUnit(body); type > 0 && Take(type, body); type = ReadUnit(body)) {
        }
    }

private:
    [[noreturn]] static void Silence()
    {
        for (;;)
            pause();
    }

    bool Read(Bytes& target, std::size_t bytes)
    {
        target.resize(bytes);
        for (std::size_t at = 0; at < bytes;) {
            const ssize_t got = recv(m_socket, target.data() + at, bytes - at, 0);
            if (got <= 0)
                return false;
            at += static_cast<std::size_t>(got);
        }
        return true;
    }
    bool Write(const Bytes& bytes)
    {
        for (std::size_t at = 0; at < bytes.size();) {
            const ssize_t sent = send(m_socket, bytes.data() + at, bytes.size() - at, MSG_NOSIGNAL);
            if (sent <= 0)
                return false;
            at += static_cast<std::size_t>(sent);
        }
        return true;
    }
    /// Gives the type of the protocol's unit; 0 at the end.
    int ReadUnit(Bytes& body)
    {
        Bytes head;
        return Read(head, 6) && Read(body, BigAt(head, 2, 4)) ? head[0] : 0;
    }
    bool WriteUnit(char type, const Bytes& body)
    {
        return Write(Bytes{type, '\0'} + Big(static_cast<std::uint32_t>(body.size()), 4) + body);
    }
    bool WritePart(unsigned char context, char control, const Bytes& part)
    {
        return WriteUnit(4, Big(static_cast<std::uint32_t>(part.size() + 2), 4) + static_cast<char>(context) + control +
                                part);
    }
    /// Any bytes until the other side has had enough.
    bool Babble(const Bytes& begin)
    {
        const Bytes noise(1 << 16, '\xAA');
        for (bool isHeard = Write(begin); isHeard;)
            isHeard = Write(noise);
        return false;
    }

    bool Take(int type, const Bytes& body)
    {
        switch (type) {
        case 1:
            return Associate(body);
        case 4:
            return TakeParts(body);
        case 5:
            WriteUnit(6, Bytes(4, '\0'));
            return true;
        default:
            return false;
        }
    }

    bool Reject(const Bytes& how)
    {
        const char reason = how == "called" ? 7 : how == "calling" ? 3 : 1;
        return how == "transient" ? WriteUnit(3, Bytes{'\0', 2, 3, 1}) : WriteUnit(3, Bytes{'\0', 1, 1, reason});
    }

    bool Associate(const Bytes& body)
    {
        if (Option("silent") == "association")
            Silence();
        if (Option("babble") == "association")
            return Babble({});
        if (Option("babble") == "giant")
            return Babble(Bytes{2, '\0'} + Big(0xFFFFFFF0, 4));
        if (const Bytes how = Option("reject"); !how.empty())
            return Reject(how);
        Bytes answer = body.substr(0, 68);
        for (std::size_t at = 68; at + 4 <= body.size(); at += 4 + BigAt(body, at + 2, 2)) {
            const Bytes item = body.substr(at, 4 + BigAt(body, at + 2, 2));
            if (item[0] == 0x10)
                answer += item;
            if (item[0] == 0x20)
                answer += Agreed(item);
        }
        const Bytes most = Bytes{0x51, '\0'} + Big(4, 2) + Big(16384, 4);
        const Bytes maker = Bytes{0x52, '\0'} + Big(10, 2) + "1.2.3.4.55";
        return WriteUnit(2, answer + Bytes{0x50, '\0'} +
                                Big(static_cast<std::uint32_t>(most.size() + maker.size()), 2) + most + maker);
    }

    /// What the association agrees on for one kind.
    Bytes Agreed(const Bytes& item)
    {
        Bytes kind;
        std::vector<Bytes> syntaxes;
        for (std::size_t at = 8; at + 4 <= item.size(); at += 4 + BigAt(item, at + 2, 2)) {
            const Bytes value = Trimmed(item.substr(at + 4, BigAt(item, at + 2, 2)));
            if (item[at] == 0x30)
                kind = value;
            else
                syntaxes.push_back(value);
        }
        const bool isPicture = std::ranges::find(Pictures, kind) != Pictures.end();
        const Bytes refused = Option("refuse");
        const Bytes coded = refused == "jpeg" ? Explicit : Jpeg;
        const Bytes wanted = isPicture                      ? coded
                             : kind == Storage + "77.1.1.1" ? Movie
                             : kind.starts_with(Storage)    ? Explicit
                                                            : Implicit;
        const bool isRefused = std::ranges::find(syntaxes, wanted) == syntaxes.end() || refused == kind ||
                               (refused == "store" && kind.starts_with(Storage)) ||
                               (refused == "find" && kind == FindClass);
        m_kinds[static_cast<unsigned char>(item[4])] = kind;
        const Bytes chosen = Bytes{0x40, '\0'} + Big(static_cast<std::uint32_t>(wanted.size()), 2) + wanted;
        return Bytes{0x21, '\0'} + Big(static_cast<std::uint32_t>(chosen.size() + 4), 2) + item[4] + '\0' +
               (isRefused ? '\3' : '\0') + '\0' + chosen;
    }

    bool TakeParts(const Bytes& body)
    {
        for (std::size_t at = 0; at + 6 <= body.size(); at += 4 + BigAt(body, at, 4)) {
            const auto context = static_cast<unsigned char>(body[at + 4]);
            const bool isCommand = (body[at + 5] & 1) != 0;
            const bool isLast = (body[at + 5] & 2) != 0;
            Bytes& whole = isCommand ? m_command : m_data;
            whole += body.substr(at + 6, BigAt(body, at, 4) - 2);
            const auto command = Parsed(m_command, false);
            if (!isCommand && Word(command, 0x0100) == 1 && !m_isBegun) {
                m_isBegun = true;
                ++stores;
                if (Option("cut") == std::to_string(stores))
                    return false;
            }
            if (!isLast || (isCommand && Word(command, 0x0800) != 0x0101))
                continue;
            const bool isGoingOn = Answer(context, command);
            m_command.clear();
            m_data.clear();
            m_isBegun = false;
            if (!isGoingOn)
                return false;
        }
        return true;
    }

    static std::uint32_t Word(const std::map<std::uint32_t, Bytes>& command, std::uint32_t tag)
    {
        const auto found = command.find(tag);
        return found == command.end() ? 0 : LittleAt(found->second, 0, 2);
    }

    bool Respond(unsigned char context, const std::map<std::uint32_t, Bytes>& command, std::uint32_t status,
                 const Bytes& data = {})
    {
        Bytes set = Element(0x0002, m_kinds[context]) + Element(0x0100, Little(Word(command, 0x0100) | 0x8000, 2)) +
                    Element(0x0120, Little(Word(command, 0x0110), 2)) +
                    Element(0x0800, Little(data.empty() ? 0x0101 : 0, 2)) + Element(0x0900, Little(status, 2));
        if (status != 0 && data.empty() && !Option("comment").empty())
            set += Element(0x0902, Option("comment"));
        set = Element(0x0000, Little(static_cast<std::uint32_t>(set.size()), 4)) + set;
        return WritePart(context, 3, set) && (data.empty() || WritePart(context, 2, data));
    }

    bool Answer(unsigned char context, const std::map<std::uint32_t, Bytes>& command)
    {
        switch (Word(command, 0x0100)) {
        case 0x0001:
            return Store(context, command);
        case 0x0020:
            return Find(context, command);
        case 0x0030:
            return Respond(context, command, 0);
        case 0x0140:
        case 0x0120:
            return TakeStep(context, command);
        case 0x0130:
            return TakeQuestion(context, command);
        case 0x8100:
            TellReport(command);
            return true;
        default:
            return false;
        }
    }

    static void TellReport(const std::map<std::uint32_t, Bytes>& answer)
    {
        Tell("report\t" + std::to_string(Word(answer, 0x0900)));
    }

    bool TakeStep(unsigned char context, const std::map<std::uint32_t, Bytes>& command)
    {
        const bool isNew = Word(command, 0x0100) == 0x0140;
        Tell((isNew ? "create\t" : "set\t") + Trimmed(command.at(isNew ? 0x1000 : 0x1001)) + '\t' +
             Within(m_data, 0x00400252) + '\t' + Within(m_data, 0x00080050) + '\t' +
             std::to_string(CountOf(m_data, 0x00081155)));
        return Respond(context, command, static_cast<std::uint32_t>(StatusAt(Option("step-statuses"), steps++)));
    }

    bool TakeQuestion(unsigned char context, const std::map<std::uint32_t, Bytes>& command)
    {
        Tell("action\t" + Within(m_data, 0x00081195) + '\t' + std::to_string(CountOf(m_data, 0x00081155)));
        const bool isFailed = questions++ < std::atoi(Option("commit-failed").c_str());
        const Bytes question = m_data;
        if (!Respond(context, command, 0))
            return false;
        if (Option("commit") == "same") {
            const auto [report, data] = ReportOn(question, isFailed);
            return WritePart(context, 3, report) && WritePart(context, 2, data);
        }
        if (Option("commit") == "other")
            std::thread([question, isFailed] {
                sockaddr_in place = {};
                place.sin_family = AF_INET;
                place.sin_port = htons(static_cast<std::uint16_t>(std::atoi(Option("commit-port").c_str())));
                place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
                const int own = socket(AF_INET, SOCK_STREAM, 0);
                Connection connection(own);
                if (connect(own, reinterpret_cast<sockaddr*>(&place), sizeof place) == 0)
                    connection.Report(question, isFailed);
                else
                    Tell("report\tnobody");
            }).detach();
        return true;
    }

    bool Store(unsigned char context, const std::map<std::uint32_t, Bytes>& command)
    {
        const int number = stores;
        const Bytes babble = Option("babble");
        if (Option("silent") == std::to_string(number))
            Silence();
        if (babble == "store")
            return Babble({});
        if (babble == "giant-store")
            return Babble(Bytes{4, '\0'} + Big(0xFFFFFFF0, 4) + Big(0xFFFFFFE0, 4) + static_cast<char>(context) + '\3');
        for (std::uint32_t tag = 0x00090001; babble == "fragments"; ++tag) {
            if (!WritePart(context, 1, Element(tag, Bytes(16000, 'x'))))
                return false;
        }
        const int status = Keep(Parsed(m_data, true), number);
        return Option("unanswered") != std::to_string(number) &&
               Respond(context, command, static_cast<std::uint32_t>(status));
    }

    /// Gives the status.
    static int Keep(const std::map<std::uint32_t, Bytes>& elements, int number)
    {
        const std::lock_guard lock(guard);
        Object object{elements, 0};
        const Bytes uid = object.elements[0x00080018];
        std::istringstream statuses(Option("statuses"));
        Bytes status = "0000";
        for (int at = 0; at < number && !status.empty(); ++at) {
            if (!std::getline(statuses, status, ','))
                status = "0000";
        }
        const bool isKnown =
            std::ranges::any_of(objects, [&uid](Object& each) { return each.elements[0x00080018] == uid; });
        if (isKnown && !Option("known").empty())
            status = Option("known");
        object.status = static_cast<int>(std::strtol(status.c_str(), nullptr, 16));
        record << uid << '\t' << object.elements[0x00200013] << '\t' << object.elements[0x00100020] << '\t' << status
               << std::endl;
        if (!isKnown && (object.status == 0 || (object.status & 0xF000) == 0xB000))
            objects.push_back(object);
        return object.status;
    }

    bool Find(unsigned char context, const std::map<std::uint32_t, Bytes>& command)
    {
        constexpr std::uint32_t Pending = 0xFF00;
        if (const Bytes refused = Option("find-status"); !refused.empty())
            return Respond(context, command, static_cast<std::uint32_t>(std::strtol(refused.c_str(), nullptr, 16)));
        auto keys = Parsed(m_data, false);
        const bool isStudy = keys[0x00080052] == "STUDY";
        std::map<Bytes, Bytes> answers;
        const std::lock_guard lock(guard);
        for (Object& each : objects) {
            auto& have = each.elements;
            if (have[0x0020000D] != keys[0x0020000D] || (!isStudy && have[0x0020000E] != keys[0x0020000E]))
                continue;
            Bytes answer;
            for (const auto& [tag, value] : keys)
                answer += Element(tag, tag == 0x00080052 ? value : have[tag]);
            answers[isStudy ? Bytes() : have[0x00080018]] = Element(0x00080005, have[0x00080005]) + answer;
        }
        do {
            for (const auto& [uid, answer] : answers) {
                if (!Respond(context, command, Pending, answer))
                    return false;
            }
        } while (!answers.empty() && Option("babble") == "matches");
        return Respond(context, command, 0);
    }

    int m_socket;
    std::map<unsigned char, Bytes> m_kinds;
    Bytes m_command;
    Bytes m_data;
    bool m_isBegun = false; ///< An object has begun to come.
};

void ReadRecord(const char* path)
{
    std::ifstream before(path);
    for (Bytes line; std::getline(before, line);) {
        std::array<Bytes, 4> fields;
        std::istringstream parts(line);
        for (Bytes& field : fields)
            std::getline(parts, field, '\t');
        if (fields[3] == "0000")
            objects.push_back({{{0x00080018, fields[0]}, {0x00200013, fields[1]}, {0x00100020, fields[2]}}, 0});
    }
}

} // namespace

int main(int argc, char** argv)
{
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (argc < 3)
        return 2;
    for (int at = 3; at + 1 < argc; at += 2)
        options[argv[at]] = argv[at + 1];
    ReadRecord(argv[2]);
    record.open(argv[2], std::ios::app);
    told.open(Bytes(argv[2]) + ".told", std::ios::app);
    const int door = socket(AF_INET, SOCK_STREAM, 0);
    const int yes = 1;
    setsockopt(door, SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in place = {};
    place.sin_family = AF_INET;
    place.sin_port = htons(static_cast<std::uint16_t>(std::atoi(argv[1])));
    place.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof place;
    auto* address = reinterpret_cast<sockaddr*>(&place);
    if (bind(door, address, length) != 0 || listen(door, 16) != 0 || getsockname(door, address, &length) != 0)
        return 1;
    std::printf("%d\n", ntohs(place.sin_port));
    std::fflush(stdout);
    for (;;) {
        const int socket = accept(door, nullptr, nullptr);
        if (socket >= 0)
            std::thread([socket] { Connection(socket).Serve(); }).detach();
    }
}
