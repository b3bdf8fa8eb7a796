#pragma once

#include <QRgb>

/// The station's colour numbers are the platform's, red in the low byte: 255 is red, 65535 yellow.
constexpr QRgb ColourOf(int number)
{
    return qRgb(number & 0xFF, (number >> 8) & 0xFF, (number >> 16) & 0xFF);
}
constexpr int NumberOf(QRgb colour)
{
    return qRed(colour) | qGreen(colour) << 8 | qBlue(colour) << 16;
}

/// Colours that more than one place must agree on.

/// The station's one accent: focus, a chosen tool, the frame of a picture that was just filed. A cyan, since the
/// pictures themselves are red and brown.
inline constexpr QRgb AccentColour = 0xFF4FC3D9;

/// Frame of the picture that an open menu or question is about: told from the accent also by who sees no colours, as it
/// is brighter.
inline constexpr QRgb MeantColour = 0xFFFFD23F;

/// Ground and text of what the operator should mind: tinted panels, marks on pictures.
inline constexpr QRgb NoticeColour = 0xFF4A3B14;
inline constexpr QRgb NoticeTextColour = 0xFFFCE9BD;
