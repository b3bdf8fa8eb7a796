#pragma once

#include <QRect>
#include <QtMath>

/// Screen measures of the station are twips; 15 twips are one logical pixel.
inline constexpr int TwipsPerPixel = 15;

constexpr int PixelsFromTwips(int twips)
{
    return twips / TwipsPerPixel;
}
constexpr int TwipsFromPixels(int pixels)
{
    return pixels * TwipsPerPixel;
}

/// A control's place in pixels from its place in twips.
constexpr QRect RectFromTwips(int left, int top, int width, int height)
{
    return {PixelsFromTwips(left), PixelsFromTwips(top), PixelsFromTwips(width), PixelsFromTwips(height)};
}
