#include "platform/machine/machine_checks.h"

#include "frame/own_program.h"
#include "platform/imaging/confined_reader.h"
#include "platform/imaging/kernel_confinement.h"

#include <QDir>
#include <QFileInfo>
#include <QLibraryInfo>
#include <QStandardPaths>
#include <QVersionNumber>

#include <fontconfig/fontconfig.h>
#include <pwd.h>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

struct Part
{
    QString name;
    QString package; ///< Debian's.
};

bool HasFamily(FcConfig* config, const QString& family)
{
    FcPattern* pattern = FcPatternBuild(nullptr, FC_FAMILY, FcTypeString, qUtf8Printable(family), nullptr);
    FcObjectSet* wanted = FcObjectSetBuild(FC_FAMILY, nullptr);
    FcFontSet* found = FcFontList(config, pattern, wanted);
    const bool isThere = found != nullptr && found->nfont > 0;
    FcFontSetDestroy(found);
    FcObjectSetDestroy(wanted);
    FcPatternDestroy(pattern);
    return isThere;
}

/// Lines for those that are missing, or one for all.
template <class Finder>
void CheckAll(const QString& what, const QList<Part>& parts, const Finder& isThere, CheckLines& lines)
{
    bool isWhole = true;
    for (const Part& part : parts) {
        if (isThere(part.name))
            continue;
        isWhole = false;
        lines.append({CheckLine::Wrong, what, u"%1 없음"_s.arg(part.name), u"apt install %1"_s.arg(part.package)});
    }
    if (isWhole)
        lines.append({CheckLine::Right, what, u"%1개"_s.arg(parts.size())});
}

void CheckFonts(CheckLines& lines)
{
    FcConfig* config = FcInitLoadConfigAndFonts();
    CheckAll(
        u"글꼴"_s,
        {{u"UnDotum"_s, u"fonts-unfonts-core"_s},
         {u"UnBatang"_s, u"fonts-unfonts-core"_s},
         {u"NanumGothicCoding"_s, u"fonts-nanum"_s},
         {u"NanumBarunGothic"_s, u"fonts-nanum"_s},
         {u"NanumMyeongjo"_s, u"fonts-nanum"_s}},
        [config](const QString& family) { return HasFamily(config, family); }, lines);
    FcConfigDestroy(config);
}

void CheckPlugins(CheckLines& lines)
{
    const QString folder = QLibraryInfo::path(QLibraryInfo::PluginsPath);
    // From Debian 13 on the plugins have a package of their own.
    const bool areApart = QLibraryInfo::version() >= QVersionNumber(6, 8);
    const QString svgPackage = areApart ? u"qt6-svg-plugins"_s : u"libqt6svg6"_s;
    CheckAll(
        u"플러그인"_s,
        {{u"platforms/libqxcb.so"_s, u"libqt6gui6"_s},
         {u"iconengines/libqsvgicon.so"_s, svgPackage},
         {u"imageformats/libqsvg.so"_s, svgPackage},
         {u"imageformats/libqwebp.so"_s, u"qt6-image-formats-plugins"_s},
         {u"imageformats/libqtiff.so"_s, u"qt6-image-formats-plugins"_s},
         {u"sqldrivers/libqsqlmysql.so"_s, u"libqt6sql6-mysql"_s},
         {u"sqldrivers/libqsqlite.so"_s, u"libqt6sql6-sqlite"_s}},
        [&folder](const QString& name) { return QFileInfo::exists(folder + u'/' + name); }, lines);
    const QString texts = QLibraryInfo::path(QLibraryInfo::TranslationsPath);
    CheckAll(
        u"번역"_s, {{u"qtbase_ko.qm"_s, u"qt6-translations-l10n"_s}},
        [&texts](const QString& name) { return QFileInfo::exists(texts + u'/' + name); }, lines);
}

void CheckPrograms(CheckLines& lines)
{
    CheckAll(
        u"그림을 읽는 프로그램"_s,
        {{u"capture-station-reader"_s, u"capture-station"_s},
         {u"ffmpeg"_s, u"ffmpeg"_s},
         {u"jbig2dec"_s, u"jbig2dec"_s}},
        [](const QString& name) {
            return name == u"capture-station-reader" ? !confinedreader::ReaderProgram().isEmpty()
                                                     : !QStandardPaths::findExecutable(name).isEmpty();
        },
        lines);
}

