#include "admin/commands.h"
#include "contracts/MachineSetup.h"
#include "contracts/PlatformError.h"
#include "frame/components.h"
#include "frame/terminal.h"
#include "text/text_routines.h"

#include <QRandomGenerator>

using namespace Qt::StringLiterals;

namespace {

/// Of the package: keeps pictures on their way, and reads folder and setup.
const QString Group = u"capture-station"_s;
const QString SetupPath = u"/etc/capture-station/Setup.ini"_s;
const QString Account = u"capture_station"_s;
constexpr int PasswordLetters = 24;

/// Letters that no shell, setup file or statement takes for anything else.
QString NewPassword()
{
    constexpr QLatin1StringView Letters("ABCDEFGHJKLMNPQRSTUVWXYZabcdefghijkmnopqrstuvwxyz23456789");
    QString password;
    for (int at = 0; at < PasswordLetters; ++at)
        password += Letters.at(QRandomGenerator::system()->bounded(int(Letters.size())));
    return password;
}

/// The questions of a first setup, and what they lead to.
class FirstSetup
{
public:
    FirstSetup(MachineSetup& machine, TerminalOutput& out) : m_machine(machine), m_out(out) {}

    int Run()
    {
        m_out << u"물음마다 Enter를 누르면 [ ] 안의 값을 씁니다. 여러 번 실행해도 됩니다.\n"_s;
        People();
        Folder();
        Database();
        Setup();
        m_out << u'\n' << (m_faults == 0 ? u"마쳤습니다. "_s : u"하지 못한 일이 %1건 있습니다. "_s.arg(m_faults))
              << u"스테이션을 쓸 사용자로 다시 로그인하여 capture-station-admin check를 실행하십시오.\n"_s;
        return m_faults == 0 ? AllWell : Found;
    }

private:
    QString Ask(const QString& question, const QString& usual)
    {
        m_out << u'\n' << question << u" ["_s << usual << u"]: "_s;
        m_out.Flush();
        const std::optional<QString> answer = Surroundings.readLine ? Surroundings.readLine() : std::nullopt;
        if (!answer)
            throw PlatformError(u"대답이 없어 그만둡니다. 그때까지 한 일은 그대로 있습니다."_s);
        // A value takes one line of the setup file.
        return Trim(*answer).isEmpty() ? usual : answer->simplified();
    }

    bool Confirms(const QString& question) { return Ask(question + u" (예/아니오)"_s, u"예"_s).startsWith(u'예'); }

    template <class Work>
    void Do(const Work& work)
    {
        try {
            work();
        } catch (const PlatformError& error) {
            ++m_faults;
            Tell(error.Text());
        }
    }

    void Tell(const QString& text) { m_out << u"  "_s << text << u'\n'; }
    void Tell(const QStringList& texts)
    {
        for (const QString& text : texts)
            Tell(text);
    }

    void People()
    {
        const QString names = Ask(u"스테이션을 쓸 리눅스 사용자 (쉼표로 구분)"_s, m_machine.People().join(u','));
        const QStringList groups{Group, u"video"_s, u"audio"_s, u"dialout"_s, u"cdrom"_s};
        for (const QString& piece : names.split(u',', Qt::SkipEmptyParts)) {
            const QString name = Trim(piece);
            if (Confirms(u"%1을(를) %2 그룹에 넣을까요?"_s.arg(name, groups.join(u", "_s))))
                Do([&] { Tell(m_machine.AddToGroups(name, groups)); });
            if (Confirms(u"%1이(가) 로그아웃한 뒤에도 PACS로 보내게 할까요?"_s.arg(name)))
                Do([&] { Tell(m_machine.LetLinger(name)); });
        }
    }

    void Folder()
    {
        m_root = Ask(u"캡쳐 폴더"_s, u"/srv/capture"_s);
        while (m_root.size() > 1 && m_root.endsWith(u'/'))
            m_root.chop(1);
        if (m_machine.Exists(m_root) || Confirms(u"%1을(를) 만들까요?"_s.arg(m_root)))
            Do([&] { Tell(m_machine.MakeSharedFolder(m_root, Group)); });
    }

