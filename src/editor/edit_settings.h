#pragma once

#include <QFont>

/// What outlasts the editor, in `CapSet.ini`.
struct EditSettings
{
    static constexpr int Yellow = 65535;

    QFont font;          ///< Of the text tool, in points.
    int colour = Yellow; ///< The platform's number, red in the low byte.

    /// 바탕 of 16 points, and yellow.
    EditSettings();
};

/// The settings of before; a key that is missing, or that makes no sense, leaves what stands without it.
EditSettings LoadEditSettings();
void SaveFontSettings(const QFont& font);
void SaveColorSetting(int colour);
