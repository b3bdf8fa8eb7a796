#pragma once

class NoticeStrip;

/// Keeps a visit whose date can't be one from being filed under, and what stands under it from being altered. The strip
/// tells of it as long as the screen is there.
class DateRefusal
{
public:
    explicit DateRefusal(NoticeStrip& notices);

    /// False for a visit with a date. Otherwise the first command throws PlatformError with what the operator is to be
    /// told, and any later one flashes the strip and gets true.
    bool Refuses();

private:
    NoticeStrip& m_notices;
    bool m_isTold = false;
};