/// What pictures leave the station by, where the clinic wants that.
void CheckDicomPrograms(const ClientSetupRecord& client, CheckLines& lines)
{
    QList<Part> parts;
    if (!client.Pacs.Host.isEmpty())
        parts.append({u"capture-station-sender"_s, u"capture-station"_s});
    if (!client.Pacs.Host.isEmpty() || client.BurnerDicom)
        parts.append({u"capture-station-dicom"_s, u"capture-station"_s});
    if (client.BurnerDicom)
        parts.append({u"dcmmkdir"_s, u"dcmtk"_s});
    if (parts.isEmpty())
        return;
    const auto isThere = [](const QString& name) {
        const QString program =
            name.startsWith(u"capture-station-"_s) ? OwnProgram(name) : QStandardPaths::findExecutable(name);
        return !program.isEmpty();
    };
    CheckAll(u"DICOM 프로그램"_s, parts, isThere, lines);
}

/// A user's services end with his last session unless he lingers.
void CheckLingering(const ClientSetupRecord& client, CheckLines& lines)
{
    const passwd* user = getpwuid(geteuid());
    if (client.Pacs.Host.isEmpty() || user == nullptr || !QFileInfo::exists(u"/run/systemd/system"_s))
        return;
    const QString name = QString::fromUtf8(user->pw_name);
    if (QFileInfo::exists(u"/var/lib/systemd/linger/"_s + name))
        lines.append({CheckLine::Right, u"로그아웃한 뒤의 PACS"_s, name});
    else
        lines.append({CheckLine::Remark, u"로그아웃한 뒤의 PACS"_s,
                      u"%1이(가) 로그아웃하면 보내기를 멈추고, 스테이션을 다시 시작할 때 이어서 보냅니다"_s.arg(name),
                      u"root로 loginctl enable-linger %1을(를) 실행하십시오"_s.arg(name)});
}

/// Whether what decodes pictures from outside can be shut in.
void CheckConfinement(CheckLines& lines)
{
    const QString what = u"그림 읽기 격리"_s;
    const int landlock = kernelconfinement::LandlockVersion();
    if (!kernelconfinement::HasSeccomp()) {
        lines.append({CheckLine::Wrong, what, u"커널의 seccomp를 쓸 수 없어 밖에서 온 그림을 격리하지 못합니다"_s,
                      u"Debian의 커널로 시작하십시오. 컨테이너라면 seccomp 호출을 허용하십시오"_s});
    } else if (landlock == 0) {
        lines.append(
            {CheckLine::Remark, what,
             u"커널의 Landlock을 쓸 수 없어 PCX, DCX, TGA, 무손실 JPEG, JBIG2 파일은 가져오지 못합니다"_s,
             u"커널 명령행의 lsm= 목록에 landlock을 넣고 다시 시작하십시오. 컨테이너라면 landlock 호출을 허용하십시오"_s});
    } else {
        lines.append({CheckLine::Right, what, u"seccomp, Landlock %1"_s.arg(landlock)});
    }
}

/// Of the desktop session that this runs in.
void CheckInputMethod(CheckLines& lines)
{
    const QString what = u"한글 입력"_s;
    const QString module = qEnvironmentVariable("QT_IM_MODULE");
    const QString toDo = u"apt install ibus-hangul 또는 fcitx5-hangul fcitx5-frontend-qt6, 그리고 im-config"_s;
    if (module.isEmpty()) {
        lines.append(
            {CheckLine::Remark, what, u"QT_IM_MODULE이 없습니다 (데스크톱에서 실행해야 알 수 있습니다)"_s, toDo});
        return;
    }
    const QDir folder(QLibraryInfo::path(QLibraryInfo::PluginsPath) + u"/platforminputcontexts"_s);
    const bool isThere = !folder.entryList({u"lib%1*"_s.arg(module), u"lib*%1*"_s.arg(module)}, QDir::Files).isEmpty();
    if (isThere)
        lines.append({CheckLine::Right, what, module});
    else
        lines.append({CheckLine::Wrong, what, u"%1의 Qt 6 플러그인이 없습니다"_s.arg(module), toDo});
}

} // namespace

CheckLines CheckParts(const ClientSetupRecord& client)
{
    CheckLines lines;
    CheckFonts(lines);
    CheckPlugins(lines);
    CheckPrograms(lines);
    CheckDicomPrograms(client, lines);
    CheckLingering(client, lines);
    CheckConfinement(lines);
    CheckInputMethod(lines);
    return lines;
}
