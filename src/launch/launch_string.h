#pragma once

#include <QString>

struct CommandString;

/// The fixed columns of the string with which the clinic's program starts the station. Only the section is trimmed; a
/// column that isn't there is empty.
struct LaunchString
{
    QString mode;    ///< Column 1.
    QString code;    ///< Columns 2 and 3.
    QString flag;    ///< Column 4.
    QString chart;   ///< Columns 5 to 12.
    QString yuhyung; ///< Columns 13 and 14.
    QString jinchal; ///< Columns 15 and 16.
    QString ymd;     ///< Columns 17 to 24.
    QString etc;     ///< Column 25 to the end.
};

/// Cuts the string by its characters. Its bytes are UTF-8 or windows-949; where they are text in both, a section of the
/// client's list is meant, and else what setup or environment say.
LaunchString CutLaunchString(const CommandString& command);