    void Database()
    {
        m_database = Ask(u"진료 프로그램의 데이터베이스 이름"_s, u"clinic"_s);
        if (!m_machine.HasServer()) {
            m_host = Ask(u"이 컴퓨터에는 root로 들어갈 데이터베이스 서버가 없습니다. 서버의 이름이나 주소"_s, u""_s);
            Tell(
                u"서버에서 ca.sql, cap.sql, ca_uid.sql, caso.sql, endo.sql과 grants.sql을 실행하고, 그 계정과 암호를 %1에 적으십시오."_s
                    .arg(SetupPath));
            return;
        }
        if (!m_machine.HasDatabase(m_database)) {
            ++m_faults;
            Tell(
                u"%1이라는 데이터베이스가 없습니다. 진료 프로그램의 데이터베이스를 먼저 만들거나 이름을 확인하십시오."_s
                    .arg(m_database));
            return;
        }
        if (Confirms(u"%1에 스테이션의 테이블(ca, cap, ca_uid, caso, endo)을 만들까요? 있는 것은 그대로 둡니다"_s.arg(
                m_database)))
            Do([&] { Tell(m_machine.MakeTables(m_database)); });
        // The password stands in the setup file and nowhere else.
        if (m_machine.Exists(SetupPath)) {
            Tell(u"%1이(가) 있으므로 계정은 그대로 둡니다."_s.arg(SetupPath));
            return;
        }
        if (!Confirms(u"스테이션의 계정 %1@localhost를 새 암호로 만들까요?"_s.arg(Account)))
            return;
        const QString password = NewPassword();
        Do([&] {
            const QStringList done = m_machine.MakeAccount(m_database, Account, password);
            Tell(done);
            m_faults += int(done.size()) - 1;
            m_password = password;
        });
    }

    void Setup()
    {
        if (m_machine.Exists(SetupPath)) {
            m_out << u'\n';
            Tell(u"%1: 이미 있어 그대로 두었습니다."_s.arg(SetupPath));
            return;
        }
        const QString sections = Ask(u"검사 종류 (쉼표로 구분)"_s, u"위내시경,대장내시경"_s);
        const QString hospital = Ask(u"병원 이름"_s, u""_s);
        const QString number = Ask(u"요양기관번호"_s, u""_s);
        const QString port = Ask(u"발판 스위치의 직렬 포트 번호 (없으면 비워 둡니다)"_s, u""_s);
        if (!Confirms(u"%1을(를) 만들까요?"_s.arg(SetupPath)))
            return;
        QString text = u"; 다른 키는 /usr/share/doc/capture-station/examples/Setup.ini에 있습니다.\n[Database]\n"
                       "Driver=QMARIADB\nName=%1\n"_s.arg(m_database);
        text += m_host.isEmpty() ? u"Socket=/run/mysqld/mysqld.sock\n"_s : u"Host=%1\nPort=3306\n"_s.arg(m_host);
        text +=
            u"User=%1\nPassword=%2\n\n[Client]\nCaptureRoot=%3/"
            u"\nEtcList=%4\nImageFormat=1\nCheckTable=0\nCommPort=%5\n\n"
            "[Saup.1]\nYoyangno=%6\nHospital=%7\n"_s.arg(Account, m_password, m_root, sections, port, number, hospital);
        Do([&] { Tell(m_machine.WriteSecret(SetupPath, text.toUtf8(), Group)); });
    }

    MachineSetup& m_machine;
    TerminalOutput& m_out;
    QString m_root;
    QString m_database;
    QString m_host; ///< Empty for this machine's own server.
    QString m_password;
    int m_faults = 0;
};

} // namespace

int SetUpFirst(TerminalOutput& out)
{
    auto& machine = UseService<MachineSetup>();
    if (!machine.MayChange())
        throw PlatformError(u"root로 실행하십시오.!!"_s);
    return FirstSetup(machine, out).Run();
}
