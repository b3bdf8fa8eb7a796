#pragma once

#include <QObject>

#include <deque>
#include <functional>

/// What waits for the end of the fill that is under way: changes of the visit's pictures first, while that fill is
/// theirs, then the last parts of commands, which wait for the end of a handler's wait as well. With neither under way
/// nothing waits.
class FillLine : public QObject
{
public:
    using Work = std::function<void()>;

    /// While one of these lives, a fill is under way, and commands wait.
    class Hold
    {
    public:
        explicit Hold(FillLine& line) : m_line(line) { ++line.m_holds; }
        ~Hold() { m_line.Release(); }
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

    protected:
        FillLine& m_line;
    };
    /// While one of these lives, the visit's pictures are being placed, and changes of them wait as well.
    class PictureHold : public Hold
    {
    public:
        explicit PictureHold(FillLine& line) : Hold(line) { ++line.m_pictureHolds; }
        ~PictureHold() { --m_line.m_pictureHolds; }
    };

    bool IsHeld() const { return m_holds > 0; }
    bool PicturesAreHeld() const { return m_pictureHolds > 0; }
    /// Changes a picture's place on the screen. May not serve events.
    void Show(const Work& change);
    /// Does a command's last part, which may.
    void Command(const Work& command);
    /// The screen closes: what it would show is dropped, commands come to their end now, fill or no fill.
    void Finish();

private:
    void Release();
    void WorkOff();
    void WorkOffWhenOver();

    std::deque<Work> m_changes;
    std::deque<Work> m_commands;
    int m_holds = 0;
    int m_pictureHolds = 0;
};
