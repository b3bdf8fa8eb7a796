#include "platform/machine/RootSetup.h"

#include "contracts/PlatformError.h"
#include "contracts/setup_components.h"
#include "frame/components.h"
#include "platform/process/child_process.h"
#include "platform/sql/database.h"
#include "platform/sql/TableKeeper.h"

#include <QDir>
#include <QFile>
#include <QRegularExpression>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// It may wait for the lock of the list of users, and says nothing meanwhile.
constexpr ChildLimits UserModLimits{.silenceMs = 60'000};
/// People's numbers begin here (login.defs).
constexpr uid_t FirstPerson = 1000;
constexpr uid_t LastPerson = 59'999;

void AddToGroup(const QString& user, const QString& groups)
{
    const ChildResult result = RunChild(u"usermod"_s, {u"-aG"_s, groups, user}, QString(), UserModLimits);
    if (!result.fault.isEmpty())
        throw PlatformError(result.fault);
    if (!result.succeeded)
        throw PlatformError(u"%1을(를) %2 그룹에 넣지 못했습니다.!! (%3)"_s.arg(
            user, groups, QString::fromUtf8(result.errors).trimmed()));
}

/// Through the socket of this machine's server. Throws PlatformError.
ConnectionPointer OpenAsRoot(const QString& database)
{
    DatabaseSettings settings;
    settings.driver = u"QMARIADB"_s;
    settings.name = database;
    settings.user = u"root"_s;
    return OpenConnection(settings);
}

bool CanOpen(const QString& database)
{
    try {
        OpenAsRoot(database);
        return true;
    } catch (const PlatformError&) {
        return false;
    }
}

/// Between apostrophes.
QString Text(const QString& value)
{
    return u'\'' + QString(value).replace(u'\'', u"''"_s) + u'\'';
}

QString Name(const QString& value)
{
    return u'`' + QString(value).replace(u'`', u"``"_s) + u'`';
}

gid_t NumberOfGroup(const QString& group)
{
    const ::group* found = getgrnam(group.toUtf8().constData());
    if (found == nullptr)
        throw PlatformError(u"%1 그룹이 없습니다.!!"_s.arg(group));
    return found->gr_gid;
}

bool IsMember(const QString& user, const ::group& group)
{
    const QByteArray name = user.toUtf8();
    for (char** member = group.gr_mem; *member != nullptr; ++member) {
        if (name == *member)
            return true;
    }
    const passwd* person = getpwnam(name.constData());
    return person != nullptr && person->pw_gid == group.gr_gid;
}

} // namespace

bool RootSetup::MayChange() const
{
    return geteuid() == 0;
}

QStringList RootSetup::People() const
{
    QStringList people;
    setpwent();
    while (const passwd* person = getpwent()) {
        const QByteArray shell = person->pw_shell;
        if (person->pw_uid >= FirstPerson && person->pw_uid <= LastPerson && !shell.endsWith("nologin") &&
            !shell.endsWith("false"))
            people << QString::fromUtf8(person->pw_name);
    }
    endpwent();
    return people;
}

QString RootSetup::AddToGroups(const QString& user, const QStringList& groups)
{
    if (getpwnam(user.toUtf8().constData()) == nullptr)
        throw PlatformError(u"%1이라는 사용자가 없습니다.!!"_s.arg(user));
    QStringList missing;
    for (const QString& group : groups) {
        const ::group* found = getgrnam(group.toUtf8().constData());
        if (found != nullptr && !IsMember(user, *found))
            missing << group;
    }
    if (missing.isEmpty())
        return u"%1: 이미 그룹에 있습니다."_s.arg(user);
    AddToGroup(user, missing.join(u','));
    return u"%1을(를) %2 그룹에 넣었습니다. 다시 로그인하면 쓰입니다."_s.arg(user, missing.join(u", "_s));
}

QString RootSetup::LetLinger(const QString& user)
{
    const ChildResult linger = RunChild(u"loginctl"_s, {u"enable-linger"_s, user}, {}, {});
    if (!linger.succeeded)
        return u"%1: 로그아웃하면 보내기를 멈춥니다. (%2)"_s.arg(
            user,
            linger.fault.isEmpty() ? u"loginctl: "_s + QString::fromUtf8(linger.errors).simplified() : linger.fault);
    // After a restart of the machine too, for those who have something left; the unit looks.
    const ChildResult unit =
        RunChild(u"systemctl"_s, {u"--global"_s, u"enable"_s, u"capture-station-sender.service"_s}, {}, {});
    return unit.succeeded ? u"%1: 로그아웃하거나 컴퓨터를 다시 켠 뒤에도 PACS로 보냅니다."_s.arg(user)
                          : u"%1: 로그아웃한 뒤에도 PACS로 보냅니다."_s.arg(user);
}

