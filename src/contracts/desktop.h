#pragma once

#include <QByteArray>
#include <QDate>
#include <QString>

#include <functional>
#include <optional>

/// The platform's desktop as the station uses it: message boxes, mouse pointer, event pump, program and its folder.

/// Title of every message box of the station.
inline constexpr char16_t StationTitle[] = u"나 래 온 빛 터 (주)";

/// Properties of a control, set to true: how it behaves while a handler waits.
inline constexpr char ServedWhileWaiting[] = "servedWhileWaiting";
inline constexpr char LeavesWait[] = "leavesWait";

/// Numbers of the platform's mouse pointers.
enum MousePointer : int {
    PointerNormal = 0,
    PointerBusy = 11,
};

enum class Answer { Yes, No, Cancel };

/// What becomes of all that the operator does during a wait.
enum class WaitInput {
    Served, ///< It is done.
    Held,   ///< It is held back, and done in its order when the wait is over, but for what he does to a control that is
            ///< marked `ServedWhileWaiting`, and in a box that was opened meanwhile.
    Dropped, ///< It counts as not done.
};

struct DesktopWait
{
    std::function<bool()> done; ///< Asked after each event.
    int patienceMs = 0;         ///< 0 for no limit.
    WaitInput input = WaitInput::Held;
    /// Called when he closes a window whose input is held, or presses a control that is marked `LeavesWait`.
    std::function<void()> leave = [] {};
};

/// The string that started the program, as it stood: what its bytes are text in is told nowhere.
struct CommandString
{
    QByteArray bytes;
    bool isOfLegacyLocale = false; ///< The environment names an encoding other than UTF-8.
};

class Desktop
{
public:
    virtual ~Desktop() = default;

    /// Message box with the information icon and one button; returns when it is closed, which it is by itself after
    /// `patienceMs`, unless that is 0.
    virtual void ShowInformation(const QString& text, int patienceMs = 0) = 0;
    /// Message box without icon or station title: the platform's own text of an error.
    virtual void ShowPlain(const QString& text) = 0;
    /// Question with Yes and No and no icon. No is the default, and also what Enter, Escape and closing mean.
    virtual bool AskYesNo(const QString& question) = 0;
    /// The same with a third button, by which all stays as it is: that one is the default, and what Enter, Escape and
    /// closing mean.
    virtual Answer AskYesNoCancel(const QString& question) = 0;

    /// Sets the pointer of the whole program; not counted, so one return to normal is enough.
    virtual void SetMousePointer(MousePointer pointer) = 0;

    /// Serves all events that wait, once.
    virtual void PumpEvents() = 0;
    /// Serves events until the wait is done; sleeps between events. False when its time has run out, or the program
    /// ends first.
    virtual bool ServeUntil(const DesktopWait& wait) = 0;

    /// The platform's printer dialog. A cancel and a failure both count as nothing having happened.
    virtual void ShowPrinterDialog() = 0;

    /// The platform's dialog for opening one file. It begins in `folder`; with none in that of the file chosen last.
    /// `filter` is pairs of a label and its patterns, each text with a NUL behind it, and one more NUL at the end;
    /// empty for all files. Nothing when it is cancelled; an empty text when it was confirmed without a name.
    virtual std::optional<QString> ShowOpenDialog(const QString& folder, const QString& filter) = 0;

    virtual CommandString Command() const = 0;
    /// The program's own folder, without a separator at its end. It can be written.
    virtual QString ProgramFolder() const = 0;
    /// Where pictures on their way lie: this user's own folder on this machine's disk, without a separator at its end.
    virtual QString StateFolder() const { return ProgramFolder(); }
    /// The folder of all users of this machine, in which theirs lie; empty where there is none.
    virtual QString MachineFolder() const { return {}; }
    /// True when another instance runs on this user's desktop. The answer is fixed at the first call: when it is
    /// false, this program is from then on the instance that others find.
    virtual bool PrevInstance() = 0;
    /// Another instance may start from here on: this one has nothing more to do but to end.
    virtual void LeaveInstance() = 0;

    /// Is called when the system wants the program to end: the desktop session ends, or somebody sends a signal to end.
    /// From then on no box opens any more: its text goes to standard error, and a question counts as answered with No.
    virtual void setEndRequest(std::function<void()> end) = 0;
    virtual bool EndIsRequested() const = 0;
    /// The display is gone, and the process is about to end: as after an end request, and no events are served any
    /// more, since serving them would end it at once.
    virtual void LoseDisplay() = 0;

    /// Ends the program; the event loop returns, or is never entered.
    virtual void EndProgram() = 0;
    virtual bool ProgramEnded() const = 0;

    /// Today's date by the machine's clock.
    virtual QDate Today() const = 0;
};
