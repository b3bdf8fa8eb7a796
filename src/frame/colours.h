#pragma once

#include <QRgb>

/// Colours that more than one place must agree on.

/// The station's one accent: focus, a chosen tool, the frame of a picture that was just filed. A cyan, since the
/// pictures themselves are red and brown.
inline constexpr QRgb AccentColour = 0xFF4FC3D9;

/// Ground and text of what the operator should mind: tinted panels, marks on pictures.
inline constexpr QRgb NoticeColour = 0xFF4A3B14;
inline constexpr QRgb NoticeTextColour = 0xFFFCE9BD;
