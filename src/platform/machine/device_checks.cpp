#include "platform/machine/machine_checks.h"

#include "contracts/files.h"
#include "contracts/PlatformError.h"
#include "frame/file_calls.h"
#include "frame/waiting.h"
#include "platform/files/posix_files.h"
#include "platform/gstreamer/devices/V4l2Device.h"
#include "platform/gstreamer/sounds/sound_devices.h"

#include <QFile>
#include <QFileInfo>
#include <QPrinterInfo>
#include <QStandardPaths>

#include <cerrno>
#include <unistd.h>

using namespace Qt::StringLiterals;

namespace {

/// Sound servers and print services may never answer.
constexpr int PatienceMs = 5000;
/// The drive that the discs are written in.
const QString Drive = u"/dev/sr0"_s;

/// 0 when the user may read, or write where that is asked for; otherwise the error.
int AccessError(const QString& path, int mode)
{
    return access(QFile::encodeName(path).constData(), mode) == 0 ? 0 : errno;
}

CheckLine GroupLine(const QString& what, const QString& path, int error, const QString& group)
{
    return {CheckLine::Wrong, what, u"%1 (%2)"_s.arg(path, posix_files::ErrorText(error)),
            error == EACCES ? u"사용자를 %1 그룹에 넣고 다시 로그인하십시오 (adduser 사용자 %1)"_s.arg(group)
                            : u"장치의 연결을 확인하십시오"_s};
}

void CheckCameras(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString what = u"영상 장치"_s;
    KernelV4l2Calls calls;
    int usable = 0;
    for (const V4l2Node& node : calls.Nodes()) {
        if (const int error = AccessError(node.path, R_OK | W_OK); error != 0) {
            lines.append(GroupLine(what, node.path, error, u"video"_s));
            continue;
        }
        try {
            const V4l2Device device(calls, node.path);
            if (!device.CapturesVideo())
                continue;
            const qsizetype modes = device.Modes().size();
            ++usable;
            if (modes > 0)
                lines.append(
                    {CheckLine::Right, what, u"%1 %2, 화면크기 %3가지"_s.arg(node.path, device.Card()).arg(modes)});
            else
                lines.append({CheckLine::Wrong, what,
                              u"%1 %2: 쓸 수 있는 형식이 없습니다 (%3)"_s.arg(node.path, device.Card(),
                                                                              device.OtherFormats().join(u", "_s)),
                              u"안내서의 장치 목록을 보십시오"_s});
        } catch (const PlatformError& error) {
            lines.append({CheckLine::Wrong, what, error.Text(), u"다른 프로그램이 쓰고 있는지 확인하십시오"_s});
        }
    }
    if (usable == 0 && client.TestPicture)
        lines.append({CheckLine::Remark, what, u"없음, 시험 화면만 있습니다"_s});
    else if (usable == 0 && lines.isEmpty())
        lines.append({CheckLine::Wrong, what, u"없습니다"_s, u"카메라나 영상 변환 장치의 연결을 확인하십시오"_s});
}

void CheckSound(const ClientSetupRecord& client, CheckLines& lines)
{
    const waiting::Patience patience(PatienceMs);
    try {
        const SoundDevices sound = filecalls::Ask([] { return FindSoundDevices(); });
        if (sound.inputs > 0)
            lines.append({CheckLine::Right, u"소리 입력"_s, u"%1개"_s.arg(sound.inputs)});
        else
            lines.append({CheckLine::Remark, u"소리 입력"_s, u"없음, 동영상에 소리가 들어가지 않습니다"_s,
                          u"마이크와 audio 그룹, PulseAudio나 PipeWire를 확인하십시오"_s});
        if (sound.outputs > 0)
            lines.append({CheckLine::Right, u"소리 출력"_s, u"%1개"_s.arg(sound.outputs)});
        else if (client.ShutterSound)
            lines.append({CheckLine::Remark, u"소리 출력"_s, u"없음, 찍는 소리가 나지 않습니다"_s});
    } catch (const FilesAway&) {
        lines.append({CheckLine::Wrong, u"소리"_s, u"소리 서버가 응답하지 않습니다"_s,
                      u"PulseAudio나 PipeWire를 다시 시작하십시오"_s});
    }
}

void CheckSerialPort(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString what = u"발판 스위치"_s;
    bool isNumber = false;
    const int number = client.CommPort.trimmed().isEmpty() ? 1 : client.CommPort.trimmed().toInt(&isNumber);
    QString device = client.SerialPorts.value(QString::number(number));
    device = device.isEmpty() ? u"/dev/ttyS%1"_s.arg(number - 1) : NativePath(device);
    const int error = AccessError(device, R_OK | W_OK);
    if (error == 0) {
        lines.append({CheckLine::Right, what, device});
        return;
    }
    CheckLine line = GroupLine(what, device, error, u"dialout"_s);
    // Not every clinic has one.
    if (client.CommPort.trimmed().isEmpty())
        line.verdict = CheckLine::Remark;
    if (error != EACCES)
        line.toDo = u"발판을 쓰면 [Client] CommPort와 [SerialPort]를 확인하고, 쓰지 않으면 CommPort를 비우십시오"_s;
    lines.append(line);
}

void CheckPrinter(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString what = u"프린터"_s;
    if (!client.PrinterFolder.isEmpty()) {
        const QString folder = NativePath(client.PrinterFolder);
        const int error = QFileInfo(folder).isDir() ? AccessError(folder, W_OK | X_OK) : ENOENT;
        if (error == 0)
            lines.append({CheckLine::Right, what, u"PDF 파일: %1"_s.arg(folder)});
        else if (error == ENOENT)
            lines.append(
                {CheckLine::Remark, what, u"PDF 폴더가 아직 없습니다: %1"_s.arg(folder), u"인쇄할 때 만듭니다"_s});
        else
            lines.append({CheckLine::Wrong, what, u"%1 (%2)"_s.arg(folder, posix_files::ErrorText(error)),
                          u"쓰기 권한을 주십시오"_s});
        return;
    }
    const waiting::Patience patience(PatienceMs);
    try {
        const QString name = filecalls::Ask([] {
            const QString usual = QPrinterInfo::defaultPrinterName();
            return usual.isEmpty() ? QPrinterInfo::availablePrinterNames().value(0) : usual;
        });
        if (name.isEmpty())
            lines.append(
                {CheckLine::Wrong, what, u"없습니다"_s, u"CUPS에 프린터를 더하거나 [Printer] Folder를 쓰십시오"_s});
        else
            lines.append({CheckLine::Right, what, name});
    } catch (const FilesAway&) {
        lines.append({CheckLine::Wrong, what, u"인쇄 서버가 응답하지 않습니다"_s, u"CUPS를 확인하십시오"_s});
    }
}

void CheckDisc(const ClientSetupRecord& client, CheckLines& lines)
{
    const QString what = u"CD"_s;
    if (QStandardPaths::findExecutable(u"xorriso"_s).isEmpty())
        lines.append({CheckLine::Wrong, what, u"xorriso가 없습니다"_s, u"apt install xorriso"_s});
    if (!client.BurnerImage.isEmpty()) {
        const QString folder = QFileInfo(NativePath(client.BurnerImage)).absolutePath();
        const int error = AccessError(folder, W_OK | X_OK);
        if (error == 0)
            lines.append({CheckLine::Right, what, u"이미지 파일: %1"_s.arg(NativePath(client.BurnerImage))});
        else
            lines.append({CheckLine::Wrong, what, u"%1 (%2)"_s.arg(folder, posix_files::ErrorText(error)),
                          u"[Burner] Image를 확인하십시오"_s});
        return;
    }
    const int error = AccessError(Drive, R_OK | W_OK);
    if (error == 0)
        lines.append({CheckLine::Right, what, Drive});
    else if (error == EACCES)
        lines.append(GroupLine(what, Drive, error, u"cdrom"_s));
    else
        lines.append(
            {CheckLine::Remark, what, u"드라이브가 없습니다 (%1)"_s.arg(Drive), u"CD저장을 쓸 때만 있으면 됩니다"_s});
}

} // namespace

CheckLines CheckDevices(const ClientSetupRecord& client)
{
    CheckLines lines;
    CheckCameras(client, lines);
    CheckSound(client, lines);
    CheckSerialPort(client, lines);
    CheckPrinter(client, lines);
    CheckDisc(client, lines);
    return lines;
}
