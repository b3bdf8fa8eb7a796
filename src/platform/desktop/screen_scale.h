#pragma once

#include <QSize>
#include <QString>

/// Logical pixels of the largest screen, the capture screen.
inline constexpr QSize LargestForm{1016, 700};

/// The factor for a free area of that size in pixels, at least 1: `wanted`, a number in quarters, as far as the largest
/// screen with its frame stays inside, or for `fit` the largest that does so, at most 4.
double ScaleInside(const QString& wanted, QSize freeArea);

/// Gives the whole program the factor that the setup names, in place of what desktop and environment say. Called before
/// the application is made.
void SetScreenScale(const QString& wanted);