QString RootSetup::MakeSharedFolder(const QString& path, const QString& group)
{
    const gid_t number = NumberOfGroup(group);
    const QByteArray native = path.toUtf8();
    struct stat there = {};
    if (stat(native.constData(), &there) == 0) {
        if (!S_ISDIR(there.st_mode))
            throw PlatformError(u"%1은(는) 폴더가 아닙니다.!!"_s.arg(path));
        QStringList wrong;
        if (there.st_gid != number)
            wrong << u"그룹이 %1이(가) 아닙니다 (chgrp %1 %2)"_s.arg(group, path);
        if ((there.st_mode & 02070) != 02070)
            wrong << u"그룹이 함께 쓸 수 없습니다 (chmod 2770 %1)"_s.arg(path);
        if ((there.st_mode & 07) != 0)
            wrong << u"다른 사용자도 볼 수 있습니다 (chmod o= %1)"_s.arg(path);
        return wrong.isEmpty() ? u"%1: 이미 있습니다."_s.arg(path)
                               : u"%1: 이미 있어 그대로 두었습니다. %2"_s.arg(path, wrong.join(u"; "_s));
    }
    if (!QDir().mkpath(path) || chown(native.constData(), 0, number) != 0 || chmod(native.constData(), 02770) != 0)
        throw PlatformError(u"%1을(를) 만들지 못했습니다.!! (%2)"_s.arg(path, qt_error_string()));
    return u"%1을(를) 만들었습니다 (root:%2, 2770)."_s.arg(path, group);
}

bool RootSetup::HasServer() const
{
    return CanOpen(u"information_schema"_s);
}

bool RootSetup::HasDatabase(const QString& name) const
{
    return CanOpen(name);
}

QStringList RootSetup::MakeTables(const QString& database)
{
    ConnectionPointer connection = OpenAsRoot(database);
    const auto keeper = CreateObject<clsTableKeeper>(u"prjTableKeeper.clsTableKeeper"_s);
    QStringList done;
    for (const QString& table :
         {u"ca"_s, u"cap"_s, u"ca_uid"_s, u"ca_study"_s, u"ca_log"_s, u"ca_sum"_s, u"caso"_s, u"endo"_s}) {
        const auto there = connection->Execute(
            u"SELECT 1 FROM information_schema.tables WHERE table_schema = DATABASE() AND table_name = "_s +
            Text(table));
        if (!there->Eof()) {
            done << u"테이블 %1: 이미 있습니다."_s.arg(table);
            continue;
        }
        try {
            keeper->tablecreate(connection, table, {});
        } catch (const PlatformError& error) {
            throw PlatformError(u"테이블 %1을(를) 만들지 못했습니다.!! (%2)"_s.arg(table, error.Text()));
        }
        done << u"테이블 %1을(를) 만들었습니다."_s.arg(table);
    }
    return done;
}

QStringList RootSetup::MakeAccount(const QString& database, const QString& user, const QString& password)
{
    const ConnectionPointer connection = OpenAsRoot(database);
    const QString account = Text(user) + u"@'localhost'"_s;
    try {
        connection->Execute(u"CREATE USER IF NOT EXISTS "_s + account);
        connection->Execute(u"ALTER USER %1 IDENTIFIED BY %2"_s.arg(account, Text(password)));
    } catch (const PlatformError& error) {
        throw PlatformError(u"계정을 만들지 못했습니다.!! (%1)"_s.arg(error.Text()));
    }
    QStringList done{u"계정 %1@localhost의 암호를 새로 정했습니다."_s.arg(user)};
    QFile grants(u":/sql/mariadb/grants.sql"_s);
    grants.open(QIODevice::ReadOnly);
    static const QRegularExpression grant(u"^GRANT (.+) ON `clinic`\\.(\\S+) TO "_s);
    for (const QString& statement : StatementsOfScript(QString::fromUtf8(grants.readAll()))) {
        const QRegularExpressionMatch right = grant.match(statement);
        if (!right.hasMatch())
            continue;
        try {
            connection->Execute(
                u"GRANT %1 ON %2.%3 TO %4"_s.arg(right.captured(1), Name(database), right.captured(2), account));
        } catch (const PlatformError& error) {
            done << u"권한 %1 ON %2: 주지 못했습니다 (%3)"_s.arg(right.captured(1), right.captured(2), error.Text());
        }
    }
    return done;
}

bool RootSetup::Exists(const QString& path) const
{
    return QFile::exists(path);
}

QString RootSetup::WriteSecret(const QString& path, const QByteArray& content, const QString& group)
{
    const gid_t number = NumberOfGroup(group);
    const QString folder = path.section(u'/', 0, -2);
    QDir().mkpath(folder);
    const QByteArray native = path.toUtf8();
    const int file = open(native.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, 0600);
    if (file < 0)
        throw PlatformError(u"%1을(를) 만들지 못했습니다.!! (%2)"_s.arg(path, qt_error_string()));
    const bool isWhole = write(file, content.constData(), size_t(content.size())) == content.size() &&
                         fchown(file, 0, number) == 0 && fchmod(file, 0640) == 0 && fsync(file) == 0;
    const QString reason = qt_error_string();
    close(file);
    if (!isWhole) {
        unlink(native.constData());
        throw PlatformError(u"%1을(를) 쓰지 못했습니다.!! (%2)"_s.arg(path, reason));
    }
    return u"%1을(를) 만들었습니다 (root:%2, 0640)."_s.arg(path, group);
}
